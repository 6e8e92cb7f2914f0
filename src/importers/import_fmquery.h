#pragma once
// Imports the regulator's "FM Query" text output: one record a line, the
// fields at fixed columns (the lines as the query service writes them,
// trailing blanks trimmed), "-" for an empty field. Every record on an FM
// channel (200 to 300) becomes an fm_data row, whatever its service (FM, FX,
// FL, FB, FS, FA, FR) or status (the domestic LIC, CP, APP, VAC... and the
// Canadian and Mexican OPER, USE, PROPN, ADD, DEL...), which are kept as
// written. Records of another country than "US" are foreign (MarkForeign).
// Each distinct licensee name becomes one party. The column-by-column
// mapping is in import_fmquery.cpp.

#include <filesystem>

#include "importers/import_common.h"

namespace qarvel::importers {

bool ImportFmQuery(const std::filesystem::path& file, const ImportTarget& out, const ImportOptions& options,
                   ImportSummary* summary);

}  // namespace qarvel::importers
