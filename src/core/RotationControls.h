#pragma once

#include <QToolButton>
#include <QWidget>

#include "selection/RotateSlider.h"

namespace marigold {

class AppController;

// The rotation slider and the four rotate buttons under the input pane. A drag of the slider
// turns a small copy of the picture; letting go turns the picture itself, one undo step.
class RotationControls : public QWidget {
    Q_OBJECT

public:
    explicit RotationControls(AppController& controller, QWidget* parent = nullptr);

    RotateSlider* slider() const { return _slider; }
    // The 1° steps leave the slider free of its ticks, so it can show the angle they reach.
    void rotateFine(double degrees);

private:
    QToolButton* _button(const char* objectName, const QString& text, const QString& spoken,
                         const QString& tip);
    void _enable(bool enabled);

    AppController& _controller;
    RotateSlider* _slider;
    QList<QWidget*> _controls;
    QObject _connections;
};

}  // namespace marigold
