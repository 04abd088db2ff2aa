#include "platform/ChildProcess.h"

#include <QCoreApplication>
#include <QDir>

namespace marigold {

namespace {

constexpr int kEndWaitMsec = 3000;

}  // namespace

ChildProcess::ChildProcess(QObject* parent) : QObject(parent) {}

ChildProcess::~ChildProcess() {
    stop();
}

QString ChildProcess::besideExecutable(const QString& name) {
    return QDir(QCoreApplication::applicationDirPath()).filePath(name);
}

bool ChildProcess::start(const QString& program, const QStringList& arguments) {
    stop();
    _process = new QProcess(this);
    // Its messages go where ours go; only its standard output is read.
    _process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QProcess* process = _process;
    connect(process, &QProcess::readyReadStandardOutput, this, [this, process] {
        while (process->canReadLine()) {
            Q_EMIT lineWritten(QString::fromUtf8(process->readLine()).chopped(1));
        }
    });
    connect(process, &QProcess::finished, this,
            [this, process](int code, QProcess::ExitStatus how) {
                if (process != _process) return;
                _process = nullptr;
                process->deleteLater();
                // Qt gives the signal's number as the code of a child a signal ended.
                Q_EMIT exited(how == QProcess::CrashExit ? 128 + code : code);
            });
    process->start(program, arguments);
    if (process->waitForStarted()) return true;
    _process = nullptr;
    process->deleteLater();
    return false;
}

void ChildProcess::stop() {
    QProcess* process = _process;
    if (!process) return;
    _process = nullptr;
    process->disconnect(this);
    if (process->state() != QProcess::NotRunning) {
        process->terminate();
        if (!process->waitForFinished(kEndWaitMsec)) {
            process->kill();
            process->waitForFinished(kEndWaitMsec);
        }
    }
    delete process;
}

bool ChildProcess::isRunning() const {
    return _process && _process->state() == QProcess::Running;
}

}  // namespace marigold
