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

struct FieldCase {
    const char* name;
    const char* in;
    const char* out;
};
// Test names and failure messages show the case by its name.
void PrintTo(const FieldCase& c, std::ostream* os) { *os << c.name; }


class CsvFieldTest : public ::testing::TestWithParam<FieldCase> {};

TEST_P(CsvFieldTest, QuotesOnlyWhatNeedsIt) { EXPECT_EQ(CsvField(GetParam().in), GetParam().out); }

INSTANTIATE_TEST_SUITE_P(Table, CsvFieldTest,
                         ::testing::Values(FieldCase{"Plain", "KCOA", "KCOA"}, FieldCase{"Empty", "", ""},
                                           FieldCase{"Comma", "Omaha, NE", "\"Omaha, NE\""},
                                           FieldCase{"Quote", "6\" mast", "\"6\"\" mast\""},
                                           FieldCase{"LineBreak", "a\nb", "\"a\nb\""}),
                         [](const auto& c) { return std::string(c.param.name); });

jobview::GridTable SampleTable() {
    jobview::GridTable t;
    t.columns = {"fac_callsign", "target_distance", "target_bearing", "comm_city"};
    t.captions = {"Callsign", "Distance", "Bearing", "City"};
    t.rows = {{std::string("KCOA"), 60.0, std::int64_t{7}, std::string("Omaha, NE")},
              {std::string("KFAB"), 150.126, std::int64_t{90}, std::monostate{}}};
    return t;
}

TEST(GridCsvTest, CaptionsThenRowsInGridFormats) {
    EXPECT_EQ(GridCsv(SampleTable()),
              "Callsign,Distance,Bearing,City\r\n"
              "KCOA,60.00,007,\"Omaha, NE\"\r\n"
              "KFAB,150.13,090,\r\n");
}

TEST(ExportGridCsvTest, WritesTheFileOrKeepsThePreviousOne) {
    testing::AppWorld world;
    const fs::path file = world.Root() / "grid.csv";
    ASSERT_TRUE(ExportGridCsv(SampleTable(), file));
    std::ifstream in(file, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), GridCsv(SampleTable()));
    EXPECT_FALSE(fs::exists(world.Root() / "grid.csv.part"));
    EXPECT_FALSE(ExportGridCsv(SampleTable(), world.Root() / "missing" / "grid.csv"));
    ASSERT_EQ(world.Errors().Reports().size(), 1u);
    EXPECT_EQ(world.Errors().Reports()[0].routine, ":ExportCsv:");
}

}  // namespace
}  // namespace qarvel::app
