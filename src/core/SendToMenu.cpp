#include "core/SendToMenu.h"

#include "core/AppController.h"
#include "destinations/Destination.h"
#include "platform/DefaultsKeys.h"

namespace marigold {

SendToMenu::SendToMenu(AppController& controller, QWidget* parent)
    : QMenu(tr("Send To"), parent), _controller(controller) {
    connect(&controller.targetController(), &TargetController::destinationsDidChange, this,
            &SendToMenu::_rebuild);
    _rebuild();
}

void SendToMenu::_rebuild() {
    clear();
    const QVariantMap destinations = _controller.defaults().dictionaryForKey(keys::DefDestinations);
    for (const SendToItem& item : sendToMenuItems(destinations)) {
        QAction* send = addAction(item.title, this, [this, tag = item.tag] {
            _controller.sendTo(tag);
        });
        send->setShortcut(QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key(Qt::Key_0 + item.digit)));
    }
    addSeparator();
    QAction* copy = addAction(tr("Copy to clipboard"), &_controller,
                              &AppController::copyOutputImage);
    copy->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C));
    setOutputAvailable(_outputAvailable);
}

void SendToMenu::setOutputAvailable(bool available) {
    _outputAvailable = available;
    for (QAction* action : actions()) {
        if (!action->isSeparator()) action->setEnabled(available);
    }
}

}  // namespace marigold
