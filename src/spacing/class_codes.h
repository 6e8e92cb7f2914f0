#pragma once
// Station class codes, channel relation codes and the small conversions
// around them that the separation lookup and its callers share.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace qarvel::spacing {

// Display texts of the class codes: class index i (0..13) is ClassName[i + 1];
// entry 0 is a single blank " " (the text of the unknown class -1).
// [1] "L2", [2] "L1", [3] "A3", [4] "A1", [5] "A", [6] "AA", [7] "B1",
// [8] "B", [9] "C3", [10] "C2", [11] "C1", [12] "C0", [13] "C", [14] "D".
// Classes 0 ("L2") and 1 ("L1") are the two low-power classes.
extern const std::array<std::string, 15> ClassName;

// Display texts of the relation codes: relation r (0..4) is RelName[r + 1];
// entry 0 is "", entry 6 is "TV6" (the label of television channel 6
// stations, which have no relation index of their own).
extern const std::array<std::string, 7> RelName;

// Relation codes.
inline constexpr int16_t kRelCoChannel = 0;  // "Primary"
inline constexpr int16_t kRelFirstAdj = 1;   // "1st Adj": +-1 channel (200 kHz)
inline constexpr int16_t kRelSecondAdj = 2;  // "2nd Adj": +-2 channels (400 kHz)
inline constexpr int16_t kRelThirdAdj = 3;   // "3rd Adj": +-3 channels (600 kHz)
inline constexpr int16_t kRelIF = 4;         // "IF": +-53 or +-54 channels (10.6/10.8 MHz)

// Class index of a class text: blanks trimmed from both ends, upper-cased,
// then compared exactly with ClassName[1..14]. Returns 0..13, or -1 when the
// text matches none ("A-1", "").
int16_t ClassIndex(std::string_view classText);

// Television zone index of a channel 6 station from its fac_zone text:
// 1 when the text with blanks trimmed is "1", else 0.
int16_t ZoneIndex(std::string_view facZone);

// Relation of another station's FM channel to the target's FM channel
// (channels 200..300), from the difference other - target tested in the
// order 0, +1, -1, +2, -2, +3, -3, +53, +54, -53, -54. Returns 0..4, or -1
// when the stations are unrelated and need no separation lookup.
int16_t RelationFromChannels(int targetChannel, int otherChannel);

}  // namespace qarvel::spacing
