// The SQLite wrapper: opening modes, bound values and typed reads, statement
// reuse, errors that name the statement, transactions and savepoints,
// introspection, ATTACH.

#include "stationdb/database.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

namespace qarvel::stationdb {
namespace {

namespace fs = std::filesystem;

int CountRows(const Database& db) {
    Statement count = db.Prepare("SELECT count(*) FROM t");
    count.Step();
    return count.GetInt(0);
}

class DatabaseTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = qarvel::testing_support::FreshTestFolder();
    }
    void TearDown() override { fs::remove_all(m_dir); }

    fs::path File(const std::string& name) const { return m_dir / name; }

    // A file with one table of every kind of value.
    Database MakeSample(const std::string& name = "sample.db") {
        Database db(File(name), OpenMode::Create);
        db.Exec("CREATE TABLE t (id int PRIMARY KEY, big int, x float, name varchar(20), note varchar(20))");
        return db;
    }

    fs::path m_dir;
};

TEST_F(DatabaseTest, ReadOnlyAndReadWriteNeverCreateAFile) {
    EXPECT_THROW(Database(File("missing.db"), OpenMode::ReadOnly), DatabaseError);
    EXPECT_THROW(Database(File("missing.db"), OpenMode::ReadWrite), DatabaseError);
    EXPECT_FALSE(fs::exists(File("missing.db")));
    Database created(File("missing.db"), OpenMode::Create);
    EXPECT_TRUE(fs::exists(File("missing.db")));
}

TEST_F(DatabaseTest, OpenErrorNamesTheFile) {
    try {
        Database db(File("nope.db"), OpenMode::ReadOnly);
        FAIL() << "opened a missing file";
    } catch (const DatabaseError& e) {
        EXPECT_NE(std::string(e.what()).find("nope.db"), std::string::npos) << e.what();
    }
}

TEST_F(DatabaseTest, FileNamesWithUriCharactersAreKeptAsTheyAre) {
    const fs::path odd = File("a?b#c%41 d.db");
    { Database db(odd, OpenMode::Create); db.Exec("CREATE TABLE t (x int)"); }
    EXPECT_TRUE(fs::exists(odd));
    EXPECT_FALSE(fs::exists(File("a")));
    Database again(odd, OpenMode::ReadOnly);
    EXPECT_TRUE(again.HasTable("t"));
}

TEST_F(DatabaseTest, BoundValuesReadBackByIndexAndByName) {
    Database db = MakeSample();
    const std::int64_t big = std::int64_t{1} << 40;
    db.Prepare("INSERT INTO t VALUES (?1, ?2, ?3, ?4, ?5)").BindAll(7, big, 2.5, "O'Brien \"FM\"", nullptr).Run();
    db.Prepare("INSERT INTO t (id, big) VALUES (?1, ?2)").BindAll(8u, std::numeric_limits<long long>::min()).Run();

    Statement row = db.Prepare("SELECT id, big, x, name, note FROM t");
    ASSERT_TRUE(row.Step());
    EXPECT_EQ(row.GetInt(0), 7);
    EXPECT_EQ(row.GetInt64("BIG"), big);
    EXPECT_DOUBLE_EQ(row.GetDouble("X"), 2.5);
    EXPECT_EQ(row.GetText("Name"), "O'Brien \"FM\"");
    EXPECT_TRUE(row.IsNull("note"));
    EXPECT_EQ(row.GetText("note"), "");
    EXPECT_EQ(row.GetOptionalText(4), std::nullopt);
    EXPECT_EQ(row.Type(1), ColumnType::Integer);
    EXPECT_EQ(row.Type(2), ColumnType::Real);
    EXPECT_EQ(row.Type(3), ColumnType::Text);
    EXPECT_EQ(row.FindColumn("nosuch"), std::nullopt);
    ASSERT_TRUE(row.Step());
    EXPECT_EQ(row.GetInt64(1), std::numeric_limits<long long>::min());
    EXPECT_FALSE(row.Step());
}

TEST_F(DatabaseTest, OptionalAndNamedParameters) {
    Database db = MakeSample();
    Statement insert = db.Prepare("INSERT INTO t (id, name) VALUES (:id, :name)");
    EXPECT_EQ(insert.ParameterCount(), 2);
    insert.Bind(insert.ParameterIndex(":id"), 1).Bind(insert.ParameterIndex(":name"), std::optional<std::string>());
    insert.Run();
    Statement row = db.Prepare("SELECT name FROM t WHERE id = 1");
    ASSERT_TRUE(row.Step());
    EXPECT_TRUE(row.IsNull(0));
    EXPECT_THROW(insert.ParameterIndex(":absent"), DatabaseError);
}

TEST_F(DatabaseTest, PreparedStatementIsReusedAcrossRows) {
    Database db = MakeSample();
    Statement insert = db.Prepare("INSERT INTO t (id, name) VALUES (?1, ?2)");
    for (int i = 1; i <= 100; ++i) insert.BindAll(i, "s" + std::to_string(i)).Run();

    Statement lookup = db.Prepare("SELECT name FROM t WHERE id = ?1");
    for (int id : {5, 77, 100}) {
        lookup.Bind(1, id);
        ASSERT_TRUE(lookup.Step());
        EXPECT_EQ(lookup.GetText(0), "s" + std::to_string(id));
        lookup.Reset();
    }
    EXPECT_EQ(CountRows(db), 100);
}

TEST_F(DatabaseTest, ErrorsNameTheStatementAndSqliteMessage) {
    Database db = MakeSample();
    try {
        db.Prepare("SELECT * FROM nosuch");
        FAIL() << "prepared a query on a missing table";
    } catch (const DatabaseError& e) {
        const std::string what = e.what();
        EXPECT_NE(what.find("no such table: nosuch"), std::string::npos) << what;
        EXPECT_NE(what.find("SELECT * FROM nosuch"), std::string::npos) << what;
    }

    db.Run("INSERT INTO t (id) VALUES (1)");
    Statement duplicate = db.Prepare("INSERT INTO t (id) VALUES (1)");
    try {
        duplicate.Run();
        FAIL() << "inserted a duplicate key";
    } catch (const DatabaseError& e) {
        EXPECT_NE(std::string(e.what()).find("UNIQUE constraint failed"), std::string::npos) << e.what();
        EXPECT_EQ(e.Sql(), "INSERT INTO t (id) VALUES (1)");
    }
    // The statement is usable again after the failure.
    duplicate = db.Prepare("INSERT INTO t (id) VALUES (2)");
    EXPECT_NO_THROW(duplicate.Run());

    Statement row = db.Prepare("SELECT id FROM t");
    ASSERT_TRUE(row.Step());
    EXPECT_THROW(row.GetInt("lat"), DatabaseError);
    EXPECT_THROW(db.Exec("CREATE TABLE t (x int)"), DatabaseError);
}

TEST_F(DatabaseTest, ReadOnlyConnectionRefusesWrites) {
    { MakeSample(); }
    Database db(File("sample.db"), OpenMode::ReadOnly);
    EXPECT_TRUE(db.ReadOnly());
    EXPECT_THROW(db.Run("INSERT INTO t (id) VALUES (1)"), DatabaseError);
}

TEST_F(DatabaseTest, TransactionRollsBackUnlessCommitted) {
    Database db = MakeSample();
    {
        Transaction t(db);
        db.Run("INSERT INTO t (id) VALUES (1)");
    }
    EXPECT_EQ(CountRows(db), 0);
    {
        Transaction t(db);
        db.Run("INSERT INTO t (id) VALUES (2)");
        t.Commit();
    }
    EXPECT_EQ(CountRows(db), 1);
}

TEST_F(DatabaseTest, SavepointsNestAndRollBackOnlyTheirOwnWork) {
    Database db = MakeSample();
    {
        Savepoint outer(db);
        db.Run("INSERT INTO t (id) VALUES (1)");
        {
            Savepoint inner(db);
            db.Run("INSERT INTO t (id) VALUES (2)");
        }  // abandoned: row 2 goes
        {
            Savepoint inner(db);
            db.Run("INSERT INTO t (id) VALUES (3)");
            inner.Commit();
        }
        outer.Commit();
    }
    Statement ids = db.Prepare("SELECT group_concat(id) FROM (SELECT id FROM t ORDER BY id)");
    ASSERT_TRUE(ids.Step());
    EXPECT_EQ(ids.GetText(0), "1,3");

    {
        Savepoint abandoned(db);
        db.Run("DELETE FROM t");
    }
    EXPECT_EQ(CountRows(db), 2);
    // No transaction is left open behind the savepoints.
    EXPECT_NO_THROW(db.Exec("BEGIN; COMMIT;"));
}

TEST_F(DatabaseTest, IntrospectionIgnoresCase) {
    Database db = MakeSample();
    db.Exec("CREATE TABLE Second (A int, b text); CREATE INDEX second_a ON Second (A)");
    EXPECT_EQ(db.TableNames(), (std::vector<std::string>{"t", "Second"}));
    EXPECT_EQ(db.ColumnNames("second"), (std::vector<std::string>{"A", "b"}));
    EXPECT_TRUE(db.HasTable("SECOND"));
    EXPECT_TRUE(db.HasColumn("t", "NAME"));
    EXPECT_FALSE(db.HasColumn("t", "lat"));
    EXPECT_TRUE(db.ColumnNames("nosuch").empty());
}

TEST_F(DatabaseTest, AttachReadOnlyAndDetach) {
    {
        Database master(File("master.db"), OpenMode::Create);
        master.Exec("CREATE TABLE party (party_id int PRIMARY KEY, party_name text);"
                    "INSERT INTO party VALUES (9, 'Owner Nine')");
    }
    Database job = MakeSample("job.db");
    job.Attach(File("master.db"), "link_to_party");
    EXPECT_EQ(job.TableNames("link_to_party"), std::vector<std::string>{"party"});
    Statement owner = job.Prepare("SELECT party_name FROM link_to_party.party WHERE party_id = ?1");
    owner.Bind(1, 9);
    ASSERT_TRUE(owner.Step());
    EXPECT_EQ(owner.GetText(0), "Owner Nine");
    owner = Statement();
    EXPECT_THROW(job.Run("DELETE FROM link_to_party.party"), DatabaseError);
    job.Detach("link_to_party");
    EXPECT_THROW(job.Prepare("SELECT * FROM link_to_party.party"), DatabaseError);

    EXPECT_THROW(job.Attach(File("absent.db"), "x"), DatabaseError);
    EXPECT_FALSE(fs::exists(File("absent.db")));
}

TEST_F(DatabaseTest, MovedDatabaseKeepsItsConnection) {
    Database first = MakeSample();
    Database second = std::move(first);
    EXPECT_FALSE(first.IsOpen());  // NOLINT(bugprone-use-after-move): checking the moved-from state
    EXPECT_TRUE(second.IsOpen());
    second.Run("INSERT INTO t (id) VALUES (1)");
    EXPECT_EQ(CountRows(second), 1);
    EXPECT_THROW(first.Prepare("SELECT 1"), DatabaseError);  // NOLINT(bugprone-use-after-move)
}

TEST_F(DatabaseTest, InMemoryDatabase) {
    Database db(":memory:", OpenMode::Create);
    Statement one = db.Prepare("SELECT 1 + 1");
    ASSERT_TRUE(one.Step());
    EXPECT_EQ(one.GetInt(0), 2);
    EXPECT_FALSE(fs::exists(":memory:"));
}

TEST(QuoteTest, DoublesInnerQuotes) {
    EXPECT_EQ(QuoteIdentifier("Twr \"Reg\""), "\"Twr \"\"Reg\"\"\"");
    EXPECT_EQ(QuoteLiteral("O'Brien"), "'O''Brien'");
}

}  // namespace
}  // namespace qarvel::stationdb
