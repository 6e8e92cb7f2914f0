#include "cli/coordinates.h"

#include "cli/command_set.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <vector>

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

std::vector<std::string_view> SplitColons(std::string_view text) {
    std::vector<std::string_view> parts;
    size_t start = 0;
    for (size_t i = 0; i <= text.size(); ++i) {
        if (i == text.size() || text[i] == ':') {
            parts.push_back(text.substr(start, i - start));
            start = i + 1;
        }
    }
    return parts;
}

// Degrees from "D", "D:M" or "D:M:S"; minutes and seconds must lie in 0..60.
bool ParseDegrees(std::string_view text, double& degrees) {
    std::vector<std::string_view> parts = SplitColons(text);
    if (parts.size() > 3) return false;
    double values[3] = {0, 0, 0};
    for (size_t i = 0; i < parts.size(); ++i) {
        if (!ParseDouble(parts[i], values[i])) return false;
        if (i > 0 && (values[i] < 0 || values[i] >= 60 || parts[i].front() == '-')) return false;
    }
    bool negative = !parts[0].empty() && parts[0].front() == '-';
    double magnitude = std::fabs(values[0]) + values[1] / 60.0 + values[2] / 3600.0;
    degrees = negative ? -magnitude : magnitude;
    return true;
}

}  // namespace

double ParseCoordinate(std::string_view text, Axis axis, const std::string& argument) {
    std::string_view body = text;
    double sign = 1.0;
    if (!body.empty()) {
        char hemisphere = static_cast<char>(std::toupper(static_cast<unsigned char>(body.back())));
        bool isLat = axis == Axis::Latitude;
        if ((isLat && (hemisphere == 'N' || hemisphere == 'S')) ||
            (!isLat && (hemisphere == 'W' || hemisphere == 'E'))) {
            body.remove_suffix(1);
            if (hemisphere == 'S' || hemisphere == 'E') sign = -1.0;
            if (!body.empty() && body.front() == '-') {
                throw UsageError(argument, "'" + std::string(text) +
                                               "' has both a sign and a hemisphere; " +
                                               Allowed(axis));
            }
        }
    }
    double degrees = 0;
    if (!ParseDegrees(body, degrees)) {
        throw UsageError(argument, "'" + std::string(text) + "' is not a coordinate; " +
                                       Allowed(axis));
    }
    degrees *= sign;
    double limit = axis == Axis::Latitude ? 90.0 : 180.0;
    if (std::fabs(degrees) > limit) {
        throw UsageError(argument, "'" + std::string(text) + "' is out of range; " +
                                       Allowed(axis));
    }
    return degrees;
}

double ParseNumber(std::string_view text, const std::string& argument) {
    double value = 0;
    if (!ParseDouble(text, value)) {
        throw UsageError(argument, "'" + std::string(text) + "' is not a number");
    }
    return value;
}

}  // namespace qarvel::cli
