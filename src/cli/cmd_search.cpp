// qarvel-cli search: the database search from the command line. The basic
// search (--call, --owner, --city, --state, --channel), one station by key
// (--key), a hand query (--sql) or an archived one (--archive); the master
// is only ever read.

#include "cli/command_set.h"
#include "cli/master_file.h"
#include "cli/table_output.h"
#include "core/interrupt.h"
#include "search/query_builder.h"
#include "search/query_runner.h"

#include <iostream>
#include <memory>
#include <optional>

namespace qarvel::cli {
namespace {

struct SearchArgs {
    std::string db, call, owner, city, state, channel, sql, archive, format = "text";
    std::optional<long long> key;
};

std::string ChosenQuery(const SearchArgs& a) {
    const int kinds = (a.key ? 1 : 0) + (a.sql.empty() ? 0 : 1) + (a.archive.empty() ? 0 : 1);
    const bool basic = !(a.call + a.owner + a.city + a.state + a.channel).empty();
    if (kinds > 1 || (kinds == 1 && basic))
        throw UsageError("search", "give one of --key, --sql, --archive or the basic search's fields");
    if (a.key) return search::SearchByKeyQuery(*a.key);
    if (!a.sql.empty()) return search::ManualQuery(a.sql);
    if (!a.archive.empty()) {
        try {
            return search::ManualQuery(search::ReadArchive(a.archive));
        } catch (const std::runtime_error& e) {
            throw DataError(a.archive, std::string(e.what()).substr(a.archive.size() + 2));
        }
    }
    const auto query = search::BasicQuery({a.call, a.owner, a.city, a.state, a.channel});
    if (const auto* problem = std::get_if<std::string_view>(&query)) throw UsageError("--channel", std::string(*problem));
    return std::get<std::string>(query);
}

int RunSearch(const SearchArgs& a) {
    const std::string query = ChosenQuery(a);
    const MasterFile master(a.db);
    search::ResultTable result;
    try {
        result = search::RunQuery(master.Fdb(), query, 100000, core::InterruptFlag());
    } catch (const search::QueryRefused& e) {
        throw UsageError("--sql", e.what());
    }
    jobview::GridTable table;
    table.columns = result.columns;
    table.captions = result.columns;
    for (auto& row : result.rows) table.rows.emplace_back(row.begin(), row.end());
    PrintTable(table, a.format, /*jsonColumns=*/true);
    if (result.truncated) std::cerr << "qarvel-cli: search: the first " << result.rows.size() << " rows only\n";
    return kExitOk;
}

}  // namespace

void RegisterSearchCommands(CommandSet& commands) {
    auto a = std::make_shared<SearchArgs>();
    CLI::App* sub = commands.Add("search", "Search a master database (read only)", [a] { return RunSearch(*a); });
    sub->add_option("--db", a->db, "Master database (.fmd or .fdb)")->required();
    sub->add_option("--call", a->call, "Call sign contains this text");
    sub->add_option("--owner", a->owner, "Owner's name contains this text");
    sub->add_option("--city", a->city, "City served contains this text");
    sub->add_option("--state", a->state, "State contains this text");
    sub->add_option("--channel", a->channel, "FM channel, 200 to 300");
    sub->add_option("--key", a->key, "One station by its application_id");
    sub->add_option("--sql", a->sql, "A SELECT query in the Jet dialect (* and ? wildcards, [aliases])");
    sub->add_option("--archive", a->archive, "A query archive written by the desktop's Archive Query");
    sub->add_option("--format", a->format, "text, csv or json")->check(CLI::IsMember({"text", "csv", "json"}));
}

}  // namespace qarvel::cli
