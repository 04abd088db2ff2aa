#pragma once

#include <QAbstractTableModel>
#include <QList>

#include "constraints/ConstraintPresets.h"

namespace marigold {

// One of the manager's two tables: a working copy of the ratio or size presets, with the
// name, width and height columns. Edits follow `editedPreset`; a row is reordered by dragging
// it within its own table only, since each table offers and accepts a drag type of its own.
class PresetTableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    explicit PresetTableModel(PresetKind kind, QObject* parent = nullptr);

    // "com.BlueFinch.Marigold.RatioPboardType" or "com.BlueFinch.Marigold.SizePboardType".
    static QString dragType(PresetKind kind);

    PresetKind kind() const { return _kind; }
    const QList<ConstraintPreset>& presets() const { return _presets; }
    void setPresets(const QList<ConstraintPreset>& presets);

    // Each returns the row the new record is in: always the last.
    int addPreset();
    int duplicatePreset(int row);
    void removePreset(int row);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    QStringList mimeTypes() const override;
    // Only a single row is dragged; its number travels under the table's own type.
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    // A drop onto a row lands above it; one past the rows lands at the end.
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;
    Qt::DropActions supportedDropActions() const override;
    Qt::DropActions supportedDragActions() const override;

Q_SIGNALS:
    // A drop moved a record; it is now at `row`, which the table selects.
    void rowMoved(int row);

private:
    int _append(const ConstraintPreset& preset);

    PresetKind _kind;
    QList<ConstraintPreset> _presets;
};

}  // namespace marigold
