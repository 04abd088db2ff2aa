#include "core/PreferenceController.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QPainter>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include "core/AppController.h"
#include "core/CursorImages.h"
#include "core/SettingRanges.h"
#include "core/WindowDialogs.h"
#include "platform/DefaultsKeys.h"

namespace marigold {

using namespace keys;

namespace {

// Long enough for the dialog to be gone before the preview is redrawn.
constexpr int kApplyDelayMsec = 200;
constexpr int kSwatchSize = 16;

// A checkerboard under the colour, so a translucent border reads as translucent.
QIcon swatchIcon(const QColor& color) {
    QPixmap pixmap(kSwatchSize * 2, kSwatchSize);
    QPainter painter(&pixmap);
    constexpr int cell = kSwatchSize / 4;
    for (int y = 0; y < pixmap.height(); y += cell) {
        for (int x = 0; x < pixmap.width(); x += cell) {
            painter.fillRect(x, y, cell, cell,
                             (x / cell + y / cell) % 2 ? Qt::lightGray : Qt::white);
        }
    }
    painter.fillRect(pixmap.rect(), color);
    painter.setPen(Qt::darkGray);
    painter.drawRect(pixmap.rect().adjusted(0, 0, -1, -1));
    return QIcon(pixmap);
}

}  // namespace

PreferenceController::PreferenceController(AppController& controller, QWidget* parentWindow)
    : QObject(parentWindow), _controller(controller), _buffer(controller.defaults()) {
    _dialog = new QDialog(parentWindow);
    _dialog->setObjectName(QStringLiteral("Preferences"));
    _dialog->setWindowTitle(tr("Preferences"));
    _dialog->setWindowModality(Qt::WindowModal);
    _build();
    // Esc and the close box reject, so every way out ends here exactly once.
    connect(_dialog, &QDialog::finished, this, &PreferenceController::sheetDidEnd);
    returnKeyboardOnClose(_dialog, parentWindow);
}

PreferenceController::~PreferenceController() = default;

void PreferenceController::showWindow() {
    updateDefaultsController();
    _loadControls();
    _dialog->open();
}

void PreferenceController::accept() {
    _dialog->done(1);
}

void PreferenceController::cancel() {
    _dialog->done(0);
}

void PreferenceController::sheetDidEnd(int returnCode) {
    if (returnCode < 1) {
        _buffer.revert();
    } else {
        _buffer.save();
    }
    QTimer::singleShot(kApplyDelayMsec, &_controller,
                       [&controller = _controller] { controller.preferenceDidChange(); });
}

void PreferenceController::updateDefaultsController() {
    _buffer.updateDefaultsController();
}

bool PreferenceController::isVisible() const {
    return _dialog->isVisible();
}

void PreferenceController::_build() {
    auto* layout = new QVBoxLayout(_dialog);

    QFormLayout* output = _group(tr("Output"));
    output->addRow(_checkBox(DefBorder, tr("Draw a border around the output"),
                             tr("Frame the output picture with a border")));
    output->addRow(tr("Border thickness:"),
                   _spinBox(DefBorderThickness, tr("Border thickness"), tr(" px"),
                            tr("How wide the border is, in output pixels")));
    output->addRow(tr("Border colour:"),
                   _colorSwatch(DefBorderColor, tr("Border colour"),
                                tr("Choose the border's colour and opacity")));
    output->addRow(tr("Scaling quality:"),
                   _popUp(DefInterpolation, tr("Scaling quality"),
                          {tr("Default"), tr("None"), tr("Low"), tr("High")},
                          tr("How smoothly pixels are blended when the output is resized")));
    output->addRow(tr("Metadata:"),
                   _popUp(DefPreserveExif, tr("Metadata to keep"),
                          {tr("None"), tr("EXIF from the source JPEG"), tr("All metadata")},
                          tr("Which information from the opened file goes into the output")));

    QFormLayout* selection = _group(tr("Selection"));
    selection->addRow(_checkBox(DefCrossHair, tr("Show crosshair"),
                                tr("Draw lines through the centre of the selection")));
    selection->addRow(_checkBox(DefConstrainRotation, tr("Rotation slider snaps to steps"),
                                tr("The rotation slider stops at fixed angles; hold Shift to "
                                   "rotate freely")));

    QFormLayout* capture = _group(tr("Capture"));
    capture->addRow(_checkBox(DefPlaySound, tr("Play a sound when capturing"),
                              tr("Play the shutter sound when a capture is taken")));
    capture->addRow(
        tr("Time stamp:"),
        _popUp(DefTimeStamp, tr("Time stamp"), {tr("None"), tr("Date"), tr("Date and time")},
               tr("Write the date, or the date and time, onto every capture")));
    QComboBox* pointer = _popUp(DefCursor, tr("Pointer in timed captures"), {tr("None")},
                                tr("The pointer painted into a timed capture where the mouse was"));
    const QStringList pointerNames = {tr("Arrow"), tr("I-beam"), tr("Crosshair"), tr("Open hand"),
                                      tr("Pointing hand")};
    for (int i = 0; i < cursorNames().size(); ++i) {
        const QImage& picture = cursorImages().value(cursorNames()[i]).image;
        pointer->addItem(QIcon(QPixmap::fromImage(picture)), pointerNames[i]);
    }
    pointer->setIconSize(cursorImages().first().image.size());
    capture->addRow(tr("Pointer:"), pointer);
    capture->addRow(tr("Timed capture delay:"),
                    _spinBox(DefTimedCaptureDelay, tr("Timed capture delay"), tr(" s"),
                             tr("Seconds to wait before a timed capture is taken")));

    QFormLayout* window = _group(tr("Window"));
    window->addRow(_checkBox(DefOpenLastAtLaunch, tr("Reopen the last picture at start"),
                             tr("Open the most recent picture again when Marigold starts")));
    window->addRow(_checkBox(DefAutoOrderBack, tr("Move the window back while dragging output"),
                             tr("While the output is dragged out, the window goes behind "
                                "others and turns half transparent")));
    window->addRow(_checkBox(DefAutoOrderFront, tr("Bring the window front after dragging"),
                             tr("When the output drag ends, the window comes to the front "
                                "again")));

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &PreferenceController::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &PreferenceController::cancel);
    layout->addWidget(_groups);
    layout->addWidget(buttons);
}

QFormLayout* PreferenceController::_group(const QString& title) {
    // Two columns of groups keep the dialog short enough for small screens.
    if (!_groups) {
        _groups = new QWidget;
        new QGridLayout(_groups);
    }
    auto* grid = static_cast<QGridLayout*>(_groups->layout());
    auto* box = new QGroupBox(title);
    const int index = grid->count();
    grid->addWidget(box, index / 2, index % 2, Qt::AlignTop);
    return new QFormLayout(box);
}

// A control over one key: named and explained, storing its edits in the buffer, and set from
// the buffer at each showing without that counting as an edit.
template <typename Control, typename Changed, typename Store, typename Load>
Control* PreferenceController::_bound(Control* control, const QString& name, const QString& tip,
                                      Changed changed, Store store, Load load) {
    control->setAccessibleName(name);
    control->setToolTip(tip);
    connect(control, changed, this, store);
    _loaders.push_back([control, load] {
        const QSignalBlocker quiet(control);
        load(control);
    });
    return control;
}

QCheckBox* PreferenceController::_checkBox(QLatin1StringView key, const QString& text,
                                           const QString& tip) {
    return _bound(
        new QCheckBox(text), text, tip, &QCheckBox::toggled,
        [this, key](bool on) { _buffer.setBool(key, on); },
        [this, key](QCheckBox* box) { box->setChecked(_buffer.boolForKey(key)); });
}

QSpinBox* PreferenceController::_spinBox(QLatin1StringView key, const QString& name,
                                         const QString& suffix, const QString& tip) {
    auto* spin = new QSpinBox;
    if (const SettingRange* range = settingRange(key)) spin->setRange(range->low, range->high);
    spin->setSuffix(suffix);
    return _bound(
        spin, name, tip, &QSpinBox::valueChanged,
        [this, key](int value) { _buffer.setInteger(key, value); },
        [this, key](QSpinBox* box) { box->setValue(_buffer.integerForKey(key)); });
}

// Item i stands for code i.
QComboBox* PreferenceController::_popUp(QLatin1StringView key, const QString& name,
                                        const QStringList& items, const QString& tip) {
    auto* popUp = new QComboBox;
    popUp->addItems(items);
    return _bound(
        popUp, name, tip, &QComboBox::currentIndexChanged,
        [this, key](int index) { _buffer.setInteger(key, index); },
        [this, key](QComboBox* box) { box->setCurrentIndex(_buffer.integerForKey(key)); });
}

QToolButton* PreferenceController::_colorSwatch(QLatin1StringView key, const QString& name,
                                                const QString& tip) {
    auto* swatch = new QToolButton;
    swatch->setIconSize(QSize(kSwatchSize * 2, kSwatchSize));
    swatch->setAccessibleName(name);
    swatch->setToolTip(tip);
    connect(swatch, &QToolButton::clicked, this,
            [this, key, swatch] { _chooseColor(key, swatch); });
    _loaders.push_back(
        [this, swatch, key] { swatch->setIcon(swatchIcon(_buffer.colorForKey(key))); });
    return swatch;
}

void PreferenceController::_chooseColor(QLatin1StringView key, QToolButton* swatch) {
    auto* picker = new QColorDialog(_buffer.colorForKey(key), _dialog);
    picker->setOption(QColorDialog::ShowAlphaChannel);
    picker->setWindowModality(Qt::WindowModal);
    picker->setAttribute(Qt::WA_DeleteOnClose);
    connect(picker, &QColorDialog::colorSelected, this, [this, key, swatch](const QColor& color) {
        _buffer.setColor(key, color);
        swatch->setIcon(swatchIcon(color));
    });
    picker->open();
}

// Loading shows what is in effect; the blockers keep it from turning into edits.
void PreferenceController::_loadControls() {
    for (const auto& load : _loaders) load();
}

}  // namespace marigold
