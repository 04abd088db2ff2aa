#pragma once

#include <QDateTime>
#include <QThread>

namespace marigold {

class AppController;

// The timed capture's countdown, on a thread of its own with a one-second timer. It touches
// the controller only through calls queued to the main thread: the last three seconds' text,
// and at zero the capture, which it waits to see started before it ends.
class CountdownThread : public QThread {
    Q_OBJECT

public:
    CountdownThread(AppController& controller, QDateTime shootTime);

protected:
    void run() override;

private:
    void _tick();

    AppController& _controller;
    const QDateTime _shootTime;
};

}  // namespace marigold
