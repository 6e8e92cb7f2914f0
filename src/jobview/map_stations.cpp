#include "jobview/map_stations.h"

#include "core/error_trap.h"
#include "jobview/grid_query.h"
#include "jobview/where_clause.h"
#include "stationdb/database.h"

namespace qarvel::jobview {

std::string BuildMapQuery(double clearanceLimitKm, std::string_view sortList) {
    std::string sql = "SELECT * FROM tempdisplay WHERE target_clearance <" + FormatLimit(clearanceLimitKm);
    if (sortList.empty()) return sql + " ORDER BY target_clearance;";
    return sql + " ORDER BY " + std::string(sortList) + ";";
}

bool ReadMapStations(const stationdb::Database& job, double clearanceLimitKm, std::string_view sortList,
                     std::vector<MapStation>* stations) {
    return core::TrappedVoid(kJobDisplayModule, ":RepaintMap:", [&] {
        stationdb::Statement rows = job.Prepare(BuildMapQuery(clearanceLimitKm, sortList));
        const int x = rows.ColumnIndex("offset_right"), y = rows.ColumnIndex("offset_up");
        const int radius = rows.ColumnIndex("radius"), clearance = rows.ColumnIndex("target_clearance");
        const int color1 = rows.ColumnIndex("color1"), color2 = rows.ColumnIndex("color2");
        const int callsign = rows.ColumnIndex("fac_callsign"), service = rows.ColumnIndex("service");
        const int status = rows.ColumnIndex("fm_dom_status"), adjacency = rows.ColumnIndex("adjacency");
        std::vector<MapStation> read;
        while (rows.Step()) {
            MapStation& s = read.emplace_back();
            s.x = rows.GetDouble(x);
            s.y = rows.GetDouble(y);
            s.radius = rows.GetDouble(radius);
            s.clearance = rows.GetDouble(clearance);
            s.color1 = rows.GetInt(color1);
            s.color2 = rows.GetInt(color2);
            s.callsign = rows.GetText(callsign);
            s.service = rows.GetText(service);
            s.status = rows.GetText(status);
            s.adjacency = rows.GetText(adjacency);
        }
        if (stations != nullptr) *stations = std::move(read);
    });
}

}  // namespace qarvel::jobview
