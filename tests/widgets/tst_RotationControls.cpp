#include <QMouseEvent>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "core/AppController.h"
#include "core/RotationControls.h"
#include "platform/VipsRuntime.h"
#include "support/TestImages.h"

using namespace marigold;

namespace {

void sendMouse(QWidget* widget, QEvent::Type type, QPoint at, Qt::KeyboardModifiers modifiers) {
    const Qt::MouseButtons buttons =
        type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, QPointF(at), widget->mapToGlobal(QPointF(at)), Qt::LeftButton, buttons,
                      modifiers);
    QApplication::sendEvent(widget, &event);
}

}  // namespace

class TestRotationControls : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(startVips("tst_RotationControls")); }

    void tipsSayWhatShiftDoes() {
        RotateSlider slider;
        slider.setConstrain(true);
        QCOMPARE(slider.toolTip(),
                 QStringLiteral("To rotate freely, hold down the Shift key then slide."));
        slider.setConstrain(false);
        QCOMPARE(slider.toolTip(),
                 QStringLiteral("To rotate with constraint, hold down the Shift key then slide"));
    }

    void aPressSnapsByTheSettingTurnedRoundByShift_data() {
        QTest::addColumn<bool>("constrain");
        QTest::addColumn<bool>("shift");
        QTest::addColumn<bool>("snaps");
        QTest::newRow("constrained") << true << false << true;
        QTest::newRow("constrained, Shift") << true << true << false;
        QTest::newRow("free") << false << false << false;
        QTest::newRow("free, Shift") << false << true << true;
    }

    void aPressSnapsByTheSettingTurnedRoundByShift() {
        QFETCH(bool, constrain);
        QFETCH(bool, shift);
        QFETCH(bool, snaps);
        RotateSlider slider;
        slider.resize(361, 30);
        slider.setConstrain(constrain);
        slider.setAllowsTickMarkValuesOnly(!snaps);
        const Qt::KeyboardModifiers modifiers = shift ? Qt::ShiftModifier : Qt::NoModifier;
        sendMouse(&slider, QEvent::MouseButtonPress, {180, 15}, modifiers);
        QCOMPARE(slider.allowsTickMarkValuesOnly(), snaps);
        sendMouse(&slider, QEvent::MouseButtonRelease, {180, 15}, modifiers);

        slider.setEnabled(false);
        slider.setAllowsTickMarkValuesOnly(!snaps);
        sendMouse(&slider, QEvent::MouseButtonPress, {180, 15}, modifiers);
        // A disabled slider ignores the press.
        QCOMPARE(slider.allowsTickMarkValuesOnly(), !snaps);
    }

    // A drag previews without undo; letting go turns the picture, one "Rotate" step.
    void aDragPreviewsAndTheReleaseTurnsOnce() {
        QTemporaryDir dir;
        Defaults defaults(dir.filePath(QStringLiteral("settings.ini")));
        AppController controller(defaults);
        QVERIFY(controller.openFile(
            test::writeJpeg(test::gradientImage(200, 100), dir.path(), QStringLiteral("a.jpg"))));
        RotationControls controls(controller);
        RotateSlider* slider = controls.slider();
        slider->setConstrain(false);
        slider->resize(361, 30);
        QCoreApplication::processEvents();
        controller.undoManager().removeAllActions();
        QList<bool> finals;
        connect(slider, &RotateSlider::action, [&] { finals << slider->isFinalAction(); });
        sendMouse(slider, QEvent::MouseButtonPress, slider->rect().center(), Qt::NoModifier);
        for (int x = 190; x <= 230; x += 10) {
            sendMouse(slider, QEvent::MouseMove, {x, 15}, Qt::NoModifier);
        }
        QCOMPARE(controller.rotation(), 0.0);
        QVERIFY2(controller.document().image().pixelsWide() > 200, "the turned copy is shown");
        sendMouse(slider, QEvent::MouseButtonRelease, {230, 15}, Qt::NoModifier);
        QVERIFY(finals.size() > 1);
        QCOMPARE(finals.count(true), 1);
        QVERIFY(finals.last());
        QCOMPARE(controller.rotation(), double(slider->value()));
        QCoreApplication::processEvents();
        QCOMPARE(controller.undoManager().undoCount(), 1);
        QCOMPARE(controller.undoManager().undoActionName(), QStringLiteral("Rotate"));
    }
};

QTEST_MAIN(TestRotationControls)
#include "tst_RotationControls.moc"
