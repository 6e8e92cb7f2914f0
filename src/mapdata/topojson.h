#pragma once
// TopoJSON decoding for the map data: the Census cartographic boundaries of
// the us-atlas package arrive as TopoJSON topologies, whose geometries name
// shared arcs instead of holding coordinates.
//
// What is decoded:
// - arcs, quantized (a "transform" with scale and translate, positions
//   delta-encoded within each arc) or not (absolute positions);
// - arc references: index i >= 0 is arc i as stored, a negative index i is
//   arc ~i (one's complement, -1 -> 0) walked backwards; consecutive arcs of
//   a ring share their joining position, which is kept once;
// - Polygon and MultiPolygon geometries (one polyline per ring, outer rings
//   and holes alike) and LineString / MultiLineString (one per line); other
//   geometry types (Point, null...) carry no lines and are skipped;
//   GeometryCollections are flattened.
//
// Positions are degrees as TopoJSON gives them: longitude positive EAST
// (-180..180), latitude positive north. The boundary files count longitude
// positive WEST; boundary_file.h converts.

#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace qarvel::mapdata {

// A malformed topology or a reference to a missing arc or object; what()
// says which.
class TopoJsonError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Degrees, longitude positive EAST.
struct LonLat {
    double lon = 0;
    double lat = 0;
    friend bool operator==(const LonLat&, const LonLat&) = default;
};
using TopoLine = std::vector<LonLat>;

struct TopoGeometry {
    std::string type;             // "Polygon", "MultiPolygon", "LineString", ...
    std::string id;               // the geometry's id as text ("06", "06069"); "" when none
    std::string name;             // properties.name; "" when none
    std::vector<TopoLine> lines;  // one per ring (polygons) or per line string
};

class Topology {
  public:
    // Decodes a topology from its JSON text. Throws TopoJsonError.
    static Topology Parse(std::string_view jsonText);
    // Reads and decodes a topology file. Throws TopoJsonError (naming the
    // file) when it cannot be read or decoded.
    static Topology Read(const std::filesystem::path& file);

    // The decoded arcs, positions in degrees (longitude positive EAST).
    const std::vector<TopoLine>& Arcs() const { return m_arcs; }
    std::vector<std::string> ObjectNames() const;
    bool HasObject(std::string_view name) const;
    // The geometries of one named object, in file order. Throws
    // TopoJsonError when the topology has no such object. On a temporary
    // topology they are moved out, so no reference outlives it.
    const std::vector<TopoGeometry>& Geometries(std::string_view objectName) const&;
    std::vector<TopoGeometry> Geometries(std::string_view objectName) &&;

  private:
    std::vector<TopoLine> m_arcs;
    std::map<std::string, std::vector<TopoGeometry>, std::less<>> m_objects;
};

}  // namespace qarvel::mapdata
