#pragma once
// The stations the map draws: the rows of `tempdisplay` whose clearance is
// strictly below the clearance limit (the grid, by contrast, lists those at
// most equal to it).

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qarvel::stationdb {
class Database;
}

namespace qarvel::jobview {

struct MapStation {
    double x = 0;                 // offset_right: km WEST of the map centre
    double y = 0;                 // offset_up: km NORTH of the map centre
    double radius = 0;            // required separation, km (full, as stored)
    double clearance = 0;         // target_clearance, km
    std::int32_t color1 = 0;      // colour by relation (Windows colour value)
    std::int32_t color2 = 0;      // colour by clearance
    std::string callsign;         // fac_callsign
    std::string service;          // "FM", "ED", "TV" or "AM"
    std::string status;           // fm_dom_status ("" for TV and AM)
    std::string adjacency;        // "Primary" ... "IF", "TV6", "AM"
};

// "SELECT * FROM tempdisplay WHERE target_clearance <" and the limit, then
// " ORDER BY target_clearance;" or " ORDER BY " + sortList + ";".
std::string BuildMapQuery(double clearanceLimitKm, std::string_view sortList);

// The stations to draw, in the query's order. Reported under "frmDispJob"
// ":RepaintMap:"; false on failure (*stations unchanged).
bool ReadMapStations(const stationdb::Database& job, double clearanceLimitKm, std::string_view sortList,
                     std::vector<MapStation>* stations);

}  // namespace qarvel::jobview
