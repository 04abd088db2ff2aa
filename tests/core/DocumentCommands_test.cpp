#include <gtest/gtest.h>

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QTimer>

#include "support/ControllerFixture.h"

namespace marigold {
namespace {

using DocumentCommands = AppControllerTest;

TEST_F(DocumentCommands, PasteMakesAnUntitledDocumentOnePointPerPixel) {
    open(test::photoLikeImage(400, 300));
    ASSERT_TRUE(controller.canRevert());
    QImage highResolution(120, 80, QImage::Format_RGB32);
    highResolution.fill(Qt::darkCyan);
    highResolution.setDotsPerMeterX(11811);  // 300 dpi
    highResolution.setDotsPerMeterY(11811);
    QGuiApplication::clipboard()->setImage(highResolution);
    controller.paste();
    finishPass();
    EXPECT_EQ(document().image().size(), (SizeF{120, 80}));
    EXPECT_EQ(controller.documentName(), QStringLiteral("untitled"));
    EXPECT_TRUE(controller.sourcePath().isEmpty());
    EXPECT_FALSE(controller.canRevert());

    // Text only: nothing changes but a beep.
    QGuiApplication::clipboard()->setText(QStringLiteral("not a picture"));
    controller.paste();
    EXPECT_EQ(document().image().pixelsWide(), 120);
    EXPECT_EQ(window.beeps, 1);
}

TEST_F(DocumentCommands, RevertReloadsTheFileAndDiscardKeepsTheName) {
    const QString path = open(test::photoLikeImage(400, 300));
    controller.setScaleFactor(0.5f);
    finishPass();
    controller.revert();
    finishPass();
    EXPECT_EQ(controller.scaleFactor(), 1.0f);
    EXPECT_EQ(document().image().pixelsWide(), 400);

    controller.discardImage();
    EXPECT_FALSE(document().hasImage());
    EXPECT_TRUE(preview.isNull());
    EXPECT_EQ(controller.documentName(), QStringLiteral("photo"));
    EXPECT_EQ(controller.sourcePath(), path);

    QFile::remove(path);
    EXPECT_FALSE(controller.canRevert());
    controller.revert();
    EXPECT_FALSE(document().hasImage());
}

TEST_F(DocumentCommands, TheLastOpenedDocumentCanBeOpenedAgain) {
    const QString path = open(test::photoLikeImage(400, 300));
    ASSERT_FALSE(controller.recentDocuments().recentDocuments().isEmpty());
    EXPECT_EQ(controller.recentDocuments().recentDocuments().first(), path);
    controller.discardImage();
    controller.openLastDocument();
    EXPECT_EQ(document().image().pixelsWide(), 400);
}

TEST_F(DocumentCommands, TheTitleScrollsANameOutOfItself) {
    controller.setTitle(QStringLiteral("Marigold - ab"));
    QStringList titles;
    QTimer timer;
    timer.start(100000);
    for (int i = 0; i < 3; ++i) {
        controller.animateTitle(&timer);
        titles << controller.title();
    }
    EXPECT_EQ(titles, (QStringList{"Marigold - b", "Marigold", "Marigold"}));
    EXPECT_FALSE(timer.isActive());
}

}  // namespace
}  // namespace marigold
