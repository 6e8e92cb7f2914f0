#pragma once
// The job display's station filter as one plain value: the study target, the
// relation and status check boxes, the television channel 6 and AM switches
// and the clearance limit. The desktop form and the command line fill it; the
// study table, the grid query and the map read it.

#include <cstdint>

namespace qarvel::jobview {

// The study's target: its position, FM channel and classes.
struct StudyTarget {
    double lat = 0;              // degrees, north positive
    double lon = 0;              // degrees, positive WEST (station-table convention)
    int channel = 200;           // FM channel 200..300
    std::int16_t stationClass = -1;  // class index 0..13 (spacing::ClassIndex), -1 unknown
    std::int16_t intlClass = -1;     // international class index 0..13, -1 none
};

// Clearance limit (km) the display starts with when nothing else is given:
// every short, close and nearly clear station.
inline constexpr double kDefaultClearanceLimitKm = 20.0;

struct StudyFilter {
    StudyTarget target;
    // Relation check boxes (optPri, optFirst, optSecond, optThird, optIFreq).
    bool primary = true;                // co-channel
    bool firstAdjacent = true;          // +-1 channel
    bool secondAdjacent = true;         // +-2
    bool thirdAdjacent = true;          // +-3
    bool intermediateFrequency = true;  // +-53, +-54
    // Status check boxes (optLI ... optDE). "VA" admits vacant and reserved
    // allotments alike ("VA*" and "RS*").
    bool statusLI = true;   // licensed
    bool statusCP = true;   // construction permit
    bool statusAP = true;   // application
    bool statusAD = false;  // addition
    bool statusVA = false;  // vacant / reserved
    bool statusDE = false;  // deleted
    // optTV6: television channel 6 stations join the study table.
    bool tv6 = false;
    // AM stations shown in the grid and on the map. They are always in the
    // study table; this switch only filters what is shown.
    bool showAm = false;
    // Clearance limit (km, the clearance slider): the grid lists stations
    // whose clearance is at most this, the map draws those strictly below.
    double clearanceLimitKm = kDefaultClearanceLimitKm;
};

}  // namespace qarvel::jobview
