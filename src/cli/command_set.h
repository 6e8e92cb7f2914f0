#pragma once
// The subcommands of qarvel-cli. Each command file registers its
// subcommands with a function to run once the arguments are parsed.

#include <CLI/CLI.hpp>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace qarvel::cli {

// Exit statuses shared by every subcommand.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;     // the work was done and the answer is "no"/failed
inline constexpr int kExitBadInput = 2;   // bad arguments
inline constexpr int kExitBadData = 3;    // an input file or its contents are damaged
inline constexpr int kExitIo = 4;         // reading or writing failed (disk full, output closed)
inline constexpr int kExitInterrupted = 130;  // stopped by SIGINT or SIGTERM

// Bad user input: one line on stderr naming the argument, exit status 2.
class UsageError : public std::runtime_error {
public:
    UsageError(const std::string& argument, const std::string& problem)
        : std::runtime_error(argument + ": " + problem) {}
};

// A damaged input file: one line "qarvel-cli: FILE: what is wrong", exit status 3.
class DataError : public std::runtime_error {
public:
    DataError(const std::string& file, const std::string& problem) : std::runtime_error(file + ": " + problem) {}
};

class CommandSet {
public:
    explicit CommandSet(CLI::App& app) : m_app(app) {}
    CLI::App& App() { return m_app; }
    // Adds a subcommand; run() is called when it was chosen.
    CLI::App* Add(const std::string& name, const std::string& description,
                  std::function<int()> run);
    // Adds a subcommand that only groups others ("db check", "import csv"),
    // or returns the group of that name when it exists already.
    CLI::App* AddGroup(const std::string& name, const std::string& description);
    // Adds a subcommand under a group.
    CLI::App* Add(CLI::App* group, const std::string& name, const std::string& description,
                  std::function<int()> run);
    // Runs the chosen subcommand; 2 when none was chosen.
    int RunChosen() const;

private:
    struct Entry {
        CLI::App* sub;
        std::function<int()> run;
    };
    CLI::App& m_app;
    std::vector<Entry> m_entries;
};

void RegisterCalculatorCommands(CommandSet& commands);
void RegisterSearchCommands(CommandSet& commands);

}  // namespace qarvel::cli
