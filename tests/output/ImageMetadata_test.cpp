#include "output/ImageMetadata.h"

#include <gtest/gtest.h>

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <cstdlib>

#include "support/BadFiles.h"
#include "support/TestImages.h"
#include "support/ToolsAndFiles.h"

namespace marigold {
namespace {

using namespace metadata;
using test::exiftoolJson;
using test::readFile;
using test::vipsDecode;
using test::writeFile;

QByteArray blobBytes(VipsBlob* blob) {
    size_t size = 0;
    const void* data = vips_blob_get(blob, &size);
    QByteArray bytes(static_cast<const char*>(data), qsizetype(size));
    vips_area_unref(VIPS_AREA(blob));
    return bytes;
}

vips::VImage rgb(const Image& image) {
    return image.pixels().extract_band(0, vips::VImage::option()->set("n", 3));
}

QByteArray vipsJpeg(const Image& image) {
    return blobBytes(rgb(image).jpegsave_buffer(vips::VImage::option()->set("Q", 90)));
}

QByteArray vipsTiff(const Image& image, bool tiled = false) {
    return blobBytes(
        rgb(image).tiffsave_buffer(vips::VImage::option()
                                       ->set("compression", VIPS_FOREIGN_TIFF_COMPRESSION_LZW)
                                       ->set("tile", tiled)
                                       ->set("tile_width", 16)
                                       ->set("tile_height", 16)));
}

// The tags an outside tool writes into the source picture, and what must come back.
// clang-format off
const QStringList SourceTags = {
    "-Make=Marigold Optics", "-Model=MG-1", "-Artist=Ada Lovelace",
    "-DateTimeOriginal=2024:05:06 07:08:09", "-ExposureTime=1/125", "-FNumber=5.6", "-ISO=400",
    "-FocalLength=35", "-ExifIFD:Flash#=16", "-Orientation#=6", "-XResolution=240",
    "-YResolution=240", "-ResolutionUnit=inches", "-ExifImageWidth=64", "-ExifImageHeight=48",
    "-UserComment=hello there", "-GPSLatitude=51.5", "-GPSLatitudeRef=N", "-GPSLongitude=0.125",
    "-GPSLongitudeRef=W", "-Keywords=alpha", "-Keywords=beta", "-IPTC:CodedCharacterSet=UTF8",
    "-ObjectName=Görlitz", "-IPTC:DateCreated=2024:05:06"};
// clang-format on

class ImageMetadataTest : public ::testing::Test {
protected:
    QString path(const QString& name) const { return dir.filePath(name); }

    // A vips JPEG (so a real EXIF block is already there) tagged by exiftool, with a
    // thumbnail so that IFD1 exists and can be seen to stay out.
    QString taggedJpeg() {
        const QString thumb = test::writeJpeg(test::photoLikeImage(16, 12), dir.path(), "t.jpg");
        const QString file = test::writeJpeg(test::photoLikeImage(64, 48), dir.path(), "src.jpg");
        test::exiftoolTag(file, QStringList{"-ThumbnailImage<=" + thumb} + SourceTags);
        return file;
    }

    QTemporaryDir dir;
};

// Numbers compare with a tolerance (rationals), everything else exactly, type included.
void expectSame(const QVariant& actual, const QVariant& expected, const QString& what) {
    SCOPED_TRACE(what.toStdString());
    if (expected.typeId() == QMetaType::QVariantList) {
        ASSERT_EQ(actual.typeId(), QMetaType::QVariantList);
        const QVariantList a = actual.toList(), e = expected.toList();
        ASSERT_EQ(a.size(), e.size());
        for (int i = 0; i < a.size(); ++i) expectSame(a[i], e[i], what + QString("[%1]").arg(i));
    } else if (expected.typeId() == QMetaType::Double) {
        EXPECT_EQ(actual.typeId(), QMetaType::Double);
        EXPECT_NEAR(actual.toDouble(), expected.toDouble(), 1e-6);
    } else {
        EXPECT_EQ(actual.typeId(), expected.typeId());
        EXPECT_TRUE(actual == expected) << "got " << actual.toString().toStdString() << ", want "
                                        << expected.toString().toStdString();
    }
}

void expectJson(const QJsonObject& json, const QString& key, const QJsonValue& expected) {
    SCOPED_TRACE(key.toStdString());
    ASSERT_TRUE(json.contains(key));
    if (expected.isDouble())
        EXPECT_NEAR(json.value(key).toDouble(), expected.toDouble(), 1e-5);
    else
        EXPECT_EQ(json.value(key), expected)
            << json.value(key).toVariant().toString().toStdString();
}

void expectNoThumbnailNorWarnings(const QJsonObject& json) {
    for (const QString& key : json.keys()) EXPECT_FALSE(key.startsWith("IFD1:")) << qPrintable(key);
    for (const char* key : {"ExifTool:Warning", "ExifTool:Error"})
        EXPECT_FALSE(json.contains(key)) << qPrintable(json.value(key).toString());
}

// What exiftool must see in any file the source dictionary was written into.
// clang-format off
const std::vector<std::pair<QString, QJsonValue>> WrittenTags = {
    {"IFD0:Make", "Marigold Optics"}, {"IFD0:Model", "MG-1"}, {"IFD0:Artist", "Ada Lovelace"},
    {"IFD0:Orientation", 6}, {"IFD0:XResolution", 240}, {"IFD0:ResolutionUnit", 2},
    {"ExifIFD:DateTimeOriginal", "2024:05:06 07:08:09"}, {"ExifIFD:ExposureTime", 0.008},
    {"ExifIFD:FNumber", 5.6}, {"ExifIFD:ISO", 400}, {"ExifIFD:FocalLength", 35},
    {"ExifIFD:Flash", 16}, {"ExifIFD:UserComment", "hello there"},
    {"GPS:GPSLatitude", 51.5}, {"GPS:GPSLatitudeRef", "N"}, {"GPS:GPSLongitude", 0.125},
    {"GPS:GPSLongitudeRef", "W"}, {"IPTC:Keywords", QJsonArray{"alpha", "beta"}},
    {"IPTC:ObjectName", "Görlitz"}, {"IPTC:DateCreated", "2024:05:06"}};
// clang-format on

TEST_F(ImageMetadataTest, ReadsWhatAnOutsideToolWrote) {
    const std::optional<Metadata> read = metadataForFile(taggedJpeg());
    ASSERT_TRUE(read);
    const Metadata& m = *read;
    const auto dict = [&](const QString& key) { return m.value(key).toMap(); };
    const QVariantMap tiff = dict(TiffDictionary), exif = dict(ExifDictionary),
                      iptc = dict(IptcDictionary), gps = dict(GpsDictionary);
    // clang-format off
    const std::vector<std::tuple<QString, QVariantMap, QString, QVariant>> expected = {
        {"top", m, "Orientation", 6}, {"top", m, "DPIWidth", 240.0},
        {"top", m, "DPIHeight", 240.0}, {"top", m, "PixelWidth", 64}, {"top", m, "PixelHeight", 48},
        {"tiff", tiff, "Make", QString("Marigold Optics")},
        {"tiff", tiff, "Model", QString("MG-1")}, {"tiff", tiff, "Artist", QString("Ada Lovelace")},
        {"tiff", tiff, "Orientation", qlonglong(6)},
        {"tiff", tiff, "XResolution", 240.0}, {"tiff", tiff, "ResolutionUnit", qlonglong(2)},
        {"exif", exif, "DateTimeOriginal", QString("2024:05:06 07:08:09")},
        {"exif", exif, "ExposureTime", 0.008}, {"exif", exif, "FNumber", 5.6},
        {"exif", exif, "ISOSpeedRatings", qlonglong(400)}, {"exif", exif, "FocalLength", 35.0},
        {"exif", exif, "Flash", qlonglong(16)}, {"exif", exif, "PixelXDimension", qlonglong(64)},
        {"exif", exif, "UserComment", QString("hello there")},
        {"exif", exif, "ExifVersion", QByteArray("0210")},
        {"gps", gps, "GPSLatitudeRef", QString("N")},
        {"gps", gps, "GPSLatitude", QVariantList{51.0, 30.0, 0.0}},
        {"gps", gps, "GPSLongitude", QVariantList{0.0, 7.0, 30.0}},
        {"iptc", iptc, "Keywords", QVariantList{QString("alpha"), QString("beta")}},
        {"iptc", iptc, "ObjectName", QString("Görlitz")},
        {"iptc", iptc, "DateCreated", QString("2024-05-06")}};
    // clang-format on
    for (const auto& [where, dict, key, value] : expected) {
        ASSERT_TRUE(dict.contains(key)) << where.toStdString() << ' ' << key.toStdString();
        expectSame(dict.value(key), value, where + ' ' + key);
    }
    // Pointers, thumbnail and pixel-structure tags describe the old file only.
    for (const char* key : {"ExifTag", "GPSTag", "JPEGInterchangeFormat", "ImageWidth",
                            "Compression", "BitsPerSample"})
        EXPECT_FALSE(tiff.contains(key)) << key;
    EXPECT_FALSE(exif.contains("InteroperabilityTag"));
    EXPECT_FALSE(exif.contains("MakerNote"));
    const QSet<QString> topLevel = {"Orientation",  "DPIWidth",    "DPIHeight",
                                    "PixelWidth",   "PixelHeight", TiffDictionary,
                                    ExifDictionary, GpsDictionary, IptcDictionary};
    for (const QString& key : m.keys()) EXPECT_TRUE(topLevel.contains(key)) << qPrintable(key);
}

TEST_F(ImageMetadataTest, RoundTripsIntoNewJpegAndTiffWithoutTouchingPixels) {
    const std::optional<Metadata> source = metadataForFile(taggedJpeg());
    ASSERT_TRUE(source);
    const Image picture = test::photoLikeImage(40, 30);
    const std::vector<std::pair<QString, QByteArray>> encodings = {{"out.jpg", vipsJpeg(picture)},
                                                                   {"out.tif", vipsTiff(picture)}};
    for (const auto& [name, encoded] : encodings) {
        SCOPED_TRACE(name.toStdString());
        const QByteArray combined = combineDataAndMetadata(encoded, *source);
        ASSERT_NE(combined, encoded);
        writeFile(path(name), combined);
        const QJsonObject json = exiftoolJson(path(name));
        for (const auto& [key, value] : WrittenTags) expectJson(json, key, value);
        // The dimension tags follow the new pixels; no thumbnail comes along.
        expectJson(json, "ExifIFD:ExifImageWidth", 40);
        expectJson(json, "ExifIFD:ExifImageHeight", 30);
        expectNoThumbnailNorWarnings(json);
        // Same pixels: the data was not re-encoded.
        const vips::VImage before = vipsDecode(encoded), after = vipsDecode(combined);
        ASSERT_EQ(after.width(), 40);
        ASSERT_EQ(after.height(), 30);
        EXPECT_EQ(test::difference(before, after).max(), 0);
    }
}

TEST_F(ImageMetadataTest, TiffIntoTiffKeepsTheNewFilesStructure) {
    const QString source = path("src.tif");
    writeFile(source, vipsTiff(test::photoLikeImage(64, 48)));
    test::exiftoolTag(source, {"-Make=Scanner", "-Orientation#=3", "-Keywords=k1"});
    std::optional<Metadata> read = metadataForFile(source);
    ASSERT_TRUE(read);
    QVariantMap tiff = read->value(TiffDictionary).toMap();
    EXPECT_EQ(tiff.value("Make"), QString("Scanner"));
    EXPECT_EQ(tiff.value("Orientation").toInt(), 3);
    for (const char* key : {"ImageWidth", "ImageLength", "StripOffsets", "StripByteCounts",
                            "RowsPerStrip", "Compression", "BitsPerSample", "Predictor",
                            "SamplesPerPixel", "PlanarConfiguration", "SampleFormat"})
        EXPECT_FALSE(tiff.contains(key)) << key;
    // A hand-made dictionary naming structure tags must not reach the file either.
    tiff.insert(QVariantMap{{"ImageWidth", 9999}, {"StripOffsets", 0}, {"Compression", 1},
                            {"BitsPerSample", QVariantList{16, 16, 16}}, {"TileWidth", 3}});
    read->insert(TiffDictionary, tiff);

    const Image picture = test::photoLikeImage(40, 30);
    const QByteArray encoded = vipsTiff(picture, /*tiled=*/true);
    const QByteArray combined = combineDataAndMetadata(encoded, *read);
    writeFile(path("out.tif"), combined);
    const QJsonObject json = exiftoolJson(path("out.tif"));
    expectJson(json, "IFD0:Make", "Scanner");
    expectJson(json, "IFD0:Orientation", 3);
    expectJson(json, "IPTC:Keywords", "k1");
    expectJson(json, "IFD0:ImageWidth", 40);
    expectJson(json, "IFD0:Compression", 5);
    expectJson(json, "IFD0:BitsPerSample", "8 8 8");
    expectJson(json, "IFD0:TileWidth", 16);
    expectNoThumbnailNorWarnings(json);
    EXPECT_EQ(test::difference(vipsDecode(encoded), vipsDecode(combined)).max(), 0);
}

TEST_F(ImageMetadataTest, UnwritableValuesAreSkippedNotFatal) {
    const Metadata hostile = {
        {"Orientation", "sideways"},
        {"DPIWidth", -3},
        {TiffDictionary, QVariantMap{{"Make", QVariantList{1, 2}}, {"Model", "kept"},
                                     {"NoSuchTag", 1}, {"ImageWidth", 9999},
                                     {"JPEGInterchangeFormat", 0}, {"0xc7a1", "private"}}},
        {ExifDictionary, QVariantMap{{"ISOSpeedRatings", -5},
                                     {"MakerNote", QByteArray("Nikon\0junk", 10)},
                                     {"FNumber", "wide open"}, {"ExposureTime", std::nan("")},
                                     {"FocalLength", 1e30}, {"Flash", 70000}}},
        {IptcDictionary, QVariantMap{{"NotADataSet", "x"}, {"City", "Lyon"}}},
        {GpsDictionary, "not a dictionary"},
    };
    const QByteArray encoded = vipsJpeg(test::photoLikeImage(24, 16));
    writeFile(path("h.jpg"), combineDataAndMetadata(encoded, hostile));
    const QJsonObject json = exiftoolJson(path("h.jpg"));
    expectJson(json, "IFD0:Model", "kept");
    expectJson(json, "IPTC:City", "Lyon");
    expectJson(json, "IFD0:Orientation", 1);  // vips' own, untouched
    // Structure tags from a dictionary never reach the file.
    for (const QString& key : json.keys()) {
        EXPECT_FALSE(key.startsWith("IFD1:") || key.contains("MakerNote")) << qPrintable(key);
    }
    for (const char* key : {"IFD0:ImageWidth", "IFD0:Make", "ExifIFD:ISO", "ExifIFD:FNumber",
                            "ExifIFD:ExposureTime", "ExifIFD:FocalLength", "ExifIFD:Flash"})
        EXPECT_FALSE(json.contains(key)) << key;
    EXPECT_EQ(vipsDecode(readFile(path("h.jpg"))).width(), 24);
}

// The top-level keys win over the TIFF dictionary's, and the resolution reaches EXIF, the
// TIFF header and a JFIF segment alike.
TEST_F(ImageMetadataTest, TopLevelResolutionAndOrientationAreWritten) {
    const Metadata dpi = {
        {"DPIWidth", 300}, {"DPIHeight", 300}, {"Orientation", 8},
        {TiffDictionary,
         QVariantMap{{"XResolution", 72}, {"YResolution", 72}, {"Orientation", 6}}}};
    // ImageMagick writes a JFIF APP0, vips does not.
    const std::string magickJpeg = test::makeJpeg(dir.path(), "m.jpg", {}, "32x24", "xc:teal");
    struct Case {
        const char* name;
        QByteArray encoded;
        bool jfif;
    };
    const Case cases[] = {{"magick.jpg", readFile(QString::fromStdString(magickJpeg)), true},
                          {"vips.jpg", vipsJpeg(test::photoLikeImage(32, 24)), false},
                          {"vips.tif", vipsTiff(test::photoLikeImage(32, 24)), false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        writeFile(path(c.name), combineDataAndMetadata(c.encoded, dpi));
        const QJsonObject json = exiftoolJson(path(c.name));
        expectJson(json, "IFD0:XResolution", 300);
        expectJson(json, "IFD0:YResolution", 300);
        expectJson(json, "IFD0:ResolutionUnit", 2);
        expectJson(json, "IFD0:Orientation", 8);
        if (c.jfif) {
            expectJson(json, "JFIF:XResolution", 300);
            expectJson(json, "JFIF:YResolution", 300);
            expectJson(json, "JFIF:ResolutionUnit", 1);
        }
        const std::optional<Metadata> back = metadataForFile(path(c.name));
        ASSERT_TRUE(back);
        EXPECT_DOUBLE_EQ(back->value("DPIWidth").toDouble(), 300);
    }
}

TEST_F(ImageMetadataTest, ResolutionIsReadInDotsPerInch) {
    struct Case {
        const char* name;
        QString make;  // shell command writing the file; %1 = path
        std::optional<double> dpi;
    };
    const Case cases[] = {
        {"cm.jpg",
         "vips black %1 8 8 && exiftool -q -overwrite_original -XResolution=118.11 "
         "-YResolution=118.11 -ResolutionUnit=cm %1",
         300.0},
        {"jfif.jpg", "convert -size 8x8 xc:red -density 150 -units PixelsPerInch %1", 150.0},
        {"jfif-cm.jpg", "convert -size 8x8 xc:red -density 40 -units PixelsPerCentimeter %1",
         101.6},
        {"aspect.jpg", "convert -size 8x8 xc:red %1", std::nullopt},  // JFIF units 0
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const QString file = path(c.name);
        ASSERT_EQ(std::system(qPrintable(c.make.arg("'" + file + "'"))), 0);
        const std::optional<Metadata> m = metadataForFile(file);
        ASSERT_TRUE(m);
        EXPECT_EQ(m->contains("DPIWidth"), c.dpi.has_value());
        if (c.dpi) {
            EXPECT_NEAR(m->value("DPIWidth").toDouble(), *c.dpi, 0.01);
            EXPECT_NEAR(m->value("DPIHeight").toDouble(), *c.dpi, 0.01);
        }
    }
}

TEST_F(ImageMetadataTest, BadFilesGiveNoMetadataAndNoCrash) {
    EXPECT_FALSE(metadataForFile(QString()));
    const Metadata dpi{{"DPIWidth", 72}, {"DPIHeight", 72}};
    const QSet<QString> mustRefuse = {"text named .jpg", "empty file", "folder", "missing file"};
    for (const test::BadFile& bad : test::badImageFiles(dir.path())) {
        SCOPED_TRACE(bad.fault);
        const std::optional<Metadata> m = metadataForFile(bad.path);
        if (mustRefuse.contains(bad.fault)) {
            EXPECT_FALSE(m);
        }
        // Bytes that are not a whole JPEG or TIFF come back unchanged or still a JPEG.
        const QByteArray bytes = readFile(bad.path);
        const QByteArray combined = combineDataAndMetadata(bytes, dpi);
        EXPECT_TRUE(combined == bytes || combined.startsWith("\xFF\xD8"));
    }
    const QByteArray png = readFile(path("huge.png"));
    EXPECT_EQ(combineDataAndMetadata(png, dpi), png);
    const QByteArray jpeg = vipsJpeg(test::photoLikeImage(8, 8));
    EXPECT_EQ(combineDataAndMetadata(jpeg.left(3), dpi), jpeg.left(3));
    EXPECT_EQ(combineDataAndMetadata(jpeg, {}), jpeg);
}

// Damaged metadata blocks (bytes overwritten inside the EXIF and IPTC segments) must give a
// result or none, never a crash, and a combine must still hand back a JPEG.
TEST_F(ImageMetadataTest, DamagedMetadataBlocksDoNotCrash) {
    const QByteArray tagged = readFile(taggedJpeg());
    const Metadata dictionary = *metadataForFile(path("src.jpg"));
    const int metadataEnd = int(tagged.indexOf("\xFF\xDB"));  // first quantisation table
    ASSERT_GT(metadataEnd, 100);
    QRandomGenerator random(42);
    int readable = 0;
    for (int round = 0; round < 300; ++round) {
        QByteArray damaged = tagged;
        for (int k = 0; k < 6; ++k)
            damaged[random.bounded(20, metadataEnd)] = char(random.generate());
        const QString file = path("damaged.jpg");
        writeFile(file, damaged);
        readable += metadataForFile(file).has_value();
        const QByteArray combined = combineDataAndMetadata(damaged, dictionary);
        ASSERT_TRUE(combined.startsWith("\xFF\xD8")) << "round " << round;
    }
    EXPECT_GT(readable, 0);  // the damage did not simply make every file unreadable
}

}  // namespace
}  // namespace marigold
