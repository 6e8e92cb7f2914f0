// qarvel-cli job show and job map on a small job built here: the grid in its
// three formats, the filter options, bad arguments, and the map files.

#include "cli_runner.h"
#include "geodesy/geodesy.h"
#include "container/container.h"
#include "stationdb/database.h"
#include "stationdb/schema.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using namespace qarvel::stationdb;
using namespace qarvel::container;
using nlohmann::json;
using qarvel::testing::CliRun;
using qarvel::testing::ReadFileText;
using qarvel::testing::RunCli;
using qarvel::testing::TestFolder;

constexpr double kLat = 39.0, kLon = 98.0;  // target, longitude WEST

std::pair<int, int> StoredAt(double km, double bearing) {
    double lat = 0, lonEast = 0;
    qarvel::geodesy::GetPosn(kLat, -kLon, lat, lonEast, km, bearing);
    return {static_cast<int>(std::lround(lat * 14400)), static_cast<int>(std::lround(-lonEast * 14400))};
}

class StudyCommandTest : public ::testing::Test {
protected:
    void SetUp() override {
        fs::create_directories(m_root / "tmp");
        m_job = MakeJob();
    }
    CliRun Cli(std::vector<std::string> args) { return RunCli(args, m_root / "run", m_root / "tmp"); }
    bool ScratchIsEmpty() const { return fs::is_empty(m_root / "tmp"); }
    json ShowJson(std::vector<std::string> extra = {}) {
        std::vector<std::string> args = {"job", "show", m_job.string(), "--format", "json"};
        args.insert(args.end(), extra.begin(), extra.end());
        const CliRun run = Cli(args);
        EXPECT_EQ(run.status, 0) << run.err;
        return json::parse(run.out);
    }
    static std::vector<std::string> Calls(const json& out) {
        std::vector<std::string> calls;
        for (const json& row : out.at("rows")) calls.push_back(row.at("fac_callsign"));
        return calls;
    }

    // Target channel 220, class A. KCO: co-channel 100 km north (short);
    // KADJ: first adjacent 60 km east; KFAR: co-channel 400 km (clear);
    // KAM: an AM station 5 km away. A county line crosses the map.
    fs::path MakeJob() {
        const fs::path tdb = m_root / "Study.tdb";
        EXPECT_TRUE(CreateJobDatabase(tdb));
        {
            Database db(tdb, OpenMode::ReadWrite);
            db.Run("INSERT INTO information (CDate, Comments, Source, TChan, TLat, TLon, TClass, TIClass, OffSetN,"
                   " OffSetW, ScanRange) VALUES ('2024-05-02 00:00:00', 'No Comments', 'test', 220, ?1, ?2, 'A',"
                   " '', 0, 0, 300);",
                   kLat, kLon);
            db.Run("INSERT INTO party (party_id, party_name) VALUES (1, 'Plains, \"Radio\"');");
            auto fm = [&](int id, const char* call, int channel, double km, double bearing) {
                const auto at = StoredAt(km, bearing);
                db.Run("INSERT INTO fm_data (application_id, party_id, lat, lon, asd_service, comm_city, comm_state,"
                       " fac_callsign, fm_dom_status, station_channel, station_class, horiz_erp,"
                       " rule_73_215_req_ind) VALUES (?1, 1, ?2, ?3, 'FM', 'Salina', 'KS', ?4, 'LIC', ?5, 'A', 6,"
                       " 'N');",
                       id, at.first, at.second, call, channel);
            };
            fm(1, "KCO", 220, 100, 0);
            fm(2, "KADJ", 221, 60, 90);
            fm(3, "KFAR", 220, 400, 180);
            const auto am = StoredAt(5, 270);
            db.Run("INSERT INTO am_data (application_id, party_id, lat, lon, fac_callsign) VALUES (4, 1, ?1, ?2,"
                   " 'KAM');",
                   am.first, am.second);
        }
        const float county[] = {0.0f, 1.0f, 39.2f, 99.0f, 39.2f, 97.0f, 0.0f, 0.0f};
        std::ofstream(m_root / "Study.mco", std::ios::binary)
            .write(reinterpret_cast<const char*>(county), sizeof county);
        std::ofstream(m_root / "Study.mst", std::ios::binary);
        const fs::path fmj = m_root / "Study.fmj";
        EXPECT_TRUE(CompressFiles(fmj, {tdb, m_root / "Study.mco", m_root / "Study.mst"}));
        return fmj;
    }

    TestFolder m_folder{"qarvel_cli_study_"};
    const fs::path& m_root = m_folder.Path();
    fs::path m_job;
};

TEST_F(StudyCommandTest, JsonRowsKeyedByColumnNames) {
    const json out = ShowJson();
    ASSERT_EQ(Calls(out), (std::vector<std::string>{"KCO", "KADJ"}));  // by clearance, within 20 km
    const json& co = out["rows"][0];
    EXPECT_EQ(co.at("service"), "FM");
    EXPECT_EQ(co.at("channel_text"), "220 : 91.9 MHz");
    EXPECT_EQ(co.at("radius"), 115.0);
    EXPECT_EQ(co.at("adjacency"), "Primary");
    EXPECT_NEAR(co.at("target_clearance").get<double>(), -15.0, 0.1);
    EXPECT_EQ(co.at("party_name"), "Plains, \"Radio\"");
    EXPECT_TRUE(co.at("vert_erp").is_null());
    EXPECT_EQ(co.size(), 21u);
    EXPECT_TRUE(ScratchIsEmpty());
}

TEST_F(StudyCommandTest, FilterOptions) {
    EXPECT_EQ(Calls(ShowJson({"--clearance", "1000", "--am"})),
              (std::vector<std::string>{"KCO", "KADJ", "KAM", "KFAR"}));
    EXPECT_EQ(Calls(ShowJson({"--relations", "1st"})), (std::vector<std::string>{"KADJ"}));
    EXPECT_TRUE(Calls(ShowJson({"--status", "CP,AP"})).empty());
    EXPECT_EQ(Calls(ShowJson({"--clearance", "1000", "--sort", "Distance"})),
              (std::vector<std::string>{"KADJ", "KCO", "KFAR"}));
    const json moved = ShowJson({"--channel", "221"});  // KCO becomes first adjacent, KADJ co-channel
    for (const json& row : moved["rows"]) {
        EXPECT_EQ(row.at("adjacency"), row.at("fac_callsign") == "KCO" ? "1st Adj" : "Primary");
    }
}

TEST_F(StudyCommandTest, TextAndCsv) {
    CliRun run = Cli({"job", "show", m_job.string()});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out.rfind("Callsign  Latitude", 0), 0u);
    EXPECT_NE(run.out.find("220 : 91.9 MHz"), std::string::npos);
    EXPECT_NE(run.out.find("115.00"), std::string::npos);
    run = Cli({"job", "show", m_job.string(), "--format", "csv"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out.rfind("Callsign,Latitude,Longitude,City,State,Service,Channel,", 0), 0u);
    EXPECT_NE(run.out.find(",\"Plains, \"\"Radio\"\"\","), std::string::npos);
    EXPECT_NE(run.out.find(",000,"), std::string::npos);  // the bearing of the station due north
}

TEST_F(StudyCommandTest, BadArgumentsExitTwo) {
    const std::vector<std::vector<std::string>> cases = {
        {"job", "show", m_job.string(), "--channel", "301"},
        {"job", "show", m_job.string(), "--class", "Q"},
        {"job", "show", m_job.string(), "--sort", "Nowhere"},
        {"job", "show", m_job.string(), "--relations", "4th"},
        {"job", "show", m_job.string(), "--status", "XX"},
        {"job", "show", m_job.string(), "--format", "xml"},
        {"job", "show", (m_root / "missing.fmj").string()},
    };
    for (const auto& args : cases) {
        const CliRun run = Cli(args);
        EXPECT_EQ(run.status, 2) << args[3];
        EXPECT_FALSE(run.err.empty());
    }
    std::ofstream(m_root / "junk.fmj") << "not a job";
    EXPECT_EQ(Cli({"job", "show", (m_root / "junk.fmj").string()}).status, 2);
    EXPECT_TRUE(ScratchIsEmpty());
}

TEST_F(StudyCommandTest, MapAsPngAndPdf) {
    if (Cli({"job", "--help"}).out.find("\n  map ") == std::string::npos) {
        GTEST_SKIP() << "this build has no map renderer (core-only build)";
    }
    const fs::path png = m_root / "map.png";
    CliRun run = Cli({"job", "map", m_job.string(), "--out", png.string(), "--size", "200x150", "--fill"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, png.string() + ": 1:1,000,000, 3 stations, Range: 20 km : Clearance = FCC\n");
    EXPECT_EQ(ReadFileText(png).substr(1, 3), "PNG");
    const fs::path pdf = m_root / "map.pdf";
    run = Cli({"job", "map", m_job.string(), "--out", pdf.string(), "--scale", "2000000", "--color", "channel"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(ReadFileText(pdf).substr(0, 4), "%PDF");
    EXPECT_EQ(Cli({"job", "map", m_job.string(), "--out", (m_root / "map.gif").string()}).status, 2);
    EXPECT_EQ(Cli({"job", "map", m_job.string(), "--out", png.string(), "--size", "big"}).status, 2);
    EXPECT_TRUE(ScratchIsEmpty());
}

}  // namespace
