// AutoScan on the national FM list (../shared/data/fm-stations-national.csv,
// imported once per run into a temporary master database): one full scan
// (channels 200..300) with the fast engine and with the reference engine
// (one query per channel), their ratio measured in the same run, the cost
// of reading the index, and grid points per second on all cores.

#include <benchmark/benchmark.h>

#include <unistd.h>
#include <chrono>
#include <filesystem>
#include <memory>
#include <thread>

#include "core/error_trap.h"
#include "importers/import_csv.h"
#include "studies/autoscan.h"
#include "studies/fast_engine.h"
#include "studies/grid_scan.h"
#include "studies/reference_engine.h"

namespace {

namespace fs = std::filesystem;
using namespace qarvel;

// Errors of the lookup (class D against foreign stations) are not the
// benchmark's business; keep them off the terminal.
core::RecordingErrorSink g_quietSink;

// The national master database, made on first use and removed at exit;
// empty path when the shared data is absent.
struct TempMaster {
    fs::path path;
    ~TempMaster() {
        std::error_code ec;
        if (!path.empty()) fs::remove(path, ec);
    }
};

const fs::path& NationalMaster() {
    static const TempMaster master = [] {
        const fs::path csv = fs::path(QARVEL_SHARED_DATA) / "fm-stations-national.csv";
        if (!fs::exists(csv)) return TempMaster{};
        const fs::path fdb = fs::temp_directory_path() /
                             ("qarvel-bench-autoscan-" + std::to_string(::getpid()) + ".fdb");
        importers::ImportOptions options;
        options.eastPositive = true;
        importers::ImportSummary summary;
        if (!importers::ImportCsv(csv, importers::ImportTarget::Unpacked(fdb), options, &summary))
            return TempMaster{};
        return TempMaster{fdb};
    }();
    return master.path;
}

// Sites spread over the conterminous states (latitude, longitude WEST).
const std::vector<studies::ScanTarget>& Sites() {
    static const std::vector<studies::ScanTarget> sites = {
        {40.75, 73.99, 4, -1},  {34.05, 118.24, 7, -1},  {41.88, 87.63, 4, -1},
        {29.76, 95.37, 12, -1}, {39.74, 104.99, 10, -1}, {47.61, 122.33, 9, -1},
        {33.75, 84.39, 8, -1},  {44.98, 93.27, 6, -1},   {35.08, 106.65, 12, -1},
        {42.36, 71.06, 5, -1},  {38.63, 90.20, 4, -1},   {46.87, 96.79, 11, -1}};
    return sites;
}

bool Ready(benchmark::State& state) {
    if (NationalMaster().empty()) {
        state.SkipWithError("fm-stations-national.csv absent: shared data missing");
        return false;
    }
    return true;
}

std::shared_ptr<const studies::MasterIndex> Index() {
    static const auto index = studies::MasterIndex::Load(NationalMaster());
    return index;
}

void BM_AutoScanFast(benchmark::State& state) {
    if (!Ready(state)) return;
    core::ScopedErrorSink quiet(g_quietSink);
    studies::FastEngine engine(Index());
    std::size_t i = 0;
    for (auto _ : state) {
        const auto result = studies::ScanChannels(engine, Sites()[i++ % Sites().size()], {});
        benchmark::DoNotOptimize(result.openings);
    }
    state.counters["stations"] = static_cast<double>(Index()->FmStationCount());
}
BENCHMARK(BM_AutoScanFast)->Unit(benchmark::kMillisecond);

void BM_AutoScanReference(benchmark::State& state) {
    if (!Ready(state)) return;
    core::ScopedErrorSink quiet(g_quietSink);
    auto engine = studies::ReferenceEngine::Open(NationalMaster());
    std::size_t i = 0;
    for (auto _ : state) {
        const auto result = studies::ScanChannels(*engine, Sites()[i++ % Sites().size()], {});
        benchmark::DoNotOptimize(result.openings);
    }
}
BENCHMARK(BM_AutoScanReference)->Unit(benchmark::kMillisecond);

// Each iteration scans one site with both engines (the fast one 50 times for
// a readable time) and reports both figures and their ratio.
void BM_AutoScanFastVsReference(benchmark::State& state) {
    if (!Ready(state)) return;
    core::ScopedErrorSink quiet(g_quietSink);
    auto reference = studies::ReferenceEngine::Open(NationalMaster());
    studies::FastEngine fast(Index());
    using Clock = std::chrono::steady_clock;
    double referenceMs = 0, fastMs = 0;
    std::size_t i = 0;
    for (auto _ : state) {
        const auto& site = Sites()[i++ % Sites().size()];
        const auto t0 = Clock::now();
        benchmark::DoNotOptimize(studies::ScanChannels(*reference, site, {}).openings);
        const auto t1 = Clock::now();
        constexpr int kRepeats = 50;
        for (int k = 0; k < kRepeats; ++k)
            benchmark::DoNotOptimize(studies::ScanChannels(fast, site, {}).openings);
        const auto t2 = Clock::now();
        referenceMs += std::chrono::duration<double, std::milli>(t1 - t0).count();
        fastMs += std::chrono::duration<double, std::milli>(t2 - t1).count() / kRepeats;
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["reference_ms"] = referenceMs / n;
    state.counters["fast_ms"] = fastMs / n;
    state.counters["ratio"] = referenceMs / fastMs;
}
BENCHMARK(BM_AutoScanFastVsReference)->Unit(benchmark::kMillisecond)->Iterations(12);

void BM_MasterIndexLoad(benchmark::State& state) {
    if (!Ready(state)) return;
    for (auto _ : state) benchmark::DoNotOptimize(studies::MasterIndex::Load(NationalMaster()));
}
BENCHMARK(BM_MasterIndexLoad)->Unit(benchmark::kMillisecond);

// A 1 x 1 degree grid at 10 km steps (about 100 points) on every core.
void BM_AutoScanGrid(benchmark::State& state) {
    if (!Ready(state)) return;
    core::ScopedErrorSink quiet(g_quietSink);
    const studies::ScanGrid grid = studies::MakeScanGrid(40.0, 74.0, 41.0, 75.0, 10.0);
    std::size_t points = 0;
    for (auto _ : state) {
        const auto result = studies::ScanGridPoints(Index(), grid, 4, -1, {});
        points += result.completed;
    }
    state.counters["points_per_s"] =
        benchmark::Counter(static_cast<double>(points), benchmark::Counter::kIsRate);
    state.counters["threads"] = static_cast<double>(std::thread::hardware_concurrency());
}
BENCHMARK(BM_AutoScanGrid)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
