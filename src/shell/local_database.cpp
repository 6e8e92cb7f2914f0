#include "shell/local_database.h"

#include <system_error>

#include "core/error_trap.h"
#include "shell/program_context.h"
#include "container/container.h"
#include "stationdb/database.h"
#include "stationdb/master_package.h"
#include "stationdb/schema.h"

namespace qarvel::shell {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kModule = "modFMdb";

// A local database the program can work with: opens read-write and holds the
// FM station table that job building copies from.
bool UsableLocalDatabase(const fs::path& file) {
    stationdb::Database db(file, stationdb::OpenMode::ReadWrite);
    return db.HasTable("fm_data");
}

}  // namespace

std::string openLocaldb(const fs::path& path, const fs::path& scratchFolder) {
    return core::Trapped(kModule, ":openLocaldb:", std::string(), [&] {
        std::error_code ec;
        if (!fs::is_regular_file(path, ec)) return std::string();
        const fs::path unpacked = stationdb::UnpackMasterDatabase(path, scratchFolder);
        if (unpacked.empty()) return std::string();
        bool usable = false;
        try {
            usable = UsableLocalDatabase(unpacked);
        } catch (const stationdb::DatabaseError& e) {
            core::ReportError(kModule, ":openLocaldb:", e.what());
        }
        if (!usable) {
            fs::remove(unpacked, ec);
            return std::string();
        }
        return unpacked.generic_string();
    });
}

fs::path CreateEmptyLocalDatabase(const fs::path& scratchFolder) {
    return core::Trapped(kModule, ":CreateEmptyLocalDatabase:", fs::path(), [&] {
        // Reserve a fresh name, then let the schema builder create the file.
        const fs::path file = container::CreateUniqueFile(scratchFolder, "LocalData", ".fdb");
        fs::remove(file);
        if (!stationdb::CreateJobDatabase(file)) return fs::path();
        return file;
    });
}

bool OpenLocalDatabase(ProgramContext& context) {
    return core::Trapped(kModule, ":OpenLocalDatabase:", false, [&] {
        context.localPackage = fs::path(JoinPath(context.settings.gToolDIR, kLocalDatabaseName));
        const std::string connection = openLocaldb(context.localPackage, context.JobScratch());
        context.localDatabase =
            connection.empty() ? CreateEmptyLocalDatabase(context.JobScratch()) : fs::path(connection);
        return !context.localDatabase.empty();
    });
}

bool StoreLocalDatabase(const ProgramContext& context) {
    return core::Trapped(kModule, ":StoreLocalDatabase:", false, [&] {
        std::error_code ec;
        if (context.localDatabase.empty() || context.localPackage.empty() ||
            !fs::is_regular_file(context.localDatabase, ec)) {
            return true;
        }
        if (fs::exists(context.localPackage, ec)) {
            fs::path backup = context.localPackage;
            backup.replace_extension(".bak");
            fs::copy_file(context.localPackage, backup, fs::copy_options::overwrite_existing);
        }
        return stationdb::PackMasterDatabase(context.localDatabase, context.localPackage);
    });
}

}  // namespace qarvel::shell
