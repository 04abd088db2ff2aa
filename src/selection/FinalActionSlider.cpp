#include "selection/FinalActionSlider.h"

#include <QKeyEvent>

namespace marigold {

FinalActionSlider::FinalActionSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
    // Any change made while the button is down (a drag, or a click that pages along the
    // groove) is a continuous action; values set from outside send nothing.
    connect(this, &QSlider::valueChanged, this, [this](int value) {
        if (_pressed) valueDragged(value);
    });
}

void FinalActionSlider::mousePressEvent(QMouseEvent* event) {
    _pressed = true;
    QSlider::mousePressEvent(event);
}

void FinalActionSlider::mouseReleaseEvent(QMouseEvent* event) {
    QSlider::mouseReleaseEvent(event);
    if (!_pressed) return;
    _pressed = false;
    sendFinalAction();
}

void FinalActionSlider::keyPressEvent(QKeyEvent* event) {
    const int before = value();
    QSlider::keyPressEvent(event);
    if (value() != before) sendFinalAction();
}

void FinalActionSlider::valueDragged(int value) {
    Q_EMIT action(value);
}

void FinalActionSlider::sendFinalAction() {
    _isFinalAction = true;
    Q_EMIT action(value());
    _isFinalAction = false;
}

}  // namespace marigold
