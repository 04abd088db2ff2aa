#pragma once

#include <QDialog>
#include <QLabel>
#include <QSpinBox>

namespace marigold {

class AppController;

// The timed capture's dialog: the delay in seconds, window-modal over the main window; Start
// hands it to the controller.
class TimedCaptureDialog : public QDialog {
    Q_OBJECT

public:
    TimedCaptureDialog(AppController& controller, QWidget* window);

    // Shows the stored delay (at least 1) without blocking.
    void showDialog();
    QSpinBox* delayField() const { return _delay; }

private:
    AppController& _controller;
    QSpinBox* _delay;
};

// The small window that counts the last three seconds down before a timed capture.
class CountdownWindow : public QLabel {
    Q_OBJECT

public:
    explicit CountdownWindow(AppController& controller);
};

}  // namespace marigold
