#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include "constraints/ConstraintMenuItems.h"
#include "constraints/RatioController.h"
#include "platform/Defaults.h"
#include "platform/DefaultsKeys.h"
#include "platform/UndoManager.h"

namespace marigold {
namespace {

using namespace keys;

class RatioControllerTest : public ::testing::Test {
protected:
    RatioControllerTest() {
        defaults.registerDefaults(Defaults::factoryDefaults());
        ratios.setUserResizableHandler([this] { ++resizableCalls; });
        ratios.setShowManagerHandler([this] { ++managerShown; });
    }

    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("settings.ini"));
    Defaults defaults{path};
    UndoManager undo;
    RatioController ratios{defaults, undo};
    int resizableCalls = 0;
    int managerShown = 0;
};

TEST_F(RatioControllerTest, AFreshMenuListsTheFactoryPresetsWithTheirTags) {
    const std::pair<const char*, int> expected[] = {{"None", -1},
                                                    {"-", -10},
                                                    {"4x6", 0},
                                                    {"5x7", 1},
                                                    {"Custom Ratio", -2},
                                                    {"-", -10},
                                                    {"640x480", 2},
                                                    {"320x240", 3},
                                                    {"Custom Size", -3},
                                                    {"-", -10},
                                                    {"Manage Constraints", -4}};
    const QStringList items = ratios.constraintMenuItems();
    ASSERT_EQ(items.size(), 11);
    for (int i = 0; i < 11; ++i) {
        const TaggedMenuItem item(items[i]);
        EXPECT_EQ(item.title(), QString::fromUtf8(expected[i].first)) << i;
        EXPECT_EQ(item.tag(), expected[i].second) << i;
        EXPECT_EQ(item.isSeparator(), expected[i].second == kSeparatorTag) << i;
    }
    // Written back at once, and read back from the file as they were.
    defaults.synchronize();
    Defaults reopened(path);
    RatioController again(reopened, undo);
    EXPECT_EQ(again.presets(PresetKind::Size), factoryPresets(PresetKind::Size));
}

TEST_F(RatioControllerTest, EachChoicePublishesItsTermsAndScale) {
    const struct {
        int tag;
        float width, height;
        bool actualSize, fieldsEnabled;
    } choices[] = {
        {-1, 0, 0, false, false}, {0, 6, 4, false, false},    {3, 320, 240, true, false},
        {-2, 3, 2, false, true},  {-3, 800, 600, true, true},
    };
    for (const auto& c : choices) {
        ratios.setSelectedPreset(c.tag);
        EXPECT_EQ(ratios.ratioWidth(), c.width) << c.tag;
        EXPECT_EQ(ratios.ratioHeight(), c.height) << c.tag;
        EXPECT_EQ(ratios.actualSize(), c.actualSize) << c.tag;
        EXPECT_EQ(ratios.widthHeightEnabled(), c.fieldsEnabled) << c.tag;
    }
    ratios.setSelectedPreset(2);  // 640 x 480
    EXPECT_FLOAT_EQ(ratios.scaleFactorForImageSize(2000, 1000, 0.5f, 0.3f), 0.64f);
    EXPECT_FLOAT_EQ(ratios.scaleFactorForImageSize(2000, 1000, 0, 0.3f), 1) << "no width";
    ratios.setPresets(PresetKind::Size, {{QStringLiteral("tall"), 0, 480}});
    ratios.setSelectedPreset(2);
    EXPECT_FLOAT_EQ(ratios.scaleFactorForImageSize(2000, 1000, 0.3f, 0.5f), 0.96f);
    ratios.setSelectedPreset(-1);
    EXPECT_FLOAT_EQ(ratios.scaleFactorForImageSize(2000, 1000, 0.5f, 0.5f), 1);
}

TEST_F(RatioControllerTest, ChoosingIsOneUndoStepAndOddTagsAreTamed) {
    // Each in an event-loop pass of its own, as a person's choices are: one undo group each.
    ratios.setSelectedPreset(1);
    QCoreApplication::processEvents();
    ratios.setSelectedPreset(17);
    QCoreApplication::processEvents();
    EXPECT_EQ(ratios.selectedPreset(), -1) << "past the four presets";
    ratios.setSelectedPreset(-4);
    EXPECT_EQ(managerShown, 1);
    EXPECT_EQ(ratios.selectedPreset(), -1) << "the manager changes nothing";
    EXPECT_EQ(resizableCalls, 2);
    EXPECT_EQ(undo.undoActionName(), QStringLiteral("Select Preset"));
    undo.undo();
    EXPECT_EQ(ratios.selectedPreset(), 1);
    undo.redo();
    EXPECT_EQ(ratios.selectedPreset(), -1);
}

TEST_F(RatioControllerTest, CustomFieldsStoreIntoTheChosenCustomKeysOnly) {
    ratios.setSelectedPreset(-1);
    ratios.setRatioWidth(9);
    EXPECT_EQ(defaults.floatForKey(DefCustomRatioWidth), 3) << "nothing to store for none";
    ratios.setSelectedPreset(-2);
    ratios.setRatioWidth(9);
    EXPECT_EQ(defaults.floatForKey(DefCustomRatioWidth), 9);
    ratios.setSelectedPreset(-3);
    ratios.setNilValueForKey(QStringLiteral("ratioHeight"));
    EXPECT_EQ(defaults.floatForKey(DefCustomSizeHeight), 0);
    EXPECT_EQ(defaults.floatForKey(DefCustomRatioWidth), 9);
}

TEST(ConstraintMenuItemsTest, EncodedTitlesCarryTheirTag) {
    EXPECT_EQ(itemStringWithTitle(QStringLiteral("Custom Ratio"), -2),
              QStringLiteral("::$$Custom Ratio$$-2"));
    TaggedMenuItem custom(itemStringWithTitle(QStringLiteral("Custom Ratio"), -2));
    custom.setTag(7);
    EXPECT_EQ(custom.tag(), -2) << "a tag from the title stays";
    EXPECT_EQ(custom.description(), QStringLiteral("-2 - Custom Ratio"));
    EXPECT_EQ(TaggedMenuItem(itemStringWithTitle(QStringLiteral("Manage Constraints"), -4))
                  .keyEquivalent(),
              QStringLiteral(";"));
    TaggedMenuItem plain(QStringLiteral("Open"));
    EXPECT_EQ(plain.tag(), kUntaggedItem);
    plain.setTag(5);
    EXPECT_EQ(plain.tag(), 5);
    EXPECT_EQ(TaggedMenuItem(QStringLiteral("::$$a$$b$$1")).title(), QStringLiteral("::$$a$$b$$1"))
        << "not three parts: an ordinary title";
}

TEST(ConstraintPresetsTest, MovesLandAboveTheDropRow) {
    const QList<ConstraintPreset> four = {{"A", 1, 1}, {"B", 1, 1}, {"C", 1, 1}, {"D", 1, 1}};
    const struct {
        int from, to, landed;
        const char* order;
    } moves[] = {{0, 3, 2, "BCAD"}, {3, 1, 1, "ADBC"}, {2, 2, 2, "ABCD"}, {1, 4, 3, "ACDB"}};
    for (const auto& m : moves) {
        QList<ConstraintPreset> list = four;
        EXPECT_EQ(moveObjectAtIndex(m.from, m.to, list), m.landed) << m.from << "->" << m.to;
        QString order;
        for (const ConstraintPreset& preset : list) order += preset.name;
        EXPECT_EQ(order, QString::fromUtf8(m.order)) << m.from << "->" << m.to;
    }
}

TEST(ConstraintPresetsTest, EditsKeepNamesAndTermsSensible) {
    const ConstraintPreset square{QStringLiteral("Square"), 1, 1};
    const struct {
        PresetKind kind;
        PresetColumn column;
        const char* typed;
        ConstraintPreset expected;
    } edits[] = {
        {PresetKind::Ratio, PresetColumn::Width, "0", {"Square", 1, 1}},
        {PresetKind::Ratio, PresetColumn::Height, "abc", {"Square", 1, 1}},
        {PresetKind::Ratio, PresetColumn::Width, "16", {"Square", 16, 1}},
        {PresetKind::Size, PresetColumn::Width, "-5", {"Square", 0, 1}},
        {PresetKind::Size, PresetColumn::Height, "12abc", {"Square", 1, 12}},
        {PresetKind::Size, PresetColumn::Name, "   ", {"Square", 1, 1}},
        {PresetKind::Size, PresetColumn::Name, " Banner\n", {"Banner", 1, 1}},
    };
    for (const auto& e : edits) {
        EXPECT_EQ(editedPreset(square, e.kind, e.column, QString::fromUtf8(e.typed)), e.expected)
            << e.typed;
    }
}

}  // namespace
}  // namespace marigold
