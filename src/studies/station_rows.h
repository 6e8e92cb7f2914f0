#pragma once
// The per-station steps of FindMinClearance, shared by both engines so that
// they read rows and update minima in exactly the same way: the excluded-
// record test, the filling of the station working record from a query row,
// and the rules by which an FM or a TV channel 6 station lowers the minimum.

#include <string_view>

#include "spacing/min_sep.h"
#include "studies/autoscan.h"

namespace qarvel::stationdb {
class Statement;
}

namespace qarvel::studies {

// Stored coordinates are degrees x 14400 (quarter arc-seconds).
inline constexpr double kStoredUnitsPerDegree = 14400.0;

// True when a call sign carries the excluded-record marker, the character of
// code 164 ("¤", U+00A4). Our database text is UTF-8, where it is the pair
// C2 A4; a lone byte A4 that is not part of a valid UTF-8 sequence (text
// written as Latin-1) counts too. A4 inside another character ("ä" = C3 A4)
// does not.
bool HasExcludedMarker(std::string_view callsign);

// Column positions of the FM query's rows (BuildFmQuery's SELECT list).
enum FmColumn : int {
    kFmCallsign = 0,
    kFmChannel = 1,
    kFmLat = 2,
    kFmLon = 3,
    kFmClass = 4,
    kFmIntlClass = 5,
    kFmBorderCode = 6,
};

// Fills `station` from the current row of a statement whose first seven
// columns are the FM query's: service "FM", position (stored units / 14400,
// longitude positive WEST), channel, class and international class (NULL as
// empty text, trimmed, looked up with ClassIndex), border code (NULL as
// empty, blanks trimmed). The relation is left to the caller. Returns false
// for a row to skip: an excluded record, or one without a position (NULL lat
// or lon - a record that cannot be spaced is passed over rather than failing
// the whole channel).
bool ReadFmStation(const stationdb::Statement& row, spacing::StationRec& station);

// Fills `station` from a row of kTv6Query (lat, lon, fac_zone): service "TV",
// position, zone index. False for a row without a position.
bool ReadTv6Station(const stationdb::Statement& row, spacing::StationRec& station);

// The target working record for `channel`.
spacing::StationRec TargetRecord(const ScanTarget& target, int channel);

// Distance (km) from the target to the station by FlatDistance.
double StationDistance(const spacing::StationRec& target, const spacing::StationRec& station);

// The rules by which a station at `distance` km with `required` km of
// separation (LookupMinSep) lowers the minimum. An FM station whose required
// separation is 0 or less does not count; otherwise its clearance, distance
// less required, rounded to single precision, replaces `minimum` when
// smaller. A TV channel 6 station counts even when its required separation
// is 0 or less.
void ApplyFmClearance(double distance, int16_t required, float& minimum);
void ApplyTv6Clearance(double distance, int16_t required, float& minimum);

// One FM station against the target (station.relation set): distance, then
// required separation, then ApplyFmClearance.
void CountFmStation(const spacing::StationRec& target, const spacing::StationRec& station,
                    float& minimum);

// One TV channel 6 station: distance, required separation, ApplyTv6Clearance.
void CountTv6Station(const spacing::StationRec& target, const spacing::StationRec& station,
                     float& minimum);

}  // namespace qarvel::studies
