// The destination point: round trips through DistBearing over every quadrant,
// the longitude convention, cardinal snapping, wrap-around and the
// non-convergence stop.

#include <cmath>
#include <limits>
#include <ostream>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "core/error_trap.h"
#include "core/prompt.h"
#include "geodesy/geodesy.h"

namespace qarvel::geodesy {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Start {
    const char* name;
    double lat;   // degrees north
    double lonW;  // degrees, positive west (station-table convention)
};
// Test names in CTest show the case name, not the bytes.
void PrintTo(const Start& c, std::ostream* os) {
    *os << c.name;
}

// Smallest difference between two bearings, degrees.
double BearingDifference(double a, double b) {
    const double d = std::fmod(std::fabs(a - b), 360.0);
    return d > 180.0 ? 360.0 - d : d;
}

using RoundTripParam = std::tuple<Start, double, double>;  // start, bearing, km

class GetPosnRoundTrip : public ::testing::TestWithParam<RoundTripParam> {};

// GetPosn adds its east leg to the longitude, so it is handed the negated
// (positive-east) longitude and its answer negated back before DistBearing,
// which counts longitude positive west.
TEST_P(GetPosnRoundTrip, DistBearingGivesBackDistanceAndBearing) {
    const auto& [start, bearing, km] = GetParam();
    double lat2 = kNaN;
    double lonE2 = kNaN;
    GetPosn(start.lat, -start.lonW, lat2, lonE2, km, bearing);
    double distance = 0.0;
    double back = -1.0;
    DistBearing(start.lat, start.lonW, lat2, -lonE2, distance, back);
    EXPECT_NEAR(distance, km, 1e-9 * km + 1e-9);
    EXPECT_LT(BearingDifference(back, bearing), 1e-4) << "bearing came back as " << back;
}

INSTANTIATE_TEST_SUITE_P(Quadrants, GetPosnRoundTrip,
                         ::testing::Combine(::testing::Values(Start{"Philadelphia", 39.95, 75.17},
                                                              Start{"Anchorage", 61.22, 149.90},
                                                              Start{"Sydney", -33.87, -151.21},
                                                              Start{"Quito", -0.18, 78.47}),
                                            ::testing::Values(0.0, 0.5, 30.0, 90.0, 135.0, 180.0,
                                                              210.0, 270.0, 300.0, 359.5),
                                            ::testing::Values(1.0, 100.0, 450.0)),
                         [](const auto& tp) {
                             std::string name = std::get<0>(tp.param).name;
                             name += "_B" +
                                     std::to_string(static_cast<int>(std::get<1>(tp.param) * 10.0));
                             name += "_D" + std::to_string(static_cast<int>(std::get<2>(tp.param)));
                             return name;
                         });

TEST(GetPosn, WestLongitudesComeOutMirrored) {
    // Fed a positive-west longitude, "due east" moves to a larger longitude,
    // i.e. further west in the station tables' sense.
    double lat2 = 0.0, lon2 = 0.0;
    GetPosn(40.0, 75.0, lat2, lon2, 100.0, 90.0);
    EXPECT_EQ(lat2, 40.0);
    EXPECT_NEAR(lon2, 75.0 + 100.0 / KmPerDegLon(40.0), 1e-5);
    double distance = 0.0, bearing = 0.0;
    DistBearing(40.0, 75.0, lat2, lon2, distance, bearing);
    EXPECT_NEAR(bearing, 270.0, 1e-4);
}

TEST(GetPosn, FullTurnsOfBearingAreTheSameDirection) {
    double lat0 = 0.0, lon0 = 0.0;
    GetPosn(40.0, -75.0, lat0, lon0, 250.0, 0.0);
    EXPECT_NEAR(lat0, 40.0 + 250.0 / 111.04, 0.01);
    for (double bearing : {360.0, 720.0, -360.0}) {
        double lat2 = 0.0, lon2 = 0.0;
        GetPosn(40.0, -75.0, lat2, lon2, 250.0, bearing);
        EXPECT_EQ(lat2, lat0) << bearing;
        EXPECT_EQ(lon2, lon0) << bearing;
    }
}

// Within 0.00001 radian (0.00057 degree) of a cardinal direction the other
// leg is exactly zero; just outside it is not.
struct CardinalCase {
    const char* name;
    double bearing;
    bool latitudeKept;   // an east-west leg only
    bool longitudeKept;  // a north-south leg only
};
// Test names in CTest show the case name, not the bytes.
void PrintTo(const CardinalCase& c, std::ostream* os) {
    *os << c.name;
}

class GetPosnCardinal : public ::testing::TestWithParam<CardinalCase> {};

TEST_P(GetPosnCardinal, SnapsWithinTheTolerance) {
    const CardinalCase& c = GetParam();
    double lat2 = 0.0, lon2 = 0.0;
    GetPosn(40.0, -75.0, lat2, lon2, 100.0, c.bearing);
    EXPECT_EQ(lat2 == 40.0, c.latitudeKept) << lat2;
    EXPECT_EQ(lon2 == -75.0, c.longitudeKept) << lon2;
}

INSTANTIATE_TEST_SUITE_P(Boundaries, GetPosnCardinal,
                         ::testing::Values(CardinalCase{"NorthInside", 0.0005, false, true},
                                           CardinalCase{"NorthOutside", 0.0006, false, false},
                                           CardinalCase{"EastInside", 90.0005, true, false},
                                           CardinalCase{"EastOutside", 89.9994, false, false},
                                           CardinalCase{"SouthInside", 179.9995, false, true},
                                           CardinalCase{"WestInside", 270.0005, true, false},
                                           CardinalCase{"WestOutside", 270.0006, false, false},
                                           // Just under a full turn is not caught as north.
                                           CardinalCase{"FullTurnNotNorth", 359.9995, false,
                                                        false}),
                         [](const auto& tp) { return std::string(tp.param.name); });

TEST(GetPosn, LongitudeWrapsAtTheDateLine) {
    double lat2 = 0.0, lon2 = 0.0;
    GetPosn(0.0, 179.9, lat2, lon2, 50.0, 90.0);  // east across 180
    EXPECT_NEAR(lon2, 179.9 + 50.0 / 111.3207 - 360.0, 1e-6);
    GetPosn(0.0, -179.9, lat2, lon2, 50.0, 270.0);  // west across -180
    EXPECT_NEAR(lon2, -179.9 - 50.0 / 111.3207 + 360.0, 1e-6);
}

class GetPosnNeverConverges
    : public ::testing::TestWithParam<std::tuple<const char*, double, double>> {};

TEST_P(GetPosnNeverConverges, ShowsTheMessageAndHalts) {
    const auto& [name, km, bearing] = GetParam();
    core::RecordingPrompt prompt;
    core::ScopedPrompt promptScope(prompt);
    core::RecordingErrorSink sink;
    core::ScopedErrorSink sinkScope(sink);
    core::ScopedHaltHandler halt([](int code) { throw core::ProgramHalted{code}; });

    double lat2 = 1.0, lon2 = 2.0;
    int exitCode = -1;
    try {
        GetPosn(40.0, -75.0, lat2, lon2, km, bearing);
    } catch (const core::ProgramHalted& halted) {
        exitCode = halted.exitCode;
    }
    EXPECT_EQ(exitCode, 1) << name;
    ASSERT_EQ(prompt.Messages().size(), 1u);
    EXPECT_EQ(prompt.Messages()[0].text,
              "Non-convergence error in Function ModMapping.GetPosn.  Program Halted!");
    EXPECT_EQ(prompt.Messages()[0].icon, core::PromptIcon::Critical);
    EXPECT_EQ(prompt.Messages()[0].buttons, core::PromptButtons::Ok);
    EXPECT_TRUE(sink.Reports().empty()) << "the stop is not an ordinary trapped error";
    EXPECT_EQ(lat2, 1.0);
    EXPECT_EQ(lon2, 2.0);
}

INSTANTIATE_TEST_SUITE_P(
    NonFiniteArguments, GetPosnNeverConverges,
    ::testing::Values(
        std::make_tuple("NaNDistance", kNaN, 45.0),
        std::make_tuple("InfiniteDistance", std::numeric_limits<double>::infinity(), 10.0),
        std::make_tuple("NaNBearing", 100.0, kNaN),
        std::make_tuple("InfiniteBearing", 100.0, std::numeric_limits<double>::infinity())),
    [](const auto& tp) { return std::string(std::get<0>(tp.param)); });

}  // namespace
}  // namespace qarvel::geodesy
