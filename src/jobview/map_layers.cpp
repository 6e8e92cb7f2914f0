// The layers round the stations: latitude/longitude grid, state and county
// lines, city and marker names, crosshair and scale bar, each in map user
// coordinates about the map centre.

#include "jobview/map_layers.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "geodesy/geodesy.h"

namespace qarvel::jobview {

namespace {

constexpr double kStoredUnitsPerDegree = 14400.0;
// A guard against absurd frames: no grid has more lines than this per axis.
constexpr int kMaxGridLines = 2000;

Primitive Line(MapLayer layer, std::int32_t color, int penWidth, std::vector<KmPoint> points) {
    Primitive p;
    p.layer = layer;
    p.shape = Shape::Polyline;
    p.color = color;
    p.penWidth = penWidth;
    p.points = std::move(points);
    return p;
}

Primitive Label(MapLayer layer, std::int32_t color, KmPoint at, std::string text, double height, bool centred) {
    Primitive p;
    p.layer = layer;
    p.shape = Shape::Text;
    p.color = color;
    p.points = {at};
    p.text = std::move(text);
    p.textHeightKm = height;
    p.centred = centred;
    return p;
}

bool Inside(const KmPoint& p, const MapFrame& frame) {
    return std::fabs(p.x) <= frame.widthKm / 2 && std::fabs(p.y) <= frame.heightKm / 2;
}

// Grid lines of one axis: values from Int((centre - half / k) / spacing) x
// spacing - 2 spacings to Int((centre + half / k) / spacing) x spacing + 2
// spacings.
std::vector<double> GridValues(double centre, double halfKm, double kmPerDeg, double spacing) {
    const double first = std::floor((centre - halfKm / kmPerDeg) / spacing) * spacing - 2 * spacing;
    const double last = std::floor((centre + halfKm / kmPerDeg) / spacing) * spacing + 2 * spacing;
    std::vector<double> values;
    const long count = std::lround((last - first) / spacing);
    for (long i = 0; i <= count && i <= kMaxGridLines; ++i) values.push_back(first + static_cast<double>(i) * spacing);
    return values;
}

// The point of a boundary row about the (single-precision) centre.
KmPoint BoundaryPoint(float centreLat, float centreLon, const MapRow& row) {
    float lat = row.col1, lon = row.col2, north = 0, east = 0;
    geodesy::FlatDistanceSingle(centreLat, centreLon, lat, lon, north, east);
    return {-static_cast<double>(east), static_cast<double>(north)};
}

struct Box {
    double minX = 1e300, maxX = -1e300, minY = 1e300, maxY = -1e300;
    void Add(const KmPoint& p) {
        minX = std::min(minX, p.x), maxX = std::max(maxX, p.x);
        minY = std::min(minY, p.y), maxY = std::max(maxY, p.y);
    }
    bool Meets(const MapFrame& f) const {
        return maxX >= -f.widthKm / 2 && minX <= f.widthKm / 2 && maxY >= -f.heightKm / 2 && minY <= f.heightKm / 2;
    }
};

}  // namespace

double LabelHeightKm(const MapFrame& frame) { return frame.symbolSizeKm / 2.5; }

std::string LatLonLabel(double degrees, bool latitude) {
    const char hemisphere = latitude ? (degrees < 0 ? 'S' : 'N') : (degrees < 0 ? 'E' : 'W');
    const double magnitude = std::fabs(degrees);
    double whole = std::floor(magnitude);
    double minutes = (magnitude - whole) * 60.0;
    if (minutes > 59.95) whole += 1, minutes = 0;
    char text[40];
    const double tenths = std::nearbyint(minutes * 10.0);
    if (std::fmod(tenths, 10.0) == 0.0) {
        std::snprintf(text, sizeof text, "%.0f\xC2\xB0%02.0f'%c", whole, tenths / 10.0, hemisphere);
    } else {
        std::snprintf(text, sizeof text, "%.0f\xC2\xB0%04.1f'%c", whole, tenths / 10.0, hemisphere);
    }
    return text;
}

void AddLatLonGrid(const LayerContext& c) {
    const MapFrame& f = c.frame;
    const double kLat = geodesy::KmPerDegLat(c.scene.centreLat);
    const double kLon = geodesy::KmPerDegLon(c.scene.centreLat);
    const double spacing = LatLonSpacing(f.widthKm / kLat);
    const double halfW = f.widthKm / 2, halfH = f.heightKm / 2;
    const double textHeight = LabelHeightKm(f);
    const std::int32_t color = c.palette.latLonGrid;
    for (double lat : GridValues(c.scene.centreLat, halfW, kLat, spacing)) {
        const double y = (lat - c.scene.centreLat) * kLat;
        c.out.push_back(Line(MapLayer::LatLonGrid, color, 1, {{halfW, y}, {-halfW, y}}));
        if (c.settings.drawText && std::fabs(y) + textHeight / 2 <= halfH) {
            c.out.push_back(Label(MapLayer::LatLonGrid, color, {halfW - textHeight / 4, y + textHeight / 2},
                                  LatLonLabel(lat, true), textHeight, false));
        }
    }
    for (double lon : GridValues(c.scene.centreLon, halfH, kLon, spacing)) {
        const double x = (lon - c.scene.centreLon) * kLon;
        c.out.push_back(Line(MapLayer::LatLonGrid, color, 1, {{x, halfH}, {x, -halfH}}));
        if (c.settings.drawText && std::fabs(x) <= halfW) {
            c.out.push_back(Label(MapLayer::LatLonGrid, color, {x, -halfH + textHeight}, LatLonLabel(lon, false),
                                  textHeight, true));
        }
    }
}

void AddBoundaryLines(const LayerContext& c, MapLayer layer) {
    if (c.scene.arrays == nullptr) return;
    const bool state = layer == MapLayer::StateLines;
    const std::vector<MapRow>& rows = state ? c.scene.arrays->stateMap : c.scene.arrays->countyMap;
    const std::int32_t color = state ? c.palette.stateLines : c.palette.countyLines;
    const int pen = state ? c.palette.statePenWidth : 1;
    std::vector<KmPoint> line;
    Box box;
    auto flush = [&] {
        if (line.size() >= 2 && box.Meets(c.frame)) c.out.push_back(Line(layer, color, pen, std::move(line)));
        line.clear();
        box = Box{};
    };
    // Rows from 1 upwards; a row whose first column is 0.0 lifts the pen.
    for (std::size_t i = 1; i < rows.size(); ++i) {
        if (rows[i].col1 == 0.0f) {
            flush();
            continue;
        }
        line.push_back(BoundaryPoint(c.scene.centreLat, c.scene.centreLon, rows[i]));
        box.Add(line.back());
    }
    flush();
}

void AddPlaceNames(const LayerContext& c, MapLayer layer) {
    if (c.scene.arrays == nullptr || !c.settings.drawText) return;
    const bool cities = layer == MapLayer::Cities;
    const std::vector<MapPlace>& places = cities ? c.scene.arrays->places : c.scene.arrays->markers;
    const std::int32_t color = cities ? c.palette.cities : c.palette.markers;
    const int limit = cities ? c.settings.gMapCityCount : static_cast<int>(places.size());
    int labelled = 0;
    for (const MapPlace& place : places) {
        if (labelled >= limit) break;
        double north = 0, east = 0;
        geodesy::FlatDistance(c.scene.centreLat, c.scene.centreLon, place.lat / kStoredUnitsPerDegree,
                              place.lon / kStoredUnitsPerDegree, north, east);
        const KmPoint at{-east, north};
        if (!Inside(at, c.frame)) continue;
        c.out.push_back(Label(layer, color, at, place.name, LabelHeightKm(c.frame), true));
        ++labelled;
    }
}

void AddCrosshair(const LayerContext& c) {
    const double arm = c.frame.symbolSizeKm;
    const std::int32_t color = c.palette.crosshair;
    c.out.push_back(Line(MapLayer::Crosshair, color, 1, {{arm, 0}, {-arm, 0}}));
    c.out.push_back(Line(MapLayer::Crosshair, color, 1, {{0, arm}, {0, -arm}}));
    Primitive ring;
    ring.layer = MapLayer::Crosshair;
    ring.shape = Shape::Circle;
    ring.color = color;
    ring.points = {{0, 0}};
    ring.radiusKm = arm / 2;
    c.out.push_back(std::move(ring));
}

void AddScaleBar(const LayerContext& c) {
    const double w = c.frame.widthKm;
    const double length = ScaleBarLengthKm(w);
    // Anchored 5 % in from the left edge and 10 % above the bottom of a
    // square map; on a map wider than tall the height sets the 10 %, so that
    // the bar stays inside the picture.
    const double side = std::min(w, c.frame.heightKm);
    const KmPoint anchor{w / 2 - 0.05 * w, -(side / 2 - 0.1 * side)};
    Primitive bar;
    bar.layer = MapLayer::ScaleBar;
    bar.shape = Shape::FilledRect;
    bar.color = c.palette.scaleBar;
    bar.points = {anchor, {anchor.x - length, anchor.y + w / 100}};
    c.out.push_back(std::move(bar));
    if (c.settings.drawText) {
        char text[32];
        std::snprintf(text, sizeof text, "%.0f km", length);
        const double height = LabelHeightKm(c.frame);
        c.out.push_back(Label(MapLayer::ScaleBar, c.palette.scaleBar,
                              {anchor.x - length / 2, anchor.y + w / 100 + height}, text, height, true));
    }
}

}  // namespace qarvel::jobview
