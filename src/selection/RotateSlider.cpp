#include "selection/RotateSlider.h"

#include <QMouseEvent>

#include "selection/ControlArithmetic.h"

namespace marigold {

RotateSlider::RotateSlider(QWidget* parent) : FinalActionSlider(parent) {
    setRange(-controls::kRotationLimit, controls::kRotationLimit);
    setTickInterval(controls::kRotationTickStep);
    setTickPosition(QSlider::TicksBelow);
    setPageStep(controls::kRotationTickStep);
    setConstrain(false);
}

void RotateSlider::setConstrain(bool constrain) {
    _constrain = constrain;
    setToolTip(constrain ? tr("To rotate freely, hold down the Shift key then slide.")
                         : tr("To rotate with constraint, hold down the Shift key then slide"));
}

void RotateSlider::mousePressEvent(QMouseEvent* event) {
    if (!isEnabled()) return;
    _ticksOnly = controls::rotationSnapsToTicks(_constrain,
                                                event->modifiers().testFlag(Qt::ShiftModifier));
    FinalActionSlider::mousePressEvent(event);
}

// With ticks only, a drag jumps from tick to tick.
void RotateSlider::valueDragged(int value) {
    const int tick = int(controls::closestRotationTick(value));
    if (_ticksOnly && tick != value) {
        setValue(tick);
        return;
    }
    FinalActionSlider::valueDragged(value);
}

}  // namespace marigold
