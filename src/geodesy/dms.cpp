// Degrees as degree-minute-second text, for the latdms and londms columns
// and the forms.

#include <cmath>
#include <cstdio>

#include "geodesy/fp_fault.h"
#include "geodesy/geodesy.h"

namespace qarvel::geodesy {

namespace {

// Degrees are held in 16 bits, as in the stored text's widest field.
constexpr int kMaxDegrees = 32767;

// x rounded to the nearest whole number, halves to the even neighbour,
// whatever the floating-point rounding mode is.
double RoundHalfEven(double x) {
    const double lower = std::floor(x);
    const double fraction = x - lower;
    if (fraction > 0.5) return lower + 1.0;
    if (fraction < 0.5) return lower;
    return std::fmod(lower, 2.0) == 0.0 ? lower : lower + 1.0;
}

}  // namespace

std::string DegToDMS(double degrees) {
    return core::Trapped(detail::kModule, ":DegToDMS:", std::string(), [&] {
        const bool negative = degrees < 0.0;
        double rest = std::fabs(detail::Finite(degrees, "degrees"));
        if (rest >= kMaxDegrees + 1.0) throw core::TrapError("floating-point fault: overflow");

        int deg = static_cast<int>(std::trunc(rest));
        rest = (rest - deg) * 60.0;
        int min = static_cast<int>(std::trunc(rest));
        if (min == 60) {
            min = 0;
            ++deg;
        }
        int sec = static_cast<int>(RoundHalfEven((rest - min) * 60.0));
        if (sec == 60) {
            sec = 0;
            if (++min == 60) {
                min = 0;
                ++deg;
            }
        }
        if (deg > kMaxDegrees) throw core::TrapError("floating-point fault: overflow");
        // Only the degrees carry the sign: -0.5 prints as +000:30:00.
        if (negative) deg = -deg;

        char text[24];
        std::snprintf(text, sizeof text, "%+04d:%02d:%02d", deg, min, sec);
        return std::string(text);
    });
}

}  // namespace qarvel::geodesy
