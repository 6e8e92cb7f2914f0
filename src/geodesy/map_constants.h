#pragma once
// The module's angle constants (64-bit). They are compile-time constants, so
// every routine can use them before, during and after start-up and from any
// thread; InitMapConstants stays the start-up sequence's entry point.

#include <numbers>

namespace qarvel::geodesy {

// std::numbers::pi is the double nearest pi, which is exactly 4 x atan(1) as
// the C library computes it (atan(1) is correctly rounded, x4 is exact).
inline constexpr double kPi = std::numbers::pi;
inline constexpr double kHalfPi = kPi / 2.0;
inline constexpr double kDegToRad = kPi / 180.0;
inline constexpr double kTwoPi = 2.0 * kPi;

// Called once by the start-up sequence before any other routine of this
// module. The constants are already in force, so this only confirms them;
// calling it again (or never) changes nothing.
void InitMapConstants();

constexpr double Pi() {
    return kPi;
}  // radians
constexpr double HalfPi() {
    return kHalfPi;
}  // radians
constexpr double DegToRad() {
    return kDegToRad;
}  // radians per degree
constexpr double TwoPi() {
    return kTwoPi;
}  // radians

}  // namespace qarvel::geodesy
