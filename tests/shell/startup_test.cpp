#include "shell/startup.h"

#include <gtest/gtest.h>

#include <QLockFile>
#include <QSettings>
#include <QTemporaryDir>

#include <fstream>

#include "core/error_trap.h"
#include "core/prompt.h"
#include "shell/local_database.h"
#include "shell/settings.h"
#include "stationdb/database.h"
#include "stationdb/day_code.h"
#include "stationdb/master_package.h"
#include "stationdb/schema.h"

namespace qarvel::shell {
namespace {

namespace fs = std::filesystem;
using core::PromptAnswer;

void Touch(const fs::path& file) { std::ofstream(file) << "x"; }

int MarkerCount(const fs::path& db) {
    stationdb::Database database(db, stationdb::OpenMode::ReadOnly);
    auto stmt = database.Prepare("SELECT COUNT(*) FROM markers");
    stmt.Step();
    return stmt.GetInt(0);
}

void AddMarker(const fs::path& db, const char* name) {
    stationdb::Database database(db, stationdb::OpenMode::ReadWrite);
    database.Run("INSERT INTO markers (name, jdate, lat, lon) VALUES (?1, '24001', 1, 2)", name);
}

// A program installation in a temporary folder: data folder with its
// Resources, a temporary folder, a settings file and a lock file, and every
// message recorded.
class StartupTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_dir.isValid());
        fs::create_directories(Resources());
        fs::create_directories(Root() / "tmp");
        Touch(Resources() / "stmapH.dat");
        m_store = OpenSettingsFile(Root() / "settings.ini");
        m_env.tempFolder = Root() / "tmp";
        m_env.dataFolder = Root() / "program";
        m_env.lockFilePath = Root() / "qarvel.lock";
        m_env.settings = m_store.get();
        m_env.sqliteVersion = "3.40.1";
        m_env.freeSpace = [](const fs::path&) { return std::int64_t{4096}; };
        m_env.volumeName = [](const fs::path&) { return std::string("/"); };
        m_env.version = VersionRecord{1, 2, 3};
    }

    fs::path Root() const { return fs::path(m_dir.path().toStdString()); }
    fs::path Resources() const { return Root() / "program" / "Resources"; }
    void Put(const char* key, const std::string& value) {
        m_store->setValue(QStringLiteral("Standard/") + QString::fromLatin1(key),
                          QString::fromStdString(value));
    }
    StartupResult RunStartup() {
        StartupSequence sequence(m_context, m_env);
        return sequence.Run();
    }
    // A real packed database: a job-schema database with `markers` markers.
    fs::path PackedDatabase(const fs::path& fmd, int markers) {
        const fs::path fdb = Root() / "build.fdb";
        fs::remove(fdb);
        EXPECT_TRUE(stationdb::CreateJobDatabase(fdb));
        for (int i = 0; i < markers; ++i) AddMarker(fdb, "tower");
        EXPECT_TRUE(stationdb::PackMasterDatabase(fdb, fmd));
        fs::remove(fdb);
        return fmd;
    }

    QTemporaryDir m_dir;
    std::unique_ptr<QSettings> m_store;
    StartupEnvironment m_env;
    ProgramContext m_context;
    core::RecordingPrompt m_prompt;
    core::ScopedPrompt m_scopedPrompt{m_prompt};
    core::RecordingErrorSink m_errors;
    core::ScopedErrorSink m_scopedErrors{m_errors};
};

TEST_F(StartupTest, WholeSequenceRunsHeadless) {
    // Leftovers of an earlier run in the scratch folders.
    fs::create_directories(Root() / "tmp" / "_3fmjs");
    Touch(Root() / "tmp" / "_3fmjs" / "old.tdb");
    Touch(Root() / "tmp" / "_3fmjs" / "stray.txt");
    bool formsCreated = false;
    m_env.createForms = [&] { formsCreated = true; };

    const StartupResult result = RunStartup();

    using S = StartupStep;
    const std::vector<StartupStep> expected{
        S::ArmErrorTrap,  S::SingleInstance, S::DatabaseRuntime, S::CreateForms,
        S::SpaceCheck,    S::SettingsSection, S::ScratchFolders, S::VersionText,
        S::ToolbarKeys,   S::LoadSettings,   S::ResourcesDirectory, S::HelpFile,
        S::ProgramTables, S::LocalDatabase,  S::ShowMainWindow};
    EXPECT_EQ(result.stepsDone, expected);
    EXPECT_TRUE(result.showMainWindow);
    EXPECT_FALSE(result.endedAt.has_value());
    EXPECT_TRUE(formsCreated);
    EXPECT_TRUE(m_prompt.Messages().empty());
    EXPECT_TRUE(m_errors.Reports().empty());

    EXPECT_TRUE(fs::is_directory(m_context.MasterScratch()));
    EXPECT_FALSE(fs::exists(Root() / "tmp" / "_3fmjs" / "stray.txt"));
    EXPECT_FALSE(fs::exists(Root() / "tmp" / "_3fmjs" / "old.tdb"));
    EXPECT_EQ(m_context.versionText, "1.2.3");
    EXPECT_EQ(m_context.toolbarKeys[12], "SaveJob");
    EXPECT_EQ(m_context.settings.gToolDIR, Resources().generic_string());
    EXPECT_EQ(m_context.helpFile, Resources().generic_string() + "/Qarvel.chm");
    EXPECT_TRUE(m_context.stationGrid.built);
    EXPECT_TRUE(m_context.jobGrid.built);
    EXPECT_EQ(m_context.pendingOperation, "NoOp");
    // No LocalData.fmd yet: a new empty job-schema database in the job scratch folder.
    EXPECT_EQ(m_context.localDatabase.parent_path(), m_context.JobScratch());
    EXPECT_EQ(m_context.localDatabase.extension(), ".fdb");
    EXPECT_EQ(MarkerCount(m_context.localDatabase), 0);
    EXPECT_EQ(m_context.localPackage, Resources() / "LocalData.fmd");
}

TEST_F(StartupTest, SecondInstanceEnds) {
    QLockFile other(QString::fromStdString(m_env.lockFilePath.string()));
    ASSERT_TRUE(other.tryLock(0));
    StartupSequence second(m_context, m_env);
    const StartupResult result = second.Run();
    EXPECT_FALSE(result.showMainWindow);
    EXPECT_EQ(result.endedAt, StartupStep::SingleInstance);
    ASSERT_EQ(m_prompt.Texts(), std::vector<std::string>{"Qarvel is already running!"});
    EXPECT_FALSE(second.HoldsInstanceLock());
    EXPECT_FALSE(fs::exists(m_context.MasterScratch()));
}

TEST_F(StartupTest, LockIsHeldWhileTheSequenceLives) {
    StartupSequence first(m_context, m_env);
    ASSERT_TRUE(first.Run().showMainWindow);
    EXPECT_TRUE(first.HoldsInstanceLock());
    ProgramContext otherContext;
    StartupSequence second(otherContext, m_env);
    EXPECT_EQ(second.Run().endedAt, StartupStep::SingleInstance);
}

TEST_F(StartupTest, LockLeftByADeadProgramIsTakenOver) {
    // pid, application name, host name: a process that cannot exist.
    std::ofstream(m_env.lockFilePath) << "2147483646\nqarvel\n\n";
    EXPECT_TRUE(RunStartup().showMainWindow);
    EXPECT_TRUE(m_prompt.Messages().empty());
}

TEST_F(StartupTest, OldDatabaseRuntimeEnds) {
    m_env.sqliteVersion = "3.30.1";
    const StartupResult result = RunStartup();
    EXPECT_EQ(result.endedAt, StartupStep::DatabaseRuntime);
    ASSERT_EQ(m_prompt.Texts().size(), 1U);
    EXPECT_EQ(m_prompt.Texts()[0],
              "SQLite 3.31 or later must be installed for Qarvel to run. "
              "Please refer to installation instructions.");
}

TEST(DatabaseRuntime, ComparedAsText) {
    EXPECT_TRUE(DatabaseRuntimeOk("3.31"));
    EXPECT_TRUE(DatabaseRuntimeOk("3.40.1"));
    EXPECT_TRUE(DatabaseRuntimeOk("3.9.0"));  // text order, kept on purpose
    EXPECT_FALSE(DatabaseRuntimeOk("3.30.1"));
    EXPECT_FALSE(DatabaseRuntimeOk("3.100.0"));
    EXPECT_FALSE(DatabaseRuntimeOk(""));
}

TEST_F(StartupTest, TooLittleSpaceEndsBeforeTheScratchFolders) {
    m_env.freeSpace = [](const fs::path&) { return std::int64_t{99}; };
    const StartupResult result = RunStartup();
    EXPECT_EQ(result.endedAt, StartupStep::SpaceCheck);
    EXPECT_FALSE(fs::exists(Root() / "tmp" / "_4fmds"));
    EXPECT_EQ(m_prompt.Texts(),
              std::vector<std::string>{"There is not enough free space on /: to run this program!"});
}

TEST_F(StartupTest, LowSpaceWarnsAndContinues) {
    m_env.freeSpace = [](const fs::path&) { return std::int64_t{100}; };
    const StartupResult result = RunStartup();
    EXPECT_TRUE(result.showMainWindow);
    EXPECT_EQ(m_prompt.Texts(), std::vector<std::string>{"/: is running very low on free space!"});
}

TEST_F(StartupTest, MissingResourcesLocatedThroughThePicker) {
    const fs::path elsewhere = Root() / "moved";
    fs::create_directories(elsewhere);
    Touch(elsewhere / "stmapH.dat");
    Put("gToolDIR", (Root() / "gone").generic_string());
    std::vector<fs::path> offered;
    int calls = 0;
    m_env.pickFolder = [&](const fs::path& start) -> std::optional<fs::path> {
        offered.push_back(start);
        if (++calls == 1) return std::nullopt;  // cancelled: asked again
        return elsewhere;
    };
    const StartupResult result = RunStartup();
    EXPECT_TRUE(result.showMainWindow);
    ASSERT_EQ(m_prompt.Messages().size(), 2U);
    const core::PromptMessage& message = m_prompt.Messages()[0];
    EXPECT_EQ(message.text, "Resources Directory Not Found!\nAttempt to Locate?");
    EXPECT_EQ(message.title, "Program Configuration Error");
    EXPECT_EQ(message.buttons, core::PromptButtons::YesNo);
    EXPECT_EQ(offered.size(), 2U);
    EXPECT_EQ(m_context.settings.gToolDIR, elsewhere.generic_string());
    EXPECT_EQ(m_context.helpFile, elsewhere.generic_string() + "/Qarvel.chm");
}

TEST_F(StartupTest, RefusingToLocateResourcesEnds) {
    fs::remove(Resources() / "stmapH.dat");  // folder there, marker missing
    m_prompt.QueueAnswer(PromptAnswer::No);
    m_env.pickFolder = [](const fs::path&) -> std::optional<fs::path> {
        ADD_FAILURE() << "picker opened after No";
        return std::nullopt;
    };
    const StartupResult result = RunStartup();
    EXPECT_EQ(result.endedAt, StartupStep::ResourcesDirectory);
    EXPECT_FALSE(result.Did(StartupStep::ProgramTables));
}

TEST_F(StartupTest, UpdateFileIsRecorded) {
    fs::create_directories(Root() / "program" / "Database");
    std::ofstream(Root() / "program" / "Database" / "QarvelUpdate.txt")
        << "Qarvel Update File\r\n00042\r\n";
    const StartupResult result = RunStartup();
    EXPECT_TRUE(result.Did(StartupStep::UpdateSettings));
    EXPECT_EQ(m_context.settings.LastUpdate, 42);
    EXPECT_EQ(m_store->value(QStringLiteral("Standard/LastUpdate")).toString(), "42");
}

TEST_F(StartupTest, CommandLineJobGoesToOpenJobAndSkipsLoadOnStartup) {
    const fs::path job = Root() / "site.FMJ";
    Touch(job);
    Put("gDBoptLoadOnStartup", "1");
    Put("gDataFile", "east.fmd");
    std::vector<fs::path> opened;
    m_env.openJob = [&](const fs::path& p) { opened.push_back(p); return true; };
    m_env.loadMaster = [](const fs::path&, const fs::path&, const stationdb::FmdCheckOptions&) {
        ADD_FAILURE() << "master loaded although a job was named";
        return fs::path();
    };
    m_env.arguments = {"\"" + job.string() + "\""};
    const StartupResult result = RunStartup();
    EXPECT_EQ(opened, std::vector<fs::path>{job});
    EXPECT_EQ(result.commandLine, CommandLineOutcome::OpenedJob);
    EXPECT_TRUE(result.Did(StartupStep::CommandLine));
    EXPECT_FALSE(result.Did(StartupStep::LoadOnStartup));
    EXPECT_TRUE(result.showMainWindow);
}

TEST_F(StartupTest, CommandLineMasterIsUnpackedUnderThePendingOperation) {
    const fs::path fmd = Root() / "east.fmd";
    Touch(fmd);
    std::string pendingDuring;
    std::string optionDuring;
    m_env.loadMaster = [&](const fs::path& file, const fs::path& scratch,
                           const stationdb::FmdCheckOptions& options) {
        pendingDuring = m_context.pendingOperation;
        optionDuring = options.pendingOperation;
        EXPECT_EQ(file, fmd);
        EXPECT_EQ(scratch, m_context.MasterScratch());
        return scratch / "tmp1.fdb";
    };
    m_env.arguments = {fmd.string()};
    const StartupResult result = RunStartup();
    EXPECT_EQ(result.commandLine, CommandLineOutcome::LoadedMaster);
    EXPECT_EQ(pendingDuring, "UnPackDatabase");
    EXPECT_EQ(optionDuring, "UnPackDatabase");
    EXPECT_EQ(m_context.pendingOperation, "NoOp");
    EXPECT_EQ(m_context.masterPackage, fmd);
    EXPECT_EQ(m_context.masterDatabase, m_context.MasterScratch() / "tmp1.fdb");
    EXPECT_TRUE(result.showMainWindow);
}

TEST_F(StartupTest, MissingCommandLineFileFallsThroughToLoadOnStartup) {
    Put("gDBoptLoadOnStartup", "1");
    Put("gDataDIR", "/srv/fm");
    Put("gDataFile", "east.fmd");
    std::vector<fs::path> loaded;
    m_env.loadMaster = [&](const fs::path& file, const fs::path& scratch,
                           const stationdb::FmdCheckOptions&) {
        loaded.push_back(file);
        return scratch / "tmp2.fdb";
    };
    m_env.arguments = {(Root() / "no such job.fmj").string()};
    const StartupResult result = RunStartup();
    EXPECT_EQ(result.commandLine, CommandLineOutcome::MissingFile);
    EXPECT_FALSE(result.Did(StartupStep::CommandLine));
    EXPECT_TRUE(result.Did(StartupStep::LoadOnStartup));
    EXPECT_EQ(loaded, std::vector<fs::path>{fs::path("/srv/fm/east.fmd")});
    EXPECT_TRUE(result.showMainWindow);
}

TEST_F(StartupTest, LoadOnStartupOffLoadsNothing) {
    Put("gDBoptLoadOnStartup", "True");  // only "1" sets an option flag
    Put("gDataFile", "east.fmd");
    m_env.loadMaster = [](const fs::path&, const fs::path&, const stationdb::FmdCheckOptions&) {
        ADD_FAILURE() << "loaded although the option is off";
        return fs::path();
    };
    EXPECT_FALSE(RunStartup().Did(StartupStep::LoadOnStartup));
}

TEST_F(StartupTest, RealMasterPackageFromTheCommandLine) {
    stationdb::MasterHeader header;
    header.creation_date = stationdb::DayCodeText(stationdb::TodayDayCode());
    header.creation_size = "1";
    header.source = "test";
    const fs::path fdb = Root() / "east.fdb";
    ASSERT_TRUE(stationdb::CreateMasterDatabase(fdb, header));
    const fs::path fmd = Root() / "east.fmd";
    ASSERT_TRUE(stationdb::PackMasterDatabase(fdb, fmd));
    m_env.arguments = {fmd.string()};
    const StartupResult result = RunStartup();
    EXPECT_EQ(result.commandLine, CommandLineOutcome::LoadedMaster);
    EXPECT_EQ(m_context.masterDatabase.parent_path(), m_context.MasterScratch());
    EXPECT_EQ(m_context.masterDatabase.extension(), ".fdb");
    EXPECT_TRUE(fs::is_regular_file(m_context.masterDatabase));
    EXPECT_TRUE(m_prompt.Messages().empty());
}

TEST_F(StartupTest, LocalDatabaseRoundTripKeepsABackup) {
    const fs::path package = PackedDatabase(Resources() / "LocalData.fmd", 2);
    {
        StartupSequence sequence(m_context, m_env);
        ASSERT_TRUE(sequence.Run().showMainWindow);
        EXPECT_EQ(m_context.localDatabase.parent_path(), m_context.JobScratch());
        EXPECT_EQ(MarkerCount(m_context.localDatabase), 2);
        AddMarker(m_context.localDatabase, "new tower");
        ASSERT_TRUE(ShutdownProgram(*m_store, m_context, false));
    }
    EXPECT_FALSE(fs::exists(m_context.MasterScratch()));
    EXPECT_FALSE(fs::exists(m_context.JobScratch()));
    const fs::path check = Root() / "check";
    fs::create_directories(check);
    EXPECT_EQ(MarkerCount(stationdb::UnpackMasterDatabase(package, check)), 3);
    EXPECT_EQ(MarkerCount(stationdb::UnpackMasterDatabase(Resources() / "LocalData.bak", check)), 2);
}

TEST_F(StartupTest, DamagedLocalDatabaseIsReplacedByAnEmptyOne) {
    std::ofstream(Resources() / "LocalData.fmd") << "not a container";
    ASSERT_TRUE(RunStartup().showMainWindow);
    EXPECT_EQ(m_context.localDatabase.parent_path(), m_context.JobScratch());
    EXPECT_EQ(MarkerCount(m_context.localDatabase), 0);
    std::ifstream in(Resources() / "LocalData.fmd");
    std::string text;
    std::getline(in, text);
    EXPECT_EQ(text, "not a container");  // left as it was until shutdown
}

TEST_F(StartupTest, ShutdownWhileGpsIsActiveStops) {
    ASSERT_TRUE(RunStartup().showMainWindow);
    m_context.settings.gMapCityCount = 7;
    EXPECT_FALSE(ShutdownProgram(*m_store, m_context, true));
    EXPECT_EQ(m_prompt.Texts(),
              std::vector<std::string>{"Cannot shutdown while GPS is Active.\n"
                                       "Stop the GPS Utility to complete the shutdown process."});
    EXPECT_EQ(m_store->value(QStringLiteral("Standard/gMapCityCount")).toString(), "7");
    EXPECT_TRUE(fs::is_directory(m_context.JobScratch()));
    EXPECT_FALSE(fs::exists(Resources() / "LocalData.fmd"));
}

TEST_F(StartupTest, NoSettingsStoreIsTrappedAndEnds) {
    m_env.settings = nullptr;
    const StartupResult result = RunStartup();
    EXPECT_FALSE(result.showMainWindow);
    ASSERT_EQ(m_errors.Reports().size(), 1U);
    EXPECT_EQ(m_errors.Reports()[0].routine, ":Main:");
}

}  // namespace
}  // namespace qarvel::shell
