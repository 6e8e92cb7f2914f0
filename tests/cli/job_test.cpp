// qarvel-cli job new and job info, run as a user would run them, against a
// small packed master database and national boundary files made here.

#include "cli_runner.h"
#include "stationdb/master_writer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using namespace qarvel::stationdb;
using qarvel::testing::CliRun;
using qarvel::testing::ReadFileText;
using qarvel::testing::RunCli;
using qarvel::testing::TestFolder;

std::string FloatBytes(const std::vector<float>& values) {
    std::string out;
    for (const float v : values) {
        const auto bits = std::bit_cast<std::uint32_t>(v);
        for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<char>((bits >> shift) & 0xFFu));
    }
    return out;
}

class JobCommandTest : public ::testing::Test {
protected:
    void SetUp() override {
        fs::create_directories(m_root / "tmp");
        fs::create_directories(m_root / "maps");
        MasterWriter writer;
        MasterHeader header;
        header.source = "Job command test master";
        ASSERT_TRUE(writer.Open(m_root / "Master.fmd", header, MasterOutput::Packed));
        for (int id = 1; id <= 6; ++id) {
            FmRecord r;
            r.application_id = id;
            r.party_id = 100 + id;
            r.lat = static_cast<int>((40.5 + 0.25 * id) * 14400);  // 28 to 167 km north of 40.5N
            r.lon = static_cast<int>(74.0 * 14400);
            r.fac_callsign = "WJOB" + std::to_string(id);
            r.station_channel = 248 + id;
            r.station_class = "B";
            EXPECT_EQ(writer.AddFm(r), AddResult::Added);
        }
        ASSERT_TRUE(writer.Finish());
        std::ofstream(m_root / "maps" / "stmapH.dat", std::ios::binary)
            << FloatBytes({0, 36, 40.6f, 74.1f, 41.0f, 74.5f, 0, 6, 34.0f, 118.0f, 0, 0});
        std::ofstream(m_root / "maps" / "comapH.dat", std::ios::binary)
            << FloatBytes({0, 36061, 40.7f, 74.0f, 40.8f, 73.9f, 0, 0});
    }

    CliRun Cli(const std::vector<std::string>& args) { return RunCli(args, m_root / "run", m_root / "tmp"); }

    std::vector<std::string> NewJob(const std::string& out, std::vector<std::string> extra = {}) {
        std::vector<std::string> args = {"job",      "new",     "--db",    (m_root / "Master.fmd").string(),
                                         "--maps",   (m_root / "maps").string(), "--lat", "40.5",
                                         "--lon",    "74W",     "--channel", "250", "--class", "B",
                                         "--range",  "100",     "--out",   out};
        args.insert(args.end(), extra.begin(), extra.end());
        return args;
    }

    TestFolder m_folder{"qarvel_cli_job_"};
    const fs::path& m_root = m_folder.Path();
};

TEST_F(JobCommandTest, NewJobPassesTheCheckAndShowsItsContents) {
    const fs::path out = m_root / "Study.fmj";
    const CliRun made = Cli(NewJob(out.string(), {"--comments", "Tower site 2"}));
    ASSERT_EQ(made.status, 0) << made.err;
    // 28, 56 and 83 km are within 100 km; 111 km and beyond are not.
    EXPECT_EQ(made.out, out.string() + ": 3 FM, 0 AM, 0 TV6 stations, 3 owners, 0 cities, 0 markers\n");
    EXPECT_NE(made.err.find("Scanning Parties\n"), std::string::npos);
    EXPECT_NE(made.err.find("Building County Maps\n"), std::string::npos);
    EXPECT_TRUE(fs::is_empty(m_root / "tmp"));

    const CliRun check = Cli({"db", "check", out.string()});
    EXPECT_EQ(check.status, 0) << check.err;

    const CliRun info = Cli({"job", "info", out.string(), "--json"});
    ASSERT_EQ(info.status, 0) << info.err;
    const auto json = nlohmann::json::parse(info.out);
    EXPECT_EQ(json["header"]["Comments"], "Tower site 2");
    EXPECT_EQ(json["header"]["Source"], "Job command test master");
    EXPECT_EQ(json["header"]["TChan"], 250);
    EXPECT_EQ(json["header"]["TLon"], 74.0);
    EXPECT_EQ(json["tables"]["fm_data"], 3);
    EXPECT_EQ(json["tables"]["party"], 3);

    const CliRun text = Cli({"job", "info", out.string()});
    EXPECT_NE(text.out.find("TClass: B\n"), std::string::npos);
    EXPECT_NE(text.out.find("fm_data: 3 rows\n"), std::string::npos);
}

TEST_F(JobCommandTest, ExistingJobIsReplacedOnlyWithForce) {
    const fs::path out = m_root / "Study.fmj";
    std::ofstream(out) << "someone's job";
    const CliRun refused = Cli(NewJob(out.string()));
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(ReadFileText(out), "someone's job");
    const CliRun forced = Cli(NewJob(out.string(), {"--force"}));
    ASSERT_EQ(forced.status, 0) << forced.err;
    EXPECT_NE(forced.err.find("Replace " + out.string() + "?"), std::string::npos);
    EXPECT_EQ(Cli({"db", "check", out.string()}).status, 0);
}

struct BadCase {
    const char* name;
    std::vector<std::string> replace;  // option, value
    const char* message;
};

class JobCommandBadInputTest : public JobCommandTest, public ::testing::WithParamInterface<BadCase> {};

TEST_P(JobCommandBadInputTest, ExitsWithStatus2AndWritesNothing) {
    std::vector<std::string> args = NewJob((m_root / "Bad.fmj").string());
    const auto& r = GetParam().replace;
    const auto at = std::find(args.begin(), args.end(), r[0]);
    ASSERT_NE(at, args.end());
    *(at + 1) = r[1] == "MISSING" ? (m_root / "missing.fmd").string() : r[1];
    const CliRun run = Cli(args);
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find(GetParam().message), std::string::npos) << run.err;
    EXPECT_FALSE(fs::exists(m_root / "Bad.fmj"));
    EXPECT_TRUE(fs::is_empty(m_root / "tmp"));
}

INSTANTIATE_TEST_SUITE_P(
    Arguments, JobCommandBadInputTest,
    ::testing::Values(BadCase{"Channel301", {"--channel", "301"}, "Invalid channel"},
                      BadCase{"Channel199", {"--channel", "199"}, "Invalid channel"},
                      BadCase{"ChannelFraction", {"--channel", "250.9"}, "not a whole channel"},
                      BadCase{"LatitudeBeyond76", {"--lat", "76.0001"}, "Invalid location"},
                      BadCase{"LatitudeSouthOf76S", {"--lat", "76.5S"}, "Invalid location"},
                      BadCase{"UnknownClass", {"--class", "Q"}, "unknown class"},
                      BadCase{"RangeNotWhole", {"--range", "10.5"}, "--range"},
                      BadCase{"NoMaster", {"--db", "MISSING"}, "--db"}),
    [](const ::testing::TestParamInfo<BadCase>& c) { return std::string(c.param.name); });

TEST_F(JobCommandTest, DamagedMasterOrJobIsRefused) {
    std::ofstream(m_root / "Broken.fmd") << "not packed";
    std::vector<std::string> args = NewJob((m_root / "Out.fmj").string());
    args[3] = (m_root / "Broken.fmd").string();
    const CliRun run = Cli(args);
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find("Invalid or Damaged Master Database!"), std::string::npos) << run.err;
    EXPECT_TRUE(fs::is_empty(m_root / "tmp"));

    const CliRun info = Cli({"job", "info", (m_root / "Broken.fmd").string()});
    EXPECT_EQ(info.status, 2);
    EXPECT_NE(info.err.find("Invalid or Damaged Jobfile!"), std::string::npos);
}

TEST_F(JobCommandTest, BrokenBoundaryFileIsRefusedWithStatus3) {
    std::ofstream(m_root / "maps" / "comapH.dat", std::ios::binary) << "not floats";
    const CliRun run = Cli(NewJob((m_root / "Out.fmj").string()));
    EXPECT_EQ(run.status, 3);
    EXPECT_NE(run.err.find("comapH.dat: not a boundary file"), std::string::npos) << run.err;
    EXPECT_FALSE(fs::exists(m_root / "Out.fmj"));
}

TEST_F(JobCommandTest, MarkersWithin350KmGoIntoTheJob) {
    const std::string local = (m_root / "LocalData.fmd").string();
    for (const auto& [lat, label] : {std::pair{"41.5", "Near"}, std::pair{"44.0", "Far"}}) {
        const CliRun add = Cli({"marker", "add", "--db", local, "--lat", lat, "--lon", "74W", "--label", label});
        ASSERT_EQ(add.status, 0) << add.err;
    }
    const CliRun list = Cli({"marker", "list", "--db", local, "--format", "json"});
    const auto markers = nlohmann::json::parse(list.out)["markers"];
    ASSERT_EQ(markers.size(), 2u);
    EXPECT_EQ(markers[1]["label"], "Far");
    EXPECT_EQ(markers[1]["lon"], 74.0);
    // 111 km and 389 km from the target at 40.5N: only the first is copied.
    const CliRun made = Cli(NewJob((m_root / "Study.fmj").string(), {"--local", local}));
    ASSERT_EQ(made.status, 0) << made.err;
    EXPECT_NE(made.out.find(" 1 markers\n"), std::string::npos) << made.out;
    EXPECT_EQ(Cli({"marker", "delete", "--db", local, "9"}).status, 2);
}

TEST_F(JobCommandTest, StationSetChecksEveryValueBeforeWriting) {
    const std::string master = (m_root / "Master.fmd").string();
    const std::string before = ReadFileText(master);
    for (const char* bad : {"station_channel=301", "station_class=Q", "nosuch=1", "lat_deg=91"}) {
        const CliRun run = Cli({"station", "set", "--db", master, "3", "fac_callsign=WNEW", bad});
        EXPECT_EQ(run.status, 2) << bad;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    }
    EXPECT_EQ(Cli({"station", "set", "--db", master, "99", "fac_callsign=WNEW"}).status, 2);
    EXPECT_EQ(ReadFileText(master), before);
    ASSERT_EQ(Cli({"station", "set", "--db", master, "3", "fac_callsign=WNEW", "lat_deg=40:30:00N"}).status, 0);
    const CliRun get = Cli({"station", "get", "--db", master, "3", "--format", "json"});
    const auto record = nlohmann::json::parse(get.out);
    EXPECT_EQ(record["fac_callsign"], "WNEW");
    EXPECT_EQ(record["lat"], 583200);
    EXPECT_EQ(record["station_channel"], 251);
}

}  // namespace
