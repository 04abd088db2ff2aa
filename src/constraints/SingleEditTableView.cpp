#include "constraints/SingleEditTableView.h"

#include <QHeaderView>

namespace marigold {

SingleEditTableView::SingleEditTableView(QWidget* parent) : QTableView(parent) {
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                    QAbstractItemView::SelectedClicked);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    setDragDropOverwriteMode(false);
    setDefaultDropAction(Qt::MoveAction);
    verticalHeader()->hide();
    horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
}

void SingleEditTableView::setModel(QAbstractItemModel* model) {
    QTableView::setModel(model);
    // The name takes the room the numbers leave; there is no section before a model.
    if (model && model->columnCount() > 0) {
        horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    }
}

void SingleEditTableView::selectRow(int row) {
    clearSelection();
    if (row < 0 || !model() || row >= model()->rowCount()) return;
    setCurrentIndex(model()->index(row, 0));
    QTableView::selectRow(row);
}

void SingleEditTableView::editName(int row) {
    selectRow(row);
    if (row < 0 || !model() || row >= model()->rowCount()) return;
    const QModelIndex name = model()->index(row, 0);
    scrollTo(name);
    setFocus();
    edit(name);
}

int SingleEditTableView::selectedRow() const {
    const QModelIndexList rows = selectionModel() ? selectionModel()->selectedRows()
                                                  : QModelIndexList();
    return rows.size() == 1 ? rows.first().row() : -1;
}

}  // namespace marigold
