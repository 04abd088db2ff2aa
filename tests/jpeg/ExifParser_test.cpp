#include <QFileInfo>
#include <QTemporaryDir>

#include <climits>
#include <functional>

#include "jpeg/JpegTestFiles.h"

namespace marigold {
namespace {

using test::Bytes;
using test::exifBlock;
using test::operator+;
using test::Tiff;

const std::string kNonfatal = "Nonfatal Error : ";

// A hand-made TIFF structure parsed as one APP1 segment: the record and every message.
std::pair<ImageInfo, std::string> parsed(const Bytes& tiff) {
    JpegContext context;
    test::CapturedStreams streams(context);
    Bytes block = exifBlock(tiff);
    context.processExif(block);
    ImageInfo info = context.imageInfo();
    info.thumbnailLocation = info.orientationLocation = nullptr;  // they pointed into `block`
    return {info, streams.err()};
}

struct HostileCase {
    const char* name;
    std::function<Bytes(const Tiff&)> tiff;
    std::string err;  // every message, in order (or the first ones, when `prefixOnly`)
    std::string make = "ab";
    bool prefixOnly = false;
};

class ExifHostileBlock : public ::testing::TestWithParam<HostileCase> {};

TEST_P(ExifHostileBlock, ReportsAndKeepsWhatIsSound) {
    const HostileCase& c = GetParam();
    for (const bool mm : {false, true}) {
        SCOPED_TRACE(mm ? "MM" : "II");
        const auto [info, err] = parsed(c.tiff(Tiff{mm}));
        EXPECT_EQ(c.prefixOnly ? err.substr(0, c.err.size()) : err, c.err);
        EXPECT_EQ(info.cameraMake, c.make);
    }
}

const std::string kNesting =
    kNonfatal + "Maximum directory nesting exceeded (corrupt exif header)\n";

// clang-format off
INSTANTIATE_TEST_SUITE_P(ExifBlocks, ExifHostileBlock, ::testing::Values(
    HostileCase{"Sound", [](const Tiff& t) { return t.header() + t.ifd({t.makeEntry()}); }, ""},
    HostileCase{"DirectoryLinksToItself",
                [](const Tiff& t) { return t.header() + t.ifd({t.makeEntry()}, 8); }, kNesting},
    // Every entry a sub-directory link back to its own directory: without a bound on the
    // directories walked this fans out exponentially.
    HostileCase{"EveryEntryLinksBack",
                [](const Tiff& t) {
                    std::vector<Bytes> entries{t.makeEntry()};
                    for (int i = 0; i < 400; ++i) entries.push_back(t.longEntry(0x8769, 8));
                    return t.header() + t.ifd(entries, 8);
                }, kNesting, "ab", true},
    HostileCase{"CountRunsPastTheBlock",
                [](const Tiff& t) { return t.header() + t.u16(1000) + t.makeEntry(); },
                kNonfatal + "Illegally sized directory\n", ""},
    HostileCase{"FirstDirectoryOutside",
                [](const Tiff& t) { return t.header(500) + t.ifd({t.makeEntry()}); },
                kNonfatal + "Suspicious offset of first IFD value\n" + kNonfatal + "Illegally sized directory\n", ""},
    HostileCase{"FirstDirectoryFurtherOnButInside",
                [](const Tiff& t) { return t.header(20) + Bytes(12, 0) + t.ifd({t.makeEntry()}); },
                kNonfatal + "Suspicious offset of first IFD value\n"},
    HostileCase{"DirectoryFillsTheBlockWithoutALink",
                [](const Tiff& t) { return t.header() + t.u16(1) + t.makeEntry(); }, ""},
    HostileCase{"ValuePointerPastTheBlock",
                [](const Tiff& t) { return t.header() + t.ifd({t.makeEntry(), t.entry(0x0110, 2, 20, t.u32(1000))}); },
                kNonfatal + "Illegal value pointer for tag 0110\n"},
    // 8 x 0x20000001 bytes is 8 once wrapped to 32 bits.
    HostileCase{"ByteCountWouldWrap",
                [](const Tiff& t) { return t.header() + t.ifd({t.makeEntry(), t.entry(0x829A, 12, 0x20000001, t.u32(8))}); },
                kNonfatal + "Illegal value pointer for tag 829a\n"},
    HostileCase{"OffsetPlusCountWouldWrap",
                [](const Tiff& t) { return t.header() + t.ifd({t.makeEntry(), t.entry(0x0110, 2, 16, t.u32(0xFFFFFFF8))}); },
                kNonfatal + "Illegal value pointer for tag 0110\n"},
    HostileCase{"IllegalFormats",
                [](const Tiff& t) { return t.header() + t.ifd({t.entry(0x0110, 13, 1, t.u32(0)), t.makeEntry(), t.entry(0x0112, 0, 1, t.u32(0))}); },
                kNonfatal + "Illegal number format 13 for tag 0110\n" + kNonfatal + "Illegal number format 0 for tag 0112\n"},
    HostileCase{"NextLinkJustPastTheEnd",
                [](const Tiff& t) { return t.header() + t.ifd({t.makeEntry()}, 8 + 18 + 10); }, ""},
    HostileCase{"NextLinkFarPastTheEnd",
                [](const Tiff& t) { return t.header() + t.ifd({t.makeEntry()}, 8 + 18 + 20); },
                kNonfatal + "Illegal subdirectory link\n"},
    HostileCase{"SubDirectoryOutside",
                [](const Tiff& t) { return t.header() + t.ifd({t.makeEntry(), t.longEntry(0x8769, 5000), t.longEntry(0xA005, 0xFFFFFFFF)}); },
                kNonfatal + "Illegal exif or interop ofset directory link\n" + kNonfatal + "Illegal exif or interop ofset directory link\n"},
    HostileCase{"BadAlignment",
                [](const Tiff& t) { Bytes b = t.header() + t.ifd({t.makeEntry()}); b[0] = 'X'; return b; },
                kNonfatal + "Invalid Exif alignment marker.\n", ""},
    HostileCase{"BadStart",
                [](const Tiff& t) { Bytes b = t.header() + t.ifd({t.makeEntry()}); b[t.mm ? 3 : 2] = 0x2B; return b; },
                kNonfatal + "Invalid Exif start (1)\n", ""},
    HostileCase{"HeaderCutShort", [](const Tiff& t) { return t.mm ? Bytes{'M', 'M', 0} : Bytes{'I', 'I', 0x2A}; },
                kNonfatal + "Invalid Exif start (1)\n", ""}),
    [](const auto& info) { return info.param.name; });
// clang-format on

// Numbers no camera writes must still convert without undefined behaviour.
TEST(ExifHostileBlock, ExtremeNumbersConvertSafely) {
    for (const bool mm : {false, true}) {
        const Tiff t{mm};
        const std::uint32_t values = 8 + 2 + 5 * 12 + 4;
        const Bytes tiff = t.header() +
                           t.ifd({t.entry(0x0112, 12, 1, t.u32(values)),         // -1e300
                                  t.entry(0x829A, 5, 1, t.u32(values + 8)),      // 1/0
                                  t.entry(0x829D, 10, 1, t.u32(values + 16)),    // INT_MIN/-1
                                  t.entry(0x8827, 9, 1, t.u32(0x80000000)),      // INT_MIN
                                  t.entry(0x920A, 11, 1, t.u32(0x7FC00000))}) +  // NaN
                           (mm ? Bytes{0xFE, 0x37, 0xE4, 0x3C, 0x88, 0x00, 0x75, 0x9C}
                               : Bytes{0x9C, 0x75, 0x00, 0x88, 0x3C, 0xE4, 0x37, 0xFE}) +
                           t.u32(1) + t.u32(0) + t.u32(0x80000000) + t.u32(0xFFFFFFFF);
        const auto [info, err] = parsed(tiff);
        EXPECT_EQ(info.orientation, 0);
        EXPECT_EQ(err, kNonfatal + "Undefined rotation value -2147483648\n");
        EXPECT_EQ(info.exposureTime, 0.0f) << "a zero denominator reads as 0";
        EXPECT_EQ(info.apertureFNumber, 2147483648.0f);
        EXPECT_EQ(info.isoEquivalent, INT_MIN) << "the low-ISO fix saturates";
        EXPECT_EQ(info.focalLength, 0.0f);
    }
}

// Every prefix of a real block parses to a subset of what the whole block gives.
TEST(ExifHostileBlock, CutBlocksYieldOnlyWholeValues) {
    QTemporaryDir dir;
    const std::string path = test::makeJpeg(
        dir.path(), "cut.jpg",
        {"-ExifByteOrder=MM", "-Make=Cutter", "-Model=Cut 1", "-ISO=200", "-ExposureTime=1/30",
         "-Orientation#=3", "-FocalLength=50", test::thumbnailTag(dir.path())});
    Bytes whole = test::scanJpeg(test::readBytes(path)).first(0xE1)->data;
    JpegContext reference;
    reference.processExif(whole);
    const ImageInfo& all = reference.imageInfo();
    ASSERT_EQ(all.cameraMake, "Cutter");
    ASSERT_GT(all.thumbnailSize, 0u);
    const auto either = [](const auto& value, const auto& full) {
        return value == std::decay_t<decltype(value)>{} || value == full;
    };
    for (std::size_t cut = 0; cut < whole.size(); ++cut) {
        JpegContext context;
        context.setErrorStream(nullptr);
        Bytes part(whole.begin(), whole.begin() + long(cut));
        context.processExif(part);
        const ImageInfo& got = context.imageInfo();
        EXPECT_TRUE(
            either(got.cameraMake, all.cameraMake) && either(got.cameraModel, all.cameraModel) &&
            either(got.isoEquivalent, all.isoEquivalent) &&
            either(got.exposureTime, all.exposureTime) &&
            either(got.orientation, all.orientation) && either(got.focalLength, all.focalLength) &&
            either(got.thumbnailSize, all.thumbnailSize))
            << "cut at " << cut;
        if (got.thumbnailLocation) {
            EXPECT_LE(got.thumbnailOffset + got.thumbnailSize + 8, cut);
        }
    }
}

// A thumbnail-bearing block laid out by hand: IFD0 with a make, then the thumbnail directory
// [compression, offset, length, resolution unit] and four bytes of "thumbnail".
Bytes thumbnailBlock(const Tiff& t) {
    constexpr std::uint32_t kIfd1 = 8 + 18, kThumb = kIfd1 + 2 + 4 * 12 + 4;
    return exifBlock(t.header() + t.ifd({t.makeEntry()}, kIfd1) +
                     t.ifd({t.shortEntry(0x0103, 6), t.longEntry(0x0201, kThumb),
                            t.longEntry(0x0202, 4), t.shortEntry(0x0128, 2)},
                           0xAABBCCDD) +
                     Bytes{0xFF, 0xD8, 0xFF, 0xD9});
}

// The thumbnail is no EXIF block, so removing it edits the directory remembered from the last
// valid block: a failing block leaves that memory alone, a valid block without a thumbnail
// clears it. The block keeps its length and the thumbnail bytes.
TEST(ExifThumbnail, RemovingItTakesOutBothPointerEntriesFromTheRememberedDirectory) {
    for (const bool mm : {false, true}) {
        SCOPED_TRACE(mm ? "MM" : "II");
        const Tiff t{mm};
        Bytes block = thumbnailBlock(t);
        const Bytes before = block;
        JpegContext context;
        context.setErrorStream(nullptr);
        context.processExif(block);
        const std::span<const std::uint8_t> thumbnail = context.imageInfo().thumbnail();
        ASSERT_EQ(Bytes(thumbnail.begin(), thumbnail.end()), (Bytes{0xFF, 0xD8, 0xFF, 0xD9}));
        ASSERT_EQ(thumbnail.data(), block.data() + block.size() - 4);
        Bytes badAlignment = exifBlock(t.header() + t.ifd({}));
        badAlignment[8] = 'X';
        context.processExif(badAlignment);
        context.removeThumbnail({block.data() + block.size() - 4, 4});
        ASSERT_EQ(block.size(), before.size());
        const Bytes stripped =
            t.ifd({t.shortEntry(0x0103, 6), t.shortEntry(0x0128, 2)}, 0xAABBCCDD);
        EXPECT_EQ(Bytes(block.begin() + 8 + 26, block.begin() + 8 + 26 + long(stripped.size())),
                  stripped);
        EXPECT_EQ(Bytes(block.end() - 4, block.end()), (Bytes{0xFF, 0xD8, 0xFF, 0xD9}));

        Bytes untouched = before, noThumbnail = exifBlock(t.header() + t.ifd({t.makeEntry()}));
        context.processExif(untouched);
        context.processExif(noThumbnail);
        context.removeThumbnail({untouched.data() + untouched.size() - 4, 4});
        EXPECT_EQ(untouched, before);
    }
}

// Files written by exiftool in both byte orders, read back by the parser and compared with
// what exiftool itself reads.
class ExifFromExiftool : public ::testing::TestWithParam<const char*> {
protected:
    std::string tagged(const QStringList& args) {
        return test::makeJpeg(dir.path(), "tagged.jpg",
                              QStringList{QString("-ExifByteOrder=") + GetParam()} + args);
    }
    QTemporaryDir dir;
};

TEST_P(ExifFromExiftool, RecordMatchesWhatExiftoolReads) {
    const std::string path = tagged(
        {"-Make=Marigold Cam", "-Model=M 1", "-DateTimeOriginal=2021:06:05 14:30:15",
         "-ExposureTime=1/250", "-FNumber=5.6", "-ISO=400", "-FocalLength=35",
         "-ExifIFD:Flash#=25", "-Orientation#=6", "-MeteringMode#=5", "-LightSource#=4",
         "-ExposureProgram#=2", "-ExposureCompensation=-0.7", "-SubjectDistance=3.5",
         "-FocalPlaneXResolution=2000", "-FocalPlaneResolutionUnit#=3", "-ExifImageWidth=3000",
         "-ExifImageHeight=4000", "-Comment=line one\r\nline two", test::thumbnailTag(dir.path())});
    const QJsonObject json = test::exiftoolJson(path);
    ASSERT_EQ(json["File:ExifByteOrder"].toString(), GetParam());

    JpegContext context;
    test::CapturedStreams streams(context);
    ASSERT_TRUE(context.parseFile(path));
    EXPECT_EQ(streams.err() + streams.out(), "");
    const ImageInfo& info = context.imageInfo();
    const auto number = [&](const char* key) { return float(json[key].toDouble()); };
    EXPECT_EQ(info.cameraMake, json["IFD0:Make"].toString().toStdString());
    EXPECT_EQ(info.cameraModel, json["IFD0:Model"].toString().toStdString());
    EXPECT_EQ(info.dateTime, json["ExifIFD:DateTimeOriginal"].toString().toStdString());
    EXPECT_FLOAT_EQ(info.exposureTime, number("ExifIFD:ExposureTime"));
    EXPECT_FLOAT_EQ(info.apertureFNumber, number("ExifIFD:FNumber"));
    EXPECT_EQ(info.isoEquivalent, json["ExifIFD:ISO"].toInt());
    EXPECT_FLOAT_EQ(info.focalLength, number("ExifIFD:FocalLength"));
    EXPECT_EQ(info.flashUsed, json["ExifIFD:Flash"].toInt() & 7 ? 1 : 0);
    EXPECT_EQ(info.orientation, json["IFD0:Orientation"].toInt());
    EXPECT_EQ(info.meteringMode, json["ExifIFD:MeteringMode"].toInt());
    EXPECT_EQ(info.lightSource, json["ExifIFD:LightSource"].toInt());
    EXPECT_EQ(info.exposureProgram, json["ExifIFD:ExposureProgram"].toInt());
    EXPECT_FLOAT_EQ(info.exposureBias, number("ExifIFD:ExposureCompensation"));
    EXPECT_FLOAT_EQ(info.distance, number("ExifIFD:SubjectDistance"));
    // The larger EXIF dimension over the focal-plane resolution, in centimetres here.
    EXPECT_FLOAT_EQ(info.ccdWidth, 4000 * 10 / number("ExifIFD:FocalPlaneXResolution"));
    EXPECT_EQ(info.width, json["File:ImageWidth"].toInt());
    EXPECT_EQ(info.height, json["File:ImageHeight"].toInt());
    EXPECT_EQ(info.isColor, json["File:ColorComponents"].toInt() == 3);
    EXPECT_EQ(info.process, 0xC0 + json["File:EncodingProcess"].toInt());
    EXPECT_EQ(info.comments, json["File:Comment"].toString().replace("\r\n", "\n").toStdString());
    EXPECT_EQ(info.comments, "line one\nline two");
    EXPECT_EQ(info.fileSize, std::uint64_t(json["System:FileSize"].toInteger()));
    EXPECT_EQ(info.fileDateTime,
              QFileInfo(QString::fromStdString(path)).lastModified().toSecsSinceEpoch());

    const QByteArray thumbnail =
        test::runToolBytes("exiftool", {"-b", "-ThumbnailImage", QString::fromStdString(path)});
    ASSERT_FALSE(thumbnail.isEmpty());
    EXPECT_EQ(Bytes(info.thumbnail().begin(), info.thumbnail().end()),
              Bytes(thumbnail.begin(), thumbnail.end()));
    // exiftool counts from the start of the file, the record from the TIFF header: SOI,
    // APP0 (18 bytes), the APP1 marker and length, "Exif\0\0" lie between.
    EXPECT_EQ(info.thumbnailOffset + 2 + 18 + 4 + 6,
              std::uint32_t(json["IFD1:ThumbnailOffset"].toInt()));

    ASSERT_NE(info.orientationLocation, nullptr);
    EXPECT_EQ(info.orientationFormat, 3);
    EXPECT_EQ(info.orientationLocation[GetParam() == std::string("MM") ? 1 : 0], 6);
}

struct Variation {
    const char* name;
    QStringList args;
    std::function<void(const ImageInfo&)> check;
    std::string err;
};

TEST_P(ExifFromExiftool, SingleTagRules) {
    const auto unit = [](const char* code) {
        return QStringList{"-FocalPlaneXResolution=1000", "-ExifImageWidth=2000",
                           QString("-FocalPlaneResolutionUnit#=") + code};
    };
    // clang-format off
    const Variation variations[] = {
        // Below 50 the value is a speed code, times 200.
        {"iso 49", {"-ISO=49"}, [](const ImageInfo& i) { EXPECT_EQ(i.isoEquivalent, 9800); }, ""},
        {"iso 50", {"-ISO=50"}, [](const ImageInfo& i) { EXPECT_EQ(i.isoEquivalent, 50); }, ""},
        {"flash off", {"-ExifIFD:Flash#=16"},
         [](const ImageInfo& i) { EXPECT_EQ(i.flashUsed, 0); }, ""},
        {"no flash tag", {"-Make=x"}, [](const ImageInfo& i) {
             EXPECT_EQ(i.flashUsed, -1);
             EXPECT_EQ(i.meteringMode, -1);
             EXPECT_EQ(i.thumbnailLocation, nullptr);
         }, ""},
        {"orientation 9", {"-Orientation#=9"},
         [](const ImageInfo& i) { EXPECT_EQ(i.orientation, 0); }, "Undefined rotation value 9"},
        {"apex values", {"-ShutterSpeedValue=0.008", "-ApertureValue=4"}, [](const ImageInfo& i) {
             EXPECT_NEAR(i.exposureTime, 0.008, 1e-6);
             EXPECT_NEAR(i.apertureFNumber, 4, 1e-5);
         }, ""},
        {"direct values win",
         {"-ExposureTime=1/60", "-FNumber=2.8", "-ShutterSpeedValue=0.008", "-ApertureValue=4"},
         [](const ImageInfo& i) {
             EXPECT_FLOAT_EQ(i.exposureTime, 1 / 60.0f);
             EXPECT_FLOAT_EQ(i.apertureFNumber, 2.8f);
         }, ""},
        {"micrometres", unit("5"),
         [](const ImageInfo& i) { EXPECT_FLOAT_EQ(i.ccdWidth, 0.002f); }, ""},
        {"unknown unit", unit("7"),
         [](const ImageInfo& i) { EXPECT_EQ(i.ccdWidth, 0.0f); }, ""},
        {"user comment alone", {"-UserComment=from the camera"},
         [](const ImageInfo& i) { EXPECT_EQ(i.comments, "from the camera"); }, ""},
        {"comment segment wins", {"-UserComment=from the camera", "-Comment=typed"},
         [](const ImageInfo& i) { EXPECT_EQ(i.comments, "typed"); }, ""},
    };
    // clang-format on
    for (const Variation& v : variations) {
        SCOPED_TRACE(v.name);
        const std::string path = tagged(v.args);
        JpegContext context;
        test::CapturedStreams streams(context);
        ASSERT_TRUE(context.parseFile(path));
        v.check(context.imageInfo());
        EXPECT_EQ(streams.err(), v.err.empty() ? "" : kNonfatal + "'" + path + "' " + v.err + "\n");
    }
}

INSTANTIATE_TEST_SUITE_P(ExifByteOrders, ExifFromExiftool, ::testing::Values("II", "MM"));

TEST(ExifParseFile, MissingFileIsReportedTwice) {
    JpegContext context;
    test::CapturedStreams streams(context);
    EXPECT_FALSE(context.parseFile("/nonexistent/a.jpg"));
    EXPECT_EQ(streams.err(),
              "Error : No such file\nin file '/nonexistent/a.jpg'\n"
              "can't open '/nonexistent/a.jpg'\n");
    EXPECT_EQ(context.imageInfo().flashUsed, -1);
}

}  // namespace
}  // namespace marigold
