// qarvel-cli import cdbs, lms, fmquery and csv, run as a user would run them.

#include "cli_runner.h"
#include "core/prompt.h"
#include "stationdb/database.h"
#include "stationdb/master_package.h"
#include "stationdb/validation.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>


#include <algorithm>
#include <fstream>
#include <iterator>

namespace {

namespace fs = std::filesystem;
using namespace qarvel::stationdb;
using qarvel::testing::CliRun;
using qarvel::testing::RunCli;

fs::path Fixtures() { return fs::path(QARVEL_SOURCE_DIR) / "tests" / "importers" / "fixtures"; }

class ImportCommandTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_root = qarvel::testing_support::FreshTestFolder();
        fs::create_directories(m_root / "work");
    }
    void TearDown() override { fs::remove_all(m_root); }

    CliRun Cli(const std::vector<std::string>& args) { return RunCli(args, m_root); }
    fs::path Work() const { return m_root / "work"; }
    std::vector<std::string> WorkListing() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(Work())) names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    fs::path m_root;
};

TEST_F(ImportCommandTest, FmQueryWritesAPackedMasterAndListsBadLines) {
    const fs::path out = Work() / "fmq.fmd";
    const CliRun run = Cli({"import", "fmquery", (Fixtures() / "fmquery_small.txt").string(), "--out", out.string()});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("Records read: 9\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("FM records kept: 6 (FA 1, FM 4, FX 1)\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("  not an FM channel: 1\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("Wrote " + out.string()), std::string::npos) << run.out;
    EXPECT_NE(run.err.find("qarvel-cli: fmquery_small.txt:6: the line has 52 characters"), std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("qarvel-cli: fmquery_small.txt:7: horizontal ERP 'x.5' is not a number"),
              std::string::npos)
        << run.err;

    fs::create_directories(m_root / "scratch");
    const fs::path fdb = UnpackMasterDatabase(out, m_root / "scratch");
    ASSERT_FALSE(fdb.empty());
    qarvel::core::RecordingPrompt prompt;
    qarvel::core::ScopedPrompt scopedPrompt(prompt);
    EXPECT_TRUE(ValidFMDFile(fdb, {"NoOp", 0, {}}));
    EXPECT_EQ(WorkListing(), std::vector<std::string>{"fmq.fmd"});  // no temporary files left
}

TEST_F(ImportCommandTest, CsvEastPositiveTurnsLongitudesWest) {
    std::ofstream(Work() / "list.csv") << "callsign,channel,class,latitude,longitude,city,state\n"
                                          "WAAA,201,A,40.5,-80.25,TOWN,PA\n";
    const fs::path out = Work() / "list.fdb";
    CliRun run = Cli({"import", "csv", (Work() / "list.csv").string(), "--east-positive", "-o", out.string()});
    ASSERT_EQ(run.status, 0) << run.err;
    {
        Database db(out, OpenMode::ReadOnly);
        Statement st = db.Prepare("SELECT lat, lon FROM fm_data");
        ASSERT_TRUE(st.Step());
        EXPECT_EQ(st.GetInt(0), 583200);
        EXPECT_EQ(st.GetInt(1), 1155600);  // 80.25 west
    }
    run = Cli({"import", "csv", (Work() / "list.csv").string(), "-o", out.string()});
    ASSERT_EQ(run.status, 0) << run.err;
    Database db(out, OpenMode::ReadOnly);
    Statement st = db.Prepare("SELECT lon FROM fm_data");
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetInt(0), -1155600);  // as given: west positive, so this is east
}

TEST_F(ImportCommandTest, DumpFoldersImport) {
    CliRun run = Cli({"import", "cdbs", (Fixtures() / "cdbs").string(), "--out", (Work() / "c.fmd").string()});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("AM records: 1\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("TV channel 6 records: 1\n"), std::string::npos) << run.out;
    run = Cli({"import", "lms", (Fixtures() / "lms").string(), "--out", (Work() / "l.fmd").string()});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("FM records kept: 3"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("Foreign FM records: CA 1\n"), std::string::npos) << run.out;
}

TEST_F(ImportCommandTest, AnUnusableInputFailsWithStatusOneAndNoFile) {
    std::ofstream(Work() / "cut.csv") << "callsign,channel,class,latitude,longitude,city,state\n"
                                         "WAAA,201,A,40,80,TOWN,PA\nWBBB,202,A,4";
    const CliRun run = Cli({"import", "csv", (Work() / "cut.csv").string(), "--out", (Work() / "m.fmd").string()});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              "qarvel-cli: import failed: cut.csv:3: has 4 fields, the header 7, and the line has no line break: "
              "the file seems cut off\n");
    EXPECT_TRUE(run.out.empty());
    EXPECT_EQ(WorkListing(), std::vector<std::string>{"cut.csv"});
}

struct BadArguments {
    const char* name;
    std::vector<std::string> args;
    const char* message;
};

class ImportArgumentsTest : public ImportCommandTest, public ::testing::WithParamInterface<BadArguments> {};

TEST_P(ImportArgumentsTest, ExitWithStatusTwo) {
    std::vector<std::string> args = GetParam().args;
    for (std::string& arg : args) {
        if (arg == "@fixture") arg = (Fixtures() / "fmquery_small.txt").string();
        if (arg == "@folder") arg = Fixtures().string();
        if (arg.rfind("@work/", 0) == 0) arg = (Work() / arg.substr(6)).string();
    }
    const CliRun run = Cli(args);
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find(GetParam().message), std::string::npos) << run.err;
    EXPECT_TRUE(WorkListing().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Commands, ImportArgumentsTest,
    ::testing::Values(
        BadArguments{"NoOut", {"import", "fmquery", "@fixture"}, "--out"},
        BadArguments{"WrongExtension", {"import", "fmquery", "@fixture", "--out", "@work/m.txt"},
                     "must end in .fmd (packed) or .fdb (unpacked)"},
        BadArguments{"MissingFolder", {"import", "fmquery", "@fixture", "--out", "@work/no/m.fmd"},
                     "does not exist"},
        BadArguments{"MissingFile", {"import", "csv", "@work/none.csv", "--out", "@work/m.fmd"}, "is not a file"},
        BadArguments{"FileForFolder", {"import", "cdbs", "@fixture", "--out", "@work/m.fmd"}, "is not a folder"},
        BadArguments{"FolderForFile", {"import", "fmquery", "@folder", "--out", "@work/m.fmd"}, "is not a file"}),
    [](const auto& testInfo) { return std::string(testInfo.param.name); });

}  // namespace
