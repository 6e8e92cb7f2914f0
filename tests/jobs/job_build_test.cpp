// MakeNewJob against real SQLite masters and local databases in a temporary
// folder: the input checks, the search box and its clamps, the strict range
// test, local records winning, local-only stations, owners, cities, markers.

#include "jobs/job_build.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <filesystem>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <unistd.h>

#include "core/error_trap.h"
#include "core/prompt.h"
#include "geodesy/geodesy.h"
#include "stationdb/database.h"
#include "stationdb/master_writer.h"
#include "stationdb/schema.h"
#include "support/temp_folder.h"

namespace qarvel::jobs {
namespace {

namespace fs = std::filesystem;

constexpr double kLat = 40.0;   // scan centre used by most cases
constexpr double kLon = 100.0;  // degrees WEST

int Stored(double degrees) { return static_cast<int>(degrees * 14400.0); }

// A point distanceKm from (lat, lonWest) on a bearing, in stored units.
std::pair<int, int> StoredPointAt(double lat, double lonWest, double distanceKm, double bearing) {
    double lat2 = 0, lonEast = 0;
    geodesy::GetPosn(lat, -lonWest, lat2, lonEast, distanceKm, bearing);
    return {Stored(lat2), Stored(-lonEast)};
}

stationdb::FmRecord Fm(int id, std::pair<int, int> at, const std::string& call, int party = stationdb::kNoOwnerPartyId) {
    stationdb::FmRecord r;
    r.application_id = id;
    r.party_id = party;
    r.lat = at.first;
    r.lon = at.second;
    r.fac_callsign = call;
    r.station_channel = 250;
    r.station_class = "A";
    return r;
}

class JobBuildTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = qarvel::testing_support::FreshTestFolder();
    }
    void TearDown() override { fs::remove_all(m_dir); }

    // Writes the master database with the given rows.
    fs::path WriteMaster(const std::vector<stationdb::FmRecord>& fm, const std::vector<stationdb::PartyRecord>& parties = {},
                         const std::vector<stationdb::PlaceRecord>& places = {}, const std::vector<stationdb::AmRecord>& am = {},
                         const std::vector<stationdb::Tv6Record>& tv6 = {}) {
        const fs::path fdb = m_dir / "master.fdb";
        stationdb::MasterWriter writer;
        stationdb::MasterHeader header;
        header.source = "job build test";
        EXPECT_TRUE(writer.Open(fdb, header, stationdb::MasterOutput::Unpacked));
        for (const auto& r : fm) EXPECT_EQ(writer.AddFm(r), stationdb::AddResult::Added);
        for (const auto& r : am) EXPECT_EQ(writer.AddAm(r), stationdb::AddResult::Added);
        for (const auto& r : tv6) EXPECT_EQ(writer.AddTv6(r), stationdb::AddResult::Added);
        for (const auto& r : parties) EXPECT_EQ(writer.AddParty(r), stationdb::AddResult::Added);
        for (const auto& r : places) EXPECT_TRUE(writer.AddPlace(r));
        EXPECT_TRUE(writer.Finish());
        return fdb;
    }

    // A local database (job layout) holding FM rows and markers.
    fs::path WriteLocal(const std::vector<stationdb::FmRecord>& fm, const std::vector<stationdb::PlaceRecord>& markers = {}) {
        const fs::path local = m_dir / "local.fdb";
        EXPECT_TRUE(stationdb::CreateJobDatabase(local));
        stationdb::Database db(local, stationdb::OpenMode::ReadWrite);
        for (const auto& r : fm) {
            db.Run("INSERT INTO fm_data (application_id, party_id, lat, lon, fac_callsign) VALUES (?1, ?2, ?3, ?4, ?5)",
                   r.application_id, r.party_id, r.lat, r.lon, r.fac_callsign);
        }
        for (const auto& m : markers) {
            db.Run("INSERT INTO markers (name, jdate, lat, lon) VALUES (?1, '24123', ?2, ?3)", m.name, m.lat, m.lon);
        }
        return local;
    }

    NewJobInputs Inputs(const fs::path& master, std::int16_t range = 100) {
        NewJobInputs in;
        in.scanRange = range;
        in.lat = kLat;
        in.lon = kLon;
        in.channel = "250";
        in.stationClass = "A";
        in.intlClass = "A";
        in.source = "job build test";
        in.jobPath = m_dir / "job.tdb";
        in.masterPath = master;
        return in;
    }

    // Application ids (or names) in a table of the built job.
    std::set<std::string> Column(const std::string& sql) {
        std::set<std::string> values;
        stationdb::Database db(m_dir / "job.tdb", stationdb::OpenMode::ReadOnly);
        for (stationdb::Statement s = db.Prepare(sql); s.Step();) values.insert(s.GetText(0));
        return values;
    }

    fs::path m_dir;
    core::RecordingErrorSink m_errors;
    core::ScopedErrorSink m_errorScope{m_errors};
    core::RecordingPrompt m_prompt;
    core::ScopedPrompt m_promptScope{m_prompt};
};

// --- input checks ------------------------------------------------------------

struct CheckCase {
    const char* name;
    std::string channel;
    double lat, lon;
    const char* message;  // nullptr: accepted
};

class JobInputCheckTest : public JobBuildTest, public ::testing::WithParamInterface<CheckCase> {};

TEST_P(JobInputCheckTest, AcceptsOrRefusesBeforeCreating) {
    const CheckCase& c = GetParam();
    NewJobInputs in = Inputs(WriteMaster({}));
    in.channel = c.channel;
    in.lat = c.lat;
    in.lon = c.lon;
    const bool built = MakeNewJob(in);
    EXPECT_EQ(built, c.message == nullptr);
    EXPECT_EQ(fs::exists(in.jobPath), built);
    if (c.message != nullptr) {
        EXPECT_EQ(m_prompt.Texts(), std::vector<std::string>{c.message});
    } else {
        EXPECT_TRUE(m_prompt.Texts().empty());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Limits, JobInputCheckTest,
    ::testing::Values(CheckCase{"Channel199", "199", kLat, kLon, "Invalid channel"},
                      CheckCase{"Channel200", "200", kLat, kLon, nullptr},
                      CheckCase{"Channel300", "300", kLat, kLon, nullptr},
                      CheckCase{"Channel301", "301", kLat, kLon, "Invalid channel"},
                      CheckCase{"ChannelText", "2x0", kLat, kLon, "Invalid channel"},
                      CheckCase{"ChannelHalfRoundsToEven", "300.5", kLat, kLon, nullptr},
                      CheckCase{"Lat76", "250", 76.0, kLon, nullptr},
                      CheckCase{"Lat76Plus", "250", 76.0001, kLon, "Invalid location"},
                      CheckCase{"LatMinus76", "250", -76.0, kLon, nullptr},
                      CheckCase{"Origin", "250", 0.0, 0.0, "Invalid location"},
                      CheckCase{"ZeroOne", "250", 0.0, 1.0, nullptr},
                      CheckCase{"NotANumber", "250", std::nan(""), kLon, "Invalid location"}),
    [](const ::testing::TestParamInfo<CheckCase>& c) { return std::string(c.param.name); });

// --- the search box ----------------------------------------------------------

TEST(SearchBoxTest, ClampsNorthAt75AndSouthAt10) {
    const SearchBox north = ComputeSearchBox(300, 74.0, 100.0);
    EXPECT_EQ(north.north, 75 * 14400);
    EXPECT_LT(north.south, 74 * 14400 - 14400 * 2);  // 300 km is over two degrees
    const SearchBox south = ComputeSearchBox(150, 11.0, 100.0);
    EXPECT_EQ(south.south, 10 * 14400);
    EXPECT_GT(south.north, 11 * 14400);
}

TEST(SearchBoxTest, QueryTextPutsTheLargerLatitudeFirst) {
    const SearchBox box = ComputeSearchBox(100, kLat, kLon);
    EXPECT_GT(box.north, box.south);
    EXPECT_GT(box.l1, box.l2);  // l1 is the west side: longitude counts west
    // About 0.9 degree of latitude and 1.17 of longitude at 40N.
    EXPECT_NEAR((box.north - box.south) / 2 / 14400.0, 100.0 / 111.03, 0.01);
    EXPECT_NEAR((box.l1 - box.l2) / 2 / 14400.0, 100.0 / 85.39, 0.01);
    EXPECT_EQ(std::string(kFmBoxSelect) + BoxCondition(SearchBox{588968, 563031, 1456845, 1423155}),
              "SELECT lat, lon, application_id, app_arn FROM fm_data WHERE "
              "(lat BETWEEN 588968 AND 563031) AND (lon BETWEEN 1456845 AND 1423155);");
}

TEST_F(JobBuildTest, ClampedBoxLeavesOutStationsBeyondTheClamp) {
    // 9.9N is 122 km from 11N, within range, but south of the 10-degree clamp;
    // 75.2N is 133 km from 74N, north of the 75-degree clamp.
    const fs::path master = WriteMaster({Fm(1, {Stored(9.9), Stored(kLon)}, "KSOU"),
                                         Fm(2, {Stored(11.2), Stored(kLon)}, "KIN1"),
                                         Fm(3, {Stored(75.2), Stored(kLon)}, "KNOR"),
                                         Fm(4, {Stored(74.5), Stored(kLon)}, "KIN2")});
    NewJobInputs in = Inputs(master, 150);
    in.lat = 11.0;
    ASSERT_TRUE(MakeNewJob(in));
    EXPECT_EQ(Column("SELECT fac_callsign FROM fm_data"), (std::set<std::string>{"KIN1"}));
    fs::remove(in.jobPath);
    in.lat = 74.0;
    in.scanRange = 300;
    ASSERT_TRUE(MakeNewJob(in));
    EXPECT_EQ(Column("SELECT fac_callsign FROM fm_data"), (std::set<std::string>{"KIN2"}));
}

// --- the range test ----------------------------------------------------------

// The scan-centre latitude (longitude kLon) at which the single-precision
// FlatDistance to the stored point first comes down to `wanted` km: moving
// the centre north towards a station north-east of it shortens the distance.
double CentreLatForDistance(std::pair<int, int> station, float wanted) {
    auto distance = [&](double lat) {
        double n = 0, e = 0;
        return static_cast<float>(
            geodesy::FlatDistance(lat, kLon, station.first / 14400.0, station.second / 14400.0, n, e));
    };
    double far = kLat - 0.5, near = kLat + 0.5;  // distance(far) > wanted >= distance(near)
    for (int i = 0; i < 200; ++i) {
        const double mid = (far + near) / 2;
        (distance(mid) > wanted ? far : near) = mid;
    }
    EXPECT_EQ(distance(near), wanted);
    return near;
}

TEST_F(JobBuildTest, StationExactlyAtTheRangeIsLeftOut) {
    const auto station = StoredPointAt(kLat, kLon, 100.0, 45.0);
    const fs::path master = WriteMaster({Fm(7, station, "KEDG")});
    NewJobInputs in = Inputs(master, 100);
    in.lat = CentreLatForDistance(station, 100.0f);
    ASSERT_TRUE(MakeNewJob(in));
    EXPECT_TRUE(Column("SELECT application_id FROM fm_data").empty());

    fs::remove(in.jobPath);
    in.lat = CentreLatForDistance(station, std::nextafter(100.0f, 0.0f));
    ASSERT_TRUE(MakeNewJob(in));
    EXPECT_EQ(Column("SELECT application_id FROM fm_data"), (std::set<std::string>{"7"}));
}

TEST_F(JobBuildTest, CitiesWithin350KmWhateverTheRange) {
    const auto near = StoredPointAt(kLat, kLon, 349.0, 200.0);
    const auto far = StoredPointAt(kLat, kLon, 351.0, 20.0);
    const fs::path master = WriteMaster({Fm(1, near, "KFAR")}, {},
                                        {{"Nearby", 5000, near.first, near.second},
                                         {"Faraway", 9000, far.first, far.second}});
    ASSERT_TRUE(MakeNewJob(Inputs(master, 100)));
    EXPECT_EQ(Column("SELECT name FROM places"), (std::set<std::string>{"Nearby"}));
    EXPECT_EQ(Column("SELECT pop FROM places"), (std::set<std::string>{"5000"}));
    EXPECT_TRUE(Column("SELECT application_id FROM fm_data").empty());
}

// --- the local database ------------------------------------------------------

TEST_F(JobBuildTest, LocalRecordWinsAndLocalOnlyStationsComeIn) {
    const auto a = StoredPointAt(kLat, kLon, 30.0, 90.0);
    const auto b = StoredPointAt(kLat, kLon, 60.0, 180.0);
    const auto outside = StoredPointAt(kLat, kLon, 150.0, 0.0);
    const fs::path master = WriteMaster({Fm(1, a, "KMAS"), Fm(2, b, "KTWO")});
    NewJobInputs in = Inputs(master);
    in.localPath = WriteLocal({Fm(1, a, "KLOC"), Fm(3, b, "KONLY"), Fm(4, outside, "KOUT")},
                              {{"Tower", {}, a.first, a.second}, {"Far marker", {}, outside.first + 14400 * 3, outside.second}});
    ASSERT_TRUE(MakeNewJob(in));
    EXPECT_EQ(Column("SELECT fac_callsign FROM fm_data"), (std::set<std::string>{"KLOC", "KTWO", "KONLY"}));
    EXPECT_EQ(Column("SELECT COUNT(*) FROM fm_data WHERE application_id = 1"), (std::set<std::string>{"1"}));
    EXPECT_EQ(Column("SELECT name FROM markers"), (std::set<std::string>{"Tower"}));

    // Without gDBoptUseLocal the local database is not consulted at all.
    fs::remove(in.jobPath);
    in.useLocal = false;
    ASSERT_TRUE(MakeNewJob(in));
    EXPECT_EQ(Column("SELECT fac_callsign FROM fm_data"), (std::set<std::string>{"KMAS", "KTWO"}));
    EXPECT_TRUE(Column("SELECT name FROM markers").empty());
}

TEST_F(JobBuildTest, OwnersCitiesTv6AmAndHeader) {
    const auto a = StoredPointAt(kLat, kLon, 20.0, 10.0);
    stationdb::PartyRecord owner;
    owner.party_id = 42;
    owner.party_name = "Prairie Radio";
    stationdb::PartyRecord stranger;
    stranger.party_id = 43;
    stranger.party_name = "Not in the job";
    stationdb::AmRecord am;
    am.application_id = 500;
    am.party_id = 43;
    am.lat = Stored(kLat + 5);
    am.lon = a.second;
    stationdb::Tv6Record tv;
    tv.application_id = 600;
    tv.party_id = 42;
    tv.lat = a.first;
    tv.lon = a.second;
    const fs::path master = WriteMaster({Fm(1, a, "KOWN", 42)}, {owner, stranger}, {}, {am}, {tv});
    NewJobInputs in = Inputs(master);
    std::vector<std::string> captions;
    ASSERT_TRUE(MakeNewJob(in, {[&](const std::string& c) { captions.push_back(c); }, nullptr, true}));
    EXPECT_EQ(Column("SELECT party_name FROM party"), (std::set<std::string>{"Prairie Radio"}));
    EXPECT_EQ(Column("SELECT application_id FROM tv6_data"), (std::set<std::string>{"600"}));
    EXPECT_TRUE(Column("SELECT application_id FROM am_data").empty());
    EXPECT_EQ(Column("SELECT Comments || '|' || TChan || '|' || TClass || '|' || ScanRange FROM information"),
              (std::set<std::string>{"No Comments|250|A|100"}));
    EXPECT_EQ(captions, (std::vector<std::string>{"Scanning FM Stations", "Scanning TV6 Stations",
                                                  "Scanning AM Stations", "Scanning Parties", "Scanning Cities"}));
    stationdb::Database job(in.jobPath, stationdb::OpenMode::ReadOnly);
    EXPECT_EQ(job.TableNames().size(), 7u);  // nothing of the owners' link stays behind
}

TEST_F(JobBuildTest, MasterWithOtherColumnsStillCopiesByName) {
    // An old master: no vert_erp, asd_service or facility_id, an extra column.
    const fs::path master = m_dir / "old.fdb";
    {
        stationdb::Database db(master, stationdb::OpenMode::Create);
        db.Exec(std::string(stationdb::kCreateAmData) + std::string(stationdb::kCreateTv6Data) + std::string(stationdb::kCreateParty) +
                std::string(stationdb::kCreatePlaces) +
                "CREATE TABLE fm_data (application_id int PRIMARY KEY, extra_note text, lat int, lon int,"
                " app_arn char(12), fac_callsign char(13), station_channel int);");
        const auto at = StoredPointAt(kLat, kLon, 10.0, 300.0);
        db.Run("INSERT INTO fm_data VALUES (9, 'note', ?1, ?2, 'ARN9', 'KOLD', 251)", at.first, at.second);
    }
    ASSERT_TRUE(MakeNewJob(Inputs(master)));
    EXPECT_EQ(Column("SELECT fac_callsign || station_channel || COALESCE(vert_erp, 'null') FROM fm_data"),
              (std::set<std::string>{"KOLD251null"}));
}

// --- failures and the reference variant --------------------------------------

TEST_F(JobBuildTest, CancelAndFailureLeaveNoJob) {
    const fs::path master = WriteMaster({Fm(1, StoredPointAt(kLat, kLon, 5, 0), "KONE")});
    NewJobInputs in = Inputs(master);
    std::atomic<bool> cancel{true};
    EXPECT_FALSE(MakeNewJob(in, {{}, &cancel, true}));
    EXPECT_FALSE(fs::exists(in.jobPath));
    EXPECT_TRUE(m_errors.Reports().empty());

    in.masterPath = m_dir / "missing.fdb";
    EXPECT_FALSE(MakeNewJob(in));
    EXPECT_FALSE(fs::exists(in.jobPath));
    ASSERT_FALSE(m_errors.Reports().empty());
    EXPECT_EQ(m_errors.Reports().back().routine, ":MakeNewJob:");
}

TEST_F(JobBuildTest, BoxPreselectionSelectsWhatTheFullScanSelects) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> km(0.0, 400.0), bearing(0.0, 360.0);
    std::vector<stationdb::FmRecord> stations;
    for (int id = 1; id <= 400; ++id) stations.push_back(Fm(id, StoredPointAt(kLat, kLon, km(random), bearing(random)), "K"));
    NewJobInputs in = Inputs(WriteMaster(stations), 200);
    ASSERT_TRUE(MakeNewJob(in));
    const auto boxed = Column("SELECT application_id FROM fm_data");
    fs::remove(in.jobPath);
    ASSERT_TRUE(MakeNewJob(in, {{}, nullptr, false}));
    EXPECT_EQ(Column("SELECT application_id FROM fm_data"), boxed);
    EXPECT_GT(boxed.size(), 150u);  // about half lie within 200 of the 400 km
    EXPECT_LT(boxed.size(), 250u);
}

}  // namespace
}  // namespace qarvel::jobs
