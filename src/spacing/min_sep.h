#pragma once
// The required minimum separation between the study's target and another
// station: which of the six tables applies, and which cell of it.

#include <cstdint>
#include <string>
#include <vector>

#include "spacing/class_codes.h"

namespace qarvel::spacing {

// One station as the separation lookup sees it, filled by the caller.
struct StationRec {
    double lat = 0;               // degrees, north positive
    double lon = 0;               // degrees, positive WEST (station-table convention)
    int16_t station_channel = 0;  // FM channel 200..300
    int16_t relation = 0;         // 0..4 (see RelName); read from the other station
    int16_t station_class = -1;   // domestic class index 0..13, -1 unknown
    int16_t intl_class = -1;      // international class index 0..13, -1 none
    std::string border_code;      // "A" selects the international tables
    int16_t zone = 0;             // TV zone index 0..1 (ZoneIndex of fac_zone)
    std::string service = "FM";   // "FM", "ED" (educational FM) or "TV" (channel 6)
    std::string comm_state;       // two-letter state code; "PR" and "VI" matter
};

// Where a separation came from, for display: the table's name ("MinSep",
// "MinSepNorth", "MinSepSouth", "MinSepPRVI", "MinSepTV6Zone",
// "MinSepTV6Chan") and the cell's indices in the order
// [target class][other class][relation], [target class][zone] or
// [target class][target channel - 201]. An empty table name and no indices
// when no table applied or the lookup failed.
struct MinSepCell {
    std::string table;
    std::vector<int> indices;
};

// Latitude above which a foreign station falls under the northern tables;
// a station exactly on it is southern.
inline constexpr double kNorthSouthLatitude = 37.0;

// Prepares the separation tables for lookups. The tables are compiled-in
// constant data, so this does nothing and may be called any number of times;
// the start-up sequence calls it once before any job is opened.
void LoadMinSepTables();

// Required separation in whole km between target and other (other.relation
// is its channel relation to the target). 0 when no rule applies: a blank
// other class, a foreign station without international class, a service
// other than "FM", "ED" or "TV", a low-power target off channels 201..220
// against a channel 6 station. An index out of its table's bounds (target
// class -1, an unmapped target class, relation outside 0..4, zone outside
// 0..1) is reported to the error trap as "modMinSep" ":LookupMinSep:" and
// gives 0. Never throws.
int16_t LookupMinSep(const StationRec& target, const StationRec& other);

// As above; when cell is not null it is set to the table cell that gave the
// result (cleared when none did).
int16_t LookupMinSep(const StationRec& target, const StationRec& other, MinSepCell* cell);

}  // namespace qarvel::spacing
