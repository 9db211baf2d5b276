#include "ui/CaptionModel.h"

#include "ui/RowIcons.h"
#include "ui/support/PlainTip.h"

namespace ui {

CaptionModel::CaptionModel(questionnaire::CaptionTable& table, QObject* parent)
    : QAbstractTableModel(parent), m_table(table) {
    m_table.AddListener(this);
}

CaptionModel::~CaptionModel() {
    m_table.RemoveListener(this);
}

int CaptionModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_table.RowCount());
}

int CaptionModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_table.ColumnCount();
}

QVariant CaptionModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return m_table.Text(index.row(), index.column());
    case Qt::ToolTipRole: // a text cut short in its cell is read whole in its tip
        return PlainTip(m_table.Text(index.row(), index.column()));
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(Qt::AlignLeft | Qt::AlignTop);
    default:
        return {};
    }
}

QVariant CaptionModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Horizontal) {
        if (section < 0 || section >= m_table.ColumnCount())
            return {};
        if (role == Qt::DisplayRole)
            return m_table.ColumnTitle(section);
        if (role == Qt::TextAlignmentRole)
            return QVariant::fromValue(Qt::AlignCenter);
        return {};
    }
    if (section < 0 || section >= m_table.RowCount())
        return {};
    if (role == Qt::DisplayRole)
        return m_table.RowLabel(section);
    if (role == Qt::DecorationRole)
        return RowIcon(m_table.Kind(section));
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(Qt::AlignLeft | Qt::AlignVCenter);
    return {};
}

Qt::ItemFlags CaptionModel::flags(const QModelIndex& index) const {
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsDropEnabled;
}

bool CaptionModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!index.isValid() || role != Qt::EditRole)
        return false;
    const bool accepted = m_table.WriteBack(index.row(), index.column(), value.toString());
    // Views paint the typed text, also when it stored nothing new, or the old text again.
    Q_EMIT dataChanged(index, index);
    return accepted;
}

void CaptionModel::CellChanged(qsizetype row, int column) {
    const QModelIndex changed = this->index(int(row), column);
    Q_EMIT dataChanged(changed, changed);
}

void CaptionModel::TableRefilled() {
    beginResetModel();
    endResetModel();
}

} // namespace ui
