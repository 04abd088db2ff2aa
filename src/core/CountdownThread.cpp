#include "core/CountdownThread.h"

#include <QTimer>
#include <cmath>

#include "core/AppController.h"

namespace marigold {

CountdownThread::CountdownThread(AppController& controller, QDateTime shootTime)
    : _controller(controller), _shootTime(std::move(shootTime)) {}

void CountdownThread::run() {
    QMetaObject::invokeMethod(&_controller, [controller = &_controller] {
        Q_EMIT controller->countdownChanged(QString());
    });
    QTimer timer;
    timer.setInterval(1000);
    QObject::connect(&timer, &QTimer::timeout, &timer, [this] { _tick(); }, Qt::DirectConnection);
    timer.start();
    exec();
}

void CountdownThread::_tick() {
    const int remaining =
        int(std::lround(double(QDateTime::currentDateTime().msecsTo(_shootTime)) / 1000));
    if (remaining >= 4) return;
    AppController* controller = &_controller;
    if (remaining >= 1) {
        QMetaObject::invokeMethod(controller, [controller, remaining] {
            Q_EMIT controller->countdownChanged(QString::number(remaining));
        });
        return;
    }
    QMetaObject::invokeMethod(
        controller, [controller] { controller->captureAtCountdownEnd(); },
        Qt::BlockingQueuedConnection);
    quit();
}

}  // namespace marigold
