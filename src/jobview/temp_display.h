#pragma once
// The study table `tempdisplay` of an open job: one row per station that the
// display's filters admit, with its distance and bearing from the target, its
// relation, required separation, clearance and colours, and its offsets on
// the map. The grid lists it, the map draws it. Rebuilt (dropped, created,
// filled) on every change of the filter (NewData).
//
// Units: lat and lon in degrees, longitude positive WEST; distances, offsets,
// separations and clearances in km; bearings in whole degrees clockwise from
// true north.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "jobview/study_filter.h"

namespace qarvel::stationdb {
class Database;
}

namespace qarvel::jobview {

struct TempDisplayColumn {
    std::string_view name;
    std::string_view type;
};

// The columns of `tempdisplay`, in table order.
inline constexpr std::array<TempDisplayColumn, 31> kTempDisplayColumns = {{
    {"fac_callsign", "char(13)"},      {"lat", "float"},
    {"latdms", "char(13)"},            {"lon", "float"},
    {"londms", "char(13)"},            {"comm_city", "varchar(20)"},
    {"comm_state", "char(2)"},         {"border_code", "char(1)"},
    {"station_channel", "int"},        {"channel_text", "varchar(15)"},
    {"station_class", "varchar(2)"},   {"intl_class", "varchar(2)"},
    {"rule_73_215_req_ind", "char(1)"}, {"target_distance", "float"},
    {"target_bearing", "int"},         {"radius", "float"},
    {"target_clearance", "float"},     {"color1", "int"},
    {"color2", "int"},                 {"offset_up", "float"},
    {"offset_right", "float"},         {"service", "char(2)"},
    {"horiz_erp", "float"},            {"vert_erp", "float"},
    {"asd_service", "char(2)"},        {"facility_id", "int"},
    {"haat_horiz_rc_mtr", "float"},    {"fm_dom_status", "varchar(6)"},
    {"adjacency", "varchar(8)"},       {"party_name", "varchar(60)"},
    {"application_id", "int"},
}};

inline constexpr std::string_view kDropTempDisplay = "DROP TABLE tempdisplay;";

// "CREATE TABLE tempdisplay (fac_callsign char(13), lat float, ...);"
std::string CreateTempDisplaySql();

// Application ids above this number are what-if records ("ED").
inline constexpr std::int64_t kLastMasterApplicationId = 100000000;

// "FM" for an application id up to 100,000,000, "ED" (a what-if record)
// above it.
std::string_view ServiceOfApplication(std::int64_t applicationId);

// "250 : 97.9 MHz": the channel, " : ", the frequency 87.9 + 0.2 x (channel
// - 200) MHz formatted "#00.0", and " MHz".
std::string ChannelText(int channel);

// The map centre about which the station offsets are taken (degrees,
// longitude positive WEST). Normally the target; a recentred map moves it so
// that stations stay in register with the boundaries drawn about it.
struct MapCentre {
    double lat = 0;
    double lon = 0;
};

// One row of `tempdisplay`. Optional members are NULL where the source
// record has no value (and for the FM-only columns of TV and AM rows).
struct TempDisplayRow {
    std::string fac_callsign;
    double lat = 0, lon = 0;
    std::string latdms, londms;
    std::optional<std::string> comm_city, comm_state, border_code;
    std::optional<int> station_channel;
    std::optional<std::string> channel_text, station_class, intl_class, rule_73_215_req_ind;
    double target_distance = 0;
    int target_bearing = 0;
    double radius = 0;
    double target_clearance = 0;
    std::int32_t color1 = 0, color2 = 0;
    double offset_up = 0, offset_right = 0;
    std::string service;
    std::optional<double> horiz_erp, vert_erp;
    std::optional<std::string> asd_service;
    std::optional<std::int64_t> facility_id;
    std::optional<double> haat_horiz_rc_mtr;
    std::optional<std::string> fm_dom_status;
    std::string adjacency;
    std::optional<std::string> party_name;
    std::int64_t application_id = 0;
};

// Separations this display uses where the FM table has no say:
//  - television channel 6 stations: LookupMinSep's TV path (zone table for a
//    full-power target, channel table for a low-power target on 201..220,
//    else 0), the zone from the station's fac_zone;
//  - AM stations: 0 km, so their clearance is their distance. The AM record
//    carries only its antenna mode, which settles no FM separation.

// NewData: drops (when present), creates and fills `tempdisplay` in `job`:
// the FM stations of BuildFmQuery(filter), then, when filter.tv6 is set, the
// television channel 6 stations, then every AM station. Offsets are taken
// about `centre` (the target when null). Runs in one savepoint: on failure
// the previous table is kept. Reported under "frmDispJob" ":NewData:"; true
// when the table was rebuilt.
bool NewData(stationdb::Database& job, const StudyFilter& filter, const MapCentre* centre = nullptr);

// The row of an FM or ED station at (latDeg, lonDeg) on `channel`, filled
// apart from the columns read straight from the record: position texts,
// distance, bearing, offsets, relation, separation, clearance and colours.
// `row` carries the record's own columns (classes, border code, state,
// rule_73_215_req_ind, application_id) on entry.
void ComputeFmRow(const StudyTarget& target, const MapCentre& centre, int channel, TempDisplayRow& row);

// Reads the study target from the job's information record: TLat, TLon,
// TChan, TClass, TIClass. Reported under "frmDispJob" ":FirstLoad:"; false
// when the record is missing or unreadable.
bool ReadStudyTarget(const stationdb::Database& job, StudyTarget* target);

// The target editor's changes: a new channel, class or international class
// (texts as the class lists show them; blank international class = none).
struct TargetChange {
    std::optional<int> channel;
    std::optional<std::string> stationClass;
    std::optional<std::string> intlClass;
};

// ChangeStationData: applies `change` to *target before a rebuild. A channel
// outside 200..300 or a class text that is no class leaves *target as it was;
// reported under "frmDispJob" ":ChangeStationData:" and false.
bool ChangeStationData(const TargetChange& change, StudyTarget* target);

}  // namespace qarvel::jobview
