#pragma once
// Display-field catalogues: which columns the station grid (database search
// results, master-database columns) and the job grid (columns of
// `tempdisplay`) show, in which order and how wide.
//
// The catalogues are built at start-up from fixed lists, each entry's
// visibility, position and width taken from the user's settings. This module
// is Qt-free: it reads and writes the settings through two small callbacks,
// and the program shell hands it an adapter over its settings store.

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qarvel::stationdb {

// Reads one settings key of the program's section; nullopt when absent.
using SettingsReader = std::function<std::optional<std::string>(const std::string& key)>;
// Writes one settings key of the program's section as text.
using SettingsWriter = std::function<void(const std::string& key, const std::string& value)>;

// ---- conversions of stored settings text -------------------------------

// Boolean text as the display-field flags store it: "True"/"False" (any
// case, surrounding blanks ignored) or a number, any non-zero number being
// true ("-1", "1", "2.5"). nullopt when the text is neither.
std::optional<bool> ParseBoolText(std::string_view text);

// A whole number within [minimum, maximum] (surrounding blanks ignored, an
// optional sign); nullopt when the text is not one or is out of range.
std::optional<std::int64_t> ParseIntegerText(std::string_view text, std::int64_t minimum,
                                             std::int64_t maximum);

// Reading helpers: an absent or unreadable value yields the default.
bool ReadBoolSetting(const SettingsReader& read, const std::string& key, bool fallback);
std::uint8_t ReadByteSetting(const SettingsReader& read, const std::string& key,
                             std::uint8_t fallback);
std::int16_t ReadInt16Setting(const SettingsReader& read, const std::string& key,
                              std::int16_t fallback);
std::int32_t ReadInt32Setting(const SettingsReader& read, const std::string& key,
                              std::int32_t fallback);

// Boolean text as written back for display-field flags: "True" or "False".
std::string BoolText(bool value);

// ---- the catalogues -----------------------------------------------------

struct DisplayField {
    std::string fieldName;  // column expression ("fm_data.fac_callsign", "latdms")
    std::string caption;    // column heading
    bool visible = true;    // whether the grid shows the column
    std::uint8_t position = 0;  // place among the visible columns (0 first)
    std::string type;       // display SQL type, used when grid rows are written to a table
    std::int16_t width = 0;  // column width; 0 lets the grid choose
};

inline constexpr std::size_t kStationGridFieldCount = 33;
inline constexpr std::size_t kJobGridFieldCount = 21;

// One catalogue with the settings-key stems of its entries. `built` is set
// once the entries have been read from the settings; a catalogue that was
// never built is not written back.
struct DisplayFieldCatalogue {
    std::vector<DisplayField> fields;
    bool built = false;
    std::string visibleStem;   // "gdisp" / "gMapdisp"
    std::string positionStem;  // "gdispOrdr" / "gMapdispOrdr"
    std::string widthStem;     // "gColWidth" / "gMapColWidth"
};

// The fixed lists in catalogue order, every entry visible, positioned at its
// index, automatic width, `built` false.
DisplayFieldCatalogue StationGridDefaults();
DisplayFieldCatalogue JobGridDefaults();

// Builds a catalogue from its fixed list and the settings: for entry i,
// visible from stem "gdisp"+i (default true), position from "gdispOrdr"+i
// (default i), width from "gColWidth"+i (default 0); likewise "gMapdisp",
// "gMapdispOrdr", "gMapColWidth" for the job grid. Marks it built.
DisplayFieldCatalogue BuildStationGridCatalogue(const SettingsReader& read);
DisplayFieldCatalogue BuildJobGridCatalogue(const SettingsReader& read);

// Writes the catalogue's keys (visible as "True"/"False", position and width
// as decimal numbers). Does nothing for a catalogue that was never built.
void SaveCatalogue(const DisplayFieldCatalogue& catalogue, const SettingsWriter& write);

// The visible entries sorted by position; entries with equal positions keep
// catalogue order.
std::vector<DisplayField> VisibleFieldsInOrder(const DisplayFieldCatalogue& catalogue);

// The station grid's select list: field names of the visible entries in grid
// order, separated by commas ("party.party_name,fm_data.fac_callsign,...").
std::string StationGridSelectList(const DisplayFieldCatalogue& catalogue);

// Numbered settings key: stem followed by the decimal index ("gdisp" 0 ->
// "gdisp0").
std::string NumberedKey(std::string_view stem, std::size_t index);

}  // namespace qarvel::stationdb
