#pragma once

#include <QMainWindow>
#include <QPointer>
#include <QWidget>

#include "core/WindowSide.h"

class QDialog;

namespace marigold {

// When `dialog` closes, the keyboard goes back to `window`, also where no window manager
// hands it back (a bare X server, some kiosk sessions).
void returnKeyboardOnClose(QDialog* dialog, QWidget* window);

// The window side of the document controller: real dialogs, alerts and signs, on the main
// window. Each asks its question and hands the decided value back.
class WindowDialogs : public WindowSide {
public:
    explicit WindowDialogs(QMainWindow* window) : _window(window) {}
    // Shown while an output file is written.
    void setBusyIndicator(QWidget* indicator) { _busyIndicator = indicator; }

    void alert(const QString& title, const QString& text, const QString& button) override;
    void showPassingMessage(const QString& title, const QString& text, int seconds) override;
    void leaveScreen() override;
    void returnToScreen() override;
    void warnAboutSizeLimit(std::function<void()> dontShowAgain) override;
    void chooseSaveTarget(const QString& directory, const QString& name, int format,
                          std::function<void(const QString& path)> chosen) override;
    void print(const Image& image) override;
    void beep() override;
    void showNotice(const QString& text) override;
    void setBusy(bool busy) override;

private:
    QPointer<QMainWindow> _window;
    QPointer<QWidget> _busyIndicator;
};

}  // namespace marigold
