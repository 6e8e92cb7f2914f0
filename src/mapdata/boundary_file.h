#pragma once
// Boundary files: the state and county lines of the map. The national files
// "stmapH.dat" (states) and "comapH.dat" (counties) live in the data
// directory; a job carries the lines near its target in its ".mst" and ".mco"
// files, cut from the national ones. All four share one format:
//
//   a flat sequence of 4-byte IEEE single-precision floats, little-endian,
//   no header, no count. Each polyline is
//     0.0                 separator (starts the polyline)
//     marker              any value but 0.0; identifies the polyline
//     lat, lon            degrees, longitude positive WEST: the first point
//     lat, lon ...        further points, until the next separator
//   and a marker of 0.0 after a separator ends the file.
//
// A latitude of 0.0 can therefore never be a point: it is always the next
// separator. The national files end with the end mark (0.0, 0.0); a job's
// cut files simply stop after their last point.

#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "mapdata/topojson.h"

namespace qarvel::mapdata {

inline constexpr std::string_view kStateMapFile = "stmapH.dat";
inline constexpr std::string_view kCountyMapFile = "comapH.dat";

// Degrees: latitude positive north, longitude positive WEST.
struct BoundaryPoint {
    float lat = 0;
    float lon = 0;
    friend bool operator==(const BoundaryPoint&, const BoundaryPoint&) = default;
};

struct BoundaryLine {
    float marker = 1;                   // never 0.0
    std::vector<BoundaryPoint> points;  // at least one
    friend bool operator==(const BoundaryLine&, const BoundaryLine&) = default;
};

// A line that cannot be written, or bytes that are not a boundary file;
// what() names the line or the byte offset.
class BoundaryFileError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

enum class BoundaryEnd {
    Mark,  // end with 0.0, 0.0 (the national files)
    None,  // stop after the last point (a job's cut files)
};

// The bytes of a boundary file holding `lines`. Throws BoundaryFileError for
// a line without points, a marker of 0.0, a point whose latitude is 0.0 (it
// would read back as a separator) or any value that is not finite.
std::string EncodeBoundaryFile(const std::vector<BoundaryLine>& lines,
                               BoundaryEnd end = BoundaryEnd::Mark);

// The lines of a boundary file's bytes. The end mark is optional (the end of
// the bytes ends the last line too); an empty input holds no lines. Throws
// BoundaryFileError, naming the byte offset, for a length that is not whole
// floats, a first value other than 0.0, a polyline without its first point,
// a latitude without its longitude, a value that is not finite, or bytes
// after the end mark.
std::vector<BoundaryLine> DecodeBoundaryFile(std::string_view bytes);

// Writes `lines` to `path` under a temporary name beside it, renamed into
// place, so a failure keeps the previous file. Errors are reported under
// "modMapData" ":WriteBoundaryFile:" and give false.
bool WriteBoundaryFile(const std::filesystem::path& path, const std::vector<BoundaryLine>& lines,
                       BoundaryEnd end = BoundaryEnd::Mark);

// Reads the lines of the boundary file `path` into *lines. Errors (missing
// file, bad contents) are reported under "modMapData" ":ReadBoundaryFile:"
// and give false, leaving *lines unchanged.
bool ReadBoundaryFile(const std::filesystem::path& path, std::vector<BoundaryLine>* lines);

// Longest reach, in km, of one polyline of a national file from its first
// point. The job's cut keeps or drops a polyline by its first point only, so
// long rings are split into pieces of this reach: every boundary point within
// the cut's limit less this reach of a target is then kept.
inline constexpr double kBoundaryPieceKm = 25.0;

// Boundary lines from decoded TopoJSON geometries: each ring (or line) in
// turn, longitudes turned positive WEST, split into pieces that reach at most
// pieceKm (FlatDistance) from their first point; consecutive pieces share
// their joining point, so the drawn line stays unbroken. The marker of every
// piece is the geometry's numeric id ("06" -> 6, "06069" -> 6069) or, when
// the id is not a whole number from 1 to 16,777,216, the geometry's ordinal
// (1, 2, ...). Rings with fewer than two points are skipped.
std::vector<BoundaryLine> BoundaryLinesFromGeometries(const std::vector<TopoGeometry>& geometries,
                                                      double pieceKm = kBoundaryPieceKm);

struct BoundaryImportSummary {
    std::size_t stateLines = 0, statePoints = 0;
    std::size_t countyLines = 0, countyPoints = 0;
};

// The national boundary files from the us-atlas package folder atlasDir:
// object "states" of "states-10m.json" becomes outDir/"stmapH.dat" and object
// "counties" of "counties-10m.json" outDir/"comapH.dat" (outDir is created
// when missing). Both files are written under temporary names and renamed
// only when both are complete. Errors are reported under "modMapData"
// ":ImportBoundaries:" (naming the file and what was wrong) and give false.
bool ImportBoundaries(const std::filesystem::path& atlasDir, const std::filesystem::path& outDir,
                      BoundaryImportSummary* summary = nullptr);

}  // namespace qarvel::mapdata
