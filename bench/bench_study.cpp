// The job display's two heavy steps: rebuilding the study table
// (`tempdisplay`) of a 2,000-station job, and the map model (the display list
// of stations, county lines, grid and the rest) at 1:1,000,000. References in
// the same run: reading the FM query alone (what any rebuild must pay), and
// projecting the county lines alone.

#include <benchmark/benchmark.h>

#include <filesystem>

#include "jobview/display_list.h"
#include "jobview/map_stations.h"
#include "jobview/temp_display.h"
#include "jobview/where_clause.h"
#include "study_bench_data.h"

namespace {

using namespace qarvel;

struct StudyFixture {
    std::filesystem::path folder, tdb;
    stationdb::Database db;
    jobview::StudyFilter filter;

    StudyFixture(int fm, bool relatedOnly) {
        folder = bench::BenchFolder(std::string("qarvel_bench_study_") + (relatedOnly ? "related" : "spread"));
        tdb = folder / "job.tdb";
        bench::WriteSyntheticJob(tdb, fm, relatedOnly);
        db = stationdb::Database(tdb, stationdb::OpenMode::ReadWrite);
        jobview::ReadStudyTarget(db, &filter.target);
        filter.tv6 = true;
        filter.statusAD = filter.statusVA = filter.statusDE = true;
        filter.clearanceLimitKm = 1000;
    }
    ~StudyFixture() {
        db.Close();
        std::filesystem::remove_all(folder);
    }
};

// Every one of the 2,000 stations on a related channel: the worst case.
void BM_NewData_AllRelated(benchmark::State& state) {
    StudyFixture f(2000, true);
    for (auto _ : state) benchmark::DoNotOptimize(jobview::NewData(f.db, f.filter));
    stationdb::Statement count = f.db.Prepare("SELECT COUNT(*) FROM tempdisplay");
    count.Step();
    state.counters["rows"] = static_cast<double>(count.GetInt64(0));
}
BENCHMARK(BM_NewData_AllRelated)->Unit(benchmark::kMillisecond);

// 2,000 stations over all 101 channels, a real job's mix (about 1 in 9 related).
void BM_NewData_Spread(benchmark::State& state) {
    StudyFixture f(2000, false);
    for (auto _ : state) benchmark::DoNotOptimize(jobview::NewData(f.db, f.filter));
}
BENCHMARK(BM_NewData_Spread)->Unit(benchmark::kMillisecond);

// Reference: the FM query of the rebuild read to its end, nothing computed
// or written.
void BM_FmQueryOnly_AllRelated(benchmark::State& state) {
    StudyFixture f(2000, true);
    const std::string sql = jobview::BuildFmQuery(f.filter);
    for (auto _ : state) {
        stationdb::Statement rows = f.db.Prepare(sql);
        int n = 0;
        while (rows.Step()) ++n;
        benchmark::DoNotOptimize(n);
    }
}
BENCHMARK(BM_FmQueryOnly_AllRelated)->Unit(benchmark::kMillisecond);

// The map model at 1:1,000,000 on an 800 x 600 picture (96 dpi): stations
// read from the study table (the usual 20 km limit), county lines, grid,
// crosshair, scale bar.
void BM_MapModel_Million(benchmark::State& state) {
    StudyFixture f(2000, false);
    f.filter.clearanceLimitKm = 20;
    jobview::NewData(f.db, f.filter);
    const jobview::MapArrays arrays = bench::SyntheticCountyLines();
    jobview::MapSettings settings;
    settings.scale = 1000000;
    const jobview::MapFrame frame =
        jobview::Rescale(settings.scale, jobview::PixelsToTwips(800, 96), jobview::PixelsToTwips(600, 96));
    std::size_t items = 0;
    for (auto _ : state) {
        jobview::MapScene scene;
        scene.centreLat = static_cast<float>(bench::kTargetLat);
        scene.centreLon = static_cast<float>(bench::kTargetLon);
        scene.arrays = &arrays;
        jobview::ReadMapStations(f.db, f.filter.clearanceLimitKm, "", &scene.stations);
        items = jobview::BuildDisplayList(scene, settings, frame).items.size();
    }
    state.counters["items"] = static_cast<double>(items);
    state.counters["county_rows"] = static_cast<double>(arrays.countyMap.size());
}
BENCHMARK(BM_MapModel_Million)->Unit(benchmark::kMillisecond);

// Reference: the county lines alone.
void BM_CountyLinesOnly_Million(benchmark::State& state) {
    const jobview::MapArrays arrays = bench::SyntheticCountyLines();
    jobview::MapSettings settings;
    settings.scale = 1000000;
    settings.gMapOptLatLon = settings.gMapOptCities = settings.gMapOptMarkers = false;
    settings.gMapOptCrosshair = settings.gMapOptScale = false;
    const jobview::MapFrame frame =
        jobview::Rescale(settings.scale, jobview::PixelsToTwips(800, 96), jobview::PixelsToTwips(600, 96));
    jobview::MapScene scene;
    scene.centreLat = static_cast<float>(bench::kTargetLat);
    scene.centreLon = static_cast<float>(bench::kTargetLon);
    scene.arrays = &arrays;
    for (auto _ : state) benchmark::DoNotOptimize(jobview::BuildDisplayList(scene, settings, frame).items.size());
}
BENCHMARK(BM_CountyLinesOnly_Million)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
