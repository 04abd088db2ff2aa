#pragma once

#include <QSlider>

namespace marigold {

// A slider that tells its listener which of its actions ends a gesture: while it is dragged
// it sends continuous actions, and when the button is released it sends one final action.
// The wheel (±1) and the keyboard also end in a final action, so that they set the value
// as a drag does.
class QualitySlider : public QSlider {
    Q_OBJECT

public:
    explicit QualitySlider(QWidget* parent = nullptr);

    // True only while the final action of a gesture is being sent.
    bool isFinalAction() const { return _isFinalAction; }

Q_SIGNALS:
    void action(int value);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void _sendFinalAction();

    bool _isFinalAction = false;
    bool _pressed = false;
};

}  // namespace marigold
