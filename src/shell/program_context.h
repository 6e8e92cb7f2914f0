#pragma once
// The program context: the program-wide state that the start-up sequence
// fills and every part of the program reads (settings, scratch folders,
// version text, toolbar image keys, pending operation, recent files, the
// display-field catalogues, the local and master databases in use). One
// instance, made by the program's entry and passed down; no hidden globals.

#include <array>
#include <filesystem>
#include <string>
#include <string_view>

#include "shell/settings.h"
#include "stationdb/display_fields.h"

namespace qarvel::shell {

// Scratch folder names, directly inside the system's temporary folder.
inline constexpr std::string_view kMasterScratchName = "_4fmds";  // unpacked master database
inline constexpr std::string_view kJobScratchName = "_3fmjs";     // working copies of jobs

// Pending operations that the progress window (frmProcessing) runs.
inline constexpr std::string_view kNoOp = "NoOp";
inline constexpr std::string_view kUnPackDatabase = "UnPackDatabase";

inline constexpr std::size_t kToolbarKeyCount = 21;
// Toolbar image keys in index order.
const std::array<std::string, kToolbarKeyCount>& ToolbarImageKeys();

// The program's version record.
struct VersionRecord {
    int major = 0;
    int minor = 0;
    int revision = 0;
};
// The version this program was built as.
VersionRecord ProgramVersion();
// major "." minor "." revision ("0.1.0").
std::string VersionText(const VersionRecord& version);

struct ProgramContext {
    // Base of the default Database/Jobs/Resources folders.
    std::filesystem::path dataFolder;
    // The system's temporary folder; the scratch folders live directly in it.
    std::filesystem::path tempFolder;

    ProgramSettings settings;

    std::string versionText;
    std::array<std::string, kToolbarKeyCount> toolbarKeys{};
    std::string pendingOperation{kNoOp};
    std::array<RecentFileItem, kMruCount> recentFiles{};
    std::string helpFile;  // gToolDIR joined with "Qarvel.chm"

    stationdb::DisplayFieldCatalogue stationGrid = stationdb::StationGridDefaults();
    stationdb::DisplayFieldCatalogue jobGrid = stationdb::JobGridDefaults();

    // Working copy of the local database (in the job scratch folder) and the
    // packed file it came from / goes back to (gToolDIR/"LocalData.fmd").
    std::filesystem::path localDatabase;
    std::filesystem::path localPackage;

    // The master database in use: the packed ".fmd" and its unpacked ".fdb"
    // copy in the master scratch folder; empty when none is loaded.
    std::filesystem::path masterPackage;
    std::filesystem::path masterDatabase;

    std::filesystem::path MasterScratch() const { return tempFolder / kMasterScratchName; }
    std::filesystem::path JobScratch() const { return tempFolder / kJobScratchName; }
};

}  // namespace qarvel::shell
