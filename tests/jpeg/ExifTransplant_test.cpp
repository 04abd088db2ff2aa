#include <QFile>
#include <QTemporaryDir>

#include "jpeg/JpegTestFiles.h"

namespace marigold {
namespace {

using test::Bytes;
using test::JpegLayout;
using test::operator+;

// The entry count of the thumbnail directory (IFD1) of an APP1 segment's data, and where
// that directory starts, read here without the code under test.
struct Ifd1 {
    std::size_t offset = 0;  // from the start of the segment data
    unsigned count = 0;
    std::vector<unsigned> tags;

    explicit Ifd1(const Bytes& app1) {
        const std::uint8_t* tiff = app1.data() + 8;
        const bool mm = tiff[0] == 'M';
        const auto u16 = [&](std::size_t at) {
            return mm ? tiff[at] << 8 | tiff[at + 1] : tiff[at + 1] << 8 | tiff[at];
        };
        const auto u32 = [&](std::size_t at) {
            return mm ? std::size_t(u16(at)) << 16 | u16(at + 2)
                      : std::size_t(u16(at + 2)) << 16 | u16(at);
        };
        const std::size_t ifd0 = u32(4);
        const std::size_t ifd1 = u32(ifd0 + 2 + 12 * u16(ifd0));
        offset = 8 + ifd1;
        count = unsigned(u16(ifd1));
        for (unsigned i = 0; i < count; ++i) tags.push_back(unsigned(u16(ifd1 + 2 + 12 * i)));
    }
};

// Everything of the target that the transplant keeps: its segments but APP0, APP1 and COM,
// each with its marker, then its image data.
Bytes keptOfTarget(const JpegLayout& target) {
    Bytes out;
    for (const auto& s : target.segments) {
        if (s.marker == 0xE0 || s.marker == 0xE1 || s.marker == 0xFE) continue;
        out = out + Bytes{0xFF, s.marker} + s.data;
    }
    return out + target.imageData;
}

Bytes withMarker(const JpegLayout::Segment* s) {
    return Bytes{0xFF, s->marker} + s->data;
}

class TransplantTest : public ::testing::Test {
protected:
    std::string path(const QString& name) const { return dir.filePath(name).toStdString(); }
    // The encoder's output stand-in: a different picture carrying its own JFIF, EXIF and comment.
    std::string target() {
        return test::makeJpeg(dir.path(), "out.jpg", {"-Artist=Target", "-Comment=target comment"},
                              "80x60", "gradient:green-yellow");
    }
    static bool sameDecodedPixels(const std::string& a, const std::string& b) {
        QProcess compare;
        compare.start("compare", {"-metric", "AE", QString::fromStdString(a),
                                  QString::fromStdString(b), "null:"});
        compare.waitForFinished(60000);
        return compare.exitCode() == 0 && compare.readAllStandardError().trimmed() == "0";
    }
    // exiftool's warnings and errors about a file.
    static QStringList validation(const std::string& file) {
        QStringList found;
        const QString report =
            test::exiftool({"-validate", "-warning", "-error", "-a", QString::fromStdString(file)});
        for (const QString& line : report.split('\n')) {
            if (line.startsWith("Warning") || line.startsWith("Error"))
                found << line.section(": ", 1);
        }
        return found;
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
    const std::string out = target();
    const JpegLayout src = test::scanJpeg(test::readBytes(source));
    const JpegLayout tgt = test::scanJpeg(test::readBytes(out));
    QFile::copy(QString::fromStdString(out), dir.filePath("encoded.jpg"));
    test::writeBytes(out + ".t", Bytes{'o', 'l', 'd'});  // a backup left by an earlier run

    JpegContext context;
    test::CapturedStreams streams(context);
    ASSERT_TRUE(context.copyExif(source, out));
    EXPECT_EQ(streams.err() + streams.out(), "");
    EXPECT_FALSE(QFile::exists(QString::fromStdString(out + ".t")));
    EXPECT_TRUE(context.sections().empty());

    const Bytes written = test::readBytes(out);
    const JpegLayout result = test::scanJpeg(written);
    ASSERT_GE(result.segments.size(), 3u);
    ASSERT_EQ(result.segments[0].marker, 0xE1) << "an EXIF block first needs no JFIF header";
    const Bytes& before = src.first(0xE1)->data;
    const Bytes& after = result.segments[0].data;
    ASSERT_EQ(after.size(), before.size()) << "the block is not shortened";
    const Ifd1 oldIfd1(before), newIfd1(after);
    ASSERT_EQ(newIfd1.offset, oldIfd1.offset);
    EXPECT_TRUE(std::equal(before.begin(), before.begin() + long(oldIfd1.offset), after.begin()))
        << "everything ahead of the thumbnail directory is untouched";
    EXPECT_EQ(newIfd1.count, oldIfd1.count - 2);
    std::vector<unsigned> expectedTags;
    for (const unsigned t : oldIfd1.tags) {
        if (t != 0x0201 && t != 0x0202) expectedTags.push_back(t);
    }
    EXPECT_EQ(newIfd1.tags, expectedTags);

    EXPECT_EQ(withMarker(&result.segments[1]), withMarker(src.first(0xFE)));
    EXPECT_EQ(Bytes(written.begin() + 2 + 2 + long(after.size()) + 2 +
                        long(result.segments[1].data.size()),
                    written.end()),
              keptOfTarget(tgt));

    const QJsonObject json = test::exiftoolJson(out);
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
    EXPECT_EQ(validation(out), validation(source) + removed);
    EXPECT_TRUE(sameDecodedPixels(out, path("encoded.jpg")));
}

INSTANTIATE_TEST_SUITE_P(TransplantByteOrders, TransplantByteOrder, ::testing::Values("II", "MM"));

TEST_F(TransplantTest, WithoutAnExifBlockTheOutputGetsTheJfifHeader) {
    const struct {
        const char* name;
        QStringList tags;
        bool comment;
    } cases[] = {{"comment only", {"-Comment=just words\r\nand more"}, true},
                 {"nothing", {}, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string source = test::makeJpeg(dir.path(), "plain.jpg", c.tags);
        const std::string out = target();
        const JpegLayout tgt = test::scanJpeg(test::readBytes(out));
        const JpegLayout src = test::scanJpeg(test::readBytes(source));

        JpegContext context;
        ASSERT_TRUE(context.copyExif(source, out));
        const Bytes expected = Bytes{0xFF, 0xD8} + test::kJfif300 +
                               (c.comment ? withMarker(src.first(0xFE)) : Bytes{}) +
                               keptOfTarget(tgt);
        EXPECT_EQ(test::readBytes(out), expected);
        EXPECT_EQ(test::exiftoolJson(out)["JFIF:XResolution"].toInt(), 300);
    }
}

TEST_F(TransplantTest, OnlyTheFirstExifBlockIsCarriedAndXmpIsDropped) {
    const QString thumbnail = test::thumbnailTag(dir.path());
    const std::string first = test::makeJpeg(dir.path(), "first.jpg", {"-Make=First", thumbnail});
    const std::string second = test::makeJpeg(dir.path(), "second.jpg",
                                              {"-Make=Second", "-XMP-dc:Title=Dropped", thumbnail});
    const JpegLayout one = test::scanJpeg(test::readBytes(first));
    const JpegLayout two = test::scanJpeg(test::readBytes(second));
    Bytes extra;
    for (const auto& s : two.segments) {
        if (s.marker == 0xE1) extra = extra + Bytes{0xFF, 0xE1} + s.data;  // its EXIF and XMP
    }
    const std::string source = path("both.jpg");
    test::writeBytes(source, test::withSegmentsAfterSoi(test::readBytes(first),
                                                        withMarker(one.first(0xE1)) + extra));

    const std::string out = target();
    JpegContext context;
    ASSERT_TRUE(context.copyExif(source, out));
    const JpegLayout result = test::scanJpeg(test::readBytes(out));
    int app1 = 0;
    for (const auto& s : result.segments) app1 += s.marker == 0xE1;
    EXPECT_EQ(app1, 1);
    EXPECT_EQ(result.segments[0].data.size(), one.first(0xE1)->data.size());
    const QJsonObject json = test::exiftoolJson(out);
    EXPECT_EQ(json["IFD0:Make"].toString(), "First");
    EXPECT_FALSE(json.contains("XMP-dc:Title"));
}

// Every failure before the write leaves the encoder's file exactly as it was.
TEST_F(TransplantTest, FailuresLeaveTheTargetUntouched) {
    const std::string good = test::makeJpeg(dir.path(), "good.jpg", {"-Make=Good"});
    const std::string png = path("source.png");
    test::runTool("convert", {"-size", "8x8", "xc:red", QString::fromStdString(png)});
    const Bytes encoded = test::readBytes(target());

    const struct {
        const char* name;
        std::string source;
        std::function<Bytes(const Bytes&)> target;
        std::string out, err;  // with OUT and SRC standing for the paths
    } cases[] = {
        {"source is a PNG", png, [](const Bytes& b) { return b; }, "Not JPEG (or bad one): SRC\n",
         ""},
        {"source missing", path("gone.jpg"), [](const Bytes& b) { return b; }, "",
         "Error : No such file\nin file 'OUT'\ncan't open 'SRC'\n"},
        {"target with seven padding bytes", good,
         [](const Bytes& b) {
             return Bytes(b.begin(), b.begin() + 2) + Bytes(6, 0xFF) +
                    Bytes(b.begin() + 2, b.end());
         },
         "too many padding bytes\nNot JPEG (or bad one): OUT\n", ""},
        {"target cut short", good, [](const Bytes& b) { return Bytes(b.begin(), b.begin() + 100); },
         "Not JPEG (or bad one): OUT\n", "Error : Premature end of file?\nin file 'OUT'\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string out = path("out.jpg");
        const Bytes before = c.target(encoded);
        test::writeBytes(out, before);
        JpegContext context;
        test::CapturedStreams streams(context);
        EXPECT_FALSE(context.copyExif(c.source, out));
        EXPECT_EQ(test::readBytes(out), before);
        EXPECT_FALSE(QFile::exists(QString::fromStdString(out + ".t")));
        const auto named = [&](std::string text) {
            for (const auto& [key, value] :
                 {std::pair{std::string("OUT"), out}, std::pair{std::string("SRC"), c.source}}) {
                for (std::size_t at; (at = text.find(key)) != std::string::npos;)
                    text.replace(at, 3, value);
            }
            return text;
        };
        EXPECT_EQ(streams.out(), named(c.out));
        EXPECT_EQ(streams.err(), named(c.err));
    }
}

TEST_F(TransplantTest, InMemoryGivesTheSameBytesAsOnDisk) {
    const std::string source = test::makeJpeg(dir.path(), "source.jpg",
                                              {"-Make=Memory", "-Comment=kept",
                                               test::thumbnailTag(dir.path())});
    const std::string out = target();
    const Bytes sourceBytes = test::readBytes(source), targetBytes = test::readBytes(out);

    JpegContext context;
    const auto inMemory = context.copyExif(sourceBytes, targetBytes);
    ASSERT_TRUE(inMemory.has_value());
    EXPECT_EQ(test::readBytes(out), targetBytes) << "the memory form writes nothing";
    ASSERT_TRUE(context.copyExif(source, out));
    EXPECT_EQ(*inMemory, test::readBytes(out));

    context.setOutputStream(nullptr);
    context.setErrorStream(nullptr);
    EXPECT_FALSE(context.copyExif(Bytes{1, 2, 3}, targetBytes).has_value());
    EXPECT_FALSE(context.copyExif(sourceBytes, Bytes{0xFF, 0xD8}).has_value());
}

}  // namespace
}  // namespace marigold
