#include "constraints/PresetTableModel.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QMimeData>
#include <algorithm>

namespace marigold {

namespace {

constexpr int kColumns = 3;

PresetColumn columnAt(int column) {
    return column == 0 ? PresetColumn::Name
                       : column == 1 ? PresetColumn::Width : PresetColumn::Height;
}

}  // namespace

PresetTableModel::PresetTableModel(PresetKind kind, QObject* parent)
    : QAbstractTableModel(parent), _kind(kind) {}

QString PresetTableModel::dragType(PresetKind kind) {
    return kind == PresetKind::Ratio ? QStringLiteral("com.BlueFinch.Marigold.RatioPboardType")
                                     : QStringLiteral("com.BlueFinch.Marigold.SizePboardType");
}

void PresetTableModel::setPresets(const QList<ConstraintPreset>& presets) {
    beginResetModel();
    _presets = presets;
    endResetModel();
}

int PresetTableModel::_append(const ConstraintPreset& preset) {
    const int row = int(_presets.size());
    beginInsertRows({}, row, row);
    _presets.append(preset);
    endInsertRows();
    return row;
}

int PresetTableModel::addPreset() {
    return _append(untitledPreset(_kind));
}

int PresetTableModel::duplicatePreset(int row) {
    if (row < 0 || row >= _presets.size()) return -1;
    return _append(_presets[row]);
}

void PresetTableModel::removePreset(int row) {
    if (row < 0 || row >= _presets.size()) return;
    beginRemoveRows({}, row, row);
    _presets.removeAt(row);
    endRemoveRows();
}

int PresetTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(_presets.size());
}

int PresetTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumns;
}

QVariant PresetTableModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= _presets.size()) return {};
    const ConstraintPreset& preset = _presets[index.row()];
    switch (role) {
        case Qt::DisplayRole:
        case Qt::EditRole:
            // Numbers are edited as text, so that anything typed reaches the edit rules.
            switch (columnAt(index.column())) {
                case PresetColumn::Name:
                    return preset.name;
                case PresetColumn::Width:
                    return QString::number(preset.width);
                case PresetColumn::Height:
                    return QString::number(preset.height);
            }
            break;
        case Qt::TextAlignmentRole:
            if (index.column() > 0) return int(Qt::AlignRight | Qt::AlignVCenter);
            break;
        default:
            break;
    }
    return {};
}

QVariant PresetTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return QAbstractTableModel::headerData(section, orientation, role);
    }
    const char* titles[kColumns] = {QT_TR_NOOP("Name"), QT_TR_NOOP("Width"), QT_TR_NOOP("Height")};
    return section >= 0 && section < kColumns ? tr(titles[section]) : QVariant();
}

bool PresetTableModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || !index.isValid() || index.row() >= _presets.size()) return false;
    ConstraintPreset& preset = _presets[index.row()];
    preset = editedPreset(preset, _kind, columnAt(index.column()), value.toString());
    Q_EMIT dataChanged(this->index(index.row(), 0), this->index(index.row(), kColumns - 1));
    return true;
}

Qt::ItemFlags PresetTableModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::ItemIsDropEnabled;
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsEditable | Qt::ItemIsDragEnabled |
           Qt::ItemIsDropEnabled;
}

QStringList PresetTableModel::mimeTypes() const {
    return {dragType(_kind)};
}

QMimeData* PresetTableModel::mimeData(const QModelIndexList& indexes) const {
    QList<int> rows;
    for (const QModelIndex& index : indexes) {
        if (!rows.contains(index.row())) rows.append(index.row());
    }
    if (rows.size() != 1) return nullptr;
    auto* data = new QMimeData;
    data->setData(dragType(_kind), QJsonDocument(QJsonArray{rows.first()}).toJson());
    return data;
}

bool PresetTableModel::canDropMimeData(const QMimeData* data, Qt::DropAction, int, int,
                                       const QModelIndex&) const {
    return data && data->hasFormat(dragType(_kind));
}

bool PresetTableModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row,
                                    int column, const QModelIndex& parent) {
    if (!canDropMimeData(data, action, row, column, parent)) return false;
    const QJsonArray rows = QJsonDocument::fromJson(data->data(dragType(_kind))).array();
    const int from = rows.isEmpty() ? -1 : rows.first().toInt(-1);
    if (from < 0 || from >= _presets.size()) return false;
    int to = row >= 0 ? row : parent.isValid() ? parent.row() : int(_presets.size());
    to = std::clamp(to, 0, int(_presets.size()));
    beginResetModel();
    const int landed = moveObjectAtIndex(from, to, _presets);
    endResetModel();
    Q_EMIT rowMoved(landed);
    return true;
}

Qt::DropActions PresetTableModel::supportedDropActions() const {
    return Qt::MoveAction;
}

Qt::DropActions PresetTableModel::supportedDragActions() const {
    return Qt::MoveAction;
}

}  // namespace marigold
