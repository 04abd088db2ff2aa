#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "processing/CropGeometry.h"
#include "processing/ImageProcessor.h"
#include "processing/RotationGeometry.h"
#include "support/TestImages.h"

namespace marigold {
namespace {

using test::difference;
using test::pixelAt;
using test::Rgba;

// A w x h picture of one colour, made through Qt so the colour is exact.
Image filled(int w, int h, QColor colour) {
    QImage image(w, h, QImage::Format_RGBA8888);
    image.fill(colour);
    return Image::fromQImage(image);
}

TEST(RotationGeometryTest, TheFourCasesOfTheCanvasTable) {
    const struct {
        double degrees;
        int wide, high;  // truncated
        float tx, ty;
    } cases[] = {
        {90, 50, 100, 0, -50},
        {30, 111, 93, 21.65f, -12.5f},
        {-30, 111, 93, -25, 43.30f},
        {180, 100, 50, -100, -50},
        {-135, 106, 106, -125, -25},
    };
    for (const auto& c : cases) {
        const RotatedCanvas canvas = rotatedCanvas({100, 50}, c.degrees);
        EXPECT_EQ(int(canvas.size.width), c.wide) << c.degrees;
        EXPECT_EQ(int(canvas.size.height), c.high) << c.degrees;
        EXPECT_NEAR(canvas.translation.x, c.tx, 0.01) << c.degrees;
        EXPECT_NEAR(canvas.translation.y, c.ty, 0.01) << c.degrees;
    }
}

// Whatever the case, the turned picture's corners span exactly the canvas from the origin.
TEST(RotationGeometryTest, TheShiftPutsTheTurnedPictureOnTheCanvas) {
    const float w = 120, h = 45;
    for (double d = -180; d <= 180; d += 7.5) {
        const RotatedCanvas canvas = rotatedCanvas({w, h}, d);
        const double a = std::numbers::pi * d / 180, c = std::cos(a), s = std::sin(a);
        double minX = 1e9, minY = 1e9, maxX = -1e9, maxY = -1e9;
        for (const auto& [x, y] : {std::pair{0.f, 0.f}, {w, 0.f}, {0.f, h}, {w, h}}) {
            const double px = x + canvas.translation.x, py = y + canvas.translation.y;
            const double X = c * px - s * py, Y = s * px + c * py;
            minX = std::min(minX, X), maxX = std::max(maxX, X);
            minY = std::min(minY, Y), maxY = std::max(maxY, Y);
        }
        EXPECT_NEAR(minX, 0, 1e-3) << d;
        EXPECT_NEAR(minY, 0, 1e-3) << d;
        EXPECT_NEAR(maxX, canvas.size.width, 1e-3) << d;
        EXPECT_NEAR(maxY, canvas.size.height, 1e-3) << d;
    }
}

TEST(ImageTransformsTest, QuarterTurnsAndFlipsMovePixelsExactly) {
    const Image source = test::gradientImage(100, 50);
    const auto same = [](const Image& a, const vips::VImage& b) {
        return a.pixelsWide() == b.width() && a.pixelsHigh() == b.height() &&
               difference(a.pixels(), b).max() == 0;
    };
    EXPECT_TRUE(same(ImageProcessor::rotateImage(source, -90), source.pixels().rot90()));
    EXPECT_TRUE(same(ImageProcessor::rotateImage(source, 90), source.pixels().rot270()));
    EXPECT_TRUE(same(ImageProcessor::rotateImage(source, -180), source.pixels().rot180()));
    Image turned = source;
    for (int i = 0; i < 4; ++i) turned = ImageProcessor::rotateImage(turned, 90);
    EXPECT_TRUE(same(turned, source.pixels()));
    for (auto flip : {&ImageProcessor::flipImageHorizontal, &ImageProcessor::flipImageVertical}) {
        const Image once = flip(source);
        EXPECT_FALSE(same(once, source.pixels()));
        EXPECT_TRUE(same(flip(once), source.pixels()));
    }
    EXPECT_EQ(pixelAt(ImageProcessor::flipImageHorizontal(source), 0, 7), pixelAt(source, 99, 7));
    EXPECT_EQ(pixelAt(ImageProcessor::flipImageVertical(source), 3, 0), pixelAt(source, 3, 49));
}

TEST(ImageTransformsTest, EveryTurnFillsTheCanvasTheTableGives) {
    const Image source = test::gradientImage(40, 20);
    for (double d = -179; d <= 180; d += 13) {
        const RotatedCanvas canvas = rotatedCanvas({40, 20}, d);
        const Image turned = ImageProcessor::rotateImage(source, d);
        EXPECT_EQ(turned.pixelsWide(), int(canvas.size.width)) << d;
        EXPECT_EQ(turned.pixelsHigh(), int(canvas.size.height)) << d;
    }
}

// Turned a quarter counter-clockwise, the top edge ends on the left.
TEST(ImageTransformsTest, AQuarterTurnLeftPutsTheTopEdgeOnTheLeft) {
    const Image source = test::gradientImage(100, 50);
    const Image turned = ImageProcessor::rotateImage(source, 90);
    ASSERT_EQ(turned.pixelsWide(), 50);
    ASSERT_EQ(turned.pixelsHigh(), 100);
    for (int x = 0; x < 100; x += 33) {
        EXPECT_EQ(pixelAt(turned, 0, 99 - x), pixelAt(source, x, 0)) << x;
    }
}

TEST(ImageTransformsTest, AFreeTurnHasTransparentCornersAndUndarkenedEdges) {
    const QColor orange(240, 160, 40);
    const Image turned = ImageProcessor::rotateImage(filled(100, 50, orange), 30);
    ASSERT_EQ(turned.pixelsWide(), 111);
    ASSERT_EQ(turned.pixelsHigh(), 93);
    for (const auto& [x, y] : {std::pair{0, 0}, {110, 0}, {0, 92}, {110, 92}}) {
        EXPECT_EQ(pixelAt(turned, x, y).a, 0) << x << "," << y;
    }
    EXPECT_EQ(pixelAt(turned, 55, 46), (Rgba{240, 160, 40, 255}));
    int edges = 0;
    for (int y = 0; y < 93; y += 4) {
        for (int x = 0; x < 111; ++x) {
            const Rgba p = pixelAt(turned, x, y);
            if (p.a < 64 || p.a > 192) continue;
            ++edges;
            EXPECT_NEAR(p.r, 240, 3) << x << "," << y;
            EXPECT_NEAR(p.b, 40, 3) << x << "," << y;
        }
    }
    EXPECT_GT(edges, 10) << "the edges are blended";
}

// A large picture is shown from its turned half-size copy first; its full pixels, when they
// come, are exactly the plain turn's.
TEST(ImageTransformsTest, ALargeTurnShownFirstEndsAsThePlainTurn) {
    const Image source = test::gradientImage(2500, 2000);
    const Image plain = ImageProcessor::rotateImage(source, 30);
    const Image first = ImageProcessor::rotateImageShownFirst(source, 30);
    ASSERT_EQ(first.pixelsWide(), plain.pixelsWide());
    ASSERT_EQ(first.pixelsHigh(), plain.pixelsHigh());
    const Image shown = first.levelWithAtLeast(first.pixelsWide() / 2, first.pixelsHigh() / 2);
    EXPECT_EQ(shown.pixelsWide(), plain.pixelsWide() / 2);
    EXPECT_EQ(difference(first.pixels(), plain.pixels()).max(), 0);
}

TEST(ImageTransformsTest, ACanvasBeyondThePixelLimitIsRefused) {
    // Only the size is looked at: the pixels are never decoded.
    const vips::VImage tiny = vips::VImage::black(2, 2, vips::VImage::option()->set("bands", 4));
    const Image huge = Image::fromPendingDecode(
        16384, 16384, std::shared_future<vips::VImage>(), tiny.cast(VIPS_FORMAT_UCHAR), true);
    ASSERT_LE(16384LL * 16384, kMaxOutputPixels);
    EXPECT_TRUE(ImageProcessor::rotateImage(huge, 45).isNull());
}

TEST(ImageTransformsTest, DesaturationWeighsTheChannelsAndDropsAlpha) {
    const struct {
        QColor colour;
        int grey;
    } cases[] = {{QColor(255, 0, 0), 57},
                 {QColor(0, 255, 0), 180},
                 {QColor(0, 0, 255), 18},
                 {QColor(255, 255, 255), 255},
                 {QColor(10, 200, 30, 0), 146}};
    for (const auto& c : cases) {
        const Image grey = ImageProcessor::desaturate(filled(3, 2, c.colour));
        EXPECT_EQ(pixelAt(grey, 2, 1), (Rgba{c.grey, c.grey, c.grey, 255})) << c.grey;
    }
}

}  // namespace
}  // namespace marigold
