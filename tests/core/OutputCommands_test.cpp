#include <gtest/gtest.h>

#include <QClipboard>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QGuiApplication>
#include <QMimeData>
#include <QUrl>

#include <unistd.h>

#include "output/FileSizeText.h"
#include "platform/Clipboard.h"
#include "platform/DefaultsKeys.h"
#include "support/ControllerFixture.h"
#include "support/ToolsAndFiles.h"

namespace marigold {
namespace {

using namespace keys;

using test::exiftool;
using test::exiftoolTag;

vips::VImage decoded(const QString& path) { return test::vipsDecode(test::readFile(path)); }

// One tag as exiftool reads it from `path`, numbers as numbers.
QString tagIn(const QString& path, const char* tag) {
    return exiftool({"-s3", "-n", QLatin1Char('-') + QLatin1String(tag), path}).trimmed();
}

class OutputCommands : public AppControllerTest {};

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

// Undo back to 100 % left a reduced fast preview on screen, and Copy encoded that: 539 x 440.
TEST_F(OutputCommands, EveryWayOutIsRenderedFromTheFullResolutionDocument) {
    open(test::photoLikeImage(2725, 2225));
    defaults.setInteger(DefFileFormat, 102);
    controller.setScaleFactorPercent(50);
    finishPass();
    controller.undoManager().undo();
    ASSERT_EQ(controller.pixelWidth(), 2725);
    ASSERT_LT(preview.pixelsWide(), 2725) << "the preview on screen is a reduced one";

    controller.copyOutputImage();
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    ASSERT_TRUE(data && data->urls().size() == 1);
    const QString copied = data->urls().first().toLocalFile();
    EXPECT_EQ(decoded(copied).width(), 2725);
    EXPECT_EQ(imageFromClipboard()->pixelsWide(), 2725);

    window.saveTarget = dir.filePath(QStringLiteral("saved.png"));
    controller.saveDocumentAs();
    const vips::VImage saved = decoded(window.saveTarget);
    ASSERT_EQ(saved.width(), 2725);
    ASSERT_EQ(saved.height(), 2225);
    const vips::VImage source = decoded(controller.sourcePath());
    EXPECT_EQ(test::difference(saved, source).max(), 0) << "a 100 % PNG keeps every pixel";
    controller.print();
    EXPECT_EQ(window.printed.pixelsWide(), 2725);
}

TEST_F(OutputCommands, AWrittenFileIsReusedUntilTheDocumentOrASettingChanges) {
    open(test::photoLikeImage(300, 200));
    controller.setDocumentName(QStringLiteral("holiday"));
    const QString first = controller.writeTmpFile();
    EXPECT_EQ(controller.writeTmpFile(), first);
    EXPECT_EQ(window.busyChanges, (QList<bool>{true, false})) << "written once";
    const std::vector<std::pair<const char*, std::function<void()>>> changes = {
        {"format", [&] { controller.setFileFormat(102); }},
        {"format behind the setters' back", [&] { defaults.setInteger(DefFileFormat, 104); }},
        {"quality", [&] { controller.setFileFormat(101), controller.setQuality(QStringLiteral("55")); }},
        {"scale", [&] { controller.setScaleFactor(0.5f); }},
        {"selection", [&] { controller.deselect(), controller.selectAll(); }},
        {"sharpening", [&] { controller.setSharpen(!controller.sharpen()); }},
        {"name", [&] { controller.setDocumentName(QStringLiteral("trip")); }},
    };
    QStringList paths{first};
    for (const auto& [what, change] : changes) {
        change();
        const QString path = controller.writeTmpFile();
        EXPECT_FALSE(paths.contains(path)) << what;
        EXPECT_TRUE(QFileInfo(path).isFile()) << what;
        paths << path;
    }
    EXPECT_EQ(QFileInfo(paths[2]).fileName(), QStringLiteral("holiday.gif"));
    EXPECT_EQ(QFileInfo(paths.last()).fileName(), QStringLiteral("trip.jpg"));
    // Each file keeps a folder of its own, named by a counter, under the private folder.
    QSet<QString> folders;
    for (const QString& path : paths) {
        const QFileInfo folder(QFileInfo(path).absolutePath());
        EXPECT_EQ(folder.absolutePath(), QDir(controller.tmpdir()).absolutePath());
        bool number = false;
        folder.fileName().toUInt(&number);
        EXPECT_TRUE(number) << qPrintable(path);
        folders << folder.fileName();
    }
    EXPECT_EQ(folders.size(), paths.size());
}

TEST_F(OutputCommands, SavingWritesTheFormatsExtensionInTheChosenFolderReplacingInOneStep) {
    open(test::photoLikeImage(400, 300));
    defaults.setInteger(DefFileFormat, 102);
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("Pictures")));
    const QString target = dir.filePath(QStringLiteral("Pictures/picture.png"));
    const QString otherName = dir.filePath(QStringLiteral("link-to-old"));
    test::writeFile(target, "the old file");
    // A second name for the old file keeps seeing the old bytes: the new file was renamed
    // into place, not written into the old one (which a crash half-way would have ruined).
    ASSERT_EQ(::link(qPrintable(target), qPrintable(otherName)), 0);
    controller.savePanelDidEnd(true, dir.filePath(QStringLiteral("Pictures/picture.jpg")));
    EXPECT_EQ(test::readFile(otherName), QByteArray("the old file"));
    EXPECT_EQ(decoded(target).width(), 400);
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("Pictures/picture.jpg"))));

    controller.savePanelDidEnd(true, dir.filePath(QStringLiteral("Pictures/.jpg")));
    EXPECT_TRUE(QFileInfo::exists(dir.filePath(QStringLiteral("Pictures/.jpg.png"))));
    controller.savePanelDidEnd(false, dir.filePath(QStringLiteral("cancelled.png")));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("cancelled.png"))));

    // A document name with slashes still names one file in a folder of its own.
    controller.setDocumentName(QStringLiteral("../../2024/05 trip"));
    const QString written = controller.writeTmpFile();
    EXPECT_EQ(QFileInfo(written).fileName(), QStringLiteral("..-..-2024-05 trip.png"));
    EXPECT_TRUE(written.startsWith(controller.tmpdir() + QLatin1Char('/')));
}

// The label shows the size of the very file a save then copies, made in the background, and
// the quality the search chose under a limit (ImageMagick reads it back from the tables).
TEST_F(OutputCommands, TheLiveSizeIsTheFileASaveWrites) {
    open(test::photoLikeImage(1200, 900));
    const std::vector<std::pair<const char*, std::function<void()>>> choices = {
        {"png", [&] { controller.setFileFormat(102); }},
        {"gif", [&] { controller.setFileFormat(104); }},
        {"jpeg 40", [&] { controller.setFileFormat(101), controller.setQuality("40"); }},
        {"limit 50 KB", [&] { controller.setLimitFilesize(true), controller.setFilesizeLimit("50"); }},
    };
    for (const auto& [what, choose] : choices) {
        choose();
        const QString label = waitForFilesizeText();
        window.busyChanges.clear();
        const QString path = controller.writeTmpFile();
        EXPECT_TRUE(window.busyChanges.isEmpty()) << what << ": the background file is reused";
        const QString size = stringWithFilesize(QFileInfo(path).size());
        if (controller.hasFilesizeLimit()) {
            const QString quality = test::runTool("identify", {"-format", "%Q", path}).trimmed();
            EXPECT_EQ(label, size + QStringLiteral(" at quality ") + quality) << what;
            EXPECT_LT(QFileInfo(path).size(), 50 * 1024);
        } else {
            EXPECT_EQ(label, size) << what;
        }
    }
}

// A file still being written when the output changed is neither shown nor kept.
TEST_F(OutputCommands, AFileStartedBeforeAChangeIsNeitherShownNorKept) {
    open(test::photoLikeImage(1600, 1200));
    controller.setFileFormat(102);
    finishPass();
    controller.setFileFormat(104);
    const QString label = waitForFilesizeText();
    const QString path = controller.writeTmpFile();
    EXPECT_TRUE(path.endsWith(QStringLiteral(".gif")));
    EXPECT_EQ(label, stringWithFilesize(QFileInfo(path).size()));
    QDirIterator files(controller.tmpdir(), QDir::Files, QDirIterator::Subdirectories);
    QStringList kept;
    while (files.hasNext()) kept << files.next();
    EXPECT_EQ(kept, QStringList{path}) << "files nobody was given are removed";
}

TEST_F(OutputCommands, AnUnreachableLimitIsAnnouncedAndAlertsAndWritesNothing) {
    open(test::photoLikeImage(1600, 1200));
    controller.setLimitFilesize(true);
    controller.setFilesizeLimit(QStringLiteral("10"));
    EXPECT_EQ(waitForFilesizeText(),
              QStringLiteral("File Size Limit Too Low: unable to keep file under 10 KB"));
    const QString target = dir.filePath(QStringLiteral("big.jpg"));
    controller.savePanelDidEnd(true, target);
    ASSERT_EQ(window.alerts.size(), 1);
    EXPECT_EQ(window.alerts.first(),
              QStringLiteral("File Size Limit Too Low|Unable to keep file under 10 KB.\nPlease turn "
                             "off file size limit or increase the limit and try again."));
    EXPECT_FALSE(QFileInfo::exists(target));
    EXPECT_TRUE(controller.limitTooLow());
    // A drag that found no file says the same, in its own words.
    controller.alertIfLimitTooLow();
    EXPECT_EQ(window.alerts.last(),
              QStringLiteral("File Size Limit Too Low|Unable to keep file under 10 KB.\nPlease turn "
                             "off file size limit or increase the limit."));
}

TEST_F(OutputCommands, MetadataTravelsAsTheSettingSaysAndAlwaysSaysUpright) {
    const QString source = test::writeJpeg(test::photoLikeImage(400, 300), dir.path(),
                                           QStringLiteral("camera.jpg"));
    exiftoolTag(source, {"-Make=Marigold-Test", "-Orientation#=6"});
    ASSERT_TRUE(controller.openFile(source));
    controller.selectAll();
    const struct {
        int preserve, format;
        bool carriesMake;
    } cases[] = {
        {0, 101, false}, {0, 103, false},
        // TIFF keeps the metadata for any non-zero setting; a JPEG with 1 gets the source's
        // EXIF block.
        {1, 103, true}, {1, 101, true},
        {2, 101, true}, {2, 103, true}, {2, 102, false}, {2, 104, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "PreserveExif " << c.preserve << " format " << c.format);
        defaults.setInteger(DefPreserveExif, c.preserve);
        defaults.setInteger(DefFileFormat, c.format);
        const QString path = controller.writeTmpFile();
        EXPECT_EQ(tagIn(path, "Make") == QStringLiteral("Marigold-Test"), c.carriesMake);
        const QString orientation = tagIn(path, "Orientation");
        EXPECT_TRUE(orientation.isEmpty() || orientation == QStringLiteral("1")) << orientation.toStdString();
        // Shown upright, written upright: 300 wide, 400 high.
        EXPECT_EQ(decoded(path).width(), 300);
    }
}

// "PreserveExif" 1 added the EXIF block after the search: a limit of 3111 bytes gave 5571.
TEST_F(OutputCommands, ASizeLimitCoversTheCarriedMetadata) {
    const QString thumbnail = test::writeJpeg(test::photoLikeImage(160, 120), dir.path(),
                                              QStringLiteral("thumbnail.jpg"));
    const QString source = open(test::photoLikeImage(800, 600), QStringLiteral("camera.jpg"));
    exiftoolTag(source, {"-Make=Marigold-Test", "-ThumbnailImage<=" + thumbnail});
    defaults.setInteger(DefFileFormat, 101);
    defaults.setBool(DefLimitFilesize, true);
    controller.setScaleFactor(0.25f);
    for (int preserve : {1, 2}) {
        defaults.setInteger(DefPreserveExif, preserve);
        for (int limit = 10; limit <= 60; limit += 5) {
            SCOPED_TRACE(testing::Message() << "PreserveExif " << preserve << ", " << limit << " KB");
            controller.setFilesizeLimit(QString::number(limit));
            const QString path = controller.writeTmpFile();
            if (path.isEmpty()) {
                EXPECT_TRUE(controller.limitTooLow());
                continue;
            }
            EXPECT_LT(QFileInfo(path).size(), limit * 1024);
            EXPECT_EQ(tagIn(path, "Make"), QStringLiteral("Marigold-Test"));
        }
    }
}

TEST_F(OutputCommands, NonsenseSettingsAndAVanishedSourceStillSave) {
    const QString source = open(test::photoLikeImage(400, 300));
    defaults.setObject(QString(DefFileFormat), QStringLiteral("banana"));
    defaults.setObject(QString(DefJpegQuality), -40);
    defaults.setInteger(DefPreserveExif, 2);
    // The source is gone by the time of saving: the picture is in memory, only its
    // metadata cannot be read any more.
    ASSERT_TRUE(QFile::remove(source));
    const QString target = dir.filePath(QStringLiteral("saved"));
    controller.savePanelDidEnd(true, target);
    EXPECT_EQ(decoded(target + QStringLiteral(".jpg")).width(), 400);
    EXPECT_TRUE(window.alerts.isEmpty());
}

}  // namespace
}  // namespace marigold
