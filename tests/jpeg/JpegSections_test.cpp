#include <QTemporaryDir>

#include <tuple>

#include "jpeg/JpegTestFiles.h"

namespace marigold {
namespace {

using test::Bytes;
using test::operator+;
using test::segment;

const Bytes kSoi{0xFF, 0xD8};
const Bytes kEoi{0xFF, 0xD9};
const Bytes kScanData{0x12, 0x34, 0xFF, 0x00, 0x56, 0xFF, 0xD9};  // entropy data and EOI

Bytes frame(unsigned marker = 0xC0, int width = 640, int height = 480, int components = 3) {
    Bytes payload{8,
                  std::uint8_t(height >> 8),
                  std::uint8_t(height),
                  std::uint8_t(width >> 8),
                  std::uint8_t(width),
                  std::uint8_t(components)};
    for (int c = 0; c < components; ++c) payload = payload + Bytes{std::uint8_t(c + 1), 0x11, 0};
    return segment(std::uint8_t(marker), payload);
}
Bytes table(std::uint8_t marker = 0xDB) {
    return segment(marker, Bytes(65, 1));
}
Bytes scan() {
    return segment(0xDA, {1, 1, 0, 0, 63, 0}) + kScanData;
}
Bytes app(std::uint8_t marker, const std::string& text) {
    return segment(marker, Bytes(text.begin(), text.end()));
}
Bytes comment(const std::string& text) {
    return app(0xFE, text);
}
// The smallest EXIF block the reader keeps: a TIFF header and an empty first directory, then
// bytes nothing refers to.
Bytes exifApp1(const Bytes& unused = {}) {
    return segment(
        0xE1,
        Bytes{'E', 'x', 'i', 'f', 0, 0, 'I', 'I', 0x2A, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0} + unused);
}
Bytes padded(int padding, const Bytes& s) {
    return Bytes(std::size_t(padding - 1), 0xFF) + s;
}
Bytes repeat(int n, const Bytes& s) {
    Bytes out;
    for (int i = 0; i < n; ++i) out = out + s;
    return out;
}

std::vector<unsigned> types(const JpegContext& context) {
    std::vector<unsigned> out;
    for (const Section& s : context.sections()) out.push_back(s.type);
    return out;
}

struct ReadCase {
    const char* name;
    Bytes file;
    bool ok;
    std::string out;
    std::string err;
};

class JpegReader : public ::testing::TestWithParam<ReadCase> {};

TEST_P(JpegReader, AcceptsOrRefusesWithTheExactMessages) {
    const ReadCase& c = GetParam();
    for (const int mode : {READ_EXIF, READ_IMAGE}) {
        JpegContext context;
        test::CapturedStreams streams(context);
        EXPECT_EQ(context.readJpegBuffer(c.file, mode, "x.jpg"), c.ok) << "mode " << mode;
        EXPECT_EQ(streams.out(), c.out);
        EXPECT_EQ(streams.err(), c.err);
        if (!c.ok) {
            EXPECT_TRUE(context.sections().empty()) << "a refused file leaves nothing";
        }
    }
}

const std::string kNotJpeg = "Not JPEG (or bad one): x.jpg\n";

// clang-format off
INSTANTIATE_TEST_SUITE_P(JpegFiles, JpegReader, ::testing::Values(
    ReadCase{"Plain", kSoi + table() + frame() + scan(), true, "", ""},
    ReadCase{"NotJpeg", Bytes{0x89, 'P', 'N', 'G', 13, 10, 26, 10}, false, kNotJpeg, ""},
    ReadCase{"Empty", Bytes{}, false, kNotJpeg, ""},
    ReadCase{"SixPaddingBytes", kSoi + padded(6, table()) + frame() + scan(), true, "", ""},
    ReadCase{"SevenPaddingBytes", kSoi + padded(7, table()) + frame() + scan(), false,
             "too many padding bytes\n" + kNotJpeg, ""},
    // The start of scan is a kept section too: 19 tables and a frame make 20 with it, one
    // more is refused.
    ReadCase{"TwentySections", kSoi + repeat(18, table()) + frame() + scan(), true, "", ""},
    ReadCase{"TwentyOneSections", kSoi + repeat(19, table()) + frame() + scan(), false,
             kNotJpeg, "Error : Too many sections in jpg file\n"},
    // Dropped segments do not count.
    ReadCase{"DroppedSegmentsDoNotCount",
             kSoi + repeat(30, app(0xE0, "JFIF")) + repeat(18, table()) + frame() + scan(), true, "", ""},
    ReadCase{"LengthOne", kSoi + Bytes{0xFF, 0xDB, 0x00, 0x01} + frame() + scan(), false,
             kNotJpeg, "Error : invalid marker\n"},
    ReadCase{"LengthZero", kSoi + Bytes{0xFF, 0xDB, 0x00, 0x00}, false, kNotJpeg,
             "Error : invalid marker\n"},
    ReadCase{"ShortSegment", kSoi + Bytes{0xFF, 0xDB, 0x00, 0x43, 1, 2, 3}, false, kNotJpeg,
             "Error : Premature end of file?\n"},
    ReadCase{"EndsAfterSoi", kSoi, false, kNotJpeg, "Error : Premature end of file?\n"},
    ReadCase{"EndsInLength", kSoi + Bytes{0xFF, 0xDB, 0x00}, false, kNotJpeg,
             "Error : Premature end of file?\n"},
    // Every marker's length is read before the marker is looked at.
    ReadCase{"EndOfImageBeforeScan", kSoi + table() + kEoi + Bytes{0x00, 0x02}, false,
             "No image in jpeg!\n" + kNotJpeg, ""},
    ReadCase{"EndOfImageEndsTheFile", kSoi + table() + kEoi, false, kNotJpeg,
             "Error : Premature end of file?\n"}),
    [](const auto& info) { return info.param.name; });
// clang-format on

// One file with every kind of segment the reader treats apart.
const Bytes kMixed = kSoi + app(0xE0, "JFIF") + app(0xE1, "http://ns.adobe.com/xap/1.0/") +
                     exifApp1() + comment("first") + comment("second") + app(0xE2, "ICC_PROFILE") +
                     table() + frame(0xC2, 300, 200, 1) + table(0xC4) + table(0xDD) + scan();

TEST(JpegReader, ExifModeKeepsTheExifBlockAndFirstCommentAndStopsAtTheScan) {
    JpegContext context;
    test::CapturedStreams streams(context);
    ASSERT_TRUE(context.readJpegSections(kMixed, READ_EXIF));
    EXPECT_EQ(types(context),
              (std::vector<unsigned>{0xE1, 0xFE, 0xE2, 0xDB, 0xC2, 0xC4, 0xDD, 0xDA}));
    const Bytes exif = exifApp1();
    EXPECT_EQ(context.sections()[0].data, Bytes(exif.begin() + 2, exif.end()))
        << "stored from the length bytes on";
    const ImageInfo& info = context.imageInfo();
    EXPECT_EQ(info.comments, "first");
    EXPECT_EQ(std::tuple(info.width, info.height, info.isColor, info.process),
              std::tuple(300, 200, false, 0xC2));
    context.writeJpegBuffer();
    EXPECT_EQ(streams.err(), "Error : Can't write back - didn't read all\n");
}

TEST(JpegReader, ImageModeDropsMetadataAndKeepsTheRestOfTheFile) {
    JpegContext context;
    ASSERT_TRUE(context.readJpegSections(kMixed, READ_IMAGE));
    EXPECT_EQ(types(context),
              (std::vector<unsigned>{0xE2, 0xDB, 0xC2, 0xC4, 0xDD, 0xDA, Section::kImageData}));
    EXPECT_EQ(context.sections().back().data, kScanData)
        << "up to the end of the file, EOI included";
    EXPECT_TRUE(context.imageInfo().comments.empty());

    // No APP0 or APP1 comes first, so the writer puts its 300 dpi JFIF header in.
    const Bytes expected = kSoi + test::kJfif300 + app(0xE2, "ICC_PROFILE") + table() +
                           frame(0xC2, 300, 200, 1) + table(0xC4) + table(0xDD) + scan();
    EXPECT_EQ(context.writeJpegBuffer(), expected);
}

// C4, C8 and CC share the range of the start-of-frame codes but are tables.
TEST(JpegReader, FrameMarkersAreTheStartOfFrameCodesOnly) {
    for (unsigned marker = 0xC0; marker <= 0xCF; ++marker) {
        const bool isFrame = marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        JpegContext context;
        ASSERT_TRUE(context.readJpegSections(kSoi + frame(marker, 17, 9, 3) + scan(), READ_EXIF));
        const ImageInfo& info = context.imageInfo();
        EXPECT_EQ(info.process, isFrame ? int(marker) : 0) << std::hex << marker;
        EXPECT_EQ(std::tuple(info.width, info.height, info.isColor),
                  isFrame ? std::tuple(17, 9, true) : std::tuple(0, 0, false));
    }
}

TEST(JpegReader, CommentTextRules) {
    const struct {
        std::string bytes, text;
    } cases[] = {
        {"one\r\ntwo\r\n", "one\ntwo\n"},
        {"lone\rcr", "lone?cr"},
        {std::string("nul\0byte", 8), "nul?byte"},
        {"tab\there\x01\x1f", "tab\there??"},
        {"\x7f\xe9\xff", "\x7f\xe9\xff"},
        {"ends in cr\r", "ends in cr?"},
        {std::string(3000, 'x'), std::string(1998, 'x')},
        {std::string(1997, 'x') + "\r\n", std::string(1997, 'x')},
    };
    for (const auto& c : cases) {
        JpegContext context;
        ASSERT_TRUE(
            context.readJpegSections(kSoi + comment(c.bytes) + frame() + scan(), READ_EXIF));
        EXPECT_EQ(context.imageInfo().comments, c.text);
    }
}

TEST(JpegReader, DiscardAllButExifLeavesTheFirstExifBlockThenTheFirstComment) {
    JpegContext context;
    const Bytes file =
        kSoi + comment("c1") + exifApp1() + table() + frame() + exifApp1({2}) + scan();
    ASSERT_TRUE(context.readJpegSections(file, READ_EXIF));
    EXPECT_EQ(types(context), (std::vector<unsigned>{0xFE, 0xE1, 0xDB, 0xC0, 0xE1, 0xDA}));
    context.discardAllButExif();
    ASSERT_EQ(types(context), (std::vector<unsigned>{0xE1, 0xFE}));
    EXPECT_EQ((Bytes{0xFF, 0xE1} + context.sections()[0].data), exifApp1());
    EXPECT_EQ((Bytes{0xFF, 0xFE} + context.sections()[1].data), comment("c1"));

    JpegContext without;
    ASSERT_TRUE(without.readJpegSections(kSoi + table() + frame() + scan(), READ_EXIF));
    without.discardAllButExif();
    EXPECT_TRUE(without.sections().empty());
}

// A real file cut at every length: the reader either refuses it with a message or, once
// the start of scan is whole, takes what follows as the image data. Reading the file from
// disk says and keeps exactly what reading it from memory does.
TEST(JpegReader, TruncatedRealFilesAtEveryCutPoint) {
    QTemporaryDir dir;
    const std::string full = test::makeJpeg(
        dir.path(), "full.jpg", {"-Make=Cut", "-Comment=cut here", test::thumbnailTag(dir.path())});
    const Bytes file = test::readBytes(full);
    const test::JpegLayout layout = test::scanJpeg(file);
    ASSERT_FALSE(layout.imageData.empty());
    const std::size_t scanEnd = file.size() - layout.imageData.size();
    const std::string cutPath = dir.filePath("cut.jpg").toStdString();

    for (std::size_t cut = 0; cut <= file.size(); ++cut) {
        const Bytes part(file.begin(), file.begin() + cut);
        for (const int mode : {READ_EXIF, READ_IMAGE}) {
            JpegContext fromMemory;
            test::CapturedStreams memoryStreams(fromMemory);
            const bool ok = fromMemory.readJpegBuffer(part, mode, cutPath);
            ASSERT_EQ(ok, cut >= scanEnd) << "cut at " << cut;
            if (ok) {
                EXPECT_EQ(fromMemory.imageInfo().width, 64);
                EXPECT_EQ(fromMemory.imageInfo().cameraMake, mode == READ_EXIF ? "Cut" : "");
                if (mode == READ_IMAGE) {
                    EXPECT_EQ(fromMemory.sections().back().data,
                              Bytes(file.begin() + scanEnd, file.begin() + cut));
                }
            } else {
                EXPECT_TRUE(fromMemory.sections().empty());
            }
            if (cut % 37 != 0 && cut + 1 != scanEnd) continue;
            test::writeBytes(cutPath, part);
            JpegContext fromFile;
            test::CapturedStreams fileStreams(fromFile);
            EXPECT_EQ(fromFile.readJpegFile(cutPath, mode), ok) << "cut at " << cut;
            EXPECT_EQ(fileStreams.out(), memoryStreams.out());
            EXPECT_EQ(fileStreams.err(), memoryStreams.err());
            EXPECT_EQ(types(fromFile), types(fromMemory));
        }
    }
}

}  // namespace
}  // namespace marigold
