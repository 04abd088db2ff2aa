#include <QAbstractSpinBox>
#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>

#include "core/AppController.h"
#include "core/MainWindow.h"
#include "output/OutputImageView.h"
#include "platform/DefaultsKeys.h"
#include "platform/VipsRuntime.h"
#include "support/OpenWindow.h"
#include "support/TestImages.h"

using namespace marigold;

class TestMainWindow : public QObject {
    Q_OBJECT

private:
    QTemporaryDir dir;
    Defaults* defaults = nullptr;
    AppController* controller = nullptr;
    MainWindow* window = nullptr;
    std::unique_ptr<test::OpenWindow> app;

    QAction* editAction(const QString& prefix) {
        for (QAction* menu : window->menuBar()->actions()) {
            for (QAction* action : menu->menu()->actions()) {
                if (action->text().startsWith(prefix)) return action;
            }
        }
        return nullptr;
    }

    // A 100 x 80 picture opened from a file of that name and wholly selected.
    void openAndSelect(const QString& name) {
        QVERIFY(controller->openFile(
            test::writeJpeg(test::gradientImage(100, 80), dir.path(), name)));
        controller->selectAll();
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(startVips("tst_MainWindow")); }

    void init() {
        app = std::make_unique<test::OpenWindow>(dir.filePath(QStringLiteral("settings.ini")));
        QVERIFY(app->exposed);
        defaults = &app->defaults;
        controller = &app->controller;
        window = app->window.get();
    }

    void cleanup() { app.reset(); }

    void panesAreEqualAndNeverNarrowerThan300() {
        const QList<int> sizes = window->splitter()->sizes();
        QVERIFY(qAbs(sizes[0] - sizes[1]) <= 1);
        window->splitter()->setSizes({50, 2000});
        QVERIFY(window->splitter()->sizes()[0] >= MainWindow::kMinimumPaneWidth);
        window->resize(1200, 700);
        QTest::qWait(20);
        const QList<int> after = window->splitter()->sizes();
        QVERIFY2(qAbs(after[0] - after[1]) <= 1, "a window resize re-centres the divider");
    }

    void openingShowsTheDocumentAndOutputFollowsSelection() {
        const QString path =
            test::writeJpeg(test::gradientImage(640, 480), dir.path(), QStringLiteral("beach.jpg"));
        QVERIFY(controller->openFile(path));
        QCOMPARE(window->findChild<QLineEdit*>(QStringLiteral("filenameTextField"))->text(),
                 QStringLiteral("beach"));
        QCOMPARE(window->findChild<QLabel*>(QStringLiteral("sizeTextField"))->text(),
                 QStringLiteral("640 x 480"));
        QVERIFY(window->outputView()->image().isNull());
        controller->selectAll();
        QCOMPARE(window->outputView()->image().pixelsWide(), 640);
        auto* widthField = window->findChild<QAbstractSpinBox*>(QStringLiteral("pixelWidthField"));
        QCOMPARE(widthField->text(), QStringLiteral("640"));
    }

    void anUnreadableFileIsExplainedOnTheStatusLine() {
        const QString path = dir.filePath(QStringLiteral("notes.jpg"));
        QFile notes(path);
        QVERIFY(notes.open(QIODevice::WriteOnly));
        notes.write("not a picture");
        notes.close();
        QVERIFY(!controller->openFile(path));
        const QString shown = window->statusBar()->currentMessage();
        QVERIFY2(shown.startsWith(QStringLiteral("“notes.jpg” could not be opened: ")),
                 qPrintable(shown));
    }

    void undoMenuNamesTheStep() {
        controller->openFile(
            test::writeJpeg(test::gradientImage(64, 64), dir.path(), QStringLiteral("a.jpg")));
        QTest::qWait(10);
        QCOMPARE(editAction(QStringLiteral("Undo"))->text(), QStringLiteral("Undo"));
        QVERIFY(!editAction(QStringLiteral("Undo"))->isEnabled());
        controller->selectAll();
        QTest::qWait(10);
        QAction* undo = editAction(QStringLiteral("Undo"));
        QCOMPARE(undo->text(), QStringLiteral("Undo Crop Selection"));
        undo->trigger();
        QCOMPARE(editAction(QStringLiteral("Redo"))->text(), QStringLiteral("Redo Crop Selection"));
        QVERIFY(controller->document().marquee().deselected());
    }

    // The Output menu's settings are stored at once, and the check marks show what is stored,
    // however it got there.
    void outputMenuSettingsApplyAtOnceWithCheckMarks() {
        QMenu* output = nullptr;
        for (QAction* menu : window->menuBar()->actions()) {
            if (menu->text() == QStringLiteral("O&utput")) output = menu->menu();
        }
        QVERIFY(output);
        const auto item = [](QMenu* menu, const QString& title) -> QAction* {
            for (QAction* action : menu->actions()) {
                if (action->text() == title) return action;
            }
            return nullptr;
        };
        QMenu* metadata = item(output, QStringLiteral("Preserve Metadata"))->menu();
        item(metadata, QStringLiteral("All Metadata"))->trigger();
        QCOMPARE(defaults->integerForKey(keys::DefPreserveExif), 2);
        defaults->setInteger(keys::DefPreserveExif, 0);
        Q_EMIT metadata->aboutToShow();
        QVERIFY(item(metadata, QStringLiteral("None"))->isChecked());
        QVERIFY(!item(metadata, QStringLiteral("All Metadata"))->isChecked());

        QMenu* interpolation = item(output, QStringLiteral("Image Interpolation"))->menu();
        item(interpolation, QStringLiteral("Low"))->trigger();
        QCOMPARE(defaults->integerForKey(keys::DefInterpolation), 2);

        QAction* border = item(output, QStringLiteral("Border"));
        const bool before = defaults->boolForKey(keys::DefBorder);
        border->trigger();
        QCOMPARE(defaults->boolForKey(keys::DefBorder), !before);
        QCOMPARE(border->isChecked(), !before);
    }

    void typedPercentSnapsInTheField() {
        openAndSelect(QStringLiteral("b.jpg"));
        auto* percent = window->findChild<QLineEdit*>(QStringLiteral("scalePercentField"));
        percent->setFocus();
        percent->selectAll();
        QTest::keyClicks(percent, QStringLiteral("250"));
        QTest::keyClick(percent, Qt::Key_Return);
        QTest::qWait(20);
        QCOMPARE(percent->text(), QStringLiteral("200"));
        QCOMPARE(controller->pixelWidth(), 200);
    }

    // A field edited but not committed loses its focus as the window goes: the edit applies,
    // and what the controller then sends must not reach the half-destroyed window (the
    // sanitized run reports any call into it).
    void closingWithAnEditedFieldIsHarmless() {
        openAndSelect(QStringLiteral("c.jpg"));
        auto* width = window->findChild<QAbstractSpinBox*>(QStringLiteral("pixelWidthField"));
        width->setFocus();
        QTest::keyClick(width, Qt::Key_End);
        QTest::keyClicks(width, QStringLiteral("7"));
        app->window.reset();
        window = nullptr;
        QCOMPARE(controller->pixelWidth(), 1007);
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_MainWindow.moc"
