#pragma once
// MapRenderer: paints the map of a job onto any QPainter - a QImage for PNG
// export and tests, a QPdfWriter or printer, the desktop's map widget. The
// model (display_list.h) decides what is drawn; this class only maps the
// model's km coordinates (x km west, y km north of the map centre) to the
// device and paints.

#include <QPainter>
#include <QRectF>

#include "jobview/display_list.h"
#include "jobview/map_model.h"
#include "jobview/station_colors.h"

namespace qarvel::jobview {

// A Windows colour value (red + 256 green + 65536 blue) as a QColor.
QColor ToQColor(std::int32_t windowsColor);

class MapRenderer {
public:
    // Paints `list` into `area` (device pixels) of the painter, the area
    // showing frame.widthKm x frame.heightKm about the map centre. The
    // painter's render hints are left as the caller set them.
    void Paint(QPainter& painter, const QRectF& area, const DisplayList& list, const MapFrame& frame) const;

    // RepaintMap onto a painter: Rescale for `area` at `dpi` device pixels
    // per inch, build the display list and paint it. Returns the list (its
    // legend counts) and writes the frame used to *frame when given.
    DisplayList Draw(QPainter& painter, const QRectF& area, double dpi, const MapScene& scene,
                     const MapSettings& settings, MapFrame* frame = nullptr) const;
};

}  // namespace qarvel::jobview
