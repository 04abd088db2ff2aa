#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <vector>

namespace marigold {

// Undo with the desktop's usual semantics: a setter registers the call that restores the
// old value, under an action name. Registrations made while undoing fill the redo stack
// (and while redoing, the undo stack). All registrations of one pass of the event loop form
// one group: the group opened by the first registration closes when control returns to the
// event loop, before anything that pass deferred to the next one runs.
class UndoManager : public QObject {
    Q_OBJECT

public:
    explicit UndoManager(QObject* parent = nullptr);

    void registerUndo(std::function<void()> inverse);
    // Names the group being built (the last name set wins).
    void setActionName(const QString& name);

    bool canUndo() const;
    bool canRedo() const;
    void undo();
    void redo();

    QString undoActionName() const;
    QString redoActionName() const;
    // "Undo <action>" / "Redo <action>", or plain "Undo" / "Redo" without a name.
    QString undoMenuItemTitle() const;
    QString redoMenuItemTitle() const;

    void removeAllActions();
    // Closes the open group now (the event loop does this by itself at the end of a pass).
    void endGroup();
    int undoCount() const { return int(_undoStack.size()); }
    int redoCount() const { return int(_redoStack.size()); }

protected:
    bool event(QEvent* event) override;

Q_SIGNALS:
    // Any change of what Undo and Redo would do or be called.
    void changed();

private:
    struct Group {
        QString name;
        std::vector<std::function<void()>> actions;
    };
    void _openGroupIfNeeded();
    void _replay(std::vector<Group>& from, bool& flag);

    std::vector<Group> _undoStack;
    std::vector<Group> _redoStack;
    Group _open;
    bool _groupOpen = false;
    bool _undoing = false;
    bool _redoing = false;
    quint64 _generation = 0;
};

}  // namespace marigold
