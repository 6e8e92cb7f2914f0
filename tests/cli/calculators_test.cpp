// qarvel-cli distance, position, dms and minsep, run as a user would.

#include "cli_runner.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace {

using qarvel::testing::CliRun;
using qarvel::testing::RunCli;
using qarvel::testing::TestFolder;

class CalculatorCommand : public ::testing::Test {
protected:
    CliRun Cli(const std::vector<std::string>& args) { return RunCli(args, m_folder.Path()); }
    nlohmann::json Json(const std::vector<std::string>& args) {
        CliRun run = Cli(args);
        EXPECT_EQ(run.status, 0) << run.err;
        return nlohmann::json::parse(run.out);
    }
    TestFolder m_folder{"qarvel_cli_calc_"};
};

// The regulator's worked distance: 40N 75W to 41N 76W is 139.70 km.
TEST_F(CalculatorCommand, DistancePrintsTheRegulatorsWorkedValue) {
    CliRun run = Cli({"distance", "40N", "75W", "41N", "76W"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("Distance:     139.70 km"), std::string::npos) << run.out;
}

TEST_F(CalculatorCommand, DistanceJsonCarriesLegsAndBearings) {
    nlohmann::json j = Json({"distance", "40:00:00", "75", "41N", "76W", "--json"});
    EXPECT_NEAR(j["distance_km"].get<double>(), 139.70, 0.005);
    EXPECT_GT(j["north_km"].get<double>(), 0.0);
    EXPECT_LT(j["east_km"].get<double>(), 0.0);  // 76W lies west of 75W
    double bearing = j["bearing_deg"].get<double>();
    EXPECT_GT(bearing, 270.0);
    EXPECT_NEAR(j["back_bearing_deg"].get<double>(), bearing - 180.0, 1e-3);
}

// East longitudes are negative in the west-positive convention, so a point
// at 2.35E lies east of one at 0.
TEST_F(CalculatorCommand, EastHemisphereLetterTurnsTheLongitude) {
    nlohmann::json j = Json({"distance", "48.85N", "0", "48.85N", "2.35E", "--json"});
    EXPECT_GT(j["east_km"].get<double>(), 170.0);
    EXPECT_NEAR(j["bearing_deg"].get<double>(), 90.0, 1e-3);
}

// 100 km at bearing 90 from 40N 75W lies east of 75W (a smaller west longitude).
TEST_F(CalculatorCommand, PositionIsGeographicallyTrue) {
    nlohmann::json j = Json({"position", "40N", "75W", "100", "90", "--json"});
    EXPECT_DOUBLE_EQ(j["lat"].get<double>(), 40.0);
    EXPECT_LT(j["lon"].get<double>(), 75.0);
    // and the distance command agrees with it
    nlohmann::json back = Json({"distance", "40N", "75W", "40N",
                                j["lon"].dump(), "--json"});
    EXPECT_NEAR(back["distance_km"].get<double>(), 100.0, 1e-6);
}

TEST_F(CalculatorCommand, DmsKeepsTheSignOnlyOnTheDegrees) {
    EXPECT_EQ(Cli({"dms", "77.5042"}).out, "+077:30:15\n");
    EXPECT_EQ(Cli({"dms", "--", "-118.25"}).out, "-118:15:00\n");
    EXPECT_EQ(Cli({"dms", "--", "-0.5"}).out, "+000:30:00\n");
}

struct MinSepCase {
    const char* name;
    std::vector<std::string> args;
    int separation;
};

class MinSepCommand : public CalculatorCommand, public ::testing::WithParamInterface<MinSepCase> {};

TEST_P(MinSepCommand, GivesTheTableValue) {
    std::vector<std::string> args = {"minsep", "--json"};
    args.insert(args.end(), GetParam().args.begin(), GetParam().args.end());
    EXPECT_EQ(Json(args)["separation_km"].get<int>(), GetParam().separation);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MinSepCommand,
    ::testing::Values(
        MinSepCase{"B_C1_second", {"--target-class", "B", "--other-class", "C1", "--relation", "2nd"}, 79},
        MinSepCase{"A_A_co", {"--target-class", "A", "--other-class", "A"}, 115},
        MinSepCase{"C_C_first", {"--target-class", "C", "--other-class", "C", "--relation", "1st"}, 241},
        MinSepCase{"A_A_if", {"--target-class", "a", "--other-class", "A", "--relation", "IF"}, 10},
        MinSepCase{"foreign_south_at_37_maps_A_to_AA", {"--target-class", "A", "--other-class", "A", "--border", "A", "--other-lat", "37"}, 111},
        MinSepCase{"foreign_north_above_37", {"--target-class", "A", "--other-class", "A", "--border", "A", "--other-lat", "37.001"}, 151},
        MinSepCase{"tv6_low_power_201", {"--target-class", "L1", "--service", "TV", "--target-channel", "201"}, 219},
        MinSepCase{"tv6_zone_1", {"--target-class", "C1", "--service", "TV", "--zone", "1"}, 33}),
    [](const ::testing::TestParamInfo<MinSepCase>& p) { return std::string(p.param.name); });

struct BadArgs {
    const char* name;
    std::vector<std::string> args;
    const char* named;  // the argument the message must name
};

class BadArguments : public CalculatorCommand, public ::testing::WithParamInterface<BadArgs> {};

TEST_P(BadArguments, GiveOneLineNamingTheArgumentAndExitTwo) {
    CliRun run = Cli(GetParam().args);
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(run.out.empty()) << run.out;
    EXPECT_NE(run.err.find(GetParam().named), std::string::npos) << run.err;
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BadArguments,
    ::testing::Values(
        BadArgs{"not_a_number", {"distance", "forty", "75", "41", "76"}, "LAT1"},
        BadArgs{"latitude_out_of_range", {"distance", "40", "75", "91", "76"}, "LAT2"},
        BadArgs{"wrong_hemisphere_letter", {"distance", "40", "75E", "41", "76N"}, "LON2"},
        BadArgs{"minutes_over_59", {"distance", "40:61:00", "75", "41", "76"}, "LAT1"},
        BadArgs{"missing_argument", {"distance", "40", "75", "41"}, "LON2"},
        BadArgs{"unknown_class", {"minsep", "--target-class", "Z", "--other-class", "A"}, "--target-class"},
        BadArgs{"unknown_relation", {"minsep", "--target-class", "A", "--other-class", "A", "--relation", "4th"}, "--relation"},
        BadArgs{"bad_zone", {"minsep", "--target-class", "A", "--service", "TV", "--zone", "2"}, "--zone"},
        BadArgs{"negative_distance", {"position", "40", "75", "-5", "90"}, "DISTANCE_KM"}),
    [](const ::testing::TestParamInfo<BadArgs>& p) { return std::string(p.param.name); });

}  // namespace
