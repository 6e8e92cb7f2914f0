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
#include "core/csv_text.h"
#include "core/interrupt.h"
#include "core/prompt.h"

#include <cstdio>
#include <iostream>
#include <string>

namespace {

// One line for the terminal: the first line of a message, control bytes
// made harmless.
std::string OneLine(const std::string& text) {
    return qarvel::core::TerminalText(text.substr(0, text.find('\n')));
}

int Fail(int status, const std::string& message) {
    std::cerr << "qarvel-cli: " << OneLine(message) << "\n";
    return status;
}

// What was printed must have reached its file: a full disk or a closed pipe
// is a failure, not a success.
int CheckOutput(int status) {
    std::cout.flush();
    if (!std::cout || std::fflush(stdout) != 0 || std::ferror(stdout)) {
        return Fail(qarvel::cli::kExitIo, "standard output: write failed");
    }
    return status;
}

}  // namespace

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
    RegisterSearchCommands(commands);
    // Write errors on standard output are found by CheckOutput, not thrown.
    std::cout.exceptions(std::ios::goodbit);

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        return Fail(kExitBadInput, e.what());
    }
    qarvel::core::InstallInterruptHandlers();
    int status = kExitFailed;
    try {
        status = commands.RunChosen();
    } catch (const UsageError& e) {
        return Fail(kExitBadInput, e.what());
    } catch (const DataError& e) {
        return Fail(kExitBadData, e.what());
    } catch (const std::exception& e) {
        if (qarvel::core::Interrupted()) return Fail(kExitInterrupted, "interrupted");
        return Fail(kExitFailed, e.what());
    }
    if (qarvel::core::Interrupted()) return Fail(kExitInterrupted, "interrupted");
    return CheckOutput(status);
}
