#include <QApplication>
#include <QMouseEvent>
#include <QScrollArea>
#include <QTest>

#include <QFileInfo>
#include <QPrinter>
#include <QTemporaryDir>

#include "output/ImageEncoders.h"
#include "output/OutputImageView.h"
#include "output/OutputViewDelegate.h"
#include "output/PrintOutput.h"
#include "platform/Defaults.h"
#include "platform/VipsRuntime.h"
#include "support/TestImages.h"

using namespace marigold;

namespace {

// The controller side of the view: writes a PNG of a fixed picture into a scratch folder, or
// nothing while the limit is "too low".
class Writer : public OutputViewDelegate, public FileReceiver {
public:
    Writer() : store(dir.filePath(QStringLiteral("settings.ini"))) {
        store.registerDefaults(Defaults::factoryDefaults());
    }
    QString writeTmpFile() override {
        ++writes;
        if (limitKB > 0) return {};
        const QString path = dir.filePath(QStringLiteral("out%1.png").arg(writes));
        return writeToPNGFile(test::photoLikeImage(40, 30), path) ? path : QString();
    }
    void alertIfLimitTooLow() override {
        if (limitKB > 0) ++alerts;
    }
    Defaults& defaults() override { return store; }
    void sendFile(const QString& path) override { sent << path; }

    QTemporaryDir dir;
    Defaults store;
    int limitKB = 0;
    int writes = 0;
    int alerts = 0;
    QStringList sent;
};

// A move with the left button held (QTest's own moves carry no buttons).
void dragTo(QWidget& view, QPoint to) {
    QMouseEvent move(QEvent::MouseMove, to, view.mapToGlobal(to), Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(&view, &move);
}

}  // namespace

class TestOutputImageView : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(startVips("tst_OutputImageView")); }

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

    void aPressHasTheFileWrittenAndADoubleClickSendsOnlyAWrittenOne() {
        Writer writer;
        OutputImageView view;
        view.setDelegate(&writer);
        view.setDoubleClickTarget([&writer] { return &writer; });
        view.resize(300, 200);
        QTest::mousePress(&view, Qt::LeftButton, {}, QPoint(150, 100));
        QCOMPARE(writer.writes, 0);  // nothing shown, nothing to write
        view.setImage(test::photoLikeImage(200, 100));
        // As the window system delivers a double click: a click, then the second press.
        const auto doubleClick = [&view] {
            QTest::mouseClick(&view, Qt::LeftButton, {}, QPoint(150, 100));
            QTest::mouseDClick(&view, Qt::LeftButton, {}, QPoint(150, 100));
        };
        writer.limitKB = 10;  // nothing fits: no file
        doubleClick();
        QVERIFY(view.tmpPath().isEmpty());
        QCOMPARE(writer.sent, QStringList());
        writer.limitKB = 0;
        doubleClick();
        QVERIFY(QFileInfo(view.tmpPath()).isFile());
        QCOMPARE(writer.sent, QStringList{view.tmpPath()});
    }

    void draggingWhenTheLimitCannotBeMetAlertsInsteadOfDragging() {
        Writer writer;
        writer.limitKB = 10;
        OutputImageView view;
        view.setDelegate(&writer);
        view.resize(300, 200);
        view.setToolTip(QStringLiteral("Drag me"));
        view.setImage(test::photoLikeImage(1600, 1200));
        QTest::mousePress(&view, Qt::LeftButton, {}, QPoint(100, 100));
        dragTo(view, QPoint(160, 140));
        QCOMPARE(writer.alerts, 1);
        QCOMPARE(writer.writes, 1);
        QVERIFY(view.toolTip().isEmpty());

        // Without an image a drag does nothing at all.
        view.setImage({});
        QTest::mousePress(&view, Qt::LeftButton, {}, QPoint(100, 100));
        dragTo(view, QPoint(160, 140));
        QCOMPARE(writer.alerts, 1);
        QCOMPARE(writer.writes, 1);
    }

    void aMessageIsShownWhereThereIsNoPicture() {
        OutputImageView view;
        view.resize(300, 200);
        view.setMessage(QStringLiteral("Too large"));
        const QImage blank = view.grab().toImage();
        view.setMessage({});
        QVERIFY2(view.grab().toImage() != blank, "the message is painted");
    }

    void printsInsideTenPointMarginsShrunkButNeverEnlarged_data() {
        QTest::addColumn<QSize>("pixels");
        QTest::addColumn<QRectF>("expected");  // on A4 (595 x 842 points) inside the margins
        const qreal w = 595 - 20, h = 842 - 20;
        QTest::newRow("wide: fills the width, centred") << QSize(3000, 1000)
                                                        << QRectF(0, (h - w / 3) / 2, w, w / 3);
        QTest::newRow("tall: fills the height") << QSize(1000, 4000)
                                                << QRectF((w - h / 4) / 2, 0, h / 4, h);
        QTest::newRow("small: actual size, centred") << QSize(100, 50)
                                                     << QRectF((w - 100) / 2, (h - 50) / 2, 100, 50);
    }

    void printsInsideTenPointMarginsShrunkButNeverEnlarged() {
        QFETCH(QSize, pixels);
        QFETCH(QRectF, expected);
        QTemporaryDir dir;
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(dir.filePath(QStringLiteral("page.pdf")));
        printer.setPageSize(QPageSize(QPageSize::A4));
        printImage(printer, test::gradientImage(pixels.width(), pixels.height()));
        QCOMPARE(printer.pageLayout().margins(QPageLayout::Point), QMarginsF(10, 10, 10, 10));
        const QRectF placed = printedRect(QSizeF(pixels), printer.pageLayout());
        QVERIFY2(std::abs(placed.x() - expected.x()) < 0.5 && std::abs(placed.y() - expected.y()) < 0.5 &&
                     std::abs(placed.width() - expected.width()) < 0.5 &&
                     std::abs(placed.height() - expected.height()) < 0.5,
                 qPrintable(QStringLiteral("placed at %1,%2 %3x%4").arg(placed.x()).arg(placed.y())
                                .arg(placed.width()).arg(placed.height())));
        QVERIFY(QFileInfo(printer.outputFileName()).size() > 1000);
    }
};

QTEST_MAIN(TestOutputImageView)
#include "tst_OutputImageView.moc"
