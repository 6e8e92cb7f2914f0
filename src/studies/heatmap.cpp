#include "studies/heatmap.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

namespace qarvel::studies {

namespace {

// Anchors of the colour ramp, evenly spaced over 0..101 open channels.
constexpr std::array<std::uint32_t, 5> kRamp = {0x1A1045, 0x2C5F8A, 0x21A37F, 0x9AD443, 0xFDE725};

std::uint32_t Blend(std::uint32_t a, std::uint32_t b, double t) {
    std::uint32_t out = 0;
    for (int shift = 16; shift >= 0; shift -= 8) {
        const double ca = (a >> shift) & 0xFF, cb = (b >> shift) & 0xFF;
        out |= static_cast<std::uint32_t>(std::lround(ca + (cb - ca) * t)) << shift;
    }
    return out;
}

// Bresenham's line, clipped by RgbImage::Set.
void DrawSegment(RgbImage& image, int x0, int y0, int x1, int y1, std::uint32_t rgb) {
    const int dx = std::abs(x1 - x0), sx = x0 < x1 ? 1 : -1;
    const int dy = -std::abs(y1 - y0), sy = y0 < y1 ? 1 : -1;
    int err = dx + dy;
    for (;;) {
        image.Set(x0, y0, rgb);
        if (x0 == x1 && y0 == y1) return;
        const int e2 = 2 * err;
        if (e2 >= dy) {
            err += dy;
            x0 += sx;
        }
        if (e2 <= dx) {
            err += dx;
            y0 += sy;
        }
    }
}

}  // namespace

std::uint32_t OpeningsColour(int openings) {
    const double t =
        std::clamp(openings, 0, kScanChannelCount) / static_cast<double>(kScanChannelCount);
    const double scaled = t * (kRamp.size() - 1);
    const auto i = std::min(static_cast<std::size_t>(scaled), kRamp.size() - 2);
    return Blend(kRamp[i], kRamp[i + 1], scaled - static_cast<double>(i));
}

int HeatMapCellSize(const ScanGrid& grid) {
    const int longer = std::max({grid.rows, grid.cols, 1});
    return std::clamp(800 / longer, 1, 40);
}

RgbImage RenderHeatMap(const ScanGrid& grid, const std::vector<int>& openings, int cellPx,
                       const std::vector<MapLine>& lines) {
    if (openings.size() != grid.Size() || cellPx < 1) {
        throw std::invalid_argument(
            "heat map: one count per grid point and a cell of 1 pixel or more");
    }
    RgbImage image(grid.cols * cellPx, grid.rows * cellPx);
    for (int r = 0; r < grid.rows; ++r) {
        for (int c = 0; c < grid.cols; ++c) {
            const std::uint32_t colour =
                OpeningsColour(openings[static_cast<std::size_t>(r) * grid.cols + c]);
            for (int y = r * cellPx; y < (r + 1) * cellPx; ++y) {
                for (int x = c * cellPx; x < (c + 1) * cellPx; ++x) image.Set(x, y, colour);
            }
        }
    }
    // Grid point (r, c) is the centre of its square.
    auto pixel = [&](const std::pair<float, float>& p) {
        const double x = (grid.west - p.second) / grid.dLon * cellPx + cellPx / 2.0;
        const double y = (grid.north - p.first) / grid.dLat * cellPx + cellPx / 2.0;
        // Far-away points are clamped so that the integer arithmetic of the
        // segment walk cannot overflow; the image clips what is outside.
        auto clampPx = [](double v) {
            return static_cast<int>(std::clamp(std::floor(v), -1.0e5, 1.0e5));
        };
        return std::pair{clampPx(x), clampPx(y)};
    };
    for (const MapLine& line : lines) {
        for (std::size_t i = 1; i < line.size(); ++i) {
            const auto [x0, y0] = pixel(line[i - 1]);
            const auto [x1, y1] = pixel(line[i]);
            // Both ends off the same side: nothing to draw, skip the walk.
            if ((x0 < 0 && x1 < 0) || (y0 < 0 && y1 < 0) ||
                (x0 >= image.width && x1 >= image.width) ||
                (y0 >= image.height && y1 >= image.height)) {
                continue;
            }
            DrawSegment(image, x0, y0, x1, y1, kMapLineColour);
        }
    }
    return image;
}

}  // namespace qarvel::studies
