#include "output/ImageEncoders.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>
#include <sys/resource.h>

#include "support/TestImages.h"

namespace marigold {
namespace {

using vips::VImage;

VImage decoded(const QByteArray& data) {
    return VImage::new_from_buffer(data.constData(), size_t(data.size()), "",
                                   VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL))
        .copy_memory();
}

// exiftool's reading of one tag, as an outside check of what was written.
QString exiftool(const QString& path, const char* tag) {
    QProcess tool;
    tool.start(QStringLiteral("exiftool"), {QStringLiteral("-s3"), QStringLiteral("-%1").arg(QLatin1String(tag)), path});
    tool.waitForFinished();
    return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
}

// A picture whose right half fades from opaque to transparent.
Image halfTransparent(int w, int h) {
    VImage rgba = test::gradientImage(w, h).pixels();
    VImage x = VImage::xyz(w, h)[0];
    VImage alpha = (x < w / 2).ifthenelse(255, 255 - (x - w / 2) * 255 / (w / 2));
    return Image::fromRgba(VImage::bandjoin({rgba.extract_band(0, VImage::option()->set("n", 3)),
                                             alpha.cast(VIPS_FORMAT_UCHAR)})
                               .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB)),
                           false);
}

TEST(ImageEncoders, LosslessFormatsGiveBackThePixelsAndKeepAlphaOnlyWhenNeeded) {
    const Image opaque = test::gradientImage(300, 200);
    const Image soft = halfTransparent(300, 200);
    struct Case {
        const char* what;
        QByteArray data;
        const Image& source;
        int bands;
    };
    const Case cases[] = {
        {"png opaque", encodePng(opaque), opaque, 3},
        {"png transparent", encodePng(soft), soft, 4},
        {"tiff opaque", encodeTiff(opaque), opaque, 3},
        {"tiff transparent", encodeTiff(soft), soft, 4},
    };
    for (const Case& c : cases) {
        ASSERT_FALSE(c.data.isEmpty()) << c.what;
        const VImage back = decoded(c.data);
        EXPECT_EQ(back.bands(), c.bands) << c.what;
        const VImage expected = c.source.pixels().extract_band(0, VImage::option()->set("n", c.bands));
        EXPECT_EQ(test::difference(back, expected).max(), 0) << c.what;
    }
}

// Opaque pictures lose their alpha band row by row; the last pixel of a row is copied
// differently from the others, so narrow and single-column pictures are the ones to check.
TEST(ImageEncoders, OpaquePicturesOfAnyWidthKeepEveryPixel) {
    for (const auto& [w, h] : {std::pair{1, 7}, {2, 3}, {7, 1}, {3, 1000}, {1001, 2}}) {
        const Image opaque = test::gradientImage(w, h);
        const VImage back = decoded(encodePng(opaque));
        ASSERT_EQ(back.bands(), 3) << w << " x " << h;
        const VImage expected = opaque.pixels().extract_band(0, VImage::option()->set("n", 3));
        EXPECT_EQ(test::difference(back, expected).max(), 0) << w << " x " << h;
    }
}

TEST(ImageEncoders, JpegPutsTransparencyOnWhiteAndFollowsTheQuality) {
    const Image soft = halfTransparent(400, 100);
    const VImage back = decoded(encodeJpeg(soft, 95));
    EXPECT_EQ(back.bands(), 3);
    // The fully transparent right edge comes out white, the opaque left as drawn.
    EXPECT_GT(back.extract_area(396, 0, 4, 100).min(), 240);
    EXPECT_LT(test::difference(back.extract_area(0, 0, 150, 100),
                               soft.pixels().extract_area(0, 0, 150, 100).extract_band(0, VImage::option()->set("n", 3)))
                  .avg(),
              3.0);
    const Image photo = test::photoLikeImage(600, 400);
    EXPECT_LT(encodeJpeg(photo, 30).size(), encodeJpeg(photo, 60).size());
    EXPECT_LT(encodeJpeg(photo, 60).size(), encodeJpeg(photo, 95).size());
}

TEST(ImageEncoders, GifDithersTransparencyInsteadOfCuttingIt) {
    const Image soft = halfTransparent(400, 100);
    const VImage back = decoded(encodeGif(soft));
    ASSERT_EQ(back.bands(), 4);
    const VImage alpha = back[3];
    // Only on and off, and the fade is a mixture of both: about half of the faded half is
    // kept, where a threshold would keep a solid block of it.
    EXPECT_EQ(((alpha > 0) & (alpha < 255)).max(), 0);
    const double keptOfFade = (alpha.extract_area(200, 0, 200, 100) > 0).avg() / 255.0;
    EXPECT_NEAR(keptOfFade, 0.5, 0.06);
    const double keptMiddleColumn = (alpha.extract_area(300, 0, 1, 100) > 0).avg() / 255.0;
    EXPECT_GT(keptMiddleColumn, 0.3);
    EXPECT_LT(keptMiddleColumn, 0.7);
    EXPECT_EQ(alpha.extract_area(0, 0, 200, 100).min(), 255);
}

TEST(ImageEncoders, FilesRecordTheirFormatsPropertiesForOutsideReaders) {
    QTemporaryDir dir;
    const Image image = test::photoLikeImage(120, 80);
    const QString tif = dir.filePath(QStringLiteral("out.tif"));
    const QString jpg = dir.filePath(QStringLiteral("out.jpg"));
    const QString png = dir.filePath(QStringLiteral("out.png"));
    const QString gif = dir.filePath(QStringLiteral("out.gif"));
    ASSERT_TRUE(writeToTIFFFile(image, tif, std::nullopt));
    ASSERT_TRUE(writeToJPEGFile(image, jpg, 80, 0, {}));
    ASSERT_TRUE(writeToPNGFile(image, png));
    ASSERT_TRUE(writeToGIFFile(image, gif));
    EXPECT_EQ(exiftool(tif, "Compression"), QStringLiteral("LZW"));
    EXPECT_EQ(exiftool(tif, "XResolution"), QStringLiteral("72"));
    EXPECT_EQ(exiftool(tif, "ResolutionUnit"), QStringLiteral("inches"));
    EXPECT_EQ(exiftool(jpg, "JFIF:XResolution"), QStringLiteral("72"));
    EXPECT_EQ(exiftool(jpg, "JFIF:ResolutionUnit"), QStringLiteral("inches"));
    EXPECT_EQ(exiftool(png, "FileType"), QStringLiteral("PNG"));
    EXPECT_EQ(exiftool(gif, "FileType"), QStringLiteral("GIF"));
    for (const QString& path : {tif, jpg, png, gif}) {
        EXPECT_EQ(exiftool(path, "ImageSize"), QStringLiteral("120x80")) << path.toStdString();
    }
}

TEST(ImageEncoders, SizeLimitedJpegIsBelowTheLimitOrNotWrittenAtAll) {
    QTemporaryDir dir;
    const Image photo = test::photoLikeImage(2000, 1500);
    const QString path = dir.filePath(QStringLiteral("limited.jpg"));
    std::vector<JpegAttempt> trace;
    ASSERT_TRUE(writeToJPEGFile(photo, path, 100, 200, {}, &trace));
    EXPECT_GT(trace.size(), 1u);
    EXPECT_LT(QFileInfo(path).size(), 200 * 1024);
    EXPECT_EQ(QFileInfo(path).size(), trace.back().size);
    EXPECT_EQ(decoded(encodeJpeg(photo, trace.back().quality)).width(), 2000);

    // Unreachable: the file already there stays exactly as it was.
    QFile old(path);
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    const QByteArray before = old.readAll();
    old.close();
    EXPECT_FALSE(writeToJPEGFile(photo, path, 100, 10, {}));
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    EXPECT_EQ(old.readAll(), before);
}

TEST(ImageEncoders, FailedWritesLeaveNoFileBehind) {
    QTemporaryDir dir;
    const Image photo = test::photoLikeImage(800, 600);
    // A missing folder, and a file standing where a folder should be.
    QFile blocker(dir.filePath(QStringLiteral("file")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    for (const QString& path : {dir.filePath(QStringLiteral("missing/out.png")),
                                dir.filePath(QStringLiteral("file/out.png"))}) {
        EXPECT_FALSE(writeToPNGFile(photo, path));
        EXPECT_FALSE(QFileInfo::exists(path));
    }

    // A full disk: writes beyond 64 KB fail, and nothing half-written is left.
    const QString full = dir.filePath(QStringLiteral("full.tif"));
    rlimit saved{};
    getrlimit(RLIMIT_FSIZE, &saved);
    auto previous = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = saved;
    small.rlim_cur = 64 * 1024;
    setrlimit(RLIMIT_FSIZE, &small);
    const bool written = writeToTIFFFile(photo, full, std::nullopt);
    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previous);
    EXPECT_FALSE(written);
    EXPECT_FALSE(QFileInfo::exists(full));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files).size(), 1) << "only the blocker";
}

}  // namespace
}  // namespace marigold
