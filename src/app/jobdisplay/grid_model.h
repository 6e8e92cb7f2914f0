#pragma once
// The job grid's table model: the rows the grid query read from
// `tempdisplay`, shown in the grid's number formats (distances, clearances
// and separations "0.00", the bearing "000"), numbers aligned right. The
// model holds a copy of the rows; the job display reloads it after each
// rebuild.

#include <QAbstractTableModel>

#include "jobview/grid_query.h"

namespace qarvel::app {

class GridModel : public QAbstractTableModel {
    Q_OBJECT

public:
    explicit GridModel(QObject* parent = nullptr);

    void SetTable(jobview::GridTable table);
    const jobview::GridTable& Table() const { return m_table; }
    // Column of a caption, -1 when the grid does not show it.
    int ColumnOfCaption(const QString& caption) const;
    // The text a cell shows.
    QString CellText(int row, int column) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    jobview::GridTable m_table;
};

}  // namespace qarvel::app
