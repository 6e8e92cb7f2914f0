// Pointer read-out, measurement message and the map-point-to-position rule.

#include "app/mainwin/display_texts.h"

#include <gtest/gtest.h>

#include <ostream>

#include <cmath>

#include "geodesy/geodesy.h"

namespace qarvel::app {
namespace {

struct DecimalCase {
    const char* name;
    double value;
    const char* text;
};
// Test names and failure messages show the case by its name.
void PrintTo(const DecimalCase& c, std::ostream* os) { *os << c.name; }


class OneOrTwoDecimalsTest : public ::testing::TestWithParam<DecimalCase> {};

TEST_P(OneOrTwoDecimalsTest, FormatsLikeTheDisplay) {
    EXPECT_EQ(FormatOneOrTwoDecimals(GetParam().value), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Table, OneOrTwoDecimalsTest,
    ::testing::Values(DecimalCase{"NoLeadingZero", 0.52, ".52"}, DecimalCase{"WholeKeepsOneDecimal", 100.0, "100.0"},
                      DecimalCase{"OneDecimalKept", 1.5, "1.5"}, DecimalCase{"RoundsToTwo", 12.346, "12.35"},
                      DecimalCase{"HalfAwayFromZero", 2.125, "2.13"}, DecimalCase{"Zero", 0.0, ".0"},
                      DecimalCase{"Negative", -3.456, "-3.46"}, DecimalCase{"RoundsUpToWhole", 9.999, "10.0"}),
    [](const auto& c) { return std::string(c.param.name); });

struct DmsCase {
    const char* name;
    double degrees;
    bool latitude;
    const char* text;
};
// Test names and failure messages show the case by its name.
void PrintTo(const DmsCase& c, std::ostream* os) { *os << c.name; }


class PointerDmsTest : public ::testing::TestWithParam<DmsCase> {};

TEST_P(PointerDmsTest, DegreesMinutesSecondsAndHemisphere) {
    EXPECT_EQ(PointerDms(GetParam().degrees, GetParam().latitude), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Table, PointerDmsTest,
    ::testing::Values(DmsCase{"North", 40.75, true, "40\u00b0 45' 0.0\" N"},
                      DmsCase{"South", -33.5125, true, "33\u00b0 30' 45.0\" S"},
                      DmsCase{"WestIsPositive", 96.0125, false, "96\u00b0 00' 45.0\" W"},
                      DmsCase{"East", -2.35, false, "2\u00b0 21' 0.0\" E"},
                      DmsCase{"FractionalSeconds", 41.000125, true, "41\u00b0 00' 0.45\" N"},
                      DmsCase{"SecondsCarryIntoDegrees", 40.9999999, true, "41\u00b0 00' 0.0\" N"},
                      DmsCase{"ThreeDigitDegrees", 123.5, false, "123\u00b0 30' 0.0\" W"}),
    [](const auto& c) { return std::string(c.param.name); });

TEST(RangeAndBearingTextTest, DistanceMilesAndBearing) {
    EXPECT_EQ(RangeAndBearingText(100.0, 45.0), "100.0km (62.14miles)\n@ 45.0 Degree");
    EXPECT_EQ(RangeAndBearingText(0.5, 359.994), ".5km (.31miles)\n@ 359.99 Degree");
    EXPECT_EQ(kRangeAndBearingTitle, "Range and Bearing");
}

TEST(JobDisplayCaptionTest, NamesTheJob) { EXPECT_EQ(JobDisplayCaption("omaha"), "Job Display - omaha"); }

struct OffsetCase {
    const char* name;
    double x;  // km west
    double y;  // km north
};
// Test names and failure messages show the case by its name.
void PrintTo(const OffsetCase& c, std::ostream* os) { *os << c.name; }


class OffsetToLatLonTest : public ::testing::TestWithParam<OffsetCase> {};

// The point found lies at the offset's distance from the centre, on the
// side the offset says (x counts west, y north).
TEST_P(OffsetToLatLonTest, LandsAtTheOffset) {
    const LatLon centre{41.25, 96.0};
    const OffsetCase c = GetParam();
    const LatLon p = OffsetToLatLon(centre, c.x, c.y);
    double north = 0, east = 0;
    const double d = geodesy::FlatDistance(centre.lat, centre.lon, p.lat, p.lon, north, east);
    EXPECT_NEAR(d, std::hypot(c.x, c.y), 0.05);
    EXPECT_NEAR(north, c.y, 0.05);
    EXPECT_NEAR(east, -c.x, 0.05);
}

INSTANTIATE_TEST_SUITE_P(Table, OffsetToLatLonTest,
                         ::testing::Values(OffsetCase{"North", 0, 100}, OffsetCase{"West", 50, 0},
                                           OffsetCase{"East", -50, 0}, OffsetCase{"SouthWest", 30, -40},
                                           OffsetCase{"NorthEast", -120, 80}),
                         [](const auto& c) { return std::string(c.param.name); });

TEST(OffsetToLatLonTest, ZeroOrNonFiniteOffsetIsTheCentre) {
    const LatLon centre{41.25, 96.0};
    EXPECT_DOUBLE_EQ(OffsetToLatLon(centre, 0, 0).lat, 41.25);
    EXPECT_DOUBLE_EQ(OffsetToLatLon(centre, std::nan(""), 3).lon, 96.0);
}

}  // namespace
}  // namespace qarvel::app
