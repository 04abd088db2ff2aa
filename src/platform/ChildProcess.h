#pragma once

#include <QObject>
#include <QProcess>
#include <QStringList>

namespace marigold {

// A helper program run as a child of this process: started, stopped (and waited for), asked
// whether it runs; each line it writes on its standard output is reported.
class ChildProcess : public QObject {
    Q_OBJECT

public:
    explicit ChildProcess(QObject* parent = nullptr);
    ~ChildProcess() override;

    bool start(const QString& program, const QStringList& arguments);
    // Asks it to end, and waits until it has; a child that will not end is killed. Nothing is
    // reported of a child stopped here.
    void stop();
    bool isRunning() const;

    // The program `name` installed beside the running executable.
    static QString besideExecutable(const QString& name);

Q_SIGNALS:
    void lineWritten(const QString& line);
    // As a shell says it: the exit status, or 128 and the signal that ended it.
    void exited(int status);

private:
    QProcess* _process = nullptr;
};

}  // namespace marigold
