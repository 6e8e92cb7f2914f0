#include "app/jobdisplay/job_controller.h"

#include <QWidget>

#include <system_error>

#include "app/jobdisplay/job_display.h"
#include "app/wizard/new_job_wizard.h"
#include "app/mainwin/progress_window.h"
#include "core/error_trap.h"
#include "shell/settings.h"
#include "stationdb/database.h"
#include "mapdata/job_map.h"
#include "stationdb/master_package.h"

namespace qarvel::app {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kModule = "frmMain";

QStringList BuildStages() {
    QStringList stages;
    for (const std::string_view caption :
         {jobs::kCaptionScanFm, jobs::kCaptionScanTv6, jobs::kCaptionScanAm,
          jobs::kCaptionScanLocal, jobs::kCaptionParties, jobs::kCaptionCities,
          jobs::kCaptionMarkers, mapdata::kCaptionStateMaps, mapdata::kCaptionCountyMaps}) {
        stages << QString::fromUtf8(caption.data(), static_cast<qsizetype>(caption.size()));
    }
    return stages;
}

bool HasBoundaryFiles(const fs::path& folder) {
    std::error_code ec;
    return !folder.empty() && fs::is_regular_file(folder / "stmapH.dat", ec) &&
           fs::is_regular_file(folder / "comapH.dat", ec);
}

}  // namespace

shell::MasterLoader ProgressMasterLoader(QWidget* parent) {
    return [parent](const fs::path& fmd, const fs::path& scratch, const stationdb::FmdCheckOptions& options) {
        ProgressWindow window(parent);
        fs::path unpacked;
        window.Run(QString::fromUtf8(shell::kUnPackDatabase.data(), static_cast<qsizetype>(shell::kUnPackDatabase.size())),
                   {}, [&](const ProgressWindow::Progress& progress, const std::atomic<bool>&) {
                       std::string creationDate;
                       return stationdb::testFMD(fmd, scratch, options, &unpacked, &creationDate, progress);
                   },
                   false);
        return unpacked;
    };
}

std::string MasterSource(const fs::path& fdb, const fs::path& fmd) {
    return core::Trapped(kModule, ":MasterSource:", fmd.filename().string(), [&] {
        stationdb::Database db(fdb, stationdb::OpenMode::ReadOnly);
        if (db.HasColumn("information", "Source")) {
            stationdb::Statement info = db.Prepare("SELECT Source FROM information");
            if (info.Step() && !info.GetText(0).empty()) return info.GetText(0);
        }
        return fmd.filename().string();
    });
}

fs::path BoundaryFolder(const shell::ProgramSettings& settings) {
    if (HasBoundaryFiles(fs::path(settings.gDataDIR))) return fs::path(settings.gDataDIR);
    return fs::path(settings.gToolDIR);
}

JobController::JobController(shell::ProgramContext& context, JobDisplay& display, QWidget* window)
    : QObject(window), m_context(context), m_display(display), m_window(window) {}

JobController::~JobController() {
    // The display's connection goes before the job's working files do.
    m_display.Unload();
}

jobs::JobFile& JobController::JobFileObject() {
    if (!m_job) m_job = std::make_unique<jobs::JobFile>(m_context.JobScratch());
    return *m_job;
}

void JobController::RememberRecent(const fs::path& fmj) {
    shell::PushRecentFile(m_context.settings, fmj.generic_string(), m_context.masterPackage.generic_string());
    m_context.recentFiles = shell::RecentFilesMenu(m_context.settings);
    emit recentFilesChanged();
}

bool JobController::ShowOpenJob() {
    if (m_display.Load(m_job->Paths(), m_job->Header())) return true;
    m_job->Discard();
    return false;
}

bool JobController::OpenJob(const fs::path& fmj) {
    if (!CloseJob()) return false;
    if (!JobFileObject().Open(fmj)) return false;
    const bool shown = ShowOpenJob();
    if (shown) RememberRecent(m_job->Paths().jobFile);
    emit jobChanged();
    return shown;
}

bool JobController::OpenRecent(int index) {
    if (index < 1 || index > static_cast<int>(shell::kMruCount)) return false;
    const auto slot = static_cast<std::size_t>(index - 1);
    const std::string file = m_context.settings.MRUFile[slot];
    const std::string connection = m_context.settings.MRUConnect[slot];
    if (file.empty()) return false;
    std::error_code ec;
    if (m_context.settings.gDBoptMRUDef && !connection.empty() &&
        fs::path(connection) != m_context.masterPackage && fs::is_regular_file(connection, ec)) {
        LoadMaster(connection);
    }
    return OpenJob(file);
}

bool JobController::SaveJob() {
    if (!HasJob()) return false;
    const bool saved = m_job->Save();
    if (saved) RememberRecent(m_job->Paths().jobFile);
    emit jobChanged();
    return saved;
}

bool JobController::SaveJobAs(const fs::path& fmj) {
    if (!HasJob()) return false;
    const bool saved = m_job->SaveAs(fmj);
    if (saved) RememberRecent(m_job->Paths().jobFile);
    emit jobChanged();
    return saved;
}

bool JobController::CloseJob() {
    if (!HasJob()) return true;
    // JobFile asks "Save changes?" and keeps the job when the save fails;
    // only a job really closed leaves the display. The display's idle
    // connection does not hold the working files against removal.
    if (!m_job->Close()) return false;
    m_display.Unload();
    emit jobChanged();
    return true;
}

bool JobController::NewJob(const NewJobRequest& request) {
    if (!HasMaster()) return false;
    if (!CloseJob()) return false;
    jobs::NewJobInputs inputs = request.inputs;
    inputs.masterPath = m_context.masterDatabase;
    inputs.source = MasterSource(m_context.masterDatabase, m_context.masterPackage);
    inputs.useLocal = m_context.settings.gDBoptUseLocal;
    inputs.localPath = m_context.localDatabase;
    const fs::path maps = BoundaryFolder(m_context.settings);
    jobs::JobFile& job = JobFileObject();

    ProgressWindow window(m_window);
    const bool built = window.Run(QString::fromLatin1(kBuildOperation), BuildStages(),
                                  [&](const ProgressWindow::Progress& progress, const std::atomic<bool>& cancel) {
                                      jobs::JobBuildControl control;
                                      control.progress = progress;
                                      control.cancel = &cancel;
                                      return job.CreateNew(inputs, request.jobFile, maps, control);
                                  },
                                  true);
    m_buildCaptions.clear();
    for (const QString& caption : window.Captions()) m_buildCaptions.push_back(caption.toStdString());
    if (!built) {
        if (job.IsOpen()) job.Discard();
        emit jobChanged();
        return false;
    }
    const bool shown = ShowOpenJob();
    emit jobChanged();
    return shown;
}

bool JobController::LoadMaster(const fs::path& fmd) {
    const fs::path previous = m_context.masterDatabase;
    if (!shell::LoadMasterDatabase(m_context, fmd, ProgressMasterLoader(m_window), 0)) return false;
    if (!previous.empty() && previous != m_context.masterDatabase) {
        std::error_code ec;
        fs::remove(previous, ec);  // the unpacked copy of the master no longer in use
    }
    emit masterChanged();
    return true;
}

}  // namespace qarvel::app
