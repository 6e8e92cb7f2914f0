#pragma once
// Parsing of coordinates and numbers typed on the command line.

#include <string>
#include <string_view>

namespace qarvel::cli {

enum class Axis { Latitude, Longitude };

// Parses decimal degrees ("40.75") or degrees:minutes:seconds ("73:59:10"),
// either with an optional hemisphere letter ("40.75N", "73:59:10W", "2.35E").
// A bare number is north latitude or west longitude, the station tables'
// convention. Returns degrees, latitude north positive, longitude WEST
// positive. Throws UsageError naming `argument` on anything else or on a value
// outside -90..90 (latitude) or -180..180 (longitude).
double ParseCoordinate(std::string_view text, Axis axis, const std::string& argument);

// Parses a finite decimal number; throws UsageError naming `argument`.
double ParseNumber(std::string_view text, const std::string& argument);

}  // namespace qarvel::cli
