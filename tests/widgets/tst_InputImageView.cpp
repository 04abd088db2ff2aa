#include <QSignalSpy>
#include <QTest>

#include "platform/UndoManager.h"
#include "platform/VipsRuntime.h"
#include "selection/InputImageView.h"
#include "support/TestImages.h"

using namespace marigold;

namespace {

// Records what the view asks of its document.
struct RecordingDelegate : InputViewDelegate {
    UndoManager undo;
    int fastPreviews = 0, fullPreviews = 0, resets = 0;
    bool live = true;
    float scaleWithoutUndo = -1;
    UndoManager& undoManager() override { return undo; }
    void resetControls() override { ++resets; }
    void updatePreview() override { ++fullPreviews; }
    void updatePreviewFast(bool fast) override { fast ? ++fastPreviews : ++fullPreviews; }
    void setScaleFactorWithoutUndo(float f) override { scaleWithoutUndo = f; }
    void setUserResizable(bool) override {}
    bool livePreview() const override { return live; }
    bool openFile(const QString&) override { return false; }
};

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

class TestInputImageView : public QObject {
    Q_OBJECT

private:
    RecordingDelegate* delegate = nullptr;
    InputImageView* view = nullptr;

    // View point (y up) to widget position (y down).
    QPoint at(float x, float y) const { return QPoint(int(x), int(view->height() - y)); }
    void drag(QPoint from, QPoint to) {
        QTest::mousePress(view, Qt::LeftButton, Qt::NoModifier, from);
        QMouseEvent move(QEvent::MouseMove, QPointF(to), view->mapToGlobal(QPointF(to)),
                         Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(view, &move);
        QTest::mouseRelease(view, Qt::LeftButton, Qt::NoModifier, to);
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(startVips("tst_InputImageView")); }

    void init() {
        delegate = new RecordingDelegate;
        view = new InputImageView;
        view->setDelegate(delegate);
        view->resize(400, 300);
    }

    void cleanup() {
        delete view;
        delete delegate;
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
        view->resize(viewW, viewH);
        view->setImage(test::gradientImage(imageW, imageH));
        const RectF b = view->imageBounds();
        QCOMPARE(QRectF(b.x, b.y, b.width, b.height), expected);
    }

    void noImageMeansEmptyBounds() { QCOMPARE(view->imageBounds(), RectF{}); }

    void dragCreatesSelectionWithOneUndoStep() {
        view->setImage(test::gradientImage(200, 100));  // drawn at (100, 100, 200, 100)
        delegate->undo.removeAllActions();
        drag(at(120, 110), at(220, 160));
        const RectF crop = view->cropRect();
        QCOMPARE(crop.x, 20.f);
        QCOMPARE(crop.y, 10.f);
        QCOMPARE(crop.width, 100.f);
        QCOMPARE(crop.height, 50.f);
        QVERIFY(delegate->fastPreviews > 0);
        QCoreApplication::processEvents();
        QCOMPARE(delegate->undo.undoCount(), 1);
        QCOMPARE(delegate->undo.undoActionName(), QStringLiteral("Crop Selection"));
        QCOMPARE(view->state(), InputImageView::Idle);
    }

    void noFastPreviewWithoutLivePreview() {
        delegate->live = false;
        view->setImage(test::gradientImage(200, 100));
        drag(at(120, 110), at(220, 160));
        QCOMPARE(delegate->fastPreviews, 0);
        QVERIFY(delegate->fullPreviews > 0);
    }

    void undoAfterResizeRestoresTheSelectionFromBeforeThePress() {
        view->setImage(test::gradientImage(200, 100));
        drag(at(120, 110), at(220, 160));
        QCoreApplication::processEvents();
        const Marquee first = view->marquee();
        // Grab the upper-right corner (220, 160) and pull it out.
        drag(at(221, 160), at(280, 190));
        QCoreApplication::processEvents();
        QVERIFY(!(view->marquee() == first));
        delegate->undo.undo();
        QCOMPARE(view->marquee(), first);
        delegate->undo.redo();
        QCOMPARE(view->cropRect().width, 160.f);
    }

    void moveKeepsSizeAndStaysInside() {
        view->setImage(test::gradientImage(200, 100));
        drag(at(120, 110), at(170, 160));
        drag(at(140, 130), at(400, 300));  // press inside: move far past the corner
        const RectF crop = view->cropRect();
        QCOMPARE(crop.width, 50.f);
        QCOMPARE(crop.height, 50.f);
        QCOMPARE(crop.x + crop.width, 200.f);
        QCOMPARE(crop.y + crop.height, 100.f);
    }

    void plainClickLeavesEmptySelectionAndOneStep() {
        view->setImage(test::gradientImage(200, 100));
        drag(at(120, 110), at(170, 160));
        QCoreApplication::processEvents();
        delegate->undo.removeAllActions();
        QTest::mouseClick(view, Qt::LeftButton, Qt::NoModifier, at(250, 180));
        QVERIFY(view->marquee().deselected());
        QCoreApplication::processEvents();
        QCOMPARE(delegate->undo.undoCount(), 1);
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
        view->setImage(test::gradientImage(800, 400));  // shown at half size
        QCOMPARE(view->imageBounds().width, 400.f);
        drag(at(58, 58), at(158, 108));
        QCoreApplication::processEvents();
        const float before = view->cropRect().x;
        const int steps = delegate->undo.undoCount();
        QTest::keyClick(view, Qt::Key_Right, Qt::KeyboardModifiers(modifiers));
        QCOMPARE(view->cropRect().x - before, expectedShift);
        QCoreApplication::processEvents();
        QCOMPARE(delegate->undo.undoCount(), steps);
    }

    void squareConstraintGivesSquarePixels() {
        FixedConstraint square;
        square.height = 1;
        square.width = 1;
        view->setConstraint(&square);
        view->setImage(test::gradientImage(200, 100));
        drag(at(110, 110), at(250, 140));
        const RectF crop = view->cropRect();
        QCOMPARE(crop.width, crop.height);
        QCOMPARE(crop.width, 30.f);
    }

    void sizeConstraintSetsTheScaleWithoutUndo() {
        FixedConstraint size;
        size.height = 25;
        size.width = 50;
        size.size = true;
        view->setConstraint(&size);
        view->setImage(test::gradientImage(200, 100));
        // Too wide for 1:2, so the width follows the height: 40 x 80 view points.
        drag(at(100, 100), at(200, 140));
        QCOMPARE(view->cropRect().width, 80.f);
        QCOMPARE(delegate->scaleWithoutUndo, 0.625f);
    }

    void cursorsFollowTheAreaOrder() {
        view->setImage(test::gradientImage(200, 100));
        drag(at(120, 110), at(220, 160));
        QCOMPARE(view->cursorKindAt({50, 50}), CursorKind::Arrow);
        QCOMPARE(view->cursorKindAt({110, 105}), CursorKind::Cross);
        QCOMPARE(view->cursorKindAt({170, 135}), CursorKind::OpenHand);
        QCOMPARE(view->cursorKindAt({122, 112}), CursorKind::DiagUp);    // lower-left knob
        QCOMPARE(view->cursorKindAt({218, 158}), CursorKind::DiagUp);    // upper-right knob
        QCOMPARE(view->cursorKindAt({218, 112}), CursorKind::DiagDown);  // lower-right knob
        QCOMPARE(view->cursorKindAt({122, 158}), CursorKind::DiagDown);  // upper-left knob
    }

    void newImageDeselectsAndShowsItsSize() {
        QLabel sizeText;
        view->setSizeTextField(&sizeText);
        view->setImage(test::gradientImage(200, 100));
        drag(at(120, 110), at(220, 160));
        view->setImage(test::gradientImage(30, 20));
        QVERIFY(view->marquee().deselected());
        QCOMPARE(sizeText.text(), QStringLiteral("30 x 20"));
        QVERIFY(delegate->resets >= 2);
        view->setImage({});
        QCOMPARE(sizeText.text(), QString());
    }

    void previewImagesAreReduced() {
        view->setImage(test::gradientImage(700, 350));
        QCOMPARE(view->previewImage().size().width, 350.f);
        QCOMPARE(view->previewImage().size().height, 175.f);
        view->setImage(test::gradientImage(100, 100));
        QCOMPARE(view->previewImage().pixels().get_image(), view->origImage().pixels().get_image());
    }

    void paintsTheImageAndTheGreenOutline() {
        view->setImage(test::gradientImage(200, 100));
        drag(at(120, 110), at(220, 160));
        const QImage shot = view->grab().toImage();
        // Widget row of view y = 160 (the selection's top edge) is 300 - 160 = 140.
        QCOMPARE(QColor(shot.pixel(170, 140)), QColor(Qt::green));
        const QColor inside = shot.pixel(150, 180);  // image pixel (50, 80 from the top)
        QVERIFY(qAbs(inside.red() - 50) <= 2);
        QVERIFY(qAbs(inside.green() - 80) <= 2);
    }
};

QTEST_MAIN(TestInputImageView)
#include "tst_InputImageView.moc"
