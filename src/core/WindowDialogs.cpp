#include "core/WindowDialogs.h"

#include <QApplication>
#include <QFileDialog>
#include <QMainWindow>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QStatusBar>
#include <QTimer>

#include "core/AppController.h"
#include "output/PrintOutput.h"

namespace marigold {

void returnKeyboardOnClose(QDialog* dialog, QWidget* window) {
    QObject::connect(dialog, &QDialog::finished, window, [window] { window->activateWindow(); });
}

namespace {

// Long enough to be read, short enough not to describe a document that has moved on.
constexpr int kNoticeMilliseconds = 20000;

}  // namespace

void WindowDialogs::alert(const QString& title, const QString& text, const QString& button) {
    QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::Ok, _window);
    if (!button.isEmpty()) box.button(QMessageBox::Ok)->setText(button);
    box.exec();
}

void WindowDialogs::warnAboutSizeLimit(std::function<void()> dontShowAgain) {
    // Window-modal and answered later: a nested event loop here would hold up whoever turned
    // the limit on, a screen reader's toggle request included.
    auto* box = new QMessageBox(_window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setWindowTitle(QObject::tr("Attention"));
    box->setText(QObject::tr("Attention"));
    box->setInformativeText(QObject::tr(
        "Enabling file size limit slows Marigold down slightly since it has to 'hunt' for the "
        "appropriate compression quality.\nLeave this option unchecked when you don't require "
        "this feature.\nAlso note that if custom thumbnail icon is turned on, actual file size "
        "may exceed limit."));
    QPushButton* ok = box->addButton(QObject::tr("OK"), QMessageBox::AcceptRole);
    box->addButton(QObject::tr("Don't Show This Message Again"), QMessageBox::RejectRole);
    box->setDefaultButton(ok);
    QObject::connect(box, &QMessageBox::finished, box, [box, ok, dontShowAgain] {
        if (box->clickedButton() != ok) dontShowAgain();
    });
    returnKeyboardOnClose(box, _window);
    box->open();
}

void WindowDialogs::showPassingMessage(const QString& title, const QString& text, int seconds) {
    auto* box = new QMessageBox(QMessageBox::Information, title, text, QMessageBox::Ok, _window);
    box->setWindowModality(Qt::WindowModal);
    box->setAttribute(Qt::WA_DeleteOnClose);
    QTimer::singleShot(seconds * 1000, box, &QMessageBox::accept);
    returnKeyboardOnClose(box, _window);
    box->open();
}

void WindowDialogs::leaveScreen() {
    _window->hide();
}

void WindowDialogs::returnToScreen() {
    _window->show();
    _window->raise();
    _window->activateWindow();
}

void WindowDialogs::chooseSaveTarget(const QString& directory, const QString& name, int format,
                                     std::function<void(const QString& path)> chosen) {
    auto* dialog = new QFileDialog(_window, QObject::tr("Save"), directory);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    // The name is corrected to the output's extension after the dialog, so the dialog's
    // own replace question would ask about the wrong file; it is asked below instead.
    dialog->setOption(QFileDialog::DontConfirmOverwrite);
    dialog->selectFile(name);
    QObject::connect(
        dialog, &QFileDialog::finished, dialog, [this, dialog, format, chosen](int result) {
            if (result != QDialog::Accepted || dialog->selectedFiles().isEmpty()) return;
            const QFileInfo typed(dialog->selectedFiles().first());
            const QString target =
                typed.dir().filePath(AppController::userEnteredFilename(typed.fileName(), format));
            if (QFileInfo::exists(target)) {
                const auto answer = QMessageBox::warning(
                    _window, QObject::tr("Save"),
                    QObject::tr("“%1” already exists. Do you want to replace it?")
                        .arg(QFileInfo(target).fileName()),
                    QMessageBox::Yes | QMessageBox::Cancel, QMessageBox::Cancel);
                if (answer != QMessageBox::Yes) return;
            }
            chosen(target);
        });
    returnKeyboardOnClose(dialog, _window);
    dialog->open();
}

void WindowDialogs::print(const Image& image) {
    QPrinter printer;
    QPrintDialog dialog(&printer, _window);
    if (dialog.exec() == QDialog::Accepted) printImage(printer, image);
}

void WindowDialogs::beep() {
    QApplication::beep();
}

void WindowDialogs::showNotice(const QString& text) {
    if (_window) _window->statusBar()->showMessage(text, kNoticeMilliseconds);
}

void WindowDialogs::setBusy(bool busy) {
    // The write runs inside the event that asked for it, so the signs are painted at once.
    if (busy) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
    } else {
        QApplication::restoreOverrideCursor();
    }
    if (_busyIndicator) {
        _busyIndicator->setVisible(busy);
        if (busy) _busyIndicator->repaint();
    }
}

}  // namespace marigold
