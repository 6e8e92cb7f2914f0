#include "cli/cmd_pack.h"

#include "core/prompt.h"
#include "container/scratch_folder.h"
#include "container/container.h"
#include "stationdb/master_package.h"
#include "stationdb/validation.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>

namespace qarvel::cli {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

std::string LowerExtension(const fs::path& path) {
    std::string ext = path.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ext;
}

void RequireFile(const std::string& argument) {
    std::error_code ec;
    if (!fs::is_regular_file(argument, ec)) throw UsageError(argument, "no such file");
}

int RunPack(const std::string& out, const std::vector<std::string>& files) {
    std::vector<fs::path> sources;
    for (const std::string& file : files) {
        RequireFile(file);
        sources.emplace_back(file);
    }
    return container::CompressFiles(out, sources) ? kExitOk : kExitFailed;
}

int RunUnpack(const std::string& file, const std::string& dir) {
    RequireFile(file);
    std::error_code ec;
    bool created = false;
    if (!fs::exists(dir, ec)) {
        created = fs::create_directories(dir, ec);
        if (ec) throw UsageError(dir, "cannot create the folder: " + ec.message());
    } else if (!fs::is_directory(dir, ec)) {
        throw UsageError(dir, "not a folder");
    }
    if (container::UncompressFiles(file, dir)) return kExitOk;
    if (created) fs::remove(dir, ec);  // leave no trace of a refused container
    return kExitFailed;
}

// The one ".tdb" file an unpacked job holds, or empty.
fs::path FindJobDatabase(const fs::path& folder) {
    fs::path found;
    for (const auto& item : fs::directory_iterator(folder)) {
        if (LowerExtension(item.path()) != ".tdb") continue;
        if (!found.empty()) return {};
        found = item.path();
    }
    return found;
}

// The result of a check: validity and the header fields in display order.
struct CheckResult {
    bool valid = false;
    std::string kind;
    std::vector<std::pair<std::string, json>> fields;
};

CheckResult CheckJob(const fs::path& file, const fs::path& scratch) {
    CheckResult result{false, "job", {}};
    fs::path tdb;
    if (container::UncompressFiles(file, scratch)) tdb = FindJobDatabase(scratch);
    // A container that would not unpack leaves no job database, which the
    // check refuses with its own message, as for any damaged job.
    stationdb::JobHeader h;
    if (!stationdb::ValidJobFile(tdb, &h)) return result;
    result.valid = true;
    result.fields = {{"CDate", h.CDate},         {"TChan", h.TChan},     {"Comments", h.Comments},
                     {"Source", h.Source},       {"TLat", h.TLat},       {"TLon", h.TLon},
                     {"TClass", h.TClass},       {"OffsetN", h.OffsetN}, {"OffsetW", h.OffsetW},
                     {"ScanRange", h.ScanRange}};
    return result;
}

// A single-precision value as the double of its shortest text, so that JSON
// shows 1.9 rather than 1.899999976158142.
double ShortestDouble(float value) {
    const std::string text = fmt::format("{}", value);
    double result = value;
    std::from_chars(text.data(), text.data() + text.size(), result);
    return result;
}

CheckResult CheckMaster(const fs::path& file, const fs::path& scratch) {
    CheckResult result{false, "master", {}};
    stationdb::MasterInfo info;
    fs::path fdb;
    std::string creationDate;
    if (!stationdb::testFMD(file, scratch, {}, &fdb, &creationDate, {}, &info)) return result;
    result.valid = true;
    result.fields = {{"creation_date", info.creation_date},
                     {"creation_size", info.creation_size},
                     // The single-precision version as its shortest text (1.9, not 1.8999...).
                     {"version", ShortestDouble(info.version)}};
    return result;
}

std::string FieldText(const json& value) {
    if (value.is_string()) return value.get<std::string>();
    if (value.is_number_float()) return fmt::format("{}", value.get<double>());
    return value.dump();
}

int RunCheck(const std::string& file, bool asJson) {
    RequireFile(file);
    std::string ext = LowerExtension(file);
    if (ext != ".fmj" && ext != ".fmd") throw UsageError(file, "unknown extension; expected .fmj or .fmd");

    // With --json the system's messages go into the object, keeping stdout one
    // JSON document; otherwise they reach stderr through the prompt.
    core::RecordingPrompt recorder;
    std::optional<core::ScopedPrompt> capture;
    if (asJson) capture.emplace(recorder);

    CheckResult result;
    {
        container::ScratchFolder scratch{"qarvel-check-"};
        result = ext == ".fmj" ? CheckJob(file, scratch.Path()) : CheckMaster(file, scratch.Path());
    }
    if (asJson) {
        json out = {{"valid", result.valid}, {"kind", result.kind}};
        for (const auto& [name, value] : result.fields) out[name] = value;
        out["messages"] = recorder.Texts();
        std::cout << out.dump() << "\n";
    } else {
        for (const auto& [name, value] : result.fields) std::cout << name << ": " << FieldText(value) << "\n";
    }
    return result.valid ? kExitOk : kExitFailed;
}

// The "db" group, shared with other command files that may have added it.
CLI::App* DbGroup(CommandSet& commands) {
    auto existing = commands.App().get_subcommands([](CLI::App* sub) { return sub->get_name() == "db"; });
    return existing.empty() ? commands.AddGroup("db", "Station database commands") : existing.front();
}

}  // namespace

void RegisterPackCommands(CommandSet& commands) {
    auto out = std::make_shared<std::string>();
    auto files = std::make_shared<std::vector<std::string>>();
    CLI::App* pack = commands.Add("pack", "Pack files into a container (job .fmj, master .fmd)",
                                  [out, files] { return RunPack(*out, *files); });
    pack->add_option("OUT", *out, "Container file to write")->required();
    pack->add_option("FILE", *files, "Files to pack, in order")->required();

    auto container = std::make_shared<std::string>();
    auto dir = std::make_shared<std::string>();
    CLI::App* unpack = commands.Add("unpack", "Unpack a container into a folder",
                                    [container, dir] { return RunUnpack(*container, *dir); });
    unpack->add_option("FILE", *container, "Container file to read")->required();
    unpack->add_option("DIR", *dir, "Folder to write the files into (created when missing)")->required();

    auto checked = std::make_shared<std::string>();
    auto asJson = std::make_shared<bool>(false);
    CLI::App* db = DbGroup(commands);
    CLI::App* check = commands.Add(db, "check", "Validate a job (.fmj) or master database (.fmd)",
                                   [checked, asJson] { return RunCheck(*checked, *asJson); });
    check->add_option("FILE", *checked, "Job or master database file")->required();
    check->add_flag("--json", *asJson, "Print one JSON object");
}

}  // namespace qarvel::cli
