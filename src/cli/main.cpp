// qarvel-cli: the command-line face of Qarvel's calculators, databases and
// studies. Every subcommand has --help; bad arguments give one line on stderr
// and exit status 2.

#include "cli/cmd_autoscan.h"
#include "cli/cmd_editing.h"
#include "cli/cmd_import.h"
#include "cli/cmd_job.h"
#include "cli/cmd_mapdata.h"
#include "cli/cmd_pack.h"
#include "cli/cmd_study.h"
#include "cli/command_set.h"
#include "core/prompt.h"

#include <iostream>

int main(int argc, char** argv) {
    using namespace qarvel::cli;
    CLI::App app{"Qarvel command line: FM spacing calculators, databases and studies",
                 "qarvel-cli"};
    app.require_subcommand(1);
    app.set_version_flag("--version", std::string("qarvel-cli ") + QARVEL_VERSION);
    CommandSet commands(app);
    RegisterCalculatorCommands(commands);
    RegisterJobCommands(commands);
    RegisterStudyCommands(commands);
    RegisterImportCommands(commands);
    RegisterMapDataCommands(commands);
    RegisterPackCommands(commands);
    RegisterAutoScanCommands(commands);
    RegisterMarkerCommands(commands);
    RegisterStationCommands(commands);

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        std::cerr << "qarvel-cli: " << e.what() << "\n";
        return kExitBadInput;
    }
    try {
        return commands.RunChosen();
    } catch (const UsageError& e) {
        std::cerr << "qarvel-cli: " << e.what() << "\n";
        return kExitBadInput;
    } catch (const std::exception& e) {
        std::cerr << "qarvel-cli: " << e.what() << "\n";
        return kExitFailed;
    }
}
