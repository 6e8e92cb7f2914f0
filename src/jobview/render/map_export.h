#pragma once
// The map of a job as a file: a PNG image or a one-page PDF, drawn by
// MapRenderer without a window. Needs a QGuiApplication (the command line
// runs one on the "offscreen" platform).

#include <QImage>

#include <filesystem>

#include "jobview/display_list.h"

namespace qarvel::jobview {

struct MapImageOptions {
    int widthPx = 800;     // picture size in device pixels
    int heightPx = 600;
    double dpi = 96;       // device pixels per inch: sets the true scale (567 twips per cm)
    bool antialias = false;
};

// The map drawn on a new RGB image of the options' size.
QImage RenderMapImage(const MapScene& scene, const MapSettings& settings, const MapImageOptions& options);

// Writes the map to `out`: PNG or PDF by the extension (any case). The file
// is written under a temporary name beside `out` and renamed into place, so
// a failure leaves any previous file as it was. Reported under "frmDispJob"
// ":SaveMapImage:"; false on failure (an unknown extension, a folder that
// cannot be written).
bool SaveMapImage(const std::filesystem::path& out, const MapScene& scene, const MapSettings& settings,
                  const MapImageOptions& options);

}  // namespace qarvel::jobview
