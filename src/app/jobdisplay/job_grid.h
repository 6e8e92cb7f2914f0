#pragma once
// The job display's grid (`DataGrid1`): a table view over GridModel whose
// columns follow the job-grid display-field catalogue - which columns are
// visible, in what order and how wide. Moving, resizing, showing or hiding
// a column writes back into the catalogue (saved with the settings at
// shutdown). Clicking a column heading asks for a sort by that caption.

#include <QTableView>

#include "jobview/grid_query.h"
#include "stationdb/display_fields.h"

class QMenu;

namespace qarvel::app {

class GridModel;

class JobGrid : public QTableView {
    Q_OBJECT

public:
    JobGrid(stationdb::DisplayFieldCatalogue& catalogue, QWidget* parent = nullptr);

    GridModel* Model() const { return m_model; }
    // Shows the rows the grid query read; widths come from the catalogue.
    void SetTable(jobview::GridTable table);

    // Column chooser ("SelFields"): a menu of every caption, ticked when
    // visible; at least one column stays visible.
    QMenu* ColumnMenu(QWidget* parent);
    // Shows or hides the column of `caption`; false when that would leave
    // no column or the caption is unknown.
    bool SetColumnVisible(const QString& caption, bool visible);

    // The caption of the column holding the current cell ("" when none).
    QString CurrentCaption() const;
    // Marks the sorted column in the heading.
    void ShowSortIndicator(const QString& caption, bool descending);

signals:
    // A heading was clicked.
    void sortRequested(const QString& caption);
    // The visible columns or their order changed: the grid must be read
    // again to follow.
    void columnsChanged();

private:
    void OnSectionMoved();
    void OnSectionResized(int logical, int oldSize, int newSize);
    stationdb::DisplayField* FieldOfCaption(const QString& caption);

    stationdb::DisplayFieldCatalogue& m_catalogue;
    GridModel* m_model;
    bool m_applying = false;  // widths being set from the catalogue
};

}  // namespace qarvel::app
