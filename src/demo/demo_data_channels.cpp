// The demo generator's channel planner: which channels a new station may take
// without coming closer to a placed one than the separation rules allow.

#include <algorithm>
#include <cstdlib>
#include <set>

#include "geodesy/geodesy.h"
#include "spacing/min_sep.h"
#include "demo/demo_data_internal.h"

namespace qarvel::demo {
namespace {

// Channel offsets other - target that carry a separation rule.
constexpr std::array<int, 11> kRelatedOffsets{0, 1, -1, 2, -2, 3, -3, 53, 54, -53, -54};
// No rule asks for more than this (km); farther stations never block a channel.
constexpr double kMaxRuleKm = 300.0;
// Placed pairs keep this much (km) beyond the rule, so that a display that
// works in single precision still finds them spaced.
constexpr double kMarginKm = 1.0;
constexpr int kStored = 14400;

double Deg(int stored) {
    return static_cast<double>(stored) / kStored;
}

std::size_t Index(int channel) {
    return static_cast<std::size_t>(channel - kFirstChannel);
}

spacing::StationRec Rec(const Planned& p, int channel, int relation) {
    spacing::StationRec r;
    r.lat = Deg(p.lat);
    r.lon = Deg(p.lon);
    r.station_channel = static_cast<std::int16_t>(channel);
    r.relation = static_cast<std::int16_t>(relation);
    r.station_class = p.cls;
    return r;
}

// The larger of the two separations the rules ask between s on channel c and
// o on its own: each station in turn is the target, as the rules are not
// symmetric for every class pair. The records are reused across calls.
int RequiredBetween(spacing::StationRec& s, int c, spacing::StationRec& o) {
    s.station_channel = static_cast<std::int16_t>(c);
    const int forward = spacing::RelationFromChannels(c, o.station_channel);
    const int backward = spacing::RelationFromChannels(o.station_channel, c);
    if (forward < 0 || backward < 0) return 0;
    s.relation = 0;
    o.relation = static_cast<std::int16_t>(forward);
    const int one = spacing::LookupMinSep(s, o);
    o.relation = 0;
    s.relation = static_cast<std::int16_t>(backward);
    return std::max(one, static_cast<int>(spacing::LookupMinSep(o, s)));
}

}  // namespace

int ChannelPlanner::Required(const Planned& s, int c, const Planned& o) {
    spacing::StationRec sr = Rec(s, c, 0);
    spacing::StationRec orec = Rec(o, o.channel, 0);
    return RequiredBetween(sr, c, orec);
}

double DistanceKm(int lat1, int lon1, int lat2, int lon2) {
    double north = 0, east = 0;
    return geodesy::FlatDistance(Deg(lat1), Deg(lon1), Deg(lat2), Deg(lon2), north, east);
}

bool MaybeWithin(int lat1, int lon1, int lat2, int lon2, double degLat, double degLon) {
    return std::abs(lat1 - lat2) <= degLat * kStored && std::abs(lon1 - lon2) <= degLon * kStored;
}

std::array<bool, 101> ChannelPlanner::Blocked(const Planned& s, int ignore) const {
    std::array<bool, 101> blocked{};
    spacing::StationRec sr = Rec(s, 0, 0);
    for (std::size_t j = 0; j < m_placed.size(); ++j) {
        const Planned& o = m_placed[j];
        if (static_cast<int>(j) == ignore || o.channel == 0) continue;
        // 3 degrees of latitude are 333 km; 7.5 of longitude cover 300 km up to 64 N.
        if (!MaybeWithin(s.lat, s.lon, o.lat, o.lon, 3.0, 7.5)) continue;
        const double d = DistanceKm(s.lat, s.lon, o.lat, o.lon);
        if (d >= kMaxRuleKm) continue;
        spacing::StationRec orec = Rec(o, o.channel, 0);
        for (const int offset : kRelatedOffsets) {
            const int c = o.channel - offset;
            if (c < kFirstChannel || c > kLastChannel || blocked[Index(c)]) continue;
            if (d < RequiredBetween(sr, c, orec) + kMarginKm) blocked[Index(c)] = true;
        }
    }
    BlockTelevisionSix(s, blocked);
    return blocked;
}

void ChannelPlanner::BlockTelevisionSix(const Planned& s, std::array<bool, 101>& blocked) const {
    for (const Tv6Site& t : m_tv6) {
        if (!MaybeWithin(s.lat, s.lon, t.lat, t.lon, 3.0, 7.5)) continue;
        const double d = DistanceKm(s.lat, s.lon, t.lat, t.lon);
        spacing::StationRec tv;
        tv.lat = Deg(t.lat);
        tv.lon = Deg(t.lon);
        tv.service = "TV";
        tv.zone = t.zone;
        spacing::StationRec sr = Rec(s, 0, 0);
        for (int c = kFirstReserved; c <= kLastReserved; ++c) {
            sr.station_channel = static_cast<std::int16_t>(c);
            if (d < spacing::LookupMinSep(sr, tv) + kMarginKm) blocked[Index(c)] = true;
        }
    }
}

int ChannelPlanner::Find(const Planned& s, int first, int last, int start, int ignore) const {
    const auto blocked = Blocked(s, ignore);
    const int count = last - first + 1;
    for (int i = 0; i < count; ++i) {
        const int c = first + (start - first + i) % count;
        if (!blocked[Index(c)]) return c;
    }
    return 0;
}

bool InNorthEastZone(const std::string& state, double latDeg) {
    static const std::set<std::string> zoneOne{"CT", "DC", "DE", "IL", "IN", "MA", "MD",
                                               "ME", "MI", "NH", "NJ", "NY", "OH", "PA",
                                               "RI", "VA", "VT", "WI", "WV"};
    return zoneOne.count(state) > 0 || (state == "CA" && latDeg < 40.0);
}

bool WestOfMississippi(const std::string& state) {
    static const std::set<std::string> west{"AK", "AR", "AZ", "CA", "CO", "HI", "IA", "ID",
                                            "KS", "LA", "MN", "MO", "MT", "ND", "NE", "NM",
                                            "NV", "OK", "OR", "SD", "TX", "UT", "WA", "WY"};
    return west.count(state) > 0;
}

}  // namespace qarvel::demo
