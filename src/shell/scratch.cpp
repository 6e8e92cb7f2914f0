#include "shell/scratch.h"

#include <QStorageInfo>
#include <QString>

#include <algorithm>
#include <cctype>
#include <system_error>
#include <vector>

#include "core/error_trap.h"
#include "core/prompt.h"

namespace qarvel::shell {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kModule = "modFMdb";
constexpr std::int64_t kBytesPerMegabyte = 1048576;

std::string LowerExtension(const fs::path& file) {
    std::string ext = file.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ext;
}

bool EndsWithNoCase(const std::string& text, std::string_view suffix) {
    if (text.size() < suffix.size()) return false;
    return std::equal(suffix.begin(), suffix.end(), text.end() - static_cast<long>(suffix.size()),
                      [](char a, char b) {
                          return std::tolower(static_cast<unsigned char>(a)) ==
                                 std::tolower(static_cast<unsigned char>(b));
                      });
}

// Clears the read-only state and deletes; a file already gone is fine.
bool DeleteWorkingFile(const fs::path& file) {
    std::error_code ec;
    if (!fs::exists(fs::symlink_status(file, ec))) return true;
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write, fs::perm_options::add,
                    ec);
    fs::remove(file, ec);
    return !ec;
}

void CleanFolder(const fs::path& folder) {
    std::error_code ec;
    if (!fs::is_directory(folder, ec)) return;
    // Collect first: deleting companions while iterating would disturb the walk.
    std::vector<fs::path> working;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (!entry.is_regular_file(ec)) continue;
        const std::string ext = LowerExtension(entry.path());
        if (ext == ".mco" || ext == ".mst" || ext == ".tdb" || ext == ".fdb") {
            working.push_back(entry.path());
        }
    }
    bool allDeleted = true;
    for (const fs::path& file : working) {
        allDeleted = DeleteWorkingFile(file) && allDeleted;
        if (LowerExtension(file) == ".tdb") {
            fs::path companion = file;
            allDeleted = DeleteWorkingFile(companion.replace_extension(".mst")) && allDeleted;
            allDeleted = DeleteWorkingFile(companion.replace_extension(".mco")) && allDeleted;
        }
    }
    if (!allDeleted) throw core::TrapError("a working file in " + folder.string() +
                                           " could not be deleted");
}

}  // namespace

bool CleanUpDir(const fs::path& folder) {
    return core::TrappedVoid(kModule, ":CleanUpDir:", [&] { CleanFolder(folder); });
}

void DeleteFolderForce(const fs::path& folder) {
    std::error_code ec;
    fs::remove_all(folder, ec);
}

bool RecreateScratchFolder(const fs::path& folder) {
    return core::TrappedVoid(kModule, ":RecreateScratchFolder:", [&] {
        CleanUpDir(folder);
        DeleteFolderForce(folder);
        std::error_code ec;
        fs::create_directories(folder, ec);
        if (ec || !fs::is_directory(folder)) {
            throw core::TrapError("cannot create " + folder.string() + ": " + ec.message());
        }
    });
}

JobFileNames WorkOutFilenames(const fs::path& jobPath, const fs::path& jobScratch) {
    return core::Trapped(kModule, ":WorkOutFilenames:", JobFileNames{}, [&] {
        JobFileNames names;
        names.folder = jobPath.parent_path();
        std::string fileName = jobPath.filename().string();
        if (fileName.empty()) fileName = "noname.fmj";
        if (!EndsWithNoCase(fileName, ".fmj")) fileName += ".fmj";
        names.baseName = fileName.substr(0, fileName.size() - 4);
        names.jobFile = names.folder / fileName;
        names.tdb = jobScratch / (names.baseName + ".tdb");
        names.mst = jobScratch / (names.baseName + ".mst");
        names.mco = jobScratch / (names.baseName + ".mco");
        return names;
    });
}

std::int64_t CheckFreeSpace(const fs::path& path) {
    return core::Trapped(kModule, ":CheckFreeSpace:", std::int64_t{0}, [&]() -> std::int64_t {
        std::error_code ec;
        if (path.empty() || !fs::exists(path, ec)) return 0;
        QStorageInfo storage(QString::fromStdString(path.string()));
        if (!storage.isValid() || !storage.isReady()) return 0;
        const qint64 bytes = storage.bytesAvailable();
        return bytes > 0 ? bytes / kBytesPerMegabyte : 0;
    });
}

std::string VolumeName(const fs::path& path) {
    return core::Trapped(kModule, ":VolumeName:", std::string(), [&] {
        QStorageInfo storage(QString::fromStdString(path.string()));
        if (!storage.isValid()) return std::string();
        std::string root = storage.rootPath().toStdString();
        while (root.size() > 1 && (root.back() == '/' || root.back() == '\\')) root.pop_back();
        if (root.size() == 2 && root[1] == ':') root.pop_back();  // "C:" -> "C"
        return root;
    });
}

SpaceBand ClassifyFreeSpace(std::int64_t megabytes) {
    if (megabytes < 100) return SpaceBand::NotEnough;
    if (megabytes < 150) return SpaceBand::VeryLow;
    if (megabytes < 200) return SpaceBand::Low;
    return SpaceBand::Enough;
}

std::string FreeSpaceMessage(SpaceBand band, const std::string& volume) {
    switch (band) {
        case SpaceBand::NotEnough:
            return "There is not enough free space on " + volume + ": to run this program!";
        case SpaceBand::VeryLow:
            return volume + ": is running very low on free space!";
        case SpaceBand::Low:
            return volume + ": is running low on free space!";
        case SpaceBand::Enough:
            break;
    }
    return {};
}

bool StartupSpaceCheck(const fs::path& tempFolder, const FreeSpaceProbe& freeSpace,
                       const VolumeNamer& volumeName) {
    return core::Trapped(kModule, ":StartupSpaceCheck:", true, [&] {
        const SpaceBand band = ClassifyFreeSpace(freeSpace(tempFolder));
        if (band == SpaceBand::Enough) return true;
        const bool fatal = band == SpaceBand::NotEnough;
        core::ShowPrompt(FreeSpaceMessage(band, volumeName(tempFolder)), {},
                         core::PromptButtons::Ok,
                         fatal ? core::PromptIcon::Critical : core::PromptIcon::Warning);
        return !fatal;
    });
}

}  // namespace qarvel::shell
