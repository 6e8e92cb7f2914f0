// Drawing the job's map headless at 1:1,000,000 with county lines: the whole
// repaint onto an 800 x 600 image (model and painting), against the model
// alone measured in the same run. The usual case is a 2,000-station job over
// all channels with the stations within 20 km of short drawn; the stress case
// draws all 2,000 stations of a job whose every station is related. Built
// only where the renderer is.

#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <filesystem>

#include "jobview/map_stations.h"
#include "jobview/render/map_renderer.h"
#include "jobview/temp_display.h"
#include "study_bench_data.h"

namespace {

using namespace qarvel;

struct MapFixture {
    std::filesystem::path folder = bench::BenchFolder("qarvel_bench_map");
    jobview::MapArrays arrays = bench::SyntheticCountyLines();
    jobview::MapScene scene;
    jobview::MapSettings settings;

    MapFixture(bool text, bool everyStation) {
        const auto tdb = folder / "job.tdb";
        bench::WriteSyntheticJob(tdb, 2000, everyStation);
        stationdb::Database db(tdb, stationdb::OpenMode::ReadWrite);
        jobview::StudyFilter filter;
        jobview::ReadStudyTarget(db, &filter.target);
        filter.clearanceLimitKm = everyStation ? 1000 : 20;
        jobview::NewData(db, filter);
        jobview::ReadMapStations(db, filter.clearanceLimitKm, "", &scene.stations);
        scene.centreLat = static_cast<float>(bench::kTargetLat);
        scene.centreLon = static_cast<float>(bench::kTargetLon);
        scene.arrays = &arrays;
        settings.scale = 1000000;
        settings.drawText = text;
    }
    ~MapFixture() { std::filesystem::remove_all(folder); }
};

void Draw(benchmark::State& state, bool text, bool everyStation) {
    MapFixture f(text, everyStation);
    QImage image(800, 600, QImage::Format_RGB32);
    const jobview::MapRenderer renderer;
    for (auto _ : state) {
        QPainter painter(&image);
        renderer.Draw(painter, QRectF(0, 0, 800, 600), 96, f.scene, f.settings);
    }
    state.counters["stations"] = static_cast<double>(f.scene.stations.size());
}

void BM_DrawMap_Million(benchmark::State& state) { Draw(state, false, false); }
void BM_DrawMap_Million_WithText(benchmark::State& state) { Draw(state, true, false); }
void BM_DrawMap_Million_AllStations(benchmark::State& state) { Draw(state, true, true); }
BENCHMARK(BM_DrawMap_Million)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DrawMap_Million_WithText)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DrawMap_Million_AllStations)->Unit(benchmark::kMillisecond);

// Reference: the display list alone, no painting.
void BM_ModelOnly_Million(benchmark::State& state) {
    MapFixture f(false, false);
    const jobview::MapFrame frame =
        jobview::Rescale(1000000, jobview::PixelsToTwips(800, 96), jobview::PixelsToTwips(600, 96));
    for (auto _ : state) benchmark::DoNotOptimize(jobview::BuildDisplayList(f.scene, f.settings, frame).items.size());
}
BENCHMARK(BM_ModelOnly_Million)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    int qtArgc = 1;
    char name[] = "bench_map_render";
    char* qtArgv[] = {name, nullptr};
    QGuiApplication app(qtArgc, qtArgv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
