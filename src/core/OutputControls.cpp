#include "core/OutputControls.h"

#include <QHBoxLayout>
#include <QIntValidator>
#include <cmath>

#include "core/AppController.h"
#include "core/NumberText.h"
#include "platform/DefaultsKeys.h"

namespace marigold {

namespace {
// The slider works in hundredths of the sharpness value.
constexpr int kSharpnessSteps = 100;

QLineEdit* numberField(const QString& name, const QString& spoken, int width) {
    auto* field = new QLineEdit;
    field->setObjectName(name);
    field->setAccessibleName(spoken);
    field->setFixedWidth(width);
    field->setAlignment(Qt::AlignRight);
    return field;
}
}  // namespace

OutputControls::OutputControls(AppController& controller, QWidget* parent)
    : QWidget(parent), _controller(controller) {
    _percentField = numberField(QStringLiteral("scalePercentField"), tr("Scale percent"), 48);
    _widthField = numberField(QStringLiteral("pixelWidthField"), tr("Output width"), 60);
    _heightField = numberField(QStringLiteral("pixelHeightField"), tr("Output height"), 60);
    _sharpenBox = new QCheckBox(tr("Sharpen"));
    _sharpenBox->setObjectName(QStringLiteral("sharpenBox"));
    _sharpnessSlider = new QSlider(Qt::Horizontal);
    _sharpnessSlider->setObjectName(QStringLiteral("sharpnessSlider"));
    _sharpnessSlider->setAccessibleName(tr("Sharpness"));
    _sharpnessSlider->setRange(0, 2 * kSharpnessSteps);
    _sharpnessSlider->setFixedWidth(90);
    _livePreviewBox = new QCheckBox(tr("Live Preview"));
    _livePreviewBox->setObjectName(QStringLiteral("livePreviewBox"));
    _filesizeLabel = new QLabel;
    _filesizeLabel->setObjectName(QStringLiteral("filesizeLabel"));
    _filesizeLabel->setAccessibleName(tr("Output file size"));
    // A busy bar: shown only while an output file is written.
    _progressIndicator = new QProgressBar;
    _progressIndicator->setObjectName(QStringLiteral("progressIndicator"));
    _progressIndicator->setAccessibleName(tr("Writing the output file"));
    _progressIndicator->setRange(0, 0);
    _progressIndicator->setTextVisible(false);
    _progressIndicator->setFixedSize(40, 12);
    _progressIndicator->hide();

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(_percentField);
    layout->addWidget(new QLabel(QStringLiteral("%")));
    layout->addSpacing(8);
    layout->addWidget(_widthField);
    layout->addWidget(new QLabel(QStringLiteral("x")));
    layout->addWidget(_heightField);
    layout->addSpacing(8);
    layout->addWidget(_sharpenBox);
    layout->addWidget(_sharpnessSlider);
    layout->addSpacing(8);
    layout->addWidget(_livePreviewBox);
    layout->addStretch();
    layout->addWidget(_progressIndicator);
    layout->addWidget(_filesizeLabel);

    connect(_percentField, &QLineEdit::editingFinished, this, [this] {
        _controller.setScaleFactorPercent(leadingIntValue(_percentField->text()));
    });
    connect(_widthField, &QLineEdit::editingFinished, this, [this] {
        _controller.setPixelWidth(leadingIntValue(_widthField->text()));
        _controller.pixelWidthChanged();
    });
    connect(_heightField, &QLineEdit::editingFinished, this, [this] {
        _controller.setPixelHeight(leadingIntValue(_heightField->text()));
        _controller.pixelHeightChanged();
    });
    connect(_sharpenBox, &QCheckBox::clicked, this,
            [this](bool on) { _controller.setSharpen(on); });
    // One undo step per gesture: the value is taken when the slider is let go (or moved by
    // the keyboard), not at every intermediate position.
    connect(_sharpnessSlider, &QSlider::sliderReleased, this, &OutputControls::_sharpnessReleased);
    connect(_sharpnessSlider, &QSlider::actionTriggered, this, [this](int action) {
        if (action != QAbstractSlider::SliderMove && !_sharpnessSlider->isSliderDown()) {
            QMetaObject::invokeMethod(this, &OutputControls::_sharpnessReleased,
                                      Qt::QueuedConnection);
        }
    });
    connect(_livePreviewBox, &QCheckBox::clicked, this,
            [this](bool on) { _controller.defaults().setBool(keys::DefLivePreview, on); });

    connect(&_controller, &AppController::scaleFactorChanged, this, &OutputControls::_showScale);
    connect(&_controller, &AppController::pixelSizeChanged, this,
            &OutputControls::_showPixelSize);
    connect(&_controller, &AppController::settingsChanged, this, &OutputControls::_showSettings);
    connect(&_controller, &AppController::userResizableChanged, this,
            &OutputControls::_showResizable);
    connect(&_controller, &AppController::inputControlsEnabledChanged, this,
            &OutputControls::_showResizable);
    _showScale();
    _showPixelSize();
    _showSettings();
    _showResizable();
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
    _percentField->setText(QString::number(_controller.scaleFactorPercent()));
}

void OutputControls::_showPixelSize() {
    _widthField->setText(QString::number(_controller.pixelWidth()));
    _heightField->setText(QString::number(_controller.pixelHeight()));
}

void OutputControls::_showSettings() {
    _sharpenBox->setChecked(_controller.sharpen());
    if (!_sharpnessSlider->isSliderDown()) {
        _sharpnessSlider->setValue(int(std::lround(_controller.sharpness() * kSharpnessSteps)));
    }
    _sharpnessSlider->setEnabled(_controller.sharpen());
    _livePreviewBox->setChecked(_controller.livePreview());
}

}  // namespace marigold
