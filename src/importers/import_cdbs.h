#pragma once
// Imports the regulator's CDBS public database dump: the pipe-delimited
// ".dat" files of one folder, read by field position (import_cdbs_layout.h),
// Latin-1 text converted to UTF-8. Current engineering records only
// (eng_record_type "C"):
//   fm_eng_data.dat   FM stations on channels 200 to 300      required
//   application.dat   call sign, community, file number        required
//   facility.dat      current call sign, country, status       required
//   app_tracking.dat  cut-off and construction permit dates    optional
//   app_party.dat, fac_party.dat, party.dat   owners           optional
//   am_ant_sys.dat    AM stations                              optional
//   tv_eng_data.dat   television stations on channel 6         optional
// A missing optional file is named in the summary's notes. The tables are
// joined on application_id and facility_id; only the records that belong
// to the stations being imported are kept in memory. The column-by-column
// mapping is in import_cdbs.cpp.

#include <filesystem>

#include "importers/import_common.h"

namespace qarvel::importers {

bool ImportCdbs(const std::filesystem::path& folder, const ImportTarget& out, const ImportOptions& options,
                ImportSummary* summary);

}  // namespace qarvel::importers
