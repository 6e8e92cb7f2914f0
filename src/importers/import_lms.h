#pragma once
// Imports the regulator's LMS public database dump: pipe-delimited ".dat"
// files of one folder, each with a header row naming its columns, read by
// those names (extra columns, in any order, are ignored). Records end with
// "|^|" when the header line does, otherwise with the line; a field may be
// wrapped in double quotes and then hold line breaks and "|". Text is UTF-8,
// or Latin-1 where it is not valid UTF-8.
//
//   facility.dat               facility_id, callsign, service_code,          required
//                              community_served_city, community_served_state,
//                              facility_status, license_filing_id, [active_ind]
//   application_facility.dat   afac_application_id, afac_facility_id,        required
//                              [afac_channel, country_code, licensee_name,
//                              station_class_code, active_ind]
//   app_location.dat           aloc_aapp_application_id, aloc_loc_record_id, required
//                              aloc_lat_deg/_mm/_ss/_dir, aloc_long_deg/_mm/_ss/_dir,
//                              [aloc_active_ind]
//   app_antenna.dat            aant_aloc_loc_record_id, aant_antenna_record_id, optional
//                              [aant_rc_amsl, aant_rc_haat, aant_rc_hag,
//                              aant_rotation_deg, aant_antenna_id, aant_antenna_type_code]
//   app_antenna_frequency.dat  aafq_aant_antenna_record_id, [aafq_horiz_erp_kw, optional
//                              aafq_vert_erp_kw, aafq_power_erp_kw, aafq_max_erp_kw,
//                              aafq_class_station_code]
//   application.dat            aapp_application_id, aapp_file_num           optional
//
// One fm_data record per active FM-band facility (a service code starting
// with "F"): the application that is the facility's licence
// (license_filing_id), with its first active transmitter location, antenna
// and frequency. LMS identifies applications by text (UUIDs), so
// application_id is numbered from 1 in the order of application_facility.dat.
// Owners are the licensee names, one party per distinct name. The
// column-by-column mapping is in import_lms.cpp.

#include <filesystem>

#include "importers/import_common.h"

namespace qarvel::importers {

bool ImportLms(const std::filesystem::path& folder, const ImportTarget& out, const ImportOptions& options,
               ImportSummary* summary);

}  // namespace qarvel::importers
