// qarvel-cli autoscan and autoscan-grid, run as a user would run them.

#include "cli_runner.h"
#include "stationdb/database.h"
#include "stationdb/master_package.h"
#include "stationdb/schema.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using namespace qarvel::stationdb;
using qarvel::testing::CliRun;
using qarvel::testing::ReadFileText;
using qarvel::testing::RunCli;
using qarvel::testing::TestFolder;

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

class AutoScanCommandTest : public ::testing::Test {
  protected:
    void SetUp() override {
        fs::create_directories(m_root / "tmp");
        if (Cli({"autoscan", "--help"}).status != 0) {
            GTEST_SKIP()
                << "qarvel-cli has no autoscan command (RegisterAutoScanCommands not called)";
        }
        // Class A stations 5 km north of 40 N 80 W on every channel but 250,
        // and one far away on 250.
        m_fdb = m_root / "master.fdb";
        ASSERT_TRUE(CreateMasterDatabase(m_fdb, MasterHeader{"26001", "0", "1.9", "test"}));
        Database db(m_fdb, OpenMode::ReadWrite);
        Statement insert = db.Prepare(
            "INSERT INTO fm_data (application_id, fac_callsign, station_channel, lat, lon, "
            "station_class,"
            " fm_dom_status, asd_service) VALUES (?1, 'KTST', ?2, ?3, ?4, 'A', 'LIC', 'FM')");
        for (int ch = 200; ch <= 300; ++ch) {
            const double lat = ch == 250 ? 45.0 : 40.045;
            insert.BindAll(ch, ch, static_cast<int>(lat * 14400), 80 * 14400);
            insert.Run();
        }
        db.Close();
        m_fmd = m_root / "master.fmd";
        ASSERT_TRUE(PackMasterDatabase(m_fdb, m_fmd));
    }

    CliRun Cli(const std::vector<std::string>& args) {
        return RunCli(args, m_root / "run", m_root / "tmp");
    }

    TestFolder m_folder{"qarvel_cli_autoscan_"};
    const fs::path& m_root = m_folder.Path();
    fs::path m_fdb, m_fmd;
};

TEST_F(AutoScanCommandTest, TextListsEveryChannelThenTheStatus) {
    const CliRun run = Cli({"autoscan", "--db", m_fmd.string(), "--lat", "40", "--lon", "80",
                            "--class", "A", "--relations", "primary"});
    ASSERT_EQ(run.status, 0) << run.err;
    const auto lines = Lines(run.out);
    ASSERT_EQ(lines.size(), 102u);
    EXPECT_EQ(lines[0], "250\t350.00");
    EXPECT_EQ(lines[1].substr(3, 1), "\t");
    EXPECT_EQ(lines[101], "Scanning complete: 1 opening found.");
    EXPECT_TRUE(fs::is_empty(m_root / "tmp")) << "scratch folder left behind";
}

TEST_F(AutoScanCommandTest, JsonAndCsvAndBothEnginesAgree) {
    const std::vector<std::string> base = {"autoscan", "--db",  m_fdb.string(), "--lat", "40.01",
                                           "--lon",    "80.02", "--class",      "C3",    "--status",
                                           "LI"};
    auto with = [&](std::vector<std::string> extra) {
        std::vector<std::string> args = base;
        args.insert(args.end(), extra.begin(), extra.end());
        return Cli(args);
    };
    const CliRun fast = with({"--format", "json"});
    const CliRun reference = with({"--format", "json", "--engine", "reference"});
    ASSERT_EQ(fast.status, 0) << fast.err;
    EXPECT_EQ(fast.out, reference.out);
    const auto json = nlohmann::json::parse(fast.out);
    ASSERT_EQ(json["channels"].size(), 101u);
    EXPECT_EQ(json["openings"], 0);
    EXPECT_EQ(json["status"], "Scanning complete: 0 openings found.");
    EXPECT_TRUE(json["channels"][0]["clearance"].is_number());

    // The csv rows are the text lines with a comma for the tab.
    const CliRun csv = with({"--format", "csv"});
    const CliRun text = with({});
    ASSERT_EQ(csv.status, 0) << csv.err;
    const auto rows = Lines(csv.out);
    const auto lines = Lines(text.out);
    ASSERT_EQ(rows.size(), 102u);
    ASSERT_EQ(lines.size(), 102u);
    EXPECT_EQ(rows[0], "channel,clearance");
    for (std::size_t i = 1; i < rows.size(); ++i) {
        std::string line = lines[i - 1];
        line[3] = ',';
        EXPECT_EQ(rows[i], line);
    }
    EXPECT_EQ(json["channels"][0]["channel"], std::stoi(lines[0].substr(0, 3)));
    EXPECT_EQ(json["channels"][0]["clearance"], std::stod(lines[0].substr(4)));
}

// Bad arguments exit with 2, a file that is no master database with 3.
TEST_F(AutoScanCommandTest, BadInputExitsWithTwoOrThree) {
    const std::string db = m_fmd.string();
    const std::vector<std::vector<std::string>> cases = {
        {"--db", db, "--lat", "95", "--lon", "80", "--class", "A"},
        {"--db", db, "--lat", "40", "--lon", "80", "--class", "Q"},
        {"--db", db, "--lat", "40", "--lon", "80", "--class", "A", "--relations", "primary,4th"},
        {"--db", db, "--lat", "40", "--lon", "80", "--class", "A", "--status", "XX"},
        {"--db", (m_root / "none.fmd").string(), "--lat", "40", "--lon", "80", "--class", "A"},
        {"--db", m_root.string() + "/run/out.txt", "--lat", "40", "--lon", "80", "--class", "A"},
        {"--db", db, "--lat", "40", "--lon", "80", "--class", "A", "--format", "xml"},
    };
    for (const auto& args : cases) {
        std::vector<std::string> full = {"autoscan"};
        full.insert(full.end(), args.begin(), args.end());
        const CliRun run = Cli(full);
        const bool damagedFile = args[1].ends_with("out.txt");
        EXPECT_EQ(run.status, damagedFile ? 3 : 2) << args[1] << " " << args.back() << ": " << run.out;
        EXPECT_FALSE(run.err.empty());
    }
}

TEST_F(AutoScanCommandTest, DamagedPackedMasterExitsWithTwoAndLeavesNoScratch) {
    const fs::path junk = m_root / "junk.fmd";
    std::ofstream(junk, std::ios::binary) << "not a container";
    const CliRun run =
        Cli({"autoscan", "--db", junk.string(), "--lat", "40", "--lon", "80", "--class", "A"});
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find("not a packed master database"), std::string::npos) << run.err;
    EXPECT_TRUE(fs::is_empty(m_root / "tmp")) << "scratch folder left behind";
}

TEST_F(AutoScanCommandTest, GridWritesCsvAndPng) {
    const fs::path out = m_root / "grid";
    const CliRun run =
        Cli({"autoscan-grid", "--db", m_fmd.string(), "--class", "A", "--box", "39.5", "80.5",
             "40.5", "79.5", "--step", "30", "--out", out.string(), "--threads", "2"});
    ASSERT_EQ(run.status, 0) << run.err;
    const auto lines = Lines(ReadFileText(out.string() + ".csv"));
    ASSERT_EQ(lines.size(), 1u + 4 * 3);  // 111 km by 85 km at 30 km steps
    EXPECT_EQ(lines[0], "lat,lon,openings,open_channels");
    EXPECT_EQ(lines[1].rfind("40.500000,80.500000,", 0), 0u) << lines[1];
    EXPECT_EQ(ReadFileText(out.string() + ".png").substr(0, 8),
              std::string("\x89PNG\r\n\x1a\n", 8));
}

TEST_F(AutoScanCommandTest, GridBadInputExitsWithTwoAndWritesNothing) {
    const fs::path out = m_root / "bad";
    const std::vector<std::string> base = {
        "autoscan-grid", "--db",  m_fmd.string(), "--class", "A",  "--out",
        out.string(),    "--box", "39",           "81",      "41", "79"};
    for (const auto& extra : std::vector<std::vector<std::string>>{
             {"--step", "0"},
             {"--step", "abc"},
             {"--step", "10", "--maps", (m_root / "nomaps").string()}}) {
        std::vector<std::string> args = base;
        args.insert(args.end(), extra.begin(), extra.end());
        EXPECT_EQ(Cli(args).status, 2) << extra.back();
    }
    EXPECT_FALSE(fs::exists(out.string() + ".csv"));
    EXPECT_FALSE(fs::exists(out.string() + ".png"));
}

}  // namespace
