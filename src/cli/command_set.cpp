#include "cli/command_set.h"

#include <iostream>

namespace qarvel::cli {

CLI::App* CommandSet::Add(const std::string& name, const std::string& description,
                          std::function<int()> run) {
    return Add(&m_app, name, description, std::move(run));
}

CLI::App* CommandSet::AddGroup(const std::string& name, const std::string& description) {
    // Several command files add to one group ("import", "db", "job"): the
    // first one makes it, the others get it back.
    for (CLI::App* existing : m_app.get_subcommands({})) {
        if (existing->get_name() == name) return existing;
    }
    CLI::App* group = m_app.add_subcommand(name, description);
    group->require_subcommand(1);
    return group;
}

CLI::App* CommandSet::Add(CLI::App* group, const std::string& name, const std::string& description,
                          std::function<int()> run) {
    CLI::App* sub = group->add_subcommand(name, description);
    m_entries.push_back({sub, std::move(run)});
    return sub;
}

int CommandSet::RunChosen() const {
    for (const Entry& entry : m_entries) {
        if (entry.sub->parsed()) return entry.run();
    }
    std::cerr << "qarvel-cli: no command given; see qarvel-cli --help\n";
    return kExitBadInput;
}

}  // namespace qarvel::cli
