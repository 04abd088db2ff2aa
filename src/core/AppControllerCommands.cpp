// The document controller's commands that bring an image in and take the output out:
// paste, save, copy, revert, discard, print, the recent documents and the window title.
#include "core/AppController.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>

#include "output/ImageMetadata.h"
#include "output/OutputFile.h"
#include "output/OutputImageView.h"
#include "platform/AtomicFile.h"
#include "platform/Clipboard.h"
#include "selection/InputImageView.h"

namespace marigold {

namespace {

const QString kTitle = QStringLiteral("Marigold");

}  // namespace

std::optional<Metadata> AppController::metadata() const {
    return metadata::metadataForFile(_sourcePath);
}

QWidget* AppController::_window() const { return _inputView ? _inputView->window() : nullptr; }

void AppController::paste() {
    const std::optional<Image> image = imageFromClipboard();
    if (!image) {
        QApplication::beep();
        return;
    }
    setSourcePath(QString());
    if (_inputView) _inputView->setImage(*image);
}

void AppController::copyOutputImage() {
    if (!_outputView || _outputView->image().isNull()) return;
    putOutputOnClipboard(_outputView->image(), _outputView->writeTmpFile());
}

void AppController::saveDocumentAs() { saveDocumentInFolder(QString()); }

void AppController::saveDocumentInFolder(const QString& directory) {
    auto* dialog = new QFileDialog(_window(), tr("Save"), directory);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    // The name is corrected to the output's extension after the dialog, so the dialog's
    // own replace question would ask about the wrong file; it is asked below instead.
    dialog->setOption(QFileDialog::DontConfirmOverwrite);
    dialog->selectFile(filename());
    connect(dialog, &QFileDialog::finished, this, [this, dialog](int result) {
        if (result != QDialog::Accepted || dialog->selectedFiles().isEmpty()) return;
        const QFileInfo typed(dialog->selectedFiles().first());
        const QString target =
            typed.dir().filePath(userEnteredFilename(typed.fileName(), fileFormat()));
        if (QFileInfo::exists(target)) {
            const auto answer = QMessageBox::warning(
                _window(), tr("Save"),
                tr("“%1” already exists. Do you want to replace it?").arg(QFileInfo(target).fileName()),
                QMessageBox::Yes | QMessageBox::Cancel, QMessageBox::Cancel);
            if (answer != QMessageBox::Yes) return;
        }
        savePanelDidEnd(true, target);
    });
    dialog->open();
}

QString AppController::userEnteredFilename(const QString& name, int format) {
    static const QStringList recognised = {QStringLiteral("png"), QStringLiteral("jpg"),
                                           QStringLiteral("gif"), QStringLiteral("tif")};
    // A leading dot starts a hidden name, not an extension.
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    const bool known = dot > 0 && recognised.contains(name.mid(dot + 1).toLower());
    return (known ? name.left(dot) : name) + QLatin1Char('.') + extensionForFormat(format);
}

void AppController::savePanelDidEnd(bool accepted, const QString& target) {
    if (!accepted || !_outputView) return;
    const QString temp = _outputView->writeTmpFile();
    if (temp.isEmpty() && _outputView->writer()->limitTooLow()) {
        showAlert(tr("File Size Limit Too Low"),
                  tr("Unable to keep file under %1 KB.\nPlease turn off file size limit or "
                     "increase the limit and try again.")
                      .arg(filesizeLimit()));
        return;
    }
    const QFileInfo chosen(target);
    const QString name = chosen.fileName();
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    const QString base = dot > 0 ? name.left(dot) : name;
    if (base.isEmpty() || temp.isEmpty()) return;
    // The written file's extension wins over whatever the dialog returned; the file stays
    // in the chosen folder. The temporary file stays for later copies and drags; the copy
    // replaces any old file in one step.
    copyFileAtomically(temp, chosen.absolutePath() + QLatin1Char('/') + base + QLatin1Char('.') +
                                 QFileInfo(temp).suffix());
}

bool AppController::canRevert() const {
    return !_sourcePath.isEmpty() && QFileInfo(_sourcePath).isFile();
}

void AppController::revert() {
    if (canRevert()) openFile(_sourcePath);
}

void AppController::discardImage() {
    if (_inputView) _inputView->setImage(Image());
    if (_outputView) _outputView->setImage(Image());
}

void AppController::print() {
    if (!_outputView) return;
    QPrinter printer;
    QPrintDialog dialog(&printer, _window());
    if (dialog.exec() == QDialog::Accepted) _outputView->printImage(printer);
}

void AppController::openLastDocument() {
    const QStringList recent = _recentDocuments.recentDocuments();
    if (!recent.isEmpty()) openFile(recent.first());
}

void AppController::_setTitle(const QString& title) {
    if (QWidget* window = _window()) window->setWindowTitle(title);
}

void AppController::clearTitle() {
    QTimer::singleShot(4000, this, [this] { _setTitle(kTitle); });
}

void AppController::animateTitle(QTimer* timer) {
    QWidget* window = _window();
    const QString title = window ? window->windowTitle() : QString();
    if (title.size() < 13) {
        if (timer) timer->stop();
        _setTitle(kTitle);
        return;
    }
    _setTitle(QStringLiteral("Marigold - %1").arg(title.mid(12)));
}

}  // namespace marigold
