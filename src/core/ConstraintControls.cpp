#include "core/ConstraintControls.h"

#include <QDoubleValidator>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>

#include "constraints/ConstraintMenuItems.h"
#include "constraints/RatioController.h"

namespace marigold {

namespace {

QLineEdit* termField(const char* objectName, const QString& spoken, const QString& tip) {
    auto* field = new QLineEdit;
    field->setObjectName(QLatin1String(objectName));
    field->setAccessibleName(spoken);
    field->setToolTip(tip);
    field->setFixedWidth(52);
    field->setAlignment(Qt::AlignRight);
    field->setValidator(new QDoubleValidator(0, 100000, 2, field));
    return field;
}

}  // namespace

ConstraintControls::ConstraintControls(RatioController& ratios, QWidget* parent)
    : QWidget(parent), _ratios(ratios) {
    _popUp = new QComboBox;
    _popUp->setObjectName(QStringLiteral("constraintPopUp"));
    _popUp->setAccessibleName(tr("Constraint"));
    _popUp->setToolTip(tr("Hold the selection to a ratio or to an exact output size"));
    _widthField = termField("constraintWidthField", tr("Constraint width"),
                            tr("The custom ratio's width, or the custom size's width in pixels"));
    _heightField =
        termField("constraintHeightField", tr("Constraint height"),
                  tr("The custom ratio's height, or the custom size's height in pixels"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* label = new QLabel(tr("Co&nstrain:"));
    label->setBuddy(_popUp);
    layout->addWidget(label);
    layout->addWidget(_popUp);
    layout->addWidget(_widthField);
    layout->addWidget(new QLabel(QStringLiteral("×")));
    layout->addWidget(_heightField);

    QObject* context = &_connections;
    connect(_popUp, &QComboBox::activated, context, [this](int index) { _choose(index); });
    connect(_widthField, &QLineEdit::editingFinished, context,
            [this] { _commit(_widthField, true); });
    connect(_heightField, &QLineEdit::editingFinished, context,
            [this] { _commit(_heightField, false); });
    connect(&_ratios, &RatioController::constraintChanged, context, [this] { _showChoice(); });
    connect(&_ratios, &RatioController::menuItemsChanged, context, [this] { rebuild(); });
    rebuild();
}

void ConstraintControls::rebuild() {
    const QSignalBlocker quiet(_popUp);
    _popUp->clear();
    for (const QString& encoded : _ratios.constraintMenuItems()) {
        const TaggedMenuItem item(encoded);
        if (item.isSeparator()) {
            _popUp->insertSeparator(_popUp->count());
        } else {
            _popUp->addItem(item.title(), item.tag());
        }
    }
    _showChoice();
}

void ConstraintControls::_choose(int index) {
    const int tag = _popUp->itemData(index).toInt();
    _ratios.setSelectedPreset(tag);
    // The manager is a command, not a choice: the pop-up goes back to what is chosen.
    if (tag == RatioController::kManage) _showChoice();
    // Typing follows the choice: into the custom fields, or back to the pop-up.
    (_ratios.widthHeightEnabled() ? static_cast<QWidget*>(_widthField) : _popUp)->setFocus();
}

void ConstraintControls::_showChoice() {
    const QSignalBlocker quiet(_popUp);
    const int index = _popUp->findData(_ratios.selectedPreset());
    _popUp->setCurrentIndex(index >= 0 ? index : _popUp->findData(RatioController::kNone));
    const bool custom = _ratios.widthHeightEnabled();
    for (QLineEdit* field : {_widthField, _heightField}) field->setEnabled(custom);
    const auto shown = [](float value) { return value > 0 ? QString::number(value) : QString(); };
    if (!_widthField->hasFocus()) _widthField->setText(shown(_ratios.ratioWidth()));
    if (!_heightField->hasFocus()) _heightField->setText(shown(_ratios.ratioHeight()));
}

void ConstraintControls::_commit(QLineEdit* field, bool width) {
    const QString text = field->text().trimmed();
    if (text.isEmpty()) {
        _ratios.setNilValueForKey(width ? QStringLiteral("ratioWidth")
                                        : QStringLiteral("ratioHeight"));
        return;
    }
    const float value = QLocale().toFloat(text);
    if (width) {
        _ratios.setRatioWidth(value);
    } else {
        _ratios.setRatioHeight(value);
    }
}

}  // namespace marigold
