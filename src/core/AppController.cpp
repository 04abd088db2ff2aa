#include "core/AppController.h"

#include <QTimer>

#include "core/AppControllerTemplates.h"
#include "core/SettingRanges.h"
#include "core/WindowSide.h"
#include "platform/DefaultsKeys.h"

namespace marigold {

using namespace keys;

namespace {

const QString kTitle = QStringLiteral("Marigold");

}  // namespace

AppController::AppController(Defaults& defaults, QObject* parent)
    : QObject(parent), _defaults(defaults) {
    _defaults.registerDefaults(Defaults::factoryDefaults());
    connect(&_document, &Document::scaleFactorChanged, this, &AppController::scaleFactorChanged);
    _ratioController.setUserResizableHandler([this] { setUserResizable(false); });
    _targetController.setSaveInFolderHandler(
        [this](const QString& folder) { saveDocumentInFolder(folder); });
    _targetController.setAlertHandler(
        [this](const QString& title, const QString& text, const QString& button) {
            _alert(title, text, button);
        });
    connect(
        &_liveWriter, &BackgroundOutputWriter::finished, this,
        [this](const WrittenFile& file, quint64 generation) { _liveFileDone(file, generation); });
}

// --- derived values ----------------------------------------------------------------------------

bool AppController::hasQuality() const {
    return fileFormat() == 101;
}
bool AppController::hasFilesizeLimit() const {
    return hasQuality() && limitFilesize();
}

bool AppController::userResizable() const {
    // A size preset decides the output size itself.
    return _document.hasImage() && !_ratioController.actualSize();
}

void AppController::setUserResizable(bool) {
    Q_EMIT userResizableChanged();
}

int AppController::compression() const {
    return quality().toInt();
}

bool AppController::livePreview() const {
    return _defaults.boolForKey(DefLivePreview);
}

void AppController::setLivePreview(bool on) {
    _defaults.setBool(DefLivePreview, on);
    Q_EMIT settingsChanged();
}

// --- preferences and start-up ------------------------------------------------------------------

// The window reads "ConstrainRotation" and "CrossHair" itself when told settings changed.
void AppController::preferenceDidChange() {
    _imageProcessor.setBorderOn(_defaults.boolForKey(DefBorder));
    _imageProcessor.setBorderThickness(integerSetting(_defaults, DefBorderThickness));
    _imageProcessor.setBorderColor(_defaults.colorForKey(DefBorderColor));
    _imageProcessor.setInterpolation(integerSetting(_defaults, DefInterpolation));
    Q_EMIT settingsChanged();
    _later(0, [this] { updatePreview(); });
}

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
    _targetController.setupWithDestinations(_defaults.dictionaryForKey(DefDestinations),
                                            _defaults.integerForKey(DefDoubleClickDestination));
    if (_defaults.boolForKey(DefOpenLastAtLaunch)) _later(0, [this] { openLastDocument(); });
}

void AppController::_alert(const QString& title, const QString& text, const QString& button) {
    if (_window) _window->alert(title, text, button);
}

// --- window title --------------------------------------------------------------------------------

void AppController::setTitle(const QString& title) {
    _title = title;
    Q_EMIT titleChanged(title);
}

void AppController::clearTitle() {
    QTimer::singleShot(4000, this, [this] { setTitle(kTitle); });
}

void AppController::animateTitle(QTimer* timer) {
    if (_title.size() < 13) {
        if (timer) timer->stop();
        setTitle(kTitle);
        return;
    }
    setTitle(QStringLiteral("Marigold - %1").arg(_title.mid(12)));
}

}  // namespace marigold
