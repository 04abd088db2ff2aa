#pragma once

#include "platform/Geometry.h"

// The few exact numbers behind the output controls, kept apart from the widgets so that
// they can be checked without a window.
namespace marigold::controls {

// A stepper value after a click: `stepped` is the value one increment away from `previous`;
// the result snaps to a multiple of `increment` in the click's direction (from 13 by 10: up
// gives 20, down gives 10). Integer division truncates toward zero. A non-positive increment
// leaves `stepped` as it is.
int snapStepperValue(int previous, int stepped, int increment);

// The scroll origin that shows a document smaller than the visible area in its middle: on
// each such axis round((document - visible) / 2), which is negative; other axes keep
// `current`. Rounding is half away from zero, so the picture stays on whole points.
PointF centerDocument(PointF current, SizeF document, SizeF visible);

// The origin accepted for a proposed one: centred as above on an axis where the document is
// smaller than the visible area, otherwise clamped to [0, document - visible] and rounded.
PointF constrainScrollPoint(PointF proposed, SizeF document, SizeF visible);

// The output-size step of one wheel click on the scale slider: 10 with Ctrl held, else 1,
// negative when the vertical delta is not above 0; 0 (no step) for a zero delta.
int scaleWheelStep(double verticalDelta, bool ctrlHeld);

// The rotation slider: -180 to 180 degrees with a tick every 45.
inline constexpr int kRotationLimit = 180;
inline constexpr int kRotationTickStep = 45;
// The tick nearest to `degrees`, within the slider's range.
double closestRotationTick(double degrees);
// Whether the rotation slider snaps to its ticks during a press: the setting, turned round
// while Shift is held.
inline bool rotationSnapsToTicks(bool constrain, bool shiftHeld) {
    return constrain != shiftHeld;
}

}  // namespace marigold::controls
