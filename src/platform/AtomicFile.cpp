#include "platform/AtomicFile.h"

#include <QFile>
#include <QSaveFile>

namespace marigold {

namespace {

bool fail(QString* error, const QString& reason) {
    if (error) *error = reason;
    return false;
}

}  // namespace

bool writeFileAtomically(const QString& path, const QByteArray& data, QString* error) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return fail(error, file.errorString());
    if (file.write(data) != data.size()) return fail(error, file.errorString());
    if (!file.commit()) return fail(error, file.errorString());
    return true;
}

bool copyFileAtomically(const QString& from, const QString& to, QString* error) {
    QFile source(from);
    if (!source.open(QIODevice::ReadOnly)) return fail(error, source.errorString());
    QSaveFile target(to);
    if (!target.open(QIODevice::WriteOnly)) return fail(error, target.errorString());
    QByteArray chunk;
    while (!(chunk = source.read(1 << 20)).isEmpty()) {
        if (target.write(chunk) != chunk.size()) return fail(error, target.errorString());
    }
    if (source.error() != QFileDevice::NoError) return fail(error, source.errorString());
    if (!target.commit()) return fail(error, target.errorString());
    return true;
}

}  // namespace marigold
