#include "selection/ArrowKeys.h"

namespace marigold::arrowkeys {

bool isArrowKey(int key) {
    return key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_Left ||
           key == Qt::Key_Right;
}

PointF translation(int key, Qt::KeyboardModifiers modifiers) {
    const float step = modifiers.testFlag(Qt::ControlModifier) ? 10 : 1;
    switch (key) {
        case Qt::Key_Up: return {0, step};
        case Qt::Key_Down: return {0, -step};
        case Qt::Key_Left: return {-step, 0};
        case Qt::Key_Right: return {step, 0};
        default: return {0, 0};
    }
}

}  // namespace marigold::arrowkeys
