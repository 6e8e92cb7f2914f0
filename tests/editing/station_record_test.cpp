// Field checks of the record editor and the all-or-nothing change of a record.

#include "editing/station_record.h"

#include <gtest/gtest.h>

#include "stationdb/master_writer.h"
#include "stationdb/schema.h"
#include "support/temp_folder.h"

namespace qarvel::editing {
namespace {

struct FieldCase {
    const char* name;
    const char* column;
    const char* text;
    const char* problem;  // a part of the reason, or "" when accepted
};
void PrintTo(const FieldCase& c, std::ostream* os) { *os << c.name; }

class ParseFieldTest : public testing_support::TempFolderTest, public ::testing::WithParamInterface<FieldCase> {};

TEST_P(ParseFieldTest, AcceptsOrNamesTheReason) {
    ASSERT_TRUE(stationdb::CreateJobDatabase(Root() / "job.tdb"));
    const stationdb::Database db(Root() / "job.tdb", stationdb::OpenMode::ReadOnly);
    const auto columns = TableColumns(db, "fm_data");
    const auto spec = std::find_if(columns.begin(), columns.end(), [](const ColumnSpec& c) { return c.name == GetParam().column; });
    ASSERT_NE(spec, columns.end());
    const auto parsed = ParseField("fm_data", *spec, GetParam().text);
    if (*GetParam().problem == '\0') {
        EXPECT_TRUE(std::holds_alternative<FieldValue>(parsed)) << std::get<std::string>(parsed);
    } else {
        ASSERT_TRUE(std::holds_alternative<std::string>(parsed));
        EXPECT_NE(std::get<std::string>(parsed).find(GetParam().problem), std::string::npos) << std::get<std::string>(parsed);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Columns, ParseFieldTest,
    ::testing::Values(FieldCase{"ChannelLow", "station_channel", "200", ""},
                      FieldCase{"ChannelHigh", "station_channel", "300", ""},
                      FieldCase{"ChannelBelow", "station_channel", "199", "200 to 300"},
                      FieldCase{"ChannelAbove", "station_channel", "301", "200 to 300"},
                      FieldCase{"ChannelFraction", "station_channel", "250.5", "whole number"},
                      FieldCase{"ClassKnown", "station_class", "C1", ""},
                      FieldCase{"ClassUnknown", "station_class", "ZZ", "unknown class"},
                      FieldCase{"LatEdge", "lat", "1296000", ""},
                      FieldCase{"LatBeyond", "lat", "1296001", "latitude"},
                      FieldCase{"LonBeyond", "lon", "-2592001", "longitude"},
                      FieldCase{"ErpNumber", "horiz_erp", "6.0", ""},
                      FieldCase{"ErpText", "horiz_erp", "six", "not a number"},
                      FieldCase{"ErpInfinite", "horiz_erp", "inf", "not a number"},
                      FieldCase{"CallAtWidth", "fac_callsign", "KABCDEFGHIJKL", ""},
                      FieldCase{"CallOverWidth", "fac_callsign", "KABCDEFGHIJKLM", "13 characters"},
                      FieldCase{"DateUs", "cutoff_date", "07/04/2024", ""},
                      FieldCase{"DateBad", "cutoff_date", "2024-13-40", "not a date"},
                      FieldCase{"EmptyIsNull", "station_channel", "", ""}),
    [](const auto& c) { return std::string(c.param.name); });

class SetStationTest : public testing_support::TempFolderTest {
protected:
    void SetUp() override {
        TempFolderTest::SetUp();
        stationdb::MasterWriter writer;
        ASSERT_TRUE(writer.Open(Root() / "m.fdb", {}, stationdb::MasterOutput::Unpacked));
        stationdb::FmRecord r;
        r.application_id = 7;
        r.fac_callsign = "KOLD";
        r.station_channel = 250;
        r.station_class = "A";
        ASSERT_EQ(writer.AddFm(r), stationdb::AddResult::Added);
        ASSERT_TRUE(writer.Finish());
        m_db = stationdb::Database(Root() / "m.fdb", stationdb::OpenMode::ReadWrite);
    }
    std::string Call() {
        stationdb::Statement s = m_db.Prepare("SELECT fac_callsign || '/' || station_channel FROM fm_data");
        return s.Step() ? s.GetText(0) : "";
    }
    stationdb::Database m_db;
};

TEST_F(SetStationTest, ChangesAllOrNothingAndMarksTheRecord) {
    EXPECT_THROW(SetStationFields(m_db, 7, {{"fac_callsign", "KNEW"}, {"station_channel", "999"}}), std::invalid_argument);
    EXPECT_EQ(Call(), "KOLD/250");
    EXPECT_FALSE(IsUserEdited(m_db, "fm_data", 7));
    SetStationFields(m_db, 7, {{"fac_callsign", "KNEW"}, {"station_channel", "251"}});
    EXPECT_EQ(Call(), "KNEW/251");
    EXPECT_TRUE(IsUserEdited(m_db, "fm_data", 7));
}

TEST_F(SetStationTest, RefusesKeyUnknownColumnAndMissingRecord) {
    EXPECT_THROW(SetStationFields(m_db, 7, {{"application_id", "8"}}), std::invalid_argument);
    EXPECT_THROW(SetStationFields(m_db, 7, {{"no_column", "1"}}), std::invalid_argument);
    EXPECT_THROW(SetStationFields(m_db, 8, {{"fac_callsign", "KX"}}), std::invalid_argument);
    ASSERT_TRUE(GetStation(m_db, 7));
    EXPECT_EQ(GetStation(m_db, 7)->table, "fm_data");
    EXPECT_FALSE(GetStation(m_db, 8));
}

}  // namespace
}  // namespace qarvel::editing
