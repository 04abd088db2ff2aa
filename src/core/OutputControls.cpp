#include "core/OutputControls.h"

#include <QHBoxLayout>
#include <QIntValidator>
#include <cmath>

#include "core/AppController.h"
#include "core/NumberText.h"
#include "core/ValueLabel.h"

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

    // Every connection goes through `_connections`, which is destroyed before the children:
    // a field losing focus as the window closes must not call into a half-destroyed object.
    QObject* context = &_connections;
    connect(_percentField, &QLineEdit::editingFinished, context,
            [this] { _controller.setScaleFactorPercent(leadingIntValue(_percentField->text())); });
    connect(_widthField, &QLineEdit::editingFinished, context, [this] {
        _controller.setPixelWidth(leadingIntValue(_widthField->text()));
        _controller.pixelWidthChanged();
    });
    connect(_heightField, &QLineEdit::editingFinished, context, [this] {
        _controller.setPixelHeight(leadingIntValue(_heightField->text()));
        _controller.pixelHeightChanged();
    });
    connect(_sharpenBox, &QCheckBox::clicked, context,
            [this](bool on) { _controller.setSharpen(on); });
    // One undo step per gesture: the value is taken when the slider is let go (or moved by
    // the keyboard), not at every intermediate position.
    connect(_sharpnessSlider, &QSlider::sliderReleased, context, [this] { _sharpnessReleased(); });
    connect(_sharpnessSlider, &QSlider::actionTriggered, context, [this](int action) {
        if (action != QAbstractSlider::SliderMove && !_sharpnessSlider->isSliderDown()) {
            QMetaObject::invokeMethod(
                &_connections, [this] { _sharpnessReleased(); }, Qt::QueuedConnection);
        }
    });
    connect(_livePreviewBox, &QCheckBox::clicked, context,
            [this](bool on) { _controller.setLivePreview(on); });

    connect(&_controller, &AppController::scaleFactorChanged, context, [this] { _showScale(); });
    connect(&_controller, &AppController::pixelSizeChanged, context, [this] { _showPixelSize(); });
    connect(&_controller, &AppController::settingsChanged, context, [this] { _showSettings(); });
    connect(&_controller, &AppController::userResizableChanged, context,
            [this] { _showResizable(); });
    connect(&_controller, &AppController::inputControlsEnabledChanged, context,
            [this] { _showResizable(); });
    connect(&_controller, &AppController::filesizeTextChanged, context,
            [this](const QString& text) { showLabelValue(_filesizeLabel, text); });
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
    // Without an output there is no size to show, rather than a size of 0.
    const auto shown = [](int pixels) { return pixels > 0 ? QString::number(pixels) : QString(); };
    _widthField->setText(shown(_controller.pixelWidth()));
    _heightField->setText(shown(_controller.pixelHeight()));
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
