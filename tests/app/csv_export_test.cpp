// The grid as comma-separated values.

#include "app/output/csv_export.h"

#include <gtest/gtest.h>

#include <ostream>

#include <fstream>
#include <iterator>

#include "app_fixture.h"

namespace qarvel::app {
namespace {

namespace fs = std::filesystem;

jobview::GridTable SampleTable() {
    jobview::GridTable t;
    t.columns = {"fac_callsign", "target_distance", "target_bearing", "comm_city"};
    t.captions = {"Callsign", "Distance", "Bearing", "City"};
    t.rows = {{std::string("KCOA"), 60.0, std::int64_t{7}, std::string("Omaha, NE")},
              {std::string("KFAB"), 150.126, std::int64_t{90}, std::monostate{}}};
    return t;
}

TEST(GridCsvTest, CaptionsThenRowsInGridFormats) {
    EXPECT_EQ(jobview::GridCsv(SampleTable()),
              "Callsign,Distance,Bearing,City\r\n"
              "KCOA,60.00,007,\"Omaha, NE\"\r\n"
              "KFAB,150.13,090,\r\n");
}

TEST(ExportGridCsvTest, WritesTheFileOrKeepsThePreviousOne) {
    testing::AppWorld world;
    const fs::path file = world.Root() / "grid.csv";
    ASSERT_TRUE(ExportGridCsv(SampleTable(), file));
    std::ifstream in(file, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), jobview::GridCsv(SampleTable()));
    EXPECT_FALSE(fs::exists(world.Root() / "grid.csv.part"));
    EXPECT_FALSE(ExportGridCsv(SampleTable(), world.Root() / "missing" / "grid.csv"));
    ASSERT_EQ(world.Errors().Reports().size(), 1u);
    EXPECT_EQ(world.Errors().Reports()[0].routine, ":ExportCsv:");
}

}  // namespace
}  // namespace qarvel::app
