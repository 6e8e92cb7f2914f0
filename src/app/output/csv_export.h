#pragma once
// Export of the job grid as comma-separated values: the captions, then each
// row as the grid shows it (same number formats), cells made safe for
// spreadsheets by core::CsvField. UTF-8, CRLF line ends
// (what spreadsheet programs expect of CSV).

#include <filesystem>
#include <string>

#include "jobview/grid_query.h"

namespace qarvel::app {

// Writes jobview::GridCsv to `file` under a temporary name beside it, renamed into
// place. Reported under "frmDispJob" ":ExportCsv:"; false on failure, the
// previous file kept.
bool ExportGridCsv(const jobview::GridTable& table, const std::filesystem::path& file);

}  // namespace qarvel::app
