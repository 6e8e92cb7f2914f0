#include "studies/fast_engine.h"

#include <fmt/format.h>
#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

#include "core/error_trap.h"
#include "spacing/min_sep_tables.h"
#include "stationdb/database.h"
#include "stationdb/jet_dialect.h"
#include "studies/station_rows.h"
#include "studies/where_terms.h"

namespace qarvel::studies {

// ---------------------------------------------------------------------------
// Why the in-memory filter equals the WHERE clause.
//
// The clause is  C AND S AND F  with C the channel terms, S the group
// "( border_code LIKE 'A' OR fm_dom_status LIKE 'LI*' OR ... )" and F
// "asd_service NOT LIKE 'FS' AND asd_service NOT LIKE 'FB'". SQL keeps a row
// only when the whole clause is TRUE (not FALSE, not NULL), i.e. when C, S
// and F are each TRUE. LIKE on a NULL is NULL, so:
//  - C is TRUE exactly for the rows that "station_channel IN (list)" keeps
//    with the same channel (IN compares with the same affinity rules as "="
//    against a bare number), and for those rows GetInt(station_channel) is
//    that channel. The index is loaded through such an IN list and bucketed
//    by GetInt, so bucket n holds the rows for which "station_channel=n" is
//    TRUE.
//  - S is TRUE when at least one of its terms is TRUE. filterBits records
//    which terms are TRUE (a NULL column sets no bit); a row passes S when
//    it shares a bit with the mask of the terms present.
//  - F is TRUE only for a non-NULL asd_service matching neither pattern;
//    other rows are left out of the index.
// The LIKE tests use the dialect's own JetPattern on the text SQLite gives
// for the column, as the dialect's like() does.
// ---------------------------------------------------------------------------

namespace {

std::string IndexQuery(bool withStatus) {
    std::vector<int> channels(MasterIndex::kHighestChannel - MasterIndex::kLowestChannel + 1);
    std::iota(channels.begin(), channels.end(), MasterIndex::kLowestChannel);
    return fmt::format(
        "SELECT fac_callsign, station_channel, lat, lon, station_class, intl_class, "
        "border_code, {}, asd_service FROM fm_data WHERE station_channel IN ({})",
        withStatus ? "fm_dom_status" : "NULL", fmt::join(channels, ", "));
}

constexpr int kStatusColumn = 7;
constexpr int kServiceColumn = 8;

stationdb::JetPattern Compile(std::string_view pattern) {
    auto compiled = stationdb::JetPattern::Compile(pattern);
    if (!compiled) throw core::TrapError("invalid pattern " + std::string(pattern));
    return *compiled;
}

// True when "column LIKE pattern" is TRUE for this row (NULL is not).
bool LikeIsTrue(const stationdb::Statement& row, int column, const stationdb::JetPattern& p) {
    return !row.IsNull(column) && p.Matches(row.GetText(column));
}

void SortByLatitude(MasterIndex::Bucket& bucket) {
    std::sort(bucket.stations.begin(), bucket.stations.end(),
              [](const auto& a, const auto& b) { return a.record.lat < b.record.lat; });
    bucket.lats.clear();
    for (const auto& s : bucket.stations) bucket.lats.push_back(s.record.lat);
}

uint8_t FilterMask(const ScanOptions& options) {
    uint8_t mask = 1;  // border_code LIKE 'A' is always in the group
    for (std::size_t i = 0; i < kStatusPatterns.size(); ++i) {
        if (options.*kStatusPatterns[i].flag) mask = static_cast<uint8_t>(mask | (2u << i));
    }
    return mask;
}

bool AnyStatus(const ScanOptions& options) {
    return FilterMask(options) != 1;
}

}  // namespace

std::shared_ptr<const MasterIndex> MasterIndex::Load(const std::filesystem::path& fdbPath) {
    return core::Trapped(kAutoScanModule, ":InitValues:", std::shared_ptr<const MasterIndex>(),
                         [&] {
                             stationdb::Database db(fdbPath, stationdb::OpenMode::ReadOnly);
                             std::shared_ptr<MasterIndex> index(new MasterIndex());
                             index->LoadFm(db);
                             index->LoadTv6(db);
                             return std::shared_ptr<const MasterIndex>(std::move(index));
                         });
}

void MasterIndex::LoadFm(const stationdb::Database& db) {
    core::TrappedVoid(kAutoScanModule, ":InitValues:", [&] {
        // Without fm_dom_status the reference query still runs while no
        // status flag is set (the group is then border_code alone).
        m_hasStatusColumn = db.HasColumn("fm_data", "fm_dom_status");
        const stationdb::JetPattern border = Compile(kBorderPattern);
        std::vector<stationdb::JetPattern> statuses;
        for (const auto& s : kStatusPatterns) statuses.push_back(Compile(s.pattern));
        std::vector<stationdb::JetPattern> services;
        for (auto pattern : kExcludedServicePatterns) services.push_back(Compile(pattern));

        stationdb::Statement row = db.Prepare(IndexQuery(m_hasStatusColumn));
        Station station;
        while (row.Step()) {
            if (row.IsNull(kServiceColumn)) continue;
            const std::string service = row.GetText(kServiceColumn);
            if (std::any_of(services.begin(), services.end(),
                            [&](const auto& p) { return p.Matches(service); })) {
                continue;
            }
            if (!ReadFmStation(row, station.record)) continue;
            station.filterBits = LikeIsTrue(row, kFmBorderCode, border) ? 1 : 0;
            for (std::size_t i = 0; i < statuses.size(); ++i) {
                if (LikeIsTrue(row, kStatusColumn, statuses[i])) {
                    station.filterBits = static_cast<uint8_t>(station.filterBits | (2u << i));
                }
            }
            const int channel = row.GetInt(kFmChannel);
            m_channels[static_cast<std::size_t>(channel - kLowestChannel)].stations.push_back(
                station);
        }
        for (Bucket& bucket : m_channels) SortByLatitude(bucket);
        m_fmReadable = true;
    });
}

void MasterIndex::LoadTv6(const stationdb::Database& db) {
    core::TrappedVoid(kAutoScanModule, ":InitValues:", [&] {
        stationdb::Statement row = db.Prepare(kTv6Query);
        Station station;
        while (row.Step()) {
            if (ReadTv6Station(row, station.record)) m_tv6.stations.push_back(station);
        }
        SortByLatitude(m_tv6);
        m_tv6Readable = true;
    });
}

const MasterIndex::Bucket& MasterIndex::Channel(int channel) const {
    return m_channels.at(static_cast<std::size_t>(channel - kLowestChannel));
}

std::size_t MasterIndex::FmStationCount() const {
    std::size_t count = 0;
    for (const Bucket& bucket : m_channels) count += bucket.stations.size();
    return count;
}

// ---------------------------------------------------------------------------
// Why skipping stations never changes a minimum.
//
// A station changes the minimum m only when float(d - r) < m, d being its
// FlatDistance and r its required separation; as float rounding is monotone
// and m is a float, that needs d - r < m, i.e. d < m + r. So a station with
// a lower bound L <= d and L >= m + r can be skipped, now and (m only ever
// decreasing) for the rest of the channel. FlatDistance is
// sqrt(NS^2 + EW^2) with
//   NS = dLat * LatSeries(ML),  LatSeries(x) = 111.13209 - 0.56605 cos 2x
//        + 0.0012 cos 4x >= 111.13209 - 0.56605 - 0.0012 = 110.56484,
//   EW = dLon * LonSeries(ML),  LonSeries(x) = 111.41513 cos x - 0.09455 cos 3x
//        + 0.00012 cos 5x >= 111.41513 cos x - 0.09467,
// ML being the mean of the two latitudes and dLon the plain difference of
// the longitudes, as FlatDistance takes them. Hence:
//  1. Static box. Every m starts at 350 and r <= Smax, the largest value of
//     any separation table, so no station beyond R = 350 + Smax (+ 1 km for
//     rounding) counts. |dLat| > R / 110.56 makes d > R: only the latitude
//     band [lat - B, lat + B], B = R / 110.56 degrees, is searched. Inside it
//     |ML| <= |lat| + B =: M; when M < 89 degrees, cos is decreasing on
//     [0, M], so LonSeries(ML) >= K = 111.41513 cos M - 0.09467, and when
//     K > 0, |dLon| > R / K makes d > R. (Near a pole no longitude cut.)
//  2. Per station, after its r is known: L = sqrt((|dLat| 110.56)^2 +
//     (|dLon| K)^2) <= d; skipped when L > m + r + 0.01 km (the hundredth
//     covers the rounding of L, some 1e-12 km). Only then is FlatDistance
//     worked out. An FM station with r <= 0 is skipped as its rule says.
// The required separation is looked up before the distance here, and after
// it on the reference path; both are pure, so only the number of lookup
// errors reported (class D against foreign stations) can differ.
// ---------------------------------------------------------------------------

struct FastEngine::Box {
    bool everything = false;  // no cut (target position not finite)
    double latLow = 0, latHigh = 0;
    double lonBand = INFINITY;
    double kmPerDegLon = 0;  // K: a lower bound of LonSeries in the band; 0 for none
};

int FastEngine::MaxSeparation() {
    static const int kMax = [] {
        int16_t most = 0;
        auto take = [&](const auto& rows) {
            for (const auto& row : rows)
                most = std::max(most, *std::max_element(row.begin(), row.end()));
        };
        for (const auto* table : {&spacing::MinSep, &spacing::MinSepNorth, &spacing::MinSepSouth}) {
            for (const auto& grid : *table) take(grid);
        }
        for (const auto& grid : spacing::MinSepPRVI) take(grid);
        take(spacing::MinSepTV6Zone);
        take(spacing::MinSepTV6Chan);
        return static_cast<int>(most);
    }();
    return kMax;
}

namespace {

constexpr double kMinKmPerDegLat = 110.56;   // below LatSeries' least 110.56484
constexpr double kLonSeriesSlack = 0.09467;  // |0.09455 cos 3x + 0.00012 cos 5x| bound
constexpr double kBoundSlackKm = 1.0;        // static box
constexpr double kStationSlackKm = 0.01;     // per-station bound

}  // namespace

FastEngine::FastEngine(std::shared_ptr<const MasterIndex> index) : m_index(std::move(index)) {
    m_fm.service = "FM";
    m_tv.service = "TV";
}

float FastEngine::FindMinClearance(const ScanTarget& target, int channel,
                                   const ScanOptions& options) {
    float minimum = kNoStationClearance;
    core::TrappedVoid(kAutoScanModule, ":FindMinClearance:", [&] {
        // Where the reference query would fail, the channel keeps 350 and the
        // TV6 check is never reached.
        if (!m_index || !m_index->FmReadable()) return;
        if (AnyStatus(options) && !m_index->HasStatusColumn()) return;

        Box box;
        const double reach =
            static_cast<double>(kNoStationClearance) + MaxSeparation() + kBoundSlackKm;
        if (!std::isfinite(target.lat) || !std::isfinite(target.lon)) {
            box.everything = true;
        } else {
            const double band = reach / kMinKmPerDegLat;
            box.latLow = target.lat - band;
            box.latHigh = target.lat + band;
            const double m = std::fabs(target.lat) + band;
            if (m < 89.0) {
                const double k =
                    111.41513 * std::cos(m * std::numbers::pi / 180.0) - kLonSeriesSlack;
                if (k > 0) {
                    box.lonBand = reach / k;
                    box.kmPerDegLon = k;
                }
            }
        }

        const spacing::StationRec targetRec = TargetRecord(target, channel);
        const uint8_t mask = FilterMask(options);
        for (int n : QueryChannels(channel, options)) {
            m_fm.relation = spacing::RelationFromChannels(channel, n);
            ScanBucket(m_index->Channel(n), box, mask, targetRec, m_fm, false, minimum);
        }
        if (Tv6CheckApplies(channel, target.stationClass, options) && m_index->Tv6Readable()) {
            ScanBucket(m_index->Tv6(), box, 0, targetRec, m_tv, true, minimum);
        }
    });
    return minimum;
}

void FastEngine::ScanBucket(const MasterIndex::Bucket& bucket, const Box& box, uint8_t mask,
                            const spacing::StationRec& target, spacing::StationRec& scratch,
                            bool tv, float& minimum) const {
    std::size_t first = 0;
    std::size_t last = bucket.stations.size();
    if (!box.everything) {
        const auto& lats = bucket.lats;
        first = static_cast<std::size_t>(std::lower_bound(lats.begin(), lats.end(), box.latLow) -
                                         lats.begin());
        last = static_cast<std::size_t>(std::upper_bound(lats.begin(), lats.end(), box.latHigh) -
                                        lats.begin());
    }
    for (std::size_t i = first; i < last; ++i) {
        const MasterIndex::Station& s = bucket.stations[i];
        if (!tv && (s.filterBits & mask) == 0) continue;
        const spacing::StationRec& r = s.record;
        const double dLon = std::fabs(r.lon - target.lon);
        if (!box.everything && dLon > box.lonBand) continue;
        // Only the fields a station row fills; relation and service are set
        // once per bucket by the caller.
        scratch.lat = r.lat;
        scratch.lon = r.lon;
        scratch.station_channel = r.station_channel;
        scratch.station_class = r.station_class;
        scratch.intl_class = r.intl_class;
        scratch.border_code = r.border_code;
        scratch.zone = r.zone;
        const int16_t required = spacing::LookupMinSep(target, scratch);
        if (!tv && required <= 0) continue;
        const double limit = static_cast<double>(minimum) + required + kStationSlackKm;
        if (limit <= 0) continue;
        const double north = std::fabs(r.lat - target.lat) * kMinKmPerDegLat;
        const double east = dLon * box.kmPerDegLon;
        if (north * north + east * east > limit * limit) continue;
        const double distance = StationDistance(target, scratch);
        if (tv) {
            ApplyTv6Clearance(distance, required, minimum);
        } else {
            ApplyFmClearance(distance, required, minimum);
        }
    }
}

}  // namespace qarvel::studies
