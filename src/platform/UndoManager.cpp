#include "platform/UndoManager.h"

#include <QCoreApplication>
#include <QEvent>

namespace marigold {

namespace {

// Posted with high priority when a group opens: Qt delivers it before the ordinary posted
// events (deferred calls) queued during the same pass, so those land in a group of their own.
class EndGroupEvent : public QEvent {
public:
    static QEvent::Type type() {
        static const auto registered = QEvent::Type(QEvent::registerEventType());
        return registered;
    }
    explicit EndGroupEvent(quint64 generation) : QEvent(type()), generation(generation) {}
    const quint64 generation;
};

}  // namespace

UndoManager::UndoManager(QObject* parent) : QObject(parent) {}

bool UndoManager::event(QEvent* event) {
    if (event->type() == EndGroupEvent::type()) {
        // A group already closed by undo/redo may have been followed by a newer one.
        if (static_cast<EndGroupEvent*>(event)->generation == _generation) endGroup();
        return true;
    }
    return QObject::event(event);
}

void UndoManager::_openGroupIfNeeded() {
    if (_groupOpen) return;
    _groupOpen = true;
    _open = {};
    QCoreApplication::postEvent(this, new EndGroupEvent(++_generation), Qt::HighEventPriority);
}

void UndoManager::registerUndo(std::function<void()> inverse) {
    _openGroupIfNeeded();
    _open.actions.push_back(std::move(inverse));
}

void UndoManager::setActionName(const QString& name) {
    _openGroupIfNeeded();
    _open.name = name;
    Q_EMIT changed();
}

void UndoManager::endGroup() {
    if (!_groupOpen) return;
    _groupOpen = false;
    Group group = std::move(_open);
    _open = {};
    if (group.actions.empty()) return;
    if (_undoing) {
        _redoStack.push_back(std::move(group));
    } else {
        _undoStack.push_back(std::move(group));
        // A new edit (not a redo) makes the redo history meaningless.
        if (!_redoing) _redoStack.clear();
    }
    Q_EMIT changed();
}

void UndoManager::_replay(std::vector<Group>& from, bool& flag) {
    endGroup();
    if (from.empty()) return;
    Group group = std::move(from.back());
    from.pop_back();
    flag = true;
    _groupOpen = true;
    _open = {};
    // Inverses registered while replaying keep the replayed action's name.
    _open.name = group.name;
    for (auto it = group.actions.rbegin(); it != group.actions.rend(); ++it) (*it)();
    if (_open.name.isEmpty()) _open.name = group.name;
    endGroup();
    flag = false;
    Q_EMIT changed();
}

void UndoManager::undo() { _replay(_undoStack, _undoing); }
void UndoManager::redo() { _replay(_redoStack, _redoing); }

bool UndoManager::canUndo() const {
    return !_undoStack.empty() || (_groupOpen && !_open.actions.empty() && !_undoing);
}
bool UndoManager::canRedo() const { return !_redoStack.empty(); }

QString UndoManager::undoActionName() const {
    if (_groupOpen && !_open.actions.empty() && !_undoing && !_redoing) return _open.name;
    return _undoStack.empty() ? QString() : _undoStack.back().name;
}

QString UndoManager::redoActionName() const {
    return _redoStack.empty() ? QString() : _redoStack.back().name;
}

QString UndoManager::undoMenuItemTitle() const {
    const QString name = undoActionName();
    return name.isEmpty() ? tr("Undo") : tr("Undo %1").arg(name);
}

QString UndoManager::redoMenuItemTitle() const {
    const QString name = redoActionName();
    return name.isEmpty() ? tr("Redo") : tr("Redo %1").arg(name);
}

void UndoManager::removeAllActions() {
    _undoStack.clear();
    _redoStack.clear();
    _open = {};
    _groupOpen = false;
    Q_EMIT changed();
}

}  // namespace marigold
