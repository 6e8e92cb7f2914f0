#pragma once
// The two comparison helpers kept in modCircle.

#include <cmath>
#include <type_traits>

#include "core/error_trap.h"

namespace qarvel::geodesy {

namespace detail {
// A NaN operand makes the comparison an invalid floating-point operation:
// reported under modCircle, and the routine returns its failure value 0.
// Infinities compare normally (callers use them as "no value yet").
template <class T>
bool NanOperand(const char* routine, T a, T b) {
    if constexpr (std::is_floating_point_v<T>) {
        if (std::isnan(a) || std::isnan(b)) {
            core::ReportError("modCircle", routine,
                              "floating-point fault: invalid operation (comparison with NaN)");
            return true;
        }
    }
    return false;
}
}  // namespace detail

// a if a is less than b, else b.
template <class T>
T Min(T a, T b) {
    if (detail::NanOperand(":Min:", a, b)) return T{};
    return a < b ? a : b;
}

// a if a is greater than b, else b.
template <class T>
T Max(T a, T b) {
    if (detail::NanOperand(":Max:", a, b)) return T{};
    return a > b ? a : b;
}

}  // namespace qarvel::geodesy
