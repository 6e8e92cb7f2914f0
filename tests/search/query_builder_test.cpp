// The search's query texts, with the clause nesting and archive rules the
// program has always had.

#include "search/query_builder.h"

#include <gtest/gtest.h>

namespace qarvel::search {
namespace {

struct SqlCase {
    const char* name;
    Clauses clauses;
    const char* expected;  // "" when no query is built
};
void PrintTo(const SqlCase& c, std::ostream* os) { *os << c.name; }

class WriteSqlTest : public ::testing::TestWithParam<SqlCase> {};

TEST_P(WriteSqlTest, NestsTheClauses) {
    const auto query = WriteSql(GetParam().clauses);
    EXPECT_EQ(query.value_or(""), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Clauses, WriteSqlTest,
    ::testing::Values(SqlCase{"NoSelectNoQuery", {"", "fm_data", "x = 1", "x ASC"}, ""},
                      SqlCase{"NoFromDropsTheRest", {"fm_data.x", "", "x = 1", "x ASC"}, "SELECT fm_data.x"},
                      SqlCase{"OrderWithoutWhereDropped", {"a", "fm_data", "", "a ASC"}, "SELECT a FROM fm_data"},
                      SqlCase{"All", {"a", "fm_data", "a > 1", "a DESC"}, "SELECT a FROM fm_data WHERE a > 1 ORDER BY a DESC"}),
    [](const auto& c) { return std::string(c.param.name); });

TEST(SearchClauses, SelectFromWalksTheTablesInOrder) {
    Clauses c;
    BuildSelectFrom({{"fm_data.fac_callsign", "", "fm_data.lat"}, {"NONE"}, {}, {"am_data.fac_callsign"}}, c);
    EXPECT_EQ(c.select, "fm_data.fac_callsign, fm_data.lat, am_data.fac_callsign");
    EXPECT_EQ(c.from, "fm_data, am_data");
    std::string where = AppendCondition("", " AND ", "fm_data.station_channel", " BETWEEN ", "240", "260");
    where = AppendCondition(where, " OR ", "fm_data.comm_state", " LIKE ", QuotedValue("O'Neill*"));
    EXPECT_EQ(where, "fm_data.station_channel BETWEEN 240 AND 260 OR fm_data.comm_state LIKE 'O''Neill*'");
    EXPECT_EQ(BuildOrder({{"a", false}, {"b", true}}), "a ASC, b DESC");
    EXPECT_EQ(ManualQuery("  SELECT 1;  "), "SELECT 1");
}

TEST(BasicSearch, ContainsMatchesInOrderAndTheChannel) {
    const auto query = BasicQuery({" KU ", "", "", "T'X", "250"});
    ASSERT_TRUE(std::holds_alternative<std::string>(query));
    EXPECT_EQ(std::get<std::string>(query), kDisplayQuery +
                                                " AND fm_data.fac_callsign LIKE '*KU*' AND fm_data.comm_state LIKE "
                                                "'*T''X*' AND fm_data.station_channel = 250");
    for (const char* bad : {"199", "301", "250.5", "x"})
        EXPECT_EQ(std::get<std::string_view>(BasicQuery({"", "", "", "", bad})), kInvalidChannel) << bad;
    EXPECT_TRUE(SearchByKeyQuery(7).ends_with("party.party_id AND fm_data.application_id = 7"));
}

TEST(QueryArchive, RoundTripsAndRefusesOtherFiles) {
    EXPECT_EQ(ArchiveText(" SELECT 1 "), "Qarvel SQL Query\r\nSELECT 1\r\n");
    EXPECT_EQ(QueryFromArchive("  Qarvel SQL Query \r\nSELECT a FROM fm_data\r\n").value_or("?"), "SELECT a FROM fm_data");
    EXPECT_FALSE(QueryFromArchive("Some other file\r\nSELECT 1\r\n"));
    EXPECT_FALSE(ArchiveFileName("a>b.txt"));
    EXPECT_EQ(ArchiveFileName(std::string(250, 'q'))->size(), 204u);
    EXPECT_EQ(*ArchiveFileName("mine.txt"), "mine.txt");
}

}  // namespace
}  // namespace qarvel::search
