#include "core/csv_text.h"

#include <cstdlib>

namespace qarvel::core {

namespace {

bool IsNumber(std::string_view text) {
    if (text.empty()) return false;
    const std::string copy(text);
    char* end = nullptr;
    std::strtod(copy.c_str(), &end);
    return end == copy.c_str() + copy.size();
}

bool RunsAsFormula(std::string_view text) {
    if (text.empty()) return false;
    switch (text.front()) {
        case '=': case '+': case '@': case '\t': case '\r': return true;
        case '-': return !IsNumber(text);
        default: return false;
    }
}

}  // namespace

std::string CsvField(std::string_view text) {
    std::string cell = RunsAsFormula(text) ? "'" + std::string(text) : std::string(text);
    if (cell.find_first_of(",\"\r\n") == std::string::npos) return cell;
    std::string quoted = "\"";
    for (const char c : cell) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + "\"";
}

std::string CsvRow(const std::vector<std::string>& cells) {
    std::string row;
    for (std::size_t i = 0; i < cells.size(); ++i) row += (i ? "," : "") + CsvField(cells[i]);
    return row;
}

std::string TerminalText(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        const bool c1Escape = c == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) >= 0x80 &&
                              static_cast<unsigned char>(text[i + 1]) <= 0x9F;
        if ((c < 0x20 && c != '\t') || c == 0x7F) {
            out += '?';
        } else if (c1Escape) {
            out += '?';
            ++i;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out;
}

}  // namespace qarvel::core
