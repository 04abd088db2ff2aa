#include "constraints/ConstraintPresets.h"

#include <algorithm>

#include "platform/NumberText.h"

namespace marigold {

namespace {

const QString kName = QStringLiteral("ConstraintName");
const QString kWidth = QStringLiteral("ConstraintWidth");
const QString kHeight = QStringLiteral("ConstraintHeight");

}  // namespace

QVariantMap toStored(const ConstraintPreset& preset) {
    return {{kName, preset.name}, {kWidth, preset.width}, {kHeight, preset.height}};
}

QVariantList toStored(const QList<ConstraintPreset>& presets) {
    QVariantList stored;
    for (const ConstraintPreset& preset : presets) stored.append(toStored(preset));
    return stored;
}

ConstraintPreset fromStored(const QVariant& stored) {
    const QVariantMap map = stored.toMap();
    return {map.value(kName).toString(), map.value(kWidth).toInt(), map.value(kHeight).toInt()};
}

QList<ConstraintPreset> factoryPresets(PresetKind kind) {
    if (kind == PresetKind::Ratio) {
        return {{QStringLiteral("4x6"), 6, 4}, {QStringLiteral("5x7"), 7, 5}};
    }
    return {{QStringLiteral("640x480"), 640, 480}, {QStringLiteral("320x240"), 320, 240}};
}

ConstraintPreset untitledPreset(PresetKind kind) {
    return kind == PresetKind::Ratio ? ConstraintPreset{QStringLiteral("Untitled"), 6, 4}
                                     : ConstraintPreset{QStringLiteral("Untitled"), 640, 480};
}

ConstraintPreset editedPreset(ConstraintPreset preset, PresetKind kind, PresetColumn column,
                              const QString& text) {
    if (column == PresetColumn::Name) {
        const QString name = text.trimmed();
        if (!name.isEmpty()) preset.name = name;
        return preset;
    }
    const int least = kind == PresetKind::Ratio ? 1 : 0;
    const int value = std::max(leadingIntValue(text), least);
    (column == PresetColumn::Width ? preset.width : preset.height) = value;
    return preset;
}

int moveObjectAtIndex(int from, int to, QList<ConstraintPreset>& presets) {
    if (from == to) return from;
    if (from < to) {
        presets.insert(to, presets[from]);
        presets.removeAt(from);
        return to - 1;
    }
    const ConstraintPreset moved = presets.takeAt(from);
    presets.insert(to, moved);
    return to;
}

}  // namespace marigold
