#pragma once

#include <QComboBox>
#include <QLineEdit>
#include <QWidget>

namespace marigold {

class RatioController;

// The constraint pop-up and the custom width and height fields under the input pane. The
// pop-up is built from the controller's tagged item strings; the fields can be typed in only
// for the custom ratio and size.
class ConstraintControls : public QWidget {
    Q_OBJECT

public:
    explicit ConstraintControls(RatioController& ratios, QWidget* parent = nullptr);

    QComboBox* popUp() const { return _popUp; }
    // Rebuilds the pop-up from the lists (after the manager closes).
    void rebuild();

private:
    void _choose(int index);
    void _showChoice();
    void _commit(QLineEdit* field, bool width);

    RatioController& _ratios;
    QComboBox* _popUp;
    QLineEdit* _widthField;
    QLineEdit* _heightField;
    QObject _connections;
};

}  // namespace marigold
