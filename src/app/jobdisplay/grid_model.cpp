#include "app/jobdisplay/grid_model.h"

#include <variant>

namespace qarvel::app {

GridModel::GridModel(QObject* parent) : QAbstractTableModel(parent) {}

void GridModel::SetTable(jobview::GridTable table) {
    beginResetModel();
    m_table = std::move(table);
    endResetModel();
}

int GridModel::ColumnOfCaption(const QString& caption) const {
    const std::string text = caption.toStdString();
    for (std::size_t c = 0; c < m_table.captions.size(); ++c) {
        if (m_table.captions[c] == text) return static_cast<int>(c);
    }
    return -1;
}

QString GridModel::CellText(int row, int column) const {
    if (row < 0 || column < 0 || row >= rowCount() || column >= columnCount()) return {};
    const auto r = static_cast<std::size_t>(row);
    const auto c = static_cast<std::size_t>(column);
    if (c >= m_table.rows[r].size()) return {};
    return QString::fromStdString(jobview::FormatGridCell(m_table.columns[c], m_table.rows[r][c]));
}

int GridModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_table.rows.size());
}

int GridModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_table.columns.size());
}

QVariant GridModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    if (role == Qt::DisplayRole) return CellText(index.row(), index.column());
    if (role == Qt::TextAlignmentRole) {
        const auto& row = m_table.rows[static_cast<std::size_t>(index.row())];
        const auto c = static_cast<std::size_t>(index.column());
        const bool number = c < row.size() && (std::holds_alternative<std::int64_t>(row[c]) ||
                                               std::holds_alternative<double>(row[c]));
        return QVariant::fromValue(Qt::AlignVCenter | (number ? Qt::AlignRight : Qt::AlignLeft));
    }
    return {};
}

QVariant GridModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole) return {};
    if (orientation == Qt::Vertical) return section + 1;
    if (section < 0 || section >= columnCount()) return {};
    return QString::fromStdString(m_table.captions[static_cast<std::size_t>(section)]);
}

}  // namespace qarvel::app
