#pragma once

#include <QSlider>

namespace marigold {

// A slider that tells its listener which of its actions ends a gesture: while it is dragged
// it sends continuous actions, and when the button is released it sends one final action.
// The keyboard also ends in a final action, so that keys set the value as a drag does.
class FinalActionSlider : public QSlider {
    Q_OBJECT

public:
    explicit FinalActionSlider(QWidget* parent = nullptr);

    // True only while the final action of a gesture is being sent.
    bool isFinalAction() const { return _isFinalAction; }

Q_SIGNALS:
    void action(int value);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    // A value reached while the button is down; sends it as a continuous action.
    virtual void valueDragged(int value);
    void sendFinalAction();

private:
    bool _isFinalAction = false;
    bool _pressed = false;
};

}  // namespace marigold
