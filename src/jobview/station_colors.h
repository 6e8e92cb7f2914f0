#pragma once
// Station colours of the job display: by channel relation ("ChannelColor")
// and by clearance ("ClearColor"). `tempdisplay` stores them as Windows
// colour values (red + 256 x green + 65536 x blue), so the grid, the map and
// the printouts read one number per station.

#include <cstdint>
#include <string>
#include <string_view>

namespace qarvel::jobview {

// A Windows colour value from its three 8-bit components.
constexpr std::int32_t Rgb(int red, int green, int blue) {
    return red + 256 * green + 65536 * blue;
}
constexpr int RedOf(std::int32_t color) { return color & 0xFF; }
constexpr int GreenOf(std::int32_t color) { return (color >> 8) & 0xFF; }
constexpr int BlueOf(std::int32_t color) { return (color >> 16) & 0xFF; }

// Relation colours.
inline constexpr std::int32_t kColorPrimary = Rgb(255, 0, 0);
inline constexpr std::int32_t kColorFirstAdj = Rgb(255, 255, 0);
inline constexpr std::int32_t kColorSecondAdj = Rgb(0, 255, 0);
inline constexpr std::int32_t kColorThirdAdj = Rgb(0, 255, 255);
inline constexpr std::int32_t kColorIF = Rgb(0, 0, 255);
inline constexpr std::int32_t kColorTV6 = Rgb(255, 0, 255);
// Clearance colours.
inline constexpr std::int32_t kColorShort = Rgb(255, 0, 0);
inline constexpr std::int32_t kColorShortDirectional = Rgb(255, 0, 255);
inline constexpr std::int32_t kColorClose = Rgb(255, 255, 0);
inline constexpr std::int32_t kColorClear = Rgb(0, 255, 0);
// AM stations, whatever the colouring.
inline constexpr std::int32_t kColorAM = Rgb(255, 255, 255);
// Yellow on paper is unreadable: printed maps use this instead.
inline constexpr std::int32_t kColorYellow = Rgb(255, 255, 0);
inline constexpr std::int32_t kColorPrintedYellow = Rgb(125, 100, 0);
// Further fixed colours of the display (grey, olive, orange, lavender).
inline constexpr std::int32_t kColorGrey = Rgb(128, 128, 128);
inline constexpr std::int32_t kColorOlive = Rgb(128, 128, 0);
inline constexpr std::int32_t kColorOrange = Rgb(255, 128, 0);
inline constexpr std::int32_t kColorLavender = Rgb(128, 128, 255);
inline constexpr std::int32_t kColorBlack = Rgb(0, 0, 0);
inline constexpr std::int32_t kColorWhite = Rgb(255, 255, 255);

// Clearance limits of the colour key (km): 10 km or more is "Clear", 0 up to
// but not including 10 is "Close", below 0 is short-spaced.
inline constexpr double kClearKm = 10.0;
inline constexpr double kCloseKm = 0.0;

enum class ClearanceCategory { Short, ShortDirectional, Close, Clear };

// The category of a clearance (km). A short station studied by contour
// (rule_73_215_req_ind "Y", compared exactly) is "Short/Directional".
ClearanceCategory CategoryOfClearance(double clearanceKm, std::string_view rule73215);
// "Short", "Short/Directional", "Close", "Clear".
std::string_view CategoryName(ClearanceCategory category);
std::int32_t CategoryColor(ClearanceCategory category);

// color2 of a station: the colour of its clearance category.
std::int32_t ColorByClearance(double clearanceKm, std::string_view rule73215);

// color1 of a station: the colour of its relation code 0..4 (Primary, 1st,
// 2nd, 3rd Adj, IF). Any other code gives the television channel 6 colour,
// which is how the display marks stations without an FM relation.
std::int32_t ColorByRelation(int relation);

// The colour as drawn: on the printer yellow becomes kColorPrintedYellow.
std::int32_t DrawnColor(std::int32_t color, bool printer);

}  // namespace qarvel::jobview
