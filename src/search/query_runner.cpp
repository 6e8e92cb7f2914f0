#include "search/query_runner.h"

#include <sqlite3.h>

#include <memory>

#include "stationdb/database.h"
#include "stationdb/jet_dialect.h"

namespace qarvel::search {

namespace {

// Reading only: the SELECT itself, the columns it reads, functions, and the
// common table expressions a hand query may use.
int ReadOnlyAuthorizer(void*, int action, const char*, const char*, const char*, const char*) {
    switch (action) {
        case SQLITE_SELECT:
        case SQLITE_READ:
        case SQLITE_FUNCTION:
        case SQLITE_RECURSIVE:
            return SQLITE_OK;
        default:
            return SQLITE_DENY;
    }
}

bool OnlyBlanksAndSemicolons(const char* tail) {
    for (; tail && *tail; ++tail)
        if (*tail != ';' && *tail != ' ' && *tail != '\t' && *tail != '\r' && *tail != '\n') return false;
    return true;
}

std::string Trimmed(const unsigned char* text) {
    std::string value(reinterpret_cast<const char*>(text));
    const auto first = value.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    return value.substr(first, value.find_last_not_of(' ') - first + 1);
}

Value ColumnValue(sqlite3_stmt* statement, int column) {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_INTEGER: return static_cast<std::int64_t>(sqlite3_column_int64(statement, column));
        case SQLITE_FLOAT: return sqlite3_column_double(statement, column);
        case SQLITE_NULL: return std::monostate{};
        default: return Trimmed(sqlite3_column_text(statement, column));
    }
}

}  // namespace

ResultTable RunQuery(const std::filesystem::path& fdb, const std::string& jetSql, std::size_t maxRows,
                     const std::atomic<bool>* cancel) {
    stationdb::Database db(fdb, stationdb::OpenMode::ReadOnly);
    const std::string sql = stationdb::TranslateJetSql(jetSql);
    sqlite3_set_authorizer(db.Handle(), ReadOnlyAuthorizer, nullptr);
    sqlite3_stmt* raw = nullptr;
    const char* tail = nullptr;
    const int rc = sqlite3_prepare_v2(db.Handle(), sql.c_str(), static_cast<int>(sql.size()), &raw, &tail);
    std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(raw, sqlite3_finalize);
    if (rc == SQLITE_AUTH) throw QueryRefused("only reading queries may run on the master database");
    if (rc != SQLITE_OK) throw QueryRefused(std::string("the query cannot run: ") + sqlite3_errmsg(db.Handle()));
    if (!statement) throw QueryRefused("the query is empty");
    if (!OnlyBlanksAndSemicolons(tail)) throw QueryRefused("only one statement may run");
    if (!sqlite3_stmt_readonly(statement.get())) throw QueryRefused("only reading queries may run on the master database");

    ResultTable table;
    for (int c = 0; c < sqlite3_column_count(statement.get()); ++c)
        table.columns.emplace_back(sqlite3_column_name(statement.get(), c));
    int step = SQLITE_ROW;
    while ((step = sqlite3_step(statement.get())) == SQLITE_ROW) {
        if (table.rows.size() == maxRows || (cancel && cancel->load())) {
            table.truncated = true;
            break;
        }
        auto& row = table.rows.emplace_back();
        for (int c = 0; c < static_cast<int>(table.columns.size()); ++c) row.push_back(ColumnValue(statement.get(), c));
    }
    if (step != SQLITE_ROW && step != SQLITE_DONE)
        throw QueryRefused(std::string("the query failed: ") + sqlite3_errmsg(db.Handle()));
    return table;
}

}  // namespace qarvel::search
