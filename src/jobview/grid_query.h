#pragma once
// The job grid: which `tempdisplay` columns it lists under which captions,
// the query that reads them, the sort order and the number formats.

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "jobview/study_filter.h"
#include "stationdb/display_fields.h"

namespace qarvel::stationdb {
class Database;
}

namespace qarvel::jobview {

// The clearance limit (km) as the query texts write it: the shortest text
// that reads back as the same number ("10", "12.5", "-3").
std::string FormatLimit(double km);

// SortGrid: the sort column list for a grid caption ("Distance" ->
// "target_distance"); the captions are those of the job grid. Empty text for
// an unknown caption, reported under "frmDispJob" ":SortGrid:".
std::string SortGrid(std::string_view caption);

// The `tempdisplay` column a job-grid field name stands for, spelt as the
// table spells it ("Service" -> "service"); empty when it is none.
std::string TempDisplayColumnName(std::string_view fieldName);

// The grid query: "SELECT " then "column AS [Caption], " for each visible
// field in grid order (the last ", " dropped), " FROM tempdisplay ",
// " WHERE target_clearance <= " and the clearance limit, " AND Service <>
// 'AM'" when AM is hidden, then " ORDER BY " and the sort list and ";", or
// " ORDER BY target_clearance;" when the list is empty. The grid admits a
// clearance equal to the limit; the map draws only those below it.
std::string BuildGridQuery(const std::vector<stationdb::DisplayField>& visibleFields,
                           const StudyFilter& filter, std::string_view sortList);

// A grid cell: NULL, a whole number, a real number or text.
using GridValue = std::variant<std::monostate, std::int64_t, double, std::string>;

struct GridTable {
    std::vector<std::string> columns;   // `tempdisplay` column names, grid order
    std::vector<std::string> captions;  // the headings
    std::vector<std::vector<GridValue>> rows;
};

// Runs the grid query for the catalogue's visible fields on `job`. Reported
// under "frmDispJob" ":NewGridData:"; false on failure (*table unchanged).
bool ReadGrid(const stationdb::Database& job, const stationdb::DisplayFieldCatalogue& catalogue,
              const StudyFilter& filter, std::string_view sortList, GridTable* table);

// A cell as the grid shows it: distances, clearances and separations "0.00",
// the bearing "000", other numbers in their shortest form, NULL as "".
std::string FormatGridCell(std::string_view column, const GridValue& value);

// The grid as comma-separated values: the captions, then each row as the grid
// shows it, every cell made safe by core::CsvField; lines end with lineEnd
// ("\r\n" in files for spreadsheets, "\n" on standard output).
std::string GridCsv(const GridTable& table, std::string_view lineEnd = "\r\n");

}  // namespace qarvel::jobview
