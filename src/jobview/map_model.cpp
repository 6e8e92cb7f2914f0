#include "jobview/map_model.h"

#include <cmath>
#include <stdexcept>

#include "core/error_trap.h"
#include "jobview/grid_query.h"
#include "jobview/where_clause.h"

namespace qarvel::jobview {

std::int32_t ScaleForSliderPosition(int position) {
    if (position < 1 || position > kScaleSliderPositions) return 0;
    return kScaleTable[static_cast<std::size_t>(position - 1)];
}

std::int32_t EffectiveScale(std::int32_t scale) { return scale <= 0 ? kDefaultScale : scale; }

int SliderPositionForScale(std::int32_t scale) {
    const std::int32_t effective = EffectiveScale(scale);
    for (int p = 1; p <= kScaleSliderPositions; ++p) {
        if (ScaleForSliderPosition(p) == effective) return p;
    }
    return 0;
}

std::string FormatScale(std::int32_t scale) {
    std::string digits = std::to_string(scale < 0 ? -static_cast<std::int64_t>(scale) : scale);
    for (int i = static_cast<int>(digits.size()) - 3; i > 0; i -= 3) {
        digits.insert(static_cast<std::size_t>(i), ",");
    }
    return scale < 0 ? "-" + digits : digits;
}

double PixelsToTwips(double pixels, double dpi) { return pixels * kTwipsPerInch / dpi; }

double SymbolSizeKm(std::int32_t scale) {
    const double size = 12.0 * std::sqrt(static_cast<double>(scale) / 5000000.0);
    return size == 0.0 ? 1.0 : size;
}

MapFrame Rescale(std::int32_t scale, double widthTwips, double heightTwips) {
    return core::Trapped(kJobDisplayModule, ":Rescale:", MapFrame{}, [&] {
        if (!(widthTwips >= 0) || !(heightTwips >= 0) || !std::isfinite(widthTwips) ||
            !std::isfinite(heightTwips)) {
            throw core::TrapError("the picture has no usable size");
        }
        MapFrame frame;
        frame.scale = EffectiveScale(scale);
        frame.widthKm = frame.scale * widthTwips / kTwipsPerKmAtUnitScale;
        frame.heightKm = frame.scale * heightTwips / kTwipsPerKmAtUnitScale;
        frame.halfDiagonalKm = std::hypot(frame.widthKm / 2, frame.heightKm / 2);
        frame.symbolSizeKm = SymbolSizeKm(frame.scale);
        return frame;
    });
}

double LatLonSpacing(double spanDeg) {
    if (spanDeg > 4) return 2.0;
    if (spanDeg > 2) return 1.0;
    if (spanDeg > 1) return 0.5;
    if (spanDeg > 0.5) return 0.25;
    if (spanDeg > 0.25) return 7.5 / 60.0;
    return 2.5 / 60.0;
}

double ScaleBarLengthKm(double widthKm) {
    if (widthKm > 500) return 400;
    if (widthKm > 240) return 200;
    if (widthKm > 120) return 100;
    if (widthKm > 60) return 40;
    if (widthKm > 24) return 20;
    if (widthKm > 12) return 8;
    if (widthKm > 6) return 4;
    return 2;
}

std::string RangeText(double clearanceLimitKm, bool reduceRadii) {
    return "Range: " + FormatLimit(clearanceLimitKm) +
           (reduceRadii ? " km : Clearance = -0.5km" : " km : Clearance = FCC");
}

}  // namespace qarvel::jobview
