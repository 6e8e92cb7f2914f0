#pragma once
// What the map draws, in drawing order, as a list of simple shapes in map
// user coordinates (km west and km north of the map centre). The model
// decides every layer, station, colour, radius and pen; a renderer only maps
// km to its device and paints the list (render/map_renderer.h).

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "jobview/map_arrays.h"
#include "jobview/map_model.h"
#include "jobview/map_stations.h"

namespace qarvel::jobview {

enum class StationColoring { Clearance, Channel };  // toolbar "ClearColor" / "ChannelColor"

// The map's settings as one plain value: scale, toolbar switches, the map
// options of the settings store, and how it is being drawn.
struct MapSettings {
    std::int32_t scale = 0;  // N of 1:N; 0 means 1:1,000,000
    // Toolbar switches.
    StationColoring coloring = StationColoring::Clearance;
    bool fillCircles = false;  // "Fill": filled discs; background layers drawn over them
    bool showCircles = true;   // "Circles" (false: "Points", centre symbols only)
    bool showAm = false;       // "AM" / "noAM"
    bool showCalls = true;     // "Calls" / "noCalls"
    bool showBorders = true;   // "Borders" / "noBorders": all background layers
    // Map options (settings store).
    bool gMapOptLatLon = true;
    bool gMapOptState = true;
    bool gMapOptCounty = true;
    bool gMapOptCities = true;
    int gMapCityCount = 20;
    bool gMapOptMarkers = true;
    bool gMapOptCrosshair = true;
    bool gMapOptScale = true;
    bool gMapOptReduceRadii = false;  // circles (not AM) 0.5 km inside the separation
    // Drawing.
    bool printer = false;      // paper: white ground, yellow printed darker
    bool drawText = true;      // labels, call signs, city and marker names
    bool centersOnly = false;  // RepaintMap's argument: no background, no circles
};

// What the map is drawn about.
struct MapScene {
    float centreLat = 0;  // map centre, degrees north (single precision, as the view keeps it)
    float centreLon = 0;  // degrees, positive WEST
    const MapArrays* arrays = nullptr;  // boundaries, cities, markers; null: none
    std::vector<MapStation> stations;   // in drawing order (ReadMapStations)
};

enum class MapLayer {
    LatLonGrid, CountyLines, StateLines, Cities, Markers,
    StationCircles, StationCenters, Crosshair, ScaleBar,
};

// The layers in drawing order. Without fill mode the background layers
// (grid, county and state lines - each only when loaded -, cities, markers;
// each only when its option is on) come first, under the stations; in fill
// mode they come after the stations so that lines stay visible over the
// discs. No background at all when borders are hidden or only centres are
// drawn. Then the circle pass (unless centres only), the centre pass, the
// crosshair and the scale bar.
std::vector<MapLayer> LayerOrder(const MapSettings& settings, bool stateLoaded, bool countyLoaded);

struct KmPoint {
    double x = 0;  // km west of the centre
    double y = 0;  // km north of the centre
};

enum class Shape {
    Polyline,    // points: the vertices
    Circle,      // points[0]: centre; radiusKm; outline of penWidth pixels
    Disc,        // points[0]: centre; radiusKm; filled
    FilledRect,  // points[0], points[1]: opposite corners
    Text,        // points[0]: anchor; left edge there, or centred; middle on the anchor
};

struct Primitive {
    MapLayer layer = MapLayer::LatLonGrid;
    Shape shape = Shape::Polyline;
    std::int32_t color = 0;  // Windows colour value, as drawn
    int penWidth = 1;        // device pixels
    std::vector<KmPoint> points;
    double radiusKm = 0;
    std::string text;            // UTF-8
    double textHeightKm = 0;
    bool centred = false;        // text centred on the anchor
    int station = -1;            // index into MapScene::stations, -1 for other layers
};

// Stations counted by status ("LI", "CP", "AP", "AD", "VA", "RS", "DE", by
// the first two letters of fm_dom_status) and by relation ("Primary",
// "1st Adj", "2nd Adj", "3rd Adj", "IF", "TV6"), for the legend.
inline constexpr std::array<const char*, 7> kLegendStatuses = {"LI", "CP", "AP", "AD", "VA", "RS", "DE"};
inline constexpr std::array<const char*, 6> kLegendRelations = {"Primary", "1st Adj", "2nd Adj",
                                                                "3rd Adj", "IF", "TV6"};
struct MapCounts {
    std::array<int, 7> byStatus{};
    std::array<int, 6> byRelation{};
};

struct DisplayList {
    std::int32_t background = 0;  // ground colour
    std::vector<MapLayer> layers;  // LayerOrder
    std::vector<Primitive> items;  // in drawing order
    MapCounts counts;
};

// The colours of the layers that are not stations.
struct MapPalette {
    std::int32_t background, latLonGrid, countyLines, stateLines, cities, markers, crosshair, scaleBar;
    int statePenWidth;
};
MapPalette PaletteFor(bool printer);

// A station's circle radius as drawn (km): its separation, 0.5 km less with
// reduced radii unless it is an AM station. May be negative (not drawn).
double DrawnRadius(const MapStation& station, bool reduceRadii);

// True when a circle of radius r about (x, y) lies wholly outside the map:
// |x| - r beyond half the width or |y| - r beyond half the height.
bool OffMap(double x, double y, double r, const MapFrame& frame);

// True when the text holds the character of code `code` (164, the excluded-
// record marker; 187, the emphasis marker): as UTF-8, or as a lone Latin-1
// byte that is not part of a UTF-8 character.
bool HasMarkerChar(const std::string& text, char32_t code);

// RepaintMap: the display list of the map. Reported under "frmDispJob"
// ":RepaintMap:"; an empty list (ground only) on failure.
DisplayList BuildDisplayList(const MapScene& scene, const MapSettings& settings, const MapFrame& frame);

}  // namespace qarvel::jobview
