#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include "core/AppController.h"
#include "core/WindowSide.h"
#include "support/TestImages.h"

namespace marigold {

inline void finishPass() {
    // Two rounds: a deferred call may defer once more.
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

// The window side without a window: records what would have been shown, and gives the
// answers a test sets.
struct RecordingWindow : WindowSide {
    void alert(const QString& title, const QString& text, const QString& button) override {
        alerts << title + QLatin1Char('|') + text + (button.isEmpty() ? QString() : QLatin1Char('|') + button);
    }
    void warnAboutSizeLimit(std::function<void()> dontShowAgain) override {
        ++warningsShown;
        if (answerDontShowAgain) dontShowAgain();
    }
    void chooseSaveTarget(const QString&, const QString&, int,
                          std::function<void(const QString&)> chosen) override {
        if (!saveTarget.isEmpty()) chosen(saveTarget);
    }
    void print(const Image& image) override { printed = image; }
    void beep() override { ++beeps; }
    void showNotice(const QString& text) override { notices << text; }
    void showPassingMessage(const QString& title, const QString& text, int) override {
        alerts << title + QLatin1Char('|') + text;
    }
    void setBusy(bool busy) override { busyChanges << busy; }
    void leaveScreen() override { onScreen = false; }
    void returnToScreen() override { onScreen = true; }

    QStringList alerts;  // "title|text" of every alert shown
    QStringList notices;
    QList<bool> busyChanges;
    int warningsShown = 0;
    bool onScreen = true;
    int beeps = 0;
    bool answerDontShowAgain = false;
    QString saveTarget;  // what the save dialog answers; empty: cancelled
    Image printed;
};

class AppControllerTest : public ::testing::Test {
protected:
    AppControllerTest()
        : defaults(dir.filePath(QStringLiteral("settings.ini"))), controller(defaults) {
        controller.setWindowSide(&window);
        QObject::connect(&controller, &AppController::previewChanged,
                         [this](const Image& image, const QString& message) {
                             preview = image;
                             previewMessage = message;
                         });
    }

    const Document& document() const { return controller.document(); }

    // A JPEG of `image` opened from disk, fully selected, the history of the opening cleared.
    QString open(const Image& image, const QString& name = QStringLiteral("photo.jpg")) {
        const QString path = test::writeJpeg(image, dir.path(), name);
        EXPECT_TRUE(controller.openFile(path));
        finishPass();
        controller.selectAll();
        finishPass();
        controller.undoManager().removeAllActions();
        return path;
    }

    // The size label once the file written in the background is in; empty after 30 s.
    QString waitForFilesizeText() {
        QElapsedTimer waited;
        waited.start();
        while (controller.filesizeText().isEmpty() && waited.elapsed() < 30'000) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        }
        return controller.filesizeText();
    }

    QTemporaryDir dir;
    Defaults defaults;
    AppController controller;
    RecordingWindow window;
    Image preview;  // the last preview shown
    QString previewMessage;
};

}  // namespace marigold
