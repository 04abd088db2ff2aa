#include <QScrollArea>
#include <QSignalSpy>
#include <QTest>

#include "output/OutputImageView.h"
#include "platform/VipsRuntime.h"
#include "support/TestImages.h"

using namespace marigold;

class TestOutputImageView : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(startVips("tst_OutputImageView")); }

    void reportsThePixelSizeOfItsImage() {
        OutputImageView view;
        QSignalSpy spy(&view, &OutputImageView::pixelSizeChanged);
        view.setImage(test::gradientImage(30, 20).withSize({333.5f, 99.4f}));
        QCOMPARE(spy.last(), (QList<QVariant>{334, 99}));
        view.setImage({});
        QCOMPARE(spy.last(), (QList<QVariant>{0, 0}));
    }

    void shrinksToFitButNeverEnlarges_data() {
        QTest::addColumn<int>("imageW");
        QTest::addColumn<int>("imageH");
        QTest::addColumn<QRectF>("expected");
        QTest::newRow("small: actual size, centred") << 100 << 50 << QRectF(150, 125, 100, 50);
        QTest::newRow("wide: fitted to width") << 800 << 200 << QRectF(0, 100, 400, 100);
        QTest::newRow("tall: fitted to height") << 300 << 600 << QRectF(125, 0, 150, 300);
    }

    void shrinksToFitButNeverEnlarges() {
        QFETCH(int, imageW);
        QFETCH(int, imageH);
        QFETCH(QRectF, expected);
        OutputImageView view;
        view.resize(400, 300);
        view.setImage(test::gradientImage(imageW, imageH));
        QCOMPARE(view.imageRect(), expected);
    }

    void actualPixelsScrolls() {
        QScrollArea scroll;
        auto* view = new OutputImageView;
        scroll.setWidget(view);
        scroll.setWidgetResizable(true);
        scroll.resize(300, 200);
        view->setImageScaling(OutputImageView::None);
        view->setImage(test::gradientImage(900, 700));
        QCOMPARE(view->size(), QSize(900, 700));
        QCOMPARE(view->imageRect(), QRectF(0, 0, 900, 700));
        view->setImageScaling(OutputImageView::ProportionallyDown);
        scroll.show();
        QVERIFY(QTest::qWaitForWindowExposed(&scroll));
        QVERIFY(view->width() <= 300);
    }

    void previewLimitIsTheVisibleAreaNotTheLastImage() {
        QScrollArea scroll;
        auto* view = new OutputImageView;
        scroll.setWidget(view);
        scroll.setWidgetResizable(true);
        scroll.resize(320, 240);
        scroll.show();
        QVERIFY(QTest::qWaitForWindowExposed(&scroll));
        view->setImage(test::gradientImage(20, 10));
        const QSize limit = view->displayPixelLimit();
        QCOMPARE(limit, scroll.viewport()->size() * view->devicePixelRatio());
    }

    void paintsTheImage() {
        OutputImageView view;
        view.resize(200, 200);
        view.setImage(test::gradientImage(100, 100));
        const QImage shot = view.grab().toImage();
        const QColor pixel = shot.pixel(50 + 10, 50 + 20);  // image pixel (10, 20)
        QCOMPARE(pixel.red(), 10);
        QCOMPARE(pixel.green(), 20);
        QCOMPARE(pixel.blue(), 30);
    }
};

QTEST_MAIN(TestOutputImageView)
#include "tst_OutputImageView.moc"
