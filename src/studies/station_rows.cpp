#include "studies/station_rows.h"

#include <cstddef>
#include <string>

#include "geodesy/geodesy.h"
#include "stationdb/database.h"

namespace qarvel::studies {

namespace {

constexpr char32_t kExcludedMarker = 0xA4;

bool IsContinuation(unsigned char c) {
    return (c & 0xC0) == 0x80;
}

// Length of the valid UTF-8 sequence starting at text[i], 0 when the byte
// there does not start one.
std::size_t SequenceLength(std::string_view text, std::size_t i) {
    const auto lead = static_cast<unsigned char>(text[i]);
    std::size_t length = 0;
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF)
        length = 2;
    else if (lead >= 0xE0 && lead <= 0xEF)
        length = 3;
    else if (lead >= 0xF0 && lead <= 0xF4)
        length = 4;
    else
        return 0;
    if (i + length > text.size()) return 0;
    for (std::size_t k = 1; k < length; ++k) {
        if (!IsContinuation(static_cast<unsigned char>(text[i + k]))) return 0;
    }
    return length;
}

char32_t Decode(std::string_view text, std::size_t i, std::size_t length) {
    const auto lead = static_cast<unsigned char>(text[i]);
    char32_t code = length == 1 ? lead : lead & (0x7F >> length);
    for (std::size_t k = 1; k < length; ++k) {
        code = (code << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3F);
    }
    return code;
}

// VB's Trim: blanks only, both ends.
std::string TrimBlanks(std::string text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    const auto last = text.find_last_not_of(' ');
    return text.substr(first, last - first + 1);
}

}  // namespace

bool HasExcludedMarker(std::string_view callsign) {
    for (std::size_t i = 0; i < callsign.size();) {
        const std::size_t length = SequenceLength(callsign, i);
        if (length == 0) {
            // Not UTF-8 here: a byte of a single-byte (Latin-1) text.
            if (static_cast<unsigned char>(callsign[i]) == kExcludedMarker) return true;
            ++i;
            continue;
        }
        if (Decode(callsign, i, length) == kExcludedMarker) return true;
        i += length;
    }
    return false;
}

bool ReadFmStation(const stationdb::Statement& row, spacing::StationRec& station) {
    if (HasExcludedMarker(row.GetText(kFmCallsign))) return false;
    if (row.IsNull(kFmLat) || row.IsNull(kFmLon)) return false;
    station = spacing::StationRec{};
    station.service = "FM";
    station.lat = row.GetDouble(kFmLat) / kStoredUnitsPerDegree;
    station.lon = row.GetDouble(kFmLon) / kStoredUnitsPerDegree;
    station.station_channel = static_cast<int16_t>(row.GetInt(kFmChannel));
    station.station_class = spacing::ClassIndex(row.GetText(kFmClass));
    station.intl_class = spacing::ClassIndex(row.GetText(kFmIntlClass));
    station.border_code = TrimBlanks(row.GetText(kFmBorderCode));
    return true;
}

bool ReadTv6Station(const stationdb::Statement& row, spacing::StationRec& station) {
    if (row.IsNull(0) || row.IsNull(1)) return false;
    station = spacing::StationRec{};
    station.service = "TV";
    station.lat = row.GetDouble(0) / kStoredUnitsPerDegree;
    station.lon = row.GetDouble(1) / kStoredUnitsPerDegree;
    station.zone = spacing::ZoneIndex(row.GetText(2));
    return true;
}

spacing::StationRec TargetRecord(const ScanTarget& target, int channel) {
    spacing::StationRec record;
    record.lat = target.lat;
    record.lon = target.lon;
    record.station_channel = static_cast<int16_t>(channel);
    record.station_class = target.stationClass;
    record.intl_class = target.intlClass;
    return record;
}

double StationDistance(const spacing::StationRec& target, const spacing::StationRec& station) {
    double northKm = 0;
    double eastKm = 0;
    return geodesy::FlatDistance(target.lat, target.lon, station.lat, station.lon, northKm, eastKm);
}

void ApplyFmClearance(double distance, int16_t required, float& minimum) {
    if (required <= 0) return;
    const auto single = static_cast<float>(distance - required);
    if (single < minimum) minimum = single;
}

void ApplyTv6Clearance(double distance, int16_t required, float& minimum) {
    // Compared as single precision like the FM stations. Comparing the
    // double with the widened minimum instead gives the same result: when
    // clearance < minimum but float(clearance) is not, rounding can only
    // have made float(clearance) == minimum, so the minimum is unchanged.
    const auto single = static_cast<float>(distance - required);
    if (single < minimum) minimum = single;
}

void CountFmStation(const spacing::StationRec& target, const spacing::StationRec& station,
                    float& minimum) {
    const double distance = StationDistance(target, station);
    ApplyFmClearance(distance, spacing::LookupMinSep(target, station), minimum);
}

void CountTv6Station(const spacing::StationRec& target, const spacing::StationRec& station,
                     float& minimum) {
    const double distance = StationDistance(target, station);
    ApplyTv6Clearance(distance, spacing::LookupMinSep(target, station), minimum);
}

}  // namespace qarvel::studies
