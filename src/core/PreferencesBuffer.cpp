#include "core/PreferencesBuffer.h"

#include <algorithm>

#include "core/SettingRanges.h"
#include "platform/DefaultsKeys.h"

namespace marigold {

bool PreferencesBuffer::boolForKey(QLatin1StringView key) const {
    const auto edit = _edits.constFind(key);
    return edit != _edits.cend() ? edit->toBool() : _defaults.boolForKey(key);
}

int PreferencesBuffer::integerForKey(QLatin1StringView key) const {
    const auto edit = _edits.constFind(key);
    return edit != _edits.cend() ? edit->toInt() : integerSetting(_defaults, key);
}

QColor PreferencesBuffer::colorForKey(QLatin1StringView key) const {
    const auto edit = _edits.constFind(key);
    return edit != _edits.cend() ? edit->value<QColor>() : _defaults.colorForKey(key);
}

void PreferencesBuffer::setBool(QLatin1StringView key, bool value) {
    _edits.insert(key, value);
}

void PreferencesBuffer::setInteger(QLatin1StringView key, int value) {
    // The controls offer valid values only; this keeps a bad one out of the file anyway.
    if (const SettingRange* range = settingRange(key)) {
        value = std::clamp(value, range->low, range->high);
    }
    _edits.insert(key, value);
}

void PreferencesBuffer::setColor(QLatin1StringView key, const QColor& color) {
    _edits.insert(key, color);
}

void PreferencesBuffer::save() {
    for (auto it = _edits.cbegin(); it != _edits.cend(); ++it) {
        if (it->typeId() == QMetaType::QColor) {
            _defaults.setColor(it.key(), it->value<QColor>());
        } else {
            _defaults.setObject(it.key(), *it);
        }
    }
    _edits.clear();
    _defaults.synchronize();
}

void PreferencesBuffer::revert() {
    _edits.clear();
}

void PreferencesBuffer::updateDefaultsController() {
    using namespace keys;
    for (const QLatin1StringView key : {DefPreserveExif, DefBorder, DefInterpolation}) {
        _edits.remove(key);
    }
}

}  // namespace marigold
