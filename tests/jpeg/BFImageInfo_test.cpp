#include "jpeg/BFImageInfo.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include "support/TestImages.h"

namespace marigold {
namespace {

class BFImageInfoTest : public ::testing::Test {
protected:
    // A small JPEG tagged by exiftool, as a camera would have left it.
    QString taggedJpeg(const QString& name, const QStringList& tags) {
        const QString path = test::writeJpeg(test::photoLikeImage(120, 80), dir.path(), name);
        QProcess tool;
        tool.start(QStringLiteral("exiftool"),
                   QStringList{QStringLiteral("-q"), QStringLiteral("-overwrite_original")} + tags +
                       QStringList{path});
        tool.waitForFinished();
        EXPECT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
        return path;
    }
    QString field(const std::optional<BFImageInfo>& info, const QString& label) {
        for (const auto& [name, value] : infoFields(info)) {
            if (name == label) return value;
        }
        ADD_FAILURE() << "no field " << label.toStdString();
        return {};
    }
    QTemporaryDir dir;
};

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

// The panel's strings from files exiftool tagged in either byte order.
class BFImageInfoByteOrder : public BFImageInfoTest,
                             public ::testing::WithParamInterface<const char*> {};

TEST_P(BFImageInfoByteOrder, CameraFactsAreWhatExiftoolWrote) {
    const QString path = taggedJpeg(QStringLiteral("camera.JPG"),
        {QStringLiteral("-ExifByteOrder=") + GetParam(), QStringLiteral("-Make=Maker"), QStringLiteral("-Model=Model 7"),
         QStringLiteral("-DateTimeOriginal=2024:05:06 07:08:09"), QStringLiteral("-ExposureTime=0.004"),
         QStringLiteral("-FNumber=5.6"), QStringLiteral("-ISO=3"), QStringLiteral("-FocalLength=50"),
         QStringLiteral("-EXIF:Flash#=1"), QStringLiteral("-Orientation#=6"),
         QStringLiteral("-FocalPlaneXResolution=4000"), QStringLiteral("-FocalPlaneResolutionUnit#=2"),
         QStringLiteral("-ExifImageWidth=6000"), QStringLiteral("-Comment=line one\nline two")});
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
    EXPECT_FALSE(info->thumbnail().isNull()) << "made from the picture: there is no EXIF thumbnail";
    EXPECT_EQ(info->thumbnail().width(), 32);
    EXPECT_EQ(info->thumbnail().height(), 21);
}

TEST_P(BFImageInfoByteOrder, TheExifThumbnailIsPreferredToThePicture) {
    QImage blue(40, 40, QImage::Format_RGB32);
    blue.fill(Qt::blue);
    const QString thumb = dir.filePath(QStringLiteral("thumb.jpg"));
    ASSERT_TRUE(blue.save(thumb, "JPEG", 95));
    const QString path = taggedJpeg(QStringLiteral("thumbed.jpg"),
        {QStringLiteral("-ExifByteOrder=") + GetParam(), QStringLiteral("-ThumbnailImage<=") + thumb});
    const std::optional<BFImageInfo> info = BFImageInfo::fromFile(path);
    ASSERT_TRUE(info);
    ASSERT_EQ(info->thumbnail().size(), QSize(32, 32)) << "square like the thumbnail, not 3:2";
    const QColor centre = info->thumbnail().pixelColor(16, 16);
    EXPECT_GT(centre.blue(), 200);
    EXPECT_LT(centre.red(), 40);
}

INSTANTIATE_TEST_SUITE_P(ByteOrders, BFImageInfoByteOrder, ::testing::Values("II", "MM"));

TEST_F(BFImageInfoTest, OtherFilesFallBackOnTheImageLoaderAndNothingKnownShowsDefaults) {
    const QString png = dir.filePath(QStringLiteral("plain.png"));
    test::photoLikeImage(90, 60).pixels().write_to_file(png.toLocal8Bit().constData());
    const std::optional<BFImageInfo> info = BFImageInfo::fromFile(png);
    ASSERT_TRUE(info);
    EXPECT_EQ(field(info, QStringLiteral("Kind")), QStringLiteral("PNG"));
    EXPECT_EQ(field(info, QStringLiteral("Width")), QStringLiteral("90 pixels"));
    EXPECT_EQ(field(info, QStringLiteral("Flash")), QStringLiteral("No"));
    EXPECT_EQ(field(info, QStringLiteral("ISO")), QStringLiteral("-"));
    EXPECT_EQ(info->thumbnail().size(), QSize(32, 21));
    EXPECT_FALSE(BFImageInfo::fromFile(png, false)) << "no fallback asked for";

    QFile text(dir.filePath(QStringLiteral("notes.jpg")));
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write("not a picture");
    text.close();
    EXPECT_FALSE(BFImageInfo::fromFile(text.fileName()));
    const auto defaults = infoFields(std::nullopt);
    ASSERT_EQ(defaults.size(), 19);
    EXPECT_EQ(defaults.first().second, QStringLiteral("dunno"));
    for (qsizetype n = 1; n < defaults.size(); ++n) EXPECT_EQ(defaults[n].second, QStringLiteral("-"));
}

TEST_F(BFImageInfoTest, FileDatesSortAgainstTheOthersCreationDate) {
    // a: created 2020, file 2022; b: created 2021, file 2019.
    const QString a = taggedJpeg(QStringLiteral("a.jpg"), {QStringLiteral("-DateTimeOriginal=2020:01:01 00:00:00"),
                                                           QStringLiteral("-FileModifyDate=2022:01:01 00:00:00")});
    const QString b = taggedJpeg(QStringLiteral("b.jpg"), {QStringLiteral("-DateTimeOriginal=2021:01:01 00:00:00"),
                                                           QStringLiteral("-FileModifyDate=2019:01:01 00:00:00")});
    const auto infoA = BFImageInfo::fromFile(a), infoB = BFImageInfo::fromFile(b);
    ASSERT_TRUE(infoA && infoB);
    EXPECT_LT(infoA->compareCreationdate(*infoB), 0);
    // a's file date (2022) against b's creation date (2021): later, although b's file date
    // (2019) is earlier still.
    EXPECT_GT(infoA->compareFiledate(*infoB), 0);
    EXPECT_LT(infoB->compareFiledate(*infoA), 0) << "2019 against 2020";
    EXPECT_LT(infoA->compareName(*infoB), 0);
    EXPECT_EQ(infoA->compareSize(*infoA), 0) << "a tie on size and name";
}

}  // namespace
}  // namespace marigold
