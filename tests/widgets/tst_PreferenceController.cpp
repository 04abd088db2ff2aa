#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include "core/AppController.h"
#include "core/PreferenceController.h"
#include "platform/DefaultsKeys.h"
#include "support/AccessibleLookup.h"
#include "support/NonsenseSettings.h"

using namespace marigold;
using test::byAccessibleName;

namespace {

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

}  // namespace

class TestPreferenceController : public QObject {
    Q_OBJECT

private:
    QTemporaryDir dir;
    QString path;
    Defaults* defaults = nullptr;
    AppController* controller = nullptr;
    QWidget* mainWindow = nullptr;
    PreferenceController* preferences = nullptr;

    void start() {
        defaults = new Defaults(path);
        controller = new AppController(*defaults);
        mainWindow = new QWidget;
        mainWindow->resize(600, 400);
        mainWindow->show();
        QVERIFY(QTest::qWaitForWindowExposed(mainWindow));
        preferences = new PreferenceController(*controller, mainWindow);
    }

    QDialog* showDialog() {
        preferences->showWindow();
        QDialog* dialog = preferences->window();
        [&] { QVERIFY(QTest::qWaitForWindowExposed(dialog)); }();
        return dialog;
    }

    QPushButton* button(QDialogButtonBox::StandardButton which) {
        return preferences->window()->findChild<QDialogButtonBox*>()->button(which);
    }

    // A person's edits across the dialog's kinds of control.
    void editSeveralControls() {
        QDialog* dialog = preferences->window();
        QTest::mouseClick(byAccessibleName<QCheckBox>(dialog, "Draw a border around the output"),
                          Qt::LeftButton);
        auto* thickness = byAccessibleName<QSpinBox>(dialog, "Border thickness");
        thickness->selectAll();
        QTest::keyClicks(thickness, "12");
        byAccessibleName<QComboBox>(dialog, "Pointer in timed captures")->setCurrentIndex(5);
        QTest::mouseClick(byAccessibleName<QToolButton>(dialog, "Border colour"), Qt::LeftButton);
        auto* picker = dialog->findChild<QColorDialog*>();
        QVERIFY(picker);
        picker->setCurrentColor(QColor(0, 128, 255, 100));
        picker->accept();
    }

private Q_SLOTS:
    // A file per case: QSettings shares what it parsed of a path across the process.
    void init() {
        path = dir.filePath(
            QStringLiteral("%1-%2.ini").arg(QTest::currentTestFunction(), QTest::currentDataTag()));
    }

    void cleanup() {
        delete mainWindow;  // and with it the dialog and its controller
        delete controller;
        delete defaults;
    }

    void closing_data() {
        QTest::addColumn<QString>("how");
        QTest::addColumn<bool>("written");
        QTest::newRow("OK") << "OK" << true;
        QTest::newRow("Cancel") << "Cancel" << false;
        QTest::newRow("Escape") << "Escape" << false;
        QTest::newRow("close box") << "close" << false;
    }

    // Only OK writes; every way out re-reads the preferences a moment after the dialog goes.
    void closing() {
        QFETCH(QString, how);
        QFETCH(bool, written);
        start();
        defaults->setInteger(keys::DefCursor, 2);
        defaults->synchronize();
        const QByteArray before = readFile(path);
        QDialog* dialog = showDialog();
        QVERIFY(preferences->isVisible());
        editSeveralControls();
        QSignalSpy applied(controller, &AppController::settingsChanged);
        if (how == "OK") QTest::mouseClick(button(QDialogButtonBox::Ok), Qt::LeftButton);
        if (how == "Cancel") QTest::mouseClick(button(QDialogButtonBox::Cancel), Qt::LeftButton);
        if (how == "Escape") QTest::keyClick(dialog, Qt::Key_Escape);
        if (how == "close") dialog->close();
        QVERIFY(!preferences->isVisible());
        QTest::qWait(100);
        QCOMPARE(applied.count(), 0);
        QVERIFY(applied.wait(1000));

        const QByteArray after = readFile(path);
        if (!written) {
            QCOMPARE(after, before);
            return;
        }
        QVERIFY2(after.contains("Border=true"), after.constData());
        QVERIFY(after.contains("BorderThickness=12"));
        QVERIFY(after.contains("Cursor=5"));
        QVERIFY(after.contains("BorderColor=#0080ff64"));
    }

    // The main menu sets the border while the dialog is closed; showing it again must not
    // write the old state back.
    void aMenuChangeShowsOnTheNextShowingAndSurvivesOk() {
        start();
        QDialog* dialog = showDialog();
        auto* border = byAccessibleName<QCheckBox>(dialog, "Draw a border around the output");
        QVERIFY(!border->isChecked());
        preferences->cancel();
        defaults->setBool(keys::DefBorder, true);
        showDialog();
        QVERIFY(border->isChecked());
        preferences->accept();
        QVERIFY(defaults->boolForKey(keys::DefBorder));
    }

    void nonsenseSettingsShowTheFactoryValues() {
        writeFile(path, test::kNonsenseSettings);
        start();
        QDialog* dialog = showDialog();
        const std::pair<const char*, bool> checks[] = {
            {"Draw a border around the output", false},
            {"Show crosshair", false},
            {"Rotation slider snaps to steps", true},
            {"Play a sound when capturing", true},
            {"Reopen the last picture at start", false},
            {"Move the window back while dragging output", false},
            {"Bring the window front after dragging", true}};
        for (const auto& [name, on] : checks) {
            auto* box = byAccessibleName<QCheckBox>(dialog, name);
            QVERIFY2(box, name);
            QVERIFY2(box->isChecked() == on, name);
        }
        // The pointer code 6 means none; the other codes fall back to their factory values.
        const std::pair<const char*, int> popUps[] = {{"Scaling quality", 3},
                                                      {"Metadata to keep", 1},
                                                      {"Time stamp", 0},
                                                      {"Pointer in timed captures", 0}};
        for (const auto& [name, index] : popUps) {
            QCOMPARE(byAccessibleName<QComboBox>(dialog, name)->currentIndex(), index);
        }
        QCOMPARE(byAccessibleName<QSpinBox>(dialog, "Border thickness")->value(), 1);
        QCOMPARE(byAccessibleName<QSpinBox>(dialog, "Timed capture delay")->value(), 5);
        // Looking is not editing: OK leaves the file as it was.
        defaults->synchronize();
        const QByteArray shown = readFile(path);
        preferences->accept();
        QCOMPARE(readFile(path), shown);
    }

    void everyControlHasANameAndATip() {
        start();
        QDialog* dialog = showDialog();
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Preferences"));
        QVERIFY(button(QDialogButtonBox::Ok)->isDefault());
        int controls = 0;
        for (QWidget* control : dialog->findChildren<QWidget*>()) {
            if (!qobject_cast<QCheckBox*>(control) && !qobject_cast<QSpinBox*>(control) &&
                !qobject_cast<QComboBox*>(control) && !qobject_cast<QToolButton*>(control)) {
                continue;
            }
            ++controls;
            QVERIFY2(!control->accessibleName().isEmpty(), control->metaObject()->className());
            QVERIFY2(!control->toolTip().isEmpty(), qPrintable(control->accessibleName()));
        }
        QCOMPARE(controls, 14);
        preferences->cancel();
    }
};

QTEST_MAIN(TestPreferenceController)
#include "tst_PreferenceController.moc"
