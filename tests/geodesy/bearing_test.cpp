// Bearings from the flat-earth legs, the thresholds at which a leg counts as
// zero, and the reverse bearing.

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

// The bearing sum is held as a 32-bit float: about 3e-5 degree near 360.
constexpr double kBearingTol = 1e-4;

// Bearing (degrees) of the published formula's legs, with the legs' signs
// taken independently: north = lat2 - lat1, east = lon1 - lon2 (west positive).
double ReferenceBearing(double lat1, double lon1, double lat2, double lon2) {
    const double ml = (lat1 + lat2) / 2.0 * std::numbers::pi / 180.0;
    const double north =
        (lat2 - lat1) * (111.13209 - 0.56605 * std::cos(2 * ml) + 0.0012 * std::cos(4 * ml));
    const double east = (lon1 - lon2) * (111.41513 * std::cos(ml) - 0.09455 * std::cos(3 * ml) +
                                         0.00012 * std::cos(5 * ml));
    const double deg = std::atan2(east, north) * 180.0 / std::numbers::pi;
    return deg < 0.0 ? deg + 360.0 : deg;
}

struct BearingCase {
    const char* name;
    double lat2, lon2;  // from 40N 75W; longitude positive west
    double bearing;     // degrees
};
// Test names in CTest show the case name, not the bytes.
void PrintTo(const BearingCase& c, std::ostream* os) {
    *os << c.name;
}

class DistBearingFrom40N75W : public ::testing::TestWithParam<BearingCase> {};

TEST_P(DistBearingFrom40N75W, GivesTheBearingOfTheLegs) {
    const BearingCase& c = GetParam();
    double distance = -1.0;
    double bearing = -1.0;
    DistBearing(40.0, 75.0, c.lat2, c.lon2, distance, bearing);
    EXPECT_NEAR(bearing, c.bearing, kBearingTol);
    EXPECT_NEAR(bearing, ReferenceBearing(40.0, 75.0, c.lat2, c.lon2), kBearingTol);
    double north = 0.0, east = 0.0;
    EXPECT_DOUBLE_EQ(distance, FlatDistance(40.0, 75.0, c.lat2, c.lon2, north, east));
}

INSTANTIATE_TEST_SUITE_P(
    Directions, DistBearingFrom40N75W,
    ::testing::Values(BearingCase{"DueNorth", 41.0, 75.0, 0.0},
                      BearingCase{"DueEast_SmallerLongitude", 40.0, 74.0, 90.0},
                      BearingCase{"DueSouth", 39.0, 75.0, 180.0},
                      BearingCase{"DueWest_LargerLongitude", 40.0, 76.0, 270.0},
                      // Half a degree north is 55.519 km, a degree east at
                      // 40.25N 85.084 km: atan2 gives 56.8748 degrees. To the
                      // south the middle latitude, and so the legs, differ.
                      BearingCase{"NorthEast", 40.5, 74.0, 56.8748},
                      BearingCase{"SouthEast", 39.5, 74.0, 122.9319},
                      BearingCase{"SouthWest", 39.5, 76.0, 237.0681},
                      BearingCase{"NorthWest", 40.5, 76.0, 303.1252},
                      BearingCase{"AlmostNorthByWest", 42.0, 75.001, 359.9783}),
    [](const auto& tp) { return std::string(tp.param.name); });

TEST(DistBearing, CoincidentPointsLeaveTheBearingAsTheCallerSetIt) {
    double distance = -1.0;
    double bearing = 123.5;
    DistBearing(40.0, 75.0, 40.000005, 75.0, distance, bearing);  // 0.55 m
    EXPECT_GT(distance, 0.0);
    EXPECT_LT(distance, 0.001);
    EXPECT_EQ(bearing, 123.5);
}

// A leg under 0.001 km counts as zero and the bearing snaps to the axis (the
// axis angle held as a 32-bit float, so 90 comes out as 90.0000025); at
// 0.0011 km the leg already tilts the bearing by a hundredth of a degree
// over 5 km.
struct LegThresholdCase {
    const char* name;
    double northKm;  // approximate: placed within a few per cent
    double eastKm;
    bool snapped;
    double bearing;  // when snapped
};
// Test names in CTest show the case name, not the bytes.
void PrintTo(const LegThresholdCase& c, std::ostream* os) {
    *os << c.name;
}

class DistBearingLegThreshold : public ::testing::TestWithParam<LegThresholdCase> {};

TEST_P(DistBearingLegThreshold, SnapsOnlyBelowOneMetre) {
    const LegThresholdCase& c = GetParam();
    const double lat2 = 40.0 + c.northKm / 111.0;  // km per degree near 40N
    const double lon2 = 75.0 - c.eastKm / 85.0;
    double distance = 0.0;
    double bearing = -1.0;
    DistBearing(40.0, 75.0, lat2, lon2, distance, bearing);
    if (c.snapped) {
        EXPECT_NEAR(bearing, c.bearing, 1e-7);
    } else {
        EXPECT_NEAR(bearing, ReferenceBearing(40.0, 75.0, lat2, lon2), kBearingTol);
        EXPECT_GT(std::fabs(bearing - 90.0), 0.01);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Boundaries, DistBearingLegThreshold,
    ::testing::Values(LegThresholdCase{"NorthLegJustUnder_East", 0.0009, 5.0, true, 90.0000025},
                      LegThresholdCase{"NorthLegJustUnder_West", 0.0009, -5.0, true, 270.0000007},
                      LegThresholdCase{"EastLegJustUnder_North", 5.0, 0.0009, true, 0.0},
                      LegThresholdCase{"EastLegJustUnder_South", -5.0, 0.0009, true, 180.0000050},
                      LegThresholdCase{"NorthLegJustOver_East", 0.0011, 5.0, false, 0.0}),
    [](const auto& tp) { return std::string(tp.param.name); });

TEST(DistBearing, FaultInTheDistanceIsReportedThereAndLeavesTheBearing) {
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scope(sink);
    double distance = 7.0;
    double bearing = 45.0;
    DistBearing(std::numeric_limits<double>::quiet_NaN(), 75.0, 41.0, 76.0, distance, bearing);
    EXPECT_EQ(distance, 0.0);
    EXPECT_EQ(bearing, 45.0);
    ASSERT_EQ(sink.Reports().size(), 1u);
    EXPECT_EQ(sink.Reports()[0].module, "modMapping");
    EXPECT_EQ(sink.Reports()[0].routine, ":FlatDistance:");
}

TEST(DistBearing, VanishingNorthLegAgainstHugeEastLegIsADivisionByZero) {
    // 1.1 m north against 2000 degrees of longitude: the north leg is lost in
    // the distance, the sine comes out exactly 1 and its arctangent form
    // divides by zero.
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scope(sink);
    double distance = 0.0;
    double bearing = 12.0;
    DistBearing(0.0, 0.0, 0.00001, -2000.0, distance, bearing);
    EXPECT_GT(distance, 200000.0);
    EXPECT_EQ(bearing, 12.0);
    ASSERT_EQ(sink.Reports().size(), 1u);
    EXPECT_EQ(sink.Reports()[0].Text(),
              "modMapping:DistBearing: floating-point fault: division by zero");
}

struct BackBearingCase {
    const char* name;
    double bearing;
    float back;
};
// Test names in CTest show the case name, not the bytes.
void PrintTo(const BackBearingCase& c, std::ostream* os) {
    *os << c.name;
}

class BackBearingTable : public ::testing::TestWithParam<BackBearingCase> {};

TEST_P(BackBearingTable, AddsHalfATurn) {
    EXPECT_EQ(BackBearing(GetParam().bearing), GetParam().back);
}

INSTANTIATE_TEST_SUITE_P(
    Bearings, BackBearingTable,
    ::testing::Values(BackBearingCase{"North", 0.0, 180.0f}, BackBearingCase{"East", 90.0, 270.0f},
                      BackBearingCase{"JustUnderSouth", 179.0, 359.0f},
                      BackBearingCase{"SouthGives360", 180.0, 360.0f},
                      // Rounded to a float (360) before the comparison.
                      BackBearingCase{"HairOverSouthStill360", 180.00000001, 360.0f},
                      BackBearingCase{"JustOverSouth", 181.0, 1.0f},
                      BackBearingCase{"West", 270.0, 90.0f},
                      BackBearingCase{"FractionKept", 359.5, 179.5f}),
    [](const auto& tp) { return std::string(tp.param.name); });

TEST(BackBearing, FaultsGiveZero) {
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scope(sink);
    EXPECT_EQ(BackBearing(std::numeric_limits<double>::quiet_NaN()), 0.0f);
    EXPECT_EQ(BackBearing(1e300), 0.0f);  // beyond a 32-bit float
    ASSERT_EQ(sink.Reports().size(), 2u);
    EXPECT_EQ(sink.Reports()[1].routine, ":BackBearing:");
}

}  // namespace
}  // namespace qarvel::geodesy
