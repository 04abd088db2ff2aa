#pragma once

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QSlider>
#include <QWidget>

namespace marigold {

class AppController;

// The fields under the output pane: scale percent, output pixel size, sharpening, live
// preview and the size of the last file written. Every edit goes through the controller's
// setters; the fields only mirror it.
class OutputControls : public QWidget {
    Q_OBJECT

public:
    explicit OutputControls(AppController& controller, QWidget* parent = nullptr);

    // Shown while an output file is written.
    QWidget* progressIndicator() const { return _progressIndicator; }

private:
    void _showScale();
    void _showPixelSize();
    void _showSettings();
    void _showResizable();
    void _sharpnessReleased();

    AppController& _controller;
    QLineEdit* _percentField;
    QLineEdit* _widthField;
    QLineEdit* _heightField;
    QCheckBox* _sharpenBox;
    QSlider* _sharpnessSlider;
    QCheckBox* _livePreviewBox;
    QLabel* _filesizeLabel;
    QProgressBar* _progressIndicator;
    QObject _connections;
};

}  // namespace marigold
