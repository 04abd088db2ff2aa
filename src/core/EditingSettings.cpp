// The document controller's undoable settings: each setter registers its own call with the
// value as it is now, names the step, stores the new value and then does its one follow-up.
#include <cmath>
#include <optional>

#include "core/AppController.h"
#include "core/AppControllerTemplates.h"
#include "core/NumberText.h"
#include "core/WindowSide.h"
#include "platform/DefaultsKeys.h"

namespace marigold {

using namespace keys;

namespace {

constexpr int kMinQuality = 5, kMaxQuality = 100;
constexpr int kMinLimit = 10, kMaxLimit = 9990;
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

namespace {

// A number typed into a text-checked field: nothing when the text is not written the way
// "%d" prints its number, in which case `rewrite` is called with the canonical text on the next
// pass; otherwise the number clamped, and when that changed it, `rewrite` is called with the
// clamped text on the next pass as well, so the field shows what was stored.
template <typename Rewrite>
std::optional<int> typedNumber(const QString& text, int low, int high, Rewrite rewrite) {
    const int typed = leadingIntValue(text);
    if (!isCanonicalInt(text)) {
        rewrite(typed);
        return std::nullopt;
    }
    const int value = std::clamp(typed, low, high);
    if (value != typed) rewrite(value);
    return value;
}

}  // namespace

bool AppController::sharpen() const { return _defaults.boolForKey(DefSharpen); }

void AppController::setSharpen(bool on) {
    _storeSetting(DefSharpen, sharpen(), on, &AppController::setSharpen, tr("Toggle Sharpen"));
    updatePreview();
}

float AppController::sharpness() const { return _defaults.floatForKey(DefSharpness); }

void AppController::setSharpness(float value) {
    _storeSetting(DefSharpness, sharpness(), value, &AppController::setSharpness,
                  tr("Sharpness Change"));
    updatePreview();
}

int AppController::fileFormat() const { return _defaults.integerForKey(DefFileFormat); }

void AppController::setFileFormat(int format) {
    _storeSetting(DefFileFormat, fileFormat(), format, &AppController::setFileFormat,
                  tr("Format Change"));
    clearCache();
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
    return QString::number(
        std::clamp(_defaults.integerForKey(DefJpegQuality), kMinQuality, kMaxQuality));
}

void AppController::setQuality(const QString& text) {
    const std::optional<int> value = typedNumber(text, kMinQuality, kMaxQuality, [this](int n) {
        _later(0, [this, n] { setQuality(QString::number(n)); });
    });
    if (!value) return;
    clearCache();
    _registerUndo(quality(), &AppController::setQuality, tr("JPEG Quality Change"));
    _defaults.setInteger(DefJpegQuality, *value);
    Q_EMIT settingsChanged();
}

bool AppController::limitFilesize() const { return _defaults.boolForKey(DefLimitFilesize); }

void AppController::setLimitFilesize(bool on) {
    if (on && _defaults.boolForKey(DefDisplaySizeLimitMessage) && _window &&
        _window->warnAboutSizeLimit()) {
        _defaults.setBool(DefDisplaySizeLimitMessage, false);
    }
    _storeSetting(DefLimitFilesize, limitFilesize(), on, &AppController::setLimitFilesize,
                  tr("%1 Filesize Limit").arg(on ? tr("Enable") : tr("Disable")));
    clearCache();
}

QString AppController::filesizeLimit() const {
    return QString::number(
        std::clamp(_defaults.integerForKey(DefFilesizeLimit), kMinLimit, kMaxLimit));
}

void AppController::setFilesizeLimit(const QString& text) {
    const std::optional<int> value = typedNumber(text, kMinLimit, kMaxLimit, [this](int n) {
        _later(0, [this, n] { setFilesizeLimit(QString::number(n)); });
    });
    if (!value) return;
    _registerUndo(filesizeLimit(), &AppController::setFilesizeLimit, tr("Filesize Limit Change"));
    _defaults.setInteger(DefFilesizeLimit, *value);
    Q_EMIT settingsChanged();
    clearCache();
}

void AppController::setRotation(double degrees) {
    Q_EMIT rotationChanged(degrees);
    _registerUndo(rotation(), &AppController::setRotation, tr("Rotate"));
    _document.setRotation(degrees);
}

void AppController::setScaleFactor(float factor) {
    if (!(factor > 0) || factor == scaleFactor()) return;
    _registerUndo(scaleFactor(), &AppController::setScaleFactor, tr("Size Change"));
    _document.setScaleFactor(factor);
    updatePreviewFast(true);
}

void AppController::setScaleFactorWithoutUndo(float factor) { _document.setScaleFactor(factor); }

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
