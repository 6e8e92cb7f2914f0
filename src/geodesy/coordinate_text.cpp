#include "geodesy/coordinate_text.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <vector>

namespace qarvel::geodesy {

namespace {

bool ParseDouble(std::string_view text, double& value) {
    if (text.empty()) return false;
    if (text.front() == '+') text.remove_prefix(1);
    const char* end = text.data() + text.size();
    auto [ptr, ec] = std::from_chars(text.data(), end, value);
    return ec == std::errc() && ptr == end && std::isfinite(value);
}

// The text with degree, minute and second marks ("°", "'", "\"", "d", "m",
// "s", "D", "M", the typographic primes) and runs of blanks turned into ':' separators.
std::string Normalised(std::string_view text) {
    std::string out;
    auto separator = [&out] {
        if (!out.empty() && out.back() != ':') out += ':';
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (text.substr(i, 2) == "\xC2\xB0" || text.substr(i, 3) == "\xE2\x80\xB2" ||
            text.substr(i, 3) == "\xE2\x80\xB3") {
            separator();
            i += text.substr(i, 2) == "\xC2\xB0" ? 1 : 2;
        } else if (c == ' ' || c == '\'' || c == '"' || c == ':' || c == 'd' || c == 'm' || c == 's' || c == 'D' ||
                   c == 'M') {
            separator();
        } else {
            out += static_cast<char>(c);
        }
    }
    while (!out.empty() && out.back() == ':') out.pop_back();
    return out;
}

// Degrees from "D", "D:M" or "D:M:S"; minutes and seconds in [0, 60).
bool ParseDegrees(std::string_view text, double& degrees) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i == text.size() || text[i] == ':') {
            parts.push_back(text.substr(start, i - start));
            start = i + 1;
        }
    }
    if (parts.size() > 3) return false;
    double values[3] = {0, 0, 0};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (!ParseDouble(parts[i], values[i])) return false;
        if (i > 0 && (values[i] < 0 || values[i] >= 60 || parts[i].front() == '-')) return false;
    }
    const bool negative = !parts[0].empty() && parts[0].front() == '-';
    const double magnitude = std::fabs(values[0]) + values[1] / 60.0 + values[2] / 3600.0;
    degrees = negative ? -magnitude : magnitude;
    return true;
}

std::string_view Trim(std::string_view text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) text.remove_prefix(1);
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.remove_suffix(1);
    return text;
}

// Takes a hemisphere letter off either end; +1 (N or W), -1 (S or E) or 0.
int TakeHemisphere(std::string_view& body, CoordinateAxis axis) {
    const bool lat = axis == CoordinateAxis::Latitude;
    // A lower-case "s" is the seconds mark ("30s"), never south.
    auto sign = [lat](char c) {
        if (c == 's') return 0;
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        if (lat) return c == 'N' ? 1 : c == 'S' ? -1 : 0;
        return c == 'W' ? 1 : c == 'E' ? -1 : 0;
    };
    if (!body.empty() && sign(body.back()) != 0) {
        const int s = sign(body.back());
        body.remove_suffix(1);
        body = Trim(body);
        return s;
    }
    if (!body.empty() && sign(body.front()) != 0) {
        const int s = sign(body.front());
        body.remove_prefix(1);
        body = Trim(body);
        return s;
    }
    return 0;
}

}  // namespace

ParsedCoordinate ParseCoordinateText(std::string_view text, CoordinateAxis axis) {
    std::string_view body = Trim(text);
    const int hemisphere = TakeHemisphere(body, axis);
    if (hemisphere != 0 && !body.empty() && (body.front() == '-' || body.front() == '+'))
        return {0, CoordinateProblem::SignAndHemisphere};
    double degrees = 0;
    if (!ParseDegrees(Normalised(body), degrees)) return {0, CoordinateProblem::NotACoordinate};
    if (hemisphere < 0) degrees = -degrees;
    const double limit = axis == CoordinateAxis::Latitude ? 90.0 : 180.0;
    if (std::fabs(degrees) > limit) return {degrees, CoordinateProblem::OutOfRange};
    return {degrees, CoordinateProblem::None};
}

std::optional<std::pair<double, double>> ParseCoordinatePair(std::string_view text) {
    text = Trim(text);
    std::size_t cut = text.find(',');
    if (cut == std::string_view::npos) cut = text.find(';');
    if (cut == std::string_view::npos) return std::nullopt;
    std::string_view lonText = Trim(text.substr(cut + 1));
    const auto lat = ParseCoordinateText(text.substr(0, cut), CoordinateAxis::Latitude);
    const auto lon = ParseCoordinateText(lonText, CoordinateAxis::Longitude);
    if (!lat || !lon) return std::nullopt;
    const bool hasLetter = lonText.find_first_of("EWew") != std::string_view::npos;
    return std::make_pair(lat.degrees, hasLetter ? lon.degrees : -lon.degrees);
}

std::string DegreesDecimalMinutes(double degrees, CoordinateAxis axis) {
    const bool lat = axis == CoordinateAxis::Latitude;
    const char hemisphere = lat ? (degrees < 0 ? 'S' : 'N') : (degrees < 0 ? 'E' : 'W');
    const double magnitude = std::fabs(degrees);
    int whole = static_cast<int>(magnitude);
    double minutes = (magnitude - whole) * 60.0;
    if (minutes >= 59.99995) {  // would print as 60.0000
        ++whole;
        minutes = 0;
    }
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, lat ? "%02d %07.4f %c" : "%03d %07.4f %c", whole, minutes, hemisphere);
    return buffer;
}

}  // namespace qarvel::geodesy
