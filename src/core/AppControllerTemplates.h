#pragma once

// The controller's member templates, shared by the files its work is split into.

#include <QPointer>
#include <QTimer>

#include "core/AppController.h"

namespace marigold {

// Registers the setter's call with the value as it is now, so that undo (and redo in turn)
// goes through the same setter.
template <typename Value, typename Setter>
void AppController::_registerUndo(Value old, Setter setter, const QString& actionName) {
    QPointer<AppController> self(this);
    _undoManager.registerUndo([self, old, setter] {
        if (self) (self->*setter)(old);
    });
    _undoManager.setActionName(actionName);
}

template <typename Call>
void AppController::_later(int msec, Call call) {
    QTimer::singleShot(msec, this, call);
}

}  // namespace marigold
