#include <QTemporaryDir>

#include "jpeg/JpegTestFiles.h"
#include "jpeg/OrientationTag.h"

namespace marigold {
namespace {

using test::Bytes;

class OrientationInPlace : public ::testing::TestWithParam<const char*> {
protected:
    // A JPEG whose EXIF APP1 comes straight after SOI, unless it keeps its JFIF APP0.
    std::string exifFirst(const QStringList& tags, bool keepJfif = false) {
        QStringList args{QString("-ExifByteOrder=") + GetParam(), "-Make=Turner"};
        if (!keepJfif) args << "-JFIF:all=";
        return test::makeJpeg(dir.path(), "o.jpg", args + tags);
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

// A value out of range is answered as it stands; no tag, or one behind a JFIF header,
// answers 0 and leaves the file alone.
TEST_P(OrientationInPlace, UnusableTagsAreAnsweredAndLeftAlone) {
    const struct {
        const char* name;
        QStringList tags;
        bool keepJfif;
        int found;
    } cases[] = {{"out of range", {"-Orientation#=9"}, false, 9},
                 {"no tag", {"-Model=Without orientation"}, false, 0},
                 {"behind a JFIF header", {"-Orientation#=6"}, true, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = exifFirst(c.tags, c.keepJfif);
        const Bytes before = test::readBytes(path);
        ASSERT_EQ(before[3], c.keepJfif ? 0xE0 : 0xE1);
        EXPECT_EQ(orientationForPath(path), c.found);
        if (c.found != 0) continue;
        EXPECT_EQ(setOrientationForPath(3, path), 0);
        EXPECT_EQ(test::readBytes(path), before);
    }
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

TEST(OrientationInPlace, FilesThatAreNotThereOrNotJpegAnswerZero) {
    QTemporaryDir dir;
    EXPECT_EQ(orientationForPath(dir.filePath("missing.jpg").toStdString()), 0);
    EXPECT_EQ(setOrientationForPath(1, dir.filePath("missing.jpg").toStdString()), 0);
    EXPECT_EQ(orientationForPath(dir.path().toStdString()), 0) << "a folder";
    const QString png = dir.filePath("p.png");
    test::runTool("convert", {"-size", "8x8", "xc:red", png});
    EXPECT_EQ(orientationForPath(png.toStdString()), 0);
}

// Hand-made structures the routine must refuse without reading past the buffer.
TEST(OrientationInPlace, MalformedStructuresAnswerZero) {
    const auto file = [](Bytes tiff) {
        const std::size_t length = tiff.size() + 8;
        Bytes f{0xFF, 0xD8, 0xFF, 0xE1, std::uint8_t(length >> 8), std::uint8_t(length), 'E', 'x',
                'i',  'f',  0,    0};
        f.insert(f.end(), tiff.begin(), tiff.end());
        return f;
    };
    // IFD0 at 8: one orientation entry holding 3.
    const Bytes good{'I', 'I', 0x2A, 0, 8, 0, 0, 0, 1, 0, 0x12, 0x01, 3,
                     0,   1,   0,    0, 0, 3, 0, 0, 0, 0, 0,    0,    0};
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
    EXPECT_EQ(getOrientation(file(Bytes(good.begin(), good.begin() + 11))), 0)
        << "TIFF under 12 bytes";
}

}  // namespace
}  // namespace marigold
