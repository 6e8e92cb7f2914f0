// Bearings from the two legs of the flat-earth distance, and the reverse
// bearing.

#include <cfloat>
#include <cmath>

#include "geodesy/fp_fault.h"
#include "geodesy/geodesy.h"

namespace qarvel::geodesy {

using detail::Divide;
using detail::Finite;
using detail::kModule;

namespace {

// Below this (km) a leg counts as zero and two points as coincident.
constexpr double kNearZeroKm = 0.001;

// arccos q in its arctangent form, as the bearing has always been computed.
double ArcCos(double q) {
    return std::atan(Divide(-q, std::sqrt(1.0 - q * q))) + 2.0 * std::atan(1.0);
}

// arcsine q in its arctangent form.
double ArcSin(double q) {
    return std::atan(Divide(q, std::sqrt(1.0 - q * q)));
}

// The angle from north (radians) of the legs ns, ew of a distance of at
// least kNearZeroKm, as a 32-bit float.
float BearingAngle(double ns, double ew, double distance) {
    if (std::fabs(ns) < kNearZeroKm) return static_cast<float>(ew < 0.0 ? 3.0 * kHalfPi : kHalfPi);
    if (std::fabs(ew) < kNearZeroKm) return static_cast<float>(ns <= 0.0 ? kPi : 0.0);

    double q = 0.0;
    double base = 0.0;
    double angle = 0.0;
    if (ns * ew <= 0.0) {
        // South-east or north-west: the angle is measured from the east or
        // west axis.
        if (ew < 0.0) {
            q = ew / -distance;
            base = 3.0 * kHalfPi;
        } else {
            q = ew / distance;
            base = kHalfPi;
        }
        angle = ArcCos(q);
    } else {
        // North-east or south-west: measured from the north or south axis.
        if (ns <= 0.0) {
            q = ew / -distance;
            base = kPi;
        } else {
            q = ew / distance;
            base = 0.0;
        }
        angle = ArcSin(q);
    }
    float sum = static_cast<float>(angle + base);
    if (sum > static_cast<float>(kTwoPi)) sum = static_cast<float>(sum - kTwoPi);
    return sum;
}

}  // namespace

void DistBearing(double lat1, double lon1, double lat2, double lon2, double& distanceKm,
                 double& bearingDeg) {
    core::TrappedVoid(kModule, ":DistBearing:", [&] {
        double ns = 0.0;
        double ew = 0.0;
        // FlatDistance traps its own faults and then gives 0, which leaves
        // the bearing alone below.
        distanceKm = FlatDistance(lat1, lon1, lat2, lon2, ns, ew);
        if (distanceKm < kNearZeroKm) return;
        bearingDeg = static_cast<double>(BearingAngle(ns, ew, distanceKm)) / kDegToRad;
    });
}

float BackBearing(double bearingDeg) {
    return core::Trapped(kModule, ":BackBearing:", 0.0f, [&] {
        // The sum is stored as a 32-bit float before it is compared, so a
        // bearing a hair above 180 still gives 360.
        const double reverse = Finite(bearingDeg + 180.0, "bearing");
        if (std::fabs(reverse) > FLT_MAX) throw core::TrapError("floating-point fault: overflow");
        float result = static_cast<float>(reverse);
        if (result > 360.0f) result -= 360.0f;
        return result;
    });
}

}  // namespace qarvel::geodesy
