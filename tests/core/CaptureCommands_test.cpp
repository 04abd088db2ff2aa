#include <QDir>

#include "platform/DefaultsKeys.h"
#include "support/ControllerFixture.h"

namespace marigold {
namespace {

using Kind = AppController::CaptureKind;

TEST(CaptureArguments, EachCommandAsksForItsCaptureAndSilenceComesLast) {
    const struct {
        Kind kind;
        bool sound;
        const char* arguments;
    } cases[] = {
        {Kind::Selection, true, "-i"},       {Kind::Selection, false, "-i -x"},
        {Kind::Window, true, "-i -W -o"},    {Kind::Window, false, "-i -W -o -x"},
        {Kind::Screen, true, "-m"},          {Kind::Screen, false, "-m -x"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(AppController::screenCaptureArguments(c.kind, c.sound).join(QLatin1Char(' ')),
                  QString::fromUtf8(c.arguments));
    }
}

using CaptureTest = AppControllerTest;

TEST_F(CaptureTest, AMissingHelperIsNamedAndTheWindowComesBack) {
    window.leaveScreen();
    // The tests' folder holds no helper beside the test program.
    controller.runScreenCapture({QStringLiteral("-m")});
    ASSERT_EQ(window.alerts.size(), 1);
    EXPECT_TRUE(window.alerts.first().startsWith(QStringLiteral("Error|Screen capture utility (")));
    EXPECT_TRUE(window.alerts.first().endsWith(
        QStringLiteral("marigold-screencapture) cannot be found.|Okay")));
    EXPECT_TRUE(window.onScreen);
}

TEST_F(CaptureTest, ACaptureOpensAsScreenshotStampedAsAskedAndRevertsToTheFileItself) {
    const QString path = QDir(controller.tmpdir()).filePath(QStringLiteral("screenshot.png"));
    ASSERT_TRUE(test::gradientImage(400, 300).toQImage().save(path));
    defaults.setInteger(keys::DefTimeStamp, 1);
    ASSERT_TRUE(controller.loadScreenCapture(path));
    EXPECT_EQ(document().name(), QStringLiteral("screenshot"));
    EXPECT_EQ(document().image().pixelsWide(), 400);
    EXPECT_GT(document().image().pixelsHigh(), 300) << "the stamp's band below it";
    ASSERT_TRUE(controller.canRevert());
    controller.revert();
    EXPECT_EQ(document().image().pixelsHigh(), 300);
    EXPECT_FALSE(controller.loadScreenCapture(dir.filePath(QStringLiteral("none.png"))))
        << "no file: a cancelled capture";
    EXPECT_EQ(document().name(), QStringLiteral("screenshot"));
}

}  // namespace
}  // namespace marigold
