#pragma once

#include <QList>
#include <QString>
#include <QVariant>

namespace marigold {

// A named constraint: for a ratio the two terms ("4x6" is 6 wide, 4 high: the short side
// first), for a size the output pixels.
struct ConstraintPreset {
    QString name;
    int width = 0;
    int height = 0;
    friend bool operator==(const ConstraintPreset&, const ConstraintPreset&) = default;
};

enum class PresetKind { Ratio, Size };

// As stored: a dictionary with "ConstraintName", "ConstraintWidth" and "ConstraintHeight".
QVariantMap toStored(const ConstraintPreset& preset);
ConstraintPreset fromStored(const QVariant& stored);
QVariantList toStored(const QList<ConstraintPreset>& presets);

QList<ConstraintPreset> factoryPresets(PresetKind kind);
// What "Add" appends: "Untitled", 6 x 4 or 640 x 480.
ConstraintPreset untitledPreset(PresetKind kind);

enum class PresetColumn { Name, Width, Height };
// A cell of the manager's tables edited to `text`: names are trimmed and a blank one keeps
// the old; numbers that are not numbers count as 0, and then a ratio term is at least 1 and
// a size at least 0 (a size may leave one side free, a ratio term may not).
ConstraintPreset editedPreset(ConstraintPreset preset, PresetKind kind, PresetColumn column,
                              const QString& text);

// Moves the record at `from` so that it lands above the row that was at `to` (the drop row);
// returns where it ends: moving row 0 above row 3 of four ends at index 2.
int moveObjectAtIndex(int from, int to, QList<ConstraintPreset>& presets);

}  // namespace marigold
