// qarvel-cli pack, unpack and db check, run as a user would run them.

#include "cli_runner.h"
#include "container/container.h"
#include "stationdb/database.h"
#include "stationdb/day_code.h"
#include "stationdb/schema.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <zlib.h>

#include <fstream>

namespace {

namespace fs = std::filesystem;
using namespace qarvel::stationdb;
using namespace qarvel::container;
using qarvel::testing::CliRun;
using qarvel::testing::ReadFileText;
using qarvel::testing::RunCli;
using qarvel::testing::TestFolder;

void WriteAll(const fs::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

class PackCommandTest : public ::testing::Test {
protected:
    void SetUp() override { fs::create_directories(m_root / "tmp"); }

    // Runs qarvel-cli with its temporary folder inside the test's folder, so
    // that scratch files it leaves behind are seen.
    CliRun Cli(const std::vector<std::string>& args) { return RunCli(args, m_root / "run", m_root / "tmp"); }
    bool ScratchIsEmpty() const { return fs::is_empty(m_root / "tmp"); }

    // A job as the program stores it: the database and its two boundary files.
    fs::path MakeJob() {
        fs::path tdb = m_root / "Study.tdb";
        EXPECT_TRUE(CreateJobDatabase(tdb));
        Database db(tdb, OpenMode::ReadWrite);
        db.Run("INSERT INTO information (CDate, Comments, Source, TChan, TLat, TLon, TClass, TIClass,"
               " OffSetN, OffSetW, ScanRange) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11)",
               "2024-05-02 00:00:00", "No Comments", "Demo master", 250, 40.5, 74.25, "C1", "A", 0.0, 0.0,
               150);
        WriteAll(m_root / "Study.mco", "county lines");
        WriteAll(m_root / "Study.mst", "");
        fs::path fmj = m_root / "Study.fmj";
        EXPECT_TRUE(CompressFiles(fmj, {tdb, m_root / "Study.mco", m_root / "Study.mst"}));
        return fmj;
    }

    TestFolder m_folder{"qarvel_cli_pack_"};
    const fs::path& m_root = m_folder.Path();
};

TEST_F(PackCommandTest, PackThenUnpackGivesTheSameFiles) {
    std::string big(70000, '\0');
    for (std::size_t i = 0; i < big.size(); ++i) big[i] = static_cast<char>(i * 7);
    WriteAll(m_root / "a.tdb", big);
    WriteAll(m_root / "b.mst", "state lines");
    CliRun pack = Cli({"pack", (m_root / "job.fmj").string(), (m_root / "a.tdb").string(),
                    (m_root / "b.mst").string()});
    ASSERT_EQ(pack.status, 0) << pack.err;
    CliRun unpack = Cli({"unpack", (m_root / "job.fmj").string(), (m_root / "out/new").string()});
    ASSERT_EQ(unpack.status, 0) << unpack.err;
    EXPECT_EQ(ReadFileText(m_root / "out/new/a.tdb"), big);
    EXPECT_EQ(ReadFileText(m_root / "out/new/b.mst"), "state lines");
    EXPECT_TRUE(ScratchIsEmpty());
}

TEST_F(PackCommandTest, PackWithAMissingFileIsABadArgument) {
    CliRun run = Cli({"pack", (m_root / "job.fmj").string(), (m_root / "absent.tdb").string()});
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find("absent.tdb: no such file"), std::string::npos) << run.err;
    EXPECT_FALSE(fs::exists(m_root / "job.fmj"));
}

TEST_F(PackCommandTest, UnpackRefusesAContainerReachingOutsideItsFolder) {
    std::string raw = std::string("\x04../x\x01\0\0\0", 9) + '\0' + "x";
    uLongf length = compressBound(static_cast<uLong>(raw.size()));
    std::string packed(length, '\0');
    ASSERT_EQ(compress2(reinterpret_cast<Bytef*>(packed.data()), &length,
                        reinterpret_cast<const Bytef*>(raw.data()), static_cast<uLong>(raw.size()), 9),
              Z_OK);
    packed.resize(length);
    WriteAll(m_root / "evil.fmj", packed);
    CliRun run = Cli({"unpack", (m_root / "evil.fmj").string(), (m_root / "out").string()});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("modFileComp:UncompressFiles: file name contains \"..\""), std::string::npos)
        << run.err;
    EXPECT_FALSE(fs::exists(m_root / "x"));
    EXPECT_FALSE(fs::exists(m_root / "out"));  // the folder it made is gone again
    EXPECT_TRUE(ScratchIsEmpty());
}

TEST_F(PackCommandTest, DbCheckPrintsTheJobHeader) {
    fs::path fmj = MakeJob();
    CliRun run = Cli({"db", "check", fmj.string()});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out,
              "CDate: 2024-05-02 00:00:00\nTChan: 250\nComments: No Comments\nSource: Demo master\n"
              "TLat: 40.5\nTLon: 74.25\nTClass: C1\nOffsetN: 0\nOffsetW: 0\nScanRange: 150\n");
    EXPECT_TRUE(ScratchIsEmpty());
}

TEST_F(PackCommandTest, DbCheckJsonGivesOneObject) {
    fs::path fmj = MakeJob();
    CliRun run = Cli({"db", "check", fmj.string(), "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    nlohmann::json out = nlohmann::json::parse(run.out);
    EXPECT_EQ(out["valid"], true);
    EXPECT_EQ(out["kind"], "job");
    EXPECT_EQ(out["TChan"], 250);
    EXPECT_EQ(out["TLon"], 74.25);
    EXPECT_EQ(out["TClass"], "C1");
    EXPECT_TRUE(out["messages"].empty());
}

TEST_F(PackCommandTest, DbCheckPrintsTheMasterHeader) {
    MasterHeader header;
    header.creation_date = DayCodeText(TodayDayCode());
    header.creation_size = "1234567";
    header.source = "test";
    ASSERT_TRUE(CreateMasterDatabase(m_root / "Master.fdb", header));
    ASSERT_TRUE(CompressFiles(m_root / "Master.fmd", {m_root / "Master.fdb"}));
    CliRun run = Cli({"db", "check", (m_root / "Master.fmd").string()});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "creation_date: " + header.creation_date + "\ncreation_size: 1234567\nversion: 1.9\n");
    EXPECT_TRUE(ScratchIsEmpty());
}

struct Damaged {
    const char* label;
    const char* file;
    const char* message;
};

void PrintTo(const Damaged& c, std::ostream* os) { *os << c.label; }

class DbCheckDamaged : public PackCommandTest, public ::testing::WithParamInterface<Damaged> {};

// A damaged file is the answer "invalid" (exit 1) with the system's message,
// on stderr or, with --json, inside the object.
TEST_P(DbCheckDamaged, IsInvalidWithTheSystemsMessage) {
    fs::path file = m_root / GetParam().file;
    WriteAll(file, "not a container at all");
    CliRun plain = Cli({"db", "check", file.string()});
    EXPECT_EQ(plain.status, 1);
    EXPECT_EQ(plain.out, "");
    EXPECT_NE(plain.err.find(GetParam().message), std::string::npos) << plain.err;
    CliRun json = Cli({"db", "check", file.string(), "--json"});
    EXPECT_EQ(json.status, 1);
    nlohmann::json out = nlohmann::json::parse(json.out);
    EXPECT_EQ(out["valid"], false);
    EXPECT_EQ(out["messages"], nlohmann::json::array({GetParam().message}));
    EXPECT_TRUE(ScratchIsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Files, DbCheckDamaged,
                         ::testing::Values(Damaged{"Job", "broken.fmj", "Invalid or Damaged Jobfile!"},
                                           Damaged{"Master", "broken.FMD", "Invalid or Damaged Master Database!"}),
                         [](const auto& c) { return std::string(c.param.label); });

TEST_F(PackCommandTest, DbCheckJobWithoutADatabaseInsideIsInvalid) {
    WriteAll(m_root / "Study.mst", "state lines");
    ASSERT_TRUE(CompressFiles(m_root / "Study.fmj", {m_root / "Study.mst"}));
    CliRun run = Cli({"db", "check", (m_root / "Study.fmj").string()});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("Invalid or Damaged Jobfile!"), std::string::npos) << run.err;
}

TEST_F(PackCommandTest, DbCheckBadArgumentsExitWith2) {
    WriteAll(m_root / "notes.txt", "x");
    CliRun missing = Cli({"db", "check", (m_root / "absent.fmj").string()});
    EXPECT_EQ(missing.status, 2);
    EXPECT_NE(missing.err.find("absent.fmj: no such file"), std::string::npos) << missing.err;
    CliRun unknown = Cli({"db", "check", (m_root / "notes.txt").string()});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_NE(unknown.err.find("unknown extension"), std::string::npos) << unknown.err;
}

}  // namespace
