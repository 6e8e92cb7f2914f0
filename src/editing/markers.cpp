#include "editing/markers.h"

#include <cmath>
#include <stdexcept>

#include "stationdb/day_code.h"
#include "stationdb/field_text.h"

namespace qarvel::editing {

std::optional<std::string> MarkerProblem(const std::string& label, double lat, double lon) {
    if (label.empty()) return "the label is empty";
    if (label.size() > kMarkerLabelChars) return "the label is longer than 128 characters";
    if (!stationdb::IsValidUtf8(label)) return "the label is not valid UTF-8 text";
    if (!std::isfinite(lat) || std::fabs(lat) > 90) return "latitude must lie in -90 to 90 degrees";
    if (!std::isfinite(lon) || std::fabs(lon) > 180) return "longitude must lie in -180 to 180 degrees";
    return std::nullopt;
}

namespace {

void Require(const std::string& label, double lat, double lon) {
    if (auto problem = MarkerProblem(label, lat, lon)) throw std::invalid_argument(*problem);
}

}  // namespace

std::int64_t AddMarker(stationdb::Database& db, const std::string& label, double lat, double lon) {
    Require(label, lat, lon);
    db.Run("INSERT INTO markers (name, jdate, lat, lon) VALUES (?1, ?2, ?3, ?4)", label,
           stationdb::DayCodeText(stationdb::TodayDayCode()), stationdb::StoredCoordinate(lat),
           stationdb::StoredCoordinate(lon));
    return db.LastInsertRowId();
}

std::vector<Marker> ListMarkers(const stationdb::Database& db) {
    std::vector<Marker> out;
    stationdb::Statement rows = db.Prepare("SELECT rowid, name, jdate, lat, lon FROM markers ORDER BY rowid");
    while (rows.Step()) {
        out.push_back({rows.GetInt64(0), rows.GetText(1), rows.GetText(2), rows.GetInt(3) / 14400.0,
                       rows.GetInt(4) / 14400.0});
    }
    return out;
}

bool UpdateMarker(stationdb::Database& db, const Marker& m) {
    Require(m.label, m.lat, m.lon);
    db.Run("UPDATE markers SET name = ?1, lat = ?2, lon = ?3 WHERE rowid = ?4", m.label,
           stationdb::StoredCoordinate(m.lat), stationdb::StoredCoordinate(m.lon), m.id);
    return db.Changes() == 1;
}

bool DeleteMarker(stationdb::Database& db, std::int64_t id) {
    db.Run("DELETE FROM markers WHERE rowid = ?1", id);
    return db.Changes() == 1;
}

}  // namespace qarvel::editing
