#include "stationdb/schema.h"

#include <atomic>
#include <functional>
#include <random>

#include "core/error_trap.h"
#include "core/prompt.h"
#include "stationdb/database.h"

namespace qarvel::stationdb {
namespace {

namespace fs = std::filesystem;

// The job and master database routines belong to the program's main module.
constexpr std::string_view kModule = "modFMdb";

void RemoveQuietly(const fs::path& path) {
    std::error_code ec;
    fs::remove(path, ec);
    fs::remove(fs::path(path.string() + "-journal"), ec);
}

// Builds a database under a temporary name beside target and renames it into
// place, so that a failure never leaves a half-made file under target's name.
void WriteBeside(const fs::path& target, const std::function<void(Database&)>& fill) {
    const fs::path temp = TempPathBeside(target);
    try {
        {
            Database db(temp, OpenMode::Create);
            Transaction transaction(db);
            fill(db);
            transaction.Commit();
        }
        fs::rename(temp, target);
    } catch (...) {
        RemoveQuietly(temp);
        throw;
    }
}

void PrepareFolder(const fs::path& path) {
    if (path.empty() || !path.has_filename())
        throw core::TrapError("no file name in \"" + path.string() + "\"");
    const fs::path parent = path.parent_path();
    if (!parent.empty()) fs::create_directories(parent);
}

}  // namespace

fs::path TempPathBeside(const fs::path& target) {
    static std::atomic<unsigned> counter{0};
    static const unsigned seed = std::random_device{}();
    for (;;) {
        const unsigned n = seed ^ (counter.fetch_add(1) * 2654435761u);
        fs::path candidate = target;
        candidate += ".tmp" + std::to_string(n % 1000000u);
        std::error_code ec;
        if (!fs::exists(candidate, ec)) return candidate;
    }
}

void CreateJobSchema(Database& db) {
    for (const std::string_view sql : {kCreateAmData, kCreateTv6Data, kCreateParty, kCreateFmData, kCreatePlaces,
                                       kCreateMarkers, kCreateInformation}) {
        db.Exec(sql);
    }
}

void CreateMasterSchema(Database& db, const MasterHeader& h) {
    for (const std::string_view sql : {kCreateFmData, kCreateAmData, kCreateTv6Data, kCreateParty, kCreatePlaces,
                                       kCreateMasterInformation, kCreateMasterIndexes}) {
        db.Exec(sql);
    }
    db.Run("INSERT INTO information (creation_date, creation_size, version, Source) VALUES (?1, ?2, ?3, ?4)",
           h.creation_date, h.creation_size, h.version, h.source);
}

bool CreateJobDatabase(const fs::path& path) {
    const bool created = core::Trapped(kModule, ":CreateJobDatabase:", false, [&] {
        PrepareFolder(path);
        // As the original engine did, never replace an existing file: it may
        // be someone's job.
        if (fs::exists(path)) throw core::TrapError("file exists: \"" + path.string() + "\"");
        WriteBeside(path, [](Database& db) { CreateJobSchema(db); });
        return true;
    });
    if (!created) core::ShowPrompt("Invalid file path", {}, core::PromptButtons::Ok, core::PromptIcon::Critical);
    return created;
}

bool CreateMasterDatabase(const fs::path& fdbPath, const MasterHeader& h) {
    return core::Trapped(kModule, ":CreateMasterDatabase:", false, [&] {
        PrepareFolder(fdbPath);
        WriteBeside(fdbPath, [&](Database& db) { CreateMasterSchema(db, h); });
        return true;
    });
}

}  // namespace qarvel::stationdb
