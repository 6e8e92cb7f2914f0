// Cost of one separation lookup, the inner step of building a job display
// and of AutoScan. The records mix the paths a real job takes: domestic
// stations, island stations against low-power targets, foreign stations on
// both sides of 37 degrees and television channel 6 stations.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "spacing/min_sep.h"

namespace {

using qarvel::spacing::StationRec;

// Small deterministic generator so every run measures the same mix.
class Lcg {
public:
    uint32_t Next(uint32_t bound) {
        m_state = m_state * 1664525u + 1013904223u;
        return (m_state >> 8) % bound;
    }

private:
    uint32_t m_state = 12345u;
};

int16_t Pick(Lcg& rng, uint32_t bound) { return static_cast<int16_t>(rng.Next(bound)); }

StationRec MakeOther(Lcg& rng) {
    StationRec other;
    other.relation = Pick(rng, 5);
    switch (rng.Next(10)) {
        case 0:  // foreign, north or south of 37 degrees
        case 1:
            other.border_code = "A";
            other.lat = 25.0 + rng.Next(2400) / 100.0;
            other.intl_class = static_cast<int16_t>(4 + rng.Next(9));
            break;
        case 2:  // television channel 6
            other.service = "TV";
            other.zone = Pick(rng, 2);
            break;
        case 3:  // island station
            other.comm_state = rng.Next(2) == 0 ? "PR" : "VI";
            other.station_class = Pick(rng, 14);
            break;
        default:  // domestic FM or educational FM
            other.service = rng.Next(4) == 0 ? "ED" : "FM";
            other.comm_state = "TX";
            other.station_class = Pick(rng, 14);
            break;
    }
    return other;
}

std::vector<std::pair<StationRec, StationRec>> MakePairs(std::size_t count) {
    // Targets avoid "D", whose foreign lookups are subscript errors that
    // would measure the error sink rather than the lookup.
    static constexpr int16_t kTargetClasses[] = {0, 1, 2, 4, 6, 7, 8, 9, 10, 11, 12};
    Lcg rng;
    std::vector<std::pair<StationRec, StationRec>> pairs;
    pairs.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        StationRec target;
        target.station_class = kTargetClasses[rng.Next(11)];
        target.station_channel = static_cast<int16_t>(200 + rng.Next(101));
        pairs.emplace_back(target, MakeOther(rng));
    }
    return pairs;
}

void BM_LookupMinSep(benchmark::State& state) {
    qarvel::spacing::LoadMinSepTables();
    const auto pairs = MakePairs(4096);
    for (auto _ : state) {
        for (const auto& [target, other] : pairs) {
            benchmark::DoNotOptimize(qarvel::spacing::LookupMinSep(target, other));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(pairs.size()));
}
BENCHMARK(BM_LookupMinSep);

}  // namespace

BENCHMARK_MAIN();
