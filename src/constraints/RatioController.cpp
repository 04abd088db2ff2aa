#include "constraints/RatioController.h"

#include <QPointer>

#include "constraints/ConstraintMenuItems.h"
#include "platform/Defaults.h"
#include "platform/DefaultsKeys.h"
#include "platform/UndoManager.h"

namespace marigold {

using namespace keys;

namespace {

QLatin1StringView keyOf(PresetKind kind) {
    return kind == PresetKind::Ratio ? DefRatioPresets : DefSizePresets;
}

}  // namespace

RatioController::RatioController(Defaults& defaults, UndoManager& undoManager, QObject* parent)
    : QObject(parent), _defaults(defaults), _undoManager(undoManager) {
    // A list missing from the settings is the factory one, written back at once.
    presets(PresetKind::Ratio);
    presets(PresetKind::Size);
}

QList<ConstraintPreset> RatioController::_stored(PresetKind kind) const {
    if (!_defaults.objectForKey(keyOf(kind)).isValid()) return factoryPresets(kind);
    QList<ConstraintPreset> list;
    for (const QVariant& item : _defaults.arrayForKey(keyOf(kind))) list.append(fromStored(item));
    return list;
}

QList<ConstraintPreset> RatioController::presets(PresetKind kind) {
    if (!_defaults.objectForKey(keyOf(kind)).isValid()) setPresets(kind, factoryPresets(kind));
    return _stored(kind);
}

void RatioController::setPresets(PresetKind kind, const QList<ConstraintPreset>& list) {
    _defaults.setObject(keyOf(kind), toStored(list));
}

RatioController::Lookup RatioController::presetForTag(int tag) const {
    if (tag == kCustomSize) {
        return {_defaults.floatForKey(DefCustomSizeWidth),
                _defaults.floatForKey(DefCustomSizeHeight), true};
    }
    if (tag == kCustomRatio) {
        return {_defaults.floatForKey(DefCustomRatioWidth),
                _defaults.floatForKey(DefCustomRatioHeight), false};
    }
    const QList<ConstraintPreset> ratios = _stored(PresetKind::Ratio);
    const QList<ConstraintPreset> sizes = _stored(PresetKind::Size);
    // Unsigned, so that every negative tag falls past the lists.
    const auto index = unsigned(tag);
    if (index < unsigned(ratios.size())) {
        return {float(ratios[index].width), float(ratios[index].height), false};
    }
    if (index < unsigned(ratios.size() + sizes.size())) {
        const ConstraintPreset& size = sizes[index - unsigned(ratios.size())];
        return {float(size.width), float(size.height), true};
    }
    return {};
}

int RatioController::selectedPreset() const {
    return _defaults.integerForKey(DefSelectedPreset);
}

void RatioController::setSelectedPreset(int tag) {
    if (tag == kManage) {
        if (_showManager) _showManager();
        return;
    }
    const int count = int(presets(PresetKind::Ratio).size() + presets(PresetKind::Size).size());
    if (tag >= count) tag = kNone;
    const int old = selectedPreset();
    _defaults.setInteger(DefSelectedPreset, tag);
    QPointer<RatioController> self(this);
    _undoManager.registerUndo([self, old] {
        if (self) self->setSelectedPreset(old);
    });
    _undoManager.setActionName(tr("Select Preset"));
    if (_userResizable) _userResizable();
    Q_EMIT constraintChanged();
}

float RatioController::ratioWidth() const {
    return presetForTag(selectedPreset()).width;
}

float RatioController::ratioHeight() const {
    return presetForTag(selectedPreset()).height;
}

void RatioController::_setCustom(bool width, float value) {
    const int tag = selectedPreset();
    if (tag == kCustomSize) {
        _defaults.setFloat(width ? DefCustomSizeWidth : DefCustomSizeHeight, value);
    } else if (tag == kCustomRatio) {
        _defaults.setFloat(width ? DefCustomRatioWidth : DefCustomRatioHeight, value);
    } else {
        return;
    }
    Q_EMIT constraintChanged();
}

void RatioController::setRatioWidth(float width) {
    _setCustom(true, width);
}

void RatioController::setRatioHeight(float height) {
    _setCustom(false, height);
}

void RatioController::setNilValueForKey(const QString& key) {
    if (key == QLatin1String("ratioWidth")) setRatioWidth(0);
    if (key == QLatin1String("ratioHeight")) setRatioHeight(0);
}

bool RatioController::widthHeightEnabled() const {
    const int tag = selectedPreset();
    return tag == kCustomRatio || tag == kCustomSize;
}

bool RatioController::actualSize() const {
    return presetForTag(selectedPreset()).actualSize;
}

float RatioController::scaleFactorForImageSize(float imageWidth, float imageHeight, float cropWidth,
                                               float cropHeight) const {
    if (cropWidth == 0 || cropHeight == 0) return 1;
    const Lookup chosen = presetForTag(selectedPreset());
    if (chosen.width > 0) return chosen.width / (imageWidth * cropWidth);
    if (chosen.height > 0) return chosen.height / (imageHeight * cropHeight);
    return 1;
}

QStringList RatioController::constraintMenuItems() {
    QStringList items{itemStringWithTitle(tr("None"), kNone), itemStringForSeparator()};
    int tag = 0;
    for (const ConstraintPreset& preset : presets(PresetKind::Ratio)) {
        items << itemStringWithTitle(preset.name, tag++);
    }
    items << itemStringWithTitle(tr("Custom Ratio"), kCustomRatio) << itemStringForSeparator();
    for (const ConstraintPreset& preset : presets(PresetKind::Size)) {
        items << itemStringWithTitle(preset.name, tag++);
    }
    items << itemStringWithTitle(tr("Custom Size"), kCustomSize) << itemStringForSeparator()
          << itemStringWithTitle(tr("Manage Constraints"), kManage);
    return items;
}

void RatioController::setConstraintMenuItems() {
    setSelectedPreset(selectedPreset());
    Q_EMIT menuItemsChanged();
}

}  // namespace marigold
