#include "mapdata/boundary_file.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <optional>
#include <sstream>

#include "core/error_trap.h"
#include "geodesy/geodesy.h"
#include "stationdb/schema.h"  // TempPathBeside

namespace qarvel::mapdata {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kModule = "modMapData";

void PutFloat(std::string& out, float value) {
    const auto bits = std::bit_cast<std::uint32_t>(value);
    for (int shift = 0; shift < 32; shift += 8)
        out.push_back(static_cast<char>((bits >> shift) & 0xFFu));
}

float GetFloat(std::string_view bytes, std::size_t offset) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        bits |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[offset + i]))
                << (8 * i);
    }
    return std::bit_cast<float>(bits);
}

void CheckLine(const BoundaryLine& line, std::size_t index) {
    const std::string which = "boundary line " + std::to_string(index + 1);
    if (!std::isfinite(line.marker) || line.marker == 0.0f) {
        throw BoundaryFileError(which + ": the marker must be a finite value other than 0.0");
    }
    if (line.points.empty()) throw BoundaryFileError(which + " has no points");
    for (const BoundaryPoint& p : line.points) {
        if (!std::isfinite(p.lat) || !std::isfinite(p.lon)) {
            throw BoundaryFileError(which + " has a coordinate that is not finite");
        }
        if (p.lat == 0.0f)
            throw BoundaryFileError(which +
                                    " has a point at latitude 0.0, which reads as a separator");
    }
}

// Reads the floats of a boundary file one by one, naming byte offsets in errors.
class FloatReader {
  public:
    explicit FloatReader(std::string_view bytes) : m_bytes(bytes) {
        if (bytes.size() % 4 != 0) {
            throw BoundaryFileError("length " + std::to_string(bytes.size()) +
                                    " bytes is not a whole number of floats");
        }
    }
    bool AtEnd() const { return m_offset == m_bytes.size(); }
    std::size_t Offset() const { return m_offset; }
    float Next(const char* what) {
        if (AtEnd()) {
            throw BoundaryFileError("the file ends at byte " + std::to_string(m_offset) +
                                    " where " + what + " should be");
        }
        const float value = GetFloat(m_bytes, m_offset);
        if (!std::isfinite(value)) {
            throw BoundaryFileError("value at byte " + std::to_string(m_offset) + " is not finite");
        }
        m_offset += 4;
        return value;
    }

  private:
    std::string_view m_bytes;
    std::size_t m_offset = 0;
};

// One polyline after its separator and marker; returns true when the file
// goes on with another separator.
bool ReadPoints(FloatReader& in, BoundaryLine& line) {
    const std::size_t start = in.Offset();
    const float lat = in.Next("a polyline's first latitude");
    if (lat == 0.0f)
        throw BoundaryFileError("polyline at byte " + std::to_string(start) +
                                " has no first point");
    line.points.push_back({lat, in.Next("a polyline's first longitude")});
    while (!in.AtEnd()) {
        const float next = in.Next("a latitude");
        if (next == 0.0f) return true;
        line.points.push_back({next, in.Next("a longitude")});
    }
    return false;
}

// Marker of a geometry: its numeric id where that fits a float exactly.
float MarkerOf(const TopoGeometry& g, std::size_t ordinal) {
    if (!g.id.empty() && g.id.size() <= 8 &&
        g.id.find_first_not_of("0123456789") == std::string::npos) {
        const long value = std::stol(g.id);
        if (value >= 1 && value <= (1L << 24)) return static_cast<float>(value);
    }
    return static_cast<float>(ordinal);
}

BoundaryPoint ToBoundaryPoint(const LonLat& p) {
    BoundaryPoint b{static_cast<float>(p.lat), static_cast<float>(-p.lon)};
    if (b.lon == 0.0f) b.lon = 0.0f;  // no negative zero: the bytes stay the same on every run
    return b;
}

double ReachKm(const BoundaryPoint& from, const BoundaryPoint& to) {
    double north = 0, east = 0;
    return geodesy::FlatDistance(from.lat, from.lon, to.lat, to.lon, north, east);
}

void AppendPieces(const TopoLine& ring, float marker, double pieceKm,
                  std::vector<BoundaryLine>& out) {
    if (ring.size() < 2) return;
    BoundaryLine piece{marker, {ToBoundaryPoint(ring.front())}};
    for (std::size_t i = 1; i < ring.size(); ++i) {
        const BoundaryPoint p = ToBoundaryPoint(ring[i]);
        if (piece.points.size() >= 2 && ReachKm(piece.points.front(), p) > pieceKm) {
            const BoundaryPoint joint = piece.points.back();
            out.push_back(std::move(piece));
            piece = BoundaryLine{marker, {joint}};
        }
        piece.points.push_back(p);
    }
    out.push_back(std::move(piece));
}

std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw core::TrapError("cannot open \"" + path.string() + "\"");
    std::ostringstream bytes;
    bytes << in.rdbuf();
    if (in.bad()) throw core::TrapError("cannot read \"" + path.string() + "\"");
    return bytes.str();
}

void RemoveQuietly(const fs::path& path) {
    std::error_code ec;
    fs::remove(path, ec);
}

// Writes bytes under a temporary name beside target; returns that name.
fs::path WriteTemp(const fs::path& target, const std::string& bytes) {
    const fs::path temp = stationdb::TempPathBeside(target);
    std::ofstream out(temp, std::ios::binary | std::ios::trunc);
    if (out) out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) {
        RemoveQuietly(temp);
        throw core::TrapError("cannot write \"" + temp.string() + "\"");
    }
    return temp;
}

std::size_t PointCount(const std::vector<BoundaryLine>& lines) {
    std::size_t n = 0;
    for (const BoundaryLine& line : lines) n += line.points.size();
    return n;
}

std::vector<BoundaryLine> LinesOfAtlasObject(const fs::path& file, std::string_view object) {
    std::optional<Topology> topology;
    try {
        topology = Topology::Read(file);  // its errors name the file
        return BoundaryLinesFromGeometries(topology->Geometries(object));
    } catch (const TopoJsonError& e) {
        throw core::TrapError(topology ? "\"" + file.string() + "\": " + e.what()
                                       : std::string(e.what()));
    }
}

}  // namespace

std::string EncodeBoundaryFile(const std::vector<BoundaryLine>& lines, BoundaryEnd end) {
    std::string out;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const BoundaryLine& line = lines[i];
        CheckLine(line, i);
        PutFloat(out, 0.0f);
        PutFloat(out, line.marker);
        for (const BoundaryPoint& p : line.points) {
            PutFloat(out, p.lat);
            PutFloat(out, p.lon);
        }
    }
    if (end == BoundaryEnd::Mark) {
        PutFloat(out, 0.0f);
        PutFloat(out, 0.0f);
    }
    return out;
}

std::vector<BoundaryLine> DecodeBoundaryFile(std::string_view bytes) {
    FloatReader in(bytes);
    std::vector<BoundaryLine> lines;
    if (in.AtEnd()) return lines;
    if (in.Next("the leading separator") != 0.0f) {
        throw BoundaryFileError("the file does not start with a separator (0.0)");
    }
    for (;;) {
        if (in.AtEnd()) return lines;  // a separator as the very last value
        const float marker = in.Next("a marker");
        if (marker == 0.0f) break;
        BoundaryLine line{marker, {}};
        const bool more = ReadPoints(in, line);
        lines.push_back(std::move(line));
        if (!more) return lines;
    }
    if (!in.AtEnd()) {
        throw BoundaryFileError(std::to_string(bytes.size() - in.Offset()) +
                                " bytes follow the end mark at byte " +
                                std::to_string(in.Offset() - 8));
    }
    return lines;
}

bool WriteBoundaryFile(const fs::path& path, const std::vector<BoundaryLine>& lines,
                       BoundaryEnd end) {
    return core::TrappedVoid(kModule, ":WriteBoundaryFile:", [&] {
        const std::string bytes = EncodeBoundaryFile(lines, end);
        const fs::path temp = WriteTemp(path, bytes);
        std::error_code ec;
        fs::rename(temp, path, ec);
        if (ec) {
            RemoveQuietly(temp);
            throw core::TrapError("cannot write \"" + path.string() + "\": " + ec.message());
        }
    });
}

bool ReadBoundaryFile(const fs::path& path, std::vector<BoundaryLine>* lines) {
    return core::TrappedVoid(kModule, ":ReadBoundaryFile:", [&] {
        try {
            std::vector<BoundaryLine> read = DecodeBoundaryFile(ReadAll(path));
            if (lines != nullptr) *lines = std::move(read);
        } catch (const BoundaryFileError& e) {
            throw core::TrapError("\"" + path.string() + "\": " + e.what());
        }
    });
}

std::vector<BoundaryLine> BoundaryLinesFromGeometries(const std::vector<TopoGeometry>& geometries,
                                                      double pieceKm) {
    std::vector<BoundaryLine> lines;
    for (std::size_t i = 0; i < geometries.size(); ++i) {
        const float marker = MarkerOf(geometries[i], i + 1);
        for (const TopoLine& ring : geometries[i].lines) AppendPieces(ring, marker, pieceKm, lines);
    }
    return lines;
}

bool ImportBoundaries(const fs::path& atlasDir, const fs::path& outDir,
                      BoundaryImportSummary* summary) {
    return core::TrappedVoid(kModule, ":ImportBoundaries:", [&] {
        const auto states = LinesOfAtlasObject(atlasDir / "states-10m.json", "states");
        const auto counties = LinesOfAtlasObject(atlasDir / "counties-10m.json", "counties");
        fs::create_directories(outDir);
        const fs::path stateFile = outDir / kStateMapFile;
        const fs::path countyFile = outDir / kCountyMapFile;
        const fs::path stateTemp = WriteTemp(stateFile, EncodeBoundaryFile(states));
        fs::path countyTemp;
        try {
            countyTemp = WriteTemp(countyFile, EncodeBoundaryFile(counties));
            fs::rename(stateTemp, stateFile);
            fs::rename(countyTemp, countyFile);
        } catch (...) {
            RemoveQuietly(stateTemp);
            if (!countyTemp.empty()) RemoveQuietly(countyTemp);
            throw;
        }
        if (summary != nullptr) {
            *summary = {states.size(), PointCount(states), counties.size(), PointCount(counties)};
        }
    });
}

}  // namespace qarvel::mapdata
