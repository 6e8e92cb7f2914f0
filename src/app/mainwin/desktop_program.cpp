#include "app/mainwin/desktop_program.h"

#include <QFileDialog>

#include <system_error>

#include "app/jobdisplay/job_controller.h"
#include "app/jobdisplay/job_display.h"
#include "app/mainwin/main_window.h"

namespace qarvel::app {

namespace fs = std::filesystem;

namespace {

// The folder picker for "Attempt to Locate?": starts at the folder asked
// about, or where that does not exist, beside the file named on the
// command line (the demo data keeps its maps beside its master database).
shell::FolderPicker DesktopFolderPicker(const std::vector<std::string>& arguments) {
    return [arguments](const fs::path& start) -> std::optional<fs::path> {
        std::error_code ec;
        fs::path from = start;
        if (!fs::is_directory(from, ec) && !arguments.empty()) from = fs::absolute(arguments.front(), ec).parent_path();
        const QString chosen = QFileDialog::getExistingDirectory(nullptr, QObject::tr("Locate Resources Directory"),
                                                                 QString::fromStdString(from.string()));
        if (chosen.isEmpty()) return std::nullopt;
        return fs::path(chosen.toStdString());
    };
}

}  // namespace

DesktopProgram::DesktopProgram(shell::StartupEnvironment env) : m_env(std::move(env)) {}

DesktopProgram::~DesktopProgram() {
    // The window (and with it the open job's working files) goes before the
    // sequence releases the single-instance lock.
    m_window.reset();
    m_sequence.reset();
}

shell::StartupResult DesktopProgram::Start() {
    shell::StartupEnvironment env = m_env;
    env.createForms = [this] { m_window = std::make_unique<MainWindow>(m_context); };
    env.openJob = [this](const fs::path& fmj) { return m_window && m_window->Controller().OpenJob(fmj); };
    if (!env.loadMaster) env.loadMaster = ProgressMasterLoader(nullptr);
    if (!env.pickFolder) env.pickFolder = DesktopFolderPicker(env.arguments);
    m_sequence = std::make_unique<shell::StartupSequence>(m_context, std::move(env));
    const shell::StartupResult result = m_sequence->Run();
    if (!result.showMainWindow || !m_window) return result;
    m_window->onShutdown = [this] { return Shutdown(); };
    m_window->Refresh();
    m_window->show();
    return result;
}

bool DesktopProgram::Shutdown() {
    if (m_shutDown) return true;
    if (m_env.settings == nullptr) return true;
    // The job is closed by now; the display holds no connection.
    if (m_window) m_window->Display().Unload();
    m_shutDown = shell::ShutdownProgram(*m_env.settings, m_context, false);
    return m_shutDown;
}

}  // namespace qarvel::app
