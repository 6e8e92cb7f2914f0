#pragma once
// Internal: how this module detects floating-point faults. Plain IEEE
// arithmetic runs on quietly; these checks raise a TrapError where the value
// would have been a runtime fault (overflow, invalid operation, division by
// zero), and the routine's trap reports it.

#include <cmath>
#include <string>

#include "core/error_trap.h"

namespace qarvel::geodesy::detail {

inline constexpr const char* kModule = "modMapping";

// v must be a finite number; what names the quantity in the report.
inline double Finite(double v, const char* what) {
    if (!std::isfinite(v)) {
        throw core::TrapError(std::string("floating-point fault: ") + what +
                              " is not a finite number");
    }
    return v;
}

// a / b, with a zero divisor reported as the runtime reported it.
inline double Divide(double a, double b) {
    if (b == 0.0) throw core::TrapError("floating-point fault: division by zero");
    return a / b;
}

// The cosine series of the spacing rules at middle latitude ml (radians),
// in 64-bit arithmetic.
inline double LatSeries(double ml) {
    return 111.13209 - 0.56605 * std::cos(2.0 * ml) + 0.0012 * std::cos(4.0 * ml);
}
inline double LonSeries(double ml) {
    return 111.41513 * std::cos(ml) - 0.09455 * std::cos(3.0 * ml) + 0.00012 * std::cos(5.0 * ml);
}

}  // namespace qarvel::geodesy::detail
