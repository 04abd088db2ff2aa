#pragma once

#include <QString>

namespace marigold {

// "0 bytes", "1023 bytes", "1 KB", "1.0 MB", "1.00 GB": powers of 1024 under the familiar
// labels, as file browsers of the platform the format came from show them.
QString stringWithFilesize(qint64 bytes);

// A file's size, or for a folder the sum over everything inside it; 0 when unreadable.
qint64 fileSizeAtPath(const QString& path);

}  // namespace marigold
