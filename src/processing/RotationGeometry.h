#pragma once

#include "platform/Geometry.h"

namespace marigold {

// Where a picture turned by `degrees` (counter-clockwise, y up) lands: the canvas just large
// enough for it, and the shift, applied in the turned frame, that moves the turned picture's
// bounding box onto the canvas's origin. One of four cases by the angle, tested in order:
// [0, 90], [90, 180], [-90, 0], anything else.
struct RotatedCanvas {
    SizeF size;  // before truncation to whole pixels
    PointF translation;
};
RotatedCanvas rotatedCanvas(SizeF image, double degrees);

// Whether `degrees` is a whole number of quarter turns, drawn without resampling.
bool isQuarterTurn(double degrees);

}  // namespace marigold
