#include "selection/ScaleSlider.h"

#include <QTimer>
#include <QWheelEvent>

#include "selection/ControlArithmetic.h"

namespace marigold {

ScaleSlider::ScaleSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
    _clock.start();
}

void ScaleSlider::mousePressEvent(QMouseEvent* event) {
    _actionCount = 0;
    QSlider::mousePressEvent(event);
}

void ScaleSlider::mouseReleaseEvent(QMouseEvent* event) {
    QSlider::mouseReleaseEvent(event);
    // After whatever the release itself changed has been handled.
    QTimer::singleShot(0, this, [this] {
        if (_updatePreview) _updatePreview();
    });
}

void ScaleSlider::wheelEvent(QWheelEvent* event) {
    event->accept();
    const int step = controls::scaleWheelStep(event->angleDelta().y(),
                                              event->modifiers().testFlag(Qt::ControlModifier));
    if (step == 0) return;
    if (_scaleImageByPixels) _scaleImageByPixels(step);
    _lastScrollWheel = _clock.elapsed();
    if (!_timerActive) {
        _timerActive = true;
        QTimer::singleShot(kSettleMsec, this, &ScaleSlider::_check);
    }
}

// One closing call per burst: the timer keeps coming back until the wheel has rested.
void ScaleSlider::_check() {
    if (_clock.elapsed() - _lastScrollWheel > kRestMsec) {
        _timerActive = false;
        if (_scaleImageByPixels) _scaleImageByPixels(0);
        return;
    }
    QTimer::singleShot(kSettleMsec, this, &ScaleSlider::_check);
}

}  // namespace marigold
