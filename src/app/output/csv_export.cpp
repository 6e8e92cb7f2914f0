#include "app/output/csv_export.h"

#include <fstream>
#include <system_error>

#include "core/error_trap.h"
#include "jobview/where_clause.h"

namespace qarvel::app {

namespace fs = std::filesystem;

bool ExportGridCsv(const jobview::GridTable& table, const fs::path& file) {
    fs::path temp = file;
    temp += ".part";
    const bool ok = core::TrappedVoid(jobview::kJobDisplayModule, ":ExportCsv:", [&] {
        {
            std::ofstream out(temp, std::ios::binary | std::ios::trunc);
            if (!out) throw core::TrapError("cannot write " + temp.string());
            const std::string text = jobview::GridCsv(table);
            out.write(text.data(), static_cast<std::streamsize>(text.size()));
            out.close();
            if (!out) throw core::TrapError("cannot write " + temp.string());
        }
        fs::rename(temp, file);  // throws filesystem_error, which the trap reports
    });
    if (!ok) {
        std::error_code ec;
        fs::remove(temp, ec);
    }
    return ok;
}

}  // namespace qarvel::app
