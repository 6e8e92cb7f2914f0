#pragma once
// The map view's geometry: its scale (1:N) and the scale slider, the size of
// the map in km from the picture's size, the symbol size, and the tables of
// the latitude/longitude grid spacing and the scale bar's length.
//
// User coordinates of the map: x km WEST of the map centre (x grows to the
// left, as station-table longitudes grow westwards), y km NORTH of it; the
// centre of the picture is (0, 0), its upper-left corner (+W/2, +H/2).

#include <array>
#include <cstdint>
#include <string>

namespace qarvel::jobview {

// ---- scale -------------------------------------------------------------

inline constexpr int kScaleSliderPositions = 20;
inline constexpr int kDefaultScalePosition = 10;
inline constexpr std::int32_t kDefaultScale = 1000000;

// The scale slider's denominators, position 1 first.
inline constexpr std::array<std::int32_t, kScaleSliderPositions> kScaleTable = {
    50000,   62500,   75000,   100000,  150000,  200000,  250000,  500000,  750000,  1000000,
    1250000, 1500000, 1750000, 2000000, 2500000, 3000000, 3500000, 4000000, 4500000, 5000000};

// The denominator at slider position 1..20; 0 for any other position.
std::int32_t ScaleForSliderPosition(int position);

// The scale actually used: a panel value of 0 (or less) means 1:1,000,000.
std::int32_t EffectiveScale(std::int32_t scale);

// The slider position showing `scale`: its position in the table, 10 for a
// panel value of 0, and 0 for a denominator the table does not hold.
int SliderPositionForScale(std::int32_t scale);

// The scale as the status bar shows it: "#,###,###" ("1,000,000").
std::string FormatScale(std::int32_t scale);

// ---- the map frame (Rescale) ------------------------------------------

// 567 twips to the centimetre; 1440 twips to the inch.
inline constexpr double kTwipsPerKmAtUnitScale = 56700000.0;  // 1 km = 100,000 cm of 567 twips
inline constexpr double kTwipsPerInch = 1440.0;

// Twips of a length in device pixels at `dpi` pixels per inch.
double PixelsToTwips(double pixels, double dpi);

struct MapFrame {
    std::int32_t scale = kDefaultScale;  // N of 1:N, after EffectiveScale
    double widthKm = 0;                  // visible width
    double heightKm = 0;                 // visible height
    double halfDiagonalKm = 0;           // centre to a corner
    double symbolSizeKm = 0;             // station symbol and label size
};

// Symbol size (km) at 1:N: 12 x sqrt(N / 5,000,000), 1.0 when that is 0.
double SymbolSizeKm(std::int32_t scale);

// Rescale: the frame of a picture widthTwips x heightTwips at 1:scale
// (0 meaning 1:1,000,000): width_km = N x twips / 56,700,000, likewise the
// height. Reported under "frmDispJob" ":Rescale:"; a failure (a negative or
// non-finite size) gives a frame of zero size.
MapFrame Rescale(std::int32_t scale, double widthTwips, double heightTwips);

// ---- grid lines and scale bar -------------------------------------------

// Spacing (degrees) of the latitude/longitude grid for a map spanning
// `spanDeg` degrees: above 4 -> 2; above 2 -> 1; above 1 -> 0.5; above 0.5
// -> 0.25; above 0.25 -> 7.5'; else 2.5'.
double LatLonSpacing(double spanDeg);

// Length (km) of the scale bar on a map `widthKm` wide: above 500 -> 400;
// above 240 -> 200; above 120 -> 100; above 60 -> 40; above 24 -> 20; above
// 12 -> 8; above 6 -> 4; else 2.
double ScaleBarLengthKm(double widthKm);

// ---- status texts ------------------------------------------------------

// "Range: " and the clearance limit, then " km : Clearance = -0.5km" with
// reduced radii or " km : Clearance = FCC".
std::string RangeText(double clearanceLimitKm, bool reduceRadii);

}  // namespace qarvel::jobview
