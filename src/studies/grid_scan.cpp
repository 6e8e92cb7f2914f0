#include "studies/grid_scan.h"

#include <chrono>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>

#include "geodesy/geodesy.h"

namespace qarvel::studies {

ScanGrid MakeScanGrid(double lat1, double lon1, double lat2, double lon2, double stepKm,
                      std::size_t maxPoints) {
    if (!(stepKm > 0) || !std::isfinite(stepKm)) {
        throw std::invalid_argument("the step must be a positive number of km");
    }
    for (double v : {lat1, lon1, lat2, lon2}) {
        if (!std::isfinite(v)) throw std::invalid_argument("the box corners must be numbers");
    }
    ScanGrid grid;
    grid.north = std::max(lat1, lat2);
    grid.west = std::max(lon1, lon2);
    const double south = std::min(lat1, lat2);
    const double east = std::min(lon1, lon2);
    const double middle = (grid.north + south) / 2;
    const double kmLat = geodesy::KmPerDegLat(middle);
    const double kmLon = geodesy::KmPerDegLon(middle);
    if (!(kmLon > 1.0)) throw std::invalid_argument("the box is too near a pole");
    grid.dLat = stepKm / kmLat;
    grid.dLon = stepKm / kmLon;
    // A tiny allowance so that an edge that is a whole number of steps away
    // is not lost to rounding.
    const double rows = std::floor((grid.north - south) / grid.dLat + 1e-9) + 1;
    const double cols = std::floor((grid.west - east) / grid.dLon + 1e-9) + 1;
    if (rows * cols > static_cast<double>(maxPoints)) {
        throw std::invalid_argument(
            "the grid would have " + std::to_string(static_cast<long long>(rows * cols)) +
            " points; at most " + std::to_string(maxPoints) + " are allowed");
    }
    grid.rows = static_cast<int>(rows);
    grid.cols = static_cast<int>(cols);
    return grid;
}

namespace {

GridPointResult Summarise(const ScanResult& scan) {
    GridPointResult point;
    point.openings = scan.openings;
    for (std::size_t i = 0; i < scan.minima.size(); ++i) {
        if (scan.minima[i] >= 0.0f)
            point.openChannels.push_back(kFirstScanChannel + static_cast<int>(i));
    }
    return point;
}

}  // namespace

GridScanResult ScanGridPoints(std::shared_ptr<const MasterIndex> index, const ScanGrid& grid,
                              int16_t stationClass, int16_t intlClass, const ScanOptions& options,
                              unsigned threads, const GridProgress& progress,
                              const std::atomic<bool>* cancel) {
    GridScanResult result;
    const std::size_t total = grid.Size();
    result.points.resize(total);
    if (threads == 0) threads = std::max(1u, std::thread::hardware_concurrency());
    threads =
        static_cast<unsigned>(std::min<std::size_t>(threads, std::max<std::size_t>(total, 1)));

    std::atomic<std::size_t> next{0}, done{0};
    std::atomic<bool> stopped{false};
    std::mutex mutex;
    std::condition_variable finished;
    unsigned running = 0;  // workers started and not yet finished

    auto work = [&] {
        FastEngine engine(index);
        for (std::size_t i; (i = next.fetch_add(1)) < total;) {
            const int row = static_cast<int>(i / static_cast<std::size_t>(grid.cols));
            const int col = static_cast<int>(i % static_cast<std::size_t>(grid.cols));
            const ScanTarget target{grid.Lat(row), grid.Lon(col), stationClass, intlClass};
            const ScanResult scan = ScanChannels(engine, target, options, {}, cancel);
            if (scan.aborted) {
                stopped = true;
                break;
            }
            result.points[i] = Summarise(scan);  // each slot has one writer
            done.fetch_add(1);
        }
        std::lock_guard lock(mutex);
        if (--running == 0) finished.notify_all();
    };
    std::vector<std::thread> pool;
    for (unsigned t = 0; t < threads; ++t) {
        {
            std::lock_guard lock(mutex);
            ++running;
        }
        try {
            pool.emplace_back(work);
        } catch (const std::system_error&) {
            // No more threads: those already started share the work.
            std::lock_guard lock(mutex);
            --running;
            break;
        }
    }
    if (pool.empty()) {
        ++running;
        work();  // no thread at all: scan on this one
    }
    {
        std::unique_lock lock(mutex);
        while (!finished.wait_for(lock, std::chrono::milliseconds(100),
                                  [&] { return running == 0; })) {
            lock.unlock();
            if (progress) progress(done.load(), total);
            lock.lock();
        }
    }
    for (auto& thread : pool) thread.join();
    result.completed = done.load();
    result.cancelled = stopped.load() || result.completed < total;
    if (progress) progress(result.completed, total);
    return result;
}

}  // namespace qarvel::studies
