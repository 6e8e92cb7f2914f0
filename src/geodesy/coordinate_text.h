#pragma once
// Coordinates typed or pasted by a user, in the notations engineers meet:
// decimal degrees ("40.75"), degrees:minutes:seconds ("40:45:30"), degrees
// with symbols or letters ("40°45'30\"", "40d45m30s"), degrees and decimal
// minutes ("40 45.5"), each with an optional hemisphere letter before or
// after ("N40.75", "73:59:10W", "2.35 E"). A bare number keeps the station
// tables' convention: north latitude, WEST longitude.

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace qarvel::geodesy {

enum class CoordinateAxis { Latitude, Longitude };

enum class CoordinateProblem { None, NotACoordinate, SignAndHemisphere, OutOfRange };

struct ParsedCoordinate {
    double degrees = 0;  // latitude north positive, longitude WEST positive
    CoordinateProblem problem = CoordinateProblem::None;
    explicit operator bool() const { return problem == CoordinateProblem::None; }
};

// Minutes and seconds must lie in [0, 60); latitude within 90 degrees,
// longitude within 180.
ParsedCoordinate ParseCoordinateText(std::string_view text, CoordinateAxis axis);

// A pasted pair "lat, lon" or "lat lon" (as GIS tools and web maps copy
// them). In a pair a signed bare longitude counts EAST positive, as those
// tools write it ("40.7128, -74.0060" is New York); a hemisphere letter
// says so explicitly. Returns (latitude north positive, longitude WEST
// positive), or nullopt.
std::optional<std::pair<double, double>> ParseCoordinatePair(std::string_view text);

// Degrees and decimal minutes: "40 45.5000 N" / "073 58.8000 W"; the
// longitude given west positive.
std::string DegreesDecimalMinutes(double degrees, CoordinateAxis axis);

}  // namespace qarvel::geodesy
