// The settings the menus change: not undoable, and each applied at once through
// `preferenceDidChange`, as the preferences dialog applies its own.
#include "core/AppController.h"
#include "core/SettingRanges.h"
#include "platform/DefaultsKeys.h"

namespace marigold {

using namespace keys;

int AppController::preserveMetadata() const {
    return integerSetting(_defaults, DefPreserveExif);
}

void AppController::setPreserveMetadata(int tag) {
    _defaults.setInteger(DefPreserveExif, tag);
    preferenceDidChange();
}

int AppController::imageInterpolation() const {
    return integerSetting(_defaults, DefInterpolation);
}

void AppController::setImageInterpolation(int tag) {
    _defaults.setInteger(DefInterpolation, tag);
    preferenceDidChange();
}

bool AppController::border() const {
    return _defaults.boolForKey(DefBorder);
}

void AppController::toggleBorder() {
    _defaults.setBool(DefBorder, !border());
    preferenceDidChange();
}

}  // namespace marigold
