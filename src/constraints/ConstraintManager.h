#pragma once

#include <QDialog>

#include "constraints/PresetTableModel.h"

class QPushButton;

namespace marigold {

class RatioController;
class SingleEditTableView;

// The dialog in which both preset lists are edited, window-modal over the main window. It
// works on copies of the saved lists: OK stores them, Cancel drops them, and either way the
// constraint pop-up is rebuilt a moment later (a choice that no longer exists becomes none).
class ConstraintManager : public QDialog {
    Q_OBJECT

public:
    ConstraintManager(RatioController& ratios, QWidget* window);

    // Loads the copies and shows the dialog without blocking; nothing while it is showing.
    void showManager();
    // Each on the ratio or the size list.
    void addPreset(PresetKind kind);
    void duplicatePreset(PresetKind kind);
    void removePreset(PresetKind kind);
    // Reloads both copies from the saved lists; the dialog stays open.
    void revertPresets();

    PresetTableModel& table(PresetKind kind) { return kind == PresetKind::Ratio ? _ratios : _sizes; }
    SingleEditTableView* tableView(PresetKind kind) const;

    static constexpr int kMaximumWidth = 745;
    static constexpr int kMaximumHeight = 700;

private:
    struct Side {
        SingleEditTableView* view = nullptr;
        QPushButton* remove = nullptr;
        QPushButton* duplicate = nullptr;
    };
    QWidget* _buildSide(PresetKind kind, const QString& title, const QString& spokenKind);
    Side& _side(PresetKind kind) { return kind == PresetKind::Ratio ? _ratioSide : _sizeSide; }
    void _updateButtons(PresetKind kind);
    void _sheetDidEnd(int returnCode);

    RatioController& _controller;
    PresetTableModel _ratios{PresetKind::Ratio};
    PresetTableModel _sizes{PresetKind::Size};
    Side _ratioSide;
    Side _sizeSide;
};

}  // namespace marigold
