#pragma once
// Scratch folders, job file names and free disk space.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace qarvel::shell {

// Empties a scratch folder of the program's working files: every file whose
// extension is "mco", "mst", "tdb" or "fdb" (any case) is made writable and
// deleted, and for a ".tdb" file its companions of the same base name with
// ".mst" and ".mco". Other files and subfolders are left alone. A missing
// folder is already clean. False when a file could not be deleted.
bool CleanUpDir(const std::filesystem::path& folder);

// Start-up's treatment of a scratch folder: CleanUpDir, delete the folder
// with everything in it (a missing or locked folder is not an error),
// create it again. False when the folder could not be created.
bool RecreateScratchFolder(const std::filesystem::path& folder);

// Deletes a folder with everything in it; errors are ignored.
void DeleteFolderForce(const std::filesystem::path& folder);

// The file names derived from a job path.
struct JobFileNames {
    std::filesystem::path folder;  // folder of the job file (may be empty)
    std::string baseName;          // file name without ".fmj"
    std::filesystem::path jobFile; // folder / baseName ".fmj"
    std::filesystem::path tdb;     // scratch / baseName ".tdb": working copy of the job database
    std::filesystem::path mst;     // scratch / baseName ".mst": the job's state lines
    std::filesystem::path mco;     // scratch / baseName ".mco": the job's county lines
};

// An empty file name becomes "noname.fmj"; a name not ending in ".fmj" (any
// case) gets ".fmj" appended. The companions are formed in jobScratch.
JobFileNames WorkOutFilenames(const std::filesystem::path& jobPath,
                              const std::filesystem::path& jobScratch);

// Free space available to the user, in whole megabytes (bytes / 1,048,576,
// truncated), on the volume that holds path; 0 on failure.
std::int64_t CheckFreeSpace(const std::filesystem::path& path);

// The name that messages give the volume holding path: its root path without
// a trailing separator and without a drive colon ("/" stays "/", "/mnt/data/"
// gives "/mnt/data", "C:/" gives "C"), so that a message reads
// "/: is running low on free space!" or "C: is running low on free space!".
// "" when the volume cannot be determined.
std::string VolumeName(const std::filesystem::path& path);

// The start-up free-space bands, in whole megabytes.
enum class SpaceBand {
    NotEnough,  // below 100: the program ends
    VeryLow,    // 100 to 149: warning, start-up continues
    Low,        // 150 to 199: warning, start-up continues
    Enough,     // 200 or more: no message
};
SpaceBand ClassifyFreeSpace(std::int64_t megabytes);
// The band's message for the named volume; "" for Enough.
std::string FreeSpaceMessage(SpaceBand band, const std::string& volume);

using FreeSpaceProbe = std::function<std::int64_t(const std::filesystem::path&)>;
using VolumeNamer = std::function<std::string(const std::filesystem::path&)>;

// The start-up free-space check on the volume of the temporary folder: shows
// the band's message (if any) and returns false when the program must end.
bool StartupSpaceCheck(const std::filesystem::path& tempFolder,
                       const FreeSpaceProbe& freeSpace = CheckFreeSpace,
                       const VolumeNamer& volumeName = VolumeName);

}  // namespace qarvel::shell
