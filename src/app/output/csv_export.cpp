#include "app/output/csv_export.h"

#include <fstream>
#include <system_error>

#include "core/error_trap.h"
#include "jobview/where_clause.h"

namespace qarvel::app {

namespace fs = std::filesystem;

std::string CsvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + "\"";
}

std::string GridCsv(const jobview::GridTable& table) {
    std::string out;
    for (std::size_t c = 0; c < table.captions.size(); ++c) out += (c ? "," : "") + CsvField(table.captions[c]);
    out += "\r\n";
    for (const auto& row : table.rows) {
        for (std::size_t c = 0; c < row.size() && c < table.columns.size(); ++c) {
            out += (c ? "," : "") + CsvField(jobview::FormatGridCell(table.columns[c], row[c]));
        }
        out += "\r\n";
    }
    return out;
}

bool ExportGridCsv(const jobview::GridTable& table, const fs::path& file) {
    fs::path temp = file;
    temp += ".part";
    const bool ok = core::TrappedVoid(jobview::kJobDisplayModule, ":ExportCsv:", [&] {
        {
            std::ofstream out(temp, std::ios::binary | std::ios::trunc);
            if (!out) throw core::TrapError("cannot write " + temp.string());
            const std::string text = GridCsv(table);
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
