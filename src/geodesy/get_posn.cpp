// The destination point at a given distance and bearing: the inverse of the
// flat-earth distance, solved by iterating on the middle latitude.

#include <cmath>

#include "core/prompt.h"
#include "geodesy/fp_fault.h"
#include "geodesy/geodesy.h"

namespace qarvel::geodesy {

using detail::Divide;
using detail::Finite;
using detail::kModule;

namespace {

constexpr const char* kNonConvergence =
    "Non-convergence error in Function ModMapping.GetPosn.  Program Halted!";

// Passes before the tolerance is relaxed, and relaxations before giving up.
constexpr int kPassesPerRelaxation = 100;
constexpr int kMaxRelaxations = 100;

// Beyond this many turns the bearing is reduced with fmod first, so the
// subtraction loop below always ends (a huge or infinite bearing would never
// come down by subtracting TwoPi); ordinary bearings never reach it.
constexpr double kMaxLoopTurns = 1024.0;

// Bearing b (radians) brought into 0 to below TwoPi: add TwoPi, then subtract
// it while b is TwoPi or more. A bearing below -TwoPi stays negative; the
// quadrant formulas below still place it correctly.
double NormaliseBearing(double b) {
    b += kTwoPi;
    if (b >= kTwoPi * kMaxLoopTurns) b = std::fmod(b, kTwoPi);
    while (b >= kTwoPi) b -= kTwoPi;
    return b;
}

bool Near(double a, double b) {
    return std::fabs(a - b) < 0.00001;
}

struct Legs {
    double north;  // km
    double east;   // km
};

// Splits distance d (km) on bearing b (radians, normalised) into north and
// east legs, with the four cardinal directions caught exactly.
Legs SplitDistance(double d, double b) {
    if (Near(b, 0.0)) return {d, 0.0};
    if (Near(b, kHalfPi)) return {0.0, d};
    if (Near(b, kPi)) return {-d, 0.0};
    if (Near(b, kPi + kHalfPi)) return {0.0, -d};
    if (b < kHalfPi) return {d * std::cos(b), d * std::sin(b)};
    if (b < kPi) return {-d * std::sin(b - kHalfPi), d * std::cos(b - kHalfPi)};
    if (b < 3.0 * kHalfPi) return {-d * std::cos(b - kPi), -d * std::sin(b - kPi)};
    return {d * std::sin(b - 3.0 * kHalfPi), -d * std::cos(b - 3.0 * kHalfPi)};
}

[[noreturn]] void HaltOnNonConvergence() {
    core::ShowPrompt(kNonConvergence, {}, core::PromptButtons::Ok, core::PromptIcon::Critical);
    core::HaltProgram(1);
}

// The middle latitude (radians) between lat1Deg and the point northKm north
// of it, iterated until it moves less than the tolerance. A NaN or infinite
// leg never settles, which ends in the non-convergence stop.
double SolveMiddleLatitude(double lat1Deg, double northKm) {
    // One ten-millionth of an arc-second, in radians.
    double tolerance = kTwoPi / 360.0 * (1.0 / 60.0) * (1.0 / 60.0) / 10000000.0;
    int passes = 0;
    int relaxations = 0;
    double ml = lat1Deg * kDegToRad;
    double change = 0.0;
    do {
        const double lat2Deg = Divide(northKm, detail::LatSeries(ml)) + lat1Deg;
        const double next = (lat1Deg + lat2Deg) / 2.0 * kDegToRad;
        change = std::fabs(next - ml);
        ml = next;
        if (++passes > kPassesPerRelaxation) {
            passes = 0;
            if (relaxations >= kMaxRelaxations) HaltOnNonConvergence();
            tolerance *= 1.001;
            ++relaxations;
        }
    } while (!(change < tolerance));
    return ml;
}

}  // namespace

void GetPosn(double lat1, double lon1, double& lat2, double& lon2, double distanceKm,
             double bearingDeg) {
    core::TrappedVoid(kModule, ":GetPosn:", [&] {
        // Nothing is checked up front: a non-finite argument is left to the
        // iteration, which then never converges and stops the program.
        const Legs legs = SplitDistance(distanceKm, NormaliseBearing(bearingDeg * kDegToRad));
        const double ml = SolveMiddleLatitude(lat1, legs.north);
        const double newLat = Finite(Divide(legs.north, detail::LatSeries(ml)) + lat1, "latitude");
        // The east leg is added: this routine works in positive-east longitude.
        double newLon = Finite(Divide(legs.east, detail::LonSeries(ml)) + lon1, "longitude");
        if (newLon > 180.0) {
            newLon -= 360.0;
        } else if (newLon < -180.0) {
            newLon += 360.0;
        }
        lat2 = newLat;
        lon2 = newLon;
    });
}

}  // namespace qarvel::geodesy
