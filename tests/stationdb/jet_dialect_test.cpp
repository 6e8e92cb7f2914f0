// The Jet dialect: LIKE with Jet wildcards, BETWEEN with its bounds in either
// order, and the program's own query texts run on a real SQLite file.

#include "stationdb/jet_dialect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "stationdb/database.h"
#include "stationdb/schema.h"

namespace qarvel::stationdb {
namespace {

namespace fs = std::filesystem;

// ------------------------------------------------------------------- LIKE

struct LikeCase {
    const char* name;
    const char* pattern;
    const char* text;
    bool matches;
};

class JetLikeTest : public ::testing::TestWithParam<LikeCase> {};

TEST_P(JetLikeTest, MatchesAsJetDoes) {
    const LikeCase& c = GetParam();
    EXPECT_EQ(JetLike(c.pattern, c.text), c.matches) << "'" << c.text << "' LIKE '" << c.pattern << "'";
}

INSTANTIATE_TEST_SUITE_P(
    Patterns, JetLikeTest,
    ::testing::Values(
        LikeCase{"StarPrefix", "LI*", "LIC", true}, LikeCase{"StarPrefixLowerText", "LI*", "lic", true},
        LikeCase{"StarPrefixAnchored", "LI*", "XLIC", false}, LikeCase{"StarAloneEmpty", "*", "", true},
        LikeCase{"ExactIgnoresCase", "FS", "fs", true}, LikeCase{"ExactIsWhole", "FS", "FSX", false},
        LikeCase{"PercentIsLiteral", "LI%", "LIC", false}, LikeCase{"UnderscoreIsLiteral", "A_", "AB", false},
        LikeCase{"QuestionOneChar", "?", "a", true}, LikeCase{"QuestionNotEmpty", "?", "", false},
        LikeCase{"QuestionNotTwo", "?", "ab", false}, LikeCase{"HashDigit", "2##", "253", true},
        LikeCase{"HashNotLetter", "2##", "25a", false}, LikeCase{"RangeIgnoresCase", "[a-c]x", "Bx", true},
        LikeCase{"RangeOutside", "[a-c]x", "dx", false}, LikeCase{"NegatedRange", "[!a-c]x", "dx", true},
        LikeCase{"NegatedRangeInside", "[!a-c]x", "bx", false}, LikeCase{"ListOfChars", "K[JX]Z", "kxz", true},
        LikeCase{"BracketedStar", "[*]", "*", true}, LikeCase{"BracketedStarNotAny", "[*]", "a", false},
        LikeCase{"BracketedHashLiteral", "A[#]", "A#", true}, LikeCase{"EmptyBracketsMatchNothing", "a[]b", "ab", true},
        LikeCase{"LeadingDashLiteral", "[-a]", "-", true}, LikeCase{"TrailingDashLiteral", "[a-]", "-", true},
        LikeCase{"StarBacktracks", "*a*b", "xxaxxb", true}, LikeCase{"StarOrderMatters", "*a*b", "xxbxxa", false},
        LikeCase{"StarThenOne", "*?", "", false}, LikeCase{"ClosingBracketLiteral", "a]", "a]", true},
        LikeCase{"LatinLettersIgnoreCase", "\xC3\x89*", "\xC3\xA9" "cole", true},
        LikeCase{"MultiByteIsOneChar", "W?", "W\xC2\xA4", true},
        LikeCase{"ExcludedMarkerAnywhere", "*\xC2\xA4*", "WABC\xC2\xA4", true},
        LikeCase{"UnclosedBracketMatchesNothing", "[abc", "a", false},
        LikeCase{"DescendingRangeMatchesNothing", "[z-a]", "m", false}),
    [](const ::testing::TestParamInfo<LikeCase>& p) { return std::string(p.param.name); });

// Runs a one-value query on a fresh in-memory connection.
std::string Scalar(const std::string& sql) {
    Database db(":memory:", OpenMode::Create);
    Statement stmt = db.Prepare(sql);
    if (!stmt.Step()) return "<no row>";
    return stmt.IsNull(0) ? "NULL" : stmt.GetText(0);
}

TEST(JetLikeSqlTest, LikeOperatorUsesJetWildcards) {
    EXPECT_EQ(Scalar("SELECT 'LIC' LIKE 'li*'"), "1");
    EXPECT_EQ(Scalar("SELECT 'abc' NOT LIKE 'A*'"), "0");
    EXPECT_EQ(Scalar("SELECT 'ab' LIKE 'a%'"), "0");
    EXPECT_EQ(Scalar("SELECT 253 LIKE '2##'"), "1");
    EXPECT_EQ(Scalar("SELECT NULL LIKE 'a'"), "NULL");
    EXPECT_EQ(Scalar("SELECT 'a' LIKE NULL"), "NULL");
    // LIKE ... ESCAPE keeps SQLite's own meaning.
    EXPECT_EQ(Scalar("SELECT 'a%' LIKE 'a\\%' ESCAPE '\\'"), "1");
}

TEST(JetLikeSqlTest, InvalidPatternIsAnError) {
    try {
        Scalar("SELECT 'a' LIKE '[abc'");
        FAIL() << "an unclosed bracket was accepted";
    } catch (const DatabaseError& e) {
        EXPECT_NE(std::string(e.what()).find("Invalid pattern string"), std::string::npos) << e.what();
    }
}

// ---------------------------------------------------------------- BETWEEN

struct TranslateCase {
    const char* name;
    const char* jet;
    const char* sqlite;
};

class TranslateJetSqlTest : public ::testing::TestWithParam<TranslateCase> {};

TEST_P(TranslateJetSqlTest, Rewrites) { EXPECT_EQ(TranslateJetSql(GetParam().jet), GetParam().sqlite); }

INSTANTIATE_TEST_SUITE_P(
    Texts, TranslateJetSqlTest,
    ::testing::Values(
        TranslateCase{"NoBetween", "SELECT * FROM fm_data", "SELECT * FROM fm_data"},
        TranslateCase{"DescendingNumbersOrdered", "WHERE (lat BETWEEN 600000 AND 500000) AND x",
                      "WHERE (lat BETWEEN 500000 AND 600000) AND x"},
        TranslateCase{"AscendingNumbersKept", "WHERE lat between 5 and 6", "WHERE lat between 5 and 6"},
        TranslateCase{"NegativeNumbers", "x BETWEEN -5 AND -10", "x BETWEEN -10 AND -5"},
        TranslateCase{"NamesBecomeFunction", "x BETWEEN a AND b", "jet_between(x, a, b)"},
        TranslateCase{"NotBetween", "WHERE x NOT BETWEEN a AND b", "WHERE NOT jet_between(x, a, b)"},
        TranslateCase{"Parameters", "t.lat between :hi and :lo", "jet_between(t.lat, :hi, :lo)"},
        TranslateCase{"Expressions", "WHERE f(x) + 1 BETWEEN y - 2 AND g(z, 3) AND q = 1",
                      "WHERE jet_between(f(x) + 1, y - 2, g(z, 3)) AND q = 1"},
        TranslateCase{"BracketedName", "[Twr BETWEEN #] BETWEEN 1 AND a", "jet_between([Twr BETWEEN #], 1, a)"},
        TranslateCase{"StringLiteralsUntouched", "SELECT 'it''s x BETWEEN 2 AND 1' AS [a]",
                      "SELECT 'it''s x BETWEEN 2 AND 1' AS [a]"},
        TranslateCase{"StringBounds", "name BETWEEN 'M' AND 'C'", "jet_between(name, 'M', 'C')"},
        TranslateCase{"CommentUntouched", "-- x BETWEEN 2 AND 1\nSELECT 1", "-- x BETWEEN 2 AND 1\nSELECT 1"},
        TranslateCase{"Nested", "(a BETWEEN 5 AND 1) BETWEEN 0 AND c", "jet_between((a BETWEEN 1 AND 5), 0, c)"},
        TranslateCase{"CaseExpression", "CASE WHEN k THEN 1 ELSE 2 END BETWEEN b AND 0",
                      "jet_between(CASE WHEN k THEN 1 ELSE 2 END, b, 0)"},
        TranslateCase{"TwoInOneText", "a BETWEEN 2 AND 1 OR b BETWEEN c AND d",
                      "a BETWEEN 1 AND 2 OR jet_between(b, c, d)"},
        TranslateCase{"MissingAndLeftAlone", "x BETWEEN 1", "x BETWEEN 1"},
        TranslateCase{"NoLeftOperandLeftAlone", "SELECT BETWEEN 1 AND 2", "SELECT BETWEEN 1 AND 2"}),
    [](const ::testing::TestParamInfo<TranslateCase>& p) { return std::string(p.param.name); });

// Every text of up to four pieces from a small vocabulary: translation ends,
// and a translated text translates to itself (nothing is rewritten twice).
TEST(TranslateJetSqlRobustnessTest, ShortTextsAreStable) {
    const std::vector<std::string> pieces = {"x", "BETWEEN", "AND", "NOT", "1", "2", "(", ")",
                                             "'a'", "+", "-", "[b]", "CASE", "END"};
    std::vector<std::size_t> index;
    for (std::size_t length = 1; length <= 4; ++length) {
        index.assign(length, 0);
        for (;;) {
            std::string text;
            for (std::size_t i : index) text += pieces[i] + " ";
            const std::string once = TranslateJetSql(text);
            ASSERT_EQ(TranslateJetSql(once), once) << "from: " << text;
            std::size_t pos = 0;
            while (pos < length && ++index[pos] == pieces.size()) index[pos++] = 0;
            if (pos == length) break;
        }
    }
}

TEST(JetBetweenSqlTest, BoundsInEitherOrder) {
    for (const char* sql : {"SELECT 5 BETWEEN 1 AND 10", "SELECT 5 BETWEEN 10 AND 1", "SELECT 1 BETWEEN 10 AND 1",
                            "SELECT 10 BETWEEN 10 AND 1"})
        EXPECT_EQ(Scalar(sql), "1") << sql;
    EXPECT_EQ(Scalar("SELECT 11 BETWEEN 10 AND 1"), "0");
    EXPECT_EQ(Scalar("SELECT 0 NOT BETWEEN 10 AND 1"), "1");
}

TEST(JetBetweenSqlTest, FunctionFormHandlesNullsTextAndNumbers) {
    EXPECT_EQ(Scalar("SELECT jet_between(5, 10, 1)"), "1");
    EXPECT_EQ(Scalar("SELECT jet_between(5.5, 5.6, 5.4)"), "1");
    EXPECT_EQ(Scalar("SELECT jet_between(NULL, 10, 1)"), "NULL");
    EXPECT_EQ(Scalar("SELECT jet_between(5, NULL, 1)"), "NULL");
    EXPECT_EQ(Scalar("SELECT 'b' BETWEEN 'C' AND 'a'"), "1");  // text ignores case, as Jet sorts
    EXPECT_EQ(Scalar("SELECT 'd' BETWEEN 'C' AND 'a'"), "0");
    EXPECT_EQ(Scalar("SELECT jet_between(5, '10', ' 1 ')"), "1");  // numeric text against a number
    EXPECT_EQ(Scalar("SELECT jet_between(50, '10', '1')"), "0");
}

// ------------------------------------------------- the program's own texts

class SystemQueryTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_path = fs::path(::testing::TempDir()) /
                 (std::string("h-db-jet-system-") +
                  ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".db");
        fs::remove(m_path);
        m_db = Database(m_path, OpenMode::Create);
        CreateJobSchema(m_db);
        Statement insert = m_db.Prepare(
            "INSERT INTO fm_data (application_id, lat, lon, app_arn, fac_callsign, station_channel,"
            " fm_dom_status, asd_service, border_code, asrn) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10)");
        struct Row {
            int id, lat, lon;
            const char *call, *status, *service, *border;
            int channel, asrn;
        };
        const Row rows[] = {
            {1, 550000, 1400000, "K201AA", "LIC", "FM", nullptr, 250, 30},
            {2, 500000, 1450000, "K202AB", "lic", "FM", nullptr, 251, 10},  // on the south bound
            {3, 600000, 1350000, "XEABC", "CP", "FM", "A", 249, 20},        // on the north bound
            {4, 650000, 1400000, "K204AD", "LIC", "FS", nullptr, 250, 0},   // north of the box
            {5, 550000, 1500001, "K205AE", "LIC", "FM", nullptr, 252, 0},   // west of the box
            {6, 550000, 1400000, "WABC", "CP", "FM", nullptr, 250, 0},
            {7, 550000, 1400000, "WABD", "LIC", nullptr, nullptr, 250, 0},
            {8, 550000, 1400000, "WABE", "LIC", "FB", nullptr, 250, 0},
            {9, 550000, 1400000, "WABF", "XLI", "FM", nullptr, 250, 0},
        };
        for (const Row& r : rows)
            insert
                .BindAll(r.id, r.lat, r.lon, "ARN" + std::to_string(r.id), r.call, r.channel, r.status, r.service,
                         r.border, r.asrn)
                .Run();
    }
    void TearDown() override {
        m_db.Close();
        fs::remove(m_path);
    }

    std::vector<int> Ids(const std::string& sql, const char* idColumn = "application_id") {
        Statement stmt = m_db.Prepare(sql);
        std::vector<int> ids;
        while (stmt.Step()) ids.push_back(stmt.GetInt(idColumn));
        std::sort(ids.begin(), ids.end());
        return ids;
    }

    fs::path m_path;
    Database m_db;
};

TEST_F(SystemQueryTest, JobBoxQueryWithLargerBoundsFirst) {
    // Built as the job builder joins it: north before south, and the
    // longitude bound of longitude + dLon (the larger, west positive) first.
    const std::string north = "600000", south = "500000", l1 = "1500000", l2 = "1300000";
    const std::string sql = std::string("SELECT lat, lon, application_id, app_arn FROM fm_data WHERE ") + "(lat BETWEEN " +
                            north + " AND " + south + ") AND " + "(lon BETWEEN " + l1 + " AND " + l2 + ");";
    EXPECT_EQ(Ids(sql), (std::vector<int>{1, 2, 3, 6, 7, 8, 9}));
}

TEST_F(SystemQueryTest, AutoScanWhereClause) {
    const std::string sql =
        "SELECT fac_callsign, station_channel, lat, lon,  station_class, intl_class, border_code FROM fm_data "
        "WHERE  ( station_channel=250 OR station_channel=251 OR station_channel=249  )  AND  ( border_code LIKE "
        "'A' OR fm_dom_status LIKE 'LI*'  )  AND asd_service NOT LIKE 'FS' AND asd_service NOT LIKE 'FB' ";
    Statement stmt = m_db.Prepare(sql);
    std::vector<std::string> calls;
    while (stmt.Step()) calls.push_back(stmt.GetText("fac_callsign"));
    std::sort(calls.begin(), calls.end());
    EXPECT_EQ(calls, (std::vector<std::string>{"K201AA", "K202AB", "XEABC"}));
}

TEST_F(SystemQueryTest, DisplayQueryWithBracketedAlias) {
    Statement stmt = m_db.Prepare(
        "SELECT fac_callsign AS [Call], asrn AS [Twr Reg #] FROM fm_data"
        " WHERE [fac_callsign] LIKE 'K###*' AND [Twr Reg #] BETWEEN 25 AND 5 ORDER BY [Twr Reg #]");
    std::vector<std::string> rows;
    while (stmt.Step()) rows.push_back(stmt.GetText("call") + "/" + std::to_string(stmt.GetInt("twr reg #")));
    EXPECT_EQ(rows, (std::vector<std::string>{"K202AB/10"}));
}

TEST_F(SystemQueryTest, ChannelPatternOnNumbers) {
    EXPECT_EQ(Ids("SELECT application_id FROM fm_data WHERE station_channel LIKE '25[!0]'"),
              (std::vector<int>{2, 5}));
}

}  // namespace
}  // namespace qarvel::stationdb
