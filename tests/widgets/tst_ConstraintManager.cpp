#include <QAction>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include "constraints/ConstraintManager.h"
#include "constraints/SingleEditTableView.h"
#include "core/AppController.h"
#include "core/MainWindow.h"
#include "platform/DefaultsKeys.h"
#include "platform/VipsRuntime.h"
#include "support/OpenWindow.h"
#include "support/AccessibleLookup.h"

using namespace marigold;
using test::byAccessibleName;

class TestConstraintManager : public QObject {
    Q_OBJECT

private:
    QTemporaryDir dir;
    std::unique_ptr<test::OpenWindow> app;

    MainWindow* window() const { return app->window.get(); }
    QComboBox* popUp() const { return byAccessibleName<QComboBox>(window(), "Constraint"); }
    ConstraintManager* manager() const { return window()->findChild<ConstraintManager*>(); }
    QPushButton* button(const char* name) const {
        return byAccessibleName<QPushButton>(manager(), QString::fromUtf8(name));
    }

    void choose(const QString& title) {
        const int index = popUp()->findText(title);
        QVERIFY2(index >= 0, qPrintable(title));
        popUp()->setCurrentIndex(index);
        Q_EMIT popUp()->activated(index);
    }

    // Ends the dialog and lets the pop-up be rebuilt, as it is a moment after closing.
    void end(QDialogButtonBox::StandardButton which) {
        manager()->findChild<QDialogButtonBox*>()->button(which)->click();
        QVERIFY(!manager()->isVisible());
        QTest::qWait(150);
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(startVips("tst_ConstraintManager")); }

    void init() {
        app = std::make_unique<test::OpenWindow>(dir.filePath(QStringLiteral("settings.ini")));
        QVERIFY(app->exposed);
    }

    void cleanup() { app.reset(); }

    void opensFromThePopUpAndItsShortcutAsAWindowModalDialog() {
        QCOMPARE(popUp()->itemText(popUp()->count() - 1), QStringLiteral("Manage Constraints"));
        choose(QStringLiteral("Manage Constraints"));
        QVERIFY(manager()->isVisible());
        QCOMPARE(manager()->windowModality(), Qt::WindowModal);
        QVERIFY(manager()->maximumWidth() <= 745 && manager()->maximumHeight() <= 700);
        QCOMPARE(popUp()->currentText(), QStringLiteral("None"));
        end(QDialogButtonBox::Cancel);

        QAction* shortcut = nullptr;
        for (QAction* action : window()->findChildren<QAction*>()) {
            if (action->shortcut() == QKeySequence(Qt::CTRL | Qt::Key_Semicolon)) shortcut = action;
        }
        QVERIFY(shortcut);
        shortcut->trigger();
        QVERIFY(manager()->isVisible());
        end(QDialogButtonBox::Cancel);
    }

    void addOpensTheNameForEditingAndReturnEndsOnlyTheEdit() {
        manager()->showManager();
        QVERIFY(!button("Remove ratio")->isEnabled() && !button("Duplicate ratio")->isEnabled());
        button("Add ratio")->click();
        SingleEditTableView* table = manager()->tableView(PresetKind::Ratio);
        QCOMPARE(table->selectedRow(), 2);
        auto* editor = table->findChild<QLineEdit*>();
        QVERIFY2(editor && editor->isVisible(), "the new row's name is being edited");
        QCOMPARE(editor->selectedText(), QStringLiteral("Untitled"));
        QVERIFY(button("Remove ratio")->isEnabled() && button("Duplicate ratio")->isEnabled());

        QTest::keyClicks(editor, QStringLiteral("Square"));
        QTest::keyClick(editor, Qt::Key_Return);
        QTest::qWait(20);
        QVERIFY2(manager()->isVisible(), "Return ends the edit, not the dialog");
        QVERIFY2(!table->findChild<QLineEdit*>(), "the editor is closed");
        QCOMPARE(manager()->table(PresetKind::Ratio).presets().at(2),
                 (ConstraintPreset{QStringLiteral("Square"), 6, 4}));

        button("Duplicate ratio")->click();
        QCOMPARE(manager()->table(PresetKind::Ratio).presets().size(), 4);
        QCOMPARE(table->selectedRow(), 3);
        end(QDialogButtonBox::Cancel);
    }

    void okStoresCancelDropsAndThePopUpFollows() {
        choose(QStringLiteral("320x240"));
        const auto removeSecondSize = [this] {
            manager()->tableView(PresetKind::Size)->selectRow(1);
            button("Remove size")->click();
            QCOMPARE(manager()->table(PresetKind::Size).presets().size(), 1);
            QVERIFY(!button("Remove size")->isEnabled());
        };

        manager()->showManager();
        removeSecondSize();
        end(QDialogButtonBox::Cancel);
        QCOMPARE(popUp()->currentText(), QStringLiteral("320x240"));

        manager()->showManager();
        QCOMPARE(manager()->table(PresetKind::Size).presets().size(), 2);
        removeSecondSize();
        for (QPushButton* revert : manager()->findChildren<QPushButton*>()) {
            if (revert->text() == QStringLiteral("Revert")) revert->click();
        }
        QVERIFY(manager()->isVisible());
        QCOMPARE(manager()->table(PresetKind::Size).presets().size(), 2);

        removeSecondSize();
        end(QDialogButtonBox::Ok);
        QCOMPARE(popUp()->findText(QStringLiteral("320x240")), -1);
        QCOMPARE(popUp()->currentText(), QStringLiteral("None"));
        QCOMPARE(app->defaults.arrayForKey(keys::DefSizePresets).size(), 1);
    }
};

QTEST_MAIN(TestConstraintManager)
#include "tst_ConstraintManager.moc"
