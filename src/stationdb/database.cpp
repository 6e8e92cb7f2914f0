#include "stationdb/database.h"

#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <utility>

#include "stationdb/jet_dialect.h"

namespace qarvel::stationdb {
namespace {

std::string Lower(std::string_view s) {
    std::string out(s);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return out;
}

std::string ErrorText(const std::string& engineMessage, const std::string& sql) {
    return engineMessage + " (in \"" + sql + "\")";
}

// A file name as an SQLite URI ("file:///abs/path?mode=ro"). Every file is
// opened this way, so that a name which happens to start with "file:" is still
// a plain name, and an attached master can be opened read-only. Characters
// with a meaning in URIs are escaped.
std::string FileUri(const std::filesystem::path& path, OpenMode mode) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string uri = path.is_absolute() ? "file://" : "file:";
    for (const char ch : path.string()) {
        const auto c = static_cast<unsigned char>(ch);
        if (c == '%' || c == '?' || c == '#' || c < 0x20) {
            uri += '%';
            uri += kHex[c >> 4];
            uri += kHex[c & 0x0F];
        } else {
            uri += ch;
        }
    }
    switch (mode) {
        case OpenMode::ReadOnly: return uri + "?mode=ro";
        case OpenMode::ReadWrite: return uri + "?mode=rw";
        case OpenMode::Create: return uri + "?mode=rwc";
    }
    return uri;
}

}  // namespace

DatabaseError::DatabaseError(int code, const std::string& engineMessage, const std::string& sql)
    : std::runtime_error(ErrorText(engineMessage, sql)), m_code(code), m_engineMessage(engineMessage), m_sql(sql) {}

// ---------------------------------------------------------------- Statement

Statement::Statement(sqlite3_stmt* stmt, std::string sql) : m_stmt(stmt), m_sql(std::move(sql)) {}

Statement::~Statement() { sqlite3_finalize(m_stmt); }

Statement::Statement(Statement&& other) noexcept
    : m_stmt(std::exchange(other.m_stmt, nullptr)),
      m_sql(std::move(other.m_sql)),
      m_lowerNames(std::move(other.m_lowerNames)) {}

Statement& Statement::operator=(Statement&& other) noexcept {
    if (this != &other) {
        sqlite3_finalize(m_stmt);
        m_stmt = std::exchange(other.m_stmt, nullptr);
        m_sql = std::move(other.m_sql);
        m_lowerNames = std::move(other.m_lowerNames);
    }
    return *this;
}

void Statement::RequireValid() const {
    if (!m_stmt) throw DatabaseError(SQLITE_MISUSE, "statement not prepared", m_sql);
}

void Statement::Check(int code) const {
    if (code == SQLITE_OK) return;
    sqlite3* db = sqlite3_db_handle(m_stmt);
    throw DatabaseError(sqlite3_extended_errcode(db), sqlite3_errmsg(db), m_sql);
}

Statement& Statement::Bind(int index, int value) {
    RequireValid();
    Check(sqlite3_bind_int(m_stmt, index, value));
    return *this;
}

Statement& Statement::Bind(int index, std::int64_t value) {
    RequireValid();
    Check(sqlite3_bind_int64(m_stmt, index, value));
    return *this;
}

Statement& Statement::Bind(int index, double value) {
    RequireValid();
    Check(sqlite3_bind_double(m_stmt, index, value));
    return *this;
}

Statement& Statement::Bind(int index, std::string_view text) {
    RequireValid();
    Check(sqlite3_bind_text64(m_stmt, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
    return *this;
}

Statement& Statement::Bind(int index, const char* text) {
    return text ? Bind(index, std::string_view(text)) : Bind(index, nullptr);
}

Statement& Statement::Bind(int index, std::nullptr_t) {
    RequireValid();
    Check(sqlite3_bind_null(m_stmt, index));
    return *this;
}

int Statement::ParameterIndex(std::string_view name) const {
    RequireValid();
    const int index = sqlite3_bind_parameter_index(m_stmt, std::string(name).c_str());
    if (index == 0) throw DatabaseError(SQLITE_RANGE, "no parameter named " + std::string(name), m_sql);
    return index;
}

int Statement::ParameterCount() const {
    RequireValid();
    return sqlite3_bind_parameter_count(m_stmt);
}

bool Statement::Step() {
    RequireValid();
    const int rc = sqlite3_step(m_stmt);
    if (rc == SQLITE_ROW) return true;
    if (rc == SQLITE_DONE) return false;
    const int code = sqlite3_extended_errcode(sqlite3_db_handle(m_stmt));
    const std::string message = sqlite3_errmsg(sqlite3_db_handle(m_stmt));
    sqlite3_reset(m_stmt);  // ready for another try
    throw DatabaseError(code, message, m_sql);
}

void Statement::Run() {
    while (Step()) {
    }
    Reset();
}

void Statement::Reset() {
    RequireValid();
    sqlite3_reset(m_stmt);  // the error of a failed step was reported by Step
}

void Statement::ClearBindings() {
    RequireValid();
    sqlite3_clear_bindings(m_stmt);
}

int Statement::ColumnCount() const {
    RequireValid();
    return sqlite3_column_count(m_stmt);
}

std::string Statement::ColumnName(int column) const {
    RequireValid();
    const char* name = sqlite3_column_name(m_stmt, column);
    return name ? name : "";
}

std::optional<int> Statement::FindColumn(std::string_view name) const {
    RequireValid();
    if (m_lowerNames.empty()) {
        const int count = sqlite3_column_count(m_stmt);
        for (int i = 0; i < count; ++i) m_lowerNames.push_back(Lower(ColumnName(i)));
    }
    const std::string wanted = Lower(name);
    const auto it = std::find(m_lowerNames.begin(), m_lowerNames.end(), wanted);
    if (it == m_lowerNames.end()) return std::nullopt;
    return static_cast<int>(it - m_lowerNames.begin());
}

int Statement::ColumnIndex(std::string_view name) const {
    const auto index = FindColumn(name);
    if (!index) throw DatabaseError(SQLITE_RANGE, "no column named " + std::string(name), m_sql);
    return *index;
}

ColumnType Statement::Type(int column) const {
    RequireValid();
    switch (sqlite3_column_type(m_stmt, column)) {
        case SQLITE_INTEGER: return ColumnType::Integer;
        case SQLITE_FLOAT: return ColumnType::Real;
        case SQLITE_TEXT: return ColumnType::Text;
        case SQLITE_BLOB: return ColumnType::Blob;
        default: return ColumnType::Null;
    }
}

bool Statement::IsNull(int column) const { return Type(column) == ColumnType::Null; }

int Statement::GetInt(int column) const {
    RequireValid();
    return sqlite3_column_int(m_stmt, column);
}

std::int64_t Statement::GetInt64(int column) const {
    RequireValid();
    return sqlite3_column_int64(m_stmt, column);
}

double Statement::GetDouble(int column) const {
    RequireValid();
    return sqlite3_column_double(m_stmt, column);
}

std::string Statement::GetText(int column) const {
    RequireValid();
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(m_stmt, column));
    if (!text) return {};
    return std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(m_stmt, column)));
}

std::optional<std::string> Statement::GetOptionalText(int column) const {
    if (IsNull(column)) return std::nullopt;
    return GetText(column);
}

// ----------------------------------------------------------------- Database

Database::Database(const std::filesystem::path& path, OpenMode mode) : m_path(path), m_mode(mode) {
    int flags = SQLITE_OPEN_URI;
    switch (mode) {
        case OpenMode::ReadOnly: flags |= SQLITE_OPEN_READONLY; break;
        case OpenMode::ReadWrite: flags |= SQLITE_OPEN_READWRITE; break;
        case OpenMode::Create: flags |= SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE; break;
    }
    const int rc = sqlite3_open_v2(FileUri(path, mode).c_str(), &m_db, flags, nullptr);
    if (rc != SQLITE_OK) {
        const std::string message = m_db ? sqlite3_errmsg(m_db) : sqlite3_errstr(rc);
        sqlite3_close(m_db);
        m_db = nullptr;
        throw DatabaseError(rc, message, path.string());
    }
    sqlite3_extended_result_codes(m_db, 1);
    sqlite3_busy_timeout(m_db, 5000);
    try {
        InstallJetDialect(m_db);
    } catch (const std::exception& e) {
        sqlite3_close(m_db);
        m_db = nullptr;
        throw DatabaseError(SQLITE_ERROR, e.what(), path.string());
    }
}

Database::~Database() { Close(); }

Database::Database(Database&& other) noexcept
    : m_db(std::exchange(other.m_db, nullptr)),
      m_path(std::move(other.m_path)),
      m_mode(other.m_mode),
      m_savepointCounter(other.m_savepointCounter) {}

Database& Database::operator=(Database&& other) noexcept {
    if (this != &other) {
        Close();
        m_db = std::exchange(other.m_db, nullptr);
        m_path = std::move(other.m_path);
        m_mode = other.m_mode;
        m_savepointCounter = other.m_savepointCounter;
    }
    return *this;
}

void Database::Close() {
    // sqlite3_close_v2 defers the close until stray statements are finalised,
    // so a forgotten Statement cannot leave the file locked forever.
    sqlite3_close_v2(m_db);
    m_db = nullptr;
}

void Database::RequireOpen() const {
    if (!m_db) throw DatabaseError(SQLITE_MISUSE, "database not open", m_path.string());
}

Statement Database::Prepare(std::string_view jetSql) const {
    RequireOpen();
    const std::string sql = TranslateJetSql(jetSql);
    sqlite3_stmt* stmt = nullptr;
    const int rc = sqlite3_prepare_v2(m_db, sql.c_str(), static_cast<int>(sql.size()), &stmt, nullptr);
    if (rc != SQLITE_OK) throw DatabaseError(sqlite3_extended_errcode(m_db), sqlite3_errmsg(m_db), std::string(jetSql));
    if (!stmt) throw DatabaseError(SQLITE_MISUSE, "no statement in text", std::string(jetSql));
    return Statement(stmt, std::string(jetSql));
}

void Database::Exec(std::string_view jetSql) {
    RequireOpen();
    const std::string sql = TranslateJetSql(jetSql);
    char* error = nullptr;
    const int rc = sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, &error);
    if (rc != SQLITE_OK) {
        const std::string message = error ? error : sqlite3_errstr(rc);
        sqlite3_free(error);
        throw DatabaseError(sqlite3_extended_errcode(m_db), message, std::string(jetSql));
    }
}

std::int64_t Database::LastInsertRowId() const {
    RequireOpen();
    return sqlite3_last_insert_rowid(m_db);
}

int Database::Changes() const {
    RequireOpen();
    return sqlite3_changes(m_db);
}

std::vector<std::string> Database::TableNames(std::string_view schema) const {
    // substr rather than LIKE: like() speaks the Jet dialect on this connection.
    Statement stmt = Prepare(
        "SELECT name FROM " + QuoteIdentifier(schema) +
        ".sqlite_master WHERE type = 'table' AND substr(name, 1, 7) <> 'sqlite_' ORDER BY rowid");
    std::vector<std::string> names;
    while (stmt.Step()) names.push_back(stmt.GetText(0));
    return names;
}

std::vector<std::string> Database::ColumnNames(std::string_view table, std::string_view schema) const {
    Statement stmt = Prepare("SELECT name FROM pragma_table_info(?1, ?2) ORDER BY cid");
    stmt.BindAll(table, schema);
    std::vector<std::string> names;
    while (stmt.Step()) names.push_back(stmt.GetText(0));
    return names;
}

bool Database::HasTable(std::string_view table, std::string_view schema) const {
    const std::string wanted = Lower(table);
    const auto names = TableNames(schema);
    return std::any_of(names.begin(), names.end(), [&](const std::string& n) { return Lower(n) == wanted; });
}

bool Database::HasColumn(std::string_view table, std::string_view column, std::string_view schema) const {
    const std::string wanted = Lower(column);
    const auto names = ColumnNames(table, schema);
    return std::any_of(names.begin(), names.end(), [&](const std::string& n) { return Lower(n) == wanted; });
}

void Database::Attach(const std::filesystem::path& path, std::string_view schema, bool readOnly) {
    RequireOpen();
    // ATTACH would create a missing file; a missing master is an error.
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec))
        throw DatabaseError(SQLITE_CANTOPEN, "no such file", path.string());
    const std::string uri = FileUri(path, readOnly ? OpenMode::ReadOnly : OpenMode::ReadWrite);
    Statement stmt = Prepare("ATTACH DATABASE ?1 AS " + QuoteIdentifier(schema));
    stmt.Bind(1, uri);
    stmt.Run();
}

void Database::Detach(std::string_view schema) { Exec("DETACH DATABASE " + QuoteIdentifier(schema)); }

std::string Database::NextSavepointName() { return "qarvel_sp_" + std::to_string(++m_savepointCounter); }

// ------------------------------------------------------- Transaction, Savepoint

Transaction::Transaction(Database& db) : m_db(&db) { m_db->Exec("BEGIN"); }

Transaction::~Transaction() {
    if (!m_open) return;
    try {
        Rollback();
    } catch (...) {
        // A destructor must not throw; SQLite rolls back on close anyway.
    }
}

void Transaction::Commit() {
    if (!m_open) return;
    m_db->Exec("COMMIT");
    m_open = false;
}

void Transaction::Rollback() {
    if (!m_open) return;
    m_open = false;
    m_db->Exec("ROLLBACK");
}

Savepoint::Savepoint(Database& db) : m_db(&db), m_name(db.NextSavepointName()) {
    m_db->Exec("SAVEPOINT " + m_name);
}

Savepoint::~Savepoint() {
    if (!m_open) return;
    try {
        Rollback();
    } catch (...) {
        // As for Transaction: never throw from a destructor.
    }
}

void Savepoint::Commit() {
    if (!m_open) return;
    m_db->Exec("RELEASE " + m_name);
    m_open = false;
}

void Savepoint::Rollback() {
    if (!m_open) return;
    m_open = false;
    m_db->Exec("ROLLBACK TO " + m_name + "; RELEASE " + m_name);
}

std::string QuoteIdentifier(std::string_view name) {
    std::string out = "\"";
    for (const char c : name) {
        out += c;
        if (c == '"') out += '"';
    }
    return out + "\"";
}

std::string QuoteLiteral(std::string_view text) {
    std::string out = "'";
    for (const char c : text) {
        out += c;
        if (c == '\'') out += '\'';
    }
    return out + "'";
}

}  // namespace qarvel::stationdb
