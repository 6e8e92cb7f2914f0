#pragma once
// The heat map of an AutoScan grid: one square of cellPx x cellPx pixels per
// grid point, coloured by its number of open channels (0 dark, 101 bright),
// with map lines (state boundaries) drawn over it in kMapLineColour.

#include <cstdint>
#include <utility>
#include <vector>

#include "studies/grid_scan.h"
#include "studies/png_writer.h"

namespace qarvel::studies {

// Red: it stands out on both ends of the colour ramp.
inline constexpr std::uint32_t kMapLineColour = 0xF03C3C;

// A polyline in degrees: (latitude north positive, longitude positive WEST).
using MapLine = std::vector<std::pair<float, float>>;

// Colour of a count of open channels, 0..101 (clamped): a dark-blue to
// yellow ramp, 0xRRGGBB.
std::uint32_t OpeningsColour(int openings);

// Pixels per grid point so that the image's longer side is about 800 pixels
// (at least 1, at most 40).
int HeatMapCellSize(const ScanGrid& grid);

// The image: width cols x cellPx, height rows x cellPx; grid point (r, c)
// fills the square whose centre is where (Lat(r), Lon(c)) falls, row 0 at the
// top (north), column 0 at the left (west). `openings` holds one count per
// point, row by row. Lines are clipped to the image.
RgbImage RenderHeatMap(const ScanGrid& grid, const std::vector<int>& openings, int cellPx,
                       const std::vector<MapLine>& lines = {});

}  // namespace qarvel::studies
