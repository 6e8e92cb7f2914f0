// qarvel-cli marker add / list / delete: the user's map markers in a local
// database (LocalData.fmd), which job building copies into every job within
// 350 km of them.

#include "cli/cmd_editing.h"
#include "cli/coordinates.h"
#include "core/csv_text.h"
#include "editing/edit_session.h"
#include "editing/markers.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>

namespace qarvel::cli {
namespace {

using nlohmann::json;

struct MarkerArgs {
    std::string db, lat, lon, label, format = "text";
    std::int64_t id = 0;
};

int RunAdd(const MarkerArgs& a) {
    const double lat = ParseCoordinate(a.lat, Axis::Latitude, "--lat");
    const double lon = ParseCoordinate(a.lon, Axis::Longitude, "--lon");
    if (auto problem = editing::MarkerProblem(a.label, lat, lon)) throw UsageError("--label", *problem);
    editing::EditSession session(a.db, /*createMissing=*/true);
    const std::int64_t id = editing::AddMarker(session.Db(), a.label, lat, lon);
    session.Save();
    std::cout << id << "\n";
    return kExitOk;
}

void PrintMarkers(const std::vector<editing::Marker>& markers, const std::string& format) {
    if (format == "json") {
        json list = json::array();
        for (const auto& m : markers)
            list.push_back({{"id", m.id}, {"lat", m.lat}, {"lon", m.lon}, {"label", m.label}, {"jdate", m.jdate}});
        std::cout << json{{"markers", list}}.dump(-1, ' ', false, json::error_handler_t::replace) << "\n";
    } else if (format == "csv") {
        std::cout << "id,lat,lon,label,jdate\n";
        for (const auto& m : markers) {
            std::cout << core::CsvRow({std::to_string(m.id), fmt::format("{:.6f}", m.lat), fmt::format("{:.6f}", m.lon),
                                       m.label, m.jdate})
                      << "\n";
        }
    } else {
        for (const auto& m : markers) {
            std::cout << fmt::format("{:>6}  {:10.6f} {:11.6f}  {}  {}\n", m.id, m.lat, m.lon, m.jdate,
                                     core::TerminalText(m.label));
        }
    }
}

int RunList(const MarkerArgs& a) {
    editing::EditSession session(a.db);
    PrintMarkers(editing::ListMarkers(session.Db()), a.format);
    return kExitOk;
}

int RunDelete(const MarkerArgs& a) {
    editing::EditSession session(a.db);
    if (!editing::DeleteMarker(session.Db(), a.id)) throw UsageError("ID", "no marker " + std::to_string(a.id));
    session.Save();
    return kExitOk;
}

}  // namespace

void RegisterMarkerCommands(CommandSet& commands) {
    CLI::App* group = commands.AddGroup("marker", "Map markers kept in a local database");
    auto a = std::make_shared<MarkerArgs>();
    CLI::App* add = commands.Add(group, "add", "Add a marker; prints its id", [a] { return RunAdd(*a); });
    add->add_option("--db", a->db, "Local database (.fmd); created when it does not exist")->required();
    add->add_option("--lat", a->lat, "Latitude (40.75, 40:45:00, 40.75N)")->required();
    add->add_option("--lon", a->lon, "Longitude; a bare number is WEST (96.7, 96:42:00W)")->required();
    add->add_option("--label", a->label, "The marker's label (1 to 128 characters)")->required();

    CLI::App* list = commands.Add(group, "list", "List the markers (longitude positive west)",
                                  [a] { return RunList(*a); });
    list->add_option("--db", a->db, "Local database (.fmd)")->required();
    list->add_option("--format", a->format, "text, csv or json")->check(CLI::IsMember({"text", "csv", "json"}));

    CLI::App* del = commands.Add(group, "delete", "Delete a marker by its id", [a] { return RunDelete(*a); });
    del->add_option("--db", a->db, "Local database (.fmd)")->required();
    del->add_option("ID", a->id, "The marker's id, as marker list shows it")->required();
}

}  // namespace qarvel::cli
