// JobFile: the life cycle of a job file between its packed ".fmj" and the
// working files in the job scratch folder.

#include "jobs/job_file.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <system_error>
#include <utility>
#include <vector>

#include "core/error_trap.h"
#include "core/prompt.h"
#include "mapdata/boundary_file.h"  // kStateMapFile, kCountyMapFile
#include "container/container.h"
#include "stationdb/database.h"
#include "mapdata/job_map.h"

namespace qarvel::jobs {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kModule = "modFMdb";

std::string LowerText(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool EndsWithNoCase(const std::string& text, std::string_view suffix) {
    return text.size() >= suffix.size() && LowerText(text.substr(text.size() - suffix.size())) == suffix;
}

void RemoveQuietly(const fs::path& file) {
    std::error_code ec;
    fs::remove(file, ec);
}

void CreateEmptyFileIfMissing(const fs::path& file) {
    std::error_code ec;
    if (fs::exists(file, ec)) return;
    std::ofstream out(file, std::ios::binary);
    if (!out) throw core::TrapError("cannot create \"" + file.string() + "\"");
}

// A private folder inside the scratch folder, removed with its contents.
class StagingFolder {
public:
    explicit StagingFolder(const fs::path& parent) : m_path(container::CreateUniqueFolder(parent, "~job")) {}
    ~StagingFolder() {
        std::error_code ec;
        fs::remove_all(m_path, ec);
    }
    StagingFolder(const StagingFolder&) = delete;
    StagingFolder& operator=(const StagingFolder&) = delete;
    const fs::path& Path() const { return m_path; }

private:
    fs::path m_path;
};

// The files an unpacked job holds, by extension; tdb stays empty unless
// there is exactly one database.
struct UnpackedJob {
    fs::path tdb, mst, mco;
};

UnpackedJob FindUnpacked(const fs::path& folder) {
    UnpackedJob found;
    int databases = 0;
    for (const auto& item : fs::directory_iterator(folder)) {
        const std::string ext = LowerText(item.path().extension().string());
        if (ext == ".tdb") {
            ++databases;
            found.tdb = item.path();
        } else if (ext == ".mst") {
            found.mst = item.path();
        } else if (ext == ".mco") {
            found.mco = item.path();
        }
    }
    if (databases != 1) found.tdb.clear();
    return found;
}

// Jobs made before these columns existed lack them; the job display reads them.
void AddMissingColumns(const fs::path& tdb) {
    stationdb::Database db(tdb, stationdb::OpenMode::ReadWrite);
    const std::pair<const char*, const char*> columns[] = {
        {"vert_erp", "float"}, {"asd_service", "char(2)"}, {"facility_id", "int"}};
    for (const auto& [name, type] : columns) {
        if (!db.HasColumn("fm_data", name)) db.Exec(std::string("ALTER TABLE fm_data ADD COLUMN ") + name + " " + type);
    }
}

void SaveFailed() { core::ShowPrompt("Save Failed!", {}, core::PromptButtons::Ok, core::PromptIcon::Critical); }

}  // namespace

JobPaths JobWorkingNames(const fs::path& jobPath, const fs::path& jobScratch) {
    JobPaths names;
    names.folder = jobPath.parent_path();
    std::string fileName = jobPath.filename().string();
    if (fileName.empty()) fileName = "noname.fmj";
    if (!EndsWithNoCase(fileName, kJobFileExtension)) fileName += kJobFileExtension;
    names.baseName = fileName.substr(0, fileName.size() - kJobFileExtension.size());
    names.jobFile = names.folder / fileName;
    names.tdb = jobScratch / (names.baseName + ".tdb");
    names.mst = jobScratch / (names.baseName + ".mst");
    names.mco = jobScratch / (names.baseName + ".mco");
    return names;
}

bool PackJobFile(const JobPaths& paths, const fs::path& fmj) {
    return core::TrappedVoid(kModule, ":PackJobFile:", [&] {
        CreateEmptyFileIfMissing(paths.mco);
        CreateEmptyFileIfMissing(paths.mst);
        std::string status;
        if (!container::CompressFiles(fmj, {paths.tdb, paths.mco, paths.mst}, &status)) {
            throw core::TrapError("cannot pack \"" + fmj.string() + "\": " + status);
        }
    });
}

bool ReadJobSummary(const fs::path& tdb, JobSummary* summary) {
    return core::Trapped(kModule, ":ReadJobSummary:", false, [&] {
        JobSummary result;
        if (!stationdb::ValidJobFile(tdb, &result.header)) return false;
        stationdb::Database db(tdb, stationdb::OpenMode::ReadOnly);
        for (const std::string& table : db.TableNames()) {
            stationdb::Statement count = db.Prepare("SELECT COUNT(*) FROM " + stationdb::QuoteIdentifier(table));
            count.Step();
            result.rowCounts[LowerText(table)] = count.GetInt64(0);
        }
        if (db.HasColumn("information", "TIClass")) {
            stationdb::Statement info = db.Prepare("SELECT TIClass FROM information");
            if (info.Step()) result.TIClass = info.GetText(0);
        }
        if (summary != nullptr) *summary = std::move(result);
        return true;
    });
}

JobFile::JobFile(fs::path jobScratch) : m_scratch(std::move(jobScratch)) {}

JobFile::~JobFile() { Discard(); }

bool JobFile::CreateNew(NewJobInputs inputs, const fs::path& fmjPath, const fs::path& mapsFolder,
                        const JobBuildControl& control) {
    return core::Trapped(kModule, ":CreateNewJob:", false, [&] {
        if (m_open) throw core::TrapError("a job is already open");
        fs::create_directories(m_scratch);
        const JobPaths names = JobWorkingNames(fmjPath, m_scratch);
        // Leftovers of an earlier job of the same name in the scratch folder.
        for (const fs::path& file : {names.tdb, names.mst, names.mco}) RemoveQuietly(file);
        inputs.jobPath = names.tdb;
        if (!MakeNewJob(inputs, control)) return false;
        m_paths = names;
        m_open = true;
        m_changed = true;
        struct Cut {
            std::string_view national, caption;
            fs::path destination;
            double rangeFactor;
        };
        const Cut cuts[] = {{mapdata::kStateMapFile, mapdata::kCaptionStateMaps, names.mst, mapdata::kStateMapRangeFactor},
                            {mapdata::kCountyMapFile, mapdata::kCaptionCountyMaps, names.mco, mapdata::kCountyMapRangeFactor}};
        std::error_code ec;
        for (const Cut& cut : cuts) {
            const fs::path source = mapsFolder / cut.national;
            if (mapsFolder.empty() || !fs::is_regular_file(source, ec)) continue;
            if (control.progress) control.progress(std::string(cut.caption));
            if (!mapdata::BuildJobMap(source, cut.destination, inputs.lat, inputs.lon, cut.rangeFactor * inputs.scanRange)) {
                Discard();
                return false;
            }
        }
        if (!stationdb::ValidJobFile(names.tdb, &m_header)) {
            Discard();
            return false;
        }
        return true;
    });
}

bool JobFile::Open(const fs::path& fmjPath) {
    return core::Trapped(kModule, ":OpenJob:", false, [&] {
        if (m_open) throw core::TrapError("a job is already open");
        fs::create_directories(m_scratch);
        const JobPaths names = JobWorkingNames(fmjPath, m_scratch);
        const StagingFolder stage(m_scratch);
        UnpackedJob unpacked;
        if (container::UncompressFiles(fmjPath, stage.Path())) unpacked = FindUnpacked(stage.Path());
        // A container that would not unpack leaves no database, which
        // ValidJobFile refuses with its own message, as any damaged job.
        stationdb::JobHeader header;
        if (!stationdb::ValidJobFile(unpacked.tdb, &header)) return false;
        AddMissingColumns(unpacked.tdb);
        try {
            for (const fs::path& file : {names.tdb, names.mst, names.mco}) RemoveQuietly(file);
            fs::rename(unpacked.tdb, names.tdb);
            if (!unpacked.mst.empty()) fs::rename(unpacked.mst, names.mst);
            if (!unpacked.mco.empty()) fs::rename(unpacked.mco, names.mco);
        } catch (...) {
            for (const fs::path& file : {names.tdb, names.mst, names.mco}) RemoveQuietly(file);
            throw;
        }
        m_paths = names;
        m_header = header;
        m_open = true;
        m_changed = false;
        return true;
    });
}

bool JobFile::Save() { return SaveAs(m_paths.jobFile); }

bool JobFile::SaveAs(const fs::path& fmjPath) {
    return core::Trapped(kModule, ":SaveJob:", false, [&] {
        if (!m_open) throw core::TrapError("no job is open");
        const JobPaths target = JobWorkingNames(fmjPath, m_scratch);
        std::error_code ec;
        if (fs::exists(target.jobFile, ec)) {
            const core::PromptAnswer answer =
                core::ShowPrompt("Replace " + target.jobFile.string() + "?", "Replace Job",
                                 core::PromptButtons::OkCancel, core::PromptIcon::Question);
            if (answer != core::PromptAnswer::Ok) return false;
        }
        // The working files take the new base name, so the container stores
        // the names a later open expects; put back when the save fails.
        const bool renamed = target.tdb != m_paths.tdb;
        if (renamed && !MoveWorkingFiles(m_paths, target)) {
            SaveFailed();
            return false;
        }
        if (!PackJobFile(renamed ? target : m_paths, target.jobFile)) {
            if (renamed) MoveWorkingFiles(target, m_paths);
            SaveFailed();
            return false;
        }
        m_paths = target;
        m_changed = false;
        return true;
    });
}

bool JobFile::Close() {
    return core::Trapped(kModule, ":CloseJob:", false, [&] {
        if (!m_open) return true;
        if (m_changed) {
            const core::PromptAnswer answer =
                core::ShowPrompt("Save changes?", {}, core::PromptButtons::YesNo, core::PromptIcon::Question);
            if (answer == core::PromptAnswer::Yes && !Save()) return false;
        }
        Discard();
        return true;
    });
}

void JobFile::Discard() {
    if (m_open) RemoveWorkingFiles();
    m_open = false;
    m_changed = false;
    m_paths = {};
    m_header = {};
}

bool JobFile::MoveWorkingFiles(const JobPaths& from, const JobPaths& to) {
    std::error_code ec;
    const std::pair<fs::path, fs::path> moves[] = {{from.tdb, to.tdb}, {from.mst, to.mst}, {from.mco, to.mco}};
    std::vector<std::pair<fs::path, fs::path>> done;
    for (const auto& [source, destination] : moves) {
        if (!fs::exists(source, ec)) {
            RemoveQuietly(destination);
            continue;
        }
        fs::rename(source, destination, ec);
        if (ec) {
            core::ReportError(kModule, ":SaveJob:", "cannot rename \"" + source.string() + "\": " + ec.message());
            for (const auto& [original, renamed] : done) fs::rename(renamed, original, ec);  // undo, best effort
            return false;
        }
        done.emplace_back(source, destination);
    }
    return true;
}

void JobFile::RemoveWorkingFiles() const {
    for (const fs::path& file : {m_paths.tdb, m_paths.mst, m_paths.mco}) RemoveQuietly(file);
}

}  // namespace qarvel::jobs
