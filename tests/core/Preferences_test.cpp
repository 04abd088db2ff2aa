#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <functional>

#include "core/AppController.h"
#include "core/CursorImages.h"
#include "core/PreferencesBuffer.h"
#include "core/SettingRanges.h"
#include "platform/DefaultsKeys.h"
#include "support/NonsenseSettings.h"
#include "support/ToolsAndFiles.h"

namespace marigold {
namespace {

using namespace keys;

class PreferencesTest : public ::testing::Test {
protected:
    PreferencesTest() : defaults(path), buffer(defaults) {
        defaults.registerDefaults(Defaults::factoryDefaults());
    }

    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("settings.ini"));
    Defaults defaults;
    PreferencesBuffer buffer;
};

TEST_F(PreferencesTest, OkWritesEveryEditToTheFile) {
    buffer.setBool(DefBorder, true);
    buffer.setInteger(DefBorderThickness, 7);
    buffer.setInteger(DefTimedCaptureDelay, 0);  // below its range: kept out of the file
    buffer.setColor(DefBorderColor, QColor(255, 0, 0, 128));
    buffer.save();
    EXPECT_FALSE(buffer.hasEdits());
    // A copy, because QSettings shares what it parsed within the process.
    const QString copy = dir.filePath(QStringLiteral("copy.ini"));
    ASSERT_TRUE(QFile::copy(path, copy));
    const Defaults reread(copy);
    EXPECT_TRUE(reread.boolForKey(DefBorder));
    EXPECT_EQ(reread.integerForKey(DefBorderThickness), 7);
    EXPECT_EQ(reread.integerForKey(DefTimedCaptureDelay), 1);
    EXPECT_EQ(reread.colorForKey(DefBorderColor).rgba(), QColor(255, 0, 0, 128).rgba());
}

TEST(NonsenseSettingsTest, EveryKeyReadsAsTheValueTheProgramUses) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("settings.ini"));
    test::writeFile(path, test::kNonsenseSettings);
    Defaults defaults(path);
    AppController controller(defaults);
    const auto flag = [&](QLatin1StringView key) {
        return [&, key] { return QVariant(defaults.boolForKey(key)); };
    };
    const auto code = [&](QLatin1StringView key) {
        return [&, key] { return QVariant(integerSetting(defaults, key)); };
    };
    const struct {
        QLatin1StringView key;
        std::function<QVariant()> read;
        QVariant used;
    } rows[] = {
        {DefFileFormat, [&] { return QVariant(controller.fileFormat()); }, 101},
        {DefJpegQuality, [&] { return QVariant(controller.quality()); }, "80"},
        {DefLimitFilesize, flag(DefLimitFilesize), false},
        // Numbers that read keep the rules their settings have: clamped, or a fixed meaning.
        {DefFilesizeLimit, [&] { return QVariant(controller.filesizeLimit()); }, "9990"},
        {DefPreviewMode, [&] { return QVariant(controller.previewMode()); }, 2},
        {DefCursor, code(DefCursor), 0},
        {DefDisplaySizeLimitMessage, flag(DefDisplaySizeLimitMessage), true},
        {DefSharpen, flag(DefSharpen), false},
        {DefSharpness, [&] { return QVariant(controller.sharpness()); }, 0.4f},
        {DefTimedCaptureDelay, code(DefTimedCaptureDelay), 5},
        {DefPlaySound, flag(DefPlaySound), true},
        {DefTimeStamp, code(DefTimeStamp), 0},
        {DefOpenLastAtLaunch, flag(DefOpenLastAtLaunch), false},
        {DefCrossHair, flag(DefCrossHair), false},
        {DefConstrainRotation, flag(DefConstrainRotation), true},
        {DefAutoOrderBack, flag(DefAutoOrderBack), false},
        {DefAutoOrderFront, flag(DefAutoOrderFront), true},
        {DefPreserveExif, code(DefPreserveExif), 1},
        {DefBorder, flag(DefBorder), false},
        {DefBorderThickness, code(DefBorderThickness), 1},
        {DefBorderColor, [&] { return QVariant(defaults.colorForKey(DefBorderColor)); },
         QColor(0, 0, 0)},
        {DefInterpolation, code(DefInterpolation), 3},
    };
    for (const auto& row : rows) {
        EXPECT_TRUE(defaults.hasStoredValue(row.key)) << row.key.data();
        EXPECT_EQ(row.read(), row.used) << row.key.data();
    }
}

TEST(SelectedCursorTest, CodesOneToFivePickTheirPictureAndOthersNone) {
    QTemporaryDir dir;
    Defaults defaults(dir.filePath(QStringLiteral("settings.ini")));
    defaults.registerDefaults(Defaults::factoryDefaults());
    for (const int none : {0, 6, -1}) {
        defaults.setInteger(DefCursor, none);
        EXPECT_FALSE(selectedCursor(defaults)) << none;
    }
    for (int code = 1; code <= 5; ++code) {
        defaults.setInteger(DefCursor, code);
        const std::optional<CursorImage> cursor = selectedCursor(defaults);
        ASSERT_TRUE(cursor) << code;
        const CursorImage& named = cursorImages().value(cursorNames()[code - 1]);
        EXPECT_EQ(cursor->image, named.image) << code;
        EXPECT_EQ(cursor->image.size(), QSize(17, 17)) << code;
        // The pixel that points is part of the drawn pointer, not the clear margin.
        EXPECT_GT(qAlpha(cursor->image.pixel(cursor->hotSpot)), 0) << code;
    }
    EXPECT_EQ(cursorImages().size(), 5);
}

}  // namespace
}  // namespace marigold
