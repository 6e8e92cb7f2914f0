// Building a 300 km job from a national master database: the box query
// pre-selects the rows to measure (BuildJob/Box) against the reference that
// reads and measures every row of each station table (BuildJob/FullScan).
// Both include creating the job database, the owners and the cities.
//
// The master is imported once from ../shared/data/fm-stations-national.csv
// (about 11,100 FM stations) into a temporary unpacked database.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>
#include <system_error>

#include <unistd.h>

#include "stationdb/database.h"
#include "importers/import_common.h"
#include "importers/import_csv.h"
#include "jobs/job_build.h"
#include "stationdb/schema.h"

namespace {

namespace fs = std::filesystem;
using namespace qarvel::stationdb;
using namespace qarvel::importers;
using namespace qarvel::jobs;

const fs::path kCsv = fs::path(QARVEL_SHARED_DATA) / "fm-stations-national.csv";

// The temporary folder holding the imported master; removed at exit.
struct BenchFolder {
    fs::path path = fs::temp_directory_path() / ("qarvel_bench_job_build_" + std::to_string(::getpid()));
    fs::path master = path / "national.fdb";
    bool ready = false;

    BenchFolder() {
        std::error_code ec;
        if (!fs::is_regular_file(kCsv, ec)) return;
        fs::create_directories(path);
        ImportOptions options;
        options.eastPositive = true;
        ImportSummary summary;
        ready = ImportCsv(kCsv, ImportTarget::Unpacked(master), options, &summary);
    }
    ~BenchFolder() {
        std::error_code ec;
        fs::remove_all(path, ec);
    }
};

BenchFolder& Folder() {
    static BenchFolder folder;
    return folder;
}

void BuildJob(benchmark::State& state, bool boxPreselect) {
    BenchFolder& folder = Folder();
    if (!folder.ready) {
        state.SkipWithError(("no national master: " + kCsv.string() + " is absent or did not import").c_str());
        return;
    }
    NewJobInputs in;
    in.scanRange = 300;
    in.lat = 39.0997;  // Kansas City, in the middle of the country
    in.lon = 94.5786;  // WEST
    in.channel = "250";
    in.stationClass = "C1";
    in.source = "bench";
    in.masterPath = folder.master;
    in.jobPath = folder.path / "job.tdb";
    const JobBuildControl control{{}, nullptr, boxPreselect};
    std::error_code ec;
    for (auto _ : state) {
        fs::remove(in.jobPath, ec);
        if (!MakeNewJob(in, control)) {
            state.SkipWithError("MakeNewJob failed");
            return;
        }
    }
    {
        const Database job(in.jobPath, OpenMode::ReadOnly);
        Statement count = job.Prepare("SELECT COUNT(*) FROM fm_data");
        count.Step();
        state.counters["fm_copied"] = static_cast<double>(count.GetInt64(0));
    }
    fs::remove(in.jobPath, ec);
}

// The share of either build spent creating the empty job database (its
// commit and rename wait for the disk).
void BM_CreateJobDatabase(benchmark::State& state) {
    const fs::path job = Folder().path / "empty.tdb";
    fs::create_directories(Folder().path);
    std::error_code ec;
    for (auto _ : state) {
        fs::remove(job, ec);
        if (!CreateJobDatabase(job)) {
            state.SkipWithError("CreateJobDatabase failed");
            return;
        }
    }
    fs::remove(job, ec);
}

void BM_BuildJob_Box(benchmark::State& state) { BuildJob(state, true); }
void BM_BuildJob_FullScan(benchmark::State& state) { BuildJob(state, false); }

BENCHMARK(BM_CreateJobDatabase)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BuildJob_Box)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BuildJob_FullScan)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
