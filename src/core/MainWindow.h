#pragma once

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QSplitter>

#include "core/WindowDialogs.h"

namespace marigold {

class AppController;
class CenteringScrollArea;
class InputImageView;
class OutputImageView;
class OutputControls;
class RotationControls;
class ConstraintControls;
class InfoController;
class PreferenceController;
class ConstraintManager;
class DestinationDrawer;
class SendToMenu;

// The single main window: input pane and output pane side by side, each at least 300
// points wide and kept equal when the window is resized, with the document name and the
// output controls beneath, a status line for notices, and the File and Edit menus. It shows
// the controller's document and hands every edit to the controller.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(AppController& controller, QWidget* parent = nullptr);
    ~MainWindow() override;

    InputImageView* inputView() const { return _inputView; }
    OutputImageView* outputView() const { return _outputView; }
    QSplitter* splitter() const { return _splitter; }

    // The Open dialog, limited to the file types the image loader reads.
    void open();
    // Saves the frame under "mainWindowAutosave" / restores it.
    void saveFrame();
    void restoreFrame();

    static constexpr int kMinimumPaneWidth = 300;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void _buildPanes();
    void _buildMenus();
    void _showDocument();
    void _updateMenus();
    void _updateOutputItems();
    void _equalisePanes();
    void _previewAfterLayout();

    AppController& _controller;
    InputImageView* _inputView;
    OutputImageView* _outputView;
    CenteringScrollArea* _outputScroll;
    QSplitter* _splitter;
    QLineEdit* _nameField;
    QLabel* _sizeLabel;
    OutputControls* _outputControls;
    RotationControls* _rotationControls;
    ConstraintControls* _constraintControls;
    InfoController* _info;
    PreferenceController* _preferences;
    ConstraintManager* _constraintManager;
    DestinationDrawer* _drawer;
    SendToMenu* _sendTo;
    struct Actions {
        QAction* undo;
        QAction* redo;
        QAction* revert;
        QAction* save;
        QAction* print;
        QAction* copy;
        QAction* discard;
        QAction* rotateLeft;
        QAction* rotateRight;
        QAction* rotateCCW;
        QAction* rotateCW;
        QAction* rotateCCWFine;
        QAction* rotateCWFine;
        QAction* flipHorizontal;
        QAction* flipVertical;
        QAction* desaturate;
    } _actions{};
    bool _previewPending = false;
    WindowDialogs _dialogs;
    // The context of every connection made here: it goes with the members, before the base
    // class deletes the children, whose last signals must not reach a half-destroyed window.
    QObject _connections;
};

}  // namespace marigold
