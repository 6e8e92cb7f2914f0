// The map's scale slider table, Rescale, the symbol size, and the grid
// spacing and scale bar tables at their boundaries.

#include "jobview/map_model.h"

#include <gtest/gtest.h>

#include <cmath>

#include "core/error_trap.h"

namespace qarvel::jobview {
namespace {

TEST(ScaleSlider, TableEndsAndDefault) {
    EXPECT_EQ(ScaleForSliderPosition(1), 50000);
    EXPECT_EQ(ScaleForSliderPosition(2), 62500);
    EXPECT_EQ(ScaleForSliderPosition(10), 1000000);
    EXPECT_EQ(ScaleForSliderPosition(19), 4500000);
    EXPECT_EQ(ScaleForSliderPosition(20), 5000000);
    EXPECT_EQ(ScaleForSliderPosition(21), 0);
    EXPECT_EQ(ScaleForSliderPosition(0), 0);
}

TEST(ScaleSlider, PanelZeroMeansOneToAMillionAtPositionTen) {
    EXPECT_EQ(EffectiveScale(0), 1000000);
    EXPECT_EQ(SliderPositionForScale(0), 10);
    EXPECT_EQ(SliderPositionForScale(62500), 2);
    EXPECT_EQ(SliderPositionForScale(123456), 0);
    EXPECT_EQ(EffectiveScale(123456), 123456);
}

TEST(ScaleSlider, StatusBarText) {
    EXPECT_EQ(FormatScale(1000000), "1,000,000");
    EXPECT_EQ(FormatScale(62500), "62,500");
    EXPECT_EQ(FormatScale(500), "500");
}

TEST(Rescale, ElevenThousandThreeHundredFortyTwipsSpanTwoHundredKm) {
    const MapFrame f = Rescale(1000000, 11340, 5670);
    EXPECT_DOUBLE_EQ(f.widthKm, 200.0);
    EXPECT_DOUBLE_EQ(f.heightKm, 100.0);
    EXPECT_DOUBLE_EQ(f.halfDiagonalKm, std::hypot(100.0, 50.0));
    EXPECT_NEAR(f.symbolSizeKm, 5.367, 0.0005);
    EXPECT_EQ(Rescale(0, 11340, 5670).widthKm, 200.0);  // a zero panel is 1:1,000,000
    EXPECT_DOUBLE_EQ(Rescale(50000, 11340, 0).widthKm, 10.0);
}

TEST(Rescale, PixelsAtNinetySixDotsPerInch) {
    EXPECT_DOUBLE_EQ(PixelsToTwips(96, 96), 1440.0);
    EXPECT_DOUBLE_EQ(Rescale(1000000, PixelsToTwips(756, 96), 0).widthKm, 200.0);  // 756 px = 11,340 twips
}

TEST(Rescale, UnusableSizeIsReported) {
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scope(sink);
    EXPECT_EQ(Rescale(1000000, -1, 100).widthKm, 0.0);
    EXPECT_EQ(Rescale(1000000, std::nan(""), 100).widthKm, 0.0);
    ASSERT_EQ(sink.Reports().size(), 2u);
    EXPECT_EQ(sink.Reports()[0].routine, ":Rescale:");
}

TEST(SymbolSize, FollowsTheSquareRootOfTheScale) {
    EXPECT_DOUBLE_EQ(SymbolSizeKm(5000000), 12.0);
    EXPECT_DOUBLE_EQ(SymbolSizeKm(0), 1.0);
}

struct TableCase {
    const char* name;
    double input;
    double expected;
};

class LatLonSpacingTest : public ::testing::TestWithParam<TableCase> {};
TEST_P(LatLonSpacingTest, Spacing) { EXPECT_DOUBLE_EQ(LatLonSpacing(GetParam().input), GetParam().expected); }
INSTANTIATE_TEST_SUITE_P(
    Boundaries, LatLonSpacingTest,
    ::testing::Values(TableCase{"Above4", 4.0001, 2.0}, TableCase{"Exactly4", 4.0, 1.0},
                      TableCase{"Above2", 2.0001, 1.0}, TableCase{"Exactly2", 2.0, 0.5},
                      TableCase{"Exactly1", 1.0, 0.25}, TableCase{"Above0_5", 0.5001, 0.25},
                      TableCase{"Exactly0_5", 0.5, 7.5 / 60}, TableCase{"Above0_25", 0.2501, 7.5 / 60},
                      TableCase{"Exactly0_25", 0.25, 2.5 / 60}, TableCase{"Tiny", 0.01, 2.5 / 60}),
    [](const auto& tc) { return std::string(tc.param.name); });

class ScaleBarTest : public ::testing::TestWithParam<TableCase> {};
TEST_P(ScaleBarTest, Length) { EXPECT_EQ(ScaleBarLengthKm(GetParam().input), GetParam().expected); }
INSTANTIATE_TEST_SUITE_P(
    Boundaries, ScaleBarTest,
    ::testing::Values(TableCase{"Above500", 500.001, 400}, TableCase{"Exactly500", 500, 200},
                      TableCase{"Above240", 240.5, 200}, TableCase{"Exactly240", 240, 100},
                      TableCase{"Exactly120", 120, 40}, TableCase{"Exactly60", 60, 20},
                      TableCase{"Exactly24", 24, 8}, TableCase{"Exactly12", 12, 4},
                      TableCase{"Above6", 6.01, 4}, TableCase{"Exactly6", 6, 2}, TableCase{"Zero", 0, 2}),
    [](const auto& tc) { return std::string(tc.param.name); });

TEST(RangeText, ClearanceSuffix) {
    EXPECT_EQ(RangeText(20, false), "Range: 20 km : Clearance = FCC");
    EXPECT_EQ(RangeText(-5, true), "Range: -5 km : Clearance = -0.5km");
}

}  // namespace
}  // namespace qarvel::jobview
