#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QSlider>
#include <QWidget>
#include <optional>

namespace marigold {

class AppController;
class BFStepper;
class QualitySlider;
class ScaleSlider;

// The controls under the output pane: format, JPEG quality and size limit, preview mode,
// scale, output pixel size, sharpening, live preview and the size of the last file written.
// Every edit goes through the controller's setters; the controls only mirror it.
class OutputControls : public QWidget {
    Q_OBJECT

public:
    explicit OutputControls(AppController& controller, QWidget* parent = nullptr);

    // Shown while an output file is written.
    QWidget* progressIndicator() const { return _progressIndicator; }

private:
    void _buildControls();
    void _layOut();
    void _connectControls();
    void _connectSizeControls();
    void _showScale();
    void _showPixelSize();
    void _showSettings();
    void _showResizable();
    void _sharpnessReleased();
    void _scaleDragged(int percent);
    void _scaleReleased();

    AppController& _controller;
    QComboBox* _formatPopup;
    QualitySlider* _qualitySlider;
    QLineEdit* _qualityField;
    QCheckBox* _limitBox;
    QLineEdit* _limitField;
    QComboBox* _previewModePopup;
    ScaleSlider* _scaleSlider;
    QLineEdit* _percentField;
    BFStepper* _widthField;
    BFStepper* _heightField;
    QCheckBox* _sharpenBox;
    QSlider* _sharpnessSlider;
    QCheckBox* _livePreviewBox;
    QLabel* _filesizeLabel;
    QProgressBar* _progressIndicator;
    // The scale when the current drag of the scale slider began.
    std::optional<float> _scaleBeforeDrag;
    QObject _connections;
};

}  // namespace marigold
