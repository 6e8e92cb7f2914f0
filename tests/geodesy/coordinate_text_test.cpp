// Coordinates as users type and paste them.

#include "geodesy/coordinate_text.h"

#include <gtest/gtest.h>

#include <string>

namespace qarvel::geodesy {
namespace {

struct TextCase {
    const char* name;
    const char* text;
    CoordinateAxis axis;
    CoordinateProblem problem;
    double degrees;  // when accepted
};
void PrintTo(const TextCase& c, std::ostream* os) { *os << c.name; }

constexpr auto kLat = CoordinateAxis::Latitude;
constexpr auto kLon = CoordinateAxis::Longitude;
constexpr auto kOk = CoordinateProblem::None;

class CoordinateTextTest : public ::testing::TestWithParam<TextCase> {};

TEST_P(CoordinateTextTest, ReadsTheNotation) {
    const auto parsed = ParseCoordinateText(GetParam().text, GetParam().axis);
    EXPECT_EQ(parsed.problem, GetParam().problem);
    if (GetParam().problem == kOk) {
        EXPECT_NEAR(parsed.degrees, GetParam().degrees, 1e-9);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Notations, CoordinateTextTest,
    ::testing::Values(
        TextCase{"Decimal", "40.75", kLat, kOk, 40.75}, TextCase{"BareLongitudeIsWest", "73.5", kLon, kOk, 73.5},
        TextCase{"Colons", "40:45:30", kLat, kOk, 40.758333333333333},
        TextCase{"South", "33:52:12S", kLat, kOk, -33.87}, TextCase{"EastPrefix", "E 2.35", kLon, kOk, -2.35},
        TextCase{"Symbols", "40\xC2\xB0" "45'30\"N", kLat, kOk, 40.758333333333333},
        TextCase{"Letters", "40d45m30s", kLat, kOk, 40.758333333333333},
        TextCase{"DecimalMinutes", "73 58.8 W", kLon, kOk, 73.98},
        TextCase{"Primes", "73\xC2\xB0" "58\xE2\x80\xB2" "48\xE2\x80\xB3W", kLon, kOk, 73.98},
        TextCase{"NegativeIsSouth", "-12.5", kLat, kOk, -12.5},
        TextCase{"SignAndHemisphere", "-40.5N", kLat, CoordinateProblem::SignAndHemisphere, 0},
        TextCase{"SixtyMinutes", "40:60:00", kLat, CoordinateProblem::NotACoordinate, 0},
        TextCase{"Words", "north", kLat, CoordinateProblem::NotACoordinate, 0},
        TextCase{"LatitudeHemisphereOnLongitude", "40N", kLon, CoordinateProblem::NotACoordinate, 0},
        TextCase{"BeyondPole", "90.0001", kLat, CoordinateProblem::OutOfRange, 0},
        TextCase{"LongitudeEdge", "180E", kLon, kOk, -180}),
    [](const auto& c) { return std::string(c.param.name); });

TEST(CoordinatePair, WebMapPairsCountLongitudeEast) {
    const auto newYork = ParseCoordinatePair("40.7128, -74.0060");
    ASSERT_TRUE(newYork);
    EXPECT_DOUBLE_EQ(newYork->first, 40.7128);
    EXPECT_DOUBLE_EQ(newYork->second, 74.006);  // west positive
    const auto lettered = ParseCoordinatePair("40:42:46N; 74:00:22W");
    ASSERT_TRUE(lettered);
    EXPECT_NEAR(lettered->second, 74.006111, 1e-6);
    EXPECT_FALSE(ParseCoordinatePair("40.7128 -74.0060 12"));
}

TEST(DegreesDecimalMinutes, WritesHemisphereAndCarries) {
    EXPECT_EQ(DegreesDecimalMinutes(40.758333333, kLat), "40 45.5000 N");
    EXPECT_EQ(DegreesDecimalMinutes(-2.35, kLon), "002 21.0000 E");
    EXPECT_EQ(DegreesDecimalMinutes(40.9999999, kLat), "41 00.0000 N");
}

}  // namespace
}  // namespace qarvel::geodesy
