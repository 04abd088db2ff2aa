#include "selection/QualitySlider.h"

#include <QKeyEvent>
#include <QWheelEvent>

namespace marigold {

QualitySlider::QualitySlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
    // Any change made while the button is down (a drag, or a click that pages along the
    // groove) is a continuous action; values set from outside send nothing.
    connect(this, &QSlider::valueChanged, this, [this](int value) {
        if (_pressed) Q_EMIT action(value);
    });
}

void QualitySlider::mousePressEvent(QMouseEvent* event) {
    _pressed = true;
    QSlider::mousePressEvent(event);
}

void QualitySlider::mouseReleaseEvent(QMouseEvent* event) {
    QSlider::mouseReleaseEvent(event);
    if (!_pressed) return;
    _pressed = false;
    _sendFinalAction();
}

void QualitySlider::wheelEvent(QWheelEvent* event) {
    const int delta = event->angleDelta().y();
    if (delta == 0) {
        event->ignore();
        return;
    }
    setValue(value() + (delta > 0 ? 1 : -1));
    _sendFinalAction();
    event->accept();
}

void QualitySlider::keyPressEvent(QKeyEvent* event) {
    const int before = value();
    QSlider::keyPressEvent(event);
    if (value() != before) _sendFinalAction();
}

void QualitySlider::_sendFinalAction() {
    _isFinalAction = true;
    Q_EMIT action(value());
    _isFinalAction = false;
}

}  // namespace marigold
