// Flat-earth distance of the FM spacing rules: km per degree at the middle
// latitude from fixed cosine series, distance = Pythagorean sum of the legs.

#include <cmath>

#include "geodesy/fp_fault.h"
#include "geodesy/geodesy.h"

namespace qarvel::geodesy {

using detail::Finite;
using detail::kModule;

float KmPerDegLat(double latDeg) {
    return core::Trapped(kModule, ":KmPerDegLat:", 0.0f, [&] {
        return static_cast<float>(Finite(detail::LatSeries(latDeg * kDegToRad), "km per degree"));
    });
}

float KmPerDegLon(double latDeg) {
    return core::Trapped(kModule, ":KmPerDegLon:", 0.0f, [&] {
        return static_cast<float>(Finite(detail::LonSeries(latDeg * kDegToRad), "km per degree"));
    });
}

double FlatDistance(double lat1, double lon1, double lat2, double lon2, double& northKm,
                    double& eastKm) {
    return core::Trapped(kModule, ":FlatDistance:", 0.0, [&] {
        const double ml = (lat1 * kDegToRad + lat2 * kDegToRad) / 2.0;
        // Longitude counts positive west, so lon1 - lon2 is positive when
        // point 2 lies east of point 1.
        const double ns = Finite((lat2 - lat1) * detail::LatSeries(ml), "north leg");
        const double ew = Finite((lon1 - lon2) * detail::LonSeries(ml), "east leg");
        const double distance = Finite(std::sqrt(ns * ns + ew * ew), "distance");
        northKm = ns;
        eastKm = ew;
        return distance;
    });
}

float FlatDistanceSingle(float& lat1, float& lon1, float& lat2, float& lon2, float& northKm,
                         float& eastKm) {
    return core::Trapped(kModule, ":FlatDistanceSingle:", 0.0f, [&] {
        // The middle latitude and both series values are stored as 32-bit
        // floats; every operation after that is float arithmetic, rounded to
        // 32 bits at each step.
        const float ml = static_cast<float>(
            (static_cast<double>(lat1) * kDegToRad + static_cast<double>(lat2) * kDegToRad) / 2.0);
        const float kmLat = static_cast<float>(detail::LatSeries(ml));
        const float kmLon = static_cast<float>(detail::LonSeries(ml));
        const float ns = (lat2 - lat1) * kmLat;
        const float ew = (lon1 - lon2) * kmLon;
        const float nsSquared = ns * ns;
        const float ewSquared = ew * ew;
        const float sum = nsSquared + ewSquared;
        const float distance = std::sqrt(sum);
        Finite(ns, "north leg");
        Finite(ew, "east leg");
        Finite(distance, "distance");
        northKm = ns;
        eastKm = ew;
        return distance;
    });
}

}  // namespace qarvel::geodesy
