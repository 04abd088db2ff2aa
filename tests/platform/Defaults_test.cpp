#include "platform/Defaults.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <QTimeZone>
#include <cmath>
#include <limits>
#include <memory>

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

    QByteArray fileText(const QString& name = QStringLiteral("settings.ini")) const {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    // QSettings shares parsed files within a process, so a copy under a new name is the only
    // way to make a reader parse what actually reached the disk.
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
    defaults.registerDefaults({{"JpegQuality", 80}, {"Format", 101}});
    defaults.registerDefaults({{"Format", 102}});  // later registrations win per key
    EXPECT_EQ(defaults.integerForKey("JpegQuality"), 80);
    EXPECT_EQ(defaults.integerForKey("Format"), 102);
    EXPECT_FALSE(defaults.hasStoredValue("JpegQuality"));

    defaults.setInteger("JpegQuality", 55);
    EXPECT_TRUE(defaults.hasStoredValue("JpegQuality"));
    EXPECT_EQ(defaults.integerForKey("JpegQuality"), 55);

    defaults.removeObject("JpegQuality");
    EXPECT_FALSE(defaults.hasStoredValue("JpegQuality"));
    EXPECT_EQ(defaults.integerForKey("JpegQuality"), 80);
}

TEST_F(DefaultsTest, SecondObjectOnTheSameFileSeesEveryWrite) {
    Defaults first(path());
    Defaults second(path());
    first.setString("Name", "one");
    EXPECT_EQ(second.stringForKey("Name"), "one");
    second.setString("Name", "two");
    EXPECT_EQ(first.stringForKey("Name"), "two");
    second.removeObject("Name");
    EXPECT_FALSE(first.hasStoredValue("Name"));
}

TEST_F(DefaultsTest, TypedGettersConvertTheTextAnIniFileHoldsBack) {
    writeIni("typed.ini",
             "[General]\n"
             "t=true\nf=false\nyes=YES\none=1\nzero=0\nquality=80\nneg=-3\n"
             "fraction=0.4\nmixed=3.7\nnegfraction=-3.7\nhuge=1e30\njunk=banana\nempty=\n"
             "list=a, b\nnan=nan\n");
    Defaults defaults(path("typed.ini"));
    struct Row {
        const char* key;
        bool asBool;
        int asInt;
        float asFloat;
    };
    const Row rows[] = {
        {"t", true, 1, 1.0f},
        {"f", false, 0, 0.0f},
        {"yes", true, 1, 1.0f},
        {"one", true, 1, 1.0f},
        {"zero", false, 0, 0.0f},
        {"quality", true, 80, 80.0f},
        {"neg", true, -3, -3.0f},
        {"fraction", true, 0, 0.4f},
        {"mixed", true, 3, 3.7f},
        {"negfraction", true, -3, -3.7f},
        {"huge", true, std::numeric_limits<int>::max(), 1e30f},
        {"junk", false, 0, 0.0f},
        {"empty", false, 0, 0.0f},
        {"list", false, 0, 0.0f},
        {"nan", false, 0, 0.0f},
        {"missing", false, 0, 0.0f},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.key);
        EXPECT_EQ(defaults.boolForKey(row.key), row.asBool);
        EXPECT_EQ(defaults.integerForKey(row.key), row.asInt);
        EXPECT_EQ(defaults.floatForKey(row.key), row.asFloat);
    }
}

TEST_F(DefaultsTest, TypedValuesSurviveTheFile) {
    Defaults writer(path());
    writer.setBool("b", true);
    writer.setInteger("i", -12345);
    writer.setFloat("f", 0.1f);
    writer.setString("s", "a, b = c");
    const auto reader = reopenFromDisk(writer);
    EXPECT_TRUE(reader->boolForKey("b"));
    EXPECT_EQ(reader->integerForKey("i"), -12345);
    EXPECT_EQ(reader->floatForKey("f"), 0.1f);
    EXPECT_EQ(reader->stringForKey("s"), "a, b = c");
    EXPECT_EQ(reader->stringForKey("i"), "-12345");
}

TEST_F(DefaultsTest, StringFallbackOnlyForMissingOrNonTextValues) {
    Defaults defaults(path());
    defaults.registerDefaults({{"Registered", "factory"}});
    defaults.setString("Empty", "");
    defaults.setObject("List", QVariantList{1, 2});
    EXPECT_EQ(defaults.stringForKey("Missing", "fallback"), "fallback");
    EXPECT_EQ(defaults.stringForKey("Registered", "fallback"), "factory");
    EXPECT_EQ(defaults.stringForKey("Empty", "fallback"), "");
    EXPECT_EQ(defaults.stringForKey("List", "fallback"), "fallback");
    EXPECT_TRUE(defaults.stringForKey("Missing").isNull());
}

TEST_F(DefaultsTest, ColourIsStoredAsRgbaTextWithAlpha) {
    const struct {
        QColor color;
        const char* text;
    } rows[] = {
        {QColor(0, 0, 0), "#000000ff"},
        {QColor(255, 0, 0, 128), "#ff000080"},
        {QColor(18, 52, 86, 0), "#12345600"},
        {QColor(255, 255, 255, 1), "#ffffff01"},
    };
    Defaults writer(path());
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        writer.setColor("Color", row.color);
        EXPECT_EQ(writer.objectForKey("Color").toString(), row.text);
        const auto reader = reopenFromDisk(writer);
        const QColor back = reader->colorForKey("Color");
        ASSERT_TRUE(back.isValid());
        EXPECT_EQ(back.rgba(), row.color.rgba());
    }
}

TEST_F(DefaultsTest, MalformedOrMissingColourIsInvalid) {
    Defaults defaults(path());
    EXPECT_FALSE(defaults.colorForKey("Color").isValid());
    for (const char* text :
         {"", "red", "#12345", "#1234567", "#gg0000ff", "#ff00008000", "ff0000ff", "#+f0000ff"}) {
        SCOPED_TRACE(text);
        defaults.setString("Color", text);
        EXPECT_FALSE(defaults.colorForKey("Color").isValid());
    }
    defaults.setInteger("Color", 255);
    EXPECT_FALSE(defaults.colorForKey("Color").isValid());
    // Hand-written opaque colours are accepted.
    defaults.setString("Color", "#0A0b0C");
    EXPECT_EQ(defaults.colorForKey("Color").rgba(), QColor(10, 11, 12).rgba());
    // Storing no colour removes the key so the registered one answers again.
    defaults.setColor("Color", QColor());
    EXPECT_FALSE(defaults.hasStoredValue("Color"));
}

TEST_F(DefaultsTest, FontRoundTripsThroughItsText) {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSizeF(13.5);
    font.setBold(true);
    font.setItalic(true);
    Defaults writer(path());
    writer.setFont("Font", font);
    const auto reader = reopenFromDisk(writer);
    QFont back(QStringLiteral("Something Else"));
    ASSERT_TRUE(reader->fontForKey("Font", &back));
    EXPECT_EQ(back.family(), font.family());
    EXPECT_EQ(back.pointSizeF(), 13.5);
    EXPECT_TRUE(back.bold());
    EXPECT_TRUE(back.italic());
    EXPECT_EQ(back.toString(), font.toString());

    EXPECT_FALSE(reader->fontForKey("Missing", &back));
    EXPECT_EQ(back, QFont());
    writer.setString("Broken", "a,b,c");
    EXPECT_FALSE(writer.fontForKey("Broken", nullptr));
}

TEST_F(DefaultsTest, PointIsStoredAsTwoSinglePrecisionNumbers) {
    Defaults writer(path());
    writer.setPoint("Point", {0.1f, -2.75f});
    const QVariantList stored = writer.objectForKey("Point").toList();
    ASSERT_EQ(stored.size(), 2);
    // The stored number is the float nearest 0.1, not the double nearest it.
    EXPECT_EQ(stored[0].toDouble(), double(0.1f));
    EXPECT_NE(stored[0].toDouble(), 0.1);
    const auto reader = reopenFromDisk(writer);
    EXPECT_EQ(reader->pointForKey("Point"), (PointF{0.1f, -2.75f}));
    EXPECT_EQ(reader->pointForKey("Missing"), PointF{});
}

TEST_F(DefaultsTest, MalformedPointIsTheZeroPoint) {
    writeIni("points.ini",
             "[General]\ngood=0.1, 0.2\nword=abc\nsingle=1\nthree=1, 2, 3\nwords=a, b\n"
             "half=1, b\n");
    Defaults defaults(path("points.ini"));
    EXPECT_EQ(defaults.pointForKey("good"), (PointF{0.1f, 0.2f}));
    for (const char* key : {"word", "single", "three", "words", "half"}) {
        SCOPED_TRACE(key);
        EXPECT_EQ(defaults.pointForKey(key), PointF{});
    }
}

TEST_F(DefaultsTest, DatesAtOrBeforeTheReferenceAreNull) {
    Defaults defaults(path());
    const QDateTime rows[] = {kReference, kReference.addSecs(-100), kReference.addMSecs(900)};
    for (const QDateTime& date : rows) {
        SCOPED_TRACE(qPrintable(date.toString(Qt::ISODateWithMs)));
        defaults.setDate("Date", date);
        EXPECT_TRUE(defaults.dateForKey("Date").isNull());
    }
    defaults.setString("Date", "junk");
    EXPECT_TRUE(defaults.dateForKey("Date").isNull());
    defaults.setString("Date", "1e30");
    EXPECT_TRUE(defaults.dateForKey("Date").isNull());
    EXPECT_TRUE(defaults.dateForKey("Missing").isNull());
}

TEST_F(DefaultsTest, SmallDatesComeBackToTheTruncatedSecond) {
    Defaults defaults(path());
    defaults.setDate("Date", kReference.addMSecs(100'900));
    EXPECT_EQ(defaults.objectForKey("Date").toLongLong(), 100);
    EXPECT_EQ(defaults.dateForKey("Date"), kReference.addSecs(100));
}

TEST_F(DefaultsTest, PresentDayDatesComeBackOnTheSinglePrecisionGrid) {
    // 2026 lies between 2^29 and 2^30 seconds after the reference, where floats are 64 apart.
    const QDateTime date(QDate(2026, 3, 14), QTime(12, 34, 56, 789), QTimeZone::utc());
    const qint64 seconds = kReference.secsTo(date);
    ASSERT_GT(seconds, qint64(1) << 29);
    ASSERT_LT(seconds, qint64(1) << 30);
    ASSERT_NE(seconds % 64, 0);

    Defaults writer(path());
    writer.setDate("Date", date);
    EXPECT_EQ(writer.objectForKey("Date").toLongLong(), seconds);
    const auto reader = reopenFromDisk(writer);
    const QDateTime back = reader->dateForKey("Date");
    ASSERT_TRUE(back.isValid());
    const qint64 backSeconds = kReference.secsTo(back);
    EXPECT_EQ(backSeconds % 64, 0);
    EXPECT_EQ(backSeconds, qint64(float(seconds)));
    EXPECT_NE(back, date);
    EXPECT_LE(std::llabs(backSeconds - seconds), 64);
}

TEST_F(DefaultsTest, IncrementWritesThroughToTheFileAtOnce) {
    Defaults defaults(path());
    defaults.registerDefaults({{"Registered", 10}});
    EXPECT_EQ(defaults.incrementIntegerForKey("Counter"), 1);
    EXPECT_EQ(defaults.incrementIntegerForKey("Counter"), 2);
    EXPECT_TRUE(fileText().contains("\nCounter=2\n"));
    EXPECT_EQ(defaults.incrementIntegerForKey("Registered"), 11);
    EXPECT_TRUE(fileText().contains("\nRegistered=11\n"));
    defaults.setString("Text", "41");
    EXPECT_EQ(defaults.incrementIntegerForKey("Text"), 42);
    defaults.setInteger("Max", std::numeric_limits<int>::max());
    EXPECT_EQ(defaults.incrementIntegerForKey("Max"), std::numeric_limits<int>::max());
}

TEST_F(DefaultsTest, ListsAndTablesOfDictionariesSurviveTheFile) {
    const QVariantList presets = {
        QVariantMap{{"name", "4 x 3"}, {"width", 4}, {"height", 3}},
        QVariantMap{{"name", "Half"}, {"width", 1.5}, {"height", 0.5}, {"on", true}},
    };
    const QVariantMap destinations = {
        {"0", QVariantMap{{"label", "Desktop"}, {"targetType", 0}, {"tag", 7}}},
        {"3", QVariantMap{{"label", "Viewer"}, {"targetType", 1}, {"path", "/usr/bin/x"}}},
    };
    Defaults writer(path());
    writer.setObject("Presets", presets);
    writer.setObject("Destinations", destinations);
    writer.setObject("One", QVariantList{QStringLiteral("only")});
    writer.setObject("Two", QVariantList{QStringLiteral("a"), QStringLiteral("b")});
    writer.setObject("None", QVariantList{});
    const auto reader = reopenFromDisk(writer);
    EXPECT_EQ(reader->arrayForKey("Presets"), presets);
    EXPECT_EQ(reader->dictionaryForKey("Destinations"), destinations);
    EXPECT_EQ(reader->dictionaryForKey("Destinations")["3"].toMap()["targetType"].toInt(), 1);
    EXPECT_EQ(reader->arrayForKey("One"), (QVariantList{QStringLiteral("only")}));
    EXPECT_EQ(reader->arrayForKey("Two"), (QVariantList{QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_TRUE(reader->hasStoredValue("None"));
    EXPECT_TRUE(reader->arrayForKey("None").isEmpty());
    EXPECT_TRUE(reader->arrayForKey("Destinations").isEmpty());
    EXPECT_TRUE(reader->dictionaryForKey("Presets").isEmpty());
}

TEST_F(DefaultsTest, GarbageFileGivesEmptyValuesAndKeepsRegisteredOnes) {
    writeIni("garbage.ini", QByteArray("\x00\xff[[[=\n=\n]]\x01\x02Border\n", 20));
    Defaults defaults(path("garbage.ini"));
    defaults.registerDefaults({{"JpegQuality", 80}});
    EXPECT_EQ(defaults.integerForKey("JpegQuality"), 80);
    EXPECT_FALSE(defaults.boolForKey("Border"));
    EXPECT_TRUE(defaults.arrayForKey("Presets").isEmpty());
}

TEST_F(DefaultsTest, UserStoreIsTheMarigoldIniFile) {
    const Defaults defaults;
    EXPECT_TRUE(defaults.fileName().endsWith("/Marigold/Marigold.ini"))
        << qPrintable(defaults.fileName());
}

TEST(FactoryDefaultsTest, EveryKeyHasItsFactoryValueAndType) {
    using namespace keys;
    const QVariantMap factory = Defaults::factoryDefaults();
    const struct {
        QLatin1StringView key;
        QVariant value;
    } rows[] = {
        {DefFileFormat, 101},
        {DefJpegQuality, 80},
        {DefLimitFilesize, false},
        {DefFilesizeLimit, 100},
        {DefDisplaySizeLimitMessage, true},
        {DefPreviewMode, 0},
        {DefSharpen, false},
        {DefSharpness, 0.4},
        {DefTimedCaptureDelay, 5},
        {DefPlaySound, true},
        {DefTimeStamp, 0},
        {DefCursor, 1},
        {DefDoubleClickDestination, 0},
        {DefOpenLastAtLaunch, false},
        {DefTexturedWindow, false},
        {DefCrossHair, false},
        {DefLivePreview, true},
        {DefConstrainRotation, true},
        {DefAutoOrderBack, false},
        {DefAutoOrderFront, true},
        {DefHideExtension, false},
        {DefPreserveExif, 1},
        {DefBorder, false},
        {DefBorderThickness, 1},
        {DefBorderColor, QStringLiteral("#000000ff")},
        {DefInterpolation, 3},
        {DefCustomRatioWidth, 3},
        {DefCustomRatioHeight, 2},
        {DefCustomSizeWidth, 800},
        {DefCustomSizeHeight, 600},
        {DefSelectedPreset, -1},
        {DefRememberLastConstraint, true},
        {DefCheckAtStartup, false},
    };
    EXPECT_EQ(factory.size(), qsizetype(std::size(rows)));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.key.data());
        ASSERT_TRUE(factory.contains(row.key));
        const QVariant value = factory.value(row.key);
        EXPECT_EQ(value.typeId(), row.value.typeId()) << value.typeName();
        EXPECT_EQ(value, row.value);
    }
    for (QLatin1StringView later : {DefDestinations, DefRatioPresets, DefSizePresets}) {
        EXPECT_FALSE(factory.contains(later)) << later.data();
    }
}

TEST(FactoryDefaultsTest, RegisteredFactoryValuesFeedTheTypedGetters) {
    QTemporaryDir dir;
    Defaults defaults(dir.filePath("settings.ini"));
    defaults.registerDefaults(Defaults::factoryDefaults());
    EXPECT_EQ(defaults.integerForKey(keys::DefFileFormat), 101);
    EXPECT_EQ(defaults.integerForKey(keys::DefSelectedPreset), -1);
    EXPECT_FLOAT_EQ(defaults.floatForKey(keys::DefSharpness), 0.4f);
    EXPECT_TRUE(defaults.boolForKey(keys::DefRememberLastConstraint));
    EXPECT_FALSE(defaults.boolForKey(keys::DefSharpen));
    EXPECT_EQ(defaults.colorForKey(keys::DefBorderColor).rgba(), QColor(0, 0, 0).rgba());
}

}  // namespace
}  // namespace marigold
