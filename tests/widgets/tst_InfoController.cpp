#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include "jpeg/InfoController.h"
#include "platform/Defaults.h"
#include "platform/VipsRuntime.h"
#include "support/TestImages.h"

using namespace marigold;

class TestInfoController : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(startVips("tst_InfoController")); }

    void followsThePathItIsGivenAndKeepsItsFrame() {
        QTemporaryDir dir;
        Defaults defaults(dir.filePath(QStringLiteral("settings.ini")));
        const QString photo = test::writeJpeg(test::photoLikeImage(64, 48), dir.path(), QStringLiteral("shot.jpg"));
        QCOMPARE(QProcess::execute(QStringLiteral("exiftool"),
                                   {QStringLiteral("-q"), QStringLiteral("-overwrite_original"),
                                    QStringLiteral("-Make=PanelCam"), photo}),
                 0);
        InfoController window(defaults);
        QCOMPARE(window.fieldText(QStringLiteral("Name")), QStringLiteral("dunno"));

        window.setPath(photo);
        window.showWindow();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(window.fieldText(QStringLiteral("Name")), QStringLiteral("shot"));
        QCOMPARE(window.fieldText(QStringLiteral("Camera make")), QStringLiteral("PanelCam"));
        QCOMPARE(window.fieldText(QStringLiteral("Width")), QStringLiteral("64 pixels"));

        // No file there: the window keeps showing what it showed.
        window.setPath(dir.filePath(QStringLiteral("gone.jpg")));
        QCOMPARE(window.fieldText(QStringLiteral("Camera make")), QStringLiteral("PanelCam"));

        window.move(40, 50);
        window.hide();
        QVERIFY(!defaults.stringForKey(QStringLiteral("InfoWindow")).isEmpty());
    }
};

QTEST_MAIN(TestInfoController)
#include "tst_InfoController.moc"
