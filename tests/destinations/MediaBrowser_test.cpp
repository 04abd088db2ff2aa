#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "destinations/MediaBrowser.h"

namespace marigold {
namespace {

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The running helpers started with this working copy's document, found as the system sees
// them.
int helpersRunningFor(const QString& installedPath) {
    int count = 0;
    for (const QString& pid : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        const QByteArray commandLine = readAll(QStringLiteral("/proc/%1/cmdline").arg(pid));
        if (commandLine.contains(installedPath.toUtf8() + "/document.wflow") &&
            !readAll(QStringLiteral("/proc/%1/stat").arg(pid)).contains(") Z ")) {
            ++count;
        }
    }
    return count;
}

TEST(MediaBrowserTest, TheApplicationPathGoesInBeforeTheTitle) {
    const QString text = MediaBrowser::workflowWithWindowTitle(
        QStringLiteral("Photos for BF_APPLICATION_PATH"), QStringLiteral("/opt/BF_WINDOW_TITLE"));
    EXPECT_TRUE(text.contains(QStringLiteral("Title=Photos for BF_APPLICATION_PATH\n")))
        << text.toStdString();
    EXPECT_TRUE(text.contains(QStringLiteral("Application=/opt/Photos for BF_APPLICATION_PATH\n")))
        << "a title is never expanded again, an application path is: " << text.toStdString();
}

TEST(MediaBrowserTest, AnExistingWorkingCopyIsReusedAndOnlyItsDocumentRewritten) {
    QTemporaryDir dir;
    const QString copy = dir.filePath(QStringLiteral("MediaBrowser"));
    ASSERT_TRUE(QDir().mkpath(copy));
    QFile kept(copy + QStringLiteral("/kept"));
    ASSERT_TRUE(kept.open(QIODevice::WriteOnly));
    kept.close();
    QFile stale(copy + QStringLiteral("/document.wflow"));
    ASSERT_TRUE(stale.open(QIODevice::WriteOnly) && stale.write("stale") == 5);
    stale.close();

    const auto browser =
        MediaBrowser::create(dir.path(), QStringLiteral("Drag photo"), QStringLiteral("/bin/true"));
    ASSERT_TRUE(browser);
    EXPECT_EQ(browser->installedPath(), copy);
    EXPECT_TRUE(QFile::exists(copy + QStringLiteral("/kept")));
    EXPECT_TRUE(readAll(copy + QStringLiteral("/document.wflow")).contains("Title=Drag photo"));

    QFile blocker(dir.filePath(QStringLiteral("blocked")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    EXPECT_FALSE(MediaBrowser::create(blocker.fileName(), QStringLiteral("x"),
                                      QStringLiteral("/bin/true")))
        << "a working folder that is a file";
}

TEST(MediaBrowserTest, OpeningAgainEndsTheRunningBrowserAndClosingWaitsForIt) {
    QTemporaryDir dir;
    const auto browser = MediaBrowser::create(dir.path(), QStringLiteral("Photos"),
                                              QStringLiteral(MARIGOLD_PHOTOS_HELPER));
    ASSERT_TRUE(browser);
    browser->open();
    EXPECT_TRUE(browser->isOpen());
    browser->open();
    EXPECT_TRUE(browser->isOpen());
    EXPECT_EQ(helpersRunningFor(browser->installedPath()), 1);
    browser->close();
    EXPECT_FALSE(browser->isOpen());
    EXPECT_EQ(helpersRunningFor(browser->installedPath()), 0);
}

}  // namespace
}  // namespace marigold
