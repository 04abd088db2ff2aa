#include "platform/Defaults.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <limits>
#include <memory>

#include "platform/DefaultsKeys.h"
#include "support/ToolsAndFiles.h"

namespace marigold {
namespace {

class DefaultsTest : public ::testing::Test {
protected:
    QString path(const QString& name = QStringLiteral("settings.ini")) const {
        return _dir.filePath(name);
    }

    // QSettings shares parsed files within a process, so only a copy under a new name makes a
    // reader parse what actually reached the disk.
    std::unique_ptr<Defaults> reopenFromDisk(Defaults& writer) {
        writer.synchronize();
        const QString copy = path(QStringLiteral("copy%1.ini").arg(++_copies));
        EXPECT_TRUE(QFile::copy(writer.fileName(), copy));
        return std::make_unique<Defaults>(copy);
    }

private:
    QTemporaryDir _dir;
    int _copies = 0;
};

TEST_F(DefaultsTest, RegisteredValueAnswersUntilAStoredOneOverridesIt) {
    Defaults defaults(path());
    Defaults other(path());
    defaults.registerDefaults({{"JpegQuality", 80}, {"Format", 101}});
    defaults.registerDefaults({{"Format", 102}});
    EXPECT_EQ(defaults.integerForKey("Format"), 102);
    EXPECT_EQ(defaults.integerForKey("JpegQuality"), 80);
    // A second object on the same file sees every write: nothing is cached per object.
    other.setInteger("JpegQuality", 55);
    EXPECT_EQ(defaults.integerForKey("JpegQuality"), 55);
    other.removeObject("JpegQuality");
    EXPECT_EQ(defaults.integerForKey("JpegQuality"), 80);
}

TEST_F(DefaultsTest, TypedGettersConvertTheTextAnIniFileHoldsBack) {
    test::writeFile(path("typed.ini"),
                    "[General]\nt=true\nf=false\nyes=YES\nquality=80\nfraction=0.4\nneg=-3.7\n"
                    "huge=1e30\njunk=banana\nlist=a, b\nnan=nan\n");
    Defaults defaults(path("typed.ini"));
    // clang-format off
    const struct { const char* key; bool asBool; int asInt; float asFloat; } rows[] = {
        {"t", true, 1, 1}, {"f", false, 0, 0}, {"yes", true, 1, 1}, {"quality", true, 80, 80},
        {"fraction", true, 0, 0.4f}, {"neg", true, -3, -3.7f}, {"junk", false, 0, 0},
        {"huge", true, std::numeric_limits<int>::max(), 1e30f}, {"list", false, 0, 0},
        {"nan", false, 0, 0}, {"missing", false, 0, 0}};
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.key);
        EXPECT_EQ(defaults.boolForKey(row.key), row.asBool);
        EXPECT_EQ(defaults.integerForKey(row.key), row.asInt);
        EXPECT_EQ(defaults.floatForKey(row.key), row.asFloat);
    }
}

TEST_F(DefaultsTest, TypedValuesAndFramesSurviveTheFile) {
    Defaults writer(path());
    writer.setBool("b", true);
    writer.setInteger("i", -12345);
    writer.setFloat("f", 0.1f);
    // Bytes as a saved window frame holds them: NULs, high bytes, INI punctuation.
    const QByteArray frame = QByteArray::fromHex("01d9d0cb00030000203d2c0a");
    writer.setFrame("Frame", frame);
    const auto reader = reopenFromDisk(writer);
    EXPECT_TRUE(reader->boolForKey("b"));
    EXPECT_EQ(reader->integerForKey("i"), -12345);
    EXPECT_EQ(reader->floatForKey("f"), 0.1f);
    EXPECT_EQ(reader->frameForKey("Frame"), frame);
    EXPECT_TRUE(reader->frameForKey("Missing").isEmpty());
}

TEST_F(DefaultsTest, ColourIsRgbaTextAndMalformedTextIsInvalid) {
    Defaults defaults(path());
    const std::pair<const char*, QColor> valid[] = {{"#ff000080", QColor(255, 0, 0, 128)},
                                                    {"#12345600", QColor(18, 52, 86, 0)},
                                                    // Written by hand: opaque.
                                                    {"#0A0b0C", QColor(10, 11, 12)}};
    for (const auto& [text, color] : valid) {
        defaults.setString("Color", text);
        EXPECT_EQ(defaults.colorForKey("Color").rgba(), color.rgba()) << text;
    }
    for (const char* text : {"red", "#12345", "#1234567", "#gg0000ff", "ff0000ff", "#+f0000ff"}) {
        defaults.setString("Color", text);
        EXPECT_FALSE(defaults.colorForKey("Color").isValid()) << text;
    }
}

TEST_F(DefaultsTest, GarbageFileKeepsRegisteredValuesAndUserStoreIsNamed) {
    test::writeFile(path("garbage.ini"), QByteArray("\x00\xff[[[=\n=\n]]\x01\x02Border\n", 20));
    Defaults defaults(path("garbage.ini"));
    defaults.registerDefaults({{"JpegQuality", 80}});
    EXPECT_EQ(defaults.integerForKey("JpegQuality"), 80);
    EXPECT_TRUE(Defaults().fileName().endsWith("/Marigold/Marigold.ini"));
}

// Every key the application reads with a factory value has one; the fractional and colour
// values come back through the getters that read them.
TEST(FactoryDefaultsTest, EveryKeyHasAFactoryValueTheGettersRead) {
    using namespace keys;
    const QVariantMap factory = Defaults::factoryDefaults();
    // clang-format off
    const QLatin1StringView withFactoryValue[] = {
        DefFileFormat, DefJpegQuality, DefLimitFilesize, DefFilesizeLimit,
        DefDisplaySizeLimitMessage, DefPreviewMode, DefSharpen, DefSharpness,
        DefTimedCaptureDelay, DefPlaySound, DefTimeStamp, DefCursor, DefDoubleClickDestination,
        DefOpenLastAtLaunch, DefTexturedWindow, DefCrossHair, DefLivePreview,
        DefConstrainRotation, DefAutoOrderBack, DefAutoOrderFront, DefHideExtension,
        DefPreserveExif, DefBorder, DefBorderThickness, DefBorderColor, DefInterpolation,
        DefCustomRatioWidth, DefCustomRatioHeight, DefCustomSizeWidth, DefCustomSizeHeight,
        DefSelectedPreset, DefRememberLastConstraint, DefCheckAtStartup};
    // clang-format on
    EXPECT_EQ(factory.size(), qsizetype(std::size(withFactoryValue)));
    for (const QLatin1StringView key : withFactoryValue) {
        EXPECT_TRUE(factory.contains(key)) << key.data();
    }

    QTemporaryDir dir;
    Defaults defaults(dir.filePath("settings.ini"));
    defaults.registerDefaults(factory);
    EXPECT_FLOAT_EQ(defaults.floatForKey(DefSharpness), 0.4f);
    EXPECT_EQ(defaults.colorForKey(DefBorderColor).rgba(), QColor(0, 0, 0).rgba());
}

}  // namespace
}  // namespace marigold
