#include "mapdata/topojson.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <sstream>

namespace qarvel::mapdata {
namespace {

using nlohmann::json;

// Bounds that keep a small hostile file from costing large amounts of stack
// or memory: JSON nesting (a topology needs about six levels), nested
// geometry collections, and the positions that stitching may copy out of
// the arcs (each arc is shared by a few outlines in a real topology).
constexpr std::size_t kMaxJsonDepth = 64;
constexpr int kMaxCollectionDepth = 16;
constexpr std::size_t kStitchFactor = 16;
constexpr std::size_t kStitchAllowance = 1'000'000;

struct Transform {
    bool quantized = false;
    double scaleX = 1, scaleY = 1, translateX = 0, translateY = 0;
};

// A member's text, or "" when it is missing or not a string.
std::string TextMember(const json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

double Number(const json& value, const std::string& what) {
    if (!value.is_number()) throw TopoJsonError(what + " is not a number");
    return value.get<double>();
}

Transform ReadTransform(const json& topology) {
    Transform t;
    const auto found = topology.find("transform");
    if (found == topology.end() || found->is_null()) return t;
    const json& scale = found->value("scale", json());
    const json& translate = found->value("translate", json());
    if (!scale.is_array() || scale.size() != 2 || !translate.is_array() || translate.size() != 2) {
        throw TopoJsonError("transform needs scale and translate, two numbers each");
    }
    t.quantized = true;
    t.scaleX = Number(scale[0], "transform scale");
    t.scaleY = Number(scale[1], "transform scale");
    t.translateX = Number(translate[0], "transform translate");
    t.translateY = Number(translate[1], "transform translate");
    return t;
}

// Quantized positions are integer deltas from the previous position of the
// same arc (the first from 0, 0); the transform maps the running sums to
// degrees. Unquantized arcs hold degrees directly.
TopoLine DecodeArc(const json& arc, const Transform& t, std::size_t index) {
    const std::string where = "arc " + std::to_string(index);
    if (!arc.is_array()) throw TopoJsonError(where + " is not an array of positions");
    TopoLine line;
    line.reserve(arc.size());
    std::int64_t x = 0, y = 0;
    for (const json& position : arc) {
        if (!position.is_array() || position.size() < 2) {
            throw TopoJsonError(where + " holds a position that is not [x, y]");
        }
        if (!t.quantized) {
            line.push_back({Number(position[0], where), Number(position[1], where)});
            continue;
        }
        if (!position[0].is_number_integer() || !position[1].is_number_integer()) {
            throw TopoJsonError(where + " holds a quantized position that is not whole numbers");
        }
        if (__builtin_add_overflow(x, position[0].get<std::int64_t>(), &x) ||
            __builtin_add_overflow(y, position[1].get<std::int64_t>(), &y)) {
            throw TopoJsonError(where + " runs beyond the range of whole numbers");
        }
        line.push_back({static_cast<double>(x) * t.scaleX + t.translateX,
                        static_cast<double>(y) * t.scaleY + t.translateY});
        if (!std::isfinite(line.back().lon) || !std::isfinite(line.back().lat))
            throw TopoJsonError(where + " holds a position beyond any number");
    }
    return line;
}

class GeometryDecoder {
  public:
    explicit GeometryDecoder(const std::vector<TopoLine>& arcs) : m_arcs(arcs) {
        std::size_t positions = 0;
        for (const TopoLine& arc : arcs) positions += arc.size();
        m_budget = positions * kStitchFactor + kStitchAllowance;
    }

    void Decode(const json& geometry, std::vector<TopoGeometry>& out, int depth = 0) {
        if (!geometry.is_object()) throw TopoJsonError("a geometry is not a JSON object");
        const std::string type = TextMember(geometry, "type");
        if (type == "GeometryCollection") {
            if (depth >= kMaxCollectionDepth)
                throw TopoJsonError("geometry collections nested deeper than " + std::to_string(kMaxCollectionDepth));
            for (const json& child : geometry.value("geometries", json::array()))
                Decode(child, out, depth + 1);
            return;
        }
        TopoGeometry g;
        g.type = type;
        g.id = IdText(geometry);
        if (const auto p = geometry.find("properties"); p != geometry.end() && p->is_object()) {
            g.name = TextMember(*p, "name");
        }
        const json& arcs = geometry.value("arcs", json());
        if (type == "LineString") {
            g.lines.push_back(Stitch(arcs));
        } else if (type == "MultiLineString" || type == "Polygon") {
            for (const json& line : Array(arcs, type)) g.lines.push_back(Stitch(line));
        } else if (type == "MultiPolygon") {
            for (const json& polygon : Array(arcs, type)) {
                for (const json& ring : Array(polygon, type)) g.lines.push_back(Stitch(ring));
            }
        } else {
            return;  // points and null geometries draw no lines
        }
        out.push_back(std::move(g));
    }

  private:
    static std::string IdText(const json& geometry) {
        const auto id = geometry.find("id");
        if (id == geometry.end() || id->is_null()) return {};
        return id->is_string() ? id->get<std::string>() : id->dump();
    }

    static const json& Array(const json& value, const std::string& type) {
        if (!value.is_array()) throw TopoJsonError(type + " arcs are not nested arrays");
        return value;
    }

    // Joins the referenced arcs into one polyline. Each arc after the first
    // starts where the previous one ended, so its first position is dropped.
    TopoLine Stitch(const json& references) {
        if (!references.is_array()) throw TopoJsonError("arc references are not an array");
        TopoLine line;
        for (const json& reference : references) {
            if (!reference.is_number_integer())
                throw TopoJsonError("an arc reference is not a whole number");
            const std::int64_t index = reference.get<std::int64_t>();
            const bool reversed = index < 0;
            const std::int64_t stored = reversed ? ~index : index;
            if (stored >= static_cast<std::int64_t>(m_arcs.size())) {
                throw TopoJsonError("arc reference " + std::to_string(index) +
                                    " is out of range (" + std::to_string(m_arcs.size()) +
                                    " arcs)");
            }
            TopoLine arc = m_arcs[static_cast<std::size_t>(stored)];
            if (arc.size() > m_budget)
                throw TopoJsonError("the outlines repeat their arcs far more often than a map does");
            m_budget -= arc.size();
            if (reversed) std::reverse(arc.begin(), arc.end());
            const auto from = line.empty() || arc.empty() ? arc.begin() : arc.begin() + 1;
            line.insert(line.end(), from, arc.end());
        }
        return line;
    }

    const std::vector<TopoLine>& m_arcs;
    std::size_t m_budget = 0;  // positions stitching may still copy
};

TopoJsonError NoSuchObject(std::string_view name) {
    return TopoJsonError("the topology has no object \"" + std::string(name) + "\"");
}

}  // namespace

Topology Topology::Parse(std::string_view jsonText) {
    json root;
    try {
        // Refuses deep nesting while parsing, before it can cost stack.
        const json::parser_callback_t depthLimit = [](int depth, json::parse_event_t, json&) {
            if (static_cast<std::size_t>(depth) > kMaxJsonDepth)
                throw TopoJsonError("JSON nested deeper than " + std::to_string(kMaxJsonDepth) + " levels");
            return true;
        };
        root = json::parse(jsonText, depthLimit);
    } catch (const json::exception& e) {
        throw TopoJsonError(std::string("not valid JSON: ") + e.what());
    }
    if (!root.is_object() || TextMember(root, "type") != "Topology") {
        throw TopoJsonError("not a TopoJSON topology (no \"type\": \"Topology\")");
    }
    try {
        Topology topology;
        const Transform transform = ReadTransform(root);
        const json& arcs = root.value("arcs", json::array());
        if (!arcs.is_array()) throw TopoJsonError("\"arcs\" is not an array");
        topology.m_arcs.reserve(arcs.size());
        for (std::size_t i = 0; i < arcs.size(); ++i)
            topology.m_arcs.push_back(DecodeArc(arcs[i], transform, i));

        const json& objects = root.value("objects", json::object());
        if (!objects.is_object()) throw TopoJsonError("\"objects\" is not an object");
        GeometryDecoder decoder(topology.m_arcs);
        for (const auto& [name, object] : objects.items()) {
            std::vector<TopoGeometry> geometries;
            try {
                decoder.Decode(object, geometries);
            } catch (const TopoJsonError& e) {
                throw TopoJsonError("object \"" + name + "\": " + e.what());
            }
            topology.m_objects.emplace(name, std::move(geometries));
        }
        return topology;
    } catch (const json::exception& e) {
        // A member of the wrong JSON type deep inside (value() on a non-object).
        throw TopoJsonError(std::string("malformed topology: ") + e.what());
    }
}

Topology Topology::Read(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw TopoJsonError("cannot open \"" + file.string() + "\"");
    std::ostringstream text;
    text << in.rdbuf();
    if (in.bad()) throw TopoJsonError("cannot read \"" + file.string() + "\"");
    try {
        return Parse(text.str());
    } catch (const TopoJsonError& e) {
        throw TopoJsonError("\"" + file.string() + "\": " + e.what());
    }
}

std::vector<std::string> Topology::ObjectNames() const {
    std::vector<std::string> names;
    for (const auto& entry : m_objects) names.push_back(entry.first);
    return names;
}

bool Topology::HasObject(std::string_view name) const {
    return m_objects.find(name) != m_objects.end();
}

const std::vector<TopoGeometry>& Topology::Geometries(std::string_view objectName) const& {
    const auto found = m_objects.find(objectName);
    if (found == m_objects.end()) throw NoSuchObject(objectName);
    return found->second;
}

std::vector<TopoGeometry> Topology::Geometries(std::string_view objectName) && {
    const auto found = m_objects.find(objectName);
    if (found == m_objects.end()) throw NoSuchObject(objectName);
    return std::move(found->second);
}

}  // namespace qarvel::mapdata
