#include <gtest/gtest.h>

#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMimeData>
#include <QProcess>
#include <QUrl>

#include <unistd.h>

#include "platform/Clipboard.h"
#include "platform/DefaultsKeys.h"
#include "support/ControllerFixture.h"

namespace marigold {
namespace {

using namespace keys;

class DocumentCommands : public AppControllerTest {
protected:
    // A photograph-like JPEG opened from disk and fully selected.
    QString openPhoto(int w = 400, int h = 300) {
        const QString path = test::writeJpeg(test::photoLikeImage(w, h), dir.path(), QStringLiteral("photo.jpg"));
        EXPECT_TRUE(controller.openFile(path));
        finishPass();
        controller.selectAll();
        finishPass();
        return path;
    }
    QByteArray contents(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    vips::VImage decoded(const QString& path) {
        return vips::VImage::new_from_file(path.toLocal8Bit().constData());
    }
};

TEST(SaveNames, TheOutputsExtensionReplacesARecognisedOneOrIsAppended) {
    const struct {
        const char* typed;
        int format;
        const char* saved;
    } cases[] = {
        {"picture.jpg", 102, "picture.png"}, {"picture", 102, "picture.png"},
        {"photo.jpeg", 101, "photo.jpeg.jpg"}, {"photo.PNG", 101, "photo.jpg"},
        {"scan.TIF", 104, "scan.gif"}, {"scan.tiff", 103, "scan.tiff.tif"},
        {"my.holiday.gif", 0, "my.holiday.jpg"}, {"notes.txt", 105, "notes.txt.jpg"},
        {".png", 101, ".png.jpg"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(AppController::userEnteredFilename(QString::fromUtf8(c.typed), c.format).toStdString(),
                  c.saved);
    }
}

TEST_F(DocumentCommands, SavingWritesTheOutputWithTheFormatsExtension) {
    openPhoto();
    defaults.setInteger(DefFileFormat, 102);
    controller.savePanelDidEnd(true, dir.filePath(QStringLiteral("picture.jpg")));
    const QString saved = dir.filePath(QStringLiteral("picture.png"));
    ASSERT_TRUE(QFileInfo::exists(saved));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("picture.jpg"))));
    const vips::VImage back = decoded(saved);
    EXPECT_EQ(back.width(), 400);
    EXPECT_EQ(back.height(), 300);
    EXPECT_EQ(test::difference(back, output.image().pixels().extract_band(0, vips::VImage::option()->set("n", 3))).max(), 0);
    controller.savePanelDidEnd(false, dir.filePath(QStringLiteral("cancelled.png")));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("cancelled.png"))));
}

TEST_F(DocumentCommands, ASavedFileStaysInTheChosenFolderWhateverItsName) {
    openPhoto();
    defaults.setInteger(DefFileFormat, 102);
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("Pictures")));
    controller.savePanelDidEnd(true, dir.filePath(QStringLiteral("Pictures/.jpg")));
    EXPECT_TRUE(QFileInfo::exists(dir.filePath(QStringLiteral("Pictures/.jpg.png"))));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("Pictures.png"))));

    // A document name with slashes still names one file in a folder of its own.
    controller.setDocumentName(QStringLiteral("../../2024/05 trip"));
    const QString written = output.writeTmpFile();
    EXPECT_EQ(QFileInfo(written).fileName(), QStringLiteral("..-..-2024-05 trip.png"));
    EXPECT_TRUE(written.startsWith(controller.tmpdir() + QLatin1Char('/')));
    EXPECT_TRUE(QFileInfo(written).isFile());
}

TEST_F(DocumentCommands, SavingOverAFileReplacesItInOneStep) {
    openPhoto();
    defaults.setInteger(DefFileFormat, 102);
    const QString target = dir.filePath(QStringLiteral("picture.png"));
    const QString otherName = dir.filePath(QStringLiteral("link-to-old"));
    QFile old(target);
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("the old file");
    old.close();
    // A second name for the old file keeps seeing the old bytes: the new file was renamed
    // into place, not written into the old one (which a crash half-way would have ruined).
    ASSERT_EQ(::link(qPrintable(target), qPrintable(otherName)), 0);
    controller.savePanelDidEnd(true, target);
    EXPECT_EQ(contents(otherName), QByteArray("the old file"));
    EXPECT_EQ(decoded(target).width(), 400);
}

TEST_F(DocumentCommands, AnUnreachableLimitAlertsAndWritesNothing) {
    openPhoto(1600, 1200);
    defaults.setInteger(DefFileFormat, 101);
    defaults.setBool(DefLimitFilesize, true);
    defaults.setInteger(DefFilesizeLimit, 10);
    controller.setScaleFactor(1.0f);
    const QString target = dir.filePath(QStringLiteral("big.jpg"));
    controller.savePanelDidEnd(true, target);
    ASSERT_EQ(alerts.size(), 1);
    EXPECT_EQ(alerts.first(),
              QStringLiteral("File Size Limit Too Low|Unable to keep file under 10 KB.\nPlease turn "
                             "off file size limit or increase the limit and try again."));
    EXPECT_FALSE(QFileInfo::exists(target));
}

TEST_F(DocumentCommands, EveryWriteGetsAFolderOfItsOwnAndUnknownFormatsAreJpeg) {
    openPhoto();
    controller.setDocumentName(QStringLiteral("holiday"));
    QStringList paths;
    for (int format : {101, 0, 105, 102, 103, 104}) {
        defaults.setInteger(DefFileFormat, format);
        paths << output.writeTmpFile();
    }
    const QStringList names = {"holiday.jpg", "holiday.jpg", "holiday.jpg", "holiday.png", "holiday.tif", "holiday.gif"};
    QSet<QString> folders;
    for (int i = 0; i < paths.size(); ++i) {
        const QFileInfo file(paths[i]);
        EXPECT_EQ(file.fileName(), names[i]);
        EXPECT_TRUE(file.isFile() && file.size() > 0) << paths[i].toStdString();
        EXPECT_EQ(file.dir().absolutePath(), QDir(controller.tmpdir()).filePath(QString::number(i)));
        folders << file.dir().path();
    }
    EXPECT_EQ(folders.size(), paths.size());
    EXPECT_TRUE(output.writer()->isCacheValid());
    output.setImage(output.image());
    EXPECT_FALSE(output.writer()->isCacheValid());
}

TEST_F(DocumentCommands, MetadataTravelsAsTheSettingSays) {
    const QString source = openPhoto();
    ASSERT_EQ(std::system(qPrintable(QStringLiteral("exiftool -q -overwrite_original -Make=Marigold-Test '%1'").arg(source))), 0);
    const auto makeIn = [](const QString& path) {
        QProcess tool;
        tool.start(QStringLiteral("exiftool"), {QStringLiteral("-s3"), QStringLiteral("-Make"), path});
        tool.waitForFinished();
        return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
    };
    const struct {
        int preserve, format;
        bool carriesMake;
    } cases[] = {
        {0, 101, false}, {0, 103, false},
        // TIFF keeps the metadata for any non-zero setting; a JPEG with 1 gets the source's
        // EXIF block copied over as it is.
        {1, 103, true}, {1, 101, true},
        {2, 101, true}, {2, 103, true}, {2, 102, false}, {2, 104, false},
    };
    for (const auto& c : cases) {
        defaults.setInteger(DefPreserveExif, c.preserve);
        defaults.setInteger(DefFileFormat, c.format);
        const QString path = output.writeTmpFile();
        EXPECT_EQ(makeIn(path) == QStringLiteral("Marigold-Test"), c.carriesMake)
            << "PreserveExif " << c.preserve << " format " << c.format;
    }
    // With 1, a JPEG goes through the transplant, given the source and the new file.
    QStringList copied;
    output.writer()->copyExif = [&](const QString& from, const QString& to) { copied << from << to; };
    defaults.setInteger(DefPreserveExif, 1);
    defaults.setInteger(DefFileFormat, 101);
    const QString jpeg = output.writeTmpFile();
    EXPECT_EQ(copied, (QStringList{source, jpeg}));
}

TEST_F(DocumentCommands, NonsenseSettingsAndAVanishedSourceStillSave) {
    const QString source = openPhoto();
    defaults.setObject(QString(DefFileFormat), QStringLiteral("banana"));
    defaults.setObject(QString(DefJpegQuality), -40);
    defaults.setInteger(DefPreserveExif, 2);
    // The source is gone by the time of saving: the output is in memory, only its
    // metadata cannot be read any more.
    ASSERT_TRUE(QFile::remove(source));
    const QString target = dir.filePath(QStringLiteral("saved"));
    controller.savePanelDidEnd(true, target);
    const QString saved = target + QStringLiteral(".jpg");
    ASSERT_TRUE(QFileInfo::exists(saved));
    EXPECT_EQ(decoded(saved).width(), 400);
    EXPECT_TRUE(alerts.isEmpty());
}

TEST_F(DocumentCommands, CopyPutsThePixelsAndTheWrittenFileOnTheClipboard) {
    openPhoto();
    defaults.setInteger(DefFileFormat, 102);
    controller.copyOutputImage();
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    ASSERT_TRUE(data);
    ASSERT_EQ(data->urls().size(), 1);
    const QString file = data->urls().first().toLocalFile();
    EXPECT_TRUE(file.startsWith(controller.tmpdir()));
    EXPECT_EQ(QFileInfo(file).fileName(), QStringLiteral("photo.png"));
    EXPECT_EQ(decoded(file).width(), 400);
    const std::optional<Image> pasted = imageFromClipboard();
    ASSERT_TRUE(pasted);
    EXPECT_EQ(pasted->pixelsWide(), 400);
}

TEST_F(DocumentCommands, PasteMakesAnUntitledDocumentOnePointPerPixel) {
    const QString path = openPhoto();
    ASSERT_TRUE(controller.canRevert());
    QImage highResolution(120, 80, QImage::Format_RGB32);
    highResolution.fill(Qt::darkCyan);
    highResolution.setDotsPerMeterX(11811);  // 300 dpi
    highResolution.setDotsPerMeterY(11811);
    QGuiApplication::clipboard()->setImage(highResolution);
    controller.paste();
    finishPass();
    EXPECT_EQ(input.image().size().width, 120.0f);
    EXPECT_EQ(input.image().size().height, 80.0f);
    EXPECT_EQ(controller.documentName(), QStringLiteral("untitled"));
    EXPECT_TRUE(controller.sourcePath().isEmpty());
    EXPECT_FALSE(controller.canRevert());

    // Text only: nothing changes.
    QGuiApplication::clipboard()->setText(QStringLiteral("not a picture"));
    controller.paste();
    EXPECT_EQ(input.image().pixelsWide(), 120);
}

TEST_F(DocumentCommands, RevertReloadsTheFileAndDiscardKeepsTheName) {
    const QString path = openPhoto();
    controller.setScaleFactor(0.5f);
    finishPass();
    controller.revert();
    finishPass();
    EXPECT_EQ(controller.scaleFactor(), 1.0f);
    EXPECT_EQ(input.image().pixelsWide(), 400);

    controller.discardImage();
    EXPECT_TRUE(input.image().isNull());
    EXPECT_TRUE(output.image().isNull());
    EXPECT_EQ(controller.documentName(), QStringLiteral("photo"));
    EXPECT_EQ(controller.sourcePath(), path);

    QFile::remove(path);
    EXPECT_FALSE(controller.canRevert());
    controller.revert();
    EXPECT_TRUE(input.image().isNull());
}

TEST_F(DocumentCommands, TheLastOpenedDocumentCanBeOpenedAgain) {
    const QString path = openPhoto();
    ASSERT_FALSE(controller.recentDocuments().recentDocuments().isEmpty());
    EXPECT_EQ(controller.recentDocuments().recentDocuments().first(), path);
    controller.discardImage();
    controller.openLastDocument();
    EXPECT_EQ(input.image().pixelsWide(), 400);
}

TEST_F(DocumentCommands, TheTitleScrollsANameOutOfItself) {
    QWidget* window = input.window();
    window->setWindowTitle(QStringLiteral("Marigold - ab"));
    QStringList titles;
    QTimer timer;
    timer.start(100000);
    for (int i = 0; i < 4; ++i) {
        controller.animateTitle(&timer);
        titles << window->windowTitle();
    }
    EXPECT_EQ(titles, (QStringList{"Marigold - b", "Marigold", "Marigold", "Marigold"}));
    EXPECT_FALSE(timer.isActive());
}

}  // namespace
}  // namespace marigold
