#include "stationdb/field_text.h"

#include "core/utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace qarvel::stationdb {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

using core::AppendUtf8;

// Code page 1252 for bytes 0x80 to 0x9F; 0 where it defines nothing (those
// bytes keep their Latin-1 control meaning).
constexpr std::array<char32_t, 32> kCp1252High = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

constexpr std::array<std::string_view, 16> kProvinces = {"AB", "BC", "MB", "NB", "NF", "LB", "NS", "NT",
                                                         "NU", "ON", "PE", "QC", "QU", "PQ", "SK", "YT"};
constexpr std::array<std::string_view, 17> kMexicanStates = {"BN", "BS", "CH", "CI", "SO", "TA",
                                                             "NL", "DU", "SI", "SL", "ZA", "JA",
                                                             "DF", "YU", "QR", "VE", "AG"};

template <std::size_t N>
bool Contains(const std::array<std::string_view, N>& list, std::string_view value) {
    for (std::string_view item : list)
        if (item == value) return true;
    return false;
}

bool IsDigits(std::string_view text) {
    if (text.empty()) return false;
    for (char c : text)
        if (c < '0' || c > '9') return false;
    return true;
}

bool LeapYear(int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

std::optional<std::string> IsoDate(int year, int month, int day) {
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (year < 1800 || year > 2200 || month < 1 || month > 12 || day < 1) return std::nullopt;
    const int last = kDays[month - 1] + (month == 2 && LeapYear(year) ? 1 : 0);
    if (day > last) return std::nullopt;
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d", year, month, day);
    return std::string(buffer);
}

int ToInt(std::string_view digits) {
    int value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

}  // namespace

std::string_view TrimView(std::string_view text) {
    while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
    return text;
}

std::string Trimmed(std::string_view text) { return std::string(TrimView(text)); }

std::string Upper(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return out;
}

std::string SingleLine(std::string_view text) {
    std::string out;
    bool pendingBlank = false;
    for (char c : TrimView(text)) {
        if (c == '\r' || c == '\n' || c == '\t') {
            pendingBlank = true;
            continue;
        }
        if (pendingBlank && !out.empty() && out.back() != ' ') out += ' ';
        pendingBlank = false;
        out += c;
    }
    return out;
}

bool IsValidUtf8(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size()) {
        const auto c = static_cast<unsigned char>(text[i]);
        std::size_t extra = 0;
        if (c < 0x80) extra = 0;
        else if (c >= 0xC2 && c <= 0xDF) extra = 1;
        else if (c >= 0xE0 && c <= 0xEF) extra = 2;
        else if (c >= 0xF0 && c <= 0xF4) extra = 3;
        else return false;
        if (i + extra >= text.size()) return false;
        for (std::size_t k = 1; k <= extra; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0) != 0x80) return false;
        }
        i += extra + 1;
    }
    return true;
}

std::string Latin1ToUtf8(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (char ch : text) {
        const auto c = static_cast<unsigned char>(ch);
        char32_t cp = c;
        if (c >= 0x80 && c <= 0x9F && kCp1252High[c - 0x80] != 0) cp = kCp1252High[c - 0x80];
        AppendUtf8(out, cp);
    }
    return out;
}

std::string TextToUtf8(std::string_view text) {
    return IsValidUtf8(text) ? std::string(text) : Latin1ToUtf8(text);
}

std::optional<long long> ParseInteger(std::string_view text) {
    text = TrimView(text);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    if (text.empty()) return std::nullopt;
    long long value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::optional<double> ParseNumber(std::string_view text) {
    text = TrimView(text);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    if (text.empty()) return std::nullopt;
    double value = 0;
    const auto [end, ec] =
        std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    if (ec != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
    return value;
}

int StoredCoordinate(double degrees) {
    const double units = degrees * 14400.0;
    // Beyond +-360 degrees is no coordinate; the clamp keeps the conversion defined.
    const double magnitude = std::min(std::trunc(std::fabs(units) + 1e-6), 360.0 * 14400.0);
    return static_cast<int>(units < 0 ? -magnitude : magnitude);
}

std::optional<int> StoredFromDms(double degrees, double minutes, double seconds, bool negative) {
    if (degrees < 0 || degrees > 180 || minutes < 0 || minutes >= 60 || seconds < 0 || seconds >= 60)
        return std::nullopt;
    // Quarter seconds: whole and half seconds stay exact in binary.
    const double units = degrees * 14400.0 + minutes * 240.0 + seconds * 4.0;
    const int magnitude = static_cast<int>(std::trunc(units + 1e-6));
    return negative ? -magnitude : magnitude;
}

std::optional<int> StoredFromDmsText(std::string_view degrees, std::string_view minutes,
                                     std::string_view seconds, std::string_view hemisphere, bool latitude) {
    const std::string h = Upper(TrimView(hemisphere));
    const char positive = latitude ? 'N' : 'W';
    const char negative = latitude ? 'S' : 'E';
    if (h.size() != 1 || (h[0] != positive && h[0] != negative)) return std::nullopt;
    const auto d = ParseNumber(degrees);
    const auto m = TrimView(minutes).empty() ? std::optional<double>(0) : ParseNumber(minutes);
    const auto s = TrimView(seconds).empty() ? std::optional<double>(0) : ParseNumber(seconds);
    if (!d || !m || !s || (latitude && *d > 90)) return std::nullopt;
    return StoredFromDms(*d, *m, *s, h[0] == negative);
}

std::optional<std::string> ParseRegulatorDate(std::string_view text) {
    text = TrimView(text);
    const std::size_t s1 = text.find('/');
    if (s1 != std::string_view::npos) {
        const std::size_t s2 = text.find('/', s1 + 1);
        if (s2 == std::string_view::npos) return std::nullopt;
        std::string_view month = text.substr(0, s1), day = text.substr(s1 + 1, s2 - s1 - 1);
        std::string_view year = text.substr(s2 + 1);
        const std::size_t blank = year.find(' ');  // a time may follow
        if (blank != std::string_view::npos) year = year.substr(0, blank);
        if (!IsDigits(month) || !IsDigits(day) || !IsDigits(year) || year.size() != 4 || month.size() > 2 ||
            day.size() > 2)
            return std::nullopt;
        return IsoDate(ToInt(year), ToInt(month), ToInt(day));
    }
    if (text.size() >= 10 && text[4] == '-' && text[7] == '-') {
        std::string_view year = text.substr(0, 4), month = text.substr(5, 2), day = text.substr(8, 2);
        if (!IsDigits(year) || !IsDigits(month) || !IsDigits(day)) return std::nullopt;
        if (text.size() > 10 && text[10] != ' ' && text[10] != 'T') return std::nullopt;
        return IsoDate(ToInt(year), ToInt(month), ToInt(day));
    }
    return std::nullopt;
}

std::optional<int> ChannelFromFrequency(double mhz) {
    if (!(mhz > 87.0 && mhz < 109.0)) return std::nullopt;
    const double steps = (mhz - 87.9) / 0.2;
    const double nearest = std::round(steps);
    if (std::fabs(steps - nearest) * 0.2 > 0.02) return std::nullopt;
    const int channel = 200 + static_cast<int>(nearest);
    if (channel < 200 || channel > 300) return std::nullopt;
    return channel;
}

std::string_view CountryCode(StationCountry country) {
    switch (country) {
        case StationCountry::US: return "US";
        case StationCountry::Canada: return "CA";
        case StationCountry::Mexico: return "MX";
        case StationCountry::Other: break;
    }
    return "other";
}

StationCountry CountryFromCode(std::string_view code) {
    const std::string c = Upper(TrimView(code));
    if (c.empty() || c == "US" || c == "USA") return StationCountry::US;
    if (c == "CA" || c == "CAN") return StationCountry::Canada;
    if (c == "MX" || c == "MEX") return StationCountry::Mexico;
    return StationCountry::Other;
}

bool IsCanadianProvince(std::string_view state) { return Contains(kProvinces, Upper(TrimView(state))); }

bool IsMexicanState(std::string_view state) { return Contains(kMexicanStates, Upper(TrimView(state))); }

StationCountry CountryOfStation(std::string_view callSign, std::string_view state) {
    if (IsCanadianProvince(state)) return StationCountry::Canada;
    if (IsMexicanState(state)) return StationCountry::Mexico;
    callSign = TrimView(callSign);
    if (callSign.empty()) return StationCountry::US;
    switch (callSign.front()) {
        case 'K': case 'W': case 'k': case 'w': return StationCountry::US;
        case 'C': case 'V': case 'c': case 'v': return StationCountry::Canada;
        case 'X': case 'x': return StationCountry::Mexico;
        default: return StationCountry::Other;
    }
}

}  // namespace qarvel::stationdb
