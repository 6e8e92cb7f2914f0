// The command line's tables as text, CSV or JSON: one printer for the job
// grid and the search results.

#include "cli/table_output.h"

#include "core/csv_text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <iostream>

namespace qarvel::cli {
namespace {

using nlohmann::json;

json JsonValue(const jobview::GridValue& value) {
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return *whole;
    if (const auto* real = std::get_if<double>(&value)) return *real;
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    return nullptr;
}

void PrintJson(const jobview::GridTable& t, bool withColumns) {
    json rows = json::array();
    for (const auto& row : t.rows) {
        json object = json::object();
        for (std::size_t c = 0; c < row.size(); ++c) object[t.columns[c]] = JsonValue(row[c]);
        rows.push_back(std::move(object));
    }
    json out = {{"rows", rows}};
    if (withColumns) out["columns"] = t.columns;
    std::cout << out.dump(-1, ' ', false, json::error_handler_t::replace) << "\n";
}

void PrintCsv(const jobview::GridTable& t) { std::cout << jobview::GridCsv(t, "\n"); }

// Columns padded to their widest cell; numbers to the right.
void PrintText(const jobview::GridTable& t) {
    std::vector<std::vector<std::string>> cells;
    std::vector<std::size_t> width;
    for (const std::string& caption : t.captions) width.push_back(caption.size());
    for (const auto& row : t.rows) {
        std::vector<std::string>& line = cells.emplace_back();
        for (std::size_t c = 0; c < row.size(); ++c) {
            line.push_back(core::TerminalText(jobview::FormatGridCell(t.columns[c], row[c])));
            width[c] = std::max(width[c], line.back().size());
        }
    }
    auto print = [&](const std::vector<std::string>& line, const std::vector<bool>& right) {
        std::string out;
        for (std::size_t c = 0; c < line.size(); ++c) {
            out += c ? "  " : "";
            out += right[c] ? fmt::format("{:>{}}", line[c], width[c]) : fmt::format("{:<{}}", line[c], width[c]);
        }
        out.erase(out.find_last_not_of(' ') + 1);
        std::cout << out << "\n";
    };
    print(t.captions, std::vector<bool>(t.captions.size(), false));
    for (std::size_t r = 0; r < cells.size(); ++r) {
        std::vector<bool> right;
        for (const auto& value : t.rows[r]) right.push_back(!std::holds_alternative<std::string>(value));
        print(cells[r], right);
    }
}

}  // namespace

void PrintTable(const jobview::GridTable& table, const std::string& format, bool jsonColumns) {
    if (format == "json") PrintJson(table, jsonColumns);
    else if (format == "csv") PrintCsv(table);
    else PrintText(table);
}

}  // namespace qarvel::cli
