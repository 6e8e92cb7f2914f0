#include "editing/station_record.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <regex>
#include <stdexcept>

#include "spacing/class_codes.h"
#include "stationdb/day_code.h"
#include "stationdb/field_text.h"

namespace qarvel::editing {

namespace {

constexpr const char* kStationTables[] = {"fm_data", "am_data", "tv6_data"};
constexpr std::int64_t kStoredPerDegree = 14400;

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return text;
}

ColumnSpec SpecOf(const std::string& name, const std::string& declared) {
    ColumnSpec spec{name};
    const std::string type = Lower(declared);
    static const std::regex sized(R"((?:var)?char\((\d+)\))");
    std::smatch m;
    if (type == "int" || type == "integer") {
        spec.kind = ColumnSpec::Kind::Integer;
    } else if (type == "float" || type == "real" || type == "double") {
        spec.kind = ColumnSpec::Kind::Real;
    } else if (type == "timestamp" || type == "date") {
        spec.kind = ColumnSpec::Kind::Date;
    } else if (std::regex_match(type, m, sized)) {
        spec.width = std::stoul(m[1].str());
    }
    return spec;
}

std::size_t Utf8Length(const std::string& text) {
    return std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; });
}

// Range rules of the columns the studies read.
std::optional<std::string> RangeProblem(const std::string& column, std::int64_t v) {
    if (column == "station_channel" && (v < 200 || v > 300)) return "channel must lie in 200 to 300";
    if (column == "lat" && std::llabs(v) > 90 * kStoredPerDegree)
        return "latitude in 1/14400 degree must lie within +-1296000 (90 degrees)";
    if (column == "lon" && std::llabs(v) > 180 * kStoredPerDegree)
        return "longitude in 1/14400 degree must lie within +-2592000 (180 degrees)";
    return std::nullopt;
}

std::variant<FieldValue, std::string> ParseText(const ColumnSpec& column, const std::string& text) {
    if (!stationdb::IsValidUtf8(text)) return std::string("not valid UTF-8 text");
    if (column.width != 0 && Utf8Length(text) > column.width)
        return "longer than the column's " + std::to_string(column.width) + " characters";
    if ((column.name == "station_class" || column.name == "intl_class") && spacing::ClassIndex(text) < 0)
        return "unknown class '" + text + "'";
    return FieldValue(text);
}

}  // namespace

std::vector<ColumnSpec> TableColumns(const stationdb::Database& db, const std::string& table) {
    std::vector<ColumnSpec> out;
    stationdb::Statement info = db.Prepare("SELECT name, type FROM pragma_table_info(?1)");
    info.Bind(1, table);
    while (info.Step()) out.push_back(SpecOf(info.GetText(0), info.GetText(1)));
    return out;
}

std::optional<StationRecord> GetStation(const stationdb::Database& db, std::int64_t applicationId) {
    for (const char* table : kStationTables) {
        if (!db.HasTable(table)) continue;
        stationdb::Statement row = db.Prepare(std::string("SELECT * FROM ") + table + " WHERE application_id = ?1");
        row.Bind(1, applicationId);
        if (!row.Step()) continue;
        StationRecord record{table, {}};
        const std::vector<ColumnSpec> columns = TableColumns(db, table);
        for (int i = 0; i < row.ColumnCount(); ++i) {
            FieldValue value;
            switch (row.Type(i)) {
                case stationdb::ColumnType::Integer: value = row.GetInt64(i); break;
                case stationdb::ColumnType::Real: value = row.GetDouble(i); break;
                case stationdb::ColumnType::Null: break;
                default: value = row.GetText(i); break;
            }
            record.fields.emplace_back(columns.at(static_cast<std::size_t>(i)), std::move(value));
        }
        return record;
    }
    return std::nullopt;
}

std::variant<FieldValue, std::string> ParseField(const std::string& table, const ColumnSpec& column,
                                                 const std::string& text) {
    (void)table;
    if (text.empty()) return FieldValue{};
    switch (column.kind) {
        case ColumnSpec::Kind::Integer: {
            const auto v = stationdb::ParseInteger(text);
            if (!v) return "'" + text + "' is not a whole number";
            if (auto problem = RangeProblem(column.name, *v)) return *problem;
            return FieldValue(static_cast<std::int64_t>(*v));
        }
        case ColumnSpec::Kind::Real: {
            const auto v = stationdb::ParseNumber(text);
            if (!v || !std::isfinite(*v)) return "'" + text + "' is not a number";
            return FieldValue(*v);
        }
        case ColumnSpec::Kind::Date: {
            const auto date = stationdb::ParseRegulatorDate(text);
            if (!date) return "'" + text + "' is not a date (YYYY-MM-DD or MM/DD/YYYY)";
            return FieldValue(*date);
        }
        case ColumnSpec::Kind::Text: break;
    }
    return ParseText(column, text);
}

void SetStationFields(stationdb::Database& db, std::int64_t applicationId,
                      const std::vector<std::pair<std::string, std::string>>& assignments) {
    const std::optional<StationRecord> record = GetStation(db, applicationId);
    if (!record) throw std::invalid_argument("no station with application_id " + std::to_string(applicationId));
    const std::vector<ColumnSpec> columns = TableColumns(db, record->table);
    std::vector<std::pair<std::string, FieldValue>> values;
    for (const auto& [name, text] : assignments) {
        const auto spec = std::find_if(columns.begin(), columns.end(), [&](const ColumnSpec& c) { return c.name == name; });
        if (spec == columns.end()) throw std::invalid_argument(name + ": no such column in " + record->table);
        if (name == "application_id") throw std::invalid_argument("application_id: the record's key cannot be changed");
        auto parsed = ParseField(record->table, *spec, text);
        if (auto* problem = std::get_if<std::string>(&parsed)) throw std::invalid_argument(name + ": " + *problem);
        values.emplace_back(name, std::get<FieldValue>(parsed));
    }
    stationdb::Savepoint edit(db);
    for (const auto& [name, value] : values) {
        stationdb::Statement update = db.Prepare("UPDATE " + record->table + " SET " +
                                                 stationdb::QuoteIdentifier(name) + " = ?1 WHERE application_id = ?2");
        std::visit([&](const auto& v) {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, std::monostate>) update.Bind(1, nullptr);
            else update.Bind(1, v);
        }, value);
        update.Bind(2, applicationId).Run();
    }
    db.Exec("CREATE TABLE IF NOT EXISTS user_edits (application_id int NOT NULL, table_name varchar(16) NOT NULL,"
            " edited char(5), PRIMARY KEY (application_id, table_name))");
    db.Run("INSERT OR REPLACE INTO user_edits (application_id, table_name, edited) VALUES (?1, ?2, ?3)", applicationId,
           record->table, stationdb::DayCodeText(stationdb::TodayDayCode()));
    edit.Commit();
}

bool IsUserEdited(const stationdb::Database& db, const std::string& table, std::int64_t applicationId) {
    if (!db.HasTable(kUserEditsTable)) return false;
    stationdb::Statement row = db.Prepare("SELECT 1 FROM user_edits WHERE application_id = ?1 AND table_name = ?2");
    row.BindAll(applicationId, table);
    return row.Step();
}

}  // namespace qarvel::editing
