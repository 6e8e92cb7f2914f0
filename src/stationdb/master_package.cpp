#include "stationdb/master_package.h"

#include "core/error_trap.h"
#include "container/container.h"

#include <algorithm>
#include <cctype>

namespace qarvel::stationdb {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kModule = "modFMdb";

bool IsMasterDatabaseFile(const fs::path& path) {
    std::string ext = path.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ext == ".fdb";
}

// Removes a folder with everything in it when it goes out of scope.
class FolderGuard {
public:
    explicit FolderGuard(fs::path path) : m_path(std::move(path)) {}
    ~FolderGuard() {
        std::error_code ec;
        fs::remove_all(m_path, ec);
    }
    FolderGuard(const FolderGuard&) = delete;
    FolderGuard& operator=(const FolderGuard&) = delete;

private:
    fs::path m_path;
};

// The single ".fdb" file in `folder`; throws when there is any other file.
fs::path SingleMasterFile(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& item : fs::directory_iterator(folder)) files.push_back(item.path());
    if (files.size() != 1 || !IsMasterDatabaseFile(files.front())) {
        throw core::TrapError("a master database container must hold exactly one .fdb file");
    }
    return files.front();
}

}  // namespace

bool PackMasterDatabase(const fs::path& fdb, const fs::path& fmd) {
    return core::Trapped(kModule, ":PackMasterDatabase:", false, [&] {
        if (!IsMasterDatabaseFile(fdb)) throw core::TrapError("not a master database (.fdb): " + fdb.string());
        return container::CompressFiles(fmd, {fdb});
    });
}

fs::path UnpackMasterDatabase(const fs::path& fmd, const fs::path& folder) {
    return core::Trapped(kModule, ":UnpackMasterDatabase:", fs::path(), [&] {
        // Unpack into a private folder first, so that a container holding
        // anything but one database leaves nothing behind in `folder`.
        const fs::path staging = container::CreateUniqueFolder(folder, "~fmd");
        FolderGuard cleanup(staging);
        if (!container::UncompressFiles(fmd, staging)) return fs::path();
        const fs::path unpacked = SingleMasterFile(staging);
        // Reserve a fresh name ending in ".fdb", then move the database onto it.
        const fs::path target = container::CreateUniqueFile(folder, "fmd", ".fdb");
        std::error_code ec;
        fs::rename(unpacked, target, ec);
        if (ec) {
            fs::remove(target, ec);
            throw core::TrapError("cannot write " + target.string());
        }
        return target;
    });
}

bool testFMD(const fs::path& fmd, const fs::path& scratchFolder, const FmdCheckOptions& options,
             fs::path* unpackedFdb, std::string* creationDate, const ProgressCaption& progress,
             MasterInfo* info) {
    return core::Trapped(kModule, ":testFMD:", false, [&] {
        if (progress) progress("Initializing Database");
        fs::path fdb = UnpackMasterDatabase(fmd, scratchFolder);
        FmdCheckOptions named = options;
        if (named.displayName.empty()) named.displayName = fmd;
        MasterInfo read;
        // A container that would not unpack leaves no database, which the
        // check refuses with its own message, as for any damaged master.
        if (fdb.empty()) return ValidFMDFile(fs::path(), named, &read);
        if (!ValidFMDFile(fdb, named, &read)) {
            std::error_code ec;
            fs::remove(fdb, ec);
            return false;
        }
        if (unpackedFdb) *unpackedFdb = fdb;
        if (creationDate) *creationDate = read.creation_date;
        if (info) *info = read;
        return true;
    });
}

}  // namespace qarvel::stationdb
