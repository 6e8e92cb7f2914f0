// LoadMapArray: the row counts of the two boundary files (deliberately
// different), the rows themselves, and the cities and markers of a job.

#include "jobview/map_arrays.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

#include "core/error_trap.h"
#include "core/prompt.h"
#include "stationdb/database.h"
#include "stationdb/schema.h"
#include "support/temp_folder.h"

namespace qarvel::jobview {
namespace {

namespace fs = std::filesystem;

std::string Bytes(const std::vector<float>& values) {
    std::string out;
    for (const float v : values) {
        const auto bits = std::bit_cast<std::uint32_t>(v);
        for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<char>((bits >> shift) & 0xFFu));
    }
    return out;
}

struct RowsCase {
    const char* name;
    long long bytes, stateRows, countyRows;
};

class MapRowsTest : public ::testing::TestWithParam<RowsCase> {};

TEST_P(MapRowsTest, StateLosesFourCountyGainsNone) {
    EXPECT_EQ(StateMapRows(GetParam().bytes), GetParam().stateRows);
    EXPECT_EQ(CountyMapRows(GetParam().bytes), GetParam().countyRows);
}

// Rows are 0 to the count, so one more than the count.
INSTANTIATE_TEST_SUITE_P(Sizes, MapRowsTest,
                         ::testing::Values(RowsCase{"Empty", 0, 0, 1}, RowsCase{"OneHeader", 16, 0, 3},
                                           RowsCase{"HeaderAndOnePoint", 24, 0, 4},
                                           RowsCase{"HeaderAndTwoPoints", 32, 1, 5},
                                           RowsCase{"TwoAndAHalfPairsRoundDown", 20, 0, 3},
                                           RowsCase{"ThreeAndAHalfPairsRoundUp", 28, 1, 5},
                                           RowsCase{"TenPairs", 80, 7, 11}),
                         [](const ::testing::TestParamInfo<RowsCase>& c) { return std::string(c.param.name); });

class LoadMapArrayTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = qarvel::testing_support::FreshTestFolder();
        ASSERT_TRUE(stationdb::CreateJobDatabase(m_dir / "job.tdb"));
        stationdb::Database db(m_dir / "job.tdb", stationdb::OpenMode::ReadWrite);
        db.Exec("INSERT INTO places VALUES ('Lincoln', 250000, 585000, 1388000);"
                "INSERT INTO places VALUES ('Omaha', 480000, 590000, 1374000);"
                "INSERT INTO markers VALUES ('Tower', '24123', 586000, 1389000);");
    }
    void TearDown() override { fs::remove_all(m_dir); }

    fs::path m_dir;
    core::RecordingPrompt m_prompt;
    core::ScopedPrompt m_scope{m_prompt};
};

TEST_F(LoadMapArrayTest, RowsOfBothFilesAndTheJobsPlaces) {
    const std::string lines = Bytes({0, 1, 40.0f, 100.0f, 40.5f, 100.5f, 41.0f, 101.0f, 0, 2, 39.0f, 99.0f});
    std::ofstream(m_dir / "job.mst", std::ios::binary) << lines;
    std::ofstream(m_dir / "job.mco", std::ios::binary) << lines;
    MapArrays arrays;
    ASSERT_TRUE(LoadMapArray(m_dir / "job.mst", m_dir / "job.mco", m_dir / "job.tdb", &arrays));
    // 48 bytes: the state array skips the first polyline's head and keeps
    // rows 0 to 2; the county array has rows 0 to 6, the last past the end.
    EXPECT_TRUE(arrays.stateMapLoaded);
    EXPECT_EQ(arrays.stateMap, (std::vector<MapRow>{{40.5f, 100.5f}, {41.0f, 101.0f}, {0, 2}}));
    EXPECT_TRUE(arrays.countyMapLoaded);
    EXPECT_EQ(arrays.countyMap, (std::vector<MapRow>{{0, 1}, {40.0f, 100.0f}, {40.5f, 100.5f}, {41.0f, 101.0f},
                                                     {0, 2}, {39.0f, 99.0f}, {0, 0}}));
    EXPECT_EQ(arrays.places, (std::vector<MapPlace>{{"Lincoln", 585000, 1388000}, {"Omaha", 590000, 1374000}}));
    EXPECT_EQ(arrays.markers, (std::vector<MapPlace>{{"Tower", 586000, 1389000}}));
}

TEST_F(LoadMapArrayTest, MissingFilesLeaveTheFlagsClearedSilently) {
    MapArrays arrays;
    arrays.stateMapLoaded = arrays.countyMapLoaded = true;
    arrays.stateMap = {{1, 1}};
    ASSERT_TRUE(LoadMapArray(m_dir / "none.mst", m_dir / "none.mco", m_dir / "job.tdb", &arrays));
    EXPECT_FALSE(arrays.stateMapLoaded);
    EXPECT_FALSE(arrays.countyMapLoaded);
    EXPECT_TRUE(arrays.stateMap.empty());
    EXPECT_EQ(arrays.places.size(), 2u);
    EXPECT_TRUE(m_prompt.Texts().empty());
}

TEST_F(LoadMapArrayTest, UnreadableJobDatabaseLeavesTheArraysAlone) {
    core::RecordingErrorSink errors;
    core::ScopedErrorSink scope(errors);
    MapArrays arrays;
    arrays.markers = {{"kept", 1, 2}};
    EXPECT_FALSE(LoadMapArray({}, {}, m_dir / "absent.tdb", &arrays));
    EXPECT_EQ(arrays.markers.size(), 1u);
    ASSERT_EQ(errors.Reports().size(), 1u);
    EXPECT_EQ(errors.Reports()[0].routine, ":LoadMapArray:");
}

}  // namespace
}  // namespace qarvel::jobview
