#pragma once

#include <QTableView>

namespace marigold {

// A table of presets: whole rows selected one at a time, each cell edited on its own (Return
// ends an edit in the table, before the dialog's default button sees the key), and a row
// dragged to a new place, which the model carries out. The model removes no rows on Qt's
// request, so the move is never followed by a removal of the dragged row.
class SingleEditTableView : public QTableView {
    Q_OBJECT

public:
    explicit SingleEditTableView(QWidget* parent = nullptr);
    void setModel(QAbstractItemModel* model) override;

    // Selects `row` and opens its name for editing, the text selected.
    void editName(int row);
    void selectRow(int row);
    // The selected row, or -1.
    int selectedRow() const;
};

}  // namespace marigold
