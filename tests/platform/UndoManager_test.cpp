#include "platform/UndoManager.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTimer>

namespace marigold {
namespace {

// A value with an undoable setter written the way the application's setters are.
struct Setting {
    UndoManager& undo;
    int value = 0;
    void set(int v, const QString& name = QStringLiteral("Change")) {
        const int old = value;
        undo.registerUndo([this, old, name] { set(old, name); });
        undo.setActionName(name);
        value = v;
    }
};

void finishPass() { QCoreApplication::processEvents(); }

TEST(UndoManager, UndoRestoresAndRedoReapplies) {
    UndoManager undo;
    Setting s{undo};
    s.set(5, QStringLiteral("Size Change"));
    finishPass();
    ASSERT_TRUE(undo.canUndo());
    EXPECT_EQ(undo.undoMenuItemTitle(), QStringLiteral("Undo Size Change"));
    undo.undo();
    EXPECT_EQ(s.value, 0);
    EXPECT_TRUE(undo.canRedo());
    EXPECT_EQ(undo.redoMenuItemTitle(), QStringLiteral("Redo Size Change"));
    undo.redo();
    EXPECT_EQ(s.value, 5);
    EXPECT_EQ(undo.undoMenuItemTitle(), QStringLiteral("Undo Size Change"));
    EXPECT_FALSE(undo.canRedo());

    // Undo in the same pass closes the open group first, then undoes it.
    s.set(4);
    undo.undo();
    EXPECT_EQ(s.value, 5);
    EXPECT_EQ(undo.redoCount(), 1);
}

TEST(UndoManager, OnePassIsOneGroupUndoneInReverseOrder) {
    UndoManager undo;
    Setting a{undo}, b{undo};
    a.set(1);
    b.set(2);
    a.set(5);
    finishPass();
    a.set(3);
    finishPass();
    EXPECT_EQ(undo.undoCount(), 2);
    undo.undo();
    EXPECT_EQ(a.value, 5);
    undo.undo();
    EXPECT_EQ(a.value, 0) << "the group's first change is undone last";
    EXPECT_EQ(b.value, 0);
}

TEST(UndoManager, CallDeferredToNextPassFormsItsOwnGroup) {
    // A setter that corrects itself on the next pass must leave two steps, as when a typed
    // value is clamped and written back.
    UndoManager undo;
    Setting s{undo};
    QTimer::singleShot(0, [&] { s.set(100); });
    s.set(150);
    finishPass();
    finishPass();
    EXPECT_EQ(s.value, 100);
    EXPECT_EQ(undo.undoCount(), 2);
}

TEST(UndoManager, NewEditClearsRedoButRedoKeepsIt) {
    UndoManager undo;
    Setting s{undo};
    s.set(1);
    finishPass();
    s.set(2);
    finishPass();
    undo.undo();
    undo.undo();
    EXPECT_EQ(undo.redoCount(), 2);
    undo.redo();
    EXPECT_EQ(undo.redoCount(), 1) << "redoing must not clear the rest of the redo stack";
    s.set(7);
    finishPass();
    EXPECT_FALSE(undo.canRedo());
}

TEST(UndoManager, EmptyGroupsAndRemoveAll) {
    UndoManager undo;
    undo.setActionName(QStringLiteral("Nothing"));
    finishPass();
    EXPECT_FALSE(undo.canUndo());
    EXPECT_EQ(undo.undoMenuItemTitle(), QStringLiteral("Undo"));
    Setting s{undo};
    s.set(1);
    finishPass();
    s.set(2);
    undo.removeAllActions();
    finishPass();
    EXPECT_FALSE(undo.canUndo());
    EXPECT_FALSE(undo.canRedo());
}

}  // namespace
}  // namespace marigold
