// RepaintMap's model: the layer order and the two station passes.

#include "jobview/display_list.h"

#include <cmath>

#include "core/error_trap.h"
#include "jobview/map_layers.h"
#include "jobview/station_colors.h"
#include "jobview/where_clause.h"

namespace qarvel::jobview {

namespace {

constexpr char32_t kExcludedMarker = 164;
constexpr char32_t kEmphasisMarker = 187;
constexpr double kReducedRadiusKm = 0.5;

bool IsAm(const MapStation& s) { return s.service == "AM"; }
bool IsFmOrEd(const MapStation& s) { return s.service == "FM" || s.service == "ED"; }

// Length of the valid UTF-8 character starting at text[i]; 0 when the byte
// there starts none.
std::size_t Utf8Length(const std::string& text, std::size_t i) {
    const auto lead = static_cast<unsigned char>(text[i]);
    std::size_t length = 0;
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) length = 2;
    else if (lead >= 0xE0 && lead <= 0xEF) length = 3;
    else if (lead >= 0xF0 && lead <= 0xF4) length = 4;
    if (length == 0 || i + length > text.size()) return 0;
    for (std::size_t k = 1; k < length; ++k) {
        if ((static_cast<unsigned char>(text[i + k]) & 0xC0) != 0x80) return 0;
    }
    return length;
}

std::int32_t StationColor(const MapStation& s, const MapSettings& settings) {
    if (IsAm(s)) return settings.printer ? kColorBlack : kColorAM;
    const std::int32_t color = settings.coloring == StationColoring::Channel ? s.color1 : s.color2;
    return DrawnColor(color, settings.printer);
}

// Whether the station is drawn at all (both passes), and its radius.
bool Drawn(const MapStation& s, const MapSettings& settings, const MapFrame& frame, double* r) {
    *r = DrawnRadius(s, settings.gMapOptReduceRadii);
    if (OffMap(s.x, s.y, *r, frame)) return false;
    if (IsAm(s)) return settings.showAm;
    return !(IsFmOrEd(s) && HasMarkerChar(s.callsign, kExcludedMarker));
}

Primitive StationShape(Shape shape, MapLayer layer, const MapStation& s, std::int32_t color, int index) {
    Primitive p;
    p.layer = layer;
    p.shape = shape;
    p.color = color;
    p.points = {{s.x, s.y}};
    p.station = index;
    return p;
}

// DrawStationCircle for every station: the disc in fill mode, then the
// outline when circles are shown (AM: outline only).
void AddCircles(const MapScene& scene, const MapSettings& settings, const MapFrame& frame,
                std::vector<Primitive>& out) {
    for (std::size_t i = 0; i < scene.stations.size(); ++i) {
        const MapStation& s = scene.stations[i];
        double r = 0;
        if (!Drawn(s, settings, frame, &r) || r <= 0) continue;
        const std::int32_t color = StationColor(s, settings);
        const int index = static_cast<int>(i);
        if (settings.fillCircles && !IsAm(s)) {
            out.push_back(StationShape(Shape::Disc, MapLayer::StationCircles, s, color, index));
            out.back().radiusKm = r;
        }
        if (settings.showCircles) {
            out.push_back(StationShape(Shape::Circle, MapLayer::StationCircles, s, color, index));
            out.back().radiusKm = r;
            out.back().penWidth = !IsAm(s) && HasMarkerChar(s.callsign, kEmphasisMarker) ? 3 : 1;
        }
    }
}

// DrawStationCenter for every station: a small square, and the call sign
// beside it (east of it) unless call signs are hidden.
void AddCenters(const MapScene& scene, const MapSettings& settings, const MapFrame& frame,
                std::vector<Primitive>& out) {
    const double half = frame.symbolSizeKm / 10.0;
    for (std::size_t i = 0; i < scene.stations.size(); ++i) {
        const MapStation& s = scene.stations[i];
        double r = 0;
        if (!Drawn(s, settings, frame, &r)) continue;
        const std::int32_t color = StationColor(s, settings);
        const int index = static_cast<int>(i);
        Primitive square = StationShape(Shape::FilledRect, MapLayer::StationCenters, s, color, index);
        square.points = {{s.x + half, s.y + half}, {s.x - half, s.y - half}};
        out.push_back(std::move(square));
        if (settings.showCalls && settings.drawText) {
            Primitive label = StationShape(Shape::Text, MapLayer::StationCenters, s, color, index);
            label.points = {{s.x - 2 * half, s.y}};
            label.text = s.callsign;
            label.textHeightKm = LabelHeightKm(frame);
            out.push_back(std::move(label));
        }
    }
}

MapCounts CountStations(const std::vector<MapStation>& stations) {
    MapCounts counts;
    for (const MapStation& s : stations) {
        for (std::size_t k = 0; k < kLegendStatuses.size(); ++k) {
            if (s.status.compare(0, 2, kLegendStatuses[k]) == 0) ++counts.byStatus[k];
        }
        for (std::size_t k = 0; k < kLegendRelations.size(); ++k) {
            if (s.adjacency == kLegendRelations[k]) ++counts.byRelation[k];
        }
    }
    return counts;
}

void AddLayer(MapLayer layer, const LayerContext& c) {
    switch (layer) {
        case MapLayer::LatLonGrid: AddLatLonGrid(c); break;
        case MapLayer::CountyLines:
        case MapLayer::StateLines: AddBoundaryLines(c, layer); break;
        case MapLayer::Cities:
        case MapLayer::Markers: AddPlaceNames(c, layer); break;
        case MapLayer::StationCircles: AddCircles(c.scene, c.settings, c.frame, c.out); break;
        case MapLayer::StationCenters: AddCenters(c.scene, c.settings, c.frame, c.out); break;
        case MapLayer::Crosshair: AddCrosshair(c); break;
        case MapLayer::ScaleBar: AddScaleBar(c); break;
    }
}

}  // namespace

MapPalette PaletteFor(bool printer) {
    if (printer) {
        return {kColorWhite, kColorBlack, kColorGrey, kColorBlack, kColorBlack, kColorOrange,
                kColorBlack, kColorBlack, 2};
    }
    return {kColorBlack, Rgb(0, 128, 128), kColorGrey, kColorLavender, kColorWhite, kColorOrange,
            kColorWhite, kColorWhite, 2};
}

double DrawnRadius(const MapStation& station, bool reduceRadii) {
    return reduceRadii && !IsAm(station) ? station.radius - kReducedRadiusKm : station.radius;
}

bool OffMap(double x, double y, double r, const MapFrame& frame) {
    return std::fabs(x) - r > frame.widthKm / 2 || std::fabs(y) - r > frame.heightKm / 2;
}

bool HasMarkerChar(const std::string& text, char32_t code) {
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = Utf8Length(text, i);
        if (length == 0) {
            if (static_cast<unsigned char>(text[i]) == code) return true;
            ++i;
            continue;
        }
        if (length == 2) {
            const char32_t decoded = (static_cast<char32_t>(text[i] & 0x1F) << 6) |
                                     static_cast<char32_t>(text[i + 1] & 0x3F);
            if (decoded == code) return true;
        }
        i += length;
    }
    return false;
}

std::vector<MapLayer> LayerOrder(const MapSettings& settings, bool stateLoaded, bool countyLoaded) {
    std::vector<MapLayer> background;
    if (settings.gMapOptLatLon) background.push_back(MapLayer::LatLonGrid);
    if (settings.gMapOptCounty && countyLoaded) background.push_back(MapLayer::CountyLines);
    if (settings.gMapOptState && stateLoaded) background.push_back(MapLayer::StateLines);
    if (settings.gMapOptCities) background.push_back(MapLayer::Cities);
    if (settings.gMapOptMarkers) background.push_back(MapLayer::Markers);
    const bool withBackground = settings.showBorders && !settings.centersOnly;

    std::vector<MapLayer> order;
    if (withBackground && !settings.fillCircles) order = background;
    if (!settings.centersOnly) order.push_back(MapLayer::StationCircles);
    order.push_back(MapLayer::StationCenters);
    if (withBackground && settings.fillCircles) order.insert(order.end(), background.begin(), background.end());
    if (settings.gMapOptCrosshair) order.push_back(MapLayer::Crosshair);
    if (settings.gMapOptScale) order.push_back(MapLayer::ScaleBar);
    return order;
}

DisplayList BuildDisplayList(const MapScene& scene, const MapSettings& settings, const MapFrame& frame) {
    const MapPalette palette = PaletteFor(settings.printer);
    DisplayList empty;
    empty.background = palette.background;
    return core::Trapped(kJobDisplayModule, ":RepaintMap:", empty, [&] {
        DisplayList list;
        list.background = palette.background;
        const bool stateLoaded = scene.arrays != nullptr && scene.arrays->stateMapLoaded;
        const bool countyLoaded = scene.arrays != nullptr && scene.arrays->countyMapLoaded;
        list.layers = LayerOrder(settings, stateLoaded, countyLoaded);
        const LayerContext context{scene, settings, frame, palette, list.items};
        for (MapLayer layer : list.layers) AddLayer(layer, context);
        list.counts = CountStations(scene.stations);
        return list;
    });
}

}  // namespace qarvel::jobview
