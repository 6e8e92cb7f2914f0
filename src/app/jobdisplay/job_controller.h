#pragma once
// The job controller: owns the open job's file (JobFile: the packed ".fmj"
// and its working copy in the job scratch folder) and the master database
// in use, and carries out the main window's job commands - new, open,
// save, save as, close, open a master database - with the system's
// prompts ("Replace Job", "Save changes?", "Save Failed!") coming from
// JobFile through the prompt interface. Long work (unpacking a master,
// building a job) runs in the progress window.

#include <QObject>

#include <filesystem>
#include <memory>
#include <string>

#include "shell/program_context.h"
#include "shell/startup.h"
#include "jobs/job_file.h"

class QWidget;

namespace qarvel::app {

class JobDisplay;
class ProgressWindow;
struct NewJobRequest;

// The window title of the job build in the progress window.
inline constexpr const char* kBuildOperation = "MakeNewJob";

// A master loader for the start-up sequence and the Open Master Database
// command: testFMD run in the progress window under the pending operation
// "UnPackDatabase".
shell::MasterLoader ProgressMasterLoader(QWidget* parent);

// The master database's own account of its data (its information record's
// Source), else the name of its packed file. `fdb` is the unpacked copy.
std::string MasterSource(const std::filesystem::path& fdb, const std::filesystem::path& fmd);

// Where the national boundary files are cut from: the master databases'
// folder when it holds both files, else the resources directory.
std::filesystem::path BoundaryFolder(const shell::ProgramSettings& settings);

class JobController : public QObject {
    Q_OBJECT

public:
    // `window` parents the progress window.
    JobController(shell::ProgramContext& context, JobDisplay& display, QWidget* window);
    ~JobController() override;

    // OpenJob: closes the open job first (which may ask "Save changes?"),
    // opens `fmj` and shows it. False when the job is not open after.
    bool OpenJob(const std::filesystem::path& fmj);
    // Opens recent file 1..5; when the master database option says so
    // (gDBoptMRUDef), loads the master that belonged to it first.
    bool OpenRecent(int index);
    bool SaveJob();
    bool SaveJobAs(const std::filesystem::path& fmj);
    // True when no job is open afterwards.
    bool CloseJob();
    // Builds the job of `request` on the loaded master database in the
    // progress window and shows it (unsaved). False when no master is
    // loaded, the build failed or was cancelled.
    bool NewJob(const NewJobRequest& request);
    // Unpacks and checks a master database in the progress window and makes
    // it the one in use.
    bool LoadMaster(const std::filesystem::path& fmd);

    bool HasJob() const { return m_job && m_job->IsOpen(); }
    jobs::JobFile* Job() const { return m_job.get(); }
    bool HasMaster() const { return !m_context.masterDatabase.empty(); }
    // The captions the last build reported.
    const std::vector<std::string>& LastBuildCaptions() const { return m_buildCaptions; }

signals:
    void jobChanged();          // opened, closed, saved, renamed
    void recentFilesChanged();
    void masterChanged();

private:
    jobs::JobFile& JobFileObject();
    bool ShowOpenJob();
    void RememberRecent(const std::filesystem::path& fmj);

    shell::ProgramContext& m_context;
    JobDisplay& m_display;
    QWidget* m_window;
    std::unique_ptr<jobs::JobFile> m_job;
    std::vector<std::string> m_buildCaptions;
};

}  // namespace qarvel::app
