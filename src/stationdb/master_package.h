#pragma once
// Master databases travel packed: a ".fmd" file is the packed container (see
// container.h) holding exactly one ".fdb" database. Before use it is unpacked
// into the scratch folder under a fresh temporary name ending in ".fdb".

#include "stationdb/validation.h"

#include <filesystem>
#include <functional>
#include <string>

namespace qarvel::stationdb {

// Shows the caption of a long operation ("Initializing Database").
using ProgressCaption = std::function<void(const std::string& caption)>;

// Packs the master database `fdb` (extension ".fdb") into the container `fmd`,
// written beside it under a temporary name and renamed into place.
bool PackMasterDatabase(const std::filesystem::path& fdb, const std::filesystem::path& fmd);

// Unpacks `fmd` into the existing `folder` under a fresh temporary name ending
// in ".fdb" (an existing file is never replaced) and returns that path; empty
// when the container is damaged or does not hold exactly one ".fdb" file, in
// which case nothing is left in `folder`.
std::filesystem::path UnpackMasterDatabase(const std::filesystem::path& fmd,
                                           const std::filesystem::path& folder);

// Tests a candidate master database: shows the caption "Initializing
// Database", unpacks `fmd` into `scratchFolder`, runs ValidFMDFile on the
// result (which may upgrade it in place and warns about an old database) and
// reads its creation_date (a day code, year x 1000 + day of year). On success
// the unpacked file stays and its path goes to unpackedFdb; on failure the
// user has been told "Invalid or Damaged Master Database!" and nothing is
// left in the scratch folder.
bool testFMD(const std::filesystem::path& fmd, const std::filesystem::path& scratchFolder,
             const FmdCheckOptions& options, std::filesystem::path* unpackedFdb,
             std::string* creationDate, const ProgressCaption& progress = {},
             MasterInfo* info = nullptr);

}  // namespace qarvel::stationdb
