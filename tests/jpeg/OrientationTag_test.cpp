#include <QTemporaryDir>

#include "jpeg/JpegTestFiles.h"
#include "jpeg/OrientationTag.h"

namespace marigold {
namespace {

using test::Bytes;
using test::operator+;

class OrientationTag : public ::testing::TestWithParam<const char*> {};

TEST_P(OrientationTag, RewritesOnlyTheValueAndFindsNothingInACutFile) {
    QTemporaryDir dir;
    // exiftool drops the JFIF APP0, so the EXIF APP1 comes straight after SOI.
    const std::string path = test::makeJpeg(
        dir.path(), "o.jpg",
        {"-JFIF:all=", QString("-ExifByteOrder=") + GetParam(), "-Make=Turner", "-Orientation#=6"});
    const Bytes before = test::readBytes(path);
    ASSERT_EQ(Bytes(before.begin(), before.begin() + 4), (Bytes{0xFF, 0xD8, 0xFF, 0xE1}));
    Bytes after = before;
    EXPECT_EQ(setOrientation(after, 8), 6);
    EXPECT_EQ(getOrientation(after), 8);
    std::vector<std::size_t> changed;
    for (std::size_t i = 0; i < after.size(); ++i) {
        if (after[i] != before[i]) changed.push_back(i);
    }
    ASSERT_FALSE(changed.empty());
    EXPECT_LT(changed.back() - changed.front(), 10u) << "one entry's value, nothing else";
    test::writeBytes(path, after);
    const QJsonObject json = test::exiftoolJson(path);
    EXPECT_EQ(json["IFD0:Orientation"].toInt(), 8);
    EXPECT_EQ(json["IFD0:Make"].toString(), "Turner");

    // Cut anywhere before the end of the TIFF structure the segment announces, nothing is
    // found and nothing is written.
    const std::size_t tiffEnd = 4 + (std::size_t(before[4]) << 8 | before[5]);
    for (std::size_t cut = 0; cut <= tiffEnd + 8; ++cut) {
        const Bytes part(before.begin(), before.begin() + long(cut));
        Bytes written = part;
        const int expected = cut >= tiffEnd ? 6 : 0;
        EXPECT_EQ(getOrientation(part), expected) << "cut at " << cut;
        EXPECT_EQ(setOrientation(written, 1), expected) << "cut at " << cut;
        EXPECT_EQ(written == part, expected == 0) << "cut at " << cut;
    }
}

INSTANTIATE_TEST_SUITE_P(ByteOrders, OrientationTag, ::testing::Values("II", "MM"));

// Hand-made structures that must be refused without reading or writing past the buffer.
TEST(OrientationTagHostile, MalformedStructuresAnswerZeroAndStayUnchanged) {
    const auto file = [](const Bytes& tiff) {
        return Bytes{0xFF, 0xD8, 0xFF, 0xE1} + test::exifBlock(tiff);
    };
    // IFD0 at 8: one orientation entry holding 3.
    const test::Tiff t{false};
    const Bytes good = file(t.header() + t.ifd({t.shortEntry(0x0112, 3)}));
    EXPECT_EQ(getOrientation(good), 3);
    const struct {
        const char* fault;
        std::vector<std::pair<std::size_t, std::uint8_t>> changes;  // at from the file start
    } faults[] = {
        {"offset above 64 KB", {{18, 1}}},
        {"offset past the end", {{16, 25}}},
        {"no entries", {{20, 0}}},
        {"another tag", {{22, 0x13}}},
        {"more entries than bytes", {{20, 2}, {22, 0x13}}},
        {"bad byte order", {{13, 'M'}}},
        {"bad magic number", {{14, 0x2B}}},
        {"segment length below 8", {{5, 7}}},
        {"the same block as an APP0 segment", {{3, 0xE0}}},
        {"TIFF under 12 bytes", {{5, 8 + 11}}},
    };
    for (const auto& f : faults) {
        Bytes bad = good;
        for (const auto& [at, value] : f.changes) bad[at] = value;
        Bytes written = bad;
        EXPECT_EQ(getOrientation(bad), 0) << f.fault;
        EXPECT_EQ(setOrientation(written, 1), 0) << f.fault;
        EXPECT_EQ(written, bad) << f.fault;
    }
}

}  // namespace
}  // namespace marigold
