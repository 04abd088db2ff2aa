#pragma once

#include "selection/FinalActionSlider.h"

namespace marigold {

// The JPEG quality slider: a wheel click moves it by one and is a final action of its own.
class QualitySlider : public FinalActionSlider {
    Q_OBJECT

public:
    using FinalActionSlider::FinalActionSlider;

protected:
    void wheelEvent(QWheelEvent* event) override;
};

}  // namespace marigold
