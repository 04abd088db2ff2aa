#include "core/OutputControls.h"

#include <QBoxLayout>
#include <cmath>
#include <functional>

#include "core/AppController.h"
#include "core/ValueLabel.h"
#include "platform/NumberText.h"
#include "selection/BFStepper.h"
#include "selection/QualitySlider.h"
#include "selection/ScaleSlider.h"

namespace marigold {

namespace {
// The slider works in hundredths of the sharpness value.
constexpr int kSharpnessSteps = 100;
constexpr int kMaxScalePercent = 200;
// The pixel steppers snap to tens: round sizes, and few clicks from one to the next.
constexpr int kPixelIncrement = 10;
constexpr int kMaxPixels = 999999;
constexpr int kFileFormats[] = {101, 102, 103, 104};

// Every control says what it is to a screen reader and what it does in its tool tip.
template <typename Control>
Control* described(Control* control, const char* objectName, const QString& spoken,
                   const QString& tip) {
    control->setObjectName(QLatin1String(objectName));
    control->setAccessibleName(spoken);
    control->setToolTip(tip);
    return control;
}

QLineEdit* numberField(const char* objectName, const QString& spoken, const QString& tip,
                       int width) {
    auto* field = described(new QLineEdit, objectName, spoken, tip);
    field->setFixedWidth(width);
    field->setAlignment(Qt::AlignRight);
    return field;
}

BFStepper* pixelField(const char* objectName, const QString& spoken, const QString& tip) {
    auto* field = described(new BFStepper, objectName, spoken, tip);
    field->setRange(0, kMaxPixels);
    field->setSingleStep(kPixelIncrement);
    field->setAlignment(Qt::AlignRight);
    field->setFixedWidth(84);
    return field;
}

QLabel* buddyLabel(const QString& text, QWidget* buddy) {
    auto* label = new QLabel(text);
    label->setBuddy(buddy);
    return label;
}

// Return, or leaving a field after typing in it, hands the text on. Leaving an untouched
// field does nothing: it would record an undo step for a value nobody changed.
void onCommit(QLineEdit* field, QObject* context, std::function<void(const QString&)> commit) {
    QObject::connect(field, &QLineEdit::editingFinished, context, [field, commit] {
        if (!field->isModified()) return;
        field->setModified(false);
        commit(field->text());
    });
}

QHBoxLayout* row(std::initializer_list<QWidget*> widgets) {
    auto* layout = new QHBoxLayout;
    for (QWidget* widget : widgets) {
        if (widget) {
            layout->addWidget(widget);
        } else {
            layout->addSpacing(10);
        }
    }
    layout->addStretch();
    return layout;
}
}  // namespace

OutputControls::OutputControls(AppController& controller, QWidget* parent)
    : QWidget(parent), _controller(controller) {
    _buildControls();
    _layOut();
    _connectControls();
    _connectSizeControls();
    _showScale();
    _showPixelSize();
    _showSettings();
    _showResizable();
}

void OutputControls::_buildControls() {
    _formatPopup = described(new QComboBox, "formatPopup", tr("Output format"),
                             tr("The file type the output is written as: JPEG for photos, PNG "
                                "or TIFF to keep every pixel exact, GIF for simple graphics."));
    for (const char* name : {"JPEG", "PNG", "TIFF", "GIF"}) {
        _formatPopup->addItem(QLatin1String(name), kFileFormats[_formatPopup->count()]);
    }
    _qualitySlider =
        described(new QualitySlider, "qualitySlider", tr("JPEG quality"),
                  tr("JPEG quality: higher keeps more detail and makes a larger file."));
    _qualitySlider->setRange(5, 100);
    _qualitySlider->setFixedWidth(90);
    _qualityField = numberField("qualityField", tr("JPEG quality number"),
                                tr("JPEG quality from 5 to 100; type it and press Return."), 36);
    _limitBox =
        described(new QCheckBox(tr("&Limit file size")), "limitFilesizeBox", tr("Limit file size"),
                  tr("Keep the JPEG file under the size beside this box by lowering "
                     "its quality as far as needed."));
    _limitField = numberField("filesizeLimitField", tr("File size limit in KB"),
                              tr("The largest JPEG file to write, in kilobytes (10 to 9990)."), 48);
    _previewModePopup =
        described(new QComboBox, "previewModePopup", tr("Preview mode"),
                  tr("Shrink to Fit shows the whole output in the pane; Actual Pixels shows "
                     "it pixel for pixel and lets you scroll."));
    _previewModePopup->addItem(tr("Shrink to Fit"), 0);
    _previewModePopup->addItem(tr("Actual Pixels"), 2);

    _scaleSlider = described(new ScaleSlider, "scaleSlider", tr("Scale"),
                             tr("The output size as a share of the selection. The wheel steps "
                                "the size by one pixel, by ten with Ctrl held."));
    _scaleSlider->setRange(1, kMaxScalePercent);
    _scaleSlider->setFixedWidth(90);
    _percentField = numberField(
        "scalePercentField", tr("Scale percent"),
        tr("The output size in percent of the selection, up to 200; type it and press Return."),
        44);
    _widthField = pixelField("pixelWidthField", tr("Output width"),
                             tr("The output width in pixels; the height follows. Type it and "
                                "press Return, or step it by tens with the arrows."));
    _heightField = pixelField("pixelHeightField", tr("Output height"),
                              tr("The output height in pixels; the width follows. Type it and "
                                 "press Return, or step it by tens with the arrows."));

    _sharpenBox = described(new QCheckBox(tr("S&harpen")), "sharpenBox", tr("Sharpen"),
                            tr("Sharpen the output after it is scaled."));
    _sharpnessSlider = described(new QSlider(Qt::Horizontal), "sharpnessSlider", tr("Sharpness"),
                                 tr("How strongly the output is sharpened."));
    _sharpnessSlider->setRange(0, 2 * kSharpnessSteps);
    _sharpnessSlider->setFixedWidth(90);
    _livePreviewBox =
        described(new QCheckBox(tr("Live &Preview")), "livePreviewBox", tr("Live Preview"),
                  tr("Update the output while the selection is being dragged."));
    _filesizeLabel =
        described(new QLabel, "filesizeLabel", tr("Output file size"),
                  tr("The size of the file a save would write, made in the background as you "
                     "edit; under a size limit, with the JPEG quality chosen."));
    // A busy bar: shown only while an output file is written.
    _progressIndicator = described(new QProgressBar, "progressIndicator",
                                   tr("Writing the output file"), tr("Writing the output file"));
    _progressIndicator->setRange(0, 0);
    _progressIndicator->setTextVisible(false);
    _progressIndicator->setFixedSize(40, 12);
    _progressIndicator->hide();
}

void OutputControls::_layOut() {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addLayout(row({buddyLabel(tr("F&ormat:"), _formatPopup), _formatPopup, nullptr,
                           buddyLabel(tr("&Quality:"), _qualityField), _qualitySlider,
                           _qualityField, nullptr, _limitBox, _limitField, new QLabel(tr("KB"))}));
    layout->addLayout(
        row({buddyLabel(tr("S&cale:"), _percentField), _scaleSlider, _percentField,
             new QLabel(QStringLiteral("%")), nullptr, buddyLabel(tr("Si&ze:"), _widthField),
             _widthField, new QLabel(QStringLiteral("x")), _heightField, nullptr,
             buddyLabel(tr("Pre&view:"), _previewModePopup), _previewModePopup}));
    QHBoxLayout* last = row({_sharpenBox, _sharpnessSlider, nullptr, _livePreviewBox});
    last->addWidget(_progressIndicator);
    last->addWidget(_filesizeLabel);
    layout->addLayout(last);
}

// Every connection goes through `_connections`, which is destroyed before the children: a
// field losing focus as the window closes must not call into a half-destroyed object.
void OutputControls::_connectControls() {
    QObject* context = &_connections;
    connect(_formatPopup, &QComboBox::activated, context, [this](int index) {
        _controller.setFileFormat(_formatPopup->itemData(index).toInt());
    });
    // Dragging only shows the number; the value is stored once, when the gesture ends.
    connect(_qualitySlider, &QualitySlider::action, context, [this](int value) {
        if (_qualitySlider->isFinalAction()) {
            _controller.setQuality(QString::number(value));
        } else {
            _qualityField->setText(QString::number(value));
        }
    });
    onCommit(_qualityField, context, [this](const QString& text) { _controller.setQuality(text); });
    // Toggled, not clicked: a screen reader's toggle action sends no click. Showing the
    // stored value toggles too, and is told apart by being that value already.
    connect(_limitBox, &QCheckBox::toggled, context, [this](bool on) {
        if (on != _controller.limitFilesize()) _controller.setLimitFilesize(on);
    });
    onCommit(_limitField, context,
             [this](const QString& text) { _controller.setFilesizeLimit(text); });
    connect(_previewModePopup, &QComboBox::activated, context, [this](int index) {
        _controller.setPreviewMode(_previewModePopup->itemData(index).toInt());
    });
    connect(_sharpenBox, &QCheckBox::toggled, context, [this](bool on) {
        if (on != _controller.sharpen()) _controller.setSharpen(on);
    });
    // One undo step per gesture: the value is taken when the slider is let go (or moved by
    // the keyboard), not at every intermediate position.
    connect(_sharpnessSlider, &QSlider::sliderReleased, context, [this] { _sharpnessReleased(); });
    connect(_sharpnessSlider, &QSlider::actionTriggered, context, [this](int action) {
        if (action != QAbstractSlider::SliderMove && !_sharpnessSlider->isSliderDown()) {
            QMetaObject::invokeMethod(
                &_connections, [this] { _sharpnessReleased(); }, Qt::QueuedConnection);
        }
    });
    connect(_livePreviewBox, &QCheckBox::toggled, context, [this](bool on) {
        if (on != _controller.livePreview()) _controller.setLivePreview(on);
    });

    connect(&_controller, &AppController::settingsChanged, context, [this] { _showSettings(); });
    connect(&_controller, &AppController::userResizableChanged, context,
            [this] { _showResizable(); });
    connect(&_controller, &AppController::inputControlsEnabledChanged, context,
            [this] { _showResizable(); });
    connect(&_controller, &AppController::filesizeTextChanged, context,
            [this](const QString& text) { showLabelValue(_filesizeLabel, text); });
}

void OutputControls::_connectSizeControls() {
    QObject* context = &_connections;
    onCommit(_percentField, context, [this](const QString& text) {
        _controller.setScaleFactorPercent(leadingIntValue(text));
    });
    _scaleSlider->setScaleImageByPixels([this](int step) { _controller.scaleImageByPixels(step); });
    _scaleSlider->setUpdatePreview([this] { _controller.updatePreview(); });
    connect(_scaleSlider, &QSlider::sliderMoved, context,
            [this](int percent) { _scaleDragged(percent); });
    connect(_scaleSlider, &QSlider::sliderReleased, context, [this] { _scaleReleased(); });
    // Keys and clicks on the groove move the slider without a drag: one step each.
    connect(_scaleSlider, &QSlider::actionTriggered, context, [this](int action) {
        if (action == QAbstractSlider::SliderMove || _scaleSlider->isSliderDown()) return;
        _controller.setScaleFactorPercent(_scaleSlider->sliderPosition());
    });
    connect(_widthField, &BFStepper::committed, context, [this](int width) {
        _controller.setPixelWidth(width);
        _controller.pixelWidthChanged();
    });
    connect(_heightField, &BFStepper::committed, context, [this](int height) {
        _controller.setPixelHeight(height);
        _controller.pixelHeightChanged();
    });
    connect(&_controller, &AppController::scaleFactorChanged, context, [this] { _showScale(); });
    connect(&_controller, &AppController::pixelSizeChanged, context, [this] { _showPixelSize(); });
}

void OutputControls::_scaleDragged(int percent) {
    if (_scaleSlider->actionCount() == 0) _scaleBeforeDrag = _controller.scaleFactor();
    _controller.dragScaleFactor(float(percent) / 100);
}

void OutputControls::_scaleReleased() {
    // A press that never moved the slider changed nothing.
    if (!_scaleBeforeDrag) return;
    _controller.finishScaleDrag(*_scaleBeforeDrag, float(_scaleSlider->value()) / 100);
    _scaleBeforeDrag.reset();
}

void OutputControls::_showResizable() {
    const bool resizable = _controller.userResizable();
    _widthField->setEnabled(resizable);
    _heightField->setEnabled(resizable);
}

void OutputControls::_sharpnessReleased() {
    const float value = float(_sharpnessSlider->value()) / kSharpnessSteps;
    if (std::fabs(value - _controller.sharpness()) > 1e-4f) _controller.setSharpness(value);
}

void OutputControls::_showScale() {
    const int percent = _controller.scaleFactorPercent();
    _percentField->setText(QString::number(percent));
    // The slider follows everything but its own drag.
    if (!_scaleSlider->isSliderDown()) _scaleSlider->setValue(percent);
}

void OutputControls::_showPixelSize() {
    // 0 (no output) shows as an empty field.
    _widthField->setValue(_controller.pixelWidth());
    _heightField->setValue(_controller.pixelHeight());
}

void OutputControls::_showSettings() {
    const int format = _formatPopup->findData(_controller.fileFormat());
    // A code no longer offered is written as JPEG, so it shows as JPEG.
    _formatPopup->setCurrentIndex(format < 0 ? 0 : format);
    const bool jpeg = _controller.hasQuality();
    if (!_qualitySlider->isSliderDown()) _qualitySlider->setValue(_controller.quality().toInt());
    _qualityField->setText(_controller.quality());
    _qualitySlider->setEnabled(jpeg);
    _qualityField->setEnabled(jpeg);
    _limitBox->setChecked(_controller.limitFilesize());
    _limitBox->setEnabled(jpeg);
    _limitField->setText(_controller.filesizeLimit());
    _limitField->setEnabled(_controller.hasFilesizeLimit());
    _previewModePopup->setCurrentIndex(_previewModePopup->findData(_controller.previewMode()));

    _sharpenBox->setChecked(_controller.sharpen());
    if (!_sharpnessSlider->isSliderDown()) {
        _sharpnessSlider->setValue(int(std::lround(_controller.sharpness() * kSharpnessSteps)));
    }
    _sharpnessSlider->setEnabled(_controller.sharpen());
    _livePreviewBox->setChecked(_controller.livePreview());
}

}  // namespace marigold
