// qarvel-cli station get / set: one station record of a master or local
// database, read by column name and corrected field by field. Every value is
// checked before anything is written; a packed database is rewritten
// atomically, so a refused change leaves the file byte-identical.

#include "cli/cmd_editing.h"
#include "cli/coordinates.h"
#include "core/csv_text.h"
#include "editing/edit_session.h"
#include "editing/station_record.h"
#include "stationdb/field_text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>

namespace qarvel::cli {
namespace {

using nlohmann::json;
using ordered_json = nlohmann::ordered_json;

struct StationArgs {
    std::string db, format = "text";
    std::int64_t id = 0;
    std::vector<std::string> assignments;
};

json JsonValue(const editing::FieldValue& value) {
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return *whole;
    if (const auto* real = std::get_if<double>(&value)) return *real;
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    return nullptr;
}

std::string TextValue(const editing::FieldValue& value) {
    const json v = JsonValue(value);
    if (v.is_null()) return "";
    return v.is_string() ? v.get<std::string>() : v.dump();
}

int RunGet(const StationArgs& a) {
    editing::EditSession session(a.db);
    const auto record = editing::GetStation(session.Db(), a.id);
    if (!record) throw UsageError("APPLICATION_ID", "no station " + std::to_string(a.id) + " in '" + a.db + "'");
    if (a.format == "json") {
        ordered_json out = ordered_json::object();  // columns in the table's order
        for (const auto& [column, value] : record->fields) out[column.name] = JsonValue(value);
        std::cout << out.dump(-1, ' ', false, ordered_json::error_handler_t::replace) << "\n";
        return kExitOk;
    }
    std::cout << "table: " << record->table << "\n";
    for (const auto& [column, value] : record->fields)
        std::cout << column.name << ": " << core::TerminalText(TextValue(value)) << "\n";
    return kExitOk;
}

// "lat_deg" and "lon_deg" take degrees in any of the command line's
// notations and become the stored lat / lon (1/14400 degree, west positive).
std::pair<std::string, std::string> Assignment(const std::string& text) {
    const auto eq = text.find('=');
    if (eq == std::string::npos || eq == 0) throw UsageError(text, "expected column=value");
    std::string column = text.substr(0, eq), value = text.substr(eq + 1);
    if (column == "lat_deg" || column == "lon_deg") {
        const bool lat = column == "lat_deg";
        const double degrees = ParseCoordinate(value, lat ? Axis::Latitude : Axis::Longitude, column);
        return {lat ? "lat" : "lon", std::to_string(stationdb::StoredCoordinate(degrees))};
    }
    return {column, value};
}

int RunSet(const StationArgs& a) {
    std::vector<std::pair<std::string, std::string>> changes;
    for (const std::string& text : a.assignments) changes.push_back(Assignment(text));
    editing::EditSession session(a.db);
    try {
        editing::SetStationFields(session.Db(), a.id, changes);
    } catch (const std::invalid_argument& e) {
        throw UsageError(a.db, e.what());
    }
    session.Save();
    return kExitOk;
}

}  // namespace

void RegisterStationCommands(CommandSet& commands) {
    CLI::App* group = commands.AddGroup("station", "Read and correct one station record");
    auto a = std::make_shared<StationArgs>();
    CLI::App* get = commands.Add(group, "get", "Show a station record's columns", [a] { return RunGet(*a); });
    get->add_option("--db", a->db, "Master or local database (.fmd, .fdb)")->required();
    get->add_option("APPLICATION_ID", a->id, "The record's application_id")->required();
    get->add_option("--format", a->format, "text or json")->check(CLI::IsMember({"text", "json"}));

    CLI::App* set = commands.Add(group, "set",
                                 "Change columns of a station record; lat and lon in 1/14400 degree (lon positive "
                                 "west), or lat_deg=/lon_deg= in degrees",
                                 [a] { return RunSet(*a); });
    set->add_option("--db", a->db, "Master or local database (.fmd, .fdb)")->required();
    set->add_option("APPLICATION_ID", a->id, "The record's application_id")->required();
    set->add_option("ASSIGNMENTS", a->assignments, "column=value ... (an empty value sets NULL)")->required();
}

}  // namespace qarvel::cli
