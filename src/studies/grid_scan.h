#pragma once
// AutoScan at every point of a latitude/longitude grid, on all cores: the
// points are shared out to worker threads, each with its own FastEngine over
// one shared, immutable MasterIndex. Progress is reported from the calling
// thread; a cancel request stops every worker at its next channel.
//
// Coordinates: degrees, latitude north positive, longitude positive WEST.

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "studies/autoscan.h"
#include "studies/fast_engine.h"

namespace qarvel::studies {

// A regular grid in degrees: row 0 is the northern edge, column 0 the
// western edge; point (r, c) lies at north - r * dLat, west - c * dLon.
struct ScanGrid {
    double north = 0;  // degrees
    double west = 0;   // degrees, positive WEST (the larger of the two)
    double dLat = 0;   // degrees between rows
    double dLon = 0;   // degrees between columns
    int rows = 0;
    int cols = 0;

    std::size_t Size() const {
        return static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols);
    }
    double Lat(int row) const { return north - row * dLat; }
    double Lon(int col) const { return west - col * dLon; }
};

// The grid covering the box between two corners (any two opposite corners)
// with points stepKm apart: the step becomes degrees with KmPerDegLat and
// KmPerDegLon at the box's middle latitude, so points are stepKm apart near
// the middle of the box. The last row and column lie on or inside the box.
// Throws std::invalid_argument for a step that is not positive, a box at the
// pole, or more than maxPoints points.
ScanGrid MakeScanGrid(double lat1, double lon1, double lat2, double lon2, double stepKm,
                      std::size_t maxPoints = 4'000'000);

struct GridPointResult {
    int openings = 0;
    std::vector<int> openChannels;  // ascending
};

struct GridScanResult {
    std::vector<GridPointResult> points;  // row by row, as ScanGrid numbers them
    std::size_t completed = 0;            // points fully scanned
    bool cancelled = false;               // then only some points are filled
};

// Called on the calling thread about ten times a second and once at the end.
using GridProgress = std::function<void(std::size_t done, std::size_t total)>;

// Scans every point of the grid for a target of class `stationClass` (and
// international class `intlClass`, -1 none). threads = 0 uses every core.
GridScanResult ScanGridPoints(std::shared_ptr<const MasterIndex> index, const ScanGrid& grid,
                              int16_t stationClass, int16_t intlClass, const ScanOptions& options,
                              unsigned threads = 0, const GridProgress& progress = {},
                              const std::atomic<bool>* cancel = nullptr);

}  // namespace qarvel::studies
