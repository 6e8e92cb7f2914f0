#include "spacing/min_sep.h"

#include <array>
#include <cstddef>
#include <string_view>

#include "core/error_trap.h"
#include "spacing/min_sep_tables.h"

namespace qarvel::spacing {

namespace {

constexpr std::string_view kModule = "modMinSep";
constexpr std::string_view kRoutine = ":LookupMinSep:";

// Bounds-checked subscript. Record fields come from databases and may hold
// any value; an index outside the table is the subscript error the trap
// reports, never a read outside the array.
template <class Array>
const typename Array::value_type& At(const Array& array, int index) {
    if (index < 0 || static_cast<std::size_t>(index) >= array.size()) {
        throw core::TrapError("Subscript out of range");
    }
    return array[static_cast<std::size_t>(index)];
}

// The result of one lookup before it is reported: the value and, when a
// table cell gave it, which one. Kept allocation-free for AutoScan's loops.
struct Resolved {
    int16_t km = 0;
    std::string_view table;  // empty when no table applied
    std::array<int, 3> indices{};
    std::size_t indexCount = 0;
};

Resolved FromClassTable(std::string_view name, const ClassTable& table, int targetClass,
                        int otherClass, int relation) {
    // Relation is checked first only because it selects the grid in storage;
    // any of the three out of bounds is the same subscript error.
    const Grid& grid = At(table, relation);
    return {At(At(grid, targetClass), otherClass), name, {targetClass, otherClass, relation}, 3};
}

bool IsLowPower(int16_t stationClass) { return stationClass == 0 || stationClass == 1; }

// International class for a target that has none of its own, from its
// domestic class. Classes without a case ("A1", "AA" and anything unknown)
// keep the initial 0, i.e. "L2"; -1 and "D" map to -1 (out of bounds).
int16_t MappedIntlClass(int16_t stationClass, bool north) {
    int16_t mapped = 0;
    switch (stationClass) {
        case -1: mapped = -1; break;
        case 0: mapped = 0; break;     // L2
        case 1: mapped = 1; break;     // L1
        case 2: mapped = 4; break;     // A3 -> A
        case 4: mapped = north ? int16_t{4} : int16_t{5}; break;  // A -> A north, AA south
        case 6: mapped = 6; break;     // B1
        case 7: mapped = 7; break;     // B
        case 8: mapped = 6; break;     // C3 -> B1
        case 9: mapped = 7; break;     // C2 -> B
        case 10: mapped = 10; break;   // C1
        case 11: mapped = 12; break;   // C0 -> C
        case 12: mapped = 12; break;   // C
        case 13: mapped = -1; break;   // D: no international class
        default: break;
    }
    return mapped;
}

Resolved Domestic(const StationRec& target, const StationRec& other) {
    if (other.station_class == -1) {
        return {};
    }
    if ((other.comm_state == "PR" || other.comm_state == "VI") && IsLowPower(target.station_class)) {
        const LowPowerGrid& grid = At(MinSepPRVI, other.relation);
        return {At(At(grid, target.station_class), other.station_class),
                "MinSepPRVI",
                {target.station_class, other.station_class, other.relation},
                3};
    }
    return FromClassTable("MinSep", MinSep, target.station_class, other.station_class,
                          other.relation);
}

Resolved International(const StationRec& target, const StationRec& other) {
    if (other.intl_class == -1) {
        return {};
    }
    const bool north = other.lat > kNorthSouthLatitude;
    const int16_t targetIntl = target.intl_class != -1
                                   ? target.intl_class
                                   : MappedIntlClass(target.station_class, north);
    if (north) {
        return FromClassTable("MinSepNorth", MinSepNorth, targetIntl, other.intl_class,
                              other.relation);
    }
    return FromClassTable("MinSepSouth", MinSepSouth, targetIntl, other.intl_class,
                          other.relation);
}

Resolved TelevisionSix(const StationRec& target, const StationRec& other) {
    if (!IsLowPower(target.station_class)) {
        return {At(At(MinSepTV6Zone, target.station_class), other.zone),
                "MinSepTV6Zone",
                {target.station_class, other.zone, 0},
                2};
    }
    const int channelIndex = target.station_channel - kTv6FirstChannel;
    if (channelIndex >= 0 && static_cast<std::size_t>(channelIndex) < kTv6ChannelCount) {
        return {At(At(MinSepTV6Chan, target.station_class), channelIndex),
                "MinSepTV6Chan",
                {target.station_class, channelIndex, 0},
                2};
    }
    return {};
}

Resolved Resolve(const StationRec& target, const StationRec& other) {
    if (other.service == "FM" || other.service == "ED") {
        return other.border_code == "A" ? International(target, other) : Domestic(target, other);
    }
    if (other.service == "TV") {
        return TelevisionSix(target, other);
    }
    return {};
}

}  // namespace

void LoadMinSepTables() {}

int16_t LookupMinSep(const StationRec& target, const StationRec& other) {
    return core::Trapped(kModule, kRoutine, int16_t{0},
                         [&] { return Resolve(target, other).km; });
}

int16_t LookupMinSep(const StationRec& target, const StationRec& other, MinSepCell* cell) {
    if (cell == nullptr) {
        return LookupMinSep(target, other);
    }
    cell->table.clear();
    cell->indices.clear();
    return core::Trapped(kModule, kRoutine, int16_t{0}, [&] {
        const Resolved resolved = Resolve(target, other);
        cell->table = std::string(resolved.table);
        cell->indices.assign(resolved.indices.begin(),
                             resolved.indices.begin() + static_cast<std::ptrdiff_t>(resolved.indexCount));
        return resolved.km;
    });
}

}  // namespace qarvel::spacing
