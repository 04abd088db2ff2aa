#include "output/TempFolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <signal.h>
#include <unistd.h>
#include <cerrno>

namespace marigold {

namespace {

const QString kPrefix = QStringLiteral("com.bluefinch.Marigold-");

bool processRuns(qint64 pid) {
    return kill(pid_t(pid), 0) == 0 || errno == EPERM;
}

bool makePrivateFolder(const QString& path) {
    return QDir().mkdir(path,
                        QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

// A real folder of ours, not a link someone planted in the shared temporary folder.
bool isOwnFolder(const QFileInfo& entry) {
    return entry.isDir() && !entry.isSymLink() && entry.ownerId() == getuid();
}

}  // namespace

TempFolder::TempFolder(QString base) : _base(std::move(base)) {}

QString TempFolder::defaultBase() {
    return QDir::tempPath() + QLatin1Char('/');
}

QString TempFolder::tmpdirString() const {
    return _base + kPrefix + QString::number(QCoreApplication::applicationPid());
}

QString TempFolder::tmpdir() {
    if (!_path.isEmpty()) return _path;
    const QString path = tmpdirString();
    // No intermediate folders, and never someone else's folder of that name in a shared
    // /tmp. One of ours that exists before we made it was left by a dead process with our
    // pid: start afresh.
    if (!makePrivateFolder(path)) {
        if (!isOwnFolder(QFileInfo(path)) || !QDir(path).removeRecursively() ||
            !makePrivateFolder(path)) {
            return {};
        }
    }
    _path = path;
    return _path;
}

bool TempFolder::cleanupTmpdir() {
    // Only the folder this process made: whatever else stands under that name is not ours.
    if (_path.isEmpty()) return !QFileInfo::exists(tmpdirString());
    if (!QDir(_path).removeRecursively()) return false;
    _path.clear();
    return true;
}

QString TempFolder::nextTempSubDir() {
    const QString folder = tmpdir();
    const QString number = QString::number(_counter++);
    if (folder.isEmpty()) return {};
    const QString path = folder + QLatin1Char('/') + number;
    QDir().mkdir(path);
    return path;
}

QString TempFolder::pathForImageNamed(const QString& name, const QString& extension) {
    const QString folder = nextTempSubDir();
    if (folder.isEmpty()) return {};
    // The name is the document's, typed freely: it must stay one file name in the folder.
    QString safe = name;
    safe.replace(QLatin1Char('/'), QLatin1Char('-')).remove(QChar(0));
    if (safe.isEmpty() || safe == QLatin1String(".") || safe == QLatin1String("..")) {
        safe = QStringLiteral("untitled");
    }
    return folder + QLatin1Char('/') + safe + QLatin1Char('.') + extension;
}

int TempFolder::removeStaleTmpdirs(const QString& base) {
    static const QRegularExpression pattern(
        QStringLiteral("^") + QRegularExpression::escape(kPrefix) + QStringLiteral("(\\d+)$"));
    int removed = 0;
    const auto entries = QDir(base).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden);
    for (const QFileInfo& entry : entries) {
        const auto match = pattern.match(entry.fileName());
        if (!match.hasMatch() || !isOwnFolder(entry)) continue;
        if (processRuns(match.captured(1).toLongLong())) continue;
        if (QDir(entry.filePath()).removeRecursively()) ++removed;
    }
    return removed;
}

}  // namespace marigold
