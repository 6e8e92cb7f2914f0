#include "shell/startup.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QSettings>
#include <QStandardPaths>

#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <system_error>

#include "core/error_trap.h"
#include "core/prompt.h"
#include "geodesy/map_constants.h"
#include "shell/local_database.h"
#include "shell/settings.h"
#include "shell/update_file.h"
#include "spacing/min_sep.h"
#include "stationdb/master_package.h"

namespace qarvel::shell {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kModule = "modFMdb";
constexpr std::string_view kAlreadyRunning = "Qarvel is already running!";
constexpr std::string_view kResourcesNotFound = "Resources Directory Not Found!";
constexpr std::string_view kAttemptToLocate = "Attempt to Locate?";
constexpr std::string_view kConfigurationError = "Program Configuration Error";
constexpr std::string_view kGpsActive = "Cannot shutdown while GPS is Active.";
constexpr std::string_view kStopGps = "Stop the GPS Utility to complete the shutdown process.";

fs::path ToPath(const QString& text) { return fs::path(text.toStdString()); }

std::string LowerExtension(const fs::path& file) {
    std::string ext = file.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ext;
}

// The command line's file: the first argument, without the quotes a shell
// association may leave round it.
std::string CommandLineFile(const std::vector<std::string>& arguments) {
    if (arguments.empty()) return {};
    std::string file = arguments.front();
    if (file.size() >= 2 && file.front() == '"' && file.back() == '"') {
        file = file.substr(1, file.size() - 2);
    }
    return file;
}

fs::path TestFmdLoader(const fs::path& fmd, const fs::path& scratch,
                       const stationdb::FmdCheckOptions& options) {
    fs::path unpacked;
    std::string creationDate;
    if (!stationdb::testFMD(fmd, scratch, options, &unpacked, &creationDate)) return {};
    return unpacked;
}

}  // namespace

std::string_view StartupStepName(StartupStep step) {
    static constexpr std::string_view names[] = {
        "ArmErrorTrap",   "SingleInstance",     "DatabaseRuntime", "CreateForms",
        "SpaceCheck",     "SettingsSection",    "ScratchFolders",  "VersionText",
        "ToolbarKeys",    "LoadSettings",       "UpdateSettings",  "ResourcesDirectory",
        "HelpFile",       "ProgramTables",      "LocalDatabase",   "CommandLine",
        "LoadOnStartup",  "ShowMainWindow"};
    const auto index = static_cast<std::size_t>(step) - 1;
    return index < std::size(names) ? names[index] : std::string_view("?");
}

bool StartupResult::Did(StartupStep step) const {
    return std::find(stepsDone.begin(), stepsDone.end(), step) != stepsDone.end();
}

fs::path DefaultDataFolder() {
    if (QCoreApplication::instance() != nullptr) {
        const QString programFolder = QCoreApplication::applicationDirPath();
        if (QFileInfo(programFolder).isWritable()) return ToPath(programFolder);
    }
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return ToPath(data) / "Qarvel";
}

StartupEnvironment SystemEnvironment() {
    StartupEnvironment env;
    env.tempFolder = ToPath(QDir::tempPath());
    env.dataFolder = DefaultDataFolder();
    QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (runtime.isEmpty()) runtime = QDir::tempPath();
    env.lockFilePath = ToPath(runtime) / "qarvel.lock";
    env.sqliteVersion = sqlite3_libversion();
    return env;
}

bool DatabaseRuntimeOk(std::string_view runtimeVersion) {
    return !runtimeVersion.empty() && runtimeVersion >= kMinimumSqliteVersion;
}

std::string DatabaseRuntimeMessage() {
    return "SQLite " + std::string(kMinimumSqliteVersion) +
           " or later must be installed for Qarvel to run. " +
           "Please refer to installation instructions.";
}

bool ValidResourcesDirectory(const fs::path& folder) {
    std::error_code ec;
    return !folder.empty() && fs::is_directory(folder, ec) &&
           fs::is_regular_file(folder / kResourceMarker, ec);
}

bool LoadMasterDatabase(ProgramContext& context, const fs::path& fmd, const MasterLoader& loader,
                        int todayDayCode) {
    return core::Trapped(kModule, ":LoadMasterDatabase:", false, [&] {
        context.pendingOperation = kUnPackDatabase;
        stationdb::FmdCheckOptions options;
        options.pendingOperation = context.pendingOperation;
        options.todayDayCode = todayDayCode;
        fs::path unpacked;
        try {
            unpacked = loader ? loader(fmd, context.MasterScratch(), options)
                              : TestFmdLoader(fmd, context.MasterScratch(), options);
        } catch (...) {
            context.pendingOperation = kNoOp;
            throw;
        }
        context.pendingOperation = kNoOp;
        if (unpacked.empty()) return false;
        context.masterPackage = fmd;
        context.masterDatabase = unpacked;
        return true;
    });
}

StartupSequence::StartupSequence(ProgramContext& context, StartupEnvironment environment)
    : m_context(context), m_env(std::move(environment)) {}

StartupSequence::~StartupSequence() = default;

bool StartupSequence::HoldsInstanceLock() const { return m_lock && m_lock->isLocked(); }

StartupResult StartupSequence::Run() {
    m_result = StartupResult{};
    const bool finished = core::Trapped(kModule, ":Main:", false, [&] { return RunSteps(); });
    if (!finished && !m_result.endedAt) m_result.endedAt = m_current;
    m_result.showMainWindow = finished;
    return m_result;
}

void StartupSequence::Done(StartupStep step) { m_result.stepsDone.push_back(step); }

bool StartupSequence::End(StartupStep step) {
    m_result.endedAt = step;
    return false;
}

bool StartupSequence::RunSteps() {
    if (m_env.settings == nullptr) throw core::TrapError("no settings store");
    if (m_env.tempFolder.empty()) throw core::TrapError("no temporary folder");
    ProgramContext& ctx = m_context;
    QSettings& store = *m_env.settings;
    ctx.tempFolder = m_env.tempFolder;
    ctx.dataFolder = m_env.dataFolder;
    Done(StartupStep::ArmErrorTrap);  // Run() holds the trap

    m_current = StartupStep::SingleInstance;
    if (!AcquireInstanceLock()) return End(m_current);
    Done(m_current);

    m_current = StartupStep::DatabaseRuntime;
    if (!CheckDatabaseRuntime()) return End(m_current);
    Done(m_current);

    m_current = StartupStep::CreateForms;
    if (m_env.createForms) m_env.createForms();
    Done(m_current);

    m_current = StartupStep::SpaceCheck;
    if (!StartupSpaceCheck(ctx.tempFolder, m_env.freeSpace, m_env.volumeName)) return End(m_current);
    Done(m_current);

    // The settings section is the constant kSettingsSection used by every
    // read and write of the store.
    Done(StartupStep::SettingsSection);

    m_current = StartupStep::ScratchFolders;
    RecreateScratchFolder(ctx.MasterScratch());
    RecreateScratchFolder(ctx.JobScratch());
    Done(m_current);

    ctx.versionText = VersionText(m_env.version);
    Done(StartupStep::VersionText);
    ctx.toolbarKeys = ToolbarImageKeys();
    Done(StartupStep::ToolbarKeys);

    m_current = StartupStep::LoadSettings;
    geodesy::InitMapConstants();
    LoadSettings(store, ctx);
    Done(m_current);

    m_current = StartupStep::UpdateSettings;
    std::error_code ec;
    if (fs::exists(UpdateFilePath(ctx), ec)) {
        UpdateRegSettings(store, ctx);
        Done(m_current);
    }

    m_current = StartupStep::ResourcesDirectory;
    if (!LocateResources()) return End(m_current);
    Done(m_current);

    ctx.helpFile = JoinPath(ctx.settings.gToolDIR, "Qarvel.chm");
    Done(StartupStep::HelpFile);

    m_current = StartupStep::ProgramTables;
    spacing::LoadMinSepTables();
    BuildCatalogues(store, ctx);
    Done(m_current);

    m_current = StartupStep::LocalDatabase;
    OpenLocalDatabase(ctx);
    Done(m_current);

    m_current = StartupStep::CommandLine;
    if (!RouteCommandLine()) LoadOnStartup();

    Done(StartupStep::ShowMainWindow);
    return true;
}

bool StartupSequence::AcquireInstanceLock() {
    std::error_code ec;
    fs::create_directories(m_env.lockFilePath.parent_path(), ec);
    m_lock = std::make_unique<QLockFile>(QString::fromStdString(m_env.lockFilePath.string()));
    // A lock left by a program that died is taken over: QLockFile checks
    // whether its owner still runs. Age alone never makes it stale, since
    // the program may run for days.
    m_lock->setStaleLockTime(0);
    if (m_lock->tryLock(0)) return true;
    m_lock.reset();
    core::ShowPrompt(std::string(kAlreadyRunning), {}, core::PromptButtons::Ok,
                     core::PromptIcon::Critical);
    return false;
}

bool StartupSequence::CheckDatabaseRuntime() {
    if (DatabaseRuntimeOk(m_env.sqliteVersion)) return true;
    core::ShowPrompt(DatabaseRuntimeMessage(), {}, core::PromptButtons::Ok,
                     core::PromptIcon::Critical);
    return false;
}

bool StartupSequence::LocateResources() {
    ProgramSettings& settings = m_context.settings;
    while (!ValidResourcesDirectory(fs::path(settings.gToolDIR))) {
        const core::PromptAnswer answer = core::ShowPrompt(
            std::string(kResourcesNotFound) + "\n" + std::string(kAttemptToLocate),
            std::string(kConfigurationError), core::PromptButtons::YesNo,
            core::PromptIcon::Critical);
        if (answer != core::PromptAnswer::Yes || !m_env.pickFolder) return false;
        // A cancelled picker leaves the folder as it was and the question is
        // asked again.
        if (auto chosen = m_env.pickFolder(fs::path(settings.gToolDIR))) {
            settings.gToolDIR = chosen->generic_string();
        }
    }
    return true;
}

// True when the command line named an existing ".fmj" or ".fmd" file and it
// was handed on; otherwise start-up goes on to gDBoptLoadOnStartup.
bool StartupSequence::RouteCommandLine() {
    const std::string file = CommandLineFile(m_env.arguments);
    if (file.empty()) return false;
    std::error_code ec;
    const fs::path path(file);
    if (!fs::is_regular_file(path, ec)) {
        m_result.commandLine = CommandLineOutcome::MissingFile;
        return false;
    }
    const std::string ext = LowerExtension(path);
    if (ext == ".fmj") {
        const bool opened = m_env.openJob && m_env.openJob(path);
        m_result.commandLine = opened ? CommandLineOutcome::OpenedJob : CommandLineOutcome::JobNotOpened;
    } else if (ext == ".fmd") {
        const bool loaded = LoadMasterDatabase(m_context, path, m_env.loadMaster, m_env.todayDayCode);
        m_result.commandLine = loaded ? CommandLineOutcome::LoadedMaster : CommandLineOutcome::MasterNotLoaded;
    } else {
        m_result.commandLine = CommandLineOutcome::OtherFile;
        return false;
    }
    Done(StartupStep::CommandLine);
    return true;
}

void StartupSequence::LoadOnStartup() {
    m_current = StartupStep::LoadOnStartup;
    const ProgramSettings& settings = m_context.settings;
    if (!settings.gDBoptLoadOnStartup || settings.gDataFile.empty()) return;
    const fs::path fmd(JoinPath(settings.gDataDIR, settings.gDataFile));
    if (LoadMasterDatabase(m_context, fmd, m_env.loadMaster, m_env.todayDayCode)) Done(m_current);
}

bool ShutdownProgram(QSettings& store, ProgramContext& context, bool gpsActive) {
    return core::Trapped(kModule, ":ShutdownProgram:", false, [&] {
        SaveSettings(store, context);
        if (gpsActive) {
            core::ShowPrompt(std::string(kGpsActive) + "\n" + std::string(kStopGps), {},
                             core::PromptButtons::Ok, core::PromptIcon::Warning);
            return false;
        }
        StoreLocalDatabase(context);
        // Without a temporary folder the scratch paths would be relative to
        // the working folder: never delete those.
        if (!context.tempFolder.empty()) {
            DeleteFolderForce(context.MasterScratch());
            DeleteFolderForce(context.JobScratch());
        }
        return true;
    });
}

}  // namespace qarvel::shell
