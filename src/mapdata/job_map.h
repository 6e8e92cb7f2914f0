#pragma once
// Cutting a job's boundary files from the national ones: the state and
// county lines near the target, written to the job's ".mst" and ".mco" files
// when the job is built.
//
// Boundary files are flat sequences of little-endian 32-bit floats: for each
// polyline a separator 0.0, a marker (never 0.0), then (latitude, longitude)
// pairs in degrees, longitude positive WEST; a marker of 0.0 ends the file.
// A polyline is kept or dropped whole, by its first point only.

#include <filesystem>
#include <string_view>

namespace qarvel::mapdata {

// The status shown while the job's boundary files are cut.
inline constexpr std::string_view kCaptionStateMaps = "Building State Maps";
inline constexpr std::string_view kCaptionCountyMaps = "Building County Maps";

// A first point further than this from the target in latitude or longitude
// (degrees) is not measured; it counts as kUnmeasuredKm away.
inline constexpr double kMapWindowDeg = 15.0;
inline constexpr double kUnmeasuredKm = 1000.0;
// The limits, in multiples of the scan range (km).
inline constexpr double kStateMapRangeFactor = 2.0;
inline constexpr double kCountyMapRangeFactor = 1.5;

// The distance (km) by which a polyline is judged: FlatDistance from the
// target to its first point (degrees, longitude positive WEST), or
// kUnmeasuredKm when the point lies outside the 15-degree window in
// latitude or longitude (exactly 15 degrees is still inside).
double PolylineDistanceKm(double targetLat, double targetLon, float firstLat, float firstLon);

// True when a polyline at distanceKm is kept: the distance rounded to a
// whole km (halves to even) is less than limitKm. So against 200 km, 199.4
// is kept while 199.5 and 200.5 (both 200) are dropped.
bool PolylineKept(double distanceKm, double limitKm);

// BuildJobMap: copies from the national boundary file `source` to `destination`
// every polyline whose first point is kept against limitKm (2 x the scan
// range for states, 1.5 x for counties). The copy holds, per polyline, 0.0,
// the marker and the points; it has no end mark. The destination is written
// under a temporary name beside it and renamed into place. A source that
// stops early ends the cut there. Errors are reported under "modMapping"
// ":BuildJobMap:" and give false (the destination is left as it was).
bool BuildJobMap(const std::filesystem::path& source, const std::filesystem::path& destination,
                 double targetLat, double targetLon, double limitKm);

}  // namespace qarvel::mapdata
