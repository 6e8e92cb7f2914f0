#pragma once
// The program's start-up (`Main`) and orderly end (`ShutdownProgram`).
//
// The start-up runs its steps in a fixed order and tells the caller what
// happened: which steps ran, and whether to show the main window or end.
// Everything that touches the platform (the settings store, the lock file,
// the temporary folder, free space, the folder picker, the command line, the
// main window's OpenJob, the progress window that unpacks a master database)
// comes in through StartupEnvironment, so the whole sequence runs headless in
// tests with a RecordingPrompt answering the messages.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "shell/program_context.h"
#include "shell/scratch.h"
#include "stationdb/validation.h"

class QLockFile;
class QSettings;

namespace qarvel::shell {

// The start-up steps, numbered in the order they run.
enum class StartupStep {
    ArmErrorTrap = 1,
    SingleInstance = 2,
    DatabaseRuntime = 3,
    CreateForms = 4,
    SpaceCheck = 5,
    SettingsSection = 6,
    ScratchFolders = 7,
    VersionText = 8,
    ToolbarKeys = 9,
    LoadSettings = 10,
    UpdateSettings = 11,     // listed only when an update file was present
    ResourcesDirectory = 12,
    HelpFile = 13,
    ProgramTables = 14,
    LocalDatabase = 15,
    CommandLine = 16,        // listed only when the command line named an existing file
    LoadOnStartup = 17,      // listed only when gDBoptLoadOnStartup loaded a master database
    ShowMainWindow = 18,
};
std::string_view StartupStepName(StartupStep step);

// What the command line led to.
enum class CommandLineOutcome {
    None,              // no file named
    MissingFile,       // the named file does not exist: ignored
    OtherFile,         // an existing file that is neither ".fmj" nor ".fmd": ignored
    OpenedJob,         // ".fmj" handed to the main window's OpenJob
    JobNotOpened,      // ".fmj" that OpenJob refused
    LoadedMaster,      // ".fmd" unpacked into the master scratch folder
    MasterNotLoaded,   // ".fmd" that could not be unpacked
};

struct StartupResult {
    bool showMainWindow = false;        // step 18 reached
    std::vector<StartupStep> stepsDone;  // in order
    std::optional<StartupStep> endedAt;  // the step that ended the program
    CommandLineOutcome commandLine = CommandLineOutcome::None;
    bool Did(StartupStep step) const;
};

// Asks the user for a folder, starting at `start`; nullopt when cancelled.
using FolderPicker = std::function<std::optional<std::filesystem::path>(const std::filesystem::path& start)>;
// The main window's OpenJob for a ".fmj" file; true when the job opened.
using JobOpener = std::function<bool(const std::filesystem::path& fmj)>;
// Runs the pending operation "UnPackDatabase": unpacks and checks the master
// database `fmd` into `scratch`, returning the unpacked ".fdb" (empty on
// failure). The desktop program shows its progress window around it.
using MasterLoader = std::function<std::filesystem::path(
    const std::filesystem::path& fmd, const std::filesystem::path& scratch,
    const stationdb::FmdCheckOptions& options)>;

struct StartupEnvironment {
    std::filesystem::path tempFolder;    // the system's temporary folder
    std::filesystem::path dataFolder;    // base of the default Database/Jobs/Resources
    std::filesystem::path lockFilePath;  // single-instance lock file
    QSettings* settings = nullptr;       // the user's settings store (required)
    std::vector<std::string> arguments;  // command line without the program name
    std::string sqliteVersion;           // the SQLite runtime's version text
    FreeSpaceProbe freeSpace = CheckFreeSpace;  // megabytes free on a path's volume
    VolumeNamer volumeName = VolumeName;
    FolderPicker pickFolder;             // none: "Attempt to Locate?" cannot be answered
    std::function<void()> createForms;   // makes the long-lived windows, not shown
    JobOpener openJob;                   // none: a ".fmj" on the command line is not opened
    MasterLoader loadMaster;             // none: the plain unpack-and-check (testFMD)
    VersionRecord version = ProgramVersion();
    int todayDayCode = 0;                // day code for the master's age check; 0: today
};

// The platform's values: QDir::tempPath(), DefaultDataFolder(), a lock file
// in the user's runtime folder, SQLite's runtime version, the real free-space
// probe. The caller adds the settings store, arguments and callbacks.
StartupEnvironment SystemEnvironment();

// The program's data folder: the program's own folder when it is writable,
// else the user's data location ("~/.local/share/Qarvel" on Linux).
std::filesystem::path DefaultDataFolder();

// The database runtime check. The version texts are compared as text, on
// purpose (so "3.9.0" counts as newer than "3.31").
inline constexpr std::string_view kMinimumSqliteVersion = "3.31";
bool DatabaseRuntimeOk(std::string_view runtimeVersion);
std::string DatabaseRuntimeMessage();

// A resources directory is valid when it exists and holds the state boundary
// file "stmapH.dat" that the map layers need.
inline constexpr std::string_view kResourceMarker = "stmapH.dat";
bool ValidResourcesDirectory(const std::filesystem::path& folder);

// Sets the pending operation to "UnPackDatabase", runs loader on fmd into
// the master scratch folder, clears the pending operation to "NoOp"; on
// success records the package and the unpacked database in the context.
bool LoadMasterDatabase(ProgramContext& context, const std::filesystem::path& fmd,
                        const MasterLoader& loader, int todayDayCode);

class StartupSequence {
public:
    StartupSequence(ProgramContext& context, StartupEnvironment environment);
    ~StartupSequence();  // releases the single-instance lock
    StartupSequence(const StartupSequence&) = delete;
    StartupSequence& operator=(const StartupSequence&) = delete;

    // `Main`: runs the steps in order. The program ends when the result says
    // so (showMainWindow false).
    StartupResult Run();

    // True while this sequence holds the single-instance lock.
    bool HoldsInstanceLock() const;

private:
    bool RunSteps();
    void Done(StartupStep step);
    bool End(StartupStep step);
    bool AcquireInstanceLock();
    bool CheckDatabaseRuntime();
    bool LocateResources();
    bool RouteCommandLine();
    void LoadOnStartup();

    ProgramContext& m_context;
    StartupEnvironment m_env;
    std::unique_ptr<QLockFile> m_lock;
    StartupResult m_result;
    StartupStep m_current = StartupStep::ArmErrorTrap;
};

// `ShutdownProgram`: saves the settings; while the GPS input is active shows
// "Cannot shutdown while GPS is Active." and a line break and "Stop the GPS
// Utility to complete the shutdown process." and stops there (returns false:
// the program keeps running). Otherwise stores the local database back
// (keeping the replaced package as ".bak") and deletes both scratch folders.
// The caller closes its own database connections first.
bool ShutdownProgram(QSettings& store, ProgramContext& context, bool gpsActive);

}  // namespace qarvel::shell
