#pragma once

#include <Qt>

#include "platform/Geometry.h"

namespace marigold::arrowkeys {

bool isArrowKey(int key);

// The nudge of an arrow key in view points (y up): 10 with Ctrl held, else 1; (0, 0) for
// any other key.
PointF translation(int key, Qt::KeyboardModifiers modifiers);

}  // namespace marigold::arrowkeys
