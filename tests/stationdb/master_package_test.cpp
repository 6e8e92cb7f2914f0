#include "stationdb/master_package.h"

#include "core/error_trap.h"
#include "core/prompt.h"
#include "container/container.h"
#include "stationdb/day_code.h"
#include "stationdb/schema.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace qarvel::stationdb {
namespace {

namespace fs = std::filesystem;

std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

std::vector<fs::path> Listing(const fs::path& folder) {
    std::vector<fs::path> names;
    for (const auto& item : fs::directory_iterator(folder)) names.push_back(item.path().filename());
    return names;
}

class MasterPackageTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_root = qarvel::testing_support::FreshTestFolder();
        fs::create_directories(m_root / "scratch");
    }
    void TearDown() override { fs::remove_all(m_root); }

    // A packed master database made on the given day code.
    fs::path MakeFmd(int creationDayCode, const std::string& version = "1.9") {
        MasterHeader header;
        header.creation_date = DayCodeText(creationDayCode);
        header.creation_size = "4242";
        header.version = version;
        header.source = "test";
        fs::path fdb = m_root / "Master.fdb";
        EXPECT_TRUE(CreateMasterDatabase(fdb, header));
        fs::path fmd = m_root / "Master.fmd";
        EXPECT_TRUE(PackMasterDatabase(fdb, fmd));
        return fmd;
    }
    fs::path Scratch() const { return m_root / "scratch"; }

    fs::path m_root;
};

TEST_F(MasterPackageTest, UnpacksUnderAFreshTemporaryFdbName) {
    fs::path fmd = MakeFmd(TodayDayCode());
    fs::path first = UnpackMasterDatabase(fmd, Scratch());
    fs::path second = UnpackMasterDatabase(fmd, Scratch());
    ASSERT_FALSE(first.empty());
    ASSERT_FALSE(second.empty());
    EXPECT_NE(first, second);  // an earlier copy is never replaced
    EXPECT_EQ(first.parent_path(), Scratch());
    EXPECT_EQ(first.extension(), ".fdb");
    EXPECT_EQ(ReadAll(first), ReadAll(m_root / "Master.fdb"));
    EXPECT_EQ(Listing(Scratch()).size(), 2u);
}

TEST_F(MasterPackageTest, ContainerWithoutExactlyOneFdbIsRefusedAndLeavesNothing) {
    std::ofstream(m_root / "a.fdb") << "one";
    std::ofstream(m_root / "b.fdb") << "two";
    std::ofstream(m_root / "notes.txt") << "three";
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scoped(sink);
    ASSERT_TRUE(container::CompressFiles(m_root / "two.fmd", {m_root / "a.fdb", m_root / "b.fdb"}));
    ASSERT_TRUE(container::CompressFiles(m_root / "text.fmd", {m_root / "notes.txt"}));
    EXPECT_TRUE(UnpackMasterDatabase(m_root / "two.fmd", Scratch()).empty());
    EXPECT_TRUE(UnpackMasterDatabase(m_root / "text.fmd", Scratch()).empty());
    EXPECT_TRUE(Listing(Scratch()).empty());
    ASSERT_EQ(sink.Reports().size(), 2u);
    EXPECT_EQ(sink.Reports()[0].Text(),
              "modFMdb:UnpackMasterDatabase: a master database container must hold exactly one .fdb file");
}

TEST_F(MasterPackageTest, PackingRefusesAFileThatIsNotAnFdb) {
    std::ofstream(m_root / "job.tdb") << "x";
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scoped(sink);
    EXPECT_FALSE(PackMasterDatabase(m_root / "job.tdb", m_root / "job.fmd"));
    EXPECT_FALSE(fs::exists(m_root / "job.fmd"));
    ASSERT_EQ(sink.Reports().size(), 1u);
    EXPECT_EQ(sink.Reports()[0].routine, ":PackMasterDatabase:");
}

TEST_F(MasterPackageTest, TestFmdShowsTheCaptionAndReadsTheCreationDate) {
    const int today = TodayDayCode();
    fs::path fmd = MakeFmd(today);
    core::RecordingPrompt prompt;
    core::ScopedPrompt scoped(prompt);
    std::vector<std::string> captions;
    fs::path fdb;
    std::string creationDate;
    MasterInfo info;
    ASSERT_TRUE(testFMD(fmd, Scratch(), {}, &fdb, &creationDate,
                        [&](const std::string& caption) { captions.push_back(caption); }, &info));
    EXPECT_EQ(captions, std::vector<std::string>{"Initializing Database"});
    EXPECT_EQ(creationDate, DayCodeText(today));
    EXPECT_EQ(info.creation_size, "4242");
    EXPECT_FLOAT_EQ(info.version, 1.9f);
    EXPECT_EQ(fdb.parent_path(), Scratch());
    EXPECT_TRUE(fs::exists(fdb));
    EXPECT_TRUE(prompt.Texts().empty());
}

struct Refused {
    const char* label;
    std::string contents;  // of the .fmd file; empty: a job database packed as a master
};
void PrintTo(const Refused& c, std::ostream* os) { *os << c.label; }


class TestFmdRefuses : public MasterPackageTest, public ::testing::WithParamInterface<Refused> {};

TEST_P(TestFmdRefuses, WithTheMasterMessageAndAnEmptyScratchFolder) {
    fs::path fmd = m_root / "bad.fmd";
    if (GetParam().contents.empty()) {
        ASSERT_TRUE(CreateJobDatabase(m_root / "job.fdb"));
        ASSERT_TRUE(container::CompressFiles(fmd, {m_root / "job.fdb"}));
    } else {
        std::ofstream(fmd, std::ios::binary) << GetParam().contents;
    }
    core::RecordingPrompt prompt;
    core::ScopedPrompt scopedPrompt(prompt);
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scopedSink(sink);
    fs::path fdb = "untouched";
    EXPECT_FALSE(testFMD(fmd, Scratch(), {}, &fdb, nullptr));
    EXPECT_EQ(prompt.Texts(), std::vector<std::string>{"Invalid or Damaged Master Database!"});
    EXPECT_EQ(fdb, "untouched");
    EXPECT_TRUE(Listing(Scratch()).empty());
}

INSTANTIATE_TEST_SUITE_P(Containers, TestFmdRefuses,
                         ::testing::Values(Refused{"NotACompressedContainer", "garbage, not zlib"},
                                           Refused{"JobDatabaseInside", ""}),
                         [](const auto& c) { return std::string(c.param.label); });

// The check's options reach ValidFMDFile: a database dated ahead is refused,
// unless the pending operation skips the age check.
TEST_F(MasterPackageTest, TestFmdPassesTheCheckOptionsOn) {
    fs::path fmd = MakeFmd(24100);
    core::RecordingPrompt prompt;
    core::ScopedPrompt scoped(prompt);
    EXPECT_FALSE(testFMD(fmd, Scratch(), {"", 24090, {}}, nullptr, nullptr));
    EXPECT_TRUE(testFMD(fmd, Scratch(), {"NoOp", 24090, {}}, nullptr, nullptr));
}

}  // namespace
}  // namespace qarvel::stationdb
