#include "jobview/station_colors.h"

#include "spacing/class_codes.h"

namespace qarvel::jobview {

ClearanceCategory CategoryOfClearance(double clearanceKm, std::string_view rule73215) {
    if (clearanceKm >= kClearKm) return ClearanceCategory::Clear;
    if (clearanceKm >= kCloseKm) return ClearanceCategory::Close;
    return rule73215 == "Y" ? ClearanceCategory::ShortDirectional : ClearanceCategory::Short;
}

std::string_view CategoryName(ClearanceCategory category) {
    switch (category) {
        case ClearanceCategory::Short: return "Short";
        case ClearanceCategory::ShortDirectional: return "Short/Directional";
        case ClearanceCategory::Close: return "Close";
        case ClearanceCategory::Clear: return "Clear";
    }
    return "";
}

std::int32_t CategoryColor(ClearanceCategory category) {
    switch (category) {
        case ClearanceCategory::Short: return kColorShort;
        case ClearanceCategory::ShortDirectional: return kColorShortDirectional;
        case ClearanceCategory::Close: return kColorClose;
        case ClearanceCategory::Clear: return kColorClear;
    }
    return kColorShort;
}

std::int32_t ColorByClearance(double clearanceKm, std::string_view rule73215) {
    return CategoryColor(CategoryOfClearance(clearanceKm, rule73215));
}

std::int32_t ColorByRelation(int relation) {
    switch (relation) {
        case spacing::kRelCoChannel: return kColorPrimary;
        case spacing::kRelFirstAdj: return kColorFirstAdj;
        case spacing::kRelSecondAdj: return kColorSecondAdj;
        case spacing::kRelThirdAdj: return kColorThirdAdj;
        case spacing::kRelIF: return kColorIF;
        default: return kColorTV6;
    }
}

std::int32_t DrawnColor(std::int32_t color, bool printer) {
    return printer && color == kColorYellow ? kColorPrintedYellow : color;
}

}  // namespace qarvel::jobview
