// JobFile: build, save, reopen, save as, close, and the failures that must
// keep the previous job file and the open job.

#include "jobs/job_file.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <bit>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <unistd.h>

#include "core/error_trap.h"
#include "core/prompt.h"
#include "container/container.h"
#include "stationdb/database.h"
#include "stationdb/master_writer.h"
#include "stationdb/schema.h"
#include "support/temp_folder.h"

namespace qarvel::jobs {
namespace {

namespace fs = std::filesystem;

std::string ReadBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

std::string FloatBytes(const std::vector<float>& values) {
    std::string out;
    for (const float v : values) {
        const auto bits = std::bit_cast<std::uint32_t>(v);
        for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<char>((bits >> shift) & 0xFFu));
    }
    return out;
}

// The stored names of a container, in directory order.
std::vector<std::string> PackedNames(const fs::path& fmj) {
    const std::string packed = ReadBytes(fmj);
    std::string raw(16u << 20, '\0');
    uLongf length = static_cast<uLongf>(raw.size());
    EXPECT_EQ(uncompress(reinterpret_cast<Bytef*>(raw.data()), &length,
                         reinterpret_cast<const Bytef*>(packed.data()), static_cast<uLong>(packed.size())),
              Z_OK);
    std::vector<std::string> names;
    for (std::size_t at = 0; at < length && raw[at] != 0;) {
        const auto size = static_cast<unsigned char>(raw[at]);
        names.push_back(raw.substr(at + 1, size));
        at += 1 + size + 4;
    }
    return names;
}

TEST(JobWorkingNamesTest, FollowTheJobFileName) {
    const JobPaths a = JobWorkingNames("/jobs/Omaha.FMJ", "/tmp/_3fmjs");
    EXPECT_EQ(a.baseName, "Omaha");
    EXPECT_EQ(a.jobFile, fs::path("/jobs/Omaha.FMJ"));
    EXPECT_EQ(a.tdb, fs::path("/tmp/_3fmjs/Omaha.tdb"));
    EXPECT_EQ(a.mco, fs::path("/tmp/_3fmjs/Omaha.mco"));
    const JobPaths b = JobWorkingNames("/jobs/study.v2", "/s");
    EXPECT_EQ(b.jobFile, fs::path("/jobs/study.v2.fmj"));
    EXPECT_EQ(b.mst, fs::path("/s/study.v2.mst"));
    EXPECT_EQ(JobWorkingNames("", "/s").jobFile, fs::path("noname.fmj"));
}

class JobFileTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = qarvel::testing_support::FreshTestFolder();
        fs::create_directories(m_dir / "maps");
        stationdb::MasterWriter writer;
        stationdb::MasterHeader header;
        header.source = "job file test";
        ASSERT_TRUE(writer.Open(m_dir / "master.fdb", header, stationdb::MasterOutput::Unpacked));
        for (int id = 1; id <= 5; ++id) {
            stationdb::FmRecord r;
            r.application_id = id;
            r.lat = static_cast<int>((41.0 + 0.1 * id) * 14400);
            r.lon = static_cast<int>(96.0 * 14400);
            r.fac_callsign = "KJB" + std::to_string(id);
            EXPECT_EQ(writer.AddFm(r), stationdb::AddResult::Added);
        }
        ASSERT_TRUE(writer.Finish());
        std::ofstream(m_dir / "maps" / "stmapH.dat", std::ios::binary)
            << FloatBytes({0, 31, 41.0f, 96.5f, 41.5f, 96.0f, 0, 20, 30.0f, 90.0f, 0, 0});
        std::ofstream(m_dir / "maps" / "comapH.dat", std::ios::binary)
            << FloatBytes({0, 31055, 41.2f, 96.1f, 41.3f, 96.2f, 0, 0});
    }
    void TearDown() override { fs::remove_all(m_dir); }

    NewJobInputs Inputs() const {
        NewJobInputs in;
        in.scanRange = 100;
        in.lat = 41.25;
        in.lon = 96.0;
        in.channel = "250";
        in.stationClass = "C2";
        in.comments = "round trip";
        in.source = "job file test";
        in.masterPath = m_dir / "master.fdb";
        return in;
    }

    // A job built and saved as m_dir/"first.fmj", then closed.
    fs::path SavedJob() {
        JobFile job(m_dir / "scratch");
        EXPECT_TRUE(job.CreateNew(Inputs(), m_dir / "first.fmj", m_dir / "maps"));
        EXPECT_TRUE(job.Save());
        EXPECT_TRUE(job.Close());
        m_prompt = {};
        return m_dir / "first.fmj";
    }

    fs::path m_dir;
    core::RecordingErrorSink m_errors;
    core::ScopedErrorSink m_errorScope{m_errors};
    core::RecordingPrompt m_prompt;
    core::ScopedPrompt m_promptScope{m_prompt};
};

TEST_F(JobFileTest, BuildSaveReopenRoundTrip) {
    JobFile job(m_dir / "scratch");
    ASSERT_TRUE(job.CreateNew(Inputs(), m_dir / "first.fmj", m_dir / "maps"));
    EXPECT_TRUE(job.IsChanged());
    EXPECT_EQ(job.Header().Comments, "round trip");
    const std::string stateCut = ReadBytes(job.Paths().mst);
    EXPECT_EQ(stateCut, FloatBytes({0, 31, 41.0f, 96.5f, 41.5f, 96.0f}));
    ASSERT_TRUE(job.Save());
    EXPECT_TRUE(m_prompt.Texts().empty());  // nothing to replace
    EXPECT_EQ(PackedNames(m_dir / "first.fmj"), (std::vector<std::string>{"first.tdb", "first.mco", "first.mst"}));
    ASSERT_TRUE(job.Close());
    EXPECT_TRUE(m_prompt.Texts().empty());  // saved: nothing to ask
    EXPECT_FALSE(fs::exists(m_dir / "scratch" / "first.tdb"));

    ASSERT_TRUE(job.Open(m_dir / "first.fmj"));
    EXPECT_FALSE(job.IsChanged());
    EXPECT_EQ(job.Header().TChan, 250);
    EXPECT_EQ(job.Header().TClass, "C2");
    EXPECT_EQ(ReadBytes(job.Paths().mst), stateCut);
    JobSummary summary;
    ASSERT_TRUE(ReadJobSummary(job.Paths().tdb, &summary));
    EXPECT_EQ(summary.rowCounts.at("fm_data"), 5);
    EXPECT_EQ(summary.rowCounts.at("information"), 1);
}

TEST_F(JobFileTest, ReplaceIsAskedAndCancelWritesNothing) {
    const fs::path fmj = SavedJob();
    const std::string before = ReadBytes(fmj);
    JobFile job(m_dir / "scratch");
    ASSERT_TRUE(job.Open(fmj));
    job.MarkChanged();
    m_prompt.QueueAnswer(core::PromptAnswer::Cancel);
    EXPECT_FALSE(job.Save());
    ASSERT_EQ(m_prompt.Messages().size(), 1u);
    EXPECT_EQ(m_prompt.Messages()[0].text, "Replace " + fmj.string() + "?");
    EXPECT_EQ(m_prompt.Messages()[0].title, "Replace Job");
    EXPECT_EQ(m_prompt.Messages()[0].buttons, core::PromptButtons::OkCancel);
    EXPECT_TRUE(job.IsChanged());
    EXPECT_EQ(ReadBytes(fmj), before);
    EXPECT_TRUE(job.Save());  // OK this time
    EXPECT_FALSE(job.IsChanged());
}

TEST_F(JobFileTest, FailedSaveKeepsThePreviousFileAndTheJobOpen) {
    const fs::path fmj = SavedJob();
    const std::string before = ReadBytes(fmj);
    JobFile job(m_dir / "scratch");
    ASSERT_TRUE(job.Open(fmj));
    job.MarkChanged();
    // The working database becomes unreadable as a file: packing must fail.
    fs::remove(job.Paths().tdb);
    fs::create_directory(job.Paths().tdb);
    EXPECT_FALSE(job.Save());
    EXPECT_EQ(m_prompt.Texts(), (std::vector<std::string>{"Replace " + fmj.string() + "?", "Save Failed!"}));
    EXPECT_EQ(ReadBytes(fmj), before);
    EXPECT_TRUE(job.IsOpen());
    EXPECT_TRUE(job.IsChanged());
    // Closing asks, the save fails again, and the job stays open.
    m_prompt.QueueAnswer(core::PromptAnswer::Yes);
    EXPECT_FALSE(job.Close());
    EXPECT_TRUE(job.IsOpen());
    EXPECT_EQ(m_prompt.Texts()[2], "Save changes?");
    fs::remove(job.Paths().tdb);
}

TEST_F(JobFileTest, CloseAsksForChangedJobsOnly) {
    JobFile job(m_dir / "scratch");
    ASSERT_TRUE(job.CreateNew(Inputs(), m_dir / "unsaved.fmj"));
    m_prompt.QueueAnswer(core::PromptAnswer::No);
    EXPECT_TRUE(job.Close());
    EXPECT_EQ(m_prompt.Texts(), std::vector<std::string>{"Save changes?"});
    EXPECT_EQ(m_prompt.Messages()[0].buttons, core::PromptButtons::YesNo);
    EXPECT_FALSE(fs::exists(m_dir / "unsaved.fmj"));
    EXPECT_TRUE(fs::is_empty(m_dir / "scratch"));
}

TEST_F(JobFileTest, SaveAsRenamesTheWorkingFiles) {
    const fs::path fmj = SavedJob();
    JobFile job(m_dir / "scratch");
    ASSERT_TRUE(job.Open(fmj));
    ASSERT_TRUE(job.SaveAs(m_dir / "second"));
    EXPECT_EQ(job.Paths().jobFile, m_dir / "second.fmj");
    EXPECT_TRUE(fs::exists(m_dir / "scratch" / "second.tdb"));
    EXPECT_FALSE(fs::exists(m_dir / "scratch" / "first.tdb"));
    EXPECT_EQ(PackedNames(m_dir / "second.fmj"), (std::vector<std::string>{"second.tdb", "second.mco", "second.mst"}));
    job.Discard();
    // A copy under another name opens under that name.
    fs::copy_file(fmj, m_dir / "renamed.fmj");
    ASSERT_TRUE(job.Open(m_dir / "renamed.fmj"));
    EXPECT_TRUE(fs::exists(m_dir / "scratch" / "renamed.tdb"));
    EXPECT_TRUE(fs::exists(m_dir / "scratch" / "renamed.mco"));
}

TEST_F(JobFileTest, OpeningAnOldJobAddsTheNewerColumns) {
    const fs::path tdb = m_dir / "old" / "old.tdb";
    fs::create_directories(tdb.parent_path());
    {
        stationdb::Database db(tdb, stationdb::OpenMode::Create);
        db.Exec(std::string(stationdb::kCreateAmData) + std::string(stationdb::kCreateTv6Data) + std::string(stationdb::kCreateParty) +
                std::string(stationdb::kCreateInformation) + std::string(stationdb::kCreateFmData) +
                "ALTER TABLE fm_data DROP COLUMN vert_erp; ALTER TABLE fm_data DROP COLUMN asd_service;"
                "ALTER TABLE fm_data DROP COLUMN facility_id;"
                "INSERT INTO information (CDate, Comments, Source, TChan, TLat, TLon, TClass, TIClass,"
                " OffSetN, OffSetW, ScanRange) VALUES ('2003-01-02 00:00:00', 'old', 'm', 221, 41, 96,"
                " 'A', 'A', 0, 0, 150);");
    }
    ASSERT_TRUE(container::CompressFiles(m_dir / "old.fmj", {tdb}));
    JobFile job(m_dir / "scratch");
    ASSERT_TRUE(job.Open(m_dir / "old.fmj"));
    stationdb::Database db(job.Paths().tdb, stationdb::OpenMode::ReadOnly);
    for (const char* column : {"vert_erp", "asd_service", "facility_id"}) EXPECT_TRUE(db.HasColumn("fm_data", column));
    EXPECT_EQ(job.Header().ScanRange, 150);
}

TEST_F(JobFileTest, DamagedFileIsRefusedAndLeavesNothing) {
    std::ofstream(m_dir / "bad.fmj", std::ios::binary) << "not a container";
    JobFile job(m_dir / "scratch");
    EXPECT_FALSE(job.Open(m_dir / "bad.fmj"));
    EXPECT_FALSE(job.IsOpen());
    EXPECT_EQ(m_prompt.Texts(), std::vector<std::string>{"Invalid or Damaged Jobfile!"});
    EXPECT_TRUE(fs::is_empty(m_dir / "scratch"));
}

}  // namespace
}  // namespace qarvel::jobs
