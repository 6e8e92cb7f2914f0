#pragma once
// The desktop program's start and end: runs the shell's start-up sequence
// (`Main`) with the desktop's parts plugged in - the main window made at the
// "create forms" step, a ".fmj" on the command line handed to its OpenJob,
// a ".fmd" unpacked in the progress window, the folder picker for a missing
// resources directory - shows the main window when the sequence says so,
// and runs `ShutdownProgram` when the window closes.

#include <memory>

#include "shell/program_context.h"
#include "shell/startup.h"

namespace qarvel::app {

class MainWindow;

class DesktopProgram {
public:
    // env.settings must be set. Callbacks the caller left empty
    // (loadMaster, pickFolder) get the desktop's; createForms and openJob
    // are always the desktop's.
    explicit DesktopProgram(shell::StartupEnvironment env);
    ~DesktopProgram();
    DesktopProgram(const DesktopProgram&) = delete;
    DesktopProgram& operator=(const DesktopProgram&) = delete;

    // Main: the result says whether the program runs (the main window is
    // then shown) or ends.
    shell::StartupResult Start();

    // ShutdownProgram after the window closed its job: false keeps the
    // program running.
    bool Shutdown();

    MainWindow* Window() const { return m_window.get(); }
    shell::ProgramContext& Context() { return m_context; }

private:
    shell::ProgramContext m_context;
    shell::StartupEnvironment m_env;
    std::unique_ptr<shell::StartupSequence> m_sequence;
    std::unique_ptr<MainWindow> m_window;
    bool m_shutDown = false;
};

}  // namespace qarvel::app
