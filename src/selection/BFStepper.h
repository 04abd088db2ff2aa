#pragma once

#include <QSpinBox>

namespace marigold {

// A number field with a stepper. The arrows (and the Up, Down, Page Up and Page Down keys)
// snap the value to a multiple of the step in the click's direction; the wheel steps by one
// without snapping. A step, Return, or leaving the field after typing commits the value.
// 0 reads as "nothing to show" and the field stays empty.
class BFStepper : public QSpinBox {
    Q_OBJECT

public:
    explicit BFStepper(QWidget* parent = nullptr);

    void stepBy(int steps) override;

Q_SIGNALS:
    void committed(int value);

protected:
    QString textFromValue(int value) const override;
    int valueFromText(const QString& text) const override;
    QValidator::State validate(QString& text, int& pos) const override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void _commit();

    // Typed since the last commit: leaving an untouched field commits nothing.
    bool _edited = false;
};

}  // namespace marigold
