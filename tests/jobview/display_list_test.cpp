// What the map draws and in which order: the layer order with and without
// fill mode, the two station passes, off-map circles, reduced radii, colours,
// markers in call signs, and the layers round the stations.

#include "jobview/display_list.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "jobview/map_layers.h"
#include "jobview/station_colors.h"

namespace qarvel::jobview {
namespace {

using L = MapLayer;

MapStation Station(const std::string& call, double x, double y, double radius, const std::string& service = "FM") {
    MapStation s;
    s.callsign = call;
    s.x = x;
    s.y = y;
    s.radius = radius;
    s.service = service;
    s.color1 = kColorFirstAdj;
    s.color2 = kColorShort;
    s.status = "LIC";
    s.adjacency = "1st Adj";
    return s;
}

MapFrame Frame(double widthKm = 200, double heightKm = 100) {
    MapFrame f;
    f.widthKm = widthKm;
    f.heightKm = heightKm;
    f.symbolSizeKm = 5.0;
    return f;
}

std::vector<const Primitive*> Of(const DisplayList& list, L layer) {
    std::vector<const Primitive*> out;
    for (const Primitive& p : list.items) {
        if (p.layer == layer) out.push_back(&p);
    }
    return out;
}

TEST(LayerOrder, BackgroundUnderTheStationsWithoutFill) {
    MapSettings s;
    EXPECT_EQ(LayerOrder(s, true, true),
              (std::vector<L>{L::LatLonGrid, L::CountyLines, L::StateLines, L::Cities, L::Markers, L::StationCircles,
                              L::StationCenters, L::Crosshair, L::ScaleBar}));
}

TEST(LayerOrder, BackgroundOverTheDiscsInFillMode) {
    MapSettings s;
    s.fillCircles = true;
    EXPECT_EQ(LayerOrder(s, true, true),
              (std::vector<L>{L::StationCircles, L::StationCenters, L::LatLonGrid, L::CountyLines, L::StateLines,
                              L::Cities, L::Markers, L::Crosshair, L::ScaleBar}));
}

TEST(LayerOrder, OptionsFilesBordersAndCentresOnly) {
    MapSettings s;
    s.gMapOptCities = false;
    s.gMapOptCrosshair = false;
    EXPECT_EQ(LayerOrder(s, true, false),  // no county file loaded
              (std::vector<L>{L::LatLonGrid, L::StateLines, L::Markers, L::StationCircles, L::StationCenters,
                              L::ScaleBar}));
    s.showBorders = false;
    EXPECT_EQ(LayerOrder(s, true, true), (std::vector<L>{L::StationCircles, L::StationCenters, L::ScaleBar}));
    s.showBorders = true;
    s.centersOnly = true;
    EXPECT_EQ(LayerOrder(s, true, true), (std::vector<L>{L::StationCenters, L::ScaleBar}));
}

TEST(StationPasses, EveryCircleBeforeAnyCentre) {
    MapScene scene;
    scene.stations = {Station("KA", 0, 0, 30), Station("KB", 20, 10, 40), Station("KC", -30, 5, 50)};
    MapSettings settings;
    settings.fillCircles = true;
    const DisplayList list = BuildDisplayList(scene, settings, Frame());
    std::vector<std::pair<L, int>> order;
    for (const Primitive& p : list.items) {
        if (p.station >= 0 && p.shape != Shape::Text) order.emplace_back(p.layer, p.station);
    }
    // Disc then outline for each station, then the centres, in query order.
    EXPECT_EQ(order, (std::vector<std::pair<L, int>>{{L::StationCircles, 0}, {L::StationCircles, 0},
                                                     {L::StationCircles, 1}, {L::StationCircles, 1},
                                                     {L::StationCircles, 2}, {L::StationCircles, 2},
                                                     {L::StationCenters, 0}, {L::StationCenters, 1},
                                                     {L::StationCenters, 2}}));
    const auto circles = Of(list, L::StationCircles);
    EXPECT_EQ(circles[0]->shape, Shape::Disc);
    EXPECT_EQ(circles[1]->shape, Shape::Circle);
}

struct OffMapCase {
    const char* name;
    double x, y, r;
    bool off;
};
class OffMapTest : public ::testing::TestWithParam<OffMapCase> {};
TEST_P(OffMapTest, HalfWidth100HalfHeight50) {
    const OffMapCase& c = GetParam();
    EXPECT_EQ(OffMap(c.x, c.y, c.r, Frame()), c.off);
}
INSTANTIATE_TEST_SUITE_P(
    Edges, OffMapTest,
    ::testing::Values(OffMapCase{"TouchingRightEdgeIsDrawn", -150, 0, 50, false},
                      OffMapCase{"BeyondLeftEdge", 150, 0, 49.99, true},
                      OffMapCase{"TouchingTopIsDrawn", 0, 80, 30, false},
                      OffMapCase{"BelowBottom", 0, -80, 29.99, true},
                      OffMapCase{"CornerBothWithin", 100, 50, 0, false}),
    [](const auto& tc) { return std::string(tc.param.name); });

TEST(StationPasses, OffMapStationsAreSkippedInBothPasses) {
    MapScene scene;
    scene.stations = {Station("KOFF", 150, 0, 49.99), Station("KON", 150, 0, 50.01)};
    const DisplayList list = BuildDisplayList(scene, MapSettings{}, Frame());
    for (const Primitive& p : list.items) EXPECT_NE(p.station, 0);
    EXPECT_EQ(Of(list, L::StationCircles).size(), 1u);
}

TEST(StationPasses, ReducedRadiiSpareAmStations) {
    EXPECT_DOUBLE_EQ(DrawnRadius(Station("K", 0, 0, 115), true), 114.5);
    EXPECT_DOUBLE_EQ(DrawnRadius(Station("K", 0, 0, 115), false), 115.0);
    EXPECT_DOUBLE_EQ(DrawnRadius(Station("K", 0, 0, 22, "TV"), true), 21.5);
    EXPECT_DOUBLE_EQ(DrawnRadius(Station("K", 0, 0, 3, "AM"), true), 3.0);
    MapScene scene;
    scene.stations = {Station("KA", 0, 0, 30)};
    MapSettings settings;
    settings.gMapOptReduceRadii = true;
    const DisplayList list = BuildDisplayList(scene, settings, Frame());
    EXPECT_DOUBLE_EQ(Of(list, L::StationCircles).at(0)->radiusKm, 29.5);
}

TEST(StationPasses, ColouringAndPaper) {
    MapScene scene;
    scene.stations = {Station("KA", 0, 0, 30)};
    MapSettings settings;
    EXPECT_EQ(Of(BuildDisplayList(scene, settings, Frame()), L::StationCircles).at(0)->color, kColorShort);
    settings.coloring = StationColoring::Channel;
    EXPECT_EQ(Of(BuildDisplayList(scene, settings, Frame()), L::StationCircles).at(0)->color, kColorFirstAdj);
    settings.printer = true;  // yellow is printed darker
    EXPECT_EQ(Of(BuildDisplayList(scene, settings, Frame()), L::StationCircles).at(0)->color, Rgb(125, 100, 0));
}

TEST(StationPasses, MarkersInCallSigns) {
    MapScene scene;
    scene.stations = {Station("K\xC2\xA4X", 0, 0, 30), Station("K\xC2\xA4TV", 0, 0, 30, "TV"),
                      Station("K\xC2\xBB", 0, 0, 30), Station("KPLAIN", 0, 0, 30)};
    const DisplayList list = BuildDisplayList(scene, MapSettings{}, Frame());
    const auto circles = Of(list, L::StationCircles);
    ASSERT_EQ(circles.size(), 3u);  // the excluded FM record is not drawn; the TV one is
    EXPECT_EQ(circles[0]->station, 1);
    EXPECT_EQ(circles[1]->penWidth, 3);
    EXPECT_EQ(circles[2]->penWidth, 1);
    EXPECT_EQ(std::count_if(list.items.begin(), list.items.end(), [](const Primitive& p) { return p.station == 0; }),
              0);
}

TEST(StationPasses, AmOnlyWhenShownPointsModeAndNoText) {
    MapScene scene;
    scene.stations = {Station("KAM", 0, 0, 0, "AM"), Station("KFM", 10, 0, 30)};
    MapSettings settings;
    settings.showCircles = false;
    settings.drawText = false;
    DisplayList list = BuildDisplayList(scene, settings, Frame());
    EXPECT_TRUE(Of(list, L::StationCircles).empty());
    ASSERT_EQ(Of(list, L::StationCenters).size(), 1u);
    EXPECT_EQ(Of(list, L::StationCenters)[0]->station, 1);
    settings.showAm = true;
    list = BuildDisplayList(scene, settings, Frame());
    ASSERT_EQ(Of(list, L::StationCenters).size(), 2u);
    EXPECT_EQ(Of(list, L::StationCenters)[0]->color, kColorAM);
    EXPECT_TRUE(std::none_of(list.items.begin(), list.items.end(), [](const Primitive& p) { return p.shape == Shape::Text; }));
}

TEST(StationPasses, CallSignsBesideTheCentres) {
    MapScene scene;
    scene.stations = {Station("KFM", 10, 0, 30)};
    MapSettings settings;
    const DisplayList list = BuildDisplayList(scene, settings, Frame());
    const auto centres = Of(list, L::StationCenters);
    ASSERT_EQ(centres.size(), 2u);
    EXPECT_EQ(centres[1]->text, "KFM");
    EXPECT_LT(centres[1]->points[0].x, 10.0);  // east of the station
    settings.showCalls = false;
    EXPECT_EQ(Of(BuildDisplayList(scene, settings, Frame()), L::StationCenters).size(), 1u);
}

TEST(StationPasses, LegendCounts) {
    MapScene scene;
    scene.stations = {Station("KA", 0, 0, 30), Station("KB", 0, 0, 30), Station("KTV", 0, 0, 30, "TV")};
    scene.stations[1].status = "CP";
    scene.stations[2].status = "";
    scene.stations[2].adjacency = "TV6";
    const MapCounts counts = BuildDisplayList(scene, MapSettings{}, Frame()).counts;
    EXPECT_EQ(counts.byStatus[0], 1);   // LI
    EXPECT_EQ(counts.byStatus[1], 1);   // CP
    EXPECT_EQ(counts.byRelation[1], 2); // 1st Adj
    EXPECT_EQ(counts.byRelation[5], 1); // TV6
}

TEST(MarkerChar, Utf8AndLatin1) {
    EXPECT_TRUE(HasMarkerChar("K\xC2\xA4", 164));
    EXPECT_TRUE(HasMarkerChar("\xA4KAAA", 164));      // a lone Latin-1 byte
    EXPECT_FALSE(HasMarkerChar("K\xC3\xA4", 164));    // "ä" is not the marker
    EXPECT_TRUE(HasMarkerChar("\xC2\xBBK", 187));
    EXPECT_FALSE(HasMarkerChar("KAAA", 164));
}

// The boundary layers: rows from 1, pen-up rows split lines, lines wholly
// off the map are left out.
TEST(Layers, BoundaryLinesSplitAtPenUpRows) {
    MapArrays arrays;
    arrays.countyMapLoaded = true;
    arrays.countyMap = {{39.5f, 98.5f},  // row 0 is never drawn
                        {0.0f, 7.0f},   {39.1f, 98.0f}, {39.2f, 98.1f}, {39.3f, 98.0f},
                        {0.0f, 8.0f},   {39.0f, 97.9f}, {38.9f, 97.9f},
                        {0.0f, 9.0f},   {45.0f, 98.0f}, {45.1f, 98.0f}};  // far north: off the map
    MapScene scene;
    scene.centreLat = 39.0f;
    scene.centreLon = 98.0f;
    scene.arrays = &arrays;
    MapSettings settings;
    settings.gMapOptLatLon = settings.gMapOptCrosshair = settings.gMapOptScale = false;
    const DisplayList list = BuildDisplayList(scene, settings, Frame());
    const auto lines = Of(list, L::CountyLines);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0]->points.size(), 3u);
    EXPECT_NEAR(lines[0]->points[0].y, 11.06, 0.05);  // 0.1 degree north
    EXPECT_NEAR(lines[1]->points[0].x, -8.66, 0.05);  // 0.1 degree east: x is km WEST
}

TEST(Layers, AtMostCityCountCitiesInsideTheMap) {
    MapArrays arrays;
    arrays.places = {{"Far", 45 * 14400, 98 * 14400}, {"One", 39 * 14400, 98 * 14400},
                     {"Two", 39 * 14400 + 1440, 98 * 14400}, {"Three", 39 * 14400 - 1440, 98 * 14400}};
    arrays.markers = {{"Tower", 39 * 14400, 98 * 14400 + 1440}};
    MapScene scene;
    scene.centreLat = 39.0f;
    scene.centreLon = 98.0f;
    scene.arrays = &arrays;
    MapSettings settings;
    settings.gMapCityCount = 2;
    const DisplayList list = BuildDisplayList(scene, settings, Frame());
    const auto cities = Of(list, L::Cities);
    ASSERT_EQ(cities.size(), 2u);
    EXPECT_EQ(cities[0]->text, "One");
    EXPECT_EQ(cities[1]->text, "Two");
    const auto markers = Of(list, L::Markers);
    ASSERT_EQ(markers.size(), 1u);
    EXPECT_GT(markers[0]->points[0].x, 0.0);  // a tenth of a degree west
}

TEST(Layers, LatLonGridCoversTheMapAtItsSpacing) {
    MapScene scene;
    scene.centreLat = 39.0f;
    scene.centreLon = 98.0f;
    MapSettings settings;
    settings.drawText = false;
    const MapFrame frame = Frame(200, 200);  // 200 km / 110.9 km per degree: span 1.8 -> 0.5 degree
    const DisplayList list = BuildDisplayList(scene, settings, frame);
    const auto grid = Of(list, L::LatLonGrid);
    std::vector<double> ys;
    for (const Primitive* p : grid) {
        if (p->points[0].y == p->points[1].y) ys.push_back(p->points[0].y);
    }
    ASSERT_GE(ys.size(), 4u);
    EXPECT_LT(ys.front(), -100.0);
    EXPECT_GT(ys.back(), 100.0);
    EXPECT_NEAR(ys[1] - ys[0], 0.5 * 110.99, 0.2);
}

TEST(Layers, ScaleBarOfAFiveHundredKmMap) {
    MapScene scene;
    MapSettings settings;
    settings.gMapOptLatLon = settings.gMapOptCrosshair = false;
    const DisplayList list = BuildDisplayList(scene, settings, Frame(500, 500));
    const auto bar = Of(list, L::ScaleBar);
    ASSERT_EQ(bar.size(), 2u);
    EXPECT_DOUBLE_EQ(bar[0]->points[0].x, 225.0);           // 5 % in from the left edge
    EXPECT_DOUBLE_EQ(bar[0]->points[0].y, -200.0);          // 10 % above the bottom
    EXPECT_DOUBLE_EQ(bar[0]->points[1].x, 225.0 - 200.0);   // 200 km long
    EXPECT_DOUBLE_EQ(bar[0]->points[1].y, -200.0 + 5.0);    // W / 100 high
    EXPECT_EQ(bar[1]->text, "200 km");
}

TEST(Layers, GridLabels) {
    EXPECT_EQ(LatLonLabel(40.5, true), "40\xC2\xB0" "30'N");
    EXPECT_EQ(LatLonLabel(97.125, false), "97\xC2\xB0" "07.5'W");
    EXPECT_EQ(LatLonLabel(-33.0, true), "33\xC2\xB0" "00'S");
}

}  // namespace
}  // namespace qarvel::jobview
