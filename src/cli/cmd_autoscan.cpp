// qarvel-cli autoscan and autoscan-grid: open FM channels at a location, or
// the number of open channels over a grid of locations as CSV and heat map.

#include "cli/cmd_autoscan.h"

#include "cli/coordinates.h"
#include "cli/master_file.h"
#include "core/error_trap.h"
#include "core/interrupt.h"
#include "spacing/class_codes.h"
#include "container/scratch_folder.h"
#include "stationdb/database.h"
#include "stationdb/layout_check.h"
#include "stationdb/master_package.h"
#include "stationdb/schema.h"
#include "studies/autoscan.h"
#include "studies/fast_engine.h"
#include "studies/grid_scan.h"
#include "studies/heatmap.h"
#include "studies/reference_engine.h"
#if __has_include("mapdata/boundary_file.h")
#include "mapdata/boundary_file.h"
#define QARVEL_HAVE_BOUNDARY_FILE 1
#endif

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

#include <unistd.h>
#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>

namespace qarvel::cli {
namespace {

namespace fs = std::filesystem;
using studies::ScanOptions;

struct CommonArgs {
    std::string db, cls, intlClass;
    std::string relations = "primary,1st,2nd,3rd,if";
    std::string statuses = "LI,CP,AP";
    bool tv6 = true;
};

struct ScanArgs : CommonArgs {
    std::string lat, lon, engine = "fast", format = "text";
};

struct GridArgs : CommonArgs {
    std::vector<std::string> box;
    std::string step, out, maps;
    unsigned threads = 0;
};

std::vector<std::string> SplitList(const std::string& text) {
    std::vector<std::string> items;
    std::stringstream in(text);
    for (std::string item; std::getline(in, item, ',');) {
        item.erase(0, item.find_first_not_of(' '));
        item.erase(item.find_last_not_of(' ') + 1);
        std::transform(item.begin(), item.end(), item.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (!item.empty() && item != "none") items.push_back(item);
    }
    return items;
}

// The relation and status flags from the comma lists ("none" or "" for none).
ScanOptions ParseOptions(const CommonArgs& a) {
    ScanOptions o;
    const std::pair<const char*, bool ScanOptions::*> relations[] = {
        {"primary", &ScanOptions::coChannel},
        {"1st", &ScanOptions::firstAdjacent},
        {"2nd", &ScanOptions::secondAdjacent},
        {"3rd", &ScanOptions::thirdAdjacent},
        {"if", &ScanOptions::intermediateFrequency}};
    const std::pair<const char*, bool ScanOptions::*> statuses[] = {
        {"li", &ScanOptions::statusLI}, {"cp", &ScanOptions::statusCP},
        {"ap", &ScanOptions::statusAP}, {"ad", &ScanOptions::statusAD},
        {"va", &ScanOptions::statusVA}, {"de", &ScanOptions::statusDE}};
    auto apply = [&](const auto& table, const std::string& list, const char* argument,
                     const char* allowed) {
        for (const auto& entry : table) o.*entry.second = false;
        for (const std::string& item : SplitList(list)) {
            auto hit = std::find_if(std::begin(table), std::end(table),
                                    [&](const auto& entry) { return item == entry.first; });
            if (hit == std::end(table)) {
                throw UsageError(argument, "unknown entry '" + item + "'; allowed: " + allowed);
            }
            o.*hit->second = true;
        }
    };
    apply(relations, a.relations, "--relations", "primary, 1st, 2nd, 3rd, if, none");
    apply(statuses, a.statuses, "--status", "LI, CP, AP, AD, VA, DE, none");
    o.tv6 = a.tv6;
    return o;
}

int16_t ParseClass(const std::string& text, const std::string& argument, bool optional) {
    if (optional && text.empty()) return -1;
    const int16_t index = spacing::ClassIndex(text);
    if (index < 0) {
        std::vector<std::string> names(spacing::ClassName.begin() + 1, spacing::ClassName.end());
        throw UsageError(
            argument, fmt::format("unknown class '{}'; allowed: {}", text, fmt::join(names, ", ")));
    }
    return index;
}

// Collects trapped errors and prints each distinct one once, with its
// count: a class without international class meets the same lookup error at
// every foreign station.
class SummarisingSink : public core::ErrorSink {
  public:
    void Report(const core::ErrorReport& report) override {
        std::lock_guard lock(m_mutex);
        if (m_counts[report.Text()]++ == 0) m_order.push_back(report.Text());
    }
    ~SummarisingSink() override {
        for (const std::string& text : m_order) {
            const int n = m_counts[text];
            std::cerr << "qarvel-cli: " << text << (n > 1 ? fmt::format(" ({} times)", n) : "")
                      << "\n";
        }
    }

  private:
    std::mutex m_mutex;
    std::map<std::string, int> m_counts;
    std::vector<std::string> m_order;
};

void PrintScan(const studies::ScanResult& r, const std::string& format) {
    if (format == "json") {
        nlohmann::json channels = nlohmann::json::array();
        for (const std::string& line : r.lines) {
            channels.push_back({{"channel", std::stoi(line.substr(0, 3))},
                                {"clearance", std::stod(line.substr(4))}});
        }
        std::cout << nlohmann::json{{"channels", channels},
                                    {"openings", r.openings},
                                    {"status", r.status}}
                         .dump()
                  << "\n";
    } else if (format == "csv") {
        std::cout << "channel,clearance\n";
        for (const std::string& line : r.lines)
            std::cout << line.substr(0, 3) << "," << line.substr(4) << "\n";
    } else {
        for (const std::string& line : r.lines) std::cout << line << "\n";
        std::cout << r.status << "\n";
    }
}

int RunScan(const ScanArgs& a) {
    const double lat = ParseCoordinate(a.lat, Axis::Latitude, "--lat");
    const double lon = ParseCoordinate(a.lon, Axis::Longitude, "--lon");
    const studies::ScanTarget target{lat, lon, ParseClass(a.cls, "--class", false),
                                     ParseClass(a.intlClass, "--intl-class", true)};
    const ScanOptions options = ParseOptions(a);
    MasterFile master(a.db);
    SummarisingSink sink;
    core::ScopedErrorSink scoped(sink);
    std::unique_ptr<studies::ClearanceEngine> engine;
    if (a.engine == "reference") {
        engine = studies::ReferenceEngine::Open(master.Fdb());
    } else if (auto index = studies::MasterIndex::Load(master.Fdb())) {
        engine = std::make_unique<studies::FastEngine>(std::move(index));
    }
    if (!engine) return kExitFailed;
    PrintScan(studies::ScanChannels(*engine, target, options), a.format);
    return kExitOk;
}

std::vector<studies::MapLine> StateLines(const std::string& mapsDir) {
    std::vector<studies::MapLine> lines;
    if (mapsDir.empty()) return lines;
#ifdef QARVEL_HAVE_BOUNDARY_FILE
    const fs::path file = fs::path(mapsDir) / mapdata::kStateMapFile;
    std::error_code ec;
    if (!fs::is_regular_file(file, ec)) throw UsageError("--maps", "no file " + file.string());
    std::vector<mapdata::BoundaryLine> boundary;
    if (!mapdata::ReadBoundaryFile(file, &boundary))
        throw UsageError("--maps", "unreadable " + file.string());
    for (const auto& b : boundary) {
        studies::MapLine& line = lines.emplace_back();
        for (const auto& p : b.points) line.emplace_back(p.lat, p.lon);
    }
#else
    std::cerr << "qarvel-cli: state lines not drawn: this build has no boundary-file reader\n";
#endif
    return lines;
}

// Writes text to path under a temporary name beside it, renamed into place.
void WriteTextFile(const fs::path& path, const std::string& text) {
    const fs::path temp = stationdb::TempPathBeside(path);
    std::ofstream out(temp, std::ios::binary | std::ios::trunc);
    out << text;
    out.close();
    std::error_code ec;
    if (!out || (fs::rename(temp, path, ec), ec)) {
        fs::remove(temp, ec);
        throw std::runtime_error("cannot write " + path.string());
    }
}

std::string GridCsv(const studies::ScanGrid& grid, const studies::GridScanResult& r) {
    std::string csv = "lat,lon,openings,open_channels\n";
    for (int row = 0; row < grid.rows; ++row) {
        for (int col = 0; col < grid.cols; ++col) {
            const auto& p = r.points[static_cast<std::size_t>(row) * grid.cols + col];
            csv += fmt::format("{:.6f},{:.6f},{},{}\n", grid.Lat(row), grid.Lon(col), p.openings,
                               fmt::join(p.openChannels, " "));
        }
    }
    return csv;
}

int RunGrid(const GridArgs& a) {
    if (a.box.size() != 4) throw UsageError("--box", "expected LAT1 LON1 LAT2 LON2");
    const double lat1 = ParseCoordinate(a.box[0], Axis::Latitude, "--box");
    const double lon1 = ParseCoordinate(a.box[1], Axis::Longitude, "--box");
    const double lat2 = ParseCoordinate(a.box[2], Axis::Latitude, "--box");
    const double lon2 = ParseCoordinate(a.box[3], Axis::Longitude, "--box");
    const double step = ParseNumber(a.step, "--step");
    studies::ScanGrid grid;
    try {
        grid = studies::MakeScanGrid(lat1, lon1, lat2, lon2, step);
    } catch (const std::invalid_argument& e) {
        throw UsageError("--step", e.what());
    }
    if (a.out.empty()) throw UsageError("--out", "a file name is needed");
    const int16_t cls = ParseClass(a.cls, "--class", false);
    const int16_t intl = ParseClass(a.intlClass, "--intl-class", true);
    const ScanOptions options = ParseOptions(a);
    const std::vector<studies::MapLine> lines = StateLines(a.maps);
    MasterFile master(a.db);
    SummarisingSink sink;
    core::ScopedErrorSink scoped(sink);
    auto index = studies::MasterIndex::Load(master.Fdb());
    if (!index) return kExitFailed;

    // A progress line on a terminal, redrawn when the percentage moves.
    const bool terminal = ::isatty(STDERR_FILENO) != 0;
    std::size_t shown = 101;
    const auto result = studies::ScanGridPoints(
        index, grid, cls, intl, options, a.threads,
        [&](std::size_t done, std::size_t total) {
            const std::size_t percent = done * 100 / total;
            if (!terminal || percent == shown) return;
            shown = percent;
            std::cerr << fmt::format("\rAutoScan grid: {}/{} points ({}%)", done, total, percent)
                      << std::flush;
        },
        core::InterruptFlag());
    if (terminal) std::cerr << "\n";
    if (result.cancelled) {
        std::cerr << "qarvel-cli: AutoScan grid cancelled; no files written\n";
        return kExitInterrupted;
    }
    std::vector<int> openings;
    for (const auto& p : result.points) openings.push_back(p.openings);
    const studies::RgbImage image =
        studies::RenderHeatMap(grid, openings, studies::HeatMapCellSize(grid), lines);
    WriteTextFile(a.out + ".csv", GridCsv(grid, result));
    std::string error;
    if (!studies::WritePng(a.out + ".png", image, &error)) throw std::runtime_error(error);
    std::cout << fmt::format("{} points ({} x {}), {}.csv and {}.png written\n", grid.Size(),
                             grid.rows, grid.cols, a.out, a.out);
    return kExitOk;
}

void AddCommonOptions(CLI::App* sub, CommonArgs& a) {
    sub->add_option("--db", a.db, "master database (.fmd, or an unpacked .fdb)")->required();
    sub->add_option("--class", a.cls, "target's station class (A, B, C1, L1, ...)")->required();
    sub->add_option("--intl-class", a.intlClass, "target's international class (default: none)");
    sub->add_option(
        "--relations", a.relations,
        "relations scanned, comma-separated: primary,1st,2nd,3rd,if (default all; none for none)");
    sub->add_option(
        "--status", a.statuses,
        "statuses counted, comma-separated: LI,CP,AP,AD,VA,DE (default LI,CP,AP; none for none)");
    sub->add_flag("--tv6,!--no-tv6", a.tv6, "count TV channel 6 stations (default on)");
}

}  // namespace

void RegisterAutoScanCommands(CommandSet& commands) {
    auto scan = std::make_shared<ScanArgs>();
    CLI::App* sub =
        commands.Add("autoscan", "Open FM channels (200 to 300) at a location for a station class",
                     [scan] { return RunScan(*scan); });
    AddCommonOptions(sub, *scan);
    sub->add_option("--lat", scan->lat, "latitude (40.75, 40:45:00 or 40.75N)")->required();
    sub->add_option("--lon", scan->lon,
                    "longitude (a bare number is west: 73.98, 73:58:48W, 2.35E)")
        ->required();
    sub->add_option("--engine", scan->engine, "fast (default) or reference (one query per channel)")
        ->check(CLI::IsMember({"fast", "reference"}));
    sub->add_option("--format", scan->format, "text (default), csv or json")
        ->check(CLI::IsMember({"text", "csv", "json"}));

    auto grid = std::make_shared<GridArgs>();
    sub = commands.Add("autoscan-grid",
                       "AutoScan at every point of a grid: NAME.csv and heat map NAME.png",
                       [grid] { return RunGrid(*grid); });
    AddCommonOptions(sub, *grid);
    sub->add_option("--box", grid->box, "two opposite corners: LAT1 LON1 LAT2 LON2")
        ->required()
        ->expected(4)
        ->allow_extra_args(false);
    sub->add_option("--step", grid->step, "distance between grid points, km")->required();
    sub->add_option("--out", grid->out, "output name: NAME.csv and NAME.png are written")
        ->required();
    sub->add_option("--maps", grid->maps,
                    "folder holding stmapH.dat: state lines over the heat map");
    sub->add_option("--threads", grid->threads, "worker threads (default: every core)");
}

}  // namespace qarvel::cli
