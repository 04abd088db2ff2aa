#include "platform/Defaults.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <QTimeZone>
#include <limits>
#include <memory>
#include <utility>

#include "platform/DefaultsKeys.h"

namespace marigold {
namespace {

const QDateTime kReference(QDate(2001, 1, 1), QTime(0, 0), QTimeZone::utc());

class DefaultsTest : public ::testing::Test {
protected:
    QString path(const QString& name = QStringLiteral("settings.ini")) const {
        return _dir.filePath(name);
    }

    void writeIni(const QString& name, const QByteArray& text) const {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
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
    EXPECT_FALSE(defaults.hasStoredValue("JpegQuality"));
    // A second object on the same file sees every write: nothing is cached per object.
    other.setInteger("JpegQuality", 55);
    EXPECT_EQ(defaults.integerForKey("JpegQuality"), 55);
    other.removeObject("JpegQuality");
    EXPECT_EQ(defaults.integerForKey("JpegQuality"), 80);
}

TEST_F(DefaultsTest, TypedGettersConvertTheTextAnIniFileHoldsBack) {
    writeIni("typed.ini",
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

TEST_F(DefaultsTest, TypedValuesAndStringsSurviveTheFile) {
    Defaults writer(path());
    writer.registerDefaults({{"Registered", "factory"}});
    writer.setBool("b", true);
    writer.setInteger("i", -12345);
    writer.setFloat("f", 0.1f);
    writer.setString("s", "a, b = c");
    writer.setString("Empty", "");
    writer.setObject("List", QVariantList{1, 2});
    const auto reader = reopenFromDisk(writer);
    EXPECT_TRUE(reader->boolForKey("b"));
    EXPECT_EQ(reader->integerForKey("i"), -12345);
    EXPECT_EQ(reader->floatForKey("f"), 0.1f);
    EXPECT_EQ(reader->stringForKey("s"), "a, b = c");
    EXPECT_EQ(reader->stringForKey("i"), "-12345");
    // The fallback answers only for a missing or non-text value.
    EXPECT_EQ(writer.stringForKey("Registered", "fallback"), "factory");
    EXPECT_EQ(reader->stringForKey("Empty", "fallback"), "");
    EXPECT_EQ(reader->stringForKey("List", "fallback"), "fallback");
    EXPECT_TRUE(reader->stringForKey("Missing").isNull());
}

TEST_F(DefaultsTest, ColourIsRgbaTextAndMalformedTextIsInvalid) {
    Defaults writer(path());
    for (const auto& [color, text] : {std::pair{QColor(255, 0, 0, 128), "#ff000080"},
                                      std::pair{QColor(18, 52, 86, 0), "#12345600"}}) {
        writer.setColor("Color", color);
        EXPECT_EQ(writer.objectForKey("Color").toString(), text);
        EXPECT_EQ(writer.colorForKey("Color").rgba(), color.rgba());
    }
    for (const char* text : {"red", "#12345", "#1234567", "#gg0000ff", "ff0000ff", "#+f0000ff"}) {
        writer.setString("Color", text);
        EXPECT_FALSE(writer.colorForKey("Color").isValid()) << text;
    }
    // Hand-written opaque colours are accepted.
    writer.setString("Color", "#0A0b0C");
    EXPECT_EQ(writer.colorForKey("Color").rgba(), QColor(10, 11, 12).rgba());
    writer.setColor("Color", QColor());
    EXPECT_FALSE(writer.hasStoredValue("Color"));
}

TEST_F(DefaultsTest, FontAndPointRoundTripThroughTheFile) {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSizeF(13.5);
    font.setBold(true);
    Defaults writer(path());
    writer.setFont("Font", font);
    writer.setPoint("Point", {0.1f, -2.75f});
    // The stored number is the float nearest 0.1, not the double nearest it.
    EXPECT_EQ(writer.objectForKey("Point").toList().value(0).toDouble(), double(0.1f));
    const auto reader = reopenFromDisk(writer);
    QFont back(QStringLiteral("Something Else"));
    ASSERT_TRUE(reader->fontForKey("Font", &back));
    EXPECT_EQ(back.toString(), font.toString());
    EXPECT_FALSE(reader->fontForKey("Missing", &back));
    EXPECT_EQ(back, QFont());
    EXPECT_EQ(reader->pointForKey("Point"), (PointF{0.1f, -2.75f}));

    writeIni("points.ini", "[General]\nword=abc\nsingle=1\nthree=1, 2, 3\nhalf=1, b\n");
    Defaults points(path("points.ini"));
    for (const char* key : {"word", "single", "three", "half", "missing"}) {
        EXPECT_EQ(points.pointForKey(key), PointF{}) << key;
    }
}

TEST_F(DefaultsTest, DatesAreTruncatedSecondsReadThroughAFloat) {
    Defaults writer(path());
    for (const QDateTime& date : {kReference, kReference.addSecs(-100), kReference.addMSecs(900)}) {
        writer.setDate("Date", date);
        EXPECT_TRUE(writer.dateForKey("Date").isNull()) << qPrintable(date.toString());
    }
    writer.setString("Date", "1e30");
    EXPECT_TRUE(writer.dateForKey("Date").isNull());
    writer.setDate("Date", kReference.addMSecs(100'900));
    EXPECT_EQ(writer.dateForKey("Date"), kReference.addSecs(100));

    // 2026 lies between 2^29 and 2^30 seconds after the reference, where floats are 64 apart.
    const QDateTime date(QDate(2026, 3, 14), QTime(12, 34, 56, 789), QTimeZone::utc());
    const qint64 seconds = kReference.secsTo(date);
    ASSERT_NE(seconds % 64, 0);
    writer.setDate("Date", date);
    EXPECT_EQ(writer.objectForKey("Date").toLongLong(), seconds);
    const auto reader = reopenFromDisk(writer);
    EXPECT_EQ(kReference.secsTo(reader->dateForKey("Date")), qint64(float(seconds)));
}

TEST_F(DefaultsTest, IncrementWritesThroughToTheFileAtOnce) {
    Defaults defaults(path());
    defaults.registerDefaults({{"Registered", 10}});
    auto fileText = [&] {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    EXPECT_EQ(defaults.incrementIntegerForKey("Counter"), 1);
    EXPECT_EQ(defaults.incrementIntegerForKey("Counter"), 2);
    EXPECT_TRUE(fileText().contains("\nCounter=2\n"));
    EXPECT_EQ(defaults.incrementIntegerForKey("Registered"), 11);
    EXPECT_TRUE(fileText().contains("\nRegistered=11\n"));
    defaults.setInteger("Max", std::numeric_limits<int>::max());
    EXPECT_EQ(defaults.incrementIntegerForKey("Max"), std::numeric_limits<int>::max());
}

TEST_F(DefaultsTest, ListsAndTablesOfDictionariesSurviveTheFile) {
    const QVariantList presets = {
        QVariantMap{{"name", "4 x 3"}, {"width", 4}, {"height", 3}},
        QVariantMap{{"name", "Half"}, {"width", 1.5}, {"height", 0.5}, {"on", true}}};
    const QVariantMap destinations = {
        {"0", QVariantMap{{"label", "Desktop"}, {"targetType", 0}}},
        {"3", QVariantMap{{"label", "Viewer"}, {"targetType", 1}, {"path", "/usr/bin/x"}}}};
    Defaults writer(path());
    writer.setObject("Presets", presets);
    writer.setObject("Destinations", destinations);
    writer.setObject("One", QVariantList{QStringLiteral("only")});
    writer.setObject("Two", QVariantList{QStringLiteral("a"), QStringLiteral("b")});
    const auto reader = reopenFromDisk(writer);
    EXPECT_EQ(reader->arrayForKey("Presets"), presets);
    EXPECT_EQ(reader->dictionaryForKey("Destinations"), destinations);
    EXPECT_EQ(reader->arrayForKey("One"), (QVariantList{QStringLiteral("only")}));
    EXPECT_EQ(reader->arrayForKey("Two"), (QVariantList{QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_TRUE(reader->arrayForKey("Destinations").isEmpty());
    EXPECT_TRUE(reader->dictionaryForKey("Presets").isEmpty());
}

TEST_F(DefaultsTest, GarbageFileKeepsRegisteredValuesAndUserStoreIsNamed) {
    writeIni("garbage.ini", QByteArray("\x00\xff[[[=\n=\n]]\x01\x02Border\n", 20));
    Defaults defaults(path("garbage.ini"));
    defaults.registerDefaults({{"JpegQuality", 80}});
    EXPECT_EQ(defaults.integerForKey("JpegQuality"), 80);
    EXPECT_TRUE(defaults.arrayForKey("Presets").isEmpty());
    EXPECT_TRUE(Defaults().fileName().endsWith("/Marigold/Marigold.ini"));
}

TEST(FactoryDefaultsTest, EveryKeyHasItsFactoryValueAndType) {
    using namespace keys;
    const QVariantMap factory = Defaults::factoryDefaults();
    const std::pair<QLatin1StringView, QVariant> rows[] = {
        // clang-format off
        {DefFileFormat, 101}, {DefJpegQuality, 80}, {DefLimitFilesize, false},
        {DefFilesizeLimit, 100}, {DefDisplaySizeLimitMessage, true}, {DefPreviewMode, 0},
        {DefSharpen, false}, {DefSharpness, 0.4}, {DefTimedCaptureDelay, 5}, {DefPlaySound, true},
        {DefTimeStamp, 0}, {DefCursor, 1}, {DefDoubleClickDestination, 0},
        {DefOpenLastAtLaunch, false}, {DefTexturedWindow, false}, {DefCrossHair, false},
        {DefLivePreview, true}, {DefConstrainRotation, true}, {DefAutoOrderBack, false},
        {DefAutoOrderFront, true}, {DefHideExtension, false}, {DefPreserveExif, 1},
        {DefBorder, false}, {DefBorderThickness, 1}, {DefBorderColor, QStringLiteral("#000000ff")},
        {DefInterpolation, 3}, {DefCustomRatioWidth, 3}, {DefCustomRatioHeight, 2},
        {DefCustomSizeWidth, 800}, {DefCustomSizeHeight, 600}, {DefSelectedPreset, -1},
        {DefRememberLastConstraint, true}, {DefCheckAtStartup, false}};
    // clang-format on
    EXPECT_EQ(factory.size(), qsizetype(std::size(rows)));
    for (const auto& [key, value] : rows) {
        SCOPED_TRACE(key.data());
        ASSERT_TRUE(factory.contains(key));
        EXPECT_EQ(factory.value(key).typeId(), value.typeId()) << factory.value(key).typeName();
        EXPECT_EQ(factory.value(key), value);
    }

    QTemporaryDir dir;
    Defaults defaults(dir.filePath("settings.ini"));
    defaults.registerDefaults(factory);
    EXPECT_FLOAT_EQ(defaults.floatForKey(DefSharpness), 0.4f);
    EXPECT_EQ(defaults.colorForKey(DefBorderColor).rgba(), QColor(0, 0, 0).rgba());
}

}  // namespace
}  // namespace marigold
