#include "cli/coordinates.h"

#include "cli/command_set.h"
#include "geodesy/coordinate_text.h"

#include <charconv>
#include <cmath>

namespace qarvel::cli {
namespace {

std::string Allowed(Axis axis) {
    return axis == Axis::Latitude
               ? "expected a latitude in degrees, -90 to 90, as 40.75, 40:45:00 or 40.75N/S"
               : "expected a longitude in degrees, -180 to 180, as 73.98, 73:58:48 or "
                 "73.98W/E (a bare number is west)";
}

bool ParseDouble(std::string_view text, double& value) {
    if (text.empty()) return false;
    if (text.front() == '+') text.remove_prefix(1);
    const char* end = text.data() + text.size();
    auto [ptr, ec] = std::from_chars(text.data(), end, value);
    return ec == std::errc() && ptr == end && std::isfinite(value);
}

}  // namespace

double ParseCoordinate(std::string_view text, Axis axis, const std::string& argument) {
    const auto parsed = geodesy::ParseCoordinateText(
        text, axis == Axis::Latitude ? geodesy::CoordinateAxis::Latitude : geodesy::CoordinateAxis::Longitude);
    const std::string quoted = "'" + std::string(text) + "'";
    switch (parsed.problem) {
        case geodesy::CoordinateProblem::None: return parsed.degrees;
        case geodesy::CoordinateProblem::SignAndHemisphere:
            throw UsageError(argument, quoted + " has both a sign and a hemisphere; " + Allowed(axis));
        case geodesy::CoordinateProblem::OutOfRange:
            throw UsageError(argument, quoted + " is out of range; " + Allowed(axis));
        case geodesy::CoordinateProblem::NotACoordinate: break;
    }
    throw UsageError(argument, quoted + " is not a coordinate; " + Allowed(axis));
}

double ParseNumber(std::string_view text, const std::string& argument) {
    double value = 0;
    if (!ParseDouble(text, value)) {
        throw UsageError(argument, "'" + std::string(text) + "' is not a number");
    }
    return value;
}

}  // namespace qarvel::cli
