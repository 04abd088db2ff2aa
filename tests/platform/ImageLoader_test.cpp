#include "platform/ImageLoader.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "support/BadFiles.h"
#include "support/TestImages.h"
#include "support/ToolsAndFiles.h"

namespace marigold {
namespace {

using test::Rgba;

class ImageLoaderTest : public ::testing::Test {
protected:
    QString path(const char* name) const { return dir.filePath(QString::fromUtf8(name)); }
    // Runs ImageMagick to make a test file, as an outside tool would.
    QString magick(const QString& args, const char* name) {
        const QString out = path(name);
        const int status = std::system(qPrintable(QStringLiteral("convert %1 '%2'").arg(args, out)));
        EXPECT_EQ(status, 0) << "convert failed for " << name;
        return out;
    }
    QTemporaryDir dir;
};

TEST_F(ImageLoaderTest, BadFilesAreRefusedWithOneLineReasonsUnlessPartlyReadableIsWanted) {
    for (const test::BadFile& bad : test::badImageFiles(dir.path())) {
        const LoadedImage loaded = loadImageFile(bad.path);
        EXPECT_TRUE(loaded.image.isNull()) << bad.fault;
        EXPECT_FALSE(loaded.error.isEmpty()) << bad.fault;
        EXPECT_FALSE(loaded.error.contains(QLatin1Char('\n'))) << bad.fault;
        const LoadedImage lenient = loadImageFile(bad.path, DamagedFiles::OpenReadablePart);
        EXPECT_EQ(lenient.image.isNull(), !bad.partlyReadable) << bad.fault;
        EXPECT_EQ(lenient.notice.isEmpty(), !bad.partlyReadable) << bad.fault;
    }
}

TEST_F(ImageLoaderTest, EveryLayoutBecomesRgbaSrgb) {
    struct Case {
        const char* name;
        QString args;
        Rgba expected;  // pixel (0, 0)
        bool opaque;
    };
    const std::vector<Case> cases = {
        {"grey.png", QStringLiteral("-size 8x8 xc:'gray(40%)' -colorspace Gray -depth 8"),
         {102, 102, 102, 255}, true},
        {"grey-alpha.png", QStringLiteral("-size 8x8 xc:'graya(40%,0.5)' -colorspace Gray"),
         {102, 102, 102, 128}, false},
        {"rgba.png", QStringLiteral("-size 8x8 xc:'rgba(10,200,30,0.25)'"), {10, 200, 30, 64},
         false},
        {"deep.tif", QStringLiteral("-size 8x8 xc:'rgb(255,128,0)' -depth 16"), {255, 128, 0, 255},
         true},
        {"palette.gif", QStringLiteral("-size 8x8 xc:'rgb(0,0,255)'"), {0, 0, 255, 255}, true},
        {"cmyk.jpg", QStringLiteral("-size 8x8 xc:'cmyk(0,255,255,0)' -quality 100"),
         {255, 0, 0, 255}, true},
    };
    for (const Case& c : cases) {
        const LoadedImage loaded = loadImageFile(magick(c.args, c.name));
        ASSERT_FALSE(loaded.image.isNull()) << c.name << ": " << loaded.error.toStdString();
        EXPECT_EQ(loaded.image.pixels().bands(), 4) << c.name;
        EXPECT_EQ(loaded.image.pixels().format(), VIPS_FORMAT_UCHAR) << c.name;
        const Rgba p = test::pixelAt(loaded.image, 0, 0);
        // CMYK goes through a colour profile: allow its rounding, not a wrong channel.
        const int tolerance = QString::fromUtf8(c.name).startsWith(QLatin1String("cmyk")) ? 60 : 1;
        EXPECT_NEAR(p.r, c.expected.r, tolerance) << c.name;
        EXPECT_NEAR(p.g, c.expected.g, tolerance) << c.name;
        EXPECT_NEAR(p.b, c.expected.b, tolerance) << c.name;
        EXPECT_NEAR(p.a, c.expected.a, 1) << c.name;
        EXPECT_EQ(loaded.image.isOpaque(), c.opaque) << c.name;
        EXPECT_EQ(loaded.image.size(), (SizeF{8, 8})) << c.name;
    }
}

TEST_F(ImageLoaderTest, EmbeddedProfileIsConvertedToSrgb) {
    // The same red stored in Display P3 numbers, with the P3 profile embedded: it must come
    // back as sRGB red, not as the raw (smaller) P3 numbers.
    vips::VImage red = vips::VImage::black(16, 16).new_from_image({255, 0, 0})
                           .cast(VIPS_FORMAT_UCHAR)
                           .copy(vips::VImage::option()->set("interpretation",
                                                              VIPS_INTERPRETATION_sRGB));
    vips::VImage p3 = red.icc_transform("p3", vips::VImage::option()
                                                  ->set("input_profile", "srgb")
                                                  ->set("embedded", false));
    const QString file = path("p3.png");
    p3.pngsave(file.toLocal8Bit().constData());
    ASSERT_NE(p3.getpoint(0, 0)[0], 255.0) << "P3 numbers of sRGB red differ from it";

    const LoadedImage loaded = loadImageFile(file);
    ASSERT_FALSE(loaded.image.isNull()) << loaded.error.toStdString();
    const Rgba p = test::pixelAt(loaded.image, 3, 3);
    EXPECT_NEAR(p.r, 255, 3);
    EXPECT_NEAR(p.g, 0, 3);
    EXPECT_NEAR(p.b, 0, 3);
}

TEST_F(ImageLoaderTest, LargeJpegsDecodeInParallelToTheSamePixels) {
    const QString file = test::writeJpeg(test::photoLikeImage(2500, 1700), dir.path(),
                                         QStringLiteral("large.jpg"));
    const LoadedImage loaded = loadImageFile(file);
    ASSERT_FALSE(loaded.image.isNull()) << loaded.error.toStdString();
    EXPECT_EQ(loaded.image.pixelsWide(), 2500);
    EXPECT_EQ(loaded.image.size(), (SizeF{2500, 1700}));
    // The half level is usable before the full pixels are asked for, and is a faithful
    // reduction of them.
    const Image half = loaded.image.levelWithAtLeast(1250, 850);
    EXPECT_EQ(half.pixelsWide(), 1250);
    const vips::VImage direct =
        vips::VImage::new_from_file(file.toLocal8Bit().constData()).bandjoin_const({255});
    EXPECT_EQ((loaded.image.pixels() - direct).abs().max(), 0.0) << "full pixels are exact";
    const vips::VImage boxed = direct.shrink(2, 2);
    EXPECT_LT((half.pixels().cast(VIPS_FORMAT_INT) - boxed.cast(VIPS_FORMAT_INT)).abs().avg(),
              4.0);

    QFile whole(file);
    ASSERT_TRUE(whole.open(QIODevice::ReadOnly));
    const QByteArray bytes = whole.readAll();
    QFile cut(dir.filePath(QStringLiteral("large-cut.jpg")));
    ASSERT_TRUE(cut.open(QIODevice::WriteOnly));
    cut.write(bytes.left(bytes.size() * 2 / 3));
    cut.close();
    EXPECT_TRUE(loadImageFile(cut.fileName()).image.isNull());
    // What decodes of a damaged file is the file's own top part, at full size.
    const LoadedImage partial = loadImageFile(cut.fileName(), DamagedFiles::OpenReadablePart);
    ASSERT_EQ(partial.image.pixelsWide(), 2500);
    EXPECT_EQ((partial.image.pixels().extract_area(0, 0, 2500, 400) -
               direct.extract_area(0, 0, 2500, 400)).abs().max(), 0.0);
}

// Camera photos with an orientation tag showed on their side.
TEST_F(ImageLoaderTest, PicturesAreTurnedUprightAsImageMagickTurnsThem) {
    const QString stored = test::writeJpeg(test::gradientImage(64, 32), dir.path(),
                                           QStringLiteral("stored.jpg"));
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        // Names of their own: libvips would serve an earlier file of the same name from its cache.
        const QByteArray name = QByteArray::number(orientation);
        const QString tagged = path(name + ".jpg");
        ASSERT_TRUE(QFile::copy(stored, tagged));
        test::exiftoolTag(tagged, {QStringLiteral("-Orientation#=%1").arg(orientation)});
        const LoadedImage loaded = loadImageFile(tagged);
        ASSERT_FALSE(loaded.image.isNull()) << loaded.error.toStdString();
        const QString upright = magick(QStringLiteral("'%1' -auto-orient").arg(tagged), name + ".png");
        const vips::VImage expected =
            vips::VImage::new_from_file(upright.toLocal8Bit().constData(),
                                        vips::VImage::option()->set("access", VIPS_ACCESS_RANDOM))
                .bandjoin_const({255});
        ASSERT_EQ(loaded.image.pixelsWide(), expected.width());
        ASSERT_EQ(loaded.image.size().height, float(expected.height()));
        EXPECT_LE(test::difference(loaded.image.pixels(), expected).avg(), 1.0);
    }
}

}  // namespace
}  // namespace marigold
