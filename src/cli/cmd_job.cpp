// qarvel-cli job new / job info: building a job round a target from a packed
// master database, and showing what a job file holds.

#include "cli/cmd_job.h"

#include "cli/coordinates.h"
#include "core/interrupt.h"
#include "core/prompt.h"
#include "spacing/class_codes.h"
#include "container/scratch_folder.h"
#include "container/container.h"
#include "stationdb/database.h"
#include "jobs/job_build.h"
#include "mapdata/boundary_file.h"
#include "jobs/job_file.h"
#include "stationdb/master_package.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <fstream>
#include <iterator>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>

namespace qarvel::cli {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

struct NewArgs {
    std::string db, local, maps, lat, lon, channel, cls, intlClass, range, comments, out;
    bool force = false;
};

void RequireFile(const std::string& argument, const std::string& value) {
    std::error_code ec;
    if (!fs::is_regular_file(value, ec)) throw UsageError(argument, "no such file '" + value + "'");
}

std::int16_t ParseRange(const std::string& text) {
    const double km = ParseNumber(text, "--range");
    if (km != std::floor(km) || km < 1 || km > 32767) {
        throw UsageError("--range", "'" + text + "' is not a whole number of km from 1 to 32767");
    }
    return static_cast<std::int16_t>(km);
}

void CheckClass(const std::string& text, const std::string& argument, bool optional) {
    if (optional && text.empty()) return;
    if (spacing::ClassIndex(text) < 0) throw UsageError(argument, "unknown class '" + text + "'");
}

// Boundary files that will not read are refused before the build, rather
// than giving a job without state or county lines.
void CheckBoundaryFiles(const fs::path& maps) {
    for (std::string_view name : {mapdata::kStateMapFile, mapdata::kCountyMapFile}) {
        const fs::path file = maps / name;
        std::error_code ec;
        if (!fs::exists(file, ec)) continue;  // a missing layer is simply not drawn
        std::ifstream in(file, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(in), {}};
        try {
            mapdata::DecodeBoundaryFile(bytes);
        } catch (const mapdata::BoundaryFileError& e) {
            throw DataError(file.string(), std::string("not a boundary file: ") + e.what());
        }
    }
}

// The inputs of the build, checked as MakeNewJob would check them, so that
// bad arguments give exit status 2 with the system's own words.
jobs::NewJobInputs ParseNewJob(const NewArgs& a) {
    RequireFile("--db", a.db);
    if (!a.local.empty()) RequireFile("--local", a.local);
    std::error_code ec;
    if (!a.maps.empty() && !fs::is_directory(a.maps, ec)) throw UsageError("--maps", "no such folder '" + a.maps + "'");
    const fs::path outFolder = fs::path(a.out).parent_path();
    if (!outFolder.empty() && !fs::is_directory(outFolder, ec)) {
        throw UsageError("--out", "no such folder '" + outFolder.string() + "'");
    }
    if (!a.force && fs::exists(jobs::JobWorkingNames(a.out, {}).jobFile, ec)) {
        throw UsageError("--out", "'" + a.out + "' exists; --force replaces it");
    }
    jobs::NewJobInputs in;
    in.lat = ParseCoordinate(a.lat, Axis::Latitude, "--lat");
    in.lon = ParseCoordinate(a.lon, Axis::Longitude, "--lon");
    if (!jobs::ValidJobLocation(in.lat, in.lon)) {
        throw UsageError("--lat", "Invalid location (latitude -76 to 76, not the point 0, 0)");
    }
    if (!jobs::ParseJobChannel(a.channel, nullptr)) throw UsageError("--channel", "Invalid channel (200 to 300)");
    // The job file keeps whole channels; a fraction would be rounded silently.
    if (a.channel.find_first_not_of("0123456789 +") != std::string::npos)
        throw UsageError("--channel", "'" + a.channel + "' is not a whole channel number (200 to 300)");
    if (!a.maps.empty()) CheckBoundaryFiles(a.maps);
    CheckClass(a.cls, "--class", false);
    CheckClass(a.intlClass, "--intl-class", true);
    in.scanRange = ParseRange(a.range);
    in.channel = a.channel;
    in.stationClass = a.cls;
    in.intlClass = a.intlClass;
    in.comments = a.comments;
    return in;
}

// The master's own account of its data (the demo data says so), else the
// file's name.
std::string MasterSource(const fs::path& fdb, const fs::path& fmd) {
    stationdb::Database db(fdb, stationdb::OpenMode::ReadOnly);
    if (db.HasColumn("information", "Source")) {
        stationdb::Statement info = db.Prepare("SELECT Source FROM information");
        if (info.Step() && !info.GetText(0).empty()) return info.GetText(0);
    }
    return fmd.filename().string();
}

// A header value as text; numbers in their shortest form (96, not 96.0).
std::string FieldText(const json& value) {
    if (value.is_string()) return value.get<std::string>();
    if (value.is_number_float()) return fmt::format("{}", value.get<double>());
    return value.dump();
}

void ShowCaption(const std::string& caption) { std::cerr << caption << "\n"; }

int RunNew(const NewArgs& a) {
    jobs::NewJobInputs in = ParseNewJob(a);
    core::StderrPrompt prompt(a.force);  // --force answers "Replace ...?" with OK
    core::ScopedPrompt promptScope(prompt);
    const container::ScratchFolder scratch{"qarvel-job-"};
    stationdb::FmdCheckOptions check;
    fs::path fdb;
    std::string creationDate;
    if (!stationdb::testFMD(a.db, scratch.Path(), check, &fdb, &creationDate, ShowCaption)) {
        throw UsageError("--db", "'" + a.db + "' is not a usable master database");
    }
    in.masterPath = fdb;
    in.source = MasterSource(fdb, a.db);
    if (!a.local.empty()) {
        in.localPath = stationdb::UnpackMasterDatabase(a.local, scratch.Path());
        if (in.localPath.empty()) throw UsageError("--local", "'" + a.local + "' is not a packed local database");
    }
    jobs::JobFile job(scratch.Path() / "job");
    if (!job.CreateNew(in, a.out, a.maps, {ShowCaption, core::InterruptFlag(), true})) return kExitFailed;
    if (!job.SaveAs(a.out)) return kExitFailed;
    jobs::JobSummary summary;
    if (!jobs::ReadJobSummary(job.Paths().tdb, &summary)) return kExitFailed;
    std::cout << fmt::format("{}: {} FM, {} AM, {} TV6 stations, {} owners, {} cities, {} markers\n",
                             job.Paths().jobFile.string(), summary.rowCounts["fm_data"], summary.rowCounts["am_data"],
                             summary.rowCounts["tv6_data"], summary.rowCounts["party"], summary.rowCounts["places"],
                             summary.rowCounts["markers"]);
    job.Discard();
    return kExitOk;
}

int RunInfo(const std::string& file, bool asJson) {
    RequireFile("JOB", file);
    const container::ScratchFolder scratch{"qarvel-job-"};
    jobs::JobFile job(scratch.Path());
    jobs::JobSummary s;
    if (!job.Open(file) || !jobs::ReadJobSummary(job.Paths().tdb, &s)) {
        throw UsageError(file, "not a job file");
    }
    const std::vector<std::pair<std::string, json>> header = {
        {"CDate", s.header.CDate},   {"TChan", s.header.TChan},     {"Comments", s.header.Comments},
        {"Source", s.header.Source}, {"TLat", s.header.TLat},       {"TLon", s.header.TLon},
        {"TClass", s.header.TClass}, {"TIClass", s.TIClass},        {"OffsetN", s.header.OffsetN},
        {"OffsetW", s.header.OffsetW}, {"ScanRange", s.header.ScanRange}};
    if (asJson) {
        json out = {{"file", file}, {"header", json::object()}, {"tables", json::object()}};
        for (const auto& [name, value] : header) out["header"][name] = value;
        for (const auto& [table, rows] : s.rowCounts) out["tables"][table] = rows;
        std::cout << out.dump() << "\n";
    } else {
        for (const auto& [name, value] : header) {
            std::cout << name << ": " << FieldText(value) << "\n";
        }
        for (const auto& [table, rows] : s.rowCounts) std::cout << table << ": " << rows << " rows\n";
    }
    return kExitOk;
}

}  // namespace

void RegisterJobCommands(CommandSet& commands) {
    CLI::App* group = commands.AddGroup("job", "Build jobs and show what they hold");

    auto a = std::make_shared<NewArgs>();
    CLI::App* sub = commands.Add(group, "new", "Build a job round a target and pack it into a .fmj file",
                                 [a] { return RunNew(*a); });
    sub->add_option("--db", a->db, "Packed master database (.fmd)")->required();
    sub->add_option("--local", a->local, "Packed local database of edited stations (LocalData.fmd)");
    sub->add_option("--maps", a->maps, "Folder holding stmapH.dat and comapH.dat");
    sub->add_option("--lat", a->lat, "Target latitude (40.75, 40:45:00, 40.75N)")->required();
    sub->add_option("--lon", a->lon, "Target longitude; a bare number is WEST (96.7, 96:42:00W)")->required();
    sub->add_option("--channel", a->channel, "Target FM channel, 200 to 300")->required();
    sub->add_option("--class", a->cls, "Target station class (A, B1, C2...)")->required();
    sub->add_option("--intl-class", a->intlClass, "Target international class");
    sub->add_option("--range", a->range, "Scan range, km")->required();
    sub->add_option("--comments", a->comments, "Comment kept in the job header");
    sub->add_option("--out", a->out, "Job file to write (.fmj)")->required();
    sub->add_flag("--force", a->force, "Replace an existing job file without asking");

    auto file = std::make_shared<std::string>();
    auto asJson = std::make_shared<bool>(false);
    sub = commands.Add(group, "info", "The header of a job file and the row count of each table",
                       [file, asJson] { return RunInfo(*file, *asJson); });
    sub->add_option("JOB", *file, "Job file (.fmj)")->required();
    sub->add_flag("--json", *asJson, "Print one JSON object");
}

}  // namespace qarvel::cli
