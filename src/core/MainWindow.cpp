#include "core/MainWindow.h"

#include <QCloseEvent>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QStatusBar>
#include <QTimer>
#include <QVBoxLayout>
#include <vips/vips8>

#include "constraints/ConstraintManager.h"
#include "core/AppController.h"
#include "core/CaptureMenu.h"
#include "core/ConstraintControls.h"
#include "core/OutputControls.h"
#include "core/PreferenceController.h"
#include "core/RotationControls.h"
#include "core/SendToMenu.h"
#include "core/SettingsMenus.h"
#include "destinations/DestinationDrawer.h"
#include "core/ValueLabel.h"
#include "jpeg/InfoController.h"
#include "output/OutputImageView.h"
#include "platform/DefaultsKeys.h"
#include "selection/CenteringScrollArea.h"
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
    : QMainWindow(parent), _controller(controller), _dialogs(this) {
    setWindowTitle(_controller.title());
    setObjectName(QStringLiteral("mainWindow"));
    _buildPanes();
    _dialogs.setBusyIndicator(_outputControls->progressIndicator());
    _controller.setWindowSide(&_dialogs);
    _info = new InfoController(_controller.defaults(), this);
    _preferences = new PreferenceController(_controller, this);
    _constraintManager = new ConstraintManager(_controller.ratioController(), this);
    _controller.ratioController().setShowManagerHandler(
        [this] { _constraintManager->showManager(); });
    _drawer = new DestinationDrawer(_controller.targetController(), _controller.tmpdir(), this);
    addDockWidget(Qt::RightDockWidgetArea, _drawer);
    _sendTo = new SendToMenu(_controller, this);
    _outputView->setDoubleClickTarget([this] { return &_controller.targetController(); });
    _outputView->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(_outputView, &QWidget::customContextMenuRequested, &_connections,
            [this](const QPoint& at) { _sendTo->popup(_outputView->mapToGlobal(at)); });
    _buildMenus();

    const Document& document = _controller.document();
    connect(&document, &Document::imageChanged, &_connections, [this] { _showDocument(); });
    connect(&document, &Document::nameChanged, &_connections, [this](const QString& name) {
        if (_nameField->text() != name) _nameField->setText(name);
    });
    connect(&document, &Document::sourcePathChanged, _info, &InfoController::setPath);
    connect(_nameField, &QLineEdit::textEdited, &_connections,
            [this](const QString& name) { _controller.setDocumentName(name); });
    connect(&_controller, &AppController::previewChanged, &_connections,
            [this](const Image& preview, const QString& message) {
                _outputView->setImage(preview);
                _outputView->setMessage(message);
                // Previews come with every drag step: only what depends on them is updated.
                _updateOutputItems();
            });
    connect(&_controller, &AppController::settingsChanged, &_connections, [this] {
        _outputView->setImageScaling(_controller.previewMode());
        _inputView->setDrawCrossHair(_controller.defaults().boolForKey(keys::DefCrossHair));
    });
    connect(&_controller, &AppController::titleChanged, &_connections,
            [this](const QString& title) { setWindowTitle(title); });
    _outputView->setImageScaling(_controller.previewMode());
    _showDocument();
    resize(1100, 720);
    restoreFrame();
}

MainWindow::~MainWindow() {
    _controller.setWindowSide(nullptr);
    _controller.ratioController().setShowManagerHandler({});
}

void MainWindow::_buildPanes() {
    _inputView = new InputImageView;
    _inputView->setObjectName(QStringLiteral("inputView"));
    _inputView->setAccessibleName(tr("Source image"));
    _inputView->setMinimumWidth(kMinimumPaneWidth);
    _inputView->setDocument(&_controller.document());
    _inputView->setDelegate(&_controller);
    _inputView->setConstraint(&_controller.ratioController());
    _outputView = new OutputImageView;
    _outputView->setObjectName(QStringLiteral("outputView"));
    _outputView->setAccessibleName(tr("Output image"));
    _outputView->setDelegate(&_controller);
    _outputScroll = new CenteringScrollArea;
    _outputScroll->setObjectName(QStringLiteral("outputScrollView"));
    _outputScroll->setMinimumWidth(kMinimumPaneWidth);
    _outputScroll->setFrameShape(QFrame::NoFrame);
    _outputScroll->setWidgetResizable(true);
    _outputScroll->setWidget(_outputView);

    _splitter = new QSplitter(Qt::Horizontal);
    _splitter->setChildrenCollapsible(false);
    _splitter->addWidget(_inputView);
    _splitter->addWidget(_outputScroll);
    for (int i = 0; i < _splitter->count(); ++i) {
        _splitter->handle(i)->setAccessibleName(tr("Divider between the panes"));
    }
    connect(_splitter, &QSplitter::splitterMoved, &_connections, [this] { _previewAfterLayout(); });

    _nameField = new QLineEdit(_controller.documentName());
    _nameField->setObjectName(QStringLiteral("filenameTextField"));
    _nameField->setAccessibleName(tr("Document name"));
    _sizeLabel = new QLabel;
    _sizeLabel->setObjectName(QStringLiteral("sizeTextField"));
    _sizeLabel->setAccessibleName(tr("Source size"));
    _outputControls = new OutputControls(_controller);

    auto* inputBar = new QHBoxLayout;
    auto* nameLabel = new QLabel(tr("Name:"));
    nameLabel->setBuddy(_nameField);
    inputBar->addWidget(nameLabel);
    inputBar->addWidget(_nameField, 1);
    inputBar->addWidget(_sizeLabel);
    _rotationControls = new RotationControls(_controller);
    _constraintControls = new ConstraintControls(_controller.ratioController());
    auto* inputSide = new QVBoxLayout;
    inputSide->addLayout(inputBar);
    for (QWidget* row : {static_cast<QWidget*>(_constraintControls),
                         static_cast<QWidget*>(_rotationControls)}) {
        auto* line = new QHBoxLayout;
        line->addWidget(row);
        line->addStretch();
        inputSide->addLayout(line);
    }
    auto* bars = new QHBoxLayout;
    bars->addLayout(inputSide, 1);
    bars->addSpacing(16);
    bars->addWidget(_outputControls, 1);

    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    layout->addWidget(_splitter, 1);
    layout->addLayout(bars);
    setCentralWidget(central);
    statusBar()->setObjectName(QStringLiteral("statusLine"));
    statusBar()->setAccessibleName(tr("Status"));
    // Desktop window managers give every window its own resize handles.
    statusBar()->setSizeGripEnabled(false);
}

void MainWindow::_buildMenus() {
    QMenu* file = menuBar()->addMenu(tr("&File"));
    QAction* openAction = file->addAction(tr("Open…"), this, &MainWindow::open);
    openAction->setShortcut(QKeySequence::Open);
    _actions.revert = file->addAction(tr("Revert"), &_controller, &AppController::revert);
    file->addSeparator();
    _actions.save = file->addAction(tr("Save…"), &_controller, &AppController::saveDocumentAs);
    _actions.save->setShortcut(QKeySequence::Save);
    _actions.print = file->addAction(tr("Print…"), &_controller, &AppController::print);
    _actions.print->setShortcut(QKeySequence::Print);
    file->addMenu(_sendTo);
    file->addAction(tr("Photo Browser"), &_controller, &AppController::openPhotoBrowser);
    file->addMenu(buildCaptureMenu(_controller, this));
    file->addSeparator();
    QAction* getInfo = file->addAction(tr("Get Info"), _info, &InfoController::showWindow);
    getInfo->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_I));
    file->addSeparator();
    QAction* quit = file->addAction(tr("Quit Marigold"), this, &QWidget::close);
    quit->setShortcut(QKeySequence::Quit);

    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    UndoManager& undo = _controller.undoManager();
    _actions.undo = edit->addAction(tr("Undo"), &undo, &UndoManager::undo);
    _actions.undo->setShortcut(QKeySequence::Undo);
    _actions.redo = edit->addAction(tr("Redo"), &undo, &UndoManager::redo);
    _actions.redo->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z));
    edit->addSeparator();
    _actions.copy = edit->addAction(tr("Copy"), &_controller, &AppController::copyOutputImage);
    _actions.copy->setShortcut(QKeySequence::Copy);
    QAction* paste = edit->addAction(tr("Paste"), &_controller, &AppController::paste);
    paste->setShortcut(QKeySequence::Paste);
    _actions.discard =
        edit->addAction(tr("Discard Image"), &_controller, &AppController::discardImage);
    edit->addSeparator();
    QAction* selectAll = edit->addAction(tr("Select All"), &_controller, &AppController::selectAll);
    selectAll->setShortcut(QKeySequence::SelectAll);
    QAction* deselect = edit->addAction(tr("Deselect"), &_controller, &AppController::deselect);
    deselect->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A));
    edit->addSeparator();
    QAction* preferences =
        edit->addAction(tr("Preferences…"), _preferences, &PreferenceController::showWindow);
    preferences->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    preferences->setMenuRole(QAction::PreferencesRole);

    QMenu* image = menuBar()->addMenu(tr("&Image"));
    _actions.rotateLeft = image->addAction(tr("Rotate 90° Left"), &_controller,
                                           [this] { _controller.rotateImage90(true); });
    _actions.rotateLeft->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_L));
    _actions.rotateRight = image->addAction(tr("Rotate 90° Right"), &_controller,
                                            [this] { _controller.rotateImage90(false); });
    _actions.rotateRight->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    _actions.rotateCCW =
        image->addAction(tr("Rotate Left"), &_controller, &AppController::rotateImageCCW);
    _actions.rotateCW =
        image->addAction(tr("Rotate Right"), &_controller, &AppController::rotateImageCW);
    _actions.rotateCCWFine = image->addAction(tr("Rotate Left by 1°"), _rotationControls,
                                              [this] { _rotationControls->rotateFine(1); });
    _actions.rotateCWFine = image->addAction(tr("Rotate Right by 1°"), _rotationControls,
                                             [this] { _rotationControls->rotateFine(-1); });
    image->addSeparator();
    _actions.flipHorizontal =
        image->addAction(tr("Flip Horizontal"), &_controller, &AppController::flipHorizontal);
    _actions.flipVertical =
        image->addAction(tr("Flip Vertical"), &_controller, &AppController::flipVertical);
    _actions.desaturate =
        image->addAction(tr("Desaturate"), &_controller, &AppController::desaturate);
    _actions.desaturate->setToolTip(tr("Desaturate (ie. make grayscale)"));
    image->addSeparator();
    QAction* manage = image->addAction(tr("Manage Constraints…"), _constraintManager,
                                       &ConstraintManager::showManager);
    manage->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Semicolon));
    menuBar()->addMenu(buildOutputMenu(_controller, this, &_connections));
    QMenu* view = menuBar()->addMenu(tr("&View"));
    QAction* drawer = view->addAction(QString(), _drawer, [this] {
        _drawer->setVisible(!_drawer->isVisible());
    });
    drawer->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_D));
    const auto titleDrawerItem = [this, drawer] {
        drawer->setText(_drawer->isVisible() ? tr("Hide Destination Drawer")
                                             : tr("Show Destination Drawer"));
    };
    connect(_drawer, &QDockWidget::visibilityChanged, &_connections, titleDrawerItem);
    connect(view, &QMenu::aboutToShow, &_connections, titleDrawerItem);
    titleDrawerItem();

    // Shortcuts stay live while the menus are closed, so the state is kept current, not
    // only when a menu opens.
    connect(&undo, &UndoManager::changed, &_connections, [this] { _updateMenus(); });
    connect(&_controller.document(), &Document::sourcePathChanged, &_connections,
            [this] { _updateMenus(); });
    for (QMenu* menu : {file, edit, image}) {
        connect(menu, &QMenu::aboutToShow, &_connections, [this] { _updateMenus(); });
    }
    _updateMenus();
}

void MainWindow::_updateMenus() {
    const UndoManager& undo = _controller.undoManager();
    _actions.undo->setText(undo.undoMenuItemTitle());
    _actions.undo->setEnabled(undo.canUndo());
    _actions.redo->setText(undo.redoMenuItemTitle());
    _actions.redo->setEnabled(undo.canRedo());
    _updateOutputItems();
    const bool picture = _controller.document().hasImage();
    for (QAction* action :
         {_actions.discard, _actions.rotateLeft, _actions.rotateRight, _actions.rotateCCW,
          _actions.rotateCW, _actions.rotateCCWFine, _actions.rotateCWFine, _actions.flipHorizontal,
          _actions.flipVertical, _actions.desaturate}) {
        action->setEnabled(picture);
    }
    _actions.revert->setEnabled(_controller.canRevert());
}

void MainWindow::_updateOutputItems() {
    const bool output = _controller.hasOutput();
    for (QAction* action : {_actions.save, _actions.print, _actions.copy}) {
        action->setEnabled(output);
    }
    _sendTo->setOutputAvailable(output);
}

void MainWindow::_showDocument() {
    const Image& image = _controller.document().image();
    showLabelValue(_sizeLabel, image.isNull() ? QString()
                                              : QStringLiteral("%1 x %2")
                                                    .arg(std::lround(image.size().width))
                                                    .arg(std::lround(image.size().height)));
    _updateMenus();
    if (!image.isNull() && isVisible()) {
        raise();
        activateWindow();
    }
}

void MainWindow::open() {
    const QString path =
        QFileDialog::getOpenFileName(this, tr("Open"), QString(), imageFileFilter());
    // A file that cannot be read leaves everything as it was; the status line says why.
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
    QTimer::singleShot(0, &_connections, [this] {
        _previewPending = false;
        _controller.setPreviewPixelLimit(_outputView->displayPixelLimit());
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
