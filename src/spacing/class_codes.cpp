#include "spacing/class_codes.h"

#include <cstddef>

namespace qarvel::spacing {

const std::array<std::string, 15> ClassName = {
    " ", "L2", "L1", "A3", "A1", "A", "AA", "B1", "B", "C3", "C2", "C1", "C0", "C", "D"};

const std::array<std::string, 7> RelName = {
    "", "Primary", "1st Adj", "2nd Adj", "3rd Adj", "IF", "TV6"};

namespace {

// Trims blanks only (not tabs): class and zone texts come from fixed-width
// database fields padded with blanks.
std::string_view TrimBlanks(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) {
        return {};
    }
    const auto last = text.find_last_not_of(' ');
    return text.substr(first, last - first + 1);
}

char UpperAscii(char c) {
    return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace

int16_t ClassIndex(std::string_view classText) {
    const std::string_view trimmed = TrimBlanks(classText);
    std::string upper(trimmed);
    for (char& c : upper) {
        c = UpperAscii(c);
    }
    for (std::size_t i = 1; i < ClassName.size(); ++i) {
        if (upper == ClassName[i]) {
            return static_cast<int16_t>(i - 1);
        }
    }
    return -1;
}

int16_t ZoneIndex(std::string_view facZone) {
    return TrimBlanks(facZone) == "1" ? int16_t{1} : int16_t{0};
}

int16_t RelationFromChannels(int targetChannel, int otherChannel) {
    struct Step {
        int difference;
        int16_t relation;
    };
    // The order callers have always tested the differences in.
    static constexpr std::array<Step, 11> kSteps = {{
        {0, kRelCoChannel},
        {1, kRelFirstAdj}, {-1, kRelFirstAdj},
        {2, kRelSecondAdj}, {-2, kRelSecondAdj},
        {3, kRelThirdAdj}, {-3, kRelThirdAdj},
        {53, kRelIF}, {54, kRelIF}, {-53, kRelIF}, {-54, kRelIF},
    }};
    // Widened so that no pair of int channels can overflow the subtraction.
    const long long difference = static_cast<long long>(otherChannel) - targetChannel;
    for (const Step& step : kSteps) {
        if (difference == step.difference) {
            return step.relation;
        }
    }
    return -1;
}

}  // namespace qarvel::spacing
