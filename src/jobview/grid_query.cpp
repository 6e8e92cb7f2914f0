#include "jobview/grid_query.h"

#include "core/csv_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "core/error_trap.h"
#include "jobview/temp_display.h"
#include "jobview/where_clause.h"
#include "stationdb/database.h"

namespace qarvel::jobview {

namespace {

struct CaptionColumn {
    std::string_view caption;
    std::string_view column;
};

// The job grid's captions and the columns they sort by.
constexpr std::array<CaptionColumn, 21> kSortColumns = {{
    {"Callsign", "fac_callsign"},   {"Latitude", "latdms"},
    {"Longitude", "londms"},        {"City", "comm_city"},
    {"State", "comm_state"},        {"Service", "service"},
    {"Channel", "channel_text"},    {"Class", "station_class"},
    {"Intl Class", "intl_class"},   {"Min Separation", "radius"},
    {"Clearance", "target_clearance"}, {"ERP", "horiz_erp"},
    {"HAAT", "haat_horiz_rc_mtr"},  {"Adjacency", "adjacency"},
    {"Status", "fm_dom_status"},    {"Distance", "target_distance"},
    {"Bearing", "target_bearing"},  {"Owner", "party_name"},
    {"ERP Vert", "vert_erp"},       {"ASD Service", "asd_service"},
    {"Facility ID", "facility_id"},
}};

bool EqualNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

std::string Shortest(double value) {
    char text[32];
    const auto result = std::to_chars(text, text + sizeof text, value);
    return std::string(text, result.ptr);
}

bool IsTwoDecimalColumn(std::string_view column) {
    return column == "target_distance" || column == "target_clearance" || column == "radius";
}

GridValue ReadCell(const stationdb::Statement& row, int column) {
    switch (row.Type(column)) {
        case stationdb::ColumnType::Integer: return row.GetInt64(column);
        case stationdb::ColumnType::Real: return row.GetDouble(column);
        case stationdb::ColumnType::Null: return std::monostate{};
        default: return row.GetText(column);
    }
}

}  // namespace

std::string FormatLimit(double km) { return Shortest(km); }

std::string SortGrid(std::string_view caption) {
    return core::Trapped(kJobDisplayModule, ":SortGrid:", std::string(), [&] {
        for (const CaptionColumn& c : kSortColumns) {
            if (c.caption == caption) return std::string(c.column);
        }
        throw core::TrapError("no grid column is captioned \"" + std::string(caption) + "\"");
    });
}

std::string TempDisplayColumnName(std::string_view fieldName) {
    for (const TempDisplayColumn& c : kTempDisplayColumns) {
        if (EqualNoCase(c.name, fieldName)) return std::string(c.name);
    }
    return {};
}

std::string BuildGridQuery(const std::vector<stationdb::DisplayField>& visibleFields,
                           const StudyFilter& filter, std::string_view sortList) {
    std::string sql = "SELECT ";
    for (const stationdb::DisplayField& f : visibleFields) sql += f.fieldName + " AS [" + f.caption + "], ";
    sql.erase(sql.size() - 2);
    sql += " FROM tempdisplay ";
    sql += " WHERE target_clearance <= " + FormatLimit(filter.clearanceLimitKm);
    if (!filter.showAm) sql += " AND Service <> 'AM'";
    if (sortList.empty()) sql += " ORDER BY target_clearance;";
    else sql += " ORDER BY " + std::string(sortList) + ";";
    return sql;
}

bool ReadGrid(const stationdb::Database& job, const stationdb::DisplayFieldCatalogue& catalogue,
              const StudyFilter& filter, std::string_view sortList, GridTable* table) {
    return core::TrappedVoid(kJobDisplayModule, ":NewGridData:", [&] {
        const std::vector<stationdb::DisplayField> visible = stationdb::VisibleFieldsInOrder(catalogue);
        if (visible.empty()) throw core::TrapError("the job grid shows no column");
        GridTable read;
        for (const stationdb::DisplayField& f : visible) {
            read.columns.push_back(TempDisplayColumnName(f.fieldName));
            read.captions.push_back(f.caption);
        }
        stationdb::Statement rows = job.Prepare(BuildGridQuery(visible, filter, sortList));
        const int count = rows.ColumnCount();
        while (rows.Step()) {
            std::vector<GridValue>& cells = read.rows.emplace_back();
            for (int c = 0; c < count; ++c) cells.push_back(ReadCell(rows, c));
        }
        if (table != nullptr) *table = std::move(read);
    });
}

std::string FormatGridCell(std::string_view column, const GridValue& value) {
    if (std::holds_alternative<std::monostate>(value)) return {};
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    const double number = std::holds_alternative<double>(value)
                              ? std::get<double>(value)
                              : static_cast<double>(std::get<std::int64_t>(value));
    char buffer[48];
    if (IsTwoDecimalColumn(column)) {
        std::snprintf(buffer, sizeof buffer, "%.2f", number);
        return buffer;
    }
    if (column == "target_bearing") {
        std::snprintf(buffer, sizeof buffer, "%03.0f", std::nearbyint(number));
        return buffer;
    }
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return std::to_string(*whole);
    return Shortest(number);
}

std::string GridCsv(const GridTable& table, std::string_view lineEnd) {
    std::string out = core::CsvRow(table.captions) + std::string(lineEnd);
    for (const auto& row : table.rows) {
        std::vector<std::string> cells;
        for (std::size_t c = 0; c < row.size() && c < table.columns.size(); ++c)
            cells.push_back(FormatGridCell(table.columns[c], row[c]));
        out += core::CsvRow(cells) + std::string(lineEnd);
    }
    return out;
}

}  // namespace qarvel::jobview
