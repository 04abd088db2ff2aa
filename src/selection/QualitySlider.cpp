#include "selection/QualitySlider.h"

#include <QWheelEvent>

namespace marigold {

void QualitySlider::wheelEvent(QWheelEvent* event) {
    const int delta = event->angleDelta().y();
    if (delta == 0) {
        event->ignore();
        return;
    }
    setValue(value() + (delta > 0 ? 1 : -1));
    sendFinalAction();
    event->accept();
}

}  // namespace marigold
