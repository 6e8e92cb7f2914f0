#include "stationdb/display_fields.h"

#include "core/error_trap.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace qarvel::stationdb {

namespace {

constexpr std::string_view kModule = "modDispFields";

void WriteCatalogue(const DisplayFieldCatalogue& catalogue, const SettingsWriter& write);

struct FixedEntry {
    const char* fieldName;
    const char* caption;
    const char* type;
};

// The station grid shows master-database columns, qualified with their
// table. The types are display types: the channel as text with its
// frequency, coordinates as degree-minute-second text, numbers as short text.
constexpr std::array<FixedEntry, kStationGridFieldCount> kStationGrid{{
    {"party.party_name", "Owner", "varchar(60)"},
    {"fm_data.fac_callsign", "Callsign", "varchar(13)"},
    {"fm_data.station_channel", "Channel", "varchar(14)"},
    {"fm_data.station_class", "Class", "varchar(2)"},
    {"fm_data.fm_dom_status", "Status", "varchar(6)"},
    {"fm_data.lat", "Latitude", "char(11)"},
    {"fm_data.lon", "Longitude", "char(12)"},
    {"fm_data.horiz_erp", "ERP", "varchar(5)"},
    {"fm_data.max_horiz_erp", "Max ERP", "varchar(6)"},
    {"fm_data.haat_horiz_rc_mtr", "Ant HAAT", "varchar(8)"},
    {"fm_data.hag_horiz_rc_mtr", "Ant AGL", "varchar(8)"},
    {"fm_data.rcamsl_horiz_mtr", "Ant AMSL", "varchar(8)"},
    {"fm_data.ant_rotation", "Ant Rotation", "varchar(8)"},
    {"fm_data.elev_amsl", "Base AMSL", "varchar(8)"},
    {"fm_data.bt_ind", "Beamtilt", "char(1)"},
    {"fm_data.da_ind", "Dir Ant", "char(1)"},
    {"fm_data.rule_73_215_req_ind", "73-215", "char(1)"},
    {"fm_data.comm_city", "City Served", "varchar(20)"},
    {"fm_data.comm_state", "State", "char(2)"},
    {"fm_data.cutoff_date", "Cutoff Date", "date"},
    {"fm_data.cp_exp_date", "CP Exp Date", "date"},
    {"fm_data.app_arn", "ARN", "char(12)"},
    {"fm_data.app_service", "Service", "char(2)"},
    {"fm_data.file_prefix", "File Prfx", "char(10)"},
    {"fm_data.docket_num", "Docket No", "varchar(20)"},
    {"fm_data.asrn", "Twr Reg #", "varchar(12)"},
    {"fm_data.border_code", "Border", "char(1)"},
    {"fm_data.border_dist", "Dist Bdr", "varchar(8)"},
    {"fm_data.intl_class", "Intl Class", "varchar(2)"},
    {"fm_data.intl_status", "Intl Status", "char(6)"},
    {"fm_data.vert_erp", "ERP Vert", "varchar(5)"},
    {"fm_data.asd_service", "ASD Service", "char(2)"},
    {"fm_data.facility_id", "Facility ID", "int"},
}};

// The job grid shows columns of the job display table `tempdisplay`; its
// rows are never written into another table, so no display type is kept.
constexpr std::array<FixedEntry, kJobGridFieldCount> kJobGrid{{
    {"fac_callsign", "Callsign", ""},
    {"latdms", "Latitude", ""},
    {"londms", "Longitude", ""},
    {"comm_city", "City", ""},
    {"comm_state", "State", ""},
    {"Service", "Service", ""},
    {"channel_text", "Channel", ""},
    {"station_class", "Class", ""},
    {"intl_class", "Intl Class", ""},
    {"fm_dom_status", "Status", ""},
    {"radius", "Min Separation", ""},
    {"target_clearance", "Clearance", ""},
    {"horiz_erp", "ERP", ""},
    {"haat_horiz_rc_mtr", "HAAT", ""},
    {"adjacency", "Adjacency", ""},
    {"target_distance", "Distance", ""},
    {"target_bearing", "Bearing", ""},
    {"party_name", "Owner", ""},
    {"vert_erp", "ERP Vert", ""},
    {"asd_service", "ASD Service", ""},
    {"facility_id", "Facility ID", ""},
}};

std::string_view Trim(std::string_view text) {
    auto isBlank = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

// A decimal number: optional sign, digits with an optional fraction and
// exponent. Hexadecimal, infinities and NaN are not numbers here.
std::optional<double> ParseNumber(std::string_view text) {
    if (text.empty()) return std::nullopt;
    for (char c : text) {
        if (!std::isdigit(static_cast<unsigned char>(c)) && c != '+' && c != '-' && c != '.' &&
            c != 'e' && c != 'E') {
            return std::nullopt;
        }
    }
    if (text.front() == '+') text.remove_prefix(1);
    double value = 0.0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

template <class T>
T ReadInteger(const SettingsReader& read, const std::string& key, T fallback) {
    std::optional<std::string> text = read(key);
    if (!text) return fallback;
    auto value = ParseIntegerText(*text, std::numeric_limits<T>::min(),
                                  std::numeric_limits<T>::max());
    return value ? static_cast<T>(*value) : fallback;
}

template <std::size_t N>
DisplayFieldCatalogue Defaults(const std::array<FixedEntry, N>& fixed, std::string visibleStem,
                               std::string positionStem, std::string widthStem) {
    DisplayFieldCatalogue catalogue;
    catalogue.visibleStem = std::move(visibleStem);
    catalogue.positionStem = std::move(positionStem);
    catalogue.widthStem = std::move(widthStem);
    catalogue.fields.reserve(N);
    for (std::size_t i = 0; i < N; ++i) {
        DisplayField field;
        field.fieldName = fixed[i].fieldName;
        field.caption = fixed[i].caption;
        field.type = fixed[i].type;
        field.position = static_cast<std::uint8_t>(i);
        catalogue.fields.push_back(std::move(field));
    }
    return catalogue;
}

DisplayFieldCatalogue Build(DisplayFieldCatalogue catalogue, const SettingsReader& read) {
    for (std::size_t i = 0; i < catalogue.fields.size(); ++i) {
        DisplayField& field = catalogue.fields[i];
        field.position = ReadByteSetting(read, NumberedKey(catalogue.positionStem, i),
                                         static_cast<std::uint8_t>(i));
        field.visible = ReadBoolSetting(read, NumberedKey(catalogue.visibleStem, i), true);
        field.width = ReadInt16Setting(read, NumberedKey(catalogue.widthStem, i), 0);
    }
    catalogue.built = true;
    return catalogue;
}

}  // namespace

std::optional<bool> ParseBoolText(std::string_view text) {
    text = Trim(text);
    if (EqualsNoCase(text, "True")) return true;
    if (EqualsNoCase(text, "False")) return false;
    std::optional<double> number = ParseNumber(text);
    if (!number || std::isnan(*number)) return std::nullopt;
    return *number != 0.0;
}

std::optional<std::int64_t> ParseIntegerText(std::string_view text, std::int64_t minimum,
                                             std::int64_t maximum) {
    text = Trim(text);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    if (text.empty()) return std::nullopt;
    std::int64_t value = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
    if (value < minimum || value > maximum) return std::nullopt;
    return value;
}

bool ReadBoolSetting(const SettingsReader& read, const std::string& key, bool fallback) {
    std::optional<std::string> text = read(key);
    if (!text) return fallback;
    return ParseBoolText(*text).value_or(fallback);
}

std::uint8_t ReadByteSetting(const SettingsReader& read, const std::string& key,
                             std::uint8_t fallback) {
    return ReadInteger<std::uint8_t>(read, key, fallback);
}

std::int16_t ReadInt16Setting(const SettingsReader& read, const std::string& key,
                              std::int16_t fallback) {
    return ReadInteger<std::int16_t>(read, key, fallback);
}

std::int32_t ReadInt32Setting(const SettingsReader& read, const std::string& key,
                              std::int32_t fallback) {
    return ReadInteger<std::int32_t>(read, key, fallback);
}

std::string BoolText(bool value) { return value ? "True" : "False"; }

std::string NumberedKey(std::string_view stem, std::size_t index) {
    return std::string(stem) + std::to_string(index);
}

DisplayFieldCatalogue StationGridDefaults() {
    return Defaults(kStationGrid, "gdisp", "gdispOrdr", "gColWidth");
}

DisplayFieldCatalogue JobGridDefaults() {
    return Defaults(kJobGrid, "gMapdisp", "gMapdispOrdr", "gMapColWidth");
}

// A settings store that fails while the catalogues are read leaves the
// grids with their fixed lists: every column, catalogue order.
DisplayFieldCatalogue BuildStationGridCatalogue(const SettingsReader& read) {
    return core::Trapped(kModule, ":BuildStationGridCatalogue:", StationGridDefaults(),
                         [&] { return Build(StationGridDefaults(), read); });
}

DisplayFieldCatalogue BuildJobGridCatalogue(const SettingsReader& read) {
    return core::Trapped(kModule, ":BuildJobGridCatalogue:", JobGridDefaults(),
                         [&] { return Build(JobGridDefaults(), read); });
}

void SaveCatalogue(const DisplayFieldCatalogue& catalogue, const SettingsWriter& write) {
    core::TrappedVoid(kModule, ":SaveCatalogue:", [&] { WriteCatalogue(catalogue, write); });
}

namespace {
void WriteCatalogue(const DisplayFieldCatalogue& catalogue, const SettingsWriter& write) {
    if (!catalogue.built) return;
    for (std::size_t i = 0; i < catalogue.fields.size(); ++i) {
        const DisplayField& field = catalogue.fields[i];
        write(NumberedKey(catalogue.visibleStem, i), BoolText(field.visible));
        write(NumberedKey(catalogue.positionStem, i), std::to_string(field.position));
        write(NumberedKey(catalogue.widthStem, i), std::to_string(field.width));
    }
}
}  // namespace

std::vector<DisplayField> VisibleFieldsInOrder(const DisplayFieldCatalogue& catalogue) {
    std::vector<DisplayField> visible;
    for (const DisplayField& field : catalogue.fields) {
        if (field.visible) visible.push_back(field);
    }
    std::stable_sort(visible.begin(), visible.end(),
                     [](const DisplayField& a, const DisplayField& b) {
                         return a.position < b.position;
                     });
    return visible;
}

std::string StationGridSelectList(const DisplayFieldCatalogue& catalogue) {
    std::string list;
    for (const DisplayField& field : VisibleFieldsInOrder(catalogue)) {
        if (!list.empty()) list += ',';
        list += field.fieldName;
    }
    return list;
}

}  // namespace qarvel::stationdb
