// Degree-minute-second text, and the small helpers kept beside the mapping
// routines (Min, Max, clsLatLon).

#include <cmath>
#include <cstdint>
#include <limits>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "core/error_trap.h"
#include "geodesy/geodesy.h"

namespace qarvel::geodesy {
namespace {

struct DmsCase {
    const char* name;
    double degrees;
    const char* text;
};
// Test names in CTest show the case name, not the bytes.
void PrintTo(const DmsCase& c, std::ostream* os) {
    *os << c.name;
}

class DegToDMSTable : public ::testing::TestWithParam<DmsCase> {};

TEST_P(DegToDMSTable, FormatsDegreesMinutesSeconds) {
    EXPECT_EQ(DegToDMS(GetParam().degrees), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Values, DegToDMSTable,
    ::testing::Values(DmsCase{"Latitude", 77.5042, "+077:30:15"},
                      DmsCase{"WestNegative", -118.25, "-118:15:00"},
                      DmsCase{"Zero", 0.0, "+000:00:00"},
                      // Seconds round to 60 and carry into minutes, then degrees.
                      DmsCase{"CarryIntoDegrees", 59.99999, "+060:00:00"},
                      DmsCase{"CarryIntoMinutes", 10.49999, "+010:30:00"},
                      // The sign rides on the degrees only.
                      DmsCase{"SmallNegativeLosesSign", -0.5, "+000:30:00"},
                      DmsCase{"NegativeCarry", -59.99999, "-060:00:00"},
                      // Minutes are truncated, not rounded: 0.99 degree is 59.4 minutes.
                      DmsCase{"MinutesTruncated", 1.99, "+001:59:24"},
                      // Exact binary fractions giving x.5 seconds: halves go to even.
                      DmsCase{"HalfSecondDown", 10.03125, "+010:01:52"},   // 1' 52.5"
                      DmsCase{"HalfSecondUp", 10.09375, "+010:05:38"},     // 5' 37.5"
                      DmsCase{"HalfSecondDown2", 10.15625, "+010:09:22"},  // 9' 22.5"
                      DmsCase{"ThreeDigitDegrees", 179.999, "+179:59:56"},
                      DmsCase{"WidestDegrees", 32767.5, "+32767:30:00"}),
    [](const auto& tp) { return std::string(tp.param.name); });

TEST(DegToDMS, FaultsGiveEmptyText) {
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scope(sink);
    EXPECT_EQ(DegToDMS(std::numeric_limits<double>::quiet_NaN()), "");
    EXPECT_EQ(DegToDMS(32768.0), "");       // beyond 16-bit degrees
    EXPECT_EQ(DegToDMS(-32767.99999), "");  // the carry overflows
    ASSERT_EQ(sink.Reports().size(), 3u);
    for (const auto& report : sink.Reports()) {
        EXPECT_EQ(report.module, "modMapping");
        EXPECT_EQ(report.routine, ":DegToDMS:");
    }
}

TEST(MinMax, PickTheSmallerAndTheLarger) {
    EXPECT_EQ(Min(3, 5), 3);
    EXPECT_EQ(Max(3, 5), 5);
    EXPECT_EQ(Min(-2.5, -7.25), -7.25);
    EXPECT_EQ(Max(-2.5, -7.25), -2.5);
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Min(inf, 4.0), 4.0);
    EXPECT_EQ(Max(-inf, 4.0), 4.0);
}

TEST(MinMax, NaNOperandIsTrappedUnderModCircle) {
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scope(sink);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(Min(nan, 1.0), 0.0);
    EXPECT_EQ(Max(2.0f, std::numeric_limits<float>::quiet_NaN()), 0.0f);
    ASSERT_EQ(sink.Reports().size(), 2u);
    EXPECT_EQ(sink.Reports()[0].module, "modCircle");
    EXPECT_EQ(sink.Reports()[0].routine, ":Min:");
    EXPECT_EQ(sink.Reports()[1].routine, ":Max:");
}

TEST(ClsLatLon, HoldsPositionAndAnyOneValue) {
    clsLatLon point;
    EXPECT_TRUE(std::holds_alternative<std::monostate>(point.Value()));
    point.SetLat(40.75);
    point.SetLon(73.98);
    point.SetValue(std::string("WXYZ"));
    EXPECT_EQ(point.Lat(), 40.75);
    EXPECT_EQ(point.Lon(), 73.98);
    EXPECT_EQ(std::get<std::string>(point.Value()), "WXYZ");
    point.SetValue(std::int64_t{42});
    EXPECT_EQ(std::get<std::int64_t>(point.Value()), 42);
    EXPECT_EQ(point, clsLatLon(40.75, 73.98, std::int64_t{42}));
}

}  // namespace
}  // namespace qarvel::geodesy
