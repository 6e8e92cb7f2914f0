#pragma once
// The local database: the user's own edited stations and markers, kept in the
// resources directory as "LocalData.fmd", a packed container holding one
// database the way a master ".fmd" does. It is worked on unpacked in the job
// scratch folder and packed back at shutdown.

#include <filesystem>
#include <string>
#include <string_view>

namespace qarvel::shell {

struct ProgramContext;

inline constexpr std::string_view kLocalDatabaseName = "LocalData.fmd";

// Unpacks the local database `path` into `scratchFolder` under a fresh name
// ending in ".fdb" and checks that it opens for reading and writing with a
// `fm_data` table. Returns its connection text, which on this platform is the
// path of the working copy, or "" when it cannot be opened (nothing is left
// behind then).
std::string openLocaldb(const std::filesystem::path& path,
                        const std::filesystem::path& scratchFolder);

// Creates a new empty database with the job schema under a temporary name
// ending in ".fdb" in scratchFolder; its path, or empty on failure.
std::filesystem::path CreateEmptyLocalDatabase(const std::filesystem::path& scratchFolder);

// Start-up's step: opens gToolDIR/"LocalData.fmd" or, when that yields no
// connection, a new empty one; sets context.localPackage and
// context.localDatabase. False when neither worked.
bool OpenLocalDatabase(ProgramContext& context);

// Packs the working copy back into context.localPackage. The file it
// replaces is first copied beside it with the extension ".bak"; a failure
// leaves the previous package in place. True when there was nothing to store.
bool StoreLocalDatabase(const ProgramContext& context);

}  // namespace qarvel::shell
