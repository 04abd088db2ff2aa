#include <gtest/gtest.h>

#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <cmath>

#include "processing/BitmapOps.h"
#include "support/TestImages.h"

namespace marigold {
namespace {

using test::difference;
using test::pixelAt;
using test::Rgba;
using vips::VImage;

VImage rgbOf(const Image& image) {
    return image.pixels().extract_band(0, VImage::option()->set("n", 3));
}

Image fromBands(std::vector<VImage> bands, bool opaque) {
    return Image::fromRgba(VImage::bandjoin(bands).cast(VIPS_FORMAT_UCHAR), opaque);
}

// At scale 1 every output pixel is the source pixel under it; a rectangle at y = 0 takes the
// bottom rows because rectangles have their origin at the lower left.
TEST(BitmapOpsTest, ScaleOneCropCopiesTheRowsTheLowerLeftRectangleCovers) {
    const Image source = test::gradientImage(300, 200);
    const struct {
        RectF rect;
        int firstRow;  // y-down row of the source that becomes the output's first row
    } cases[] = {
        {{20, 0, 50, 30}, 170},
        {{0, 170, 300, 30}, 0},
        {{123, 45, 77, 66}, 200 - 45 - 66},
    };
    for (const auto& c : cases) {
        const int wide = int(c.rect.width), high = int(c.rect.height);
        const Image out = bitmap::croppingAndScaling(source, c.rect, {c.rect.width, c.rect.height});
        ASSERT_EQ(out.pixelsWide(), wide);
        ASSERT_EQ(out.pixelsHigh(), high);
        const VImage expected = source.pixels().crop(int(c.rect.x), c.firstRow, wide, high);
        EXPECT_EQ(difference(out.pixels(), expected).max(), 0) << c.rect.x << "," << c.rect.y;
        EXPECT_EQ(pixelAt(out, 0, high - 1), pixelAt(source, int(c.rect.x), c.firstRow + high - 1));
        EXPECT_TRUE(out.isOpaque());
    }
}

// (90, 90, 20, 20) of a 100 x 100 image: only the lower-left quarter of the output lies on the
// source (its top-right corner, as stored); the rest is transparent or the background.
TEST(BitmapOpsTest, RectangleBeyondTheSourceIsTransparentThere) {
    const Image source = test::gradientImage(100, 100);
    const RectF rect{90, 90, 20, 20};
    const Image clear = bitmap::croppingAndScaling(source, rect, {20, 20});
    const Image filled = bitmap::croppingAndScaling(source, rect, {20, 20}, QColor(10, 200, 30));
    ASSERT_EQ(clear.pixelsWide(), 20);
    EXPECT_FALSE(clear.isOpaque());
    EXPECT_TRUE(filled.isOpaque());
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 20; ++x) {
            const bool onSource = x < 10 && y >= 10;
            if (onSource) {
                const Rgba expected = pixelAt(source, 90 + x, y - 10);
                EXPECT_EQ(pixelAt(clear, x, y), expected) << x << "," << y;
                EXPECT_EQ(pixelAt(filled, x, y), expected) << x << "," << y;
            } else {
                EXPECT_EQ(pixelAt(clear, x, y).a, 0) << x << "," << y;
                EXPECT_EQ(pixelAt(filled, x, y), (Rgba{10, 200, 30, 255})) << x << "," << y;
            }
        }
    }
    // Wholly outside: a transparent output of the requested size.
    const Image away = bitmap::croppingAndScaling(source, {500, 500, 30, 20}, {60, 40});
    EXPECT_EQ(away.pixelsWide(), 60);
    EXPECT_EQ(away.pixels().extract_band(3).max(), 0);
}

// ImageMagick as the independent oracle: crop, then Lanczos resize, written with 16-bit
// samples so that its own rounding to bytes does not blur the comparison.
TEST(BitmapOpsTest, ResamplingMatchesImageMagickLanczos) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const Image source = test::photoLikeImage(160, 120);
    const QString input = dir.filePath("in.png");
    rgbOf(source).pngsave(input.toLocal8Bit().constData());
    const struct {
        int x, y, w, h;  // y-down, as ImageMagick counts
        int outWide, outHigh;
        double tolerance;  // our rounding to bytes, plus libvips' fixed-point byte reduction
    } cases[] = {
        {20, 10, 40, 30, 80, 60, 0.51},  // 2x enlargement
        {5, 30, 60, 40, 90, 60, 0.51},   // 1.5x
        {0, 0, 160, 120, 80, 60, 1.5},   // halving
        {30, 20, 100, 90, 30, 27, 1.5},  // 0.3x
        {10, 10, 50, 40, 125, 32, 2.0},  // enlarge across, reduce down
    };
    for (const auto& c : cases) {
        // A new name each time: libvips caches loads by file name.
        const QString output = dir.filePath(QString("out%1.png").arg(&c - cases));
        const QString crop = QString("%1x%2+%3+%4").arg(c.w).arg(c.h).arg(c.x).arg(c.y);
        const QString size = QString("%1x%2!").arg(c.outWide).arg(c.outHigh);
        ASSERT_EQ(
            QProcess::execute("convert", {input, "-crop", crop, "+repage", "-filter", "Lanczos",
                                          "-resize", size, "-depth", "16", output}),
            0);
        const VImage oracle = VImage::new_from_file(output.toLocal8Bit().constData()) / 257.0;
        const RectF rect{float(c.x), float(120 - c.y - c.h), float(c.w), float(c.h)};
        const Image out =
            bitmap::croppingAndScaling(source, rect, {float(c.outWide), float(c.outHigh)});
        ASSERT_EQ(out.pixelsWide(), oracle.width());
        ASSERT_EQ(out.pixelsHigh(), oracle.height());
        const VImage diff =
            (rgbOf(out) - oracle.extract_band(0, VImage::option()->set("n", 3))).abs();
        // Away from the edges (Lanczos3 reaches 3 source pixels in, and the two extend the
        // picture differently) they agree to within rounding.
        const int marginX = int(std::ceil(3.0 * std::max(1.0, double(c.outWide) / c.w))) + 1;
        const int marginY = int(std::ceil(3.0 * std::max(1.0, double(c.outHigh) / c.h))) + 1;
        const VImage inner =
            diff.crop(marginX, marginY, diff.width() - 2 * marginX, diff.height() - 2 * marginY);
        const std::string name = crop.toStdString() + " -> " + size.toStdString();
        EXPECT_LE(inner.max(), c.tolerance) << name;
        EXPECT_LT(diff.avg(), 0.4) << name;
    }
}

// Transparent pixels (stored black) must not bleed into the colour of their neighbours.
TEST(BitmapOpsTest, ResamplingTransparentSourceHasNoDarkFringe) {
    const VImage x = VImage::xyz(64, 64)[0];
    const VImage alpha = (x < 32).ifthenelse(255, 0);
    const VImage white = (x < 32).ifthenelse(255, 0);  // transparent half stored as black
    const Image source = fromBands({white, white, white, alpha}, false);
    for (SizeF size : {SizeF{23, 23}, SizeF{150, 150}}) {
        const Image out = bitmap::scaling(source, size);
        ASSERT_EQ(out.pixelsWide(), int(size.width));
        const VImage visible = out.pixels().extract_band(3) > 8;
        EXPECT_GE(visible.ifthenelse(rgbOf(out), 255).min(), 250) << size.width;
        EXPECT_EQ(out.pixels().extract_band(3).getpoint(0, 0)[0], 255);
        EXPECT_EQ(out.pixels().extract_band(3).getpoint(int(size.width) - 1, 0)[0], 0);
    }
}

// The same unsharp mask built from libvips operations in floating point, as a reference.
TEST(BitmapOpsTest, SharpeningMatchesAReferenceUnsharpMask) {
    const Image source = test::photoLikeImage(123, 77);
    const VImage rgb = rgbOf(source).cast(VIPS_FORMAT_FLOAT);
    const VImage luma = rgb.recomb(VImage::new_matrixv(3, 1, 0.222, 0.707, 0.071));
    const VImage blurred = luma.gaussblur(
        1.7, VImage::option()->set("min_ampl", 0.001)->set("precision", VIPS_PRECISION_FLOAT));
    for (float sharpness : {0.4f, 2.0f}) {
        const VImage expected =
            (rgb + (luma - blurred) * double(sharpness) + 0.5).cast(VIPS_FORMAT_UCHAR);
        const VImage diff = difference(rgbOf(bitmap::sharpening(source, sharpness)), expected);
        EXPECT_LE(diff.max(), 1) << sharpness;
        EXPECT_LT(diff.avg(), 0.05) << sharpness;
    }
}

// What is stored under fully transparent pixels is invisible and must stay so.
TEST(BitmapOpsTest, ColourHiddenUnderTransparencyChangesNothing) {
    const VImage xy = VImage::xyz(61, 40);
    const VImage inside = (xy[0] > 15) & (xy[0] < 45) & (xy[1] > 10) & (xy[1] < 30);
    const VImage alpha = inside.ifthenelse(255, 0);
    const VImage grey = (xy[0] * 3 + 40).cast(VIPS_FORMAT_UCHAR);
    const Image black = fromBands(
        {inside.ifthenelse(grey, 0), inside.ifthenelse(grey, 0), inside.ifthenelse(grey, 0), alpha},
        false);
    const Image white = fromBands({inside.ifthenelse(grey, 255), inside.ifthenelse(grey, 255),
                                   inside.ifthenelse(grey, 255), alpha},
                                  false);
    auto visible = [](const Image& image) {
        const VImage p = image.pixels();
        return (p[3] > 0).ifthenelse(p, 0);
    };
    EXPECT_EQ(
        difference(visible(bitmap::sharpening(black, 1)), visible(bitmap::sharpening(white, 1)))
            .max(),
        0);
    for (SizeF size : {SizeF{25, 17}, SizeF{130, 90}}) {
        EXPECT_EQ(
            difference(visible(bitmap::scaling(black, size)), visible(bitmap::scaling(white, size)))
                .max(),
            0)
            << size.width;
    }
    EXPECT_GT(difference(bitmap::sharpening(black, 1).pixels(), black.pixels()).max(), 0);
}

TEST(BitmapOpsTest, SharpeningKeepsGreyFlatAndMeanAndRaisesEdges) {
    // A grey step with noise: sharpening must add contrast, not colour.
    // 83 wide: not a whole number of vectors, so the loops' tails are exercised too.
    const VImage xy = VImage::xyz(83, 60);
    const VImage noise = VImage::gaussnoise(83, 60, VImage::option()->set("sigma", 6.0));
    const VImage grey = ((xy[0] < 40).ifthenelse(80, 170) + noise - 128).cast(VIPS_FORMAT_UCHAR);
    const Image source = fromBands({grey, grey, grey, grey * 0 + 255}, true);

    EXPECT_EQ(bitmap::sharpening(source, 0).pixels().get_image(), source.pixels().get_image());
    EXPECT_EQ(bitmap::sharpening(source, -1).pixels().get_image(), source.pixels().get_image());

    double previousContrast = 0;
    for (float sharpness : {0.3f, 0.6f, 1.5f}) {
        const Image out = bitmap::sharpening(source, sharpness);
        ASSERT_EQ(out.pixelsWide(), 83);
        const VImage p = out.pixels().cast(VIPS_FORMAT_INT);
        EXPECT_EQ((p[0] - p[1]).abs().max(), 0) << "hue kept";
        EXPECT_EQ((p[1] - p[2]).abs().max(), 0) << "hue kept";
        EXPECT_EQ(p[3].min(), 255) << "alpha untouched";
        EXPECT_NEAR(p[0].avg(), source.pixels()[0].avg(), 0.5);
        EXPECT_GT(difference(out.pixels(), source.pixels()).max(), 0);
        // Just either side of the step: darker stays darker, brighter brighter.
        const double contrast = p[0].crop(40, 0, 1, 60).avg() - p[0].crop(39, 0, 1, 60).avg();
        EXPECT_GT(contrast, previousContrast) << sharpness;
        previousContrast = contrast;
    }
    // A flat picture has no detail to add.
    const Image flat =
        fromBands({grey * 0 + 90, grey * 0 + 140, grey * 0 + 30, grey * 0 + 255}, true);
    EXPECT_EQ(difference(bitmap::sharpening(flat, 2).pixels(), flat.pixels()).max(), 0);
}

TEST(BitmapOpsTest, BorderPaintsTheOuterBandsOnlyAndLeavesTheArgument) {
    const Image source = test::gradientImage(100, 50);
    const VImage before = source.pixels().copy_memory();
    const Image out = bitmap::bordered(source, 5, QColor(250, 20, 40));
    ASSERT_EQ(out.pixelsWide(), 100);
    ASSERT_EQ(out.pixelsHigh(), 50);
    const std::vector<double> colour{250, 20, 40, 255};
    for (const auto& [x, y, w, h] : {std::array{0, 0, 100, 5}, std::array{0, 45, 100, 5},
                                     std::array{0, 0, 5, 50}, std::array{95, 0, 5, 50}}) {
        EXPECT_EQ((out.pixels().crop(x, y, w, h) == colour).min(), 255) << x << "," << y;
    }
    EXPECT_EQ(difference(out.pixels().crop(5, 5, 90, 40), source.pixels().crop(5, 5, 90, 40)).max(),
              0);
    EXPECT_EQ(difference(source.pixels(), before).max(), 0);
    EXPECT_EQ(bitmap::bordered(source, 0, Qt::red).pixels().get_image(),
              source.pixels().get_image());
    // A colour never set is black; a translucent one is laid over the picture.
    EXPECT_EQ(pixelAt(bitmap::bordered(source, 2, QColor()), 0, 0), (Rgba{0, 0, 0, 255}));
    const Image veiled = bitmap::bordered(source, 2, QColor(255, 255, 255, 128));
    const Rgba under = pixelAt(source, 50, 0);
    const Rgba over = pixelAt(veiled, 50, 0);
    EXPECT_NEAR(over.r, (255 + under.r) / 2.0, 1.5);
    EXPECT_NEAR(over.g, (255 + under.g) / 2.0, 1.5);
    EXPECT_EQ(over.a, 255);
    EXPECT_EQ(pixelAt(veiled, 50, 25), pixelAt(source, 50, 25));
}

}  // namespace
}  // namespace marigold
