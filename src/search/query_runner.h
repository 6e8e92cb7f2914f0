#pragma once
// Runs one search query on a master database, which it can only read: the
// file is opened read-only, exactly one statement runs, and an authorizer
// lets through nothing but reading (no writing, ATTACH, PRAGMA or second
// statement), so no search, however typed, can change the master.

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace qarvel::search {

using Value = std::variant<std::monostate, std::int64_t, double, std::string>;

struct ResultTable {
    std::vector<std::string> columns;  // result column names (the aliases)
    std::vector<std::vector<Value>> rows;
    bool truncated = false;  // more rows than the limit
};

// A query that may not run, with the one-line reason.
class QueryRefused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Runs `jetSql` (Jet dialect) on the database file `fdb` and returns at most
// maxRows rows; text values are trimmed, as the results table keeps them.
// Throws QueryRefused for a query that would write, attach, set a pragma or
// run a second statement, or that SQLite cannot prepare. `cancel` stops a
// long search (the rows read so far are returned, truncated set).
ResultTable RunQuery(const std::filesystem::path& fdb, const std::string& jetSql, std::size_t maxRows = 100000,
                     const std::atomic<bool>* cancel = nullptr);

}  // namespace qarvel::search
