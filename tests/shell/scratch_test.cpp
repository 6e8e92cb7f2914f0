#include "shell/scratch.h"

#include <gtest/gtest.h>

#include <ostream>

#include <QTemporaryDir>

#include <fstream>

#include "core/prompt.h"

namespace qarvel::shell {
namespace {

namespace fs = std::filesystem;

void Touch(const fs::path& file) { std::ofstream(file) << "x"; }

class ScratchTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_dir.isValid()); }
    fs::path Root() const { return fs::path(m_dir.path().toStdString()); }
    QTemporaryDir m_dir;
};

TEST_F(ScratchTest, CleanUpDirDeletesOnlyWorkingFiles) {
    const fs::path folder = Root() / "_3fmjs";
    fs::create_directories(folder / "sub");
    for (const char* name : {"job.tdb", "job.mst", "job.mco", "east.fdb", "OLD.MST", "x.Tdb",
                             "keep.txt", "job.fmj", "notes.tdbx", "tdb", "sub/inner.tdb"}) {
        Touch(folder / name);
    }
    // A read-only working file is made writable and deleted all the same.
    fs::permissions(folder / "x.Tdb", fs::perms::owner_read, fs::perm_options::replace);

    EXPECT_TRUE(CleanUpDir(folder));
    for (const char* gone : {"job.tdb", "job.mst", "job.mco", "east.fdb", "OLD.MST", "x.Tdb"}) {
        EXPECT_FALSE(fs::exists(folder / gone)) << gone;
    }
    for (const char* kept : {"keep.txt", "job.fmj", "notes.tdbx", "tdb", "sub/inner.tdb"}) {
        EXPECT_TRUE(fs::exists(folder / kept)) << kept;
    }
}

TEST_F(ScratchTest, CleanUpDirOfMissingFolderIsClean) {
    EXPECT_TRUE(CleanUpDir(Root() / "nothing here"));
}

TEST_F(ScratchTest, RecreateScratchFolderLeavesAnEmptyFolder) {
    const fs::path folder = Root() / "_4fmds";
    fs::create_directories(folder / "deep");
    Touch(folder / "a.fdb");
    Touch(folder / "readme.txt");
    Touch(folder / "deep" / "b.bin");
    ASSERT_TRUE(RecreateScratchFolder(folder));
    EXPECT_TRUE(fs::is_directory(folder));
    EXPECT_TRUE(fs::is_empty(folder));
    ASSERT_TRUE(RecreateScratchFolder(Root() / "fresh"));
    EXPECT_TRUE(fs::is_directory(Root() / "fresh"));
}

struct NameCase {
    const char* name;
    const char* jobPath;
    const char* folder;
    const char* base;
    const char* jobFile;
    friend void PrintTo(const NameCase& c, std::ostream* os) { *os << c.name; }
};

class WorkOutFilenamesTest : public testing::TestWithParam<NameCase> {};

TEST_P(WorkOutFilenamesTest, FormsCompanions) {
    const NameCase& c = GetParam();
    const fs::path scratch = "/tmp/_3fmjs";
    JobFileNames names = WorkOutFilenames(c.jobPath, scratch);
    EXPECT_EQ(names.folder, fs::path(c.folder));
    EXPECT_EQ(names.baseName, c.base);
    EXPECT_EQ(names.jobFile, fs::path(c.jobFile));
    EXPECT_EQ(names.tdb, scratch / (std::string(c.base) + ".tdb"));
    EXPECT_EQ(names.mst, scratch / (std::string(c.base) + ".mst"));
    EXPECT_EQ(names.mco, scratch / (std::string(c.base) + ".mco"));
}

INSTANTIATE_TEST_SUITE_P(
    JobNames, WorkOutFilenamesTest,
    testing::Values(NameCase{"Empty", "", "", "noname", "noname.fmj"},
                    NameCase{"FolderOnly", "/jobs/", "/jobs", "noname", "/jobs/noname.fmj"},
                    NameCase{"NoExtension", "/jobs/wxyz", "/jobs", "wxyz", "/jobs/wxyz.fmj"},
                    NameCase{"WithExtension", "/jobs/wxyz.fmj", "/jobs", "wxyz", "/jobs/wxyz.fmj"},
                    NameCase{"UpperCase", "/jobs/WXYZ.FMJ", "/jobs", "WXYZ", "/jobs/WXYZ.FMJ"},
                    NameCase{"OtherExtension", "/jobs/site.txt", "/jobs", "site.txt",
                             "/jobs/site.txt.fmj"},
                    NameCase{"Relative", "study", "", "study", "study.fmj"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(ScratchTest, CheckFreeSpaceOfRealAndMissingPaths) {
    EXPECT_GT(CheckFreeSpace(Root()), 0);
    EXPECT_EQ(CheckFreeSpace(Root() / "no such folder"), 0);
    EXPECT_EQ(CheckFreeSpace(fs::path()), 0);
    const std::string volume = VolumeName(Root());
    ASSERT_FALSE(volume.empty());
    EXPECT_EQ(volume.front(), '/');
    EXPECT_TRUE(volume == "/" || volume.back() != '/') << volume;
}

struct BandCase {
    const char* name;
    std::int64_t megabytes;
    bool continues;
    const char* message;  // "" for none
    friend void PrintTo(const BandCase& c, std::ostream* os) { *os << c.name; }
};

class SpaceBandTest : public testing::TestWithParam<BandCase> {};

TEST_P(SpaceBandTest, MessageAndEffect) {
    const BandCase& c = GetParam();
    core::RecordingPrompt prompt;
    core::ScopedPrompt scoped(prompt);
    fs::path probed;
    const bool continues = StartupSpaceCheck(
        "/tmp", [&](const fs::path& p) { probed = p; return c.megabytes; },
        [](const fs::path&) { return std::string("/"); });
    EXPECT_EQ(continues, c.continues);
    EXPECT_EQ(probed, fs::path("/tmp"));
    if (std::string(c.message).empty()) {
        EXPECT_TRUE(prompt.Messages().empty());
    } else {
        ASSERT_EQ(prompt.Messages().size(), 1U);
        EXPECT_EQ(prompt.Messages()[0].text, c.message);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Boundaries, SpaceBandTest,
    testing::Values(
        BandCase{"Mb0", 0, false, "There is not enough free space on /: to run this program!"},
        BandCase{"Mb99", 99, false, "There is not enough free space on /: to run this program!"},
        BandCase{"Mb100", 100, true, "/: is running very low on free space!"},
        BandCase{"Mb149", 149, true, "/: is running very low on free space!"},
        BandCase{"Mb150", 150, true, "/: is running low on free space!"},
        BandCase{"Mb199", 199, true, "/: is running low on free space!"},
        BandCase{"Mb200", 200, true, ""}, BandCase{"Mb5000", 5000, true, ""}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(SpaceMessages, DriveLetterStandsAloneBeforeTheColon) {
    EXPECT_EQ(FreeSpaceMessage(SpaceBand::Low, "C"), "C: is running low on free space!");
}

}  // namespace
}  // namespace qarvel::shell
