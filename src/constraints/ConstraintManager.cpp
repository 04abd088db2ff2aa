#include "constraints/ConstraintManager.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "constraints/RatioController.h"
#include "constraints/SingleEditTableView.h"

namespace marigold {

namespace {

// Long enough for the dialog to be gone before the pop-up changes under the person.
constexpr int kRebuildDelayMsec = 100;

QPushButton* sideButton(const QString& text, const QString& spoken, const QString& tip) {
    auto* button = new QPushButton(text);
    button->setAccessibleName(spoken);
    button->setToolTip(tip);
    // Return belongs to the table's edits and to OK, never to these.
    button->setAutoDefault(false);
    return button;
}

}  // namespace

ConstraintManager::ConstraintManager(RatioController& ratios, QWidget* window)
    : QDialog(window), _controller(ratios) {
    setObjectName(QStringLiteral("ConstraintManager"));
    setWindowTitle(tr("Manage Constraints"));
    setWindowModality(Qt::WindowModal);
    setMaximumSize(kMaximumWidth, kMaximumHeight);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel | QDialogButtonBox::Ok);
    QPushButton* revert = buttons->addButton(tr("Revert"), QDialogButtonBox::ResetRole);
    revert->setToolTip(tr("Bring back the saved lists, dropping the edits made here"));
    revert->setAutoDefault(false);
    buttons->button(QDialogButtonBox::Ok)->setDefault(true);
    connect(revert, &QPushButton::clicked, this, &ConstraintManager::revertPresets);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { done(1); });
    connect(buttons, &QDialogButtonBox::rejected, this, [this] { done(0); });

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(_buildSide(PresetKind::Ratio, tr("Ratios"), tr("ratio")), 1);
    layout->addWidget(_buildSide(PresetKind::Size, tr("Sizes"), tr("size")), 1);
    layout->addWidget(buttons);
    resize(420, 520);

    // Esc and the close box reject too, so every way out ends here exactly once.
    connect(this, &QDialog::finished, this, &ConstraintManager::_sheetDidEnd);
    connect(this, &QDialog::finished, window, [window] { window->activateWindow(); });
}

QWidget* ConstraintManager::_buildSide(PresetKind kind, const QString& title,
                                       const QString& spokenKind) {
    Side& side = _side(kind);
    PresetTableModel& model = table(kind);
    side.view = new SingleEditTableView;
    side.view->setModel(&model);
    side.view->setAccessibleName(kind == PresetKind::Ratio ? tr("Ratio presets")
                                                           : tr("Size presets"));
    side.view->setToolTip(kind == PresetKind::Ratio
                              ? tr("Ratios as width and height terms; drag a row to reorder")
                              : tr("Output sizes in pixels; a side of 0 is left free; drag a "
                                   "row to reorder"));
    auto* add = sideButton(tr("Add"), tr("Add %1").arg(spokenKind),
                           tr("Add a %1 preset at the end").arg(spokenKind));
    side.duplicate = sideButton(tr("Duplicate"), tr("Duplicate %1").arg(spokenKind),
                                tr("Copy the selected %1 preset to the end").arg(spokenKind));
    side.remove = sideButton(tr("Remove"), tr("Remove %1").arg(spokenKind),
                             tr("Remove the selected %1 preset").arg(spokenKind));
    connect(add, &QPushButton::clicked, this, [this, kind] { addPreset(kind); });
    connect(side.duplicate, &QPushButton::clicked, this, [this, kind] { duplicatePreset(kind); });
    connect(side.remove, &QPushButton::clicked, this, [this, kind] { removePreset(kind); });
    connect(side.view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this, kind] { _updateButtons(kind); });
    connect(&model, &PresetTableModel::rowMoved, side.view,
            [view = side.view](int row) { view->selectRow(row); });
    // A reset (load, revert, drop) forgets the selection without telling the selection model's
    // listeners, so the buttons are brought up to date here too.
    connect(&model, &QAbstractItemModel::modelReset, this, [this, kind] { _updateButtons(kind); });

    auto* row = new QHBoxLayout;
    row->addWidget(add);
    row->addWidget(side.duplicate);
    row->addWidget(side.remove);
    row->addStretch();
    auto* box = new QGroupBox(title);
    auto* layout = new QVBoxLayout(box);
    layout->addWidget(side.view, 1);
    layout->addLayout(row);
    return box;
}

SingleEditTableView* ConstraintManager::tableView(PresetKind kind) const {
    return kind == PresetKind::Ratio ? _ratioSide.view : _sizeSide.view;
}

void ConstraintManager::showManager() {
    if (isVisible() || QApplication::activeModalWidget()) return;
    revertPresets();
    open();
}

void ConstraintManager::revertPresets() {
    for (PresetKind kind : {PresetKind::Ratio, PresetKind::Size}) {
        table(kind).setPresets(_controller.presets(kind));
        tableView(kind)->clearSelection();
        _updateButtons(kind);
    }
}

void ConstraintManager::addPreset(PresetKind kind) {
    tableView(kind)->editName(table(kind).addPreset());
}

void ConstraintManager::duplicatePreset(PresetKind kind) {
    const int row = table(kind).duplicatePreset(tableView(kind)->selectedRow());
    if (row >= 0) tableView(kind)->editName(row);
}

void ConstraintManager::removePreset(PresetKind kind) {
    table(kind).removePreset(tableView(kind)->selectedRow());
    // Nothing is selected afterwards, so a second press cannot remove a row not chosen.
    tableView(kind)->clearSelection();
    _updateButtons(kind);
}

void ConstraintManager::_updateButtons(PresetKind kind) {
    Side& side = _side(kind);
    const bool selected = side.view->selectedRow() >= 0;
    side.remove->setEnabled(selected);
    side.duplicate->setEnabled(selected);
}

void ConstraintManager::_sheetDidEnd(int returnCode) {
    if (returnCode == 1) {
        for (PresetKind kind : {PresetKind::Ratio, PresetKind::Size}) {
            _controller.setPresets(kind, table(kind).presets());
        }
    }
    QTimer::singleShot(kRebuildDelayMsec, &_controller,
                       [ratios = &_controller] { ratios->setConstraintMenuItems(); });
}

}  // namespace marigold
