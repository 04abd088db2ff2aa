#include "selection/BFStepper.h"

#include <QLineEdit>
#include <QWheelEvent>

#include "selection/ControlArithmetic.h"

namespace marigold {

BFStepper::BFStepper(QWidget* parent) : QSpinBox(parent) {
    connect(lineEdit(), &QLineEdit::textEdited, this, [this] { _edited = true; });
    connect(this, &QAbstractSpinBox::editingFinished, this, [this] {
        if (_edited) _commit();
    });
}

void BFStepper::stepBy(int steps) {
    const int before = value();
    QSpinBox::stepBy(steps);
    setValue(controls::snapStepperValue(before, value(), singleStep()));
    _commit();
}

void BFStepper::wheelEvent(QWheelEvent* event) {
    const int delta = event->angleDelta().y();
    if (delta == 0) {
        QSpinBox::wheelEvent(event);
        return;
    }
    setValue(value() + (delta > 0 ? 1 : -1));
    _commit();
    event->accept();
}

QString BFStepper::textFromValue(int value) const {
    return value > 0 ? QString::number(value) : QString();
}

int BFStepper::valueFromText(const QString& text) const {
    return text.trimmed().toInt();
}

// Plain digits only: no group separators or signs, whatever the locale.
QValidator::State BFStepper::validate(QString& text, int&) const {
    const QString digits = text.trimmed();
    if (digits.isEmpty()) return QValidator::Intermediate;
    bool ok = false;
    const qlonglong number = digits.toLongLong(&ok);
    if (!ok || digits.startsWith(QLatin1Char('+')) || digits.startsWith(QLatin1Char('-'))) {
        return QValidator::Invalid;
    }
    if (number > maximum()) return QValidator::Invalid;
    return number < minimum() ? QValidator::Intermediate : QValidator::Acceptable;
}

void BFStepper::_commit() {
    _edited = false;
    Q_EMIT committed(value());
}

}  // namespace marigold
