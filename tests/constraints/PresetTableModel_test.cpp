#include <gtest/gtest.h>

#include <QMimeData>
#include <memory>

#include "constraints/PresetTableModel.h"

namespace marigold {
namespace {

QString order(const PresetTableModel& model) {
    QString names;
    for (const ConstraintPreset& preset : model.presets()) names += preset.name;
    return names;
}

const QList<ConstraintPreset> kFourRows = {{"A", 1, 1}, {"B", 1, 1}, {"C", 1, 1}, {"D", 1, 1}};

TEST(PresetTableModelTest, ADraggedRowLandsAboveTheDropRowAndIsReported) {
    // Qt hands a drop between rows as (row, no parent) and a drop onto a row as (-1, that row).
    const struct {
        int from, row, ontoRow, landed;
        const char* order;
    } drops[] = {
        {0, 3, -1, 2, "BCAD"},   // above row 3 of four
        {3, -1, 1, 1, "ADBC"},   // onto row 1: above it
        {1, -1, -1, 3, "ACDB"},  // below every row: the end
    };
    for (const auto& d : drops) {
        PresetTableModel model(PresetKind::Ratio);
        model.setPresets(kFourRows);
        QList<int> moved;
        QObject::connect(&model, &PresetTableModel::rowMoved, [&moved](int row) { moved << row; });
        std::unique_ptr<QMimeData> dragged(model.mimeData({model.index(d.from, 1)}));
        ASSERT_TRUE(dragged);
        const QModelIndex onto = d.ontoRow >= 0 ? model.index(d.ontoRow, 0) : QModelIndex();
        ASSERT_TRUE(model.dropMimeData(dragged.get(), Qt::MoveAction, d.row, 0, onto));
        EXPECT_EQ(order(model), QString::fromUtf8(d.order)) << d.from;
        EXPECT_EQ(moved, QList<int>{d.landed}) << d.from;
    }
}

TEST(PresetTableModelTest, RowsNeverCrossBetweenTheTablesAndMoveOneAtATime) {
    PresetTableModel ratios(PresetKind::Ratio), sizes(PresetKind::Size);
    ratios.setPresets(kFourRows);
    sizes.setPresets(kFourRows);
    std::unique_ptr<QMimeData> fromSizes(sizes.mimeData({sizes.index(0, 0)}));
    ASSERT_TRUE(fromSizes);
    EXPECT_TRUE(fromSizes->hasFormat(QStringLiteral("com.BlueFinch.Marigold.SizePboardType")));
    EXPECT_FALSE(ratios.canDropMimeData(fromSizes.get(), Qt::MoveAction, 1, 0, {}));
    EXPECT_FALSE(ratios.dropMimeData(fromSizes.get(), Qt::MoveAction, 1, 0, {}));
    EXPECT_EQ(order(ratios), QStringLiteral("ABCD"));
    // Every column of one row is one row; two rows are not dragged at all.
    std::unique_ptr<QMimeData> wholeRow(ratios.mimeData({ratios.index(2, 0), ratios.index(2, 2)}));
    EXPECT_TRUE(wholeRow);
    EXPECT_EQ(ratios.mimeData({ratios.index(0, 0), ratios.index(1, 0)}), nullptr);
}

TEST(PresetTableModelTest, AddAndDuplicateAppendAndCellsFollowTheEditRules) {
    PresetTableModel ratios(PresetKind::Ratio);
    ratios.setPresets(kFourRows);
    ratios.setData(ratios.index(1, 1), QStringLiteral("0"), Qt::EditRole);
    ratios.setData(ratios.index(1, 2), QStringLiteral(" 16 "), Qt::EditRole);
    ratios.setData(ratios.index(1, 0), QStringLiteral("  Wide  "), Qt::EditRole);
    EXPECT_EQ(ratios.presets()[1], (ConstraintPreset{"Wide", 1, 16}));
    EXPECT_EQ(ratios.data(ratios.index(1, 2), Qt::EditRole).toString(), QStringLiteral("16"))
        << "numbers are edited as text, so anything typed reaches the rules";

    EXPECT_EQ(ratios.duplicatePreset(1), 4) << "a copy goes to the end, not after its original";
    EXPECT_EQ(ratios.presets()[4], ratios.presets()[1]);
    EXPECT_EQ(ratios.addPreset(), 5);
    EXPECT_EQ(ratios.presets()[5], (ConstraintPreset{"Untitled", 6, 4}));
    PresetTableModel sizes(PresetKind::Size);
    EXPECT_EQ(sizes.addPreset(), 0);
    EXPECT_EQ(sizes.presets()[0], (ConstraintPreset{"Untitled", 640, 480}));
    EXPECT_EQ(sizes.duplicatePreset(3), -1) << "nothing selected, nothing copied";
}

}  // namespace
}  // namespace marigold
