#pragma once

#include <QFile>
#include <QTest>
#include <memory>

#include "core/AppController.h"
#include "core/MainWindow.h"

namespace marigold::test {

// A settings file removed once everything that may still write it has gone.
struct SettingsFile {
    QString path;
    ~SettingsFile() { QFile::remove(path); }
};

// The main window over a settings file of its own, shown and launched as at start-up.
struct OpenWindow : SettingsFile {
    explicit OpenWindow(const QString& settingsPath, QSize size = QSize(1000, 700))
        : SettingsFile{settingsPath} {
        window->resize(size);
        window->show();
        exposed = QTest::qWaitForWindowExposed(window.get());
        controller.applicationDidFinishLaunching();
    }

    Defaults defaults{path};
    AppController controller{defaults};
    // Apart, so that a test can close the window and go on with the controller.
    std::unique_ptr<MainWindow> window = std::make_unique<MainWindow>(controller);
    bool exposed = false;
};

}  // namespace marigold::test
