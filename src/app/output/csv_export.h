#pragma once
// Export of the job grid as comma-separated values: the captions, then each
// row as the grid shows it (same number formats). Fields holding a comma, a
// quote or a line break are quoted, quotes doubled. UTF-8, CRLF line ends
// (what spreadsheet programs expect of CSV).

#include <filesystem>
#include <string>

#include "jobview/grid_query.h"

namespace qarvel::app {

// One CSV field.
std::string CsvField(const std::string& text);
// The whole file's text.
std::string GridCsv(const jobview::GridTable& table);
// Writes GridCsv to `file` under a temporary name beside it, renamed into
// place. Reported under "frmDispJob" ":ExportCsv:"; false on failure, the
// previous file kept.
bool ExportGridCsv(const jobview::GridTable& table, const std::filesystem::path& file);

}  // namespace qarvel::app
