#include "core/RotationControls.h"

#include <QHBoxLayout>
#include <cmath>

#include "core/AppController.h"
#include "platform/DefaultsKeys.h"

namespace marigold {

RotationControls::RotationControls(AppController& controller, QWidget* parent)
    : QWidget(parent), _controller(controller) {
    _slider = new RotateSlider;
    _slider->setObjectName(QStringLiteral("rotationSlider"));
    _slider->setAccessibleName(tr("Rotation"));
    _slider->setMinimumWidth(120);
    QToolButton* ccw = _button("rotateCCWButton", QStringLiteral("↺"), tr("Rotate left"),
                               tr("Turn left to the next 45° step"));
    QToolButton* cw = _button("rotateCWButton", QStringLiteral("↻"), tr("Rotate right"),
                              tr("Turn right to the next 45° step"));
    QToolButton* ccwFine = _button("rotateCCWFineButton", QStringLiteral("‹"),
                                   tr("Rotate left by 1°"), tr("Turn left by one degree"));
    QToolButton* cwFine = _button("rotateCWFineButton", QStringLiteral("›"),
                                  tr("Rotate right by 1°"), tr("Turn right by one degree"));
    _controls = {_slider, ccw, cw, ccwFine, cwFine};

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    for (QWidget* control : {static_cast<QWidget*>(ccw), static_cast<QWidget*>(ccwFine),
                             static_cast<QWidget*>(_slider), static_cast<QWidget*>(cwFine),
                             static_cast<QWidget*>(cw)}) {
        layout->addWidget(control);
    }

    QObject* context = &_connections;
    connect(_slider, &RotateSlider::action, context, [this](int degrees) {
        if (_slider->isFinalAction()) {
            _controller.setRotation(degrees);
        } else {
            _controller.setPreviewRotation(degrees);
        }
    });
    connect(ccw, &QToolButton::clicked, context, [this] { _controller.rotateImageCCW(); });
    connect(cw, &QToolButton::clicked, context, [this] { _controller.rotateImageCW(); });
    connect(ccwFine, &QToolButton::clicked, context, [this] { rotateFine(1); });
    connect(cwFine, &QToolButton::clicked, context, [this] { rotateFine(-1); });
    connect(&_controller, &AppController::rotationChanged, context,
            [this](double degrees) { _slider->setValue(int(std::lround(degrees))); });
    connect(&_controller, &AppController::inputControlsEnabledChanged, context,
            [this](bool enabled) { _enable(enabled); });
    connect(&_controller, &AppController::settingsChanged, context, [this] {
        _slider->setConstrain(_controller.defaults().boolForKey(keys::DefConstrainRotation));
    });
    _slider->setConstrain(_controller.defaults().boolForKey(keys::DefConstrainRotation));
    _enable(_controller.document().hasImage());
}

QToolButton* RotationControls::_button(const char* objectName, const QString& text,
                                       const QString& spoken, const QString& tip) {
    auto* button = new QToolButton;
    button->setObjectName(QLatin1String(objectName));
    button->setText(text);
    button->setAccessibleName(spoken);
    button->setToolTip(tip);
    return button;
}

void RotationControls::rotateFine(double degrees) {
    _slider->setAllowsTickMarkValuesOnly(false);
    _controller.rotateImageFine(degrees);
}

void RotationControls::_enable(bool enabled) {
    for (QWidget* control : _controls) control->setEnabled(enabled);
}

}  // namespace marigold
