#pragma once

#include <QAction>
#include <QLineEdit>
#include <QMainWindow>
#include <QScrollArea>
#include <QSplitter>

namespace marigold {

class AppController;
class InputImageView;
class OutputImageView;
class OutputControls;
class InfoController;

// The single main window: input pane and output pane side by side, each at least 300
// points wide and kept equal when the window is resized, with the document name and the
// output controls beneath, and the File and Edit menus.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(AppController& controller, QWidget* parent = nullptr);

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
    void _buildMenus();
    void _updateUndoTitles();
    void _equalisePanes();
    void _previewAfterLayout();

    AppController& _controller;
    InputImageView* _inputView;
    OutputImageView* _outputView;
    QScrollArea* _outputScroll;
    QSplitter* _splitter;
    QLineEdit* _nameField;
    OutputControls* _outputControls;
    QAction* _undoAction = nullptr;
    QAction* _redoAction = nullptr;
    InfoController* _info;
    bool _previewPending = false;
};

}  // namespace marigold
