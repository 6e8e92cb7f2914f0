// TopoJSON decoding: quantized arcs, arc references with the one's-complement
// reversal, polygon rings, and the malformed topologies that must be refused.

#include "mapdata/topojson.h"

#include <gtest/gtest.h>

#include <ostream>

#include <algorithm>
#include <filesystem>

namespace qarvel::mapdata {
namespace {

namespace fs = std::filesystem;

// Two arcs forming a one-degree square between 30-31 N and 99-100 W:
// arc 0 runs south edge then east edge, arc 1 west edge then north edge.
// Quantized with scale (0.5, 0.25) and translate (-100, 30); positions are
// deltas: arc 0 is (0,0) (2,0) (2,4), arc 1 is (0,0) (0,4) (2,4).
constexpr const char* kSquare = R"({
  "type": "Topology",
  "transform": {"scale": [0.5, 0.25], "translate": [-100, 30]},
  "objects": {
    "shapes": {"type": "GeometryCollection", "geometries": [
      {"type": "Polygon", "id": "06", "properties": {"name": "Square"}, "arcs": [[0, -2]]},
      {"type": "MultiPolygon", "id": 7, "arcs": [[[0, -2]], [[1, -1]]]},
      {"type": "LineString", "arcs": [-1]},
      {"type": "Point", "coordinates": [1, 2]},
      {"type": null}
    ]},
    "single": {"type": "LineString", "arcs": [1]}
  },
  "arcs": [[[0, 0], [2, 0], [0, 4]], [[0, 0], [0, 4], [2, 0]]]
})";

const TopoLine kSquareRing{{-100, 30}, {-99, 30}, {-99, 31}, {-100, 31}, {-100, 30}};

TEST(TopoJson, DecodesQuantizedDeltaArcs) {
    const Topology t = Topology::Parse(kSquare);
    ASSERT_EQ(t.Arcs().size(), 2u);
    EXPECT_EQ(t.Arcs()[0], (TopoLine{{-100, 30}, {-99, 30}, {-99, 31}}));
    EXPECT_EQ(t.Arcs()[1], (TopoLine{{-100, 30}, {-100, 31}, {-99, 31}}));
}

TEST(TopoJson, PolygonRingJoinsArcsAndReversesNegativeIndices) {
    const auto& shapes = Topology::Parse(kSquare).Geometries("shapes");
    ASSERT_GE(shapes.size(), 1u);
    const TopoGeometry& square = shapes[0];
    EXPECT_EQ(square.type, "Polygon");
    EXPECT_EQ(square.id, "06");
    EXPECT_EQ(square.name, "Square");
    ASSERT_EQ(square.lines.size(), 1u);
    // -2 is arc 1 backwards; the shared corner (-99, 31) appears once.
    EXPECT_EQ(square.lines[0], kSquareRing);
}

TEST(TopoJson, MultiPolygonGivesOneLinePerRing) {
    const auto& shapes = Topology::Parse(kSquare).Geometries("shapes");
    ASSERT_GE(shapes.size(), 2u);
    const TopoGeometry& multi = shapes[1];
    EXPECT_EQ(multi.id, "7");  // a numeric id becomes its text
    EXPECT_EQ(multi.name, "");
    ASSERT_EQ(multi.lines.size(), 2u);
    EXPECT_EQ(multi.lines[0], kSquareRing);
    // [1, -1]: west and north edges, then arc 0 backwards down to the start.
    EXPECT_EQ(multi.lines[1], (TopoLine{{-100, 30}, {-100, 31}, {-99, 31}, {-99, 30}, {-100, 30}}));
}

TEST(TopoJson, MinusOneIsArcZeroReversed) {
    const auto& shapes = Topology::Parse(kSquare).Geometries("shapes");
    ASSERT_GE(shapes.size(), 3u);
    ASSERT_EQ(shapes[2].lines.size(), 1u);
    EXPECT_EQ(shapes[2].lines[0], (TopoLine{{-99, 31}, {-99, 30}, {-100, 30}}));
}

TEST(TopoJson, PointsAndNullGeometriesCarryNoLines) {
    const Topology t = Topology::Parse(kSquare);
    EXPECT_EQ(t.Geometries("shapes").size(), 3u);
    ASSERT_EQ(t.Geometries("single").size(), 1u);  // an object that is one geometry
    EXPECT_EQ(t.ObjectNames(), (std::vector<std::string>{"shapes", "single"}));
}

TEST(TopoJson, UnquantizedArcsHoldDegrees) {
    const Topology t = Topology::Parse(R"({"type": "Topology", "objects": {},
        "arcs": [[[-75.5, 40.25], [-75.0, 40.5]]]})");
    EXPECT_EQ(t.Arcs()[0], (TopoLine{{-75.5, 40.25}, {-75.0, 40.5}}));
}

struct BadTopology {
    const char* name;
    const char* json;
    const char* problem;  // part of the message
};
// Names the case in test listings instead of dumping its bytes.
void PrintTo(const BadTopology& c, std::ostream* os) {
    *os << c.name;
}

class TopoJsonRefuses : public ::testing::TestWithParam<BadTopology> {};

TEST_P(TopoJsonRefuses, WithAMessageNamingTheFault) {
    try {
        Topology::Parse(GetParam().json);
        FAIL() << "accepted";
    } catch (const TopoJsonError& e) {
        EXPECT_NE(std::string(e.what()).find(GetParam().problem), std::string::npos) << e.what();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, TopoJsonRefuses,
    ::testing::Values(
        BadTopology{"NotJson", "{\"type\": ", "not valid JSON"},
        BadTopology{"NotATopology", R"({"type": "FeatureCollection"})", "not a TopoJSON topology"},
        BadTopology{"ArcIndexPastEnd", R"({"type": "Topology", "arcs": [[[0, 0], [1, 1]]],
            "objects": {"o": {"type": "LineString", "arcs": [1]}}})",
                    "out of range"},
        BadTopology{"ReversedIndexPastEnd", R"({"type": "Topology", "arcs": [[[0, 0], [1, 1]]],
            "objects": {"o": {"type": "LineString", "arcs": [-2]}}})",
                    "out of range"},
        BadTopology{"FractionalDelta",
                    R"({"type": "Topology", "transform": {"scale": [1, 1], "translate": [0, 0]},
            "arcs": [[[0, 0], [0.5, 1]]], "objects": {}})",
                    "not whole numbers"},
        BadTopology{"ShortTransform", R"({"type": "Topology", "transform": {"scale": [1]},
            "arcs": [], "objects": {}})",
                    "scale and translate"},
        BadTopology{"PositionNotPair", R"({"type": "Topology", "arcs": [[[0]]], "objects": {}})",
                    "not [x, y]"},
        BadTopology{"DeltaOverflow", R"({"type": "Topology", "transform": {"scale": [1, 1], "translate": [0, 0]},
            "arcs": [[[9223372036854775807, 0], [1, 0]]], "objects": {}})",
                    "range of whole numbers"},
        BadTopology{"PolygonArcsFlat", R"({"type": "Topology", "arcs": [[[0, 0], [1, 1]]],
            "objects": {"o": {"type": "Polygon", "arcs": [0]}}})",
                    "object \"o\""}),
    [](const auto& tc) { return std::string(tc.param.name); });

// Small files that would cost the stack or memory out of proportion.
TEST(TopoJson, HostileNestingAndRepetitionAreBounded) {
    const std::string deepArrays = R"({"type": "Topology", "x": )" + std::string(100000, '[') + std::string(100000, ']') + "}";
    EXPECT_THROW(Topology::Parse(deepArrays), TopoJsonError);

    std::string collections = R"({"type": "GeometryCollection", "geometries": [])";
    for (int i = 0; i < 20; ++i) collections = R"({"type": "GeometryCollection", "geometries": [)" + collections + "]}";
    EXPECT_THROW(Topology::Parse(R"({"type": "Topology", "arcs": [], "objects": {"o": )" + collections + "}}"),
                 TopoJsonError);

    // One arc of 1,000 positions referenced 100,000 times: 100 million copies.
    std::string arc = "[[0, 0]";
    for (int i = 0; i < 999; ++i) arc += ", [1, 1]";
    std::string refs = "0";
    for (int i = 0; i < 99999; ++i) refs += ", 0";
    const std::string amplified = R"({"type": "Topology", "arcs": [)" + arc + R"(]], "objects": {"o": {"type": "LineString", "arcs": [)" +
                                  refs + "]}}}";
    EXPECT_THROW(Topology::Parse(amplified), TopoJsonError);
}

TEST(TopoJson, MissingObjectAndFileAreNamed) {
    const Topology t = Topology::Parse(kSquare);
    EXPECT_FALSE(t.HasObject("counties"));
    EXPECT_THROW(t.Geometries("counties"), TopoJsonError);
    EXPECT_THROW(Topology::Read("/nonexistent/states-10m.json"), TopoJsonError);
}

// The real Census boundaries of the pinned us-atlas package.
TEST(TopoJsonAtlas, StatesOfTheRealPackage) {
    const fs::path file =
        fs::path(QARVEL_SOURCE_DIR) / "node_modules" / "us-atlas" / "states-10m.json";
    if (!fs::exists(file))
        GTEST_SKIP() << "node_modules/us-atlas is absent; run npm ci in the source folder";
    const Topology t = Topology::Read(file);
    const auto& states = t.Geometries("states");
    EXPECT_EQ(states.size(), 56u);  // 50 states, DC and five territories
    const auto california =
        std::find_if(states.begin(), states.end(), [](const auto& g) { return g.id == "06"; });
    ASSERT_NE(california, states.end());
    EXPECT_EQ(california->name, "California");
    for (const TopoLine& ring : california->lines) {
        ASSERT_GE(ring.size(), 4u);
        EXPECT_EQ(ring.front(), ring.back());  // rings close on themselves
        for (const LonLat& p : ring) {
            EXPECT_TRUE(p.lat > 32.4 && p.lat < 42.1 && p.lon > -124.5 && p.lon < -114.1)
                << p.lat << ", " << p.lon;
        }
    }
}

}  // namespace
}  // namespace qarvel::mapdata
