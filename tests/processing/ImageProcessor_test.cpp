#include <gtest/gtest.h>

#include <limits>

#include "processing/ImageProcessor.h"
#include "support/TestImages.h"

namespace marigold {
namespace {

using test::difference;
using test::pixelAt;
using test::Rgba;
using vips::VImage;

struct SizeCase {
    RectF rect;
    float scale;
    int wide, high;  // 0 x 0: no output
};

// The plan's arithmetic is tested on its own; here both paths must make what it says.
TEST(ImageProcessorTest, OutputSizesFollowTheCropPlan) {
    const Image source = test::gradientImage(1000, 800);
    const SizeCase cases[] = {
        {{10.4f, 20.5f, 99.5f, 0.4f}, 1, 0, 0},
        {{0, 0, 100, 4}, 0.5f, 250, 10},
        {{100, 100, 667, 199}, 0.5f, 334, 100},
    };
    const ImageProcessor processor;
    for (const SizeCase& c : cases) {
        for (bool fast : {false, true}) {
            const Image out = processor.cropImage(source, c.rect, c.scale, 0.5f, fast);
            if (c.wide == 0) {
                EXPECT_TRUE(out.isNull());
                continue;
            }
            ASSERT_FALSE(out.isNull());
            EXPECT_EQ(out.pixelsWide(), c.wide);
            EXPECT_EQ(out.pixelsHigh(), c.high);
            EXPECT_EQ(out.size(), (SizeF{float(c.wide), float(c.high)}));
        }
    }
}

TEST(ImageProcessorTest, SharpeningOnlyOnTheFullPath) {
    const Image source = test::photoLikeImage(400, 300);
    const VImage before = source.pixels().copy_memory();
    const ImageProcessor processor;
    const RectF rect{50, 40, 200, 150};
    const Image plain = processor.cropImage(source, rect, 1.5f, 0, false);
    const Image fast = processor.cropImage(source, rect, 1.5f, 0.6f, true);
    const Image full = processor.cropImage(source, rect, 1.5f, 0.6f, false);
    ASSERT_EQ(plain.pixelsWide(), 300);
    ASSERT_EQ(full.pixelsWide(), 300);
    EXPECT_EQ(difference(fast.pixels(), plain.pixels()).max(), 0);
    EXPECT_GT(difference(full.pixels(), plain.pixels()).avg(), 1);
    for (int band = 0; band < 3; ++band) {
        EXPECT_NEAR(full.pixels()[band].avg(), plain.pixels()[band].avg(), 0.5) << band;
    }
    EXPECT_EQ(difference(source.pixels(), before).max(), 0) << "argument unchanged";
}

TEST(ImageProcessorTest, BorderOnBothPathsAndOnlyWhenThick) {
    const Image source = test::gradientImage(300, 200);
    const RectF rect{0, 0, 100, 50};
    ImageProcessor processor;
    processor.setBorderOn(true);
    processor.setBorderColor(QColor(0, 0, 255));
    processor.setBorderThickness(5);
    for (bool fast : {false, true}) {
        const Image out = processor.cropImage(source, rect, 1, 0.4f, fast);
        ASSERT_EQ(out.pixelsWide(), 100);
        ASSERT_EQ(out.pixelsHigh(), 50);
        const Rgba blue{0, 0, 255, 255};
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(pixelAt(out, i, 25), blue);
            EXPECT_EQ(pixelAt(out, 99 - i, 25), blue);
            EXPECT_EQ(pixelAt(out, 50, i), blue);
            EXPECT_EQ(pixelAt(out, 50, 49 - i), blue);
        }
        if (fast) {
            EXPECT_EQ(pixelAt(out, 5, 5), pixelAt(source, 5, 155));
        }
        EXPECT_NE(pixelAt(out, 5, 25), blue);
    }
    processor.setBorderThickness(0);
    const Image none = processor.cropImage(source, rect, 1, 0, false);
    EXPECT_EQ(pixelAt(none, 0, 0), pixelAt(source, 0, 150));
    processor.setBorderThickness(5);
    processor.setBorderOn(false);
    EXPECT_EQ(pixelAt(processor.cropImage(source, rect, 1, 0, true), 0, 0),
              pixelAt(source, 0, 150));
}

// Above the limit the fast path draws a reduced picture that still reports the full size and
// looks like the full output made smaller, in the right place.
TEST(ImageProcessorTest, FastPathReducesBeyondTheLimit) {
    const Image source = test::photoLikeImage(2000, 1200);
    ImageProcessor processor;
    processor.setFastPreviewLimit(400, 300);
    const struct {
        RectF rect;
        float scale;
        int wide, high, reducedWide, reducedHigh;
    } cases[] = {
        {{0, 0, 2000, 1200}, 1, 2000, 1200, 400, 240},
        {{300, 100, 1000, 600}, 1, 1000, 600, 400, 240},
        {{301, 101, 999, 599}, 1, 999, 599, 400, 240},
        {{1500, 900, 200, 300}, 2, 400, 600, 200, 300},
        {{0, 0, 2000, 1200}, 0.2f, 400, 240, 400, 240},  // fits: not reduced
    };
    for (const auto& c : cases) {
        const Image fast = processor.cropImage(source, c.rect, c.scale, 0, true);
        ASSERT_FALSE(fast.isNull());
        EXPECT_EQ(fast.size(), (SizeF{float(c.wide), float(c.high)}));
        EXPECT_EQ(fast.pixelsWide(), c.reducedWide);
        EXPECT_EQ(fast.pixelsHigh(), c.reducedHigh);
        const Image full = processor.cropImage(source, c.rect, c.scale, 0, false);
        const VImage shrunk =
            full.pixels().resize(double(c.reducedWide) / c.wide,
                                 VImage::option()->set("vscale", double(c.reducedHigh) / c.high));
        ASSERT_EQ(shrunk.width(), fast.pixelsWide());
        EXPECT_LT(difference(fast.pixels(), shrunk).avg(), 3) << c.rect.x << "," << c.rect.y;
    }
    // The reduced border keeps its share of the picture: 10 of 2000 is 2 of 400.
    processor.setBorderOn(true);
    processor.setBorderThickness(10);
    processor.setBorderColor(Qt::white);
    const Image framed = processor.cropImage(source, {0, 0, 2000, 1200}, 1, 0, true);
    EXPECT_EQ(pixelAt(framed, 200, 1), (Rgba{255, 255, 255, 255}));
    EXPECT_NE(pixelAt(framed, 200, 2), (Rgba{255, 255, 255, 255}));
}

TEST(ImageProcessorTest, NonsenseRequestsGiveNoOutputQuickly) {
    const Image source = test::gradientImage(200, 100);
    const ImageProcessor processor;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(processor.cropImage(source, {0, 0, 100, 100}, 1e6f, 0, false).isNull());
    EXPECT_TRUE(processor.cropImage(source, {0, 0, 100, 100}, nan, 0, false).isNull());
    EXPECT_TRUE(processor.cropImage(source, {nan, 0, 100, 100}, 1, 0, false).isNull());
    EXPECT_TRUE(processor.cropImage(source, {0, 0, 1e12f, 1e12f}, 1, 0, false).isNull());
    EXPECT_TRUE(processor.cropImage(Image(), {0, 0, 10, 10}, 1, 0, false).isNull());
    // The fast path never draws more than its limit, however large the output.
    const Image huge = processor.cropImage(source, {0, 0, 200, 100}, 1e4f, 0, true);
    ASSERT_FALSE(huge.isNull());
    EXPECT_LE(huge.pixelsWide(), 1000);
    EXPECT_EQ(huge.size(), (SizeF{2e6f, 1e6f}));
}

TEST(ImageProcessorTest, Thumbnail) {
    const Image wide = test::photoLikeImage(700, 350);
    const Image thumb = ImageProcessor::scaleImage(wide, {350, 350});
    EXPECT_EQ(thumb.size(), (SizeF{350, 175}));
    EXPECT_EQ(thumb.pixelsWide(), 350);
    EXPECT_LT(difference(thumb.pixels(), wide.pixels().resize(0.5)).avg(), 2);
    const Image small = test::gradientImage(100, 100);
    EXPECT_EQ(ImageProcessor::scaleImage(small, {350, 350}).pixels().get_image(),
              small.pixels().get_image());
    // Sizes are not rounded; the pixels are the nearest whole numbers.
    const Image odd = ImageProcessor::scaleImage(test::gradientImage(1000, 333), {350, 350});
    EXPECT_FLOAT_EQ(odd.size().height, 350 / (1000.0f / 333));
    EXPECT_EQ(odd.pixelsHigh(), 117);
}

}  // namespace
}  // namespace marigold
