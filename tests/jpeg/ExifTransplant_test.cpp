#include <QTemporaryDir>

#include <algorithm>

#include "jpeg/ExifTransplant.h"
#include "jpeg/JpegTestFiles.h"

namespace marigold {
namespace {

using test::Bytes;
using test::JpegLayout;
using test::operator+;

// Where the thumbnail directory (IFD1) of an APP1 segment's data starts, and its tags, read
// here without the code under test.
struct Ifd1 {
    std::size_t offset = 0;  // from the start of the segment data
    std::vector<unsigned> tags;

    explicit Ifd1(const Bytes& app1) {
        const std::uint8_t* t = app1.data() + 8;
        const auto u16 = [t](std::size_t at) -> std::size_t {
            return t[0] == 'M' ? t[at] << 8 | t[at + 1] : t[at + 1] << 8 | t[at];
        };
        const auto u32 = [&](std::size_t at) {
            return t[0] == 'M' ? u16(at) << 16 | u16(at + 2) : u16(at + 2) << 16 | u16(at);
        };
        const std::size_t ifd0 = u32(4), ifd1 = u32(ifd0 + 2 + 12 * u16(ifd0));
        offset = 8 + ifd1;
        for (std::size_t i = 0; i < u16(ifd1); ++i) {
            tags.push_back(unsigned(u16(ifd1 + 2 + 12 * i)));
        }
    }
};

Bytes withMarker(const JpegLayout::Segment& s) {
    return Bytes{0xFF, s.marker} + s.data;
}

// Everything of the target that the transplant keeps: its segments but APP0, APP1 and COM,
// then its image data.
Bytes keptOfTarget(const Bytes& target) {
    const JpegLayout layout = test::scanJpeg(target);
    Bytes out;
    for (const auto& s : layout.segments) {
        if (s.marker != 0xE0 && s.marker != 0xE1 && s.marker != 0xFE) out = out + withMarker(s);
    }
    return out + layout.imageData;
}

class TransplantTest : public ::testing::Test {
protected:
    // The result saved where exiftool can read it.
    QJsonObject exiftoolOf(const Bytes& result) {
        test::writeBytes(path("out.jpg"), result);
        return test::exiftoolJson(path("out.jpg"));
    }
    std::string path(const QString& name) const { return dir.filePath(name).toStdString(); }
    // The encoder's output stand-in: a different picture carrying its own JFIF, EXIF and comment.
    Bytes target() {
        return test::readBytes(test::makeJpeg(dir.path(), "encoded.jpg",
                                              {"-Artist=Target", "-Comment=target comment"},
                                              "80x60", "gradient:green-yellow"));
    }
    QTemporaryDir dir;
};

class TransplantByteOrder : public TransplantTest,
                            public ::testing::WithParamInterface<const char*> {};

TEST_P(TransplantByteOrder, CarriesTheSourceBlockWithoutThumbnailPointers) {
    const std::string source = test::makeJpeg(
        dir.path(), "source.jpg",
        {QString("-ExifByteOrder=") + GetParam(), "-Make=Marigold Cam", "-Model=M 1",
         "-Orientation#=6", "-ISO=400", "-Comment=source comment", test::thumbnailTag(dir.path())});
    const Bytes encoded = target();
    const JpegLayout src = test::scanJpeg(test::readBytes(source));

    JpegContext context;
    test::CapturedStreams streams(context);
    const auto written = context.copyExif(test::readBytes(source), encoded);
    ASSERT_TRUE(written);
    EXPECT_EQ(streams.err() + streams.out(), "");
    EXPECT_TRUE(context.sections().empty());

    const JpegLayout result = test::scanJpeg(*written);
    ASSERT_GE(result.segments.size(), 3u);
    ASSERT_EQ(result.segments[0].marker, 0xE1) << "an EXIF block first needs no JFIF header";
    const Bytes& before = src.first(0xE1)->data;
    const Bytes& after = result.segments[0].data;
    ASSERT_EQ(after.size(), before.size()) << "the block is not shortened";
    const Ifd1 oldIfd1(before), newIfd1(after);
    ASSERT_EQ(newIfd1.offset, oldIfd1.offset);
    EXPECT_TRUE(std::equal(before.begin(), before.begin() + long(oldIfd1.offset), after.begin()))
        << "everything ahead of the thumbnail directory is untouched";
    std::vector<unsigned> expectedTags;
    for (const unsigned t : oldIfd1.tags) {
        if (t != 0x0201 && t != 0x0202) expectedTags.push_back(t);
    }
    EXPECT_EQ(expectedTags.size(), oldIfd1.tags.size() - 2);
    EXPECT_EQ(newIfd1.tags, expectedTags);
    EXPECT_EQ(withMarker(result.segments[1]), withMarker(*src.first(0xFE)));
    const std::size_t headerEnd = 2 + 2 + after.size() + 2 + result.segments[1].data.size();
    EXPECT_EQ(Bytes(written->begin() + long(headerEnd), written->end()), keptOfTarget(encoded));

    const QJsonObject json = exiftoolOf(*written);
    EXPECT_EQ(json["IFD0:Make"].toString(), "Marigold Cam");
    EXPECT_EQ(json["IFD0:Orientation"].toInt(), 6) << "carried over as it stands";
    EXPECT_EQ(json["File:Comment"].toString(), "source comment");
    EXPECT_FALSE(json.contains("IFD0:Artist")) << "the target's own EXIF is gone";
    EXPECT_FALSE(json.contains("IFD1:ThumbnailOffset"));
    EXPECT_TRUE(json.contains("IFD1:Compression"));
    EXPECT_EQ(json["File:ImageWidth"].toInt(), 80);
    // exiftool finds no more fault in the result than in the source, but the thumbnail
    // pointers that were taken out on purpose.
    const QStringList removed{"Missing required JPEG IFD1 tag 0x0201 ThumbnailOffset",
                              "Missing required JPEG IFD1 tag 0x0202 ThumbnailLength"};
    EXPECT_EQ(test::exiftoolProblems(path("out.jpg")), test::exiftoolProblems(source) + removed);
    test::runTool("compare", {"-metric", "AE", dir.filePath("out.jpg"), dir.filePath("encoded.jpg"),
                              "null:"});  // exits 0 only for the same pixels
}

INSTANTIATE_TEST_SUITE_P(ByteOrders, TransplantByteOrder, ::testing::Values("II", "MM"));

// Without an EXIF block to come first, the output needs the writer's JFIF header.
TEST_F(TransplantTest, ACommentAloneIsCarriedBehindAJfifHeader) {
    const Bytes source = test::readBytes(
        test::makeJpeg(dir.path(), "plain.jpg", {"-Comment=just words\r\nand more"}));
    const Bytes encoded = target();
    const auto written = JpegContext().copyExif(source, encoded);
    ASSERT_TRUE(written);
    EXPECT_EQ(*written, (Bytes{0xFF, 0xD8} + test::kJfif300 +
                         withMarker(*test::scanJpeg(source).first(0xFE)) + keptOfTarget(encoded)));
    const QJsonObject json = exiftoolOf(*written);
    EXPECT_EQ(json["JFIF:XResolution"].toInt(), 300);
    EXPECT_EQ(json["File:Comment"].toString(), "just words\r\nand more");
}

TEST_F(TransplantTest, RefusalsSayWhyAndLeaveNothing) {
    const Bytes good = test::readBytes(test::makeJpeg(dir.path(), "good.jpg", {"-Make=Good"}));
    const Bytes png{0x89, 'P', 'N', 'G', 13, 10, 26, 10, 0, 0, 0, 13, 'I', 'H', 'D', 'R'};
    const Bytes encoded = target();
    const struct {
        const char* name;
        Bytes source, target;
        std::string out, err;
    } cases[] = {
        {"source is a PNG", png, encoded, "Not JPEG (or bad one): source\n", ""},
        {"target cut short", good, Bytes(encoded.begin(), encoded.begin() + 100),
         "Not JPEG (or bad one): target\n", "Error : Premature end of file?\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        JpegContext context;
        test::CapturedStreams streams(context);
        EXPECT_FALSE(context.copyExif(c.source, c.target));
        EXPECT_TRUE(context.sections().empty());
        EXPECT_EQ(streams.out(), c.out);
        EXPECT_EQ(streams.err(), c.err);
    }
}

// What the output writer runs: outputs are written upright, so the tag must not turn them.
TEST_F(TransplantTest, UprightTransplantSetsOrientationOneAndIgnoresNonJpegSources) {
    const Bytes source = test::readBytes(test::makeJpeg(
        dir.path(), "turned.jpg", {"-ExifByteOrder=MM", "-Make=Upright", "-Orientation#=6"}));
    const Bytes fresh = test::readBytes(test::makeJpeg(dir.path(), "fresh.jpg"));
    const auto written = transplantExifUpright(source, fresh);
    ASSERT_TRUE(written);
    const QJsonObject json = exiftoolOf(*written);
    EXPECT_EQ(json["IFD0:Make"].toString(), "Upright");
    EXPECT_EQ(json["IFD0:Orientation"].toInt(), 1);

    const Bytes png = test::readBytes(test::makeJpeg(dir.path(), "plain.png", {}, "8x8", "xc:red"));
    for (const Bytes& notJpeg : {png, Bytes{'n', 'o', 't', 'e', 's'}, Bytes{0xFF}, Bytes{}}) {
        SCOPED_TRACE(std::to_string(notJpeg.size()) + " bytes");
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        EXPECT_FALSE(transplantExifUpright(notJpeg, fresh));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    }
}

}  // namespace
}  // namespace marigold
