#pragma once
// Texts the job display shows for pointer positions and map measurements,
// and the conversion of a map point (km west and km north of the map centre)
// to a position. Qt-free, so the rules are tested on their own.
//
// Units: degrees, latitude positive north, longitude positive WEST (as the
// station tables count it); km; bearings in degrees clockwise from north.

#include <string>
#include <string_view>

namespace qarvel::app {

// A position in degrees, longitude positive WEST.
struct LatLon {
    double lat = 0;
    double lon = 0;
};

// The position of the map point xKm west and yKm north of `centre`: the
// offset is turned into a distance and a bearing from the centre and
// GetPosn gives the point. A non-finite offset gives the centre itself.
LatLon OffsetToLatLon(const LatLon& centre, double xKm, double yKm);

// A number in the display's "###.0#" form: the whole part without leading
// zeros (0.52 gives ".52"), then at least one and at most two decimals,
// rounded half away from zero ("12.35", "100.0").
std::string FormatOneOrTwoDecimals(double value);

// Degrees as the pointer read-out shows them: whole degrees ("##0"),
// minutes ("00"), seconds ("##0.0#") and the hemisphere letter, N/S for a
// latitude and W/E for a longitude counted positive WEST: 40.75 -> 40° 45'
// 0.0" N. Seconds that round up to 60 carry into the minutes.
std::string PointerDms(double degrees, bool latitude);

inline constexpr std::string_view kRangeAndBearingTitle = "Range and Bearing";
inline constexpr double kKmPerMile = 1.609344;

// The "Range and Bearing" message: the distance "###.0#", "km (", the miles
// the same way, "miles)", a line break, "@ ", the bearing and " Degree".
std::string RangeAndBearingText(double distanceKm, double bearingDeg);

// The window caption of the job display: "Job Display - " and the job name.
std::string JobDisplayCaption(std::string_view jobName);

}  // namespace qarvel::app
