#pragma once

#include <QSlider>

namespace marigold {

// The rotation slider, -180 to 180 degrees with a tick every 45. Whether a press snaps to
// the ticks is the `constrain` setting, turned round while Shift is held. While it is dragged
// it sends continuous actions; when the button is released, one final action. The keyboard
// ends in a final action too, so keys turn the picture as a drag does.
class RotateSlider : public QSlider {
    Q_OBJECT

public:
    explicit RotateSlider(QWidget* parent = nullptr);

    bool constrain() const { return _constrain; }
    // Also says in the tool tip how Shift changes it.
    void setConstrain(bool constrain);
    // Whether the values between the ticks are skipped.
    bool allowsTickMarkValuesOnly() const { return _ticksOnly; }
    void setAllowsTickMarkValuesOnly(bool ticksOnly) { _ticksOnly = ticksOnly; }
    // True only while the final action of a gesture is being sent.
    bool isFinalAction() const { return _isFinalAction; }

Q_SIGNALS:
    void action(double degrees);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void _sendFinalAction();

    bool _constrain = false;
    bool _ticksOnly = false;
    bool _isFinalAction = false;
    bool _pressed = false;
};

}  // namespace marigold
