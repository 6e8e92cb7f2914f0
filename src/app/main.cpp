// qarvel: the desktop program. Takes one file path: a job (".fmj") to open
// or a master database (".fmd") to load.

#include <QApplication>
#include <QSettings>

#include "app/mainwin/desktop_program.h"
#include "app/mainwin/message_box_prompt.h"
#include "core/error_trap.h"
#include "core/prompt.h"
#include "shell/settings.h"
#include "shell/startup.h"

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Qarvel"));
    qarvel::core::StderrErrorSink errors;
    const qarvel::core::ScopedErrorSink errorScope(errors);
    qarvel::app::MessageBoxPrompt prompt;
    const qarvel::core::ScopedPrompt promptScope(prompt);

    const auto store = qarvel::shell::OpenUserSettings();
    qarvel::shell::StartupEnvironment env = qarvel::shell::SystemEnvironment();
    env.settings = store.get();
    for (int i = 1; i < argc; ++i) env.arguments.emplace_back(argv[i]);

    qarvel::app::DesktopProgram program(env);
    if (!program.Start().showMainWindow) return 1;
    return QApplication::exec();
}
