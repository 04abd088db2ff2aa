#pragma once

#include "selection/FinalActionSlider.h"

namespace marigold {

// The rotation slider, -180 to 180 degrees with a tick every 45. Whether a press snaps to
// the ticks is the `constrain` setting, turned round while Shift is held.
class RotateSlider : public FinalActionSlider {
    Q_OBJECT

public:
    explicit RotateSlider(QWidget* parent = nullptr);

    bool constrain() const { return _constrain; }
    // Also says in the tool tip how Shift changes it.
    void setConstrain(bool constrain);
    // Whether the values between the ticks are skipped.
    bool allowsTickMarkValuesOnly() const { return _ticksOnly; }
    void setAllowsTickMarkValuesOnly(bool ticksOnly) { _ticksOnly = ticksOnly; }

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void valueDragged(int value) override;

private:
    bool _constrain = false;
    bool _ticksOnly = false;
};

}  // namespace marigold
