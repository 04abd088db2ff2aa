#include "core/MainWindow.h"

#include <QCloseEvent>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QTimer>
#include <QVBoxLayout>
#include <vips/vips8>

#include "core/AppController.h"
#include "core/OutputControls.h"
#include "jpeg/InfoController.h"
#include "output/OutputImageView.h"
#include "selection/InputImageView.h"

namespace marigold {

namespace {

const QString kFrameKey = QStringLiteral("mainWindowAutosave");

// "*.jpg *.png ..." for every suffix libvips has a loader for.
QString imageFileFilter() {
    QStringList patterns;
    if (gchar** suffixes = vips_foreign_get_suffixes()) {
        for (gchar** s = suffixes; *s; ++s) {
            const QString pattern = QStringLiteral("*") + QString::fromUtf8(*s);
            if (!patterns.contains(pattern)) patterns << pattern;
        }
        g_strfreev(suffixes);
    }
    return QObject::tr("Images (%1)").arg(patterns.join(QLatin1Char(' ')));
}

}  // namespace

MainWindow::MainWindow(AppController& controller, QWidget* parent)
    : QMainWindow(parent), _controller(controller) {
    setWindowTitle(QStringLiteral("Marigold"));
    setObjectName(QStringLiteral("mainWindow"));

    _inputView = new InputImageView;
    _inputView->setObjectName(QStringLiteral("inputView"));
    _inputView->setAccessibleName(tr("Source image"));
    _inputView->setMinimumWidth(kMinimumPaneWidth);
    _outputView = new OutputImageView;
    _outputView->setObjectName(QStringLiteral("outputView"));
    _outputView->setAccessibleName(tr("Output image"));
    _outputScroll = new QScrollArea;
    _outputScroll->setObjectName(QStringLiteral("outputScrollView"));
    _outputScroll->setMinimumWidth(kMinimumPaneWidth);
    _outputScroll->setAlignment(Qt::AlignCenter);
    _outputScroll->setFrameShape(QFrame::NoFrame);
    _outputScroll->setWidgetResizable(true);
    _outputScroll->setWidget(_outputView);

    _splitter = new QSplitter(Qt::Horizontal);
    _splitter->setChildrenCollapsible(false);
    _splitter->addWidget(_inputView);
    _splitter->addWidget(_outputScroll);
    connect(_splitter, &QSplitter::splitterMoved, this, &MainWindow::_previewAfterLayout);

    _nameField = new QLineEdit(_controller.documentName());
    _nameField->setObjectName(QStringLiteral("filenameTextField"));
    _nameField->setAccessibleName(tr("Document name"));
    auto* sizeLabel = new QLabel;
    sizeLabel->setObjectName(QStringLiteral("sizeTextField"));
    sizeLabel->setAccessibleName(tr("Source size"));
    _inputView->setSizeTextField(sizeLabel);
    _outputControls = new OutputControls(_controller);
    _outputView->setFilesizeLabel(_outputControls->filesizeLabel());
    _outputView->setProgressIndicator(_outputControls->progressIndicator());

    auto* inputBar = new QHBoxLayout;
    inputBar->addWidget(new QLabel(tr("Name:")));
    inputBar->addWidget(_nameField, 1);
    inputBar->addWidget(sizeLabel);
    auto* bars = new QHBoxLayout;
    bars->addLayout(inputBar, 1);
    bars->addSpacing(16);
    bars->addWidget(_outputControls, 1);

    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    layout->addWidget(_splitter, 1);
    layout->addLayout(bars);
    setCentralWidget(central);

    connect(_nameField, &QLineEdit::textEdited, &_controller, &AppController::setDocumentName);
    connect(&_controller, &AppController::documentNameChanged, this, [this](const QString& name) {
        if (_nameField->text() != name) _nameField->setText(name);
    });

    _controller.setViews(_inputView, _outputView);
    _info = new InfoController(_controller.defaults(), this);
    connect(&_controller, &AppController::sourcePathChanged, _info, &InfoController::setPath);
    _buildMenus();
    resize(1100, 720);
    restoreFrame();
}

void MainWindow::_buildMenus() {
    QMenu* file = menuBar()->addMenu(tr("&File"));
    QAction* openAction = file->addAction(tr("Open…"), this, &MainWindow::open);
    openAction->setShortcut(QKeySequence::Open);
    QAction* revert = file->addAction(tr("Revert"), &_controller, &AppController::revert);
    file->addSeparator();
    QAction* save = file->addAction(tr("Save…"), &_controller, &AppController::saveDocumentAs);
    save->setShortcut(QKeySequence::Save);
    QAction* print = file->addAction(tr("Print…"), &_controller, &AppController::print);
    print->setShortcut(QKeySequence::Print);
    file->addSeparator();
    QAction* getInfo = file->addAction(tr("Get Info"), this, [this] { _info->showWindow(); });
    getInfo->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_I));
    file->addSeparator();
    QAction* quit = file->addAction(tr("Quit Marigold"), this, &QWidget::close);
    quit->setShortcut(QKeySequence::Quit);

    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    UndoManager& undo = _controller.undoManager();
    _undoAction = edit->addAction(tr("Undo"), &undo, &UndoManager::undo);
    _undoAction->setShortcut(QKeySequence::Undo);
    _redoAction = edit->addAction(tr("Redo"), &undo, &UndoManager::redo);
    _redoAction->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z));
    edit->addSeparator();
    QAction* copy = edit->addAction(tr("Copy"), &_controller, &AppController::copyOutputImage);
    copy->setShortcut(QKeySequence::Copy);
    QAction* paste = edit->addAction(tr("Paste"), &_controller, &AppController::paste);
    paste->setShortcut(QKeySequence::Paste);
    QAction* discard = edit->addAction(tr("Discard Image"), &_controller, &AppController::discardImage);
    edit->addSeparator();
    QAction* selectAll = edit->addAction(tr("Select All"), &_controller, &AppController::selectAll);
    selectAll->setShortcut(QKeySequence::SelectAll);
    QAction* deselect = edit->addAction(tr("Deselect"), &_controller, &AppController::deselect);
    deselect->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A));
    connect(&undo, &UndoManager::changed, this, &MainWindow::_updateUndoTitles);
    connect(edit, &QMenu::aboutToShow, this, &MainWindow::_updateUndoTitles);
    _updateUndoTitles();

    // Commands that need an output, an input, or a source file on disk. Shortcuts stay
    // live while the menus are closed, so the state is kept current, not only on showing.
    const auto updateEnabled = [=, this] {
        const bool output = !_outputView->image().isNull();
        for (QAction* action : {save, print, copy}) action->setEnabled(output);
        discard->setEnabled(!_inputView->image().isNull());
        revert->setEnabled(_controller.canRevert());
    };
    connect(_outputView, &OutputImageView::pixelSizeChanged, this, updateEnabled);
    connect(&_controller, &AppController::documentNameChanged, this, updateEnabled);
    connect(file, &QMenu::aboutToShow, this, updateEnabled);
    connect(edit, &QMenu::aboutToShow, this, updateEnabled);
    updateEnabled();
}

void MainWindow::_updateUndoTitles() {
    const UndoManager& undo = _controller.undoManager();
    _undoAction->setText(undo.undoMenuItemTitle());
    _undoAction->setEnabled(undo.canUndo());
    _redoAction->setText(undo.redoMenuItemTitle());
    _redoAction->setEnabled(undo.canRedo());
}

void MainWindow::open() {
    const QString path = QFileDialog::getOpenFileName(this, tr("Open"), QString(),
                                                      imageFileFilter());
    // A file that cannot be read leaves everything as it was and says nothing.
    if (!path.isEmpty()) _controller.openFile(path);
}

void MainWindow::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    _equalisePanes();
    _previewAfterLayout();
}

void MainWindow::_previewAfterLayout() {
    // A resize sends many events in one pass; one preview after them is enough.
    if (_previewPending) return;
    _previewPending = true;
    QTimer::singleShot(0, this, [this] {
        _previewPending = false;
        _controller.updatePreview();
    });
}

void MainWindow::_equalisePanes() {
    const int half = (_splitter->width() - _splitter->handleWidth()) / 2;
    _splitter->setSizes({half, half});
}

void MainWindow::saveFrame() {
    _controller.defaults().setFrame(kFrameKey, saveGeometry());
}

void MainWindow::restoreFrame() {
    const QByteArray frame = _controller.defaults().frameForKey(kFrameKey);
    if (!frame.isEmpty()) restoreGeometry(frame);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    saveFrame();
    event->accept();
}

}  // namespace marigold
