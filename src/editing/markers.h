#pragma once
// The user's map markers (proposed tower sites, reference points), kept in
// the `markers` table of the local database and copied into every job built
// within 350 km of them. A marker is known by its SQLite row id.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "stationdb/database.h"

namespace qarvel::editing {

inline constexpr std::size_t kMarkerLabelChars = 128;  // markers.name is varchar(128)

struct Marker {
    std::int64_t id = 0;
    std::string label;
    std::string jdate;  // day code of the day it was set ("24123")
    double lat = 0;     // degrees, north positive
    double lon = 0;     // degrees, WEST positive (the station tables' convention)
};

// Checks a label and a position; the one-line reason, or nullopt when good.
// Latitude -90..90, longitude -180..180, label 1 to 128 characters.
std::optional<std::string> MarkerProblem(const std::string& label, double lat, double lon);

// Adds a marker dated today; its id. Throws std::invalid_argument with the
// reason for a bad label or position.
std::int64_t AddMarker(stationdb::Database& db, const std::string& label, double lat, double lon);
// Every marker, in the order they were added.
std::vector<Marker> ListMarkers(const stationdb::Database& db);
// Changes label and position of a marker; false when there is no such id.
bool UpdateMarker(stationdb::Database& db, const Marker& marker);
// Removes a marker; false when there is no such id.
bool DeleteMarker(stationdb::Database& db, std::int64_t id);

}  // namespace qarvel::editing
