#include "selection/RotateSlider.h"

#include <QKeyEvent>
#include <QMouseEvent>

#include "selection/ControlArithmetic.h"

namespace marigold {

RotateSlider::RotateSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
    setRange(-controls::kRotationLimit, controls::kRotationLimit);
    setTickInterval(controls::kRotationTickStep);
    setTickPosition(QSlider::TicksBelow);
    setPageStep(controls::kRotationTickStep);
    setConstrain(false);
    // A drag moves the value through every degree; with ticks only, it jumps between ticks.
    connect(this, &QSlider::valueChanged, this, [this](int value) {
        if (!_pressed) return;
        if (_ticksOnly) {
            const int tick = int(controls::closestRotationTick(value));
            if (tick != value) {
                setValue(tick);
                return;
            }
        }
        Q_EMIT action(value);
    });
}

void RotateSlider::setConstrain(bool constrain) {
    _constrain = constrain;
    setToolTip(constrain ? tr("To rotate freely, hold down the Shift key then slide.")
                         : tr("To rotate with constraint, hold down the Shift key then slide"));
}

void RotateSlider::mousePressEvent(QMouseEvent* event) {
    if (!isEnabled()) return;
    _ticksOnly =
        controls::rotationSnapsToTicks(_constrain, event->modifiers().testFlag(Qt::ShiftModifier));
    _pressed = true;
    QSlider::mousePressEvent(event);
}

void RotateSlider::mouseReleaseEvent(QMouseEvent* event) {
    QSlider::mouseReleaseEvent(event);
    if (!_pressed) return;
    _pressed = false;
    _sendFinalAction();
}

void RotateSlider::keyPressEvent(QKeyEvent* event) {
    const int before = value();
    QSlider::keyPressEvent(event);
    if (value() != before) _sendFinalAction();
}

void RotateSlider::_sendFinalAction() {
    _isFinalAction = true;
    Q_EMIT action(value());
    _isFinalAction = false;
}

}  // namespace marigold
