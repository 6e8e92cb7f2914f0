#include "app/mainwin/display_texts.h"

#include <cmath>
#include <cstdio>

#include "geodesy/geodesy.h"

namespace qarvel::app {

namespace {

// Rounds half away from zero to `decimals` places.
double RoundAway(double value, int decimals) {
    const double scale = std::pow(10.0, decimals);
    return std::round(value * scale) / scale;
}

}  // namespace

LatLon OffsetToLatLon(const LatLon& centre, double xKm, double yKm) {
    if (!std::isfinite(xKm) || !std::isfinite(yKm)) return centre;
    const double distance = std::hypot(xKm, yKm);
    if (distance < 1e-9) return centre;
    // x counts west, so the east leg is -x; the bearing is clockwise from north.
    double bearing = std::atan2(-xKm, yKm) * 180.0 / geodesy::kPi;
    if (bearing < 0) bearing += 360.0;
    double lat = 0, lonEast = 0;
    // GetPosn adds its east leg to the longitude: it works east-positive.
    geodesy::GetPosn(centre.lat, -centre.lon, lat, lonEast, distance, bearing);
    return {lat, -lonEast};
}

std::string FormatOneOrTwoDecimals(double value) {
    const double rounded = RoundAway(value, 2);
    char text[64];
    std::snprintf(text, sizeof text, "%.2f", std::fabs(rounded));
    std::string out(text);
    if (out.back() == '0') out.pop_back();       // at most two decimals, at least one
    if (out.rfind("0.", 0) == 0) out.erase(0, 1);  // "###" shows no leading zero
    if (rounded < 0) out.insert(0, "-");
    return out;
}

std::string PointerDms(double degrees, bool latitude) {
    const char hemisphere = latitude ? (degrees < 0 ? 'S' : 'N') : (degrees < 0 ? 'E' : 'W');
    const double magnitude = std::fabs(degrees);
    int whole = static_cast<int>(std::floor(magnitude));
    const double minutesFull = (magnitude - whole) * 60.0;
    int minutes = static_cast<int>(std::floor(minutesFull));
    double seconds = RoundAway((minutesFull - minutes) * 60.0, 2);
    if (seconds >= 60.0) {
        seconds -= 60.0;
        ++minutes;
    }
    if (minutes >= 60) {
        minutes -= 60;
        ++whole;
    }
    char secondsText[32];
    std::snprintf(secondsText, sizeof secondsText, "%.2f", seconds);
    std::string sec(secondsText);
    if (sec.back() == '0') sec.pop_back();
    char text[96];
    std::snprintf(text, sizeof text, "%d\u00b0 %02d' %s\" %c", whole, minutes, sec.c_str(), hemisphere);
    return text;
}

std::string RangeAndBearingText(double distanceKm, double bearingDeg) {
    return FormatOneOrTwoDecimals(distanceKm) + "km (" + FormatOneOrTwoDecimals(distanceKm / kKmPerMile) +
           "miles)\n@ " + FormatOneOrTwoDecimals(bearingDeg) + " Degree";
}

std::string JobDisplayCaption(std::string_view jobName) {
    return "Job Display - " + std::string(jobName);
}

}  // namespace qarvel::app
