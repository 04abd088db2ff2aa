#pragma once

#include <QByteArray>
#include <QString>

namespace marigold {

// Whole-file writes that either replace the target completely or leave it as it was:
// the bytes go to a temporary file beside the target, which is renamed over it only once
// everything is on disk. `error` (optional) receives a one-line reason on failure.
bool writeFileAtomically(const QString& path, const QByteArray& data, QString* error = nullptr);
bool copyFileAtomically(const QString& from, const QString& to, QString* error = nullptr);

}  // namespace marigold
