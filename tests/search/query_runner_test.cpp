// Queries reach the master read-only: one SELECT runs; nothing can write.

#include "search/query_runner.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "search/query_builder.h"
#include "stationdb/master_writer.h"
#include "support/temp_folder.h"

namespace qarvel::search {
namespace {

namespace fs = std::filesystem;

class QueryRunnerTest : public testing_support::TempFolderTest {
protected:
    void SetUp() override {
        TempFolderTest::SetUp();
        stationdb::MasterWriter writer;
        ASSERT_TRUE(writer.Open(Master(), {}, stationdb::MasterOutput::Unpacked));
        stationdb::PartyRecord owner;
        owner.party_id = 9;
        owner.party_name = "Prairie Radio";
        writer.AddParty(owner);
        for (const auto& [id, call, channel] : {std::tuple{1, "KABC", 250}, std::tuple{2, "kxyz", 251}, std::tuple{3, "WABC", 250}}) {
            stationdb::FmRecord r;
            r.application_id = id;
            r.party_id = 9;
            r.fac_callsign = call;
            r.station_channel = channel;
            writer.AddFm(r);
        }
        ASSERT_TRUE(writer.Finish());
    }
    fs::path Master() const { return Root() / "m.fdb"; }
    std::string Bytes() const {
        std::ifstream in(Master(), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
};

TEST_F(QueryRunnerTest, JetWildcardsAreCaseInsensitiveAndBasicRowsCarryTheKey) {
    const auto table = RunQuery(Master(), "SELECT fac_callsign FROM fm_data WHERE fac_callsign LIKE 'k*' ORDER BY 1");
    ASSERT_EQ(table.rows.size(), 2u);
    EXPECT_EQ(std::get<std::string>(table.rows[1][0]), "kxyz");
    const auto basic = RunQuery(Master(), std::get<std::string>(BasicQuery({"ab", "prairie", "", "", "250"})));
    ASSERT_EQ(basic.rows.size(), 2u);
    EXPECT_EQ(basic.columns.back(), "application_id");
    EXPECT_EQ(basic.columns[16], "Owner");
}

TEST_F(QueryRunnerTest, NothingButOneReadingStatementRuns) {
    const std::string before = Bytes();
    for (const char* query : {"DELETE FROM fm_data", "UPDATE fm_data SET fac_callsign = 'X'",
                              "SELECT 1; DELETE FROM fm_data", "ATTACH DATABASE 'other.db' AS o",
                              "PRAGMA user_version = 7", "CREATE TABLE t (a int)", "DROP TABLE party",
                              "INSERT INTO fm_data (application_id) SELECT 99", ""}) {
        EXPECT_THROW(RunQuery(Master(), query), QueryRefused) << query;
    }
    EXPECT_EQ(Bytes(), before);
    EXPECT_EQ(testing_support::Listing(Root()), std::vector<std::string>{"m.fdb"});
    const auto limited = RunQuery(Master(), "SELECT * FROM fm_data;", 2);
    EXPECT_EQ(limited.rows.size(), 2u);
    EXPECT_TRUE(limited.truncated);
}

}  // namespace
}  // namespace qarvel::search
