#include "output/FileSizeText.h"

#include <QDir>
#include <QFileInfo>

namespace marigold {

QString stringWithFilesize(qint64 bytes) {
    const qint64 count = std::max<qint64>(bytes, 0);
    constexpr qint64 KB = 1024, MB = KB * 1024, GB = MB * 1024;
    if (count >= GB) return QString::asprintf("%0.2f GB", double(count) / double(GB));
    if (count >= MB) return QString::asprintf("%0.1f MB", double(count) / double(MB));
    if (count >= KB) return QString::asprintf("%0.0f KB", double(count) / double(KB));
    return QString::asprintf("%lld bytes", static_cast<long long>(count));
}

qint64 fileSizeAtPath(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists()) return 0;
    if (!info.isDir() || info.isSymLink()) return info.size();
    qint64 sum = 0;
    const auto entries =
        QDir(path).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : entries) sum += fileSizeAtPath(entry.filePath());
    return sum;
}

}  // namespace marigold
