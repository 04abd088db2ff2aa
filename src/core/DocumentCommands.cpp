// The document controller's commands that bring a picture into the document: opening, pasting,
// reverting, discarding and the recent documents.
#include <QFileInfo>

#include "core/AppController.h"
#include "core/AppControllerTemplates.h"
#include "core/WindowSide.h"
#include "platform/Clipboard.h"
#include "platform/ImageLoader.h"

namespace marigold {

namespace {

const QString kUntitled = QStringLiteral("untitled");

}  // namespace

void AppController::_showImage(const Image& image) {
    _document.setImage(image);
    resetControls();
    updatePreview();
}

void AppController::resetControls() {
    setScaleFactor(1.0f);
    Q_EMIT rotationChanged(rotation());
    Q_EMIT inputControlsEnabledChanged(_document.hasImage());
    // The reset itself must leave no history.
    _later(0, [this] { _undoManager.removeAllActions(); });
}

bool AppController::openFile(const QString& path) {
    return openFile(path, nullptr);
}

bool AppController::openFile(const QString& path, QString* reason) {
    const LoadedImage loaded = loadImageFile(path, DamagedFiles::OpenReadablePart);
    const QString name = QFileInfo(path).fileName();
    if (loaded.image.isNull()) {
        if (reason) *reason = loaded.error;
        if (_window)
            _window->showNotice(tr("“%1” could not be opened: %2.").arg(name, loaded.error));
        return false;
    }
    _showImage(loaded.image);
    setSourcePath(path);
    if (!loaded.notice.isEmpty() && _window) {
        _window->showNotice(tr("“%1”: %2.").arg(name, loaded.notice));
    }
    return true;
}

void AppController::setSourcePath(const QString& path) {
    setDocumentName(path.isEmpty() ? kUntitled : QFileInfo(path).completeBaseName());
    // A capture's file is private and short-lived: no place in the desktop's recent files.
    const bool capture = path.startsWith(_tempFolder.tmpdirString());
    if (!path.isEmpty() && !capture && QFileInfo::exists(path)) {
        _recentDocuments.noteNewRecentDocument(path);
    }
    _document.setSourcePath(path);
}

QString AppController::filename() {
    if (_document.name().isEmpty()) setDocumentName(kUntitled);
    return _document.name();
}

void AppController::setDocumentName(const QString& name) {
    _document.setName(name);
    clearCache();
}

void AppController::paste() {
    const std::optional<Image> image = imageFromClipboard();
    if (!image) {
        if (_window) _window->beep();
        return;
    }
    setSourcePath(QString());
    _showImage(*image);
}

bool AppController::canRevert() const {
    return !sourcePath().isEmpty() && QFileInfo(sourcePath()).isFile();
}

void AppController::revert() {
    if (canRevert()) openFile(sourcePath());
}

void AppController::discardImage() {
    _showImage({});
}

void AppController::clear() {
    if (!_document.hasImage()) return;
    discardImage();
    setSourcePath({});
}

void AppController::openLastDocument() {
    const QStringList recent = _recentDocuments.recentDocuments();
    if (!recent.isEmpty()) openFile(recent.first());
}

void AppController::openPhotoBrowser() {
    if (!_mediaBrowser) {
        _mediaBrowser = MediaBrowser::create(tmpdir(), tr("Drag photo to Marigold"),
                                             ChildProcess::besideExecutable(
                                                 QStringLiteral("marigold-photos")));
        if (!_mediaBrowser) {
            if (_window) {
                _window->showPassingMessage(
                    tr("Unable to open Photo Browser"),
                    tr("For the Photo Browser to work, Marigold needs permission to write into "
                       "the temporary directory. Try running Marigold from a different user "
                       "account."),
                    5);
            }
            return;
        }
        connect(_mediaBrowser.get(), &MediaBrowser::photoChosen, this,
                [this](const QString& path) { openFile(path); });
    }
    _mediaBrowser->open();
}

}  // namespace marigold
