#pragma once
// A small RAII layer over SQLite for the station databases (master, job,
// local). Every connection gets the Jet dialect (jet_dialect.h) installed, and
// every SQL text goes through TranslateJetSql, so the program's fixed query
// texts run as written. Errors are thrown as DatabaseError; public routines of
// the system catch them under the error trap.
//
// Threading: a Database and its Statements belong to one thread at a time.
// A Statement must not outlive the Database that prepared it.

#include <concepts>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace qarvel::stationdb {

// An SQLite failure. what() names SQLite's message and the statement text
// (or the file) it concerned.
class DatabaseError : public std::runtime_error {
public:
    DatabaseError(int code, const std::string& engineMessage, const std::string& sql);
    int Code() const { return m_code; }                  // SQLite's extended result code
    const std::string& EngineMessage() const { return m_engineMessage; }
    const std::string& Sql() const { return m_sql; }     // statement text or file name

private:
    int m_code;
    std::string m_engineMessage;
    std::string m_sql;
};

enum class OpenMode {
    ReadOnly,   // "Mode=Read": searching a master database
    ReadWrite,  // "Mode=Read|Write": the file must exist
    Create,     // read-write, the file is created when missing
};

enum class ColumnType { Integer, Real, Text, Blob, Null };

// One prepared statement. Reuse it for many rows: Bind..., Step until false,
// Reset, bind again. Parameters are numbered from 1 (SQLite's ?NNN); result
// columns from 0. Names are matched without regard to case.
class Statement {
public:
    Statement() = default;
    ~Statement();
    Statement(Statement&& other) noexcept;
    Statement& operator=(Statement&& other) noexcept;
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    // Parameters, 1-based.
    Statement& Bind(int index, int value);
    Statement& Bind(int index, std::int64_t value);
    Statement& Bind(int index, double value);
    Statement& Bind(int index, std::string_view text);  // copied by SQLite
    Statement& Bind(int index, const char* text);       // nullptr binds NULL
    Statement& Bind(int index, const std::string& text) { return Bind(index, std::string_view(text)); }
    Statement& Bind(int index, std::nullptr_t);
    // Other integer types (long long, unsigned, std::size_t, bool): as 64-bit.
    template <std::integral T>
    Statement& Bind(int index, T value) {
        return Bind(index, static_cast<std::int64_t>(value));
    }
    template <class T>
    Statement& Bind(int index, const std::optional<T>& value) {
        return value ? Bind(index, *value) : Bind(index, nullptr);
    }
    // Binds the arguments to parameters 1, 2, ... in order.
    template <class... Args>
    Statement& BindAll(const Args&... args) {
        int index = 0;
        (Bind(++index, args), ...);
        return *this;
    }
    // Index of a named parameter (":name", "@name", "$name"); throws when absent.
    int ParameterIndex(std::string_view name) const;
    int ParameterCount() const;

    // Advances to the next row: true when a row is ready, false when done.
    bool Step();
    // Steps to the end, for statements that return no rows; then resets.
    void Run();
    // Rewinds for another run; bindings stay unless cleared.
    void Reset();
    void ClearBindings();

    // Result columns, 0-based.
    int ColumnCount() const;
    std::string ColumnName(int column) const;
    // Index of the result column called name (case-insensitive), or nullopt.
    std::optional<int> FindColumn(std::string_view name) const;
    // As FindColumn, throwing a DatabaseError naming the column when absent.
    int ColumnIndex(std::string_view name) const;

    ColumnType Type(int column) const;
    bool IsNull(int column) const;
    int GetInt(int column) const;                // NULL reads as 0
    std::int64_t GetInt64(int column) const;     // NULL reads as 0
    double GetDouble(int column) const;          // NULL reads as 0.0
    std::string GetText(int column) const;       // NULL reads as ""
    std::optional<std::string> GetOptionalText(int column) const;

    bool IsNull(std::string_view name) const { return IsNull(ColumnIndex(name)); }
    int GetInt(std::string_view name) const { return GetInt(ColumnIndex(name)); }
    std::int64_t GetInt64(std::string_view name) const { return GetInt64(ColumnIndex(name)); }
    double GetDouble(std::string_view name) const { return GetDouble(ColumnIndex(name)); }
    std::string GetText(std::string_view name) const { return GetText(ColumnIndex(name)); }
    // Plain-literal overloads so that GetInt("lat") picks the by-name form.
    bool IsNull(const char* name) const { return IsNull(std::string_view(name)); }
    int GetInt(const char* name) const { return GetInt(std::string_view(name)); }
    std::int64_t GetInt64(const char* name) const { return GetInt64(std::string_view(name)); }
    double GetDouble(const char* name) const { return GetDouble(std::string_view(name)); }
    std::string GetText(const char* name) const { return GetText(std::string_view(name)); }

    // The text as given to Prepare (before dialect translation).
    const std::string& Sql() const { return m_sql; }
    bool Valid() const { return m_stmt != nullptr; }

private:
    friend class Database;
    Statement(sqlite3_stmt* stmt, std::string sql);
    void Check(int code) const;
    void RequireValid() const;

    sqlite3_stmt* m_stmt = nullptr;
    std::string m_sql;
    mutable std::vector<std::string> m_lowerNames;  // filled on first by-name read
};

class Transaction;
class Savepoint;

// One open database file.
class Database {
public:
    Database() = default;
    // Opens path; throws DatabaseError when it cannot. ReadOnly and ReadWrite
    // never create a file.
    Database(const std::filesystem::path& path, OpenMode mode);
    ~Database();
    Database(Database&& other) noexcept;
    Database& operator=(Database&& other) noexcept;
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    bool IsOpen() const { return m_db != nullptr; }
    void Close();  // finalise every Statement first
    const std::filesystem::path& Path() const { return m_path; }
    bool ReadOnly() const { return m_mode == OpenMode::ReadOnly; }

    // Prepares one statement in the Jet dialect (translated by TranslateJetSql).
    // Only the first statement of the text is prepared.
    Statement Prepare(std::string_view jetSql) const;
    // Runs one or more statements that return no rows.
    void Exec(std::string_view jetSql);
    // Prepare, bind the arguments to ?1, ?2..., run to the end.
    template <class... Args>
    void Run(std::string_view jetSql, const Args&... args) {
        Statement stmt = Prepare(jetSql);
        stmt.BindAll(args...);
        stmt.Run();
    }

    std::int64_t LastInsertRowId() const;
    int Changes() const;  // rows changed by the last INSERT/UPDATE/DELETE

    // Table names of a schema ("main" or an attached name), SQLite's own
    // internal tables left out, in creation order.
    std::vector<std::string> TableNames(std::string_view schema = "main") const;
    // Column names of a table, in column order; empty when the table is absent.
    std::vector<std::string> ColumnNames(std::string_view table,
                                         std::string_view schema = "main") const;
    bool HasTable(std::string_view table, std::string_view schema = "main") const;
    bool HasColumn(std::string_view table, std::string_view column,
                   std::string_view schema = "main") const;

    // ATTACH DATABASE path AS schema (read-only when asked); the file must
    // exist. Detach undoes it.
    void Attach(const std::filesystem::path& path, std::string_view schema, bool readOnly = true);
    void Detach(std::string_view schema);

    sqlite3* Handle() const { return m_db; }

private:
    friend class Savepoint;
    void RequireOpen() const;
    std::string NextSavepointName();

    sqlite3* m_db = nullptr;
    std::filesystem::path m_path;
    OpenMode m_mode = OpenMode::ReadOnly;
    int m_savepointCounter = 0;
};

// BEGIN ... COMMIT; rolled back by the destructor unless committed. Not
// nestable: use Savepoint inside a transaction.
class Transaction {
public:
    explicit Transaction(Database& db);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void Commit();
    void Rollback();

private:
    Database* m_db;
    bool m_open = true;
};

// SAVEPOINT ... RELEASE; nestable, and usable with or without an enclosing
// transaction. The destructor rolls back to the savepoint unless committed,
// so an edit abandoned half-way leaves nothing behind.
class Savepoint {
public:
    explicit Savepoint(Database& db);
    ~Savepoint();
    Savepoint(const Savepoint&) = delete;
    Savepoint& operator=(const Savepoint&) = delete;
    void Commit();    // RELEASE
    void Rollback();  // ROLLBACK TO + RELEASE

private:
    Database* m_db;
    std::string m_name;
    bool m_open = true;
};

// Quotes an identifier for SQL text ("name" with inner quotes doubled).
std::string QuoteIdentifier(std::string_view name);
// Quotes a text value for SQL text ('text' with inner quotes doubled). For
// the few places where binding is not possible (ATTACH in some engines,
// generated script text); values from users are bound, not quoted.
std::string QuoteLiteral(std::string_view text);

}  // namespace qarvel::stationdb
