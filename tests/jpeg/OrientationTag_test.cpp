#include <QTemporaryDir>

#include "jpeg/JpegTestFiles.h"
#include "jpeg/OrientationTag.h"

namespace marigold {
namespace {

using test::Bytes;
using test::operator+;

class OrientationInPlace : public ::testing::TestWithParam<const char*> {
protected:
    // A JPEG whose EXIF APP1 comes straight after SOI (exiftool drops the JFIF APP0).
    std::string exifFirst(const QStringList& tags) {
        return test::makeJpeg(dir.path(), "o.jpg",
                              QStringList{"-JFIF:all=", QString("-ExifByteOrder=") + GetParam(),
                                          "-Make=Turner"} +
                                  tags);
    }
    static int exiftoolOrientation(const std::string& path) {
        return test::exiftoolJson(path)["IFD0:Orientation"].toInt();
    }
    QTemporaryDir dir;
};

TEST_P(OrientationInPlace, ReadsAndRewritesOnlyTheValue) {
    const std::string path = exifFirst({"-Orientation#=6"});
    const Bytes before = test::readBytes(path);
    ASSERT_EQ(Bytes(before.begin(), before.begin() + 4), (Bytes{0xFF, 0xD8, 0xFF, 0xE1}));
    EXPECT_EQ(orientationForPath(path), 6);
    EXPECT_EQ(getOrientation(before), 6);

    EXPECT_EQ(setOrientationForPath(1, path), 6);
    const Bytes after = test::readBytes(path);
    ASSERT_EQ(after.size(), before.size());
    EXPECT_EQ(exiftoolOrientation(path), 1);
    EXPECT_EQ(orientationForPath(path), 1);
    std::vector<std::size_t> changed;
    for (std::size_t i = 0; i < after.size(); ++i) {
        if (after[i] != before[i]) changed.push_back(i);
    }
    ASSERT_FALSE(changed.empty());
    EXPECT_LT(changed.back() - changed.front(), 10u) << "one entry's value, nothing else";

    // Only the low byte counts; the in-memory form writes the same bytes as the file form.
    EXPECT_EQ(setOrientationForPath(0x108, path), 1);
    EXPECT_EQ(exiftoolOrientation(path), 8);
    Bytes inMemory = before;
    EXPECT_EQ(setOrientation(inMemory, 8), 6);
    EXPECT_EQ(inMemory, test::readBytes(path));
}

// Cut anywhere before the end of the TIFF structure the segment announces, nothing is found.
TEST_P(OrientationInPlace, CutFilesAnswerZero) {
    const std::string path = exifFirst({"-Orientation#=5"});
    const Bytes file = test::readBytes(path);
    const std::size_t tiffEnd = 4 + (std::size_t(file[4]) << 8 | file[5]);
    for (std::size_t cut = 0; cut <= tiffEnd + 8; ++cut) {
        Bytes part(file.begin(), file.begin() + cut);
        const int expected = cut >= tiffEnd ? 5 : 0;
        EXPECT_EQ(getOrientation(part), expected) << "cut at " << cut;
        EXPECT_EQ(setOrientation(part, 1), expected) << "cut at " << cut;
        if (cut % 16 == 0 || cut + 1 == tiffEnd) {
            const std::string cutPath = dir.filePath("cut.jpg").toStdString();
            test::writeBytes(cutPath, Bytes(file.begin(), file.begin() + cut));
            EXPECT_EQ(orientationForPath(cutPath), expected) << "cut at " << cut;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OrientationByteOrders, OrientationInPlace, ::testing::Values("II", "MM"));

// Hand-made structures the routine must refuse without reading past the buffer.
TEST(OrientationInPlace, MalformedStructuresAnswerZero) {
    const auto file = [](const Bytes& tiff) {
        return Bytes{0xFF, 0xD8, 0xFF, 0xE1} + test::exifBlock(tiff);
    };
    // IFD0 at 8: one orientation entry holding 3.
    const test::Tiff t{false};
    const Bytes good = t.header() + t.ifd({t.shortEntry(0x0112, 3)});
    EXPECT_EQ(getOrientation(file(good)), 3);
    const struct {
        const char* fault;
        std::vector<std::pair<std::size_t, std::uint8_t>> changes;
    } faults[] = {
        {"offset above 64 KB", {{6, 1}}},
        {"offset past the end", {{4, 25}}},
        {"no entries", {{8, 0}}},
        {"another tag", {{10, 0x13}}},
        {"more entries than bytes", {{8, 2}, {10, 0x13}}},
        {"bad byte order", {{1, 'M'}}},
        {"bad magic number", {{2, 0x2B}}},
    };
    for (const auto& f : faults) {
        Bytes tiff = good;
        for (const auto& [at, value] : f.changes) tiff[at] = value;
        EXPECT_EQ(getOrientation(file(tiff)), 0) << f.fault;
    }
    Bytes shortLength = file(good);
    shortLength[5] = 7;
    EXPECT_EQ(getOrientation(shortLength), 0) << "segment length below 8";
    Bytes app0First = file(good);
    app0First[3] = 0xE0;
    EXPECT_EQ(getOrientation(app0First), 0) << "the same block as an APP0 segment";
    EXPECT_EQ(getOrientation(file(Bytes(good.begin(), good.begin() + 11))), 0)
        << "TIFF under 12 bytes";
}

}  // namespace
}  // namespace marigold
