#include "output/FileSizeText.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace marigold {
namespace {

TEST(FileSizeText, PowersOf1024UnderTheFamiliarLabels) {
    const std::pair<qint64, const char*> cases[] = {
        {0, "0 bytes"},          {-5, "0 bytes"},          {1, "1 bytes"},
        {1023, "1023 bytes"},    {1024, "1 KB"},           {1535, "1 KB"},
        {1536, "2 KB"},          {1048575, "1024 KB"},     {1048576, "1.0 MB"},
        {1572864, "1.5 MB"},     {1073741823, "1024.0 MB"}, {1073741824, "1.00 GB"},
        {5368709120, "5.00 GB"},
        // Exact halves go to the even neighbour, as printf rounds them (they read "3 KB",
        // "1.3 MB" and "1.13 GB" once).
        {2560, "2 KB"},          {1310720, "1.2 MB"},      {1207959552, "1.12 GB"},
    };
    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(stringWithFilesize(bytes).toStdString(), text) << bytes;
    }
}

TEST(FileSizeText, FoldersSumWhatIsInsideThem) {
    QTemporaryDir dir;
    const auto write = [&](const QString& name, int bytes) {
        QFile file(dir.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(bytes, 'x'));
    };
    ASSERT_TRUE(QDir(dir.path()).mkpath(QStringLiteral("a/b")));
    write(QStringLiteral("one"), 100);
    write(QStringLiteral("a/two"), 20);
    write(QStringLiteral("a/b/three"), 3);
    EXPECT_EQ(fileSizeAtPath(dir.filePath(QStringLiteral("one"))), 100);
    EXPECT_EQ(fileSizeAtPath(dir.path()), 123);
    EXPECT_EQ(fileSizeAtPath(dir.filePath(QStringLiteral("missing"))), 0);
}

}  // namespace
}  // namespace marigold
