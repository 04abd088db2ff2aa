#include "platform/Image.h"

#include <gtest/gtest.h>

#include "support/TestImages.h"

namespace marigold {
namespace {

TEST(Image, PyramidLevelIsTheSmallestWithEnoughPixels) {
    const Image image = test::gradientImage(1000, 600);
    struct Case {
        int minW, minH, factor;
    };
    for (const Case c : {Case{1000, 600, 1}, Case{600, 600, 1}, Case{500, 300, 2},
                         Case{499, 100, 2}, Case{250, 150, 4}, Case{1, 1, 512}, Case{0, 0, 512}}) {
        EXPECT_EQ(image.levelFactorFor(c.minW, c.minH), c.factor) << c.minW << "x" << c.minH;
        const Image level = image.levelWithAtLeast(c.minW, c.minH);
        EXPECT_NEAR(level.pixelsWide(), 1000.0 / c.factor, 1.0);
        EXPECT_GE(level.pixelsWide(), c.minW);
        EXPECT_GE(level.pixelsHigh(), c.minH);
        EXPECT_EQ(level.size(), image.size()) << "a level stands for the whole image";
    }
}

TEST(Image, PyramidLevelsAverageTheirBlocks) {
    const Image image = test::gradientImage(64, 64);
    const Image half = image.levelWithAtLeast(32, 32);
    // Pixel (3, 5) of the half level averages source x 6..7, y 10..11.
    const test::Rgba p = test::pixelAt(half, 3, 5);
    EXPECT_NEAR(p.r, 6.5, 0.6);
    EXPECT_NEAR(p.g, 10.5, 0.6);
    EXPECT_EQ(p.a, 255);
}

TEST(Image, TransparentPixelsDoNotDarkenReducedLevels) {
    // Left column white and opaque, right column black and fully transparent.
    vips::VImage opaque = vips::VImage::black(1, 2).new_from_image({255, 255, 255, 255});
    vips::VImage clear = vips::VImage::black(1, 2).new_from_image({0, 0, 0, 0});
    const Image image = Image::fromRgba(
        opaque.join(clear, VIPS_DIRECTION_HORIZONTAL)
            .cast(VIPS_FORMAT_UCHAR)
            .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB)),
        false);
    const test::Rgba p = test::pixelAt(image.levelWithAtLeast(1, 1), 0, 0);
    EXPECT_GE(p.r, 250) << "colour weighted by alpha stays white";
    EXPECT_NEAR(p.a, 128, 1);
}

TEST(Image, QImageConversionsAgreeWithThePixels) {
    const Image image = test::gradientImage(37, 21);
    const QImage q = image.toQImage();
    ASSERT_EQ(q.size(), QSize(37, 21));
    for (const QPoint at : {QPoint(0, 0), QPoint(36, 20), QPoint(17, 4)}) {
        const test::Rgba p = test::pixelAt(image, at.x(), at.y());
        const QColor c = q.pixelColor(at);
        EXPECT_EQ((test::Rgba{c.red(), c.green(), c.blue(), c.alpha()}), p);
    }
}

TEST(Image, WithSizeKeepsPixelsAndChangesPoints) {
    const Image image = test::gradientImage(10, 10);
    const Image sized = image.withSize({100, 50});
    EXPECT_EQ(sized.pixelsWide(), 10);
    EXPECT_EQ(sized.size(), (SizeF{100, 50}));
    EXPECT_EQ(image.size(), (SizeF{10, 10})) << "the original does not change";
    EXPECT_TRUE(Image().isNull());
    EXPECT_EQ(Image().size(), (SizeF{}));
}

}  // namespace
}  // namespace marigold
