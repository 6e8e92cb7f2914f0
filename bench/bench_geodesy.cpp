// Costs of the geodesy routines that job building, AutoScan and the map call
// once per station: the 64-bit and 32-bit flat-earth distance, distance with
// bearing, and the destination point (an iteration). The figures are
// absolute; FlatDistance is the reference the others are read against.

#include <array>

#include <benchmark/benchmark.h>

#include "geodesy/geodesy.h"

namespace {

using namespace qarvel::geodesy;

struct Pair {
    double lat1, lon1, lat2, lon2;  // degrees, longitude positive west
};

// Station pairs at spacing-study range in the four quadrants.
constexpr std::array<Pair, 4> kPairs{{{40.0, 75.0, 41.0, 76.0},
                                      {39.95, 75.17, 39.10, 73.90},
                                      {29.76, 95.37, 29.42, 98.49},
                                      {47.61, 122.33, 48.75, 122.48}}};

void BM_FlatDistance(benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
        const Pair& p = kPairs[i++ % kPairs.size()];
        double north = 0.0, east = 0.0;
        benchmark::DoNotOptimize(FlatDistance(p.lat1, p.lon1, p.lat2, p.lon2, north, east));
        benchmark::DoNotOptimize(north);
        benchmark::DoNotOptimize(east);
    }
}
BENCHMARK(BM_FlatDistance);

void BM_FlatDistanceSingle(benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
        const Pair& p = kPairs[i++ % kPairs.size()];
        float lat1 = static_cast<float>(p.lat1), lon1 = static_cast<float>(p.lon1);
        float lat2 = static_cast<float>(p.lat2), lon2 = static_cast<float>(p.lon2);
        float north = 0.0f, east = 0.0f;
        benchmark::DoNotOptimize(FlatDistanceSingle(lat1, lon1, lat2, lon2, north, east));
        benchmark::DoNotOptimize(north);
        benchmark::DoNotOptimize(east);
    }
}
BENCHMARK(BM_FlatDistanceSingle);

void BM_DistBearing(benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
        const Pair& p = kPairs[i++ % kPairs.size()];
        double distance = 0.0, bearing = 0.0;
        DistBearing(p.lat1, p.lon1, p.lat2, p.lon2, distance, bearing);
        benchmark::DoNotOptimize(distance);
        benchmark::DoNotOptimize(bearing);
    }
}
BENCHMARK(BM_DistBearing);

void BM_GetPosn(benchmark::State& state) {
    constexpr std::array<double, 4> kBearings{37.0, 128.0, 215.0, 301.0};  // degrees
    std::size_t i = 0;
    for (auto _ : state) {
        const Pair& p = kPairs[i % kPairs.size()];
        const double bearing = kBearings[i++ % kBearings.size()];
        double lat2 = 0.0, lon2 = 0.0;
        // GetPosn adds its east leg: positive-east longitude in and out.
        GetPosn(p.lat1, -p.lon1, lat2, lon2, 150.0, bearing);
        benchmark::DoNotOptimize(lat2);
        benchmark::DoNotOptimize(lon2);
    }
}
BENCHMARK(BM_GetPosn);

}  // namespace

BENCHMARK_MAIN();
