#include "output/FileSizeText.h"

#include <QDir>
#include <QFileInfo>
#include <cstdio>

namespace marigold {

namespace {

// The C library's printf, not QString::asprintf: Qt rounds exact halves away from zero, where
// printf rounds them to even ("2 KB" for 2560 bytes).
QString printed(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return QString::fromLatin1(text);
}

}  // namespace

QString stringWithFilesize(qint64 bytes) {
    const qint64 count = std::max<qint64>(bytes, 0);
    constexpr qint64 KB = 1024, MB = KB * 1024, GB = MB * 1024;
    if (count >= GB) return printed("%0.2f GB", double(count) / double(GB));
    if (count >= MB) return printed("%0.1f MB", double(count) / double(MB));
    if (count >= KB) return printed("%0.0f KB", double(count) / double(KB));
    return QString::number(count) + QStringLiteral(" bytes");
}

qint64 fileSizeAtPath(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists()) return 0;
    if (!info.isDir() || info.isSymLink()) return info.size();
    qint64 sum = 0;
    const auto entries = QDir(path).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                                  QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : entries) sum += fileSizeAtPath(entry.filePath());
    return sum;
}

}  // namespace marigold
