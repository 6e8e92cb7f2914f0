#pragma once
// Imports a comma-separated list of FM stations, one station a row, into a
// new master database. Columns are found by their header names, in any
// order, with the common spellings accepted (case, blanks, "_" and "-" are
// ignored): call sign (callsign, call_sign, call), channel (channel,
// station_channel) or frequency in MHz (frequency_mhz, frequency, freq),
// class (class, station_class), latitude (latitude, lat), longitude
// (longitude, lon, long), city (city, community, comm_city), state (state,
// comm_state, province); optional status (status, fm_dom_status), service
// (service, asd_service) and country (country, country_code). Other columns
// are ignored. Fields may be quoted ("...", with "" for a quote).
//
// Each row becomes an fm_data record: application_id numbered from 1 in row
// order, asd_service and app_service from the service column or "FM",
// fm_dom_status from the status column or "LIC", the owner unknown
// (kNoOwnerPartyId). Latitude is decimal degrees north positive; longitude
// decimal degrees WEST positive unless options.eastPositive (then west is
// negative, as most lists have it). A row whose country column is not US, or
// without that column whose call sign does not start with K or W or whose
// state is a Canadian province or Mexican state, is foreign (MarkForeign).

#include <filesystem>

#include "importers/import_common.h"

namespace qarvel::importers {

bool ImportCsv(const std::filesystem::path& csv, const ImportTarget& out, const ImportOptions& options,
               ImportSummary* summary);

}  // namespace qarvel::importers
