#include "output/TempFolder.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include "support/ToolsAndFiles.h"

namespace marigold {
namespace {

QString base(const QTemporaryDir& dir) { return dir.path() + QLatin1Char('/'); }

TEST(TempFolder, OnePrivateFolderPerProcessWithNumberedSubFolders) {
    QTemporaryDir dir;
    TempFolder folder(base(dir));
    const QString expected = base(dir) + "com.bluefinch.Marigold-" +
                             QString::number(QCoreApplication::applicationPid());
    EXPECT_EQ(folder.tmpdirString(), expected);
    EXPECT_EQ(folder.tmpdir(), expected);
    EXPECT_EQ(QFileInfo(expected).permissions() & 0x0077, 0) << "only the owner may enter";
    EXPECT_EQ(folder.pathForImageNamed("a", "png"), expected + "/0/a.png");
    EXPECT_EQ(folder.pathForImageNamed("a", "png"), expected + "/1/a.png");
    EXPECT_TRUE(QFileInfo(expected + "/1").isDir());
    test::writeFile(expected + "/1/a.png");
    EXPECT_TRUE(folder.cleanupTmpdir());
    EXPECT_FALSE(QFileInfo::exists(expected));
    EXPECT_TRUE(folder.cleanupTmpdir()) << "nothing left to remove is success";
}

TEST(TempFolder, AnUnusableBaseGivesNoFolderAndIsTriedAgain) {
    QTemporaryDir dir;
    TempFolder folder(base(dir) + "missing/");
    EXPECT_TRUE(folder.tmpdir().isEmpty());
    EXPECT_TRUE(folder.pathForImageNamed("a", "png").isEmpty())
        << "never a path at the top of the file system";
    ASSERT_TRUE(QDir(dir.path()).mkdir("missing"));
    EXPECT_FALSE(folder.tmpdir().isEmpty());
}

TEST(TempFolder, LeftoversOfOurPidAreReplacedButNeverSomeoneElsesLink) {
    QTemporaryDir dir, elsewhere;
    TempFolder folder(base(dir));
    ASSERT_TRUE(QDir().mkdir(folder.tmpdirString()));
    test::writeFile(folder.tmpdirString() + "/old");
    EXPECT_EQ(folder.tmpdir(), folder.tmpdirString());
    EXPECT_FALSE(QFileInfo::exists(folder.tmpdirString() + "/old"));

    QTemporaryDir other;
    TempFolder planted(base(other));
    test::writeFile(elsewhere.filePath("precious"));
    ASSERT_TRUE(QFile::link(elsewhere.path(), planted.tmpdirString()));
    EXPECT_TRUE(planted.tmpdir().isEmpty());
    EXPECT_FALSE(planted.cleanupTmpdir()) << "not ours to remove";
    EXPECT_TRUE(QFileInfo::exists(elsewhere.filePath("precious")));
}

TEST(TempFolder, FoldersOfProcessesThatNoLongerRunAreRemoved) {
    QTemporaryDir dir;
    const QString prefix = base(dir) + "com.bluefinch.Marigold-";
    // Above the largest pid Linux hands out, so surely not running; pid 1 always runs.
    const QString dead = prefix + "4194305";
    const QString alive = prefix + "1";
    const QString unrelated = base(dir) + "com.bluefinch.Marigold-notes";
    for (const QString& path : {dead, alive, unrelated}) ASSERT_TRUE(QDir().mkdir(path));
    test::writeFile(dead + "/left.jpg");
    EXPECT_EQ(TempFolder::removeStaleTmpdirs(base(dir)), 1);
    EXPECT_FALSE(QFileInfo::exists(dead));
    EXPECT_TRUE(QFileInfo::exists(alive));
    EXPECT_TRUE(QFileInfo::exists(unrelated));
}

}  // namespace
}  // namespace marigold
