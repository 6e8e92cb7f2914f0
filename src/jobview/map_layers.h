#pragma once
// Builders of the map's background and overlay layers (grid, boundaries,
// cities, markers, crosshair, scale bar). Internal to the display list.

#include <string>
#include <vector>

#include "jobview/display_list.h"

namespace qarvel::jobview {

struct LayerContext {
    const MapScene& scene;
    const MapSettings& settings;
    const MapFrame& frame;
    const MapPalette& palette;
    std::vector<Primitive>& out;
};

// Size (km) of labels: city and marker names, call signs, grid labels.
double LabelHeightKm(const MapFrame& frame);

// A grid label: whole degrees, minutes, and the hemisphere ("40°30'N",
// "97°07.5'W"; longitude positive WEST).
std::string LatLonLabel(double degrees, bool latitude);

void AddLatLonGrid(const LayerContext& c);
void AddBoundaryLines(const LayerContext& c, MapLayer layer);
void AddPlaceNames(const LayerContext& c, MapLayer layer);
void AddCrosshair(const LayerContext& c);
void AddScaleBar(const LayerContext& c);

}  // namespace qarvel::jobview
