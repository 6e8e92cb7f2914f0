// Km per degree and the flat-earth distance, checked against hand-worked
// series values and against the broadcast rules' formula written out
// independently (degrees, cosines of degrees).

#include <cmath>
#include <limits>
#include <numbers>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "core/error_trap.h"
#include "geodesy/geodesy.h"

namespace qarvel::geodesy {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(MapConstants, MatchTheArctangentDefinitions) {
    InitMapConstants();
    EXPECT_EQ(Pi(), 4.0 * std::atan(1.0));
    EXPECT_EQ(HalfPi(), Pi() / 2.0);
    EXPECT_EQ(DegToRad(), Pi() / 180.0);
    EXPECT_EQ(TwoPi(), 2.0 * Pi());
}

// Values of the series worked by hand from the cosines at whole angles.
struct KmPerDegCase {
    const char* name;
    double latDeg;
    float kmPerDegLat;
    float kmPerDegLon;
};
// Test names in CTest show the case name, not the bytes.
void PrintTo(const KmPerDegCase& c, std::ostream* os) {
    *os << c.name;
}

constexpr float kLon45 = static_cast<float>((111.41513 + 0.09455 - 0.00012) / std::numbers::sqrt2);

class KmPerDegTest : public ::testing::TestWithParam<KmPerDegCase> {};

TEST_P(KmPerDegTest, MatchesHandWorkedSeries) {
    const KmPerDegCase& c = GetParam();
    // Within one float step at 111 km (7.6e-6).
    EXPECT_NEAR(KmPerDegLat(c.latDeg), c.kmPerDegLat, 1e-5);
    EXPECT_NEAR(KmPerDegLon(c.latDeg), c.kmPerDegLon, 1e-5);
}

INSTANTIATE_TEST_SUITE_P(
    Latitudes, KmPerDegTest,
    ::testing::Values(
        // 111.13209 - 0.56605 + 0.0012 ; 111.41513 - 0.09455 + 0.00012
        KmPerDegCase{"Equator", 0.0, 110.56724f, 111.3207f},
        // cos 90 = 0, cos 180 = -1 ; cos 45 = -cos 135 = -cos 225 = 1/sqrt 2
        KmPerDegCase{"North45", 45.0, 111.13089f, kLon45},
        KmPerDegCase{"South45", -45.0, 111.13089f, kLon45},
        // cos 120 = cos 240 = -1/2 ; cos 60 = cos 300 = 1/2, cos 180 = -1
        KmPerDegCase{"North60", 60.0, 111.414515f, 55.802175f},
        // cos 180 = -1, cos 360 = 1 ; every cosine of an odd multiple of 90 is 0
        KmPerDegCase{"NorthPole", 90.0, 111.69934f, 0.0f}),
    [](const auto& tp) { return std::string(tp.param.name); });

TEST(KmPerDeg, WorkedValuesAreTheFloatsOfTheDecimalSums) {
    // Exactly the 32-bit float nearest each sum, not merely close to it.
    EXPECT_EQ(KmPerDegLat(0.0), 110.56724f);
    EXPECT_EQ(KmPerDegLon(0.0), 111.3207f);
}

TEST(KmPerDeg, NonFiniteLatitudeIsTrappedAndGivesZero) {
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scope(sink);
    EXPECT_EQ(KmPerDegLat(kNaN), 0.0f);
    EXPECT_EQ(KmPerDegLon(std::numeric_limits<double>::infinity()), 0.0f);
    ASSERT_EQ(sink.Reports().size(), 2u);
    EXPECT_EQ(sink.Reports()[0].module, "modMapping");
    EXPECT_EQ(sink.Reports()[0].routine, ":KmPerDegLat:");
    EXPECT_EQ(sink.Reports()[1].routine, ":KmPerDegLon:");
}

// The broadcast rules' distance formula as published: ML in degrees,
// NS = KPDlat (LAT1 - LAT2), EW = KPDlon (LON1 - LON2), longitude west.
double RulesDistance(double lat1, double lon1, double lat2, double lon2) {
    const auto cosd = [](double deg) { return std::cos(deg * std::numbers::pi / 180.0); };
    const double ml = (lat1 + lat2) / 2.0;
    const double kpdLat = 111.13209 - 0.56605 * cosd(2 * ml) + 0.00120 * cosd(4 * ml);
    const double kpdLon = 111.41513 * cosd(ml) - 0.09455 * cosd(3 * ml) + 0.00012 * cosd(5 * ml);
    return std::hypot(kpdLat * (lat1 - lat2), kpdLon * (lon1 - lon2));
}

TEST(FlatDistance, RulesWorkedExampleFortyNorthSeventyFiveWest) {
    double north = 0.0;
    double east = 0.0;
    const double d = FlatDistance(40.0, 75.0, 41.0, 76.0, north, east);
    EXPECT_DOUBLE_EQ(std::round(d * 100.0) / 100.0, 139.70);
    EXPECT_NEAR(north, 111.0424, 1e-4);  // point 2 lies north...
    EXPECT_NEAR(east, -84.7701, 1e-4);   // ...and west (larger west longitude)
}

struct PairCase {
    const char* name;
    double lat1, lon1, lat2, lon2;  // degrees, longitude positive west
};
// Test names in CTest show the case name, not the bytes.
void PrintTo(const PairCase& c, std::ostream* os) {
    *os << c.name;
}

class FlatDistancePairs : public ::testing::TestWithParam<PairCase> {};

TEST_P(FlatDistancePairs, AgreesWithThePublishedFormula) {
    const PairCase& c = GetParam();
    double north = 0.0;
    double east = 0.0;
    const double d = FlatDistance(c.lat1, c.lon1, c.lat2, c.lon2, north, east);
    EXPECT_NEAR(d, RulesDistance(c.lat1, c.lon1, c.lat2, c.lon2), 1e-9);
    EXPECT_NEAR(d, std::hypot(north, east), 1e-9);
}

TEST_P(FlatDistancePairs, IsSymmetricWithLegsReversed) {
    const PairCase& c = GetParam();
    double n12 = 0.0, e12 = 0.0, n21 = 0.0, e21 = 0.0;
    const double d12 = FlatDistance(c.lat1, c.lon1, c.lat2, c.lon2, n12, e12);
    const double d21 = FlatDistance(c.lat2, c.lon2, c.lat1, c.lon1, n21, e21);
    EXPECT_DOUBLE_EQ(d12, d21);
    EXPECT_DOUBLE_EQ(n12, -n21);
    EXPECT_DOUBLE_EQ(e12, -e21);
}

TEST_P(FlatDistancePairs, SinglePrecisionAgreesToFloatPrecision) {
    const PairCase& c = GetParam();
    double north = 0.0, east = 0.0;
    float lat1 = static_cast<float>(c.lat1), lon1 = static_cast<float>(c.lon1);
    float lat2 = static_cast<float>(c.lat2), lon2 = static_cast<float>(c.lon2);
    float northF = 0.0f, eastF = 0.0f;
    // The double routine is fed the very same (float) coordinates.
    const double d = FlatDistance(lat1, lon1, lat2, lon2, north, east);
    const float dF = FlatDistanceSingle(lat1, lon1, lat2, lon2, northF, eastF);
    // Each float step adds at most half an ulp; a few ulps of the
    // coordinates' magnitude bound the whole.
    const double tol = 8.0 * std::numeric_limits<float>::epsilon() * (std::fabs(d) + 200.0);
    EXPECT_NEAR(dF, d, tol);
    EXPECT_NEAR(northF, north, tol);
    EXPECT_NEAR(eastF, east, tol);
    EXPECT_EQ(lat1, static_cast<float>(c.lat1)) << "coordinates are read, not changed";
}

INSTANTIATE_TEST_SUITE_P(
    Pairs, FlatDistancePairs,
    ::testing::Values(PairCase{"Philadelphia_NewYork", 39.9526, 75.1652, 40.7128, 74.0060},
                      PairCase{"Denver_Cheyenne", 39.7392, 104.9903, 41.1400, 104.8202},
                      PairCase{"Miami_KeyWest", 25.7617, 80.1918, 24.5551, 81.7800},
                      PairCase{"SouthernHemisphere", -33.8688, -151.2093, -34.9285, -138.6007},
                      PairCase{"AcrossEquator", 1.5, 60.0, -2.25, 61.0},
                      PairCase{"DueNorth", 30.0, 90.0, 33.0, 90.0},
                      PairCase{"DueEast", 30.0, 90.0, 30.0, 87.0},
                      PairCase{"SamePoint", 44.0, 100.0, 44.0, 100.0}),
    [](const auto& tp) { return std::string(tp.param.name); });

TEST(FlatDistance, PointToItselfHasZeroDistanceAndLegs) {
    double north = 9.0, east = 9.0;
    EXPECT_EQ(FlatDistance(44.5, 93.25, 44.5, 93.25, north, east), 0.0);
    EXPECT_EQ(north, 0.0);
    EXPECT_EQ(east, 0.0);
}

TEST(FlatDistanceSingle, RoundsEveryStepToFloat) {
    // 40N 75W to 40.3699N 74.2143W worked in 32-bit floats step by step; for
    // this pair the result differs from the 64-bit distance rounded once.
    float lat1 = 40.0f, lon1 = 75.0f, lat2 = 40.3699f, lon2 = 74.2143f, north = 0, east = 0;
    const double mlExact = (double{lat1} * DegToRad() + double{lat2} * DegToRad()) / 2.0;
    const float ml = static_cast<float>(mlExact);
    const float kmLat =
        static_cast<float>(111.13209 - 0.56605 * std::cos(2.0 * ml) + 0.0012 * std::cos(4.0 * ml));
    const float kmLon =
        static_cast<float>(111.41513 * std::cos(double{ml}) - 0.09455 * std::cos(3.0 * ml) +
                           0.00012 * std::cos(5.0 * ml));
    const float ns = (lat2 - lat1) * kmLat;
    const float ew = (lon1 - lon2) * kmLon;
    const float nsSquared = ns * ns;
    const float ewSquared = ew * ew;
    const float expected = std::sqrt(nsSquared + ewSquared);
    double northD = 0.0, eastD = 0.0;
    const float roundedOnce =
        static_cast<float>(FlatDistance(lat1, lon1, lat2, lon2, northD, eastD));
    ASSERT_NE(expected, roundedOnce) << "the case must tell the two ways apart";

    EXPECT_EQ(FlatDistanceSingle(lat1, lon1, lat2, lon2, north, east), expected);
    EXPECT_EQ(north, ns);
    EXPECT_EQ(east, ew);
}

TEST(FlatDistance, FaultsAreTrappedAndLeaveTheLegsAlone) {
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scope(sink);
    double north = 5.0, east = 6.0;
    EXPECT_EQ(FlatDistance(kNaN, 75.0, 41.0, 76.0, north, east), 0.0);
    // Finite but overflowing squares are an overflow, not an infinite distance.
    EXPECT_EQ(FlatDistance(0.0, 1e300, 0.0, -1e300, north, east), 0.0);
    float big = 3e38f, zero = 0.0f, minusBig = -3e38f, n = 5.0f, e = 6.0f;
    EXPECT_EQ(FlatDistanceSingle(zero, big, zero, minusBig, n, e), 0.0f);
    EXPECT_EQ(north, 5.0);
    EXPECT_EQ(east, 6.0);
    EXPECT_EQ(n, 5.0f);
    EXPECT_EQ(e, 6.0f);
    ASSERT_EQ(sink.Reports().size(), 3u);
    EXPECT_EQ(sink.Reports()[0].Text().rfind("modMapping:FlatDistance: ", 0), 0u);
    EXPECT_EQ(sink.Reports()[1].routine, ":FlatDistance:");
    EXPECT_EQ(sink.Reports()[2].routine, ":FlatDistanceSingle:");
}

}  // namespace
}  // namespace qarvel::geodesy
