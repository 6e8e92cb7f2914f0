#pragma once
// The map arrays of an open job (LoadMapArray): its state and county lines
// from the ".mst" and ".mco" files, and its cities and markers from the job
// database. Qt-free; the renderer draws from these arrays.
//
// Boundary arrays: rows of two single floats, indexed from 0, holding the
// file's floats two by two in file order. A row whose first column is 0.0 is
// a pen-up row (separator and marker); every other row is a point, latitude
// and longitude in degrees, longitude positive WEST. The drawing walks the
// rows from 1 upwards.

#include <filesystem>
#include <string>
#include <vector>

namespace qarvel::jobview {

struct MapRow {
    float col1 = 0;  // latitude, or 0.0 on a pen-up row
    float col2 = 0;  // longitude (positive WEST), or the marker on a pen-up row
    friend bool operator==(const MapRow&, const MapRow&) = default;
};

// A city or marker: lat and lon in stored units (degrees x 14400), longitude
// positive WEST.
struct MapPlace {
    std::string name;
    int lat = 0;
    int lon = 0;
    friend bool operator==(const MapPlace&, const MapPlace&) = default;
};

struct MapArrays {
    std::vector<MapRow> stateMap;
    std::vector<MapRow> countyMap;
    std::vector<MapPlace> places;
    std::vector<MapPlace> markers;
    bool stateMapLoaded = false;   // the repaint draws the state layer only when set
    bool countyMapLoaded = false;  // likewise the county layer
};

// Rows of a state file of `bytes` bytes: bytes / 8 rounded half to even,
// less 4, plus one (rows 0 to that count); the first 16 bytes are skipped.
// Negative counts give no rows.
long long StateMapRows(long long bytes);
// Rows of a county file: bytes / 8 rounded half to even, not less than 0,
// plus one (rows 0 to that count); read from the first byte. The two rules
// differ deliberately and are kept as they are.
long long CountyMapRows(long long bytes);

// LoadMapArray: fills *arrays from the job's boundary files `mst` and `mco`
// and the `places` and `markers` tables of the job database `tdb` (columns
// name, lat, lon). Rows beyond the end of a file read as 0.0. A missing
// boundary file (or a state file too short to hold a row) leaves its array
// empty and its flag cleared, without a message. Errors reading the database
// are reported under "modMapping" ":LoadMapArray:" and give false; *arrays is
// then left unchanged.
bool LoadMapArray(const std::filesystem::path& mst, const std::filesystem::path& mco,
                  const std::filesystem::path& tdb, MapArrays* arrays);

}  // namespace qarvel::jobview
