// BuildJobMap: the first-point decision, the 15-degree window, rounding
// against the limit, and the bytes of the cut file.

#include "mapdata/job_map.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <unistd.h>

#include "core/error_trap.h"
#include "support/temp_folder.h"

namespace qarvel::mapdata {
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

std::string ReadBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// --- the decision ------------------------------------------------------------

struct KeptCase {
    const char* name;
    double distance, limit;
    bool kept;
};

class PolylineKeptTest : public ::testing::TestWithParam<KeptCase> {};

TEST_P(PolylineKeptTest, RoundsHalfToEvenThenCompares) {
    EXPECT_EQ(PolylineKept(GetParam().distance, GetParam().limit), GetParam().kept);
}

INSTANTIATE_TEST_SUITE_P(Limits, PolylineKeptTest,
                         ::testing::Values(KeptCase{"Below199_4", 199.4, 200, true},
                                           KeptCase{"Half199_5RoundsUp", 199.5, 200, false},
                                           KeptCase{"Half200_5RoundsDown", 200.5, 200, false},
                                           KeptCase{"Exactly200", 200.0, 200, false},
                                           KeptCase{"Half198_5RoundsDown", 198.5, 199, true},
                                           KeptCase{"CountyLimit150_5", 150.4, 150.5, true},
                                           KeptCase{"CountyHalfRoundsDown", 150.5, 150.5, true},
                                           KeptCase{"CountyLimit151", 150.6, 150.5, false}),
                         [](const ::testing::TestParamInfo<KeptCase>& c) { return std::string(c.param.name); });

TEST(PolylineDistanceTest, FifteenDegreeWindow) {
    // 16 degrees of longitude at 70N is about 610 km, but it is not measured.
    EXPECT_EQ(PolylineDistanceKm(70.0, 100.0, 70.0f, 116.0f), kUnmeasuredKm);
    EXPECT_EQ(PolylineDistanceKm(70.0, 100.0, 86.0f, 100.0f), kUnmeasuredKm);
    // Exactly 15 degrees in both is still measured (about 2000 km).
    EXPECT_GT(PolylineDistanceKm(40.0, 100.0, 55.0f, 115.0f), 1900.0);
    EXPECT_NEAR(PolylineDistanceKm(70.0, 100.0, 70.0f, 114.0f), 535.0, 10.0);
}

// --- the cut file ------------------------------------------------------------

class BuildJobMapTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = qarvel::testing_support::FreshTestFolder();
    }
    void TearDown() override { fs::remove_all(m_dir); }

    fs::path WriteNational(const std::vector<float>& values) {
        const fs::path file = m_dir / "stmapH.dat";
        std::ofstream(file, std::ios::binary) << Bytes(values);
        return file;
    }

    fs::path m_dir;
    core::RecordingErrorSink m_errors;
    core::ScopedErrorSink m_scope{m_errors};
};

TEST_F(BuildJobMapTest, KeepsWholePolylinesByTheirFirstPoint) {
    // Target 70N 100W, limit 800 km.
    const fs::path national = WriteNational({
        0, 1, 70.0f, 114.0f, 70.5f, 110.0f, 70.1f, 100.0f,  // 535 km: kept whole
        0, 2, 70.0f, 116.0f, 70.0f, 100.1f,                 // 16 degrees away: dropped though it comes near
        0, 3, 69.0f, 99.0f,                                 // one point only: kept
        0, 0});
    const fs::path cut = m_dir / "job.mst";
    ASSERT_TRUE(BuildJobMap(national, cut, 70.0, 100.0, 800.0));
    EXPECT_EQ(ReadBytes(cut), Bytes({0, 1, 70.0f, 114.0f, 70.5f, 110.0f, 70.1f, 100.0f, 0, 3, 69.0f, 99.0f}));
}

TEST_F(BuildJobMapTest, FirstPointsOutsideTheWindowCountAs1000Km) {
    // Target 40N 100W, limit 1500: a first point exactly 15 degrees off is
    // measured (about 2000 km, dropped); one 16 degrees off counts 1000 (kept).
    const fs::path national = WriteNational({0, 5, 55.0f, 115.0f, 54.0f, 114.0f,  //
                                             0, 6, 40.0f, 116.0f, 41.0f, 116.0f, 0, 0});
    const fs::path cut = m_dir / "job.mco";
    ASSERT_TRUE(BuildJobMap(national, cut, 40.0, 100.0, 1500.0));
    EXPECT_EQ(ReadBytes(cut), Bytes({0, 6, 40.0f, 116.0f, 41.0f, 116.0f}));
}

TEST_F(BuildJobMapTest, SourceThatStopsEarlyEndsTheCut) {
    std::string bytes = Bytes({0, 1, 40.0f, 100.0f, 40.5f, 100.5f, 41.0f});
    bytes += "\x01\x02";  // half a float
    std::ofstream(m_dir / "short.dat", std::ios::binary) << bytes;
    ASSERT_TRUE(BuildJobMap(m_dir / "short.dat", m_dir / "job.mst", 40.0, 100.0, 300.0));
    EXPECT_EQ(ReadBytes(m_dir / "job.mst"), Bytes({0, 1, 40.0f, 100.0f, 40.5f, 100.5f}));
}

TEST_F(BuildJobMapTest, MissingSourceKeepsTheDestination) {
    std::ofstream(m_dir / "job.mst", std::ios::binary) << "previous";
    EXPECT_FALSE(BuildJobMap(m_dir / "absent.dat", m_dir / "job.mst", 40.0, 100.0, 300.0));
    EXPECT_EQ(ReadBytes(m_dir / "job.mst"), "previous");
    ASSERT_EQ(m_errors.Reports().size(), 1u);
    EXPECT_EQ(m_errors.Reports()[0].routine, ":BuildJobMap:");
    EXPECT_EQ(std::distance(fs::directory_iterator(m_dir), fs::directory_iterator()), 1);
}

}  // namespace
}  // namespace qarvel::mapdata
