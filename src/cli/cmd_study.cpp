// qarvel-cli job show / job map: the job display's grid and map from the
// command line. The job is unpacked into a scratch folder, its study table
// rebuilt there for the filter given, and nothing is written back.

#include "cli/cmd_study.h"

#include "cli/coordinates.h"
#include "cli/table_output.h"
#include "core/csv_text.h"
#include "core/error_trap.h"
#include "jobview/grid_query.h"
#include "jobview/map_arrays.h"
#include "jobview/map_stations.h"
#include "jobview/temp_display.h"
#include "spacing/class_codes.h"
#include "container/scratch_folder.h"
#include "container/container.h"
#include "stationdb/database.h"
#include "jobs/job_file.h"

#ifdef QARVEL_HAVE_RENDER
#include <QGuiApplication>

#include "jobview/render/map_export.h"
#endif

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>

namespace qarvel::cli {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

struct StudyArgs {
    std::string file, clearance, relations, status, channel, cls, sort, format = "text";
    bool tv6 = false, am = false;
};

struct MapArgs {
    std::string out, scale, color = "clearance", size = "800x600";
    bool fill = false;
};

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// The items of a comma-separated list, blanks trimmed, lower-cased; "none"
// (or nothing) is the empty list.
std::vector<std::string> ListItems(const std::string& text) {
    std::vector<std::string> items;
    std::stringstream in(text);
    for (std::string item; std::getline(in, item, ',');) {
        item.erase(0, item.find_first_not_of(' '));
        item.erase(item.find_last_not_of(' ') + 1);
        if (!item.empty()) items.push_back(Lower(item));
    }
    if (items.size() == 1 && items[0] == "none") items.clear();
    return items;
}

void ApplyRelations(const std::string& text, jobview::StudyFilter& f) {
    f.primary = f.firstAdjacent = f.secondAdjacent = f.thirdAdjacent = f.intermediateFrequency = false;
    for (const std::string& item : ListItems(text)) {
        if (item == "primary") f.primary = true;
        else if (item == "1st") f.firstAdjacent = true;
        else if (item == "2nd") f.secondAdjacent = true;
        else if (item == "3rd") f.thirdAdjacent = true;
        else if (item == "if") f.intermediateFrequency = true;
        else throw UsageError("--relations", "unknown relation '" + item + "' (primary, 1st, 2nd, 3rd, if)");
    }
}

void ApplyStatuses(const std::string& text, jobview::StudyFilter& f) {
    f.statusLI = f.statusCP = f.statusAP = f.statusAD = f.statusVA = f.statusDE = false;
    for (const std::string& item : ListItems(text)) {
        if (item == "li") f.statusLI = true;
        else if (item == "cp") f.statusCP = true;
        else if (item == "ap") f.statusAP = true;
        else if (item == "ad") f.statusAD = true;
        else if (item == "va") f.statusVA = true;
        else if (item == "de") f.statusDE = true;
        else throw UsageError("--status", "unknown status '" + item + "' (LI, CP, AP, AD, VA, DE)");
    }
}

// The target editor's changes from --channel and --class, checked here so
// that bad values give exit status 2.
jobview::TargetChange ParseTargetChange(const StudyArgs& a) {
    jobview::TargetChange change;
    if (!a.channel.empty()) {
        const double channel = ParseNumber(a.channel, "--channel");
        if (channel != std::floor(channel) || channel < 200 || channel > 300) {
            throw UsageError("--channel", "Invalid channel (200 to 300)");
        }
        change.channel = static_cast<int>(channel);
    }
    if (!a.cls.empty()) {
        if (spacing::ClassIndex(a.cls) < 0) throw UsageError("--class", "unknown class '" + a.cls + "'");
        change.stationClass = a.cls;
    }
    return change;
}

std::string SortList(const std::string& caption) {
    if (caption.empty()) return {};
    core::RecordingErrorSink quiet;  // the usage error below says it once
    core::ScopedErrorSink scope(quiet);
    const std::string column = jobview::SortGrid(caption);
    if (column.empty()) throw UsageError("--sort", "no grid column is captioned '" + caption + "'");
    return column;
}

// The job opened in a scratch folder with its study table rebuilt for the
// filter of the arguments (FirstLoad, ChangeStationData, NewData).
class OpenStudy {
public:
    explicit OpenStudy(const StudyArgs& a) : m_job(m_scratch.Path() / "job") {
        std::error_code ec;
        if (!fs::is_regular_file(a.file, ec)) throw UsageError("JOB", "no such file '" + a.file + "'");
        if (!a.clearance.empty()) m_filter.clearanceLimitKm = ParseNumber(a.clearance, "--clearance");
        if (!a.relations.empty()) ApplyRelations(a.relations, m_filter);
        if (!a.status.empty()) ApplyStatuses(a.status, m_filter);
        m_filter.tv6 = a.tv6;
        m_filter.showAm = a.am;
        m_sortList = SortList(a.sort);
        const jobview::TargetChange change = ParseTargetChange(a);
        if (!m_job.Open(a.file)) throw UsageError(a.file, "not a job file");
        m_db = stationdb::Database(m_job.Paths().tdb, stationdb::OpenMode::ReadWrite);
        if (!jobview::ReadStudyTarget(m_db, &m_filter.target)) throw UsageError(a.file, "the job has no target");
        if (!jobview::ChangeStationData(change, &m_filter.target)) throw UsageError("--channel", "not applied");
        m_ok = jobview::NewData(m_db, m_filter);
    }
    ~OpenStudy() {
        m_db.Close();
        m_job.Discard();
    }
    bool Ok() const { return m_ok; }
    stationdb::Database& Db() { return m_db; }
    const jobview::StudyFilter& Filter() const { return m_filter; }
    const std::string& Sort() const { return m_sortList; }
    const jobs::JobPaths& Paths() const { return m_job.Paths(); }
    const fs::path& Scratch() const { return m_scratch.Path(); }

private:
    container::ScratchFolder m_scratch{"qarvel-study-"};
    jobs::JobFile m_job;
    stationdb::Database m_db;
    jobview::StudyFilter m_filter;
    std::string m_sortList;
    bool m_ok = false;
};

int RunShow(const StudyArgs& a) {
    OpenStudy study(a);
    if (!study.Ok()) return kExitFailed;
    jobview::GridTable table;
    if (!jobview::ReadGrid(study.Db(), stationdb::JobGridDefaults(), study.Filter(), study.Sort(), &table)) {
        return kExitFailed;
    }
    PrintTable(table, a.format);
    return kExitOk;
}

void AddFilterOptions(CLI::App* sub, StudyArgs& a) {
    sub->add_option("JOB", a.file, "Job file (.fmj)")->required();
    sub->add_option("--clearance", a.clearance, "Clearance limit, km (default 20)");
    sub->add_option("--relations", a.relations, "Relations studied: primary,1st,2nd,3rd,if (default all)");
    sub->add_option("--status", a.status, "Statuses studied: LI,CP,AP,AD,VA,DE (default LI,CP,AP)");
    sub->add_flag("--tv6", a.tv6, "Add the television channel 6 stations");
    sub->add_flag("--am", a.am, "Show the AM stations");
    sub->add_option("--channel", a.channel, "Study on this FM channel instead of the job's, 200 to 300");
    sub->add_option("--class", a.cls, "Study for this class instead of the job's");
    sub->add_option("--sort", a.sort, "Sort by the grid column of this caption (Distance, Callsign...)");
}

#ifdef QARVEL_HAVE_RENDER

QSize ParseSize(const std::string& text) {
    int w = 0, h = 0;
    char x = 0, rest = 0;
    std::istringstream in(text);
    if (!(in >> w >> x >> h) || (x != 'x' && x != 'X') || (in >> rest) || w < 16 || h < 16 || w > 10000 || h > 10000) {
        throw UsageError("--size", "'" + text + "' is not WIDTHxHEIGHT in pixels, 16 to 10000 each");
    }
    return {w, h};
}

std::int32_t ParseScale(const std::string& text) {
    if (text.empty()) return 0;
    const double n = ParseNumber(text, "--scale");
    if (n != std::floor(n) || n < 0 || n > 100000000) {
        throw UsageError("--scale", "'" + text + "' is not a scale denominator (1000000 for 1:1,000,000)");
    }
    return static_cast<std::int32_t>(n);
}

// Qt keeps a private runtime folder; where the session names none it would
// make one in the temporary folder and leave it there. The study's scratch
// folder holds it instead and takes it away with the rest.
void SetRuntimeFolder(const fs::path& scratch) {
    if (!qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) return;
    const fs::path runtime = scratch / "runtime";
    fs::create_directory(runtime);
    fs::permissions(runtime, fs::perms::owner_all, fs::perm_options::replace);
    qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(runtime.string()));
}

// The headless drawing needs a GUI application: the "offscreen" platform
// unless the caller chose one.
int RunMap(const StudyArgs& a, const MapArgs& m) {
    const QSize size = ParseSize(m.size);
    const std::string ext = Lower(fs::path(m.out).extension().string());
    if (ext != ".png" && ext != ".pdf") throw UsageError("--out", "the map is written as .png or .pdf");
    std::error_code ec;
    const fs::path folder = fs::path(m.out).parent_path();
    if (!folder.empty() && !fs::is_directory(folder, ec)) throw UsageError("--out", "no such folder '" + folder.string() + "'");
    jobview::MapSettings settings;
    settings.scale = ParseScale(m.scale);
    settings.fillCircles = m.fill;
    settings.coloring = m.color == "channel" ? jobview::StationColoring::Channel : jobview::StationColoring::Clearance;
    settings.showAm = a.am;
    settings.printer = ext == ".pdf";

    OpenStudy study(a);
    if (!study.Ok()) return kExitFailed;
    jobview::MapArrays arrays;
    jobview::MapScene scene;
    if (!jobview::LoadMapArray(study.Paths().mst, study.Paths().mco, study.Paths().tdb, &arrays) ||
        !jobview::ReadMapStations(study.Db(), study.Filter().clearanceLimitKm, study.Sort(), &scene.stations)) {
        return kExitFailed;
    }
    scene.centreLat = static_cast<float>(study.Filter().target.lat);
    scene.centreLon = static_cast<float>(study.Filter().target.lon);
    scene.arrays = &arrays;

    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    SetRuntimeFolder(study.Scratch());
    int argc = 1;
    char name[] = "qarvel-cli";
    char* argv[] = {name, nullptr};
    const QGuiApplication app(argc, argv);
    jobview::MapImageOptions options;
    options.widthPx = size.width();
    options.heightPx = size.height();
    if (!jobview::SaveMapImage(m.out, scene, settings, options)) return kExitFailed;
    std::cout << fmt::format("{}: 1:{}, {} stations, {}\n", m.out,
                             jobview::FormatScale(jobview::EffectiveScale(settings.scale)), scene.stations.size(),
                             jobview::RangeText(study.Filter().clearanceLimitKm, settings.gMapOptReduceRadii));
    return kExitOk;
}

#endif

}  // namespace

void RegisterStudyCommands(CommandSet& commands) {
    CLI::App* group = commands.App().get_subcommand("job");

    auto show = std::make_shared<StudyArgs>();
    CLI::App* sub = commands.Add(group, "show", "The job grid: stations, separations and clearances",
                                 [show] { return RunShow(*show); });
    AddFilterOptions(sub, *show);
    sub->add_option("--format", show->format, "text, csv or json")->check(CLI::IsMember({"text", "csv", "json"}));

#ifdef QARVEL_HAVE_RENDER
    auto study = std::make_shared<StudyArgs>();
    auto map = std::make_shared<MapArgs>();
    sub = commands.Add(group, "map", "Draw the job's map into a PNG or PDF file",
                       [study, map] { return RunMap(*study, *map); });
    AddFilterOptions(sub, *study);
    sub->add_option("--out", map->out, "Picture to write: .png, or .pdf (printed colours)")->required();
    sub->add_option("--scale", map->scale, "Scale denominator N of 1:N (default 1000000)");
    sub->add_flag("--fill", map->fill, "Filled circles, boundaries drawn over them");
    sub->add_option("--color", map->color, "Colour stations by clearance or by channel relation")
        ->check(CLI::IsMember({"clearance", "channel"}));
    sub->add_option("--size", map->size, "Picture size in pixels at 96 dpi (default 800x600)");
#endif
}

}  // namespace qarvel::cli
