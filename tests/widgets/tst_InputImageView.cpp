#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "core/AppController.h"
#include "platform/DefaultsKeys.h"
#include "platform/VipsRuntime.h"
#include "selection/InputImageView.h"
#include "support/TestImages.h"

using namespace marigold;

namespace {

struct FixedConstraint : SelectionConstraint {
    float height = 0, width = 0;
    bool size = false;
    float ratioHeight() const override { return height; }
    float ratioWidth() const override { return width; }
    bool actualSize() const override { return size; }
    float scaleFactorForImageSize(float, float imageHeight, float, float cropHeight) const override {
        return height / (imageHeight * cropHeight);
    }
};

}  // namespace

// The view over a real controller and document: what the view reports must reach the
// document as the controller records it.
class TestInputImageView : public QObject {
    Q_OBJECT

private:
    QTemporaryDir dir;
    Defaults* defaults = nullptr;
    AppController* controller = nullptr;
    InputImageView* view = nullptr;

    const Document& document() const { return controller->document(); }
    UndoManager& undo() { return controller->undoManager(); }
    // View point (y up) to widget position (y down).
    QPoint at(float x, float y) const { return QPoint(int(x), int(view->height() - y)); }
    void drag(QPoint from, QPoint to) {
        QTest::mousePress(view, Qt::LeftButton, Qt::NoModifier, from);
        QMouseEvent move(QEvent::MouseMove, QPointF(to), view->mapToGlobal(QPointF(to)),
                         Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(view, &move);
        QTest::mouseRelease(view, Qt::LeftButton, Qt::NoModifier, to);
    }
    void show(int w, int h) {
        const QString path = test::writeJpeg(test::gradientImage(w, h), dir.path(),
                                             QStringLiteral("%1x%2.jpg").arg(w).arg(h));
        QVERIFY(controller->openFile(path));
        QCoreApplication::processEvents();
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(startVips("tst_InputImageView")); }

    void init() {
        defaults = new Defaults(dir.filePath(QStringLiteral("settings.ini")));
        controller = new AppController(*defaults);
        view = new InputImageView;
        view->setDocument(&controller->document());
        view->setDelegate(controller);
        view->resize(400, 300);
    }

    void cleanup() {
        delete view;
        delete controller;
        delete defaults;
        QFile::remove(dir.filePath(QStringLiteral("settings.ini")));
    }

    void imageBounds_data() {
        QTest::addColumn<int>("imageW");
        QTest::addColumn<int>("imageH");
        QTest::addColumn<int>("viewW");
        QTest::addColumn<int>("viewH");
        QTest::addColumn<QRectF>("expected");
        QTest::newRow("fits: centred, never enlarged") << 100 << 50 << 400 << 300
                                                       << QRectF(150, 125, 100, 50);
        QTest::newRow("wide image shrunk") << 100 << 50 << 100 << 100 << QRectF(8, 29, 84, 42);
        QTest::newRow("tall image shrunk") << 50 << 100 << 100 << 100 << QRectF(29, 8, 42, 84);
        QTest::newRow("same aspect") << 800 << 600 << 400 << 300 << QRectF(8, 8, 384, 284);
        QTest::newRow("one margin short") << 100 << 50 << 115 << 300 << QRectF(8, 125.25, 99, 49.5);
    }

    void imageBounds() {
        QFETCH(int, imageW);
        QFETCH(int, imageH);
        QFETCH(int, viewW);
        QFETCH(int, viewH);
        QFETCH(QRectF, expected);
        QCOMPARE(view->imageBounds(), RectF{});
        view->resize(viewW, viewH);
        show(imageW, imageH);
        const RectF b = view->imageBounds();
        QCOMPARE(QRectF(b.x, b.y, b.width, b.height), expected);
    }

    void aDragIsOneUndoStepBackToTheSelectionBeforeThePress() {
        show(200, 100);  // drawn at (100, 100, 200, 100)
        QSignalSpy previews(controller, &AppController::previewChanged);
        drag(at(120, 110), at(220, 160));
        QCOMPARE(document().cropRect(), (RectF{20, 10, 100, 50}));
        QVERIFY2(previews.count() >= 2, "live previews while dragging, then the full one");
        QCoreApplication::processEvents();
        QCOMPARE(undo().undoCount(), 1);
        QCOMPARE(undo().undoActionName(), QStringLiteral("Crop Selection"));
        QCOMPARE(view->state(), InputImageView::Idle);
        const Marquee first = document().marquee();
        // Grab the upper-right corner (220, 160) and pull it out.
        drag(at(221, 160), at(280, 190));
        QCoreApplication::processEvents();
        QCOMPARE(document().cropRect().width, 160.f);
        undo().undo();
        QCOMPARE(document().marquee(), first);
        undo().redo();
        QCOMPARE(document().cropRect().width, 160.f);
    }

    void withoutLivePreviewOnlyTheReleasePreviews() {
        defaults->setBool(keys::DefLivePreview, false);
        show(200, 100);
        QSignalSpy previews(controller, &AppController::previewChanged);
        drag(at(120, 110), at(220, 160));
        QCOMPARE(previews.count(), 1);
    }

    void moveKeepsSizeAndStaysInside() {
        show(200, 100);
        drag(at(120, 110), at(170, 160));
        drag(at(140, 130), at(400, 300));  // press inside: move far past the corner
        QCOMPARE(document().cropRect(), (RectF{150, 50, 50, 50}));
    }

    void aPlainClickLeavesAnEmptySelectionAndOneStep() {
        show(200, 100);
        drag(at(120, 110), at(170, 160));
        QCoreApplication::processEvents();
        undo().removeAllActions();
        QTest::mouseClick(view, Qt::LeftButton, Qt::NoModifier, at(250, 180));
        QVERIFY(document().marquee().deselected());
        QCoreApplication::processEvents();
        QCOMPARE(undo().undoCount(), 1);
    }

    void arrowNudgeIsInViewPointsAndNotUndoable_data() {
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<float>("expectedShift");
        QTest::newRow("plain: 1 point = 2 pixels") << int(Qt::NoModifier) << 2.f;
        QTest::newRow("ctrl: 10 points = 20 pixels") << int(Qt::ControlModifier) << 20.f;
    }

    void arrowNudgeIsInViewPointsAndNotUndoable() {
        QFETCH(int, modifiers);
        QFETCH(float, expectedShift);
        view->resize(416, 216);
        show(800, 400);  // shown at half size
        QCOMPARE(view->imageBounds().width, 400.f);
        drag(at(58, 58), at(158, 108));
        QCoreApplication::processEvents();
        const float before = document().cropRect().x;
        const int steps = undo().undoCount();
        QTest::keyClick(view, Qt::Key_Right, Qt::KeyboardModifiers(modifiers));
        QCOMPARE(document().cropRect().x - before, expectedShift);
        QCoreApplication::processEvents();
        QCOMPARE(undo().undoCount(), steps);
    }

    void constraintsHoldTheShapeAndTheScale() {
        show(200, 100);
        FixedConstraint square;
        square.height = square.width = 1;
        view->setConstraint(&square);
        drag(at(110, 110), at(250, 140));
        QCOMPARE(document().cropRect().width, document().cropRect().height);
        QCOMPARE(document().cropRect().width, 30.f);

        FixedConstraint size;
        size.height = 25;
        size.width = 50;
        size.size = true;
        view->setConstraint(&size);
        // Too wide for 1:2, so the width follows the height: 40 x 80 view points.
        drag(at(100, 100), at(200, 140));
        QCOMPARE(document().cropRect().width, 80.f);
        QCOMPARE(controller->scaleFactor(), 0.625f);
    }

    void cursorsFollowTheAreaOrder() {
        show(200, 100);
        drag(at(120, 110), at(220, 160));
        QCOMPARE(view->cursorKindAt({50, 50}), CursorKind::Arrow);
        QCOMPARE(view->cursorKindAt({110, 105}), CursorKind::Cross);
        QCOMPARE(view->cursorKindAt({170, 135}), CursorKind::OpenHand);
        QCOMPARE(view->cursorKindAt({122, 112}), CursorKind::DiagUp);    // lower-left knob
        QCOMPARE(view->cursorKindAt({218, 158}), CursorKind::DiagUp);    // upper-right knob
        QCOMPARE(view->cursorKindAt({218, 112}), CursorKind::DiagDown);  // lower-right knob
        QCOMPARE(view->cursorKindAt({122, 158}), CursorKind::DiagDown);  // upper-left knob
    }

    void paintsTheImageAndTheGreenOutline() {
        show(200, 100);
        drag(at(120, 110), at(220, 160));
        const QImage shot = view->grab().toImage();
        // Widget row of view y = 160 (the selection's top edge) is 300 - 160 = 140.
        QCOMPARE(QColor(shot.pixel(170, 140)), QColor(Qt::green));
        const QColor inside = shot.pixel(150, 180);  // image pixel (50, 80 from the top)
        QVERIFY(qAbs(inside.red() - 50) <= 3);
        QVERIFY(qAbs(inside.green() - 80) <= 3);
    }
};

QTEST_MAIN(TestInputImageView)
#include "tst_InputImageView.moc"
