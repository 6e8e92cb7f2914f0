// qarvel-cli search as scripts use it: the JSON and CSV shapes, archives,
// and refusals that leave the master as it was.

#include "cli_runner.h"
#include "stationdb/master_writer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>

namespace {

namespace fs = std::filesystem;
using namespace qarvel::stationdb;
using qarvel::testing::CliRun;
using qarvel::testing::ReadFileText;
using qarvel::testing::RunCli;
using qarvel::testing::TestFolder;

class SearchCommandTest : public ::testing::Test {
protected:
    void SetUp() override {
        MasterWriter writer;
        ASSERT_TRUE(writer.Open(m_master, {}, MasterOutput::Packed));
        PartyRecord owner;
        owner.party_id = 1;
        owner.party_name = "Great Plains Media";
        writer.AddParty(owner);
        for (int id = 1; id <= 3; ++id) {
            FmRecord r;
            r.application_id = id;
            r.party_id = 1;
            r.fac_callsign = id == 3 ? "=HACK" : "KSR" + std::to_string(id);
            r.station_channel = 249 + id;
            r.comm_state = "NE";
            writer.AddFm(r);
        }
        ASSERT_TRUE(writer.Finish());
    }
    CliRun Cli(std::vector<std::string> args) {
        args.insert(args.begin(), {"search", "--db", m_master.string()});
        return RunCli(args, m_folder.Path() / "run");
    }
    TestFolder m_folder{"qarvel_cli_search_"};
    fs::path m_master = m_folder.Path() / "Master.fmd";
};

TEST_F(SearchCommandTest, BasicSearchAsJsonAndCsv) {
    const CliRun json = Cli({"--owner", "plains", "--channel", "251", "--format", "json"});
    ASSERT_EQ(json.status, 0) << json.err;
    const auto out = nlohmann::json::parse(json.out);
    EXPECT_EQ(out["columns"].back(), "application_id");
    ASSERT_EQ(out["rows"].size(), 1u);
    EXPECT_EQ(out["rows"][0]["Callsign"], "KSR2");
    EXPECT_EQ(out["rows"][0]["application_id"], 2);

    const CliRun csv = Cli({"--state", "ne", "--format", "csv"});
    ASSERT_EQ(csv.status, 0) << csv.err;
    EXPECT_EQ(csv.out.substr(0, csv.out.find('\n')).substr(0, 14), "Border,73-215,");
    EXPECT_NE(csv.out.find(",'=HACK,"), std::string::npos) << "a formula-like cell is neutralised";
}

TEST_F(SearchCommandTest, ArchivedAndHandQueriesReadOnly) {
    const fs::path archive = m_folder.Path() / "q.txt";
    std::ofstream(archive, std::ios::binary) << " Qarvel SQL Query \r\nSELECT fac_callsign FROM fm_data WHERE station_channel > 250;\r\n";
    const CliRun archived = Cli({"--archive", archive.string(), "--format", "json"});
    ASSERT_EQ(archived.status, 0) << archived.err;
    EXPECT_EQ(nlohmann::json::parse(archived.out)["rows"].size(), 2u);

    std::ofstream(m_folder.Path() / "bad.txt") << "SQL\r\nSELECT 1\r\n";
    const CliRun notArchive = Cli({"--archive", (m_folder.Path() / "bad.txt").string()});
    EXPECT_EQ(notArchive.status, 3);
    EXPECT_NE(notArchive.err.find("Not a valid Query Archive!"), std::string::npos);

    const std::string before = ReadFileText(m_master);
    const CliRun write = Cli({"--sql", "UPDATE fm_data SET station_channel = 200"});
    EXPECT_EQ(write.status, 2);
    EXPECT_EQ(Cli({"--channel", "199"}).status, 2);
    EXPECT_EQ(Cli({"--key", "1", "--call", "K"}).status, 2);
    EXPECT_EQ(ReadFileText(m_master), before);
}

}  // namespace
