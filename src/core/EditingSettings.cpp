// The document controller's undoable settings: each setter registers its own call with the
// value as it is now, names the step, stores the new value and then does its one follow-up.
#include <cmath>

#include "core/AppController.h"
#include "core/AppControllerTemplates.h"
#include "platform/NumberText.h"
#include "core/SettingRanges.h"
#include "core/WindowSide.h"
#include "platform/DefaultsKeys.h"

namespace marigold {

using namespace keys;

namespace {

constexpr int kShrinkToFit = 0, kActualPixels = 2;
constexpr int kMaxPercent = 200;

}  // namespace

template <typename Value>
void AppController::_storeSetting(QLatin1StringView key, Value old, Value value,
                                  void (AppController::*setter)(Value), const QString& actionName) {
    _registerUndo(old, setter, actionName);
    if constexpr (std::is_same_v<Value, float>) {
        _defaults.setFloat(key, value);
    } else {
        _defaults.setObject(key, value);
    }
    Q_EMIT settingsChanged();
}

// The two settings typed as text and stored as clamped whole numbers.
struct AppController::TypedSetting {
    QLatin1StringView key;
    int low, high;
    const char* actionName;
    void (AppController::*setter)(const QString&);
};

const AppController::TypedSetting AppController::kQuality{
    DefJpegQuality, 5, 100, QT_TR_NOOP("JPEG Quality Change"), &AppController::setQuality};
const AppController::TypedSetting AppController::kFilesizeLimit{DefFilesizeLimit, 10, 9990,
                                                                QT_TR_NOOP("Filesize Limit Change"),
                                                                &AppController::setFilesizeLimit};

QString AppController::_typedSetting(const TypedSetting& setting) const {
    return QString::number(
        std::clamp(_defaults.integerForKey(setting.key), setting.low, setting.high));
}

// Text that is not written the way "%d" prints its number only has the field rewritten with
// that number on the next pass; a number out of range is stored clamped and the field
// rewritten with what was stored.
void AppController::_setTypedSetting(const TypedSetting& setting, const QString& text) {
    const int typed = leadingIntValue(text);
    const auto rewrite = [this, &setting](int value) {
        _later(0,
               [this, setter = setting.setter, value] { (this->*setter)(QString::number(value)); });
    };
    if (!isCanonicalInt(text)) {
        rewrite(typed);
        return;
    }
    const int value = std::clamp(typed, setting.low, setting.high);
    if (value != typed) rewrite(value);
    _registerUndo(_typedSetting(setting), setting.setter, tr(setting.actionName));
    _defaults.setInteger(setting.key, value);
    Q_EMIT settingsChanged();
    _outputSettingsChanged();
}

bool AppController::sharpen() const {
    return _defaults.boolForKey(DefSharpen);
}

void AppController::setSharpen(bool on) {
    _storeSetting(DefSharpen, sharpen(), on, &AppController::setSharpen, tr("Toggle Sharpen"));
    updatePreview();
}

float AppController::sharpness() const {
    return _defaults.floatForKey(DefSharpness);
}

void AppController::setSharpness(float value) {
    _storeSetting(DefSharpness, sharpness(), value, &AppController::setSharpness,
                  tr("Sharpness Change"));
    updatePreview();
}

int AppController::fileFormat() const {
    return integerSetting(_defaults, DefFileFormat);
}

void AppController::setFileFormat(int format) {
    _storeSetting(DefFileFormat, fileFormat(), format, &AppController::setFileFormat,
                  tr("Format Change"));
    _outputSettingsChanged();
}

int AppController::previewMode() const {
    const int stored = _defaults.integerForKey(DefPreviewMode);
    // Modes other than these two are no longer offered; they read as actual pixels.
    return stored == kShrinkToFit || stored == kActualPixels ? stored : kActualPixels;
}

void AppController::setPreviewMode(int mode) {
    _storeSetting(DefPreviewMode, previewMode(), mode, &AppController::setPreviewMode,
                  tr("Mode Change"));
    updatePreviewFast(true);
}

QString AppController::quality() const {
    return _typedSetting(kQuality);
}
void AppController::setQuality(const QString& text) {
    _setTypedSetting(kQuality, text);
}

bool AppController::limitFilesize() const {
    return _defaults.boolForKey(DefLimitFilesize);
}

void AppController::setLimitFilesize(bool on) {
    if (on && _defaults.boolForKey(DefDisplaySizeLimitMessage) && _window) {
        _window->warnAboutSizeLimit([self = QPointer<AppController>(this)] {
            if (self) self->_defaults.setBool(DefDisplaySizeLimitMessage, false);
        });
    }
    _storeSetting(DefLimitFilesize, limitFilesize(), on, &AppController::setLimitFilesize,
                  tr("%1 Filesize Limit").arg(on ? tr("Enable") : tr("Disable")));
    _outputSettingsChanged();
}

QString AppController::filesizeLimit() const {
    return _typedSetting(kFilesizeLimit);
}
void AppController::setFilesizeLimit(const QString& text) {
    _setTypedSetting(kFilesizeLimit, text);
}

void AppController::setScaleFactor(float factor) {
    if (!(factor > 0) || factor == scaleFactor()) return;
    _registerUndo(scaleFactor(), &AppController::setScaleFactor, tr("Size Change"));
    _document.setScaleFactor(factor);
    updatePreviewFast(true);
}

void AppController::setScaleFactorWithoutUndo(float factor) {
    _document.setScaleFactor(factor);
}

void AppController::dragScaleFactor(float factor) {
    if (!(factor > 0)) return;
    _document.setScaleFactor(factor);
    updatePreviewFast(true);
}

void AppController::finishScaleDrag(float before, float after) {
    if (!(after > 0)) return;
    // A drag that came back to where it started leaves no step.
    if (after != before) _registerUndo(before, &AppController::setScaleFactor, tr("Size Change"));
    _document.setScaleFactor(after);
    updatePreviewFast(true);
}

int AppController::scaleFactorPercent() const {
    return int(std::lround(double(scaleFactor()) * 100));
}

void AppController::setScaleFactorPercent(int percent) {
    if (percent < 0 || percent > kMaxPercent) {
        // Let the field finish writing, then snap it to the bound it passed.
        const int bound = percent < 0 ? 0 : kMaxPercent;
        _later(0, [this, bound] { setScaleFactorPercent(bound); });
        return;
    }
    setScaleFactor(float(percent) / 100);
    updatePreviewFast(false);
    // The field shows what the factor now is (a rejected 0 reads back as the old value).
    Q_EMIT scaleFactorChanged();
}

}  // namespace marigold
