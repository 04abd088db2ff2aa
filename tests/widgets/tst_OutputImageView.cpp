#include <QApplication>
#include <QDir>
#include <QMouseEvent>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTest>

#include <QFileInfo>
#include <QLabel>
#include <QPdfWriter>
#include <QPrinter>
#include <QTemporaryDir>

#include "output/OutputImageView.h"
#include "output/OutputViewDelegate.h"
#include "output/TempFolder.h"
#include "platform/Defaults.h"
#include "platform/DefaultsKeys.h"
#include "platform/VipsRuntime.h"
#include "support/TestImages.h"

using namespace marigold;

namespace {

// The document side of the view: settings in a scratch store, files in a scratch folder.
class Document : public OutputViewDelegate, public FileReceiver {
public:
    Document() : store(dir.filePath(QStringLiteral("settings.ini"))), folder(dir.path() + QLatin1Char('/')) {
        store.registerDefaults(Defaults::factoryDefaults());
    }
    Defaults& defaults() override { return store; }
    TempFolder& tempFolder() override { return folder; }
    QString filename() override { return QStringLiteral("out"); }
    int fileFormat() const override { return format; }
    int compression() const override { return 80; }
    bool hasFilesizeLimit() const override { return limitKB > 0; }
    QString filesizeLimit() const override { return QString::number(limitKB); }
    std::optional<Metadata> metadata() const override { return std::nullopt; }
    QString sourcePath() const override { return {}; }
    void sendFile(const QString& path) override { sent << path; }

    QTemporaryDir dir;
    Defaults store;
    TempFolder folder;
    int format = 102;
    int limitKB = 0;
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

    void aPressWritesTheFileAndShowsItsSize() {
        Document document;
        OutputImageView view;
        QLabel label;
        view.setFilesizeLabel(&label);
        view.setDelegate(&document);
        view.resize(300, 200);
        view.setImage(test::photoLikeImage(200, 100));
        QTest::mousePress(&view, Qt::LeftButton, {}, QPoint(150, 100));
        const QFileInfo file(view.tmpPath());
        QVERIFY(file.isFile());
        QCOMPARE(file.fileName(), QStringLiteral("out.png"));
        QVERIFY(!label.text().isEmpty());
        QVERIFY(label.text().endsWith(QStringLiteral("KB")));
        // A new output: the size shown no longer applies.
        view.setImage(test::photoLikeImage(100, 100));
        QVERIFY(label.text().isEmpty());
    }

    void aDoubleClickSendsOnlyAFileThatWasWritten() {
        Document document;
        OutputImageView view;
        view.setDelegate(&document);
        view.setDoubleClickTarget([&document] { return &document; });
        view.resize(300, 200);
        view.setImage(test::photoLikeImage(1600, 1200));
        document.format = 101;
        document.limitKB = 10;  // nothing this noisy fits: no file
        // As the window system delivers a double click: a click, then the second press.
        const auto doubleClick = [&view] {
            QTest::mouseClick(&view, Qt::LeftButton, {}, QPoint(150, 100));
            QTest::mouseDClick(&view, Qt::LeftButton, {}, QPoint(150, 100));
        };
        doubleClick();
        QVERIFY(view.tmpPath().isEmpty());
        QCOMPARE(document.sent, QStringList());
        document.limitKB = 0;
        doubleClick();
        QVERIFY(!view.tmpPath().isEmpty());
        QCOMPARE(document.sent, QStringList{view.tmpPath()});
    }

    void draggingWhenTheLimitCannotBeMetAlertsInsteadOfDragging() {
        Document document;
        document.format = 101;
        document.limitKB = 10;
        OutputImageView view;
        QStringList alerts;
        view.showAlert = [&](const QString& title, const QString& text) { alerts << title << text; };
        view.setDelegate(&document);
        view.resize(300, 200);
        view.setToolTip(QStringLiteral("Drag me"));
        view.setImage(test::photoLikeImage(1600, 1200));
        QTest::mousePress(&view, Qt::LeftButton, {}, QPoint(100, 100));
        dragTo(view, QPoint(160, 140));
        QCOMPARE(alerts, (QStringList{QStringLiteral("File Size Limit Too Low"),
                                      QStringLiteral("Unable to keep file under 10 KB.\nPlease turn off "
                                                     "file size limit or increase the limit.")}));
        QVERIFY(view.toolTip().isEmpty());
        QVERIFY(!QDir(document.folder.tmpdir() + QStringLiteral("/0")).entryList(QDir::Files).size());

        // Without an image a drag does nothing at all.
        alerts.clear();
        view.setImage({});
        QTest::mousePress(&view, Qt::LeftButton, {}, QPoint(100, 100));
        dragTo(view, QPoint(160, 140));
        QVERIFY(alerts.isEmpty());
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
        OutputImageView view;
        view.setImage(test::gradientImage(pixels.width(), pixels.height()));
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(dir.filePath(QStringLiteral("page.pdf")));
        printer.setPageSize(QPageSize(QPageSize::A4));
        view.printImage(printer);
        QCOMPARE(printer.pageLayout().margins(QPageLayout::Point), QMarginsF(10, 10, 10, 10));
        const QRectF placed = view.printedRect(printer.pageLayout());
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
