#pragma once

#include <QString>
#include <functional>

namespace marigold {

class Image;

// What the document controller asks of the window: the dialogs, alerts and signs that need a
// person. The controller decides everything else, so its commands run and are tested without
// a single widget; the main window answers here with real dialogs.
class WindowSide {
public:
    virtual ~WindowSide() = default;

    // A modal alert with one button, titled `button` (empty: the desktop's own OK).
    virtual void alert(const QString& title, const QString& text, const QString& button) = 0;
    // The warning shown as the file-size limit is turned on. It does not block: the limit is
    // on whatever the answer; `dontShowAgain` runs if the person asks not to see it again.
    virtual void warnAboutSizeLimit(std::function<void()> dontShowAgain) = 0;
    // The save dialog, starting in `directory` (empty: the dialog's own choice) and proposing
    // `name`; `chosen` receives the path to write, already given the extension of `format`
    // and confirmed if it replaces a file. Nothing is called when the person cancels.
    virtual void chooseSaveTarget(const QString& directory, const QString& name, int format,
                                  std::function<void(const QString& path)> chosen) = 0;
    // The print dialog for `image`, printed when the person confirms.
    virtual void print(const Image& image) = 0;
    virtual void beep() = 0;
    // A message over the window that closes itself after `seconds`.
    virtual void showPassingMessage(const QString& title, const QString& text, int seconds) = 0;
    // A one-line message that needs no answer (an unreadable file, a damaged one).
    virtual void showNotice(const QString& text) = 0;
    // The window leaves the screen while it is captured, and comes back afterwards.
    virtual void leaveScreen() = 0;
    virtual void returnToScreen() = 0;
    // Shown while an output file is being written, which happens inside the asking event.
    virtual void setBusy(bool busy) = 0;
};

}  // namespace marigold
