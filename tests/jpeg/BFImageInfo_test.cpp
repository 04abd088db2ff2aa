#include "jpeg/BFImageInfo.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "support/TestImages.h"
#include "support/ToolsAndFiles.h"

namespace marigold {
namespace {

QString field(const std::optional<BFImageInfo>& info, const QString& label) {
    for (const auto& [name, value] : infoFields(info)) {
        if (name == label) return value;
    }
    ADD_FAILURE() << "no field " << label.toStdString();
    return {};
}

TEST(BFImageInfoKinds, ExtensionsNameTheirKinds) {
    const std::pair<const char*, const char*> cases[] = {
        {"a/photo.JPG", "JPEG"}, {"photo.jpeg", "JPEG"}, {"x.psd", "Photoshop"},
        {"x.tif", "TIFF"},       {"x.TIFF", "TIFF"},     {"x.gif", "GIF"},
        {"x.png", "PNG"},        {"x.heic", "HEIC"},     {"noextension", ""},
    };
    for (const auto& [path, kind] : cases) {
        EXPECT_EQ(BFImageInfo::kindForPath(QString::fromUtf8(path)).toStdString(), kind) << path;
    }
}

// The panel's strings from files exiftool tagged; how each tag reads in either byte order is
// the EXIF parser's concern.
TEST(BFImageInfo, CameraFactsAreWhatExiftoolWroteAndTheExifThumbnailIsPreferred) {
    QTemporaryDir dir;
    const auto tagged = [&dir](const QString& name, const QStringList& tags) {
        return QString::fromStdString(test::makeJpeg(dir.path(), name, tags, "120x80"));
    };
    const QString path = tagged(
        "camera.JPG",
        {"-Make=Maker", "-Model=Model 7", "-DateTimeOriginal=2024:05:06 07:08:09",
         "-ExposureTime=0.004", "-FNumber=5.6", "-ISO=3", "-FocalLength=50", "-EXIF:Flash#=1",
         "-Orientation#=6", "-FocalPlaneXResolution=4000", "-FocalPlaneResolutionUnit#=2",
         "-ExifImageWidth=6000", "-Comment=line one\nline two"});
    const std::optional<BFImageInfo> info = BFImageInfo::fromFile(path);
    ASSERT_TRUE(info);
    const std::pair<const char*, const char*> expected[] = {
        {"Name", "camera"}, {"Kind", "JPEG"}, {"Width", "120 pixels"}, {"Height", "80 pixels"},
        {"Camera make", "Maker"}, {"Camera model", "Model 7"}, {"Flash", "Yes"},
        // A code below 50 is read as a speed code: 3 x 200.
        {"ISO", "600"}, {"Focal length", "50"}, {"Exposure time", "1/250"},
        {"Aperture", "f/5.6"}, {"Distance", "-"}, {"Orientation", "6"},
        // 50 mm on a 6000 px / (4000 px per inch) = 38.1 mm wide sensor.
        {"Focal length (35 mm)", "47"}, {"Comment", "line one\nline two"},
    };
    for (const auto& [label, value] : expected) {
        EXPECT_EQ(field(info, QString::fromUtf8(label)).toStdString(), value) << label;
    }
    EXPECT_EQ(info->creationDate(), QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9)));
    EXPECT_EQ(info->size(), QFile(path).size());
    EXPECT_EQ(info->thumbnail().size(), QSize(32, 21)) << "made from the picture: no EXIF one";

    const std::string thumb = test::makeJpeg(dir.path(), "thumb.jpg", {}, "40x40", "xc:blue");
    const std::optional<BFImageInfo> thumbed = BFImageInfo::fromFile(
        tagged("thumbed.jpg", {QString::fromStdString("-ThumbnailImage<=" + thumb)}));
    ASSERT_TRUE(thumbed);
    ASSERT_EQ(thumbed->thumbnail().size(), QSize(32, 32)) << "square like the thumbnail, not 3:2";
    const QColor centre = thumbed->thumbnail().pixelColor(16, 16);
    EXPECT_GT(centre.blue(), 200);
    EXPECT_LT(centre.red(), 40);
}

TEST(BFImageInfo, OtherFilesFallBackOnTheImageLoaderAndNothingKnownShowsDefaults) {
    QTemporaryDir dir;
    const QString png = dir.filePath("plain.png");
    test::photoLikeImage(90, 60).pixels().write_to_file(png.toLocal8Bit().constData());
    const std::optional<BFImageInfo> info = BFImageInfo::fromFile(png);
    ASSERT_TRUE(info);
    EXPECT_EQ(field(info, "Kind"), "PNG");
    EXPECT_EQ(field(info, "Width"), "90 pixels");
    EXPECT_EQ(field(info, "Flash"), "No");
    EXPECT_EQ(field(info, "ISO"), "-");
    EXPECT_EQ(info->thumbnail().size(), QSize(32, 21));
    EXPECT_FALSE(BFImageInfo::fromFile(png, false)) << "no fallback asked for";

    test::writeFile(dir.filePath("notes.jpg"), "not a picture");
    EXPECT_FALSE(BFImageInfo::fromFile(dir.filePath("notes.jpg")));
    const auto defaults = infoFields(std::nullopt);
    ASSERT_EQ(defaults.size(), 19);
    EXPECT_EQ(defaults.first().second, "dunno");
    for (qsizetype n = 1; n < defaults.size(); ++n) EXPECT_EQ(defaults[n].second, "-");
}

}  // namespace
}  // namespace marigold
