#include <QAbstractSpinBox>
#include <QComboBox>
#include <QLineEdit>
#include <QScrollBar>
#include <QStyleOptionSlider>
#include <QStyleOptionSpinBox>
#include <QTemporaryDir>
#include <QTest>

#include "core/AppController.h"
#include "core/OutputControls.h"
#include "platform/DefaultsKeys.h"
#include "platform/VipsRuntime.h"
#include "selection/BFStepper.h"
#include "selection/CenteringScrollArea.h"
#include "selection/QualitySlider.h"
#include "selection/ScaleSlider.h"
#include "support/TestImages.h"

using namespace marigold;

namespace {

void sendWheel(QWidget* widget, int angle, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    const QPointF at = QRectF(widget->rect()).center();
    QWheelEvent event(at, widget->mapToGlobal(at), QPoint(), QPoint(0, angle), Qt::NoButton,
                      modifiers, Qt::NoScrollPhase, false);
    QApplication::sendEvent(widget, &event);
}

QPoint spinButtonCentre(QAbstractSpinBox* box, QStyle::SubControl button) {
    QStyleOptionSpinBox option;
    option.initFrom(box);
    option.subControls = QStyle::SC_All;
    option.buttonSymbols = box->buttonSymbols();
    option.frame = box->hasFrame();
    option.stepEnabled = QAbstractSpinBox::StepUpEnabled | QAbstractSpinBox::StepDownEnabled;
    return box->style()->subControlRect(QStyle::CC_SpinBox, &option, button, box).center();
}

QPoint sliderHandleCentre(QSlider* slider) {
    QStyleOptionSlider option;
    option.initFrom(slider);
    option.orientation = slider->orientation();
    option.minimum = slider->minimum();
    option.maximum = slider->maximum();
    option.sliderPosition = slider->sliderPosition();
    option.sliderValue = slider->value();
    option.subControls = QStyle::SC_All;
    return slider->style()
        ->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, slider)
        .center();
}

}  // namespace

class TestOutputControls : public QObject {
    Q_OBJECT

private:
    QTemporaryDir dir;
    Defaults* defaults = nullptr;
    AppController* controller = nullptr;
    OutputControls* controls = nullptr;

    template <typename Control>
    Control* control(const char* name) {
        auto* found = controls->findChild<Control*>(QLatin1String(name));
        if (!found) qFatal("no control named %s", name);
        return found;
    }

    // A picture opened from a file and wholly selected, with no history.
    void openAndSelect(int wide = 400, int high = 300) {
        QVERIFY(controller->openFile(
            test::writeJpeg(test::gradientImage(wide, high), dir.path(), QStringLiteral("a.jpg"))));
        controller->selectAll();
        QTest::qWait(1);
        controller->undoManager().removeAllActions();
    }

    void finishPass() {
        QCoreApplication::processEvents();
        controller->undoManager().endGroup();
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(startVips("tst_OutputControls")); }

    void init() {
        defaults = new Defaults(dir.filePath(QStringLiteral("settings.ini")));
        controller = new AppController(*defaults);
        defaults->setInteger(keys::DefFileFormat, 101);
        defaults->setInteger(keys::DefJpegQuality, 50);
        controls = new OutputControls(*controller);
        controls->show();
        QVERIFY(QTest::qWaitForWindowExposed(controls));
    }

    void cleanup() {
        delete controls;
        delete controller;
        delete defaults;
        QFile::remove(dir.filePath(QStringLiteral("settings.ini")));
    }

    void qualityWheelIsOneFinalAction_data() {
        QTest::addColumn<int>("angle");
        QTest::addColumn<int>("stored");
        QTest::newRow("up") << 120 << 51;
        QTest::newRow("down") << -120 << 49;
    }

    void qualityWheelIsOneFinalAction() {
        QFETCH(int, angle);
        QFETCH(int, stored);
        auto* slider = control<QualitySlider>("qualitySlider");
        QList<bool> finals;
        connect(slider, &QualitySlider::action, this,
                [&](int) { finals << slider->isFinalAction(); });
        sendWheel(slider, angle);
        finishPass();
        QCOMPARE(finals, QList<bool>{true});
        QVERIFY(!slider->isFinalAction());
        QCOMPARE(controller->quality(), QString::number(stored));
        QCOMPARE(control<QLineEdit>("qualityField")->text(), QString::number(stored));
        QCOMPARE(controller->undoManager().undoCount(), 1);
    }

    void qualityDragStoresOnceOnRelease() {
        auto* slider = control<QualitySlider>("qualitySlider");
        auto* field = control<QLineEdit>("qualityField");
        const QPoint start = sliderHandleCentre(slider);
        QTest::mousePress(slider, Qt::LeftButton, {}, start);
        QTest::mouseMove(slider, start + QPoint(20, 0));
        finishPass();
        const QString shown = field->text();
        QVERIFY2(shown.toInt() > 50, qPrintable(shown));
        QCOMPARE(controller->quality(), QStringLiteral("50"));
        QTest::mouseRelease(slider, Qt::LeftButton, {}, start + QPoint(20, 0));
        finishPass();
        QCOMPARE(controller->quality(), shown);
        QCOMPARE(controller->undoManager().undoCount(), 1);
    }

    void scaleWheelBurstClosesOnce() {
        openAndSelect();
        auto* slider = control<ScaleSlider>("scaleSlider");
        QList<int> calls;
        slider->setScaleImageByPixels([&](int step) {
            calls << step;
            controller->scaleImageByPixels(step);
        });
        for (int i = 0; i < 3; ++i) sendWheel(slider, 120, Qt::ControlModifier);
        QCOMPARE(calls, (QList<int>{10, 10, 10}));
        QCOMPARE(slider->value(), 100);
        QTRY_COMPARE_WITH_TIMEOUT(calls.size(), 4, 3000);
        QTest::qWait(2 * ScaleSlider::kSettleMsec);
        QCOMPARE(calls, (QList<int>{10, 10, 10, 0}));
        QCOMPARE(controller->document().cropPlan().outputWide, 430);
        // The next burst has its own closing call.
        sendWheel(slider, -120);
        QTRY_COMPARE_WITH_TIMEOUT(calls, (QList<int>{10, 10, 10, 0, -1, 0}), 3000);
    }

    void scaleDragIsOneUndoStep() {
        openAndSelect();
        auto* slider = control<ScaleSlider>("scaleSlider");
        const QPoint start = sliderHandleCentre(slider);
        QTest::mousePress(slider, Qt::LeftButton, {}, start);
        for (int dx = 4; dx <= 20; dx += 4) {
            QTest::mouseMove(slider, start + QPoint(-dx, 0));
            finishPass();
        }
        const float dragged = controller->scaleFactor();
        QVERIFY(dragged < 1.0f);
        QCOMPARE(controller->undoManager().undoCount(), 0);
        QTest::mouseRelease(slider, Qt::LeftButton, {}, start + QPoint(-20, 0));
        finishPass();
        QCOMPARE(controller->undoManager().undoCount(), 1);
        QCOMPARE(controller->undoManager().undoActionName(), QStringLiteral("Size Change"));
        QCOMPARE(controller->scaleFactor(), dragged);
        controller->undoManager().undo();
        QCOMPARE(controller->scaleFactor(), 1.0f);
        QCOMPARE(slider->value(), 100);
    }

    void stepperSnapsInTheClicksDirection_data() {
        QTest::addColumn<int>("typed");
        QTest::addColumn<QString>("how");
        QTest::addColumn<int>("expected");
        QTest::newRow("13 up") << 13 << "up button" << 20;
        QTest::newRow("13 down") << 13 << "down button" << 10;
        QTest::newRow("15 up") << 15 << "up key" << 20;
        QTest::newRow("13 wheel") << 13 << "wheel" << 14;
    }

    void stepperSnapsInTheClicksDirection() {
        QFETCH(int, typed);
        QFETCH(QString, how);
        QFETCH(int, expected);
        // Square, so that no side falls under the output's 10-pixel minimum.
        openAndSelect(400, 400);
        auto* width = control<BFStepper>("pixelWidthField");
        width->setFocus();
        width->selectAll();
        QTest::keyClicks(width, QString::number(typed));
        QTest::keyClick(width, Qt::Key_Return);
        QCOMPARE(controller->pixelWidth(), typed);
        if (how.endsWith(QLatin1String("button"))) {
            const bool up = how.startsWith(QLatin1String("up"));
            QTest::mouseClick(
                width, Qt::LeftButton, {},
                spinButtonCentre(width, up ? QStyle::SC_SpinBoxUp : QStyle::SC_SpinBoxDown));
        } else if (how == QLatin1String("wheel")) {
            sendWheel(width, 120);
        } else {
            QTest::keyClick(width, how == QLatin1String("up key") ? Qt::Key_Up : Qt::Key_Down);
        }
        QCOMPARE(width->value(), expected);
        QCOMPARE(controller->document().cropPlan().outputWide, expected);
    }

    void anEmptyOutputShowsNoSize() {
        auto* width = control<BFStepper>("pixelWidthField");
        QCOMPARE(width->text(), QString());
        QVERIFY(!width->isEnabled());
    }

    void centringThroughTheScrollArea_data() {
        QTest::addColumn<QSize>("document");
        QTest::addColumn<int>("scrollX");
        QTest::addColumn<QPoint>("origin");
        QTest::newRow("smaller") << QSize(300, 200) << 0 << QPoint(-100, -100);
        QTest::newRow("odd difference") << QSize(301, 201) << 0 << QPoint(-100, -100);
        QTest::newRow("wider, scrolled past the end")
            << QSize(1000, 200) << 700 << QPoint(500, -100);
    }

    void centringThroughTheScrollArea() {
        QFETCH(QSize, document);
        QFETCH(int, scrollX);
        QFETCH(QPoint, origin);
        CenteringScrollArea area;
        area.setFrameShape(QFrame::NoFrame);
        area.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        area.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        // Starts larger, so that the size below is a change the area has to follow.
        auto* page = new QWidget;
        page->resize(2000, 2000);
        area.setWidget(page);
        area.resize(500, 400);
        area.show();
        QVERIFY(QTest::qWaitForWindowExposed(&area));
        page->resize(document);
        QCoreApplication::processEvents();
        area.horizontalScrollBar()->setValue(scrollX);
        // Qt places the document again here, as the output view makes it do on every preview.
        area.setWidgetResizable(false);
        QCOMPARE(area.documentOrigin(), origin);
        QCOMPARE(page->pos(), -origin);
        QCOMPARE(area.constrainScrollPoint(QPoint(-50, 30)).y(), origin.y());
    }

    void formatPopupStoresPngAndDisablesQuality() {
        auto* popup = control<QComboBox>("formatPopup");
        QVERIFY(control<QualitySlider>("qualitySlider")->isEnabled());
        popup->setFocus();
        QTest::keyClick(popup, Qt::Key_Down);
        finishPass();
        QCOMPARE(controller->fileFormat(), 102);
        QCOMPARE(controller->undoManager().undoCount(), 1);
        QCOMPARE(controller->undoManager().undoActionName(), QStringLiteral("Format Change"));
        for (const char* name :
             {"qualitySlider", "qualityField", "limitFilesizeBox", "filesizeLimitField"}) {
            QVERIFY2(!control<QWidget>(name)->isEnabled(), name);
        }
        controller->undoManager().undo();
        QCOMPARE(popup->currentText(), QStringLiteral("JPEG"));
        QVERIFY(control<QLineEdit>("qualityField")->isEnabled());

        defaults->setInteger(keys::DefFileFormat, 107);
        OutputControls unknown(*controller);
        QCOMPARE(unknown.findChild<QComboBox*>(QStringLiteral("formatPopup"))->currentText(),
                 QStringLiteral("JPEG"));
        // Written as JPEG, so its quality applies and can be set.
        QVERIFY(unknown.findChild<QLineEdit*>(QStringLiteral("qualityField"))->isEnabled());
    }
};

QTEST_MAIN(TestOutputControls)
#include "tst_OutputControls.moc"
