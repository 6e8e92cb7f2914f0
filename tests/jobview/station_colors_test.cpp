// The clearance colour key at its thresholds, the relation colours and the
// printed substitute for yellow.

#include "jobview/station_colors.h"

#include <gtest/gtest.h>

namespace qarvel::jobview {
namespace {

struct ClearanceCase {
    const char* name;
    double clearanceKm;
    const char* rule73215;
    const char* category;
    std::int32_t color;
};

class ClearanceColor : public ::testing::TestWithParam<ClearanceCase> {};

TEST_P(ClearanceColor, CategoryAndColor) {
    const ClearanceCase& c = GetParam();
    const ClearanceCategory category = CategoryOfClearance(c.clearanceKm, c.rule73215);
    EXPECT_EQ(CategoryName(category), c.category);
    EXPECT_EQ(ColorByClearance(c.clearanceKm, c.rule73215), c.color);
}

INSTANTIATE_TEST_SUITE_P(
    Thresholds, ClearanceColor,
    ::testing::Values(ClearanceCase{"Exactly10IsClear", 10.0, "N", "Clear", Rgb(0, 255, 0)},
                      ClearanceCase{"JustBelow10IsClose", 9.999, "N", "Close", Rgb(255, 255, 0)},
                      ClearanceCase{"Exactly0IsClose", 0.0, "N", "Close", Rgb(255, 255, 0)},
                      ClearanceCase{"MinusAHundredthIsShort", -0.01, "N", "Short", Rgb(255, 0, 0)},
                      ClearanceCase{"ShortByContourIsMagenta", -0.01, "Y", "Short/Directional", Rgb(255, 0, 255)},
                      ClearanceCase{"ContourFlagOnlyMattersWhenShort", 0.0, "Y", "Close", Rgb(255, 255, 0)},
                      ClearanceCase{"ClearWithContourFlag", 25.0, "Y", "Clear", Rgb(0, 255, 0)},
                      ClearanceCase{"LowerCaseFlagIsNotY", -5.0, "y", "Short", Rgb(255, 0, 0)},
                      ClearanceCase{"FarShort", -200.0, "", "Short", Rgb(255, 0, 0)}),
    [](const auto& tc) { return std::string(tc.param.name); });

TEST(RelationColor, EachRelationHasItsColour) {
    EXPECT_EQ(ColorByRelation(0), Rgb(255, 0, 0));
    EXPECT_EQ(ColorByRelation(1), Rgb(255, 255, 0));
    EXPECT_EQ(ColorByRelation(2), Rgb(0, 255, 0));
    EXPECT_EQ(ColorByRelation(3), Rgb(0, 255, 255));
    EXPECT_EQ(ColorByRelation(4), Rgb(0, 0, 255));
    EXPECT_EQ(ColorByRelation(-1), Rgb(255, 0, 255));  // no FM relation: the channel 6 colour
}

TEST(WindowsColor, ComponentsRoundTrip) {
    EXPECT_EQ(Rgb(255, 0, 0), 255);
    EXPECT_EQ(Rgb(0, 0, 255), 16711680);
    EXPECT_EQ(Rgb(125, 100, 0), 125 + 256 * 100);
    EXPECT_EQ(RedOf(Rgb(1, 2, 3)), 1);
    EXPECT_EQ(GreenOf(Rgb(1, 2, 3)), 2);
    EXPECT_EQ(BlueOf(Rgb(1, 2, 3)), 3);
}

TEST(PrintedColor, OnlyYellowIsReplacedAndOnlyOnPaper) {
    EXPECT_EQ(DrawnColor(kColorYellow, true), Rgb(125, 100, 0));
    EXPECT_EQ(DrawnColor(kColorYellow, false), kColorYellow);
    EXPECT_EQ(DrawnColor(kColorShort, true), kColorShort);
}

}  // namespace
}  // namespace qarvel::jobview
