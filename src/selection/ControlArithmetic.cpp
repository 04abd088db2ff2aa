#include "selection/ControlArithmetic.h"

#include <algorithm>
#include <cmath>

namespace marigold::controls {

namespace {

// The origin on one axis; `visible > document` is what makes it centred.
float constrainedAxis(float proposed, float document, float visible) {
    if (visible > document) return std::round((document - visible) / 2);
    return std::round(std::max(std::min(proposed, document - visible), 0.0f));
}

}  // namespace

int snapStepperValue(int previous, int stepped, int increment) {
    if (increment <= 0) return stepped;
    if (stepped > previous) return stepped / increment * increment;
    return (stepped - 1 + increment) / increment * increment;
}

PointF centerDocument(PointF current, SizeF document, SizeF visible) {
    PointF origin = current;
    if (visible.width > document.width) origin.x = std::round((document.width - visible.width) / 2);
    if (visible.height > document.height) {
        origin.y = std::round((document.height - visible.height) / 2);
    }
    return origin;
}

PointF constrainScrollPoint(PointF proposed, SizeF document, SizeF visible) {
    return {constrainedAxis(proposed.x, document.width, visible.width),
            constrainedAxis(proposed.y, document.height, visible.height)};
}

int scaleWheelStep(double verticalDelta, bool ctrlHeld) {
    if (verticalDelta == 0) return 0;
    const int step = ctrlHeld ? 10 : 1;
    return verticalDelta > 0 ? step : -step;
}

double closestRotationTick(double degrees) {
    const double tick = std::round(degrees / kRotationTickStep) * kRotationTickStep;
    return std::clamp(tick, double(-kRotationLimit), double(kRotationLimit));
}

}  // namespace marigold::controls
