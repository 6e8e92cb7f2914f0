#include "cli/master_file.h"

#include "cli/command_set.h"
#include "stationdb/database.h"
#include "stationdb/layout_check.h"
#include "stationdb/master_package.h"

#include <algorithm>
#include <cctype>

namespace qarvel::cli {

namespace fs = std::filesystem;

MasterFile::MasterFile(const std::string& dbArg) {
    const fs::path path(dbArg);
    std::error_code ec;
    if (dbArg.empty() || !fs::is_regular_file(path, ec)) throw UsageError("--db", "no such file '" + dbArg + "'");
    std::string ext = path.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (ext == ".fmd") {
        m_scratch = std::make_unique<container::ScratchFolder>("qarvel-master-");
        m_fdb = stationdb::UnpackMasterDatabase(path, m_scratch->Path());
        if (m_fdb.empty()) throw UsageError("--db", "'" + dbArg + "' is not a packed master database");
    } else {
        m_fdb = path;
    }
    Check(dbArg);
}

void MasterFile::Check(const std::string& dbArg) const {
    try {
        stationdb::Database db(m_fdb, stationdb::OpenMode::ReadOnly);
        auto problem = stationdb::LayoutProblem(db, stationdb::DatabaseKind::Master);
        if (!problem) problem = stationdb::PositionProblem(db);
        if (problem) throw DataError(dbArg, "not a usable master database: " + *problem);
    } catch (const stationdb::DatabaseError& e) {
        throw UsageError("--db", "'" + dbArg + "' is not a master database (" + e.EngineMessage() + ")");
    }
}

}  // namespace qarvel::cli
