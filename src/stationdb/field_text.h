#pragma once
// Field conversions shared by the importers of station data: text encoding,
// numbers, coordinates in stored units, dates, channels and the country of a
// station record.

#include <optional>
#include <string>
#include <string_view>

namespace qarvel::stationdb {

// Leading and trailing blanks, tabs and line-break characters removed.
std::string_view TrimView(std::string_view text);
std::string Trimmed(std::string_view text);
// ASCII letters upper-cased; other bytes unchanged.
std::string Upper(std::string_view text);

// Line breaks and tabs inside a free-text field (a name that ran over two
// lines in the source) become one blank each run; the ends are trimmed.
std::string SingleLine(std::string_view text);

bool IsValidUtf8(std::string_view text);
// Single-byte text to UTF-8. The regulator's dumps are Latin-1 as written by
// Windows, so bytes 0x80 to 0x9F are read as code page 1252 (curly quotes,
// dashes, the euro sign) where that code page defines them.
std::string Latin1ToUtf8(std::string_view text);
// UTF-8 text unchanged; anything else read as Latin-1 (above).
std::string TextToUtf8(std::string_view text);

// A whole field as a number; blanks around it are allowed, nothing else.
// "6." and ".5" are numbers; "", "-", "1,5" and "12abc" are not.
std::optional<long long> ParseInteger(std::string_view text);
std::optional<double> ParseNumber(std::string_view text);

// Degrees to stored units: degrees x 14400 truncated toward zero. Binary
// rounding is allowed for first (0.7 degrees is 10080 units, not 10079), so
// values within 1e-6 of a unit count as that unit. Valid for -360 to 360
// degrees; values beyond are clamped there.
int StoredCoordinate(double degrees);
// Degrees, minutes and seconds to stored units, computed in quarter seconds
// so that whole seconds convert exactly. Minutes and seconds must lie in
// [0, 60), degrees in [0, 180]; nullopt otherwise. negative: south or east
// (the station tables count longitude positive west).
std::optional<int> StoredFromDms(double degrees, double minutes, double seconds, bool negative);

// The same from the text fields of a record: degrees, minutes, seconds and
// the hemisphere letter ("N"/"S" for a latitude, "W"/"E" for a longitude).
// Empty minutes or seconds count as 0; anything unreadable gives nullopt.
std::optional<int> StoredFromDmsText(std::string_view degrees, std::string_view minutes,
                                     std::string_view seconds, std::string_view hemisphere, bool latitude);

// "MM/DD/YYYY" (the regulator's date form) to "YYYY-MM-DD"; nullopt when the
// text is no valid date. "YYYY-MM-DD" (with an optional time after it) is
// accepted too.
std::optional<std::string> ParseRegulatorDate(std::string_view text);

// FM channel of a frequency in MHz: 200 + (MHz - 87.9) / 0.2, when the
// frequency lies within 0.02 MHz of a channel from 200 (87.9) to 300 (107.9).
std::optional<int> ChannelFromFrequency(double mhz);

enum class StationCountry { US, Canada, Mexico, Other };
// "US", "CA", "MX", "other".
std::string_view CountryCode(StationCountry country);
// A country column's value: "US" (and empty) is domestic, "CA" and "MX" as
// named, anything else Other.
StationCountry CountryFromCode(std::string_view code);
// State codes that only Canadian provinces use ("ON", "QC", "QU", "NF"...),
// and the Mexican state codes of the regulator's lists ("BN", "SO", "NL"...),
// none of which is also a US state or territory code. "NL" is Nuevo Leon:
// the regulator writes Newfoundland "NF".
bool IsCanadianProvince(std::string_view state);
bool IsMexicanState(std::string_view state);
// The country of a station known only by call sign and state: a province or
// Mexican state decides; otherwise a call sign starting with K or W is US,
// C or V Canadian, X Mexican, any other foreign; with no call sign, US.
StationCountry CountryOfStation(std::string_view callSign, std::string_view state);

}  // namespace qarvel::stationdb
