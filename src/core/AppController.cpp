#include "core/AppController.h"

#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <cmath>

#include "core/NumberText.h"
#include "jpeg/BFImageInfo.h"
#include "output/OutputImageView.h"
#include "platform/DefaultsKeys.h"
#include "platform/ImageLoader.h"
#include "selection/InputImageView.h"

namespace marigold {

using namespace keys;

namespace {

constexpr int kMinQuality = 5, kMaxQuality = 100;
constexpr int kMinLimit = 10, kMaxLimit = 9990;
constexpr int kPreviewShrinkToFit = 0, kPreviewActualPixels = 2;

}  // namespace

AppController::AppController(Defaults& defaults, QObject* parent)
    : QObject(parent), _defaults(defaults) {
    _defaults.registerDefaults(Defaults::factoryDefaults());
    askSizeLimitWarning = [this] { return _showSizeLimitWarning(); };
    showAlert = [this](const QString& title, const QString& text) {
        QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::Ok, _window());
        box.exec();
    };
}

void AppController::setViews(InputImageView* input, OutputImageView* output) {
    _inputView = input;
    _outputView = output;
    _inputView->setDelegate(this);
    _outputView->setDelegate(this);
    _outputView->writer()->copyExif = [](const QString& source, const QString& jpeg) {
        BFImageInfo::copyInfoFromPath(source, jpeg);
    };
    // Every preview reports its size: store both, then tell the fields once.
    connect(_outputView, &OutputImageView::pixelSizeChanged, this, [this](int w, int h) {
        _pixelWidth = w;
        setPixelHeight(h);
    });
}

template <typename Value, typename Setter>
void AppController::_registerUndo(Value old, Setter setter, const QString& actionName) {
    QPointer<AppController> self(this);
    _undoManager.registerUndo([self, old, setter] {
        if (self) (self->*setter)(old);
    });
    _undoManager.setActionName(actionName);
}

template <typename Setter>
void AppController::_later(int msec, Setter call) {
    QTimer::singleShot(msec, this, call);
}

// --- settings kept in the defaults ---------------------------------------------------------

bool AppController::sharpen() const { return _defaults.boolForKey(DefSharpen); }

void AppController::setSharpen(bool on) {
    _registerUndo(sharpen(), &AppController::setSharpen, tr("Toggle Sharpen"));
    _defaults.setBool(DefSharpen, on);
    Q_EMIT settingsChanged();
    updatePreview();
}

float AppController::sharpness() const { return _defaults.floatForKey(DefSharpness); }

void AppController::setSharpness(float value) {
    _registerUndo(sharpness(), &AppController::setSharpness, tr("Sharpness Change"));
    _defaults.setFloat(DefSharpness, value);
    Q_EMIT settingsChanged();
    updatePreview();
}

int AppController::fileFormat() const { return _defaults.integerForKey(DefFileFormat); }

void AppController::setFileFormat(int format) {
    _registerUndo(fileFormat(), &AppController::setFileFormat, tr("Format Change"));
    _defaults.setInteger(DefFileFormat, format);
    Q_EMIT settingsChanged();
    if (_outputView) _outputView->clearCache();
}

int AppController::previewMode() const {
    const int stored = _defaults.integerForKey(DefPreviewMode);
    // Modes other than these two are no longer offered; they read as actual pixels.
    const int mode = (stored == kPreviewShrinkToFit || stored == kPreviewActualPixels)
                         ? stored
                         : kPreviewActualPixels;
    if (_outputView) _outputView->setImageScaling(mode);
    return mode;
}

void AppController::setPreviewMode(int mode) {
    _registerUndo(previewMode(), &AppController::setPreviewMode, tr("Mode Change"));
    _defaults.setInteger(DefPreviewMode, mode);
    Q_EMIT settingsChanged();
    if (_outputView) _outputView->setImageScaling(mode);
    updatePreviewFast(true);
}

QString AppController::quality() const {
    return QString::number(
        std::clamp(_defaults.integerForKey(DefJpegQuality), kMinQuality, kMaxQuality));
}

void AppController::setQuality(const QString& text) {
    const int typed = leadingIntValue(text);
    if (!isCanonicalInt(text)) {
        // Let the field finish writing, then rewrite it with the number it meant.
        _later(0, [this, typed] { setQuality(QString::number(typed)); });
        return;
    }
    const int value = std::clamp(typed, kMinQuality, kMaxQuality);
    if (value != typed) _later(0, [this, value] { setQuality(QString::number(value)); });
    if (_outputView) _outputView->clearCache();
    _registerUndo(quality(), &AppController::setQuality, tr("JPEG Quality Change"));
    _defaults.setInteger(DefJpegQuality, value);
    Q_EMIT settingsChanged();
}

bool AppController::limitFilesize() const { return _defaults.boolForKey(DefLimitFilesize); }

void AppController::setLimitFilesize(bool on) {
    if (on && _defaults.boolForKey(DefDisplaySizeLimitMessage) && askSizeLimitWarning &&
        askSizeLimitWarning()) {
        _defaults.setBool(DefDisplaySizeLimitMessage, false);
    }
    _registerUndo(limitFilesize(), &AppController::setLimitFilesize,
                  tr("%1 Filesize Limit").arg(on ? tr("Enable") : tr("Disable")));
    _defaults.setBool(DefLimitFilesize, on);
    Q_EMIT settingsChanged();
    if (_outputView) _outputView->clearCache();
}

bool AppController::_showSizeLimitWarning() {
    QMessageBox box(_inputView ? _inputView->window() : nullptr);
    box.setWindowTitle(tr("Attention"));
    box.setText(tr("Attention"));
    box.setInformativeText(
        tr("Enabling file size limit slows Marigold down slightly since it has to 'hunt' for "
           "the appropriate compression quality.\nLeave this option unchecked when you don't "
           "require this feature.\nAlso note that if custom thumbnail icon is turned on, actual "
           "file size may exceed limit."));
    QPushButton* ok = box.addButton(tr("OK"), QMessageBox::AcceptRole);
    box.addButton(tr("Don't Show This Message Again"), QMessageBox::RejectRole);
    box.setDefaultButton(ok);
    box.exec();
    return box.clickedButton() != ok;
}

QString AppController::filesizeLimit() const {
    return QString::number(
        std::clamp(_defaults.integerForKey(DefFilesizeLimit), kMinLimit, kMaxLimit));
}

void AppController::setFilesizeLimit(const QString& text) {
    const int typed = leadingIntValue(text);
    if (!isCanonicalInt(text)) {
        _later(0, [this, typed] { setFilesizeLimit(QString::number(typed)); });
        return;
    }
    const int value = std::clamp(typed, kMinLimit, kMaxLimit);
    if (value != typed) _later(0, [this, value] { setFilesizeLimit(QString::number(value)); });
    _registerUndo(filesizeLimit(), &AppController::setFilesizeLimit, tr("Filesize Limit Change"));
    _defaults.setInteger(DefFilesizeLimit, value);
    Q_EMIT settingsChanged();
    if (_outputView) _outputView->clearCache();
}

// --- settings kept in fields -----------------------------------------------------------------

void AppController::setRotation(double degrees) {
    Q_EMIT rotationChanged(degrees);
    _registerUndo(_rotation, &AppController::setRotation, tr("Rotate"));
    _rotation = degrees;
}

void AppController::setScaleFactor(float factor) {
    if (!(factor > 0)) return;
    if (factor == _scaleFactor) return;
    _registerUndo(_scaleFactor, &AppController::setScaleFactor, tr("Size Change"));
    _scaleFactor = factor;
    Q_EMIT scaleFactorChanged();
    updatePreviewFast(true);
}

void AppController::setScaleFactorWithoutUndo(float factor) {
    _scaleFactor = factor;
    Q_EMIT scaleFactorChanged();
}

int AppController::scaleFactorPercent() const {
    return int(std::lround(double(_scaleFactor) * 100));
}

void AppController::setScaleFactorPercent(int percent) {
    if (percent < 0) {
        _later(0, [this] { setScaleFactorPercent(0); });
        return;
    }
    if (percent > 200) {
        _later(0, [this] { setScaleFactorPercent(200); });
        return;
    }
    setScaleFactor(float(percent) / 100);
    updatePreviewFast(false);
    // The field shows what the factor now is (a rejected 0 reads back as the old value).
    Q_EMIT scaleFactorChanged();
}

void AppController::setPixelWidth(int width) {
    _pixelWidth = width;
    Q_EMIT pixelSizeChanged();
}

void AppController::setPixelHeight(int height) {
    _pixelHeight = height;
    Q_EMIT pixelSizeChanged();
}

// --- derived values ----------------------------------------------------------------------------

bool AppController::hasQuality() const { return fileFormat() == 101; }
bool AppController::hasFilesizeLimit() const { return hasQuality() && limitFilesize(); }

bool AppController::userResizable() const {
    // No size preset can be chosen yet, so an image is all it takes.
    return _inputView && !_inputView->image().isNull();
}

void AppController::setUserResizable(bool) { Q_EMIT userResizableChanged(); }

int AppController::compression() const { return quality().toInt(); }

bool AppController::livePreview() const { return _defaults.boolForKey(DefLivePreview); }

// --- preview ----------------------------------------------------------------------------------

bool AppController::_hasSelection() const {
    return _inputView && !_inputView->image().isNull() && !_inputView->marquee().deselected();
}

void AppController::updatePreviewFast(bool fast) {
    if (!_outputView) return;
    Image result;
    if (_hasSelection()) {
        if (std::isnan(_scaleFactor)) setScaleFactor(1.0f);
        const RectF rect = _inputView->cropRect();
        const float sharpnessNow = sharpen() ? sharpness() : 0.0f;
        const QSize limit = _outputView->displayPixelLimit();
        _imageProcessor.setFastPreviewLimit(std::max(limit.width(), 64),
                                            std::max(limit.height(), 64));
        result = _imageProcessor.cropImage(_inputView->image(), rect, _scaleFactor, sharpnessNow,
                                           fast);
    }
    _outputView->setImage(result);
}

void AppController::updatePreview() { updatePreviewFast(false); }

void AppController::pixelWidthChanged() {
    if (!_inputView) return;
    const float imageWidth = _inputView->image().size().width;
    const float m = _inputView->marquee().width();
    setScaleFactor(float(_pixelWidth) / (imageWidth * m));
    _later(100, [this] { updatePreview(); });
}

void AppController::pixelHeightChanged() {
    if (!_inputView) return;
    const float imageHeight = _inputView->image().size().height;
    const float m = _inputView->marquee().height();
    setScaleFactor(float(_pixelHeight) / (imageHeight * m));
    _later(100, [this] { updatePreview(); });
}

void AppController::scaleImageByPixels(int step) {
    const float w = float(_pixelWidth), h = float(_pixelHeight);
    if (!(w > 0 && h > 0)) return;
    if (step == 0) {
        // Re-derive the scale from the longer side; a square uses the height.
        if (w <= h) {
            pixelHeightChanged();
        } else {
            pixelWidthChanged();
        }
        return;
    }
    if (w <= h) {
        const float newHeight = std::trunc(h + float(step));
        setPixelHeight(int(newHeight));
        setPixelWidth(int(std::trunc(newHeight * w / h)));
    } else {
        const float newWidth = std::trunc(w + float(step));
        setPixelWidth(int(newWidth));
        setPixelHeight(int(std::trunc(newWidth * h / w)));
    }
}

// --- selection and document ------------------------------------------------------------------

void AppController::selectAll() {
    if (!_inputView) return;
    Marquee all = _inputView->marquee();
    all.selectAll();
    _inputView->setMarquee(all);
    _later(0, [this] { _refreshOutputView(); });
    setUserResizable(false);
}

void AppController::deselect() {
    if (!_inputView) return;
    Marquee none = _inputView->marquee();
    none.deselect();
    _inputView->editMarqueeWithoutUndo(none);
    updatePreview();
    setUserResizable(false);
}

void AppController::_refreshOutputView() {
    if (_outputView) _outputView->update();
}

void AppController::clear() {
    if (!_inputView || _inputView->image().isNull()) return;
    _inputView->setImage({});
    if (_outputView) _outputView->setImage({});
    setSourcePath({});
}

void AppController::resetControls() {
    setScaleFactor(1.0f);
    Q_EMIT inputControlsEnabledChanged(_inputView && !_inputView->image().isNull());
    // The reset itself must leave no history.
    _later(0, [this] { _undoManager.removeAllActions(); });
}

void AppController::preferenceDidChange() {
    _imageProcessor.setBorderOn(_defaults.boolForKey(DefBorder));
    _imageProcessor.setBorderThickness(_defaults.integerForKey(DefBorderThickness));
    _imageProcessor.setBorderColor(_defaults.colorForKey(DefBorderColor));
    _imageProcessor.setInterpolation(_defaults.integerForKey(DefInterpolation));
    if (_inputView) _inputView->setDrawCrossHair(_defaults.boolForKey(DefCrossHair));
    _later(0, [this] { updatePreview(); });
}

bool AppController::openFile(const QString& path) { return openFile(path, nullptr); }

bool AppController::openFile(const QString& path, QString* reason) {
    LoadedImage loaded = loadImageFile(path);
    if (loaded.image.isNull()) {
        if (reason) *reason = loaded.error;
        return false;
    }
    if (_inputView) _inputView->setImage(loaded.image);
    setSourcePath(path);
    return true;
}

void AppController::setSourcePath(const QString& path) {
    setDocumentName(path.isEmpty() ? QStringLiteral("untitled")
                                   : QFileInfo(path).completeBaseName());
    if (!path.isEmpty() && QFileInfo::exists(path)) _recentDocuments.noteNewRecentDocument(path);
    _sourcePath = path;
    Q_EMIT sourcePathChanged(path);
}

QString AppController::filename() {
    if (_documentName.isEmpty()) setDocumentName(QStringLiteral("untitled"));
    return _documentName;
}

void AppController::setDocumentName(const QString& name) {
    if (name == _documentName) return;
    _documentName = name;
    Q_EMIT documentNameChanged(name);
}

// --- start-up -----------------------------------------------------------------------------------

void AppController::removeOldDefaults() {
    _defaults.removeObject(QStringLiteral("NSToolbar Configuration MGToolbar"));
    _defaults.removeObject(QStringLiteral("NSToolbar Configuration MarigoldToolbar"));
}

void AppController::migrateCheckAtStartup() {
    const QString updaterKey = QStringLiteral("SUCheckAtStartup");
    if (_defaults.boolForKey(updaterKey)) _defaults.setBool(DefCheckAtStartup, true);
    _defaults.setBool(updaterKey, false);
}

void AppController::applicationDidFinishLaunching() {
    // Output files of Marigold processes that crashed or were killed.
    TempFolder::removeStaleTmpdirs();
    _undoManager.removeAllActions();
    preferenceDidChange();
    previewMode();
    if (_defaults.boolForKey(DefOpenLastAtLaunch)) _later(0, [this] { openLastDocument(); });
}

}  // namespace marigold
