// Boundary files: the exact bytes of the float format, write/read round
// trips, the faults a reader must refuse, and the splitting of long rings
// for the job's first-point cut.

#include "mapdata/boundary_file.h"

#include "core/error_trap.h"
#include "geodesy/geodesy.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <ostream>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>

namespace qarvel::mapdata {
namespace {

namespace fs = std::filesystem;

std::string Bytes(std::initializer_list<int> values) {
    std::string out;
    for (const int v : values) out.push_back(static_cast<char>(v));
    return out;
}

std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

class BoundaryFileTest : public ::testing::Test {
  protected:
    void SetUp() override {
        m_root = qarvel::testing_support::FreshTestFolder();
    }
    void TearDown() override { fs::remove_all(m_root); }
    fs::path m_root;
};

const std::vector<BoundaryLine> kTwoLines{
    {6.0f, {{40.5f, 75.25f}, {41.0f, 76.0f}}},
    {6069.0f,
     {{36.75f, 121.5f}, {-14.25f, -170.75f}, {36.5f, 121.0f}}},  // south and east of the origin too
};

TEST(BoundaryFileFormat, ExactBytesOfATinyFile) {
    // 0.0, marker 6.0, (40.5, 75.25), (41.0, 76.0), end mark 0.0 0.0; little-endian IEEE singles.
    const std::string expected =
        Bytes({0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xc0, 0x40, 0x00, 0x00, 0x22,
               0x42, 0x00, 0x80, 0x96, 0x42, 0x00, 0x00, 0x24, 0x42, 0x00, 0x00,
               0x98, 0x42, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00});
    EXPECT_EQ(EncodeBoundaryFile({kTwoLines[0]}), expected);
    // A job's cut file stops after its last point.
    EXPECT_EQ(EncodeBoundaryFile({kTwoLines[0]}, BoundaryEnd::None), expected.substr(0, 24));
    EXPECT_EQ(EncodeBoundaryFile({}), Bytes({0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(BoundaryFileFormat, DecodesWithAndWithoutTheEndMark) {
    EXPECT_EQ(DecodeBoundaryFile(EncodeBoundaryFile(kTwoLines)), kTwoLines);
    EXPECT_EQ(DecodeBoundaryFile(EncodeBoundaryFile(kTwoLines, BoundaryEnd::None)), kTwoLines);
    EXPECT_TRUE(DecodeBoundaryFile("").empty());
    // A lone separator at the end (a cut file whose last line was dropped).
    EXPECT_EQ(
        DecodeBoundaryFile(EncodeBoundaryFile(kTwoLines, BoundaryEnd::None) + Bytes({0, 0, 0, 0})),
        kTwoLines);
}

TEST_F(BoundaryFileTest, WriteReadRoundTripThroughAFile) {
    const fs::path file = m_root / "stmapH.dat";
    ASSERT_TRUE(WriteBoundaryFile(file, kTwoLines));
    EXPECT_EQ(fs::file_size(file), 4u * (2 * 2 + 4 + 2 * 3 + 2));
    std::vector<BoundaryLine> read;
    ASSERT_TRUE(ReadBoundaryFile(file, &read));
    EXPECT_EQ(read, kTwoLines);
    // Nothing but the file itself is left in the folder.
    EXPECT_EQ(std::distance(fs::directory_iterator(m_root), fs::directory_iterator()), 1);
}

TEST_F(BoundaryFileTest, AFailedWriteKeepsThePreviousFile) {
    const fs::path file = m_root / "comapH.dat";
    ASSERT_TRUE(WriteBoundaryFile(file, kTwoLines));
    const std::string before = ReadAll(file);
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scope(sink);
    const std::vector<BoundaryLine> bad{
        {1.0f, {{0.0f, 75.0f}}}};  // latitude 0.0 would read as a separator
    EXPECT_FALSE(WriteBoundaryFile(file, bad));
    EXPECT_EQ(ReadAll(file), before);
    EXPECT_EQ(std::distance(fs::directory_iterator(m_root), fs::directory_iterator()), 1);
    ASSERT_EQ(sink.Reports().size(), 1u);
    EXPECT_EQ(sink.Reports()[0].routine, ":WriteBoundaryFile:");
    EXPECT_NE(sink.Reports()[0].description.find("latitude 0.0"), std::string::npos);
}

TEST_F(BoundaryFileTest, ReadingAMissingOrDamagedFileFails) {
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scope(sink);
    std::vector<BoundaryLine> lines = kTwoLines;
    EXPECT_FALSE(ReadBoundaryFile(m_root / "missing.dat", &lines));
    std::ofstream(m_root / "odd.dat", std::ios::binary) << "abcde";
    EXPECT_FALSE(ReadBoundaryFile(m_root / "odd.dat", &lines));
    EXPECT_EQ(lines, kTwoLines);  // untouched
    ASSERT_EQ(sink.Reports().size(), 2u);
    EXPECT_NE(sink.Reports()[1].description.find("odd.dat"), std::string::npos);
}

struct BadLines {
    const char* name;
    std::vector<BoundaryLine> lines;
};
// Names the case in test listings instead of dumping its bytes.
void PrintTo(const BadLines& c, std::ostream* os) {
    *os << c.name;
}

class BoundaryEncodeRefuses : public ::testing::TestWithParam<BadLines> {};

TEST_P(BoundaryEncodeRefuses, ALineItCannotWrite) {
    EXPECT_THROW(EncodeBoundaryFile(GetParam().lines), BoundaryFileError);
}

const float kNaN = std::numeric_limits<float>::quiet_NaN();

INSTANTIATE_TEST_SUITE_P(
    Cases, BoundaryEncodeRefuses,
    ::testing::Values(BadLines{"NoPoints", {{1.0f, {}}}},
                      BadLines{"ZeroMarker", {{0.0f, {{40.0f, 75.0f}}}}},
                      BadLines{"NegativeZeroMarker", {{-0.0f, {{40.0f, 75.0f}}}}},
                      BadLines{"LatitudeZero", {{1.0f, {{40.0f, 75.0f}, {0.0f, 75.0f}}}}},
                      BadLines{"NaNLongitude", {{1.0f, {{40.0f, kNaN}}}}},
                      BadLines{"InfiniteMarker", {{INFINITY, {{40.0f, 75.0f}}}}}),
    [](const auto& tc) { return std::string(tc.param.name); });

struct BadBytes {
    const char* name;
    std::string bytes;
    const char* problem;
};
// Names the case in test listings instead of dumping its bytes.
void PrintTo(const BadBytes& c, std::ostream* os) {
    *os << c.name;
}

class BoundaryDecodeRefuses : public ::testing::TestWithParam<BadBytes> {};

TEST_P(BoundaryDecodeRefuses, NamingWhatIsWrong) {
    try {
        DecodeBoundaryFile(GetParam().bytes);
        FAIL() << "accepted";
    } catch (const BoundaryFileError& e) {
        EXPECT_NE(std::string(e.what()).find(GetParam().problem), std::string::npos) << e.what();
    }
}

const std::string kOneLine =
    EncodeBoundaryFile({{6.0f, {{40.5f, 75.25f}, {41.0f, 76.0f}}}}, BoundaryEnd::None);

INSTANTIATE_TEST_SUITE_P(
    Cases, BoundaryDecodeRefuses,
    ::testing::Values(
        BadBytes{"PartialFloat", kOneLine + "\x01", "not a whole number of floats"},
        BadBytes{"NoLeadingSeparator", kOneLine.substr(4), "does not start with a separator"},
        BadBytes{"MarkerWithoutPoint", kOneLine.substr(0, 8), "first latitude"},
        BadBytes{"FirstLatitudeZero", kOneLine.substr(0, 8) + Bytes({0, 0, 0, 0, 0, 0, 0x80, 0x3f}),
                 "no first point"},
        BadBytes{"LatitudeWithoutLongitude", kOneLine.substr(0, 20), "a longitude"},
        BadBytes{"NotFinite",
                 kOneLine.substr(0, 16) + Bytes({0, 0, 0xc0, 0x7f}) + kOneLine.substr(20),
                 "not finite"},
        BadBytes{"DataAfterEndMark", kOneLine + Bytes({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0x3f}),
                 "follow the end mark"}),
    [](const auto& tc) { return std::string(tc.param.name); });

// A line along the meridian 100 W, one point every 0.1 degree (about 11 km).
TopoGeometry Meridian(const std::string& id, int points) {
    TopoGeometry g;
    g.id = id;
    TopoLine line;
    for (int i = 0; i < points; ++i) line.push_back({-100.0, 40.0 + 0.1 * i});
    g.lines.push_back(line);
    return g;
}

double Reach(const BoundaryPoint& a, const BoundaryPoint& b) {
    double n = 0, e = 0;
    return geodesy::FlatDistance(a.lat, a.lon, b.lat, b.lon, n, e);
}

TEST(BoundaryLines, LongRingsAreSplitIntoPiecesOfBoundedReach) {
    const auto lines = BoundaryLinesFromGeometries({Meridian("06069", 30)}, 25.0);
    ASSERT_GT(lines.size(), 5u);
    std::vector<BoundaryPoint> joined;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const BoundaryLine& piece = lines[i];
        EXPECT_EQ(piece.marker, 6069.0f);
        ASSERT_GE(piece.points.size(), 2u);
        for (const BoundaryPoint& p : piece.points) EXPECT_LE(Reach(piece.points.front(), p), 25.0);
        if (i > 0) {
            EXPECT_EQ(piece.points.front(), lines[i - 1].points.back())
                << "pieces share their joint";
        }
        joined.insert(joined.end(), piece.points.begin() + (i > 0 ? 1 : 0), piece.points.end());
    }
    ASSERT_EQ(joined.size(), 30u);
    EXPECT_EQ(joined.front(), (BoundaryPoint{40.0f, 100.0f}));  // longitude turned positive WEST
}

TEST(BoundaryLines, MarkersComeFromNumericIdsOrTheOrdinal) {
    const auto lines =
        BoundaryLinesFromGeometries({Meridian("06", 2), Meridian("Guam", 2), Meridian("", 2),
                                     Meridian("0", 2), Meridian("72", 1)});
    ASSERT_EQ(lines.size(), 4u);  // the one-point line is skipped
    EXPECT_EQ(lines[0].marker, 6.0f);
    EXPECT_EQ(lines[1].marker, 2.0f);
    EXPECT_EQ(lines[2].marker, 3.0f);
    EXPECT_EQ(lines[3].marker, 4.0f);  // 0 may not be a marker
}

TEST_F(BoundaryFileTest, NationalFilesFromTheRealPackage) {
    const fs::path atlas = fs::path(QARVEL_SOURCE_DIR) / "node_modules" / "us-atlas";
    if (!fs::exists(atlas / "counties-10m.json")) {
        GTEST_SKIP() << "node_modules/us-atlas is absent; run npm ci in the source folder";
    }
    BoundaryImportSummary summary;
    ASSERT_TRUE(ImportBoundaries(atlas, m_root / "data", &summary));
    std::vector<BoundaryLine> states, counties;
    ASSERT_TRUE(ReadBoundaryFile(m_root / "data" / kStateMapFile, &states));
    ASSERT_TRUE(ReadBoundaryFile(m_root / "data" / kCountyMapFile, &counties));
    EXPECT_EQ(states.size(), summary.stateLines);
    EXPECT_EQ(counties.size(), summary.countyLines);
    EXPECT_GT(counties.size(), states.size());
    // Colorado (FIPS 08) lies between 37 and 41 N and 102 and 109.1 W.
    std::size_t colorado = 0;
    for (const BoundaryLine& line : states) {
        if (line.marker != 8.0f) continue;
        for (const BoundaryPoint& p : line.points) {
            ++colorado;
            EXPECT_TRUE(p.lat > 36.9f && p.lat < 41.1f && p.lon > 101.9f && p.lon < 109.1f)
                << p.lat << " " << p.lon;
        }
    }
    EXPECT_GT(colorado, 10u);
}

}  // namespace
}  // namespace qarvel::mapdata
