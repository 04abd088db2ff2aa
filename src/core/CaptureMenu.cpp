#include "core/CaptureMenu.h"

#include "core/AppController.h"
#include "core/TimedCapture.h"

namespace marigold {

QMenu* buildCaptureMenu(AppController& controller, QWidget* window) {
    auto* menu = new QMenu(QObject::tr("Capture"), window);
    auto* timed = new TimedCaptureDialog(controller, window);
    // Lives with the controller's countdown, not with any window.
    auto* countdown = new CountdownWindow(controller);
    QObject::connect(menu, &QObject::destroyed, countdown, &QObject::deleteLater);
    const struct {
        const char* title;
        void (AppController::*command)();
        Qt::Key key;
    } commands[] = {
        {QT_TR_NOOP("Selection"), &AppController::captureSelection, Qt::Key_4},
        {QT_TR_NOOP("Window"), &AppController::captureWindow, Qt::Key_5},
        {QT_TR_NOOP("Screen"), &AppController::captureScreen, Qt::Key_3},
    };
    for (const auto& command : commands) {
        QAction* action = menu->addAction(QObject::tr(command.title), &controller, command.command);
        action->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | command.key));
    }
    QAction* later = menu->addAction(QObject::tr("Timed Screen…"), timed,
                                     &TimedCaptureDialog::showDialog);
    later->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_6));
    return menu;
}

}  // namespace marigold
