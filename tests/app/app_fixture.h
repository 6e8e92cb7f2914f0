#pragma once
// A small world for the desktop program's tests, in a temporary folder: a
// master database of a dozen stations round a target in eastern Nebraska
// (41.25 N, 96.0 W, channel 250), national boundary files, a job built on
// them, a settings file and a program context pointing at it all. Real
// SQLite, real packed files; only the message boxes are replaced by a
// RecordingPrompt.

#include <QSettings>
#include <QTemporaryDir>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "core/error_trap.h"
#include "core/prompt.h"
#include "shell/program_context.h"
#include "shell/startup.h"
#include "jobs/job_build.h"

namespace qarvel::app::testing {

namespace fs = std::filesystem;

inline constexpr double kTargetLat = 41.25;
inline constexpr double kTargetLon = 96.0;  // WEST
inline constexpr int kTargetChannel = 250;

// Processes events until `done` holds or `timeoutMs` passed; true when done.
bool WaitUntil(const std::function<bool()>& done, int timeoutMs = 5000);

class AppWorld {
public:
    AppWorld();
    ~AppWorld();

    const fs::path& Root() const { return m_root; }
    fs::path Data() const { return m_root / "data"; }  // master, boundary files (gDataDIR, gToolDIR)
    fs::path Jobs() const { return m_root / "jobs"; }
    fs::path Temp() const { return m_root / "tmp"; }
    fs::path MasterFdb() const { return Data() / "master.fdb"; }
    fs::path MasterFmd() const { return Data() / "master.fmd"; }
    // The job built round the target and saved as jobs/<name>.fmj.
    fs::path MakeJob(const std::string& name = "omaha", int scanRangeKm = 300);
    // The target of MakeJob, with the master and boundary folder filled in.
    jobs::NewJobInputs JobInputs(int scanRangeKm = 300) const;

    // A context as the start-up leaves it: folders, scratch folders made,
    // the job-grid catalogue built, the master loaded (unpacked copy).
    shell::ProgramContext Context() const;
    // A settings file naming the folders (gDataDIR, gToolDIR, gJobDIR).
    QSettings& Settings() { return *m_settings; }
    // A start-up environment on the temporary folders and the settings file.
    shell::StartupEnvironment Environment(std::vector<std::string> arguments = {});

    core::RecordingPrompt& Prompt() { return m_prompt; }
    core::RecordingErrorSink& Errors() { return m_errors; }

private:
    void WriteMaster();
    void WriteBoundaryFiles();

    QTemporaryDir m_dir;
    fs::path m_root;
    std::unique_ptr<QSettings> m_settings;
    core::RecordingPrompt m_prompt;
    core::ScopedPrompt m_promptScope{m_prompt};
    core::RecordingErrorSink m_errors;
    core::ScopedErrorSink m_errorScope{m_errors};
};

}  // namespace qarvel::app::testing
