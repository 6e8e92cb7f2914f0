#pragma once
// The six minimum-separation tables, in whole kilometres, as constant data.
// A cell with no rule reads 0. Index with the bounds-checked lookup in
// min_sep.h; these declarations are for callers that list or check tables.

#include <array>
#include <cstddef>
#include <cstdint>

namespace qarvel::spacing {

inline constexpr std::size_t kClassCount = 14;     // class indices 0..13
inline constexpr std::size_t kRelationCount = 5;   // relations 0..4
inline constexpr std::size_t kLowPowerCount = 2;   // low-power classes 0 "L2", 1 "L1"
inline constexpr std::size_t kZoneCount = 2;       // TV zone index 0..1
inline constexpr int kTv6FirstChannel = 201;       // channel-6 rules cover FM 201..220
inline constexpr std::size_t kTv6ChannelCount = 20;

using Row = std::array<int16_t, kClassCount>;           // by the other station's class
using Grid = std::array<Row, kClassCount>;              // [target class][other class]
using ClassTable = std::array<Grid, kRelationCount>;    // [relation][target][other]
using LowPowerGrid = std::array<Row, kLowPowerCount>;   // [target class 0..1][other class]
using PrviTable = std::array<LowPowerGrid, kRelationCount>;
using Tv6ZoneRow = std::array<int16_t, kZoneCount>;
using Tv6ZoneTable = std::array<Tv6ZoneRow, kClassCount>;       // [target class][zone]
using Tv6ChanRow = std::array<int16_t, kTv6ChannelCount>;
using Tv6ChanTable = std::array<Tv6ChanRow, kLowPowerCount>;    // [target class][channel - 201]

// Note the storage order: relation first, so MinSep[r][t][o] is the cell
// the lookup calls [target t][other o][relation r].

// FM and educational FM stations of the United States (domestic classes).
extern const ClassTable MinSep;
// Foreign stations above 37.0 degrees north, by international class (the
// northern neighbour's agreement; its 2nd- and 3rd-adjacent values differ).
extern const ClassTable MinSepNorth;
// Foreign stations at or below 37.0 degrees north, by international class.
extern const ClassTable MinSepSouth;
// Low-power target against a station in Puerto Rico or the Virgin Islands.
extern const PrviTable MinSepPRVI;
// Television channel 6 station against a target that is not low-power.
extern const Tv6ZoneTable MinSepTV6Zone;
// Television channel 6 station against a low-power target on FM 201..220.
extern const Tv6ChanTable MinSepTV6Chan;

}  // namespace qarvel::spacing
