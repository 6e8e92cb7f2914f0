#pragma once
// Prints a table of the command line (the job grid, search results) on
// standard output: "text" (columns padded, numbers to the right, control
// bytes from the data made harmless), "csv" (captions first, cells safe for
// spreadsheets) or "json" ({"rows": [{column: value}]}, and with jsonColumns
// also "columns": [names in order]).

#include <string>

#include "jobview/grid_query.h"

namespace qarvel::cli {

void PrintTable(const jobview::GridTable& table, const std::string& format, bool jsonColumns = false);

}  // namespace qarvel::cli
