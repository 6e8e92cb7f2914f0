// Code page 1252 text and the check that a stored container name is safe to
// create inside a folder.

#include "container/container.h"

#include "core/utf8.h"

#include <array>

namespace qarvel::container {

// --- Code page 1252 -----------------------------------------------------------
//
// Bytes 0x00-0x7F and 0xA0-0xFF are the Unicode characters of the same
// number; 0x80-0x9F carry the typographic characters below (0 = undefined).
namespace {

constexpr std::array<char32_t, 32> kCp1252High = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
    0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

// The next code point of strict UTF-8 (no overlong forms, no surrogates), or
// nothing.
std::optional<char32_t> NextCodePoint(std::string_view text, std::size_t& i) {
    static constexpr unsigned char kLeadMask[] = {0x7F, 0x1F, 0x0F, 0x07};
    static constexpr char32_t kMin[] = {0, 0x80, 0x800, 0x10000};
    auto lead = static_cast<unsigned char>(text[i]);
    int extra = lead < 0x80 ? 0 : (lead & 0xE0) == 0xC0 ? 1 : (lead & 0xF0) == 0xE0 ? 2 : (lead & 0xF8) == 0xF0 ? 3 : -1;
    if (extra < 0 || text.size() - i <= static_cast<std::size_t>(extra)) return std::nullopt;
    char32_t cp = lead & kLeadMask[extra];
    for (int k = 1; k <= extra; ++k) {
        auto next = static_cast<unsigned char>(text[i + static_cast<std::size_t>(k)]);
        if ((next & 0xC0) != 0x80) return std::nullopt;
        cp = (cp << 6) | (next & 0x3Fu);
    }
    if (cp < kMin[extra] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return std::nullopt;
    i += static_cast<std::size_t>(extra) + 1;
    return cp;
}

using core::AppendUtf8;

bool IsReservedDeviceName(std::string_view name) {
    std::string stem(name.substr(0, name.find('.')));
    while (!stem.empty() && stem.back() == ' ') stem.pop_back();
    for (char& c : stem) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 0x20 : c);
    if (stem == "CON" || stem == "PRN" || stem == "AUX" || stem == "NUL") return true;
    return stem.size() == 4 && (stem.starts_with("COM") || stem.starts_with("LPT")) && stem[3] >= '1' &&
           stem[3] <= '9';
}

}  // namespace

std::optional<std::string> Utf8ToCp1252(std::string_view utf8) {
    std::string out;
    for (std::size_t i = 0; i < utf8.size();) {
        std::optional<char32_t> cp = NextCodePoint(utf8, i);
        if (!cp) return std::nullopt;
        if (*cp < 0x80 || (*cp >= 0xA0 && *cp <= 0xFF)) {
            out += static_cast<char>(*cp);
            continue;
        }
        std::size_t slot = 0;
        while (slot < kCp1252High.size() && (kCp1252High[slot] == 0 || kCp1252High[slot] != *cp)) ++slot;
        if (slot == kCp1252High.size()) return std::nullopt;
        out += static_cast<char>(0x80 + slot);
    }
    return out;
}

std::optional<std::string> Cp1252ToUtf8(std::string_view cp1252) {
    std::string out;
    for (char c : cp1252) {
        auto b = static_cast<unsigned char>(c);
        char32_t cp = (b >= 0x80 && b < 0xA0) ? kCp1252High[b - 0x80] : b;
        if (cp == 0 && b != 0) return std::nullopt;
        AppendUtf8(out, cp);
    }
    return out;
}

std::string ContainerNameProblem(std::string_view name) {
    if (name.empty()) return "empty file name";
    if (name.size() > kContainerMaxNameBytes) return "file name longer than 255 characters";
    if (name == "." || name.find("..") != std::string_view::npos) return "file name contains \"..\"";
    if (name.find_first_of("/\\") != std::string_view::npos) return "file name contains a folder separator";
    if (name.find(':') != std::string_view::npos) return "file name contains a drive prefix \":\"";
    for (unsigned char c : name) {
        if (c < 0x20 || c == 0x7F) return "file name contains a control character";
    }
    if (name.find_first_of("<>\"|?*") != std::string_view::npos) {
        return "file name contains a character not allowed in file names";
    }
    if (name.back() == '.' || name.back() == ' ') return "file name ends with a dot or a blank";
    if (IsReservedDeviceName(name)) return "file name is a reserved device name";
    return {};
}

}  // namespace qarvel::container
