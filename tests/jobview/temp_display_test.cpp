// The study table on a real job database: its layout, which stations the
// filter admits, and the distance, separation, clearance and colours of each.

#include "jobview/temp_display.h"

#include <gtest/gtest.h>

#include <map>

#include "core/error_trap.h"
#include "jobview/station_colors.h"
#include "spacing/min_sep.h"
#include "study_job.h"

namespace qarvel::jobview {
namespace {

using testing::FmStation;
using testing::StoredPointAt;
using testing::StudyJob;

constexpr double kLat = 39.0;
constexpr double kLon = 98.0;  // WEST
constexpr int kChannel = 220;  // IF channels 273, 167, 274, 166

std::vector<std::string> TableColumns(stationdb::Database& db) { return db.ColumnNames("tempdisplay"); }

// One row of tempdisplay by call sign, each column as text.
std::map<std::string, std::string> Row(stationdb::Database& db, const std::string& callsign) {
    stationdb::Statement s = db.Prepare("SELECT * FROM tempdisplay WHERE fac_callsign = ?1;");
    s.Bind(1, callsign);
    std::map<std::string, std::string> row;
    if (!s.Step()) return row;
    for (int c = 0; c < s.ColumnCount(); ++c) row[s.ColumnName(c)] = s.IsNull(c) ? "<null>" : s.GetText(c);
    return row;
}

double Number(const std::map<std::string, std::string>& row, const std::string& column) {
    return std::stod(row.at(column));
}

class TempDisplayTest : public ::testing::Test {
protected:
    void SetUp() override {
        job.SetTarget(kLat, kLon, kChannel, "A");
        ASSERT_TRUE(ReadStudyTarget(job.Db(), &filter.target));
    }
    void Add(int id, const std::string& call, int channel, double km, double bearing,
             const std::string& cls = "A") {
        FmStation s;
        s.id = id;
        s.callsign = call;
        s.channel = channel;
        s.stationClass = cls;
        s.at = StoredPointAt(kLat, kLon, km, bearing);
        job.AddFm(s);
    }
    StudyJob job;
    StudyFilter filter;
};

TEST(TempDisplayLayout, CreateTextNamesEveryColumnInOrder) {
    const std::string sql = CreateTempDisplaySql();
    EXPECT_EQ(sql.rfind("CREATE TABLE tempdisplay (fac_callsign char(13), lat float, latdms char(13), lon float, "
                        "londms char(13), comm_city varchar(20), comm_state char(2), border_code char(1), "
                        "station_channel int, channel_text varchar(15), ",
                        0),
              0u);
    EXPECT_NE(sql.find("adjacency varchar(8), party_name varchar(60), application_id int);"), std::string::npos);
}

TEST(TempDisplayLayout, ChannelTextAndService) {
    EXPECT_EQ(ChannelText(250), "250 : 97.9 MHz");
    EXPECT_EQ(ChannelText(200), "200 : 87.9 MHz");
    EXPECT_EQ(ChannelText(201), "201 : 88.1 MHz");
    EXPECT_EQ(ChannelText(300), "300 : 107.9 MHz");
    EXPECT_EQ(ServiceOfApplication(100000000), "FM");
    EXPECT_EQ(ServiceOfApplication(100000001), "ED");
}

TEST_F(TempDisplayTest, TableHasExactlyTheColumnsInOrder) {
    ASSERT_TRUE(NewData(job.Db(), filter));
    std::vector<std::string> expected;
    for (const TempDisplayColumn& c : kTempDisplayColumns) expected.emplace_back(c.name);
    EXPECT_EQ(TableColumns(job.Db()), expected);
    ASSERT_TRUE(NewData(job.Db(), filter));  // the second rebuild drops the first table
    EXPECT_EQ(TableColumns(job.Db()), expected);
}

TEST_F(TempDisplayTest, CoChannelStationNorth) {
    Add(1, "KAAA", kChannel, 100.0, 0.0);
    ASSERT_TRUE(NewData(job.Db(), filter));
    const auto row = Row(job.Db(), "KAAA");
    ASSERT_FALSE(row.empty());
    EXPECT_EQ(row.at("service"), "FM");
    EXPECT_EQ(row.at("channel_text"), "220 : 91.9 MHz");
    EXPECT_EQ(row.at("adjacency"), "Primary");
    EXPECT_EQ(Number(row, "radius"), 115.0);  // class A against class A, co-channel
    EXPECT_NEAR(Number(row, "target_distance"), 100.0, 0.05);
    EXPECT_DOUBLE_EQ(Number(row, "target_clearance"), Number(row, "target_distance") - 115.0);
    EXPECT_EQ(row.at("target_bearing"), "0");
    EXPECT_NEAR(Number(row, "offset_up"), 100.0, 0.05);
    EXPECT_NEAR(Number(row, "offset_right"), 0.0, 0.05);
    EXPECT_EQ(std::stoi(row.at("color1")), kColorPrimary);
    EXPECT_EQ(std::stoi(row.at("color2")), kColorShort);
    EXPECT_EQ(row.at("party_name"), "Prairie Radio");
    EXPECT_EQ(row.at("latdms").substr(0, 4), "+039");
}

TEST_F(TempDisplayTest, StationEastIsAtNegativeOffsetRight) {
    Add(1, "KEST", kChannel + 1, 150.0, 90.0, "C1");
    ASSERT_TRUE(NewData(job.Db(), filter));
    const auto row = Row(job.Db(), "KEST");
    EXPECT_EQ(row.at("adjacency"), "1st Adj");
    EXPECT_EQ(row.at("target_bearing"), "90");
    EXPECT_NEAR(Number(row, "offset_right"), -150.0, 0.5);  // x counts km WEST
    EXPECT_EQ(std::stoi(row.at("color1")), kColorFirstAdj);
    spacing::StationRec target, other;
    target.station_class = 4;
    other.station_class = 10;
    other.relation = 1;
    EXPECT_EQ(Number(row, "radius"), spacing::LookupMinSep(target, other));
}

TEST_F(TempDisplayTest, RelationsIncludingIntermediateFrequency) {
    Add(1, "KCO", kChannel, 300, 10);
    Add(2, "KSEC", kChannel - 2, 300, 20);
    Add(3, "KTHI", kChannel + 3, 300, 30);
    Add(4, "KIF", kChannel + 54, 300, 40);
    Add(5, "KFAR", kChannel + 5, 50, 50);  // unrelated channel: not in the table
    ASSERT_TRUE(NewData(job.Db(), filter));
    EXPECT_EQ(Row(job.Db(), "KSEC").at("adjacency"), "2nd Adj");
    EXPECT_EQ(Row(job.Db(), "KTHI").at("adjacency"), "3rd Adj");
    EXPECT_EQ(Row(job.Db(), "KIF").at("adjacency"), "IF");
    EXPECT_EQ(std::stoi(Row(job.Db(), "KIF").at("color1")), kColorIF);
    EXPECT_TRUE(Row(job.Db(), "KFAR").empty());
    EXPECT_EQ(job.Count("service = 'FM'"), 4);

    filter.intermediateFrequency = false;
    ASSERT_TRUE(NewData(job.Db(), filter));
    EXPECT_TRUE(Row(job.Db(), "KIF").empty());
}

TEST_F(TempDisplayTest, StatusBorderServiceAndOwnerFilters) {
    auto add = [&](int id, const std::string& call, auto&& edit) {
        FmStation s;
        s.id = id;
        s.callsign = call;
        s.channel = kChannel;
        s.at = StoredPointAt(kLat, kLon, 80, 45);
        edit(s);
        job.AddFm(s);
    };
    add(1, "KLIC", [](FmStation&) {});
    add(2, "KDEL", [](FmStation& s) { s.status = "DEL"; });
    add(3, "XFOR", [](FmStation& s) { s.status = "OPER", s.borderCode = "A", s.intlClass = "A"; });
    add(4, "K201FS", [](FmStation& s) { s.asdService = "FS"; });
    add(5, "K202FB", [](FmStation& s) { s.asdService = "FB"; });
    add(6, "K203FX", [](FmStation& s) { s.asdService = "FX"; });  // translators of this code stay
    add(7, "KNOOWN", [](FmStation& s) { s.party = 99; });           // no owner record: no join
    add(8, "KRES", [](FmStation& s) { s.status = "RSV"; });
    add(100000001, "KWHATIF", [](FmStation&) {});
    ASSERT_TRUE(NewData(job.Db(), filter));
    EXPECT_FALSE(Row(job.Db(), "KLIC").empty());
    EXPECT_TRUE(Row(job.Db(), "KDEL").empty());
    EXPECT_FALSE(Row(job.Db(), "XFOR").empty());
    EXPECT_TRUE(Row(job.Db(), "K201FS").empty());
    EXPECT_TRUE(Row(job.Db(), "K202FB").empty());
    EXPECT_FALSE(Row(job.Db(), "K203FX").empty());
    EXPECT_TRUE(Row(job.Db(), "KNOOWN").empty());
    EXPECT_TRUE(Row(job.Db(), "KRES").empty());
    EXPECT_EQ(Row(job.Db(), "KWHATIF").at("service"), "ED");

    filter.statusVA = true;
    filter.statusDE = true;
    ASSERT_TRUE(NewData(job.Db(), filter));
    EXPECT_FALSE(Row(job.Db(), "KRES").empty());
    EXPECT_FALSE(Row(job.Db(), "KDEL").empty());
}

TEST_F(TempDisplayTest, ShortStationStudiedByContourIsMagenta) {
    FmStation s;
    s.id = 1;
    s.callsign = "KDIR";
    s.channel = kChannel;
    s.rule73215 = "Y";
    s.at = StoredPointAt(kLat, kLon, 60, 200);
    job.AddFm(s);
    ASSERT_TRUE(NewData(job.Db(), filter));
    EXPECT_EQ(std::stoi(Row(job.Db(), "KDIR").at("color2")), kColorShortDirectional);
}

TEST_F(TempDisplayTest, TelevisionChannel6OnlyWhenSwitchedOn) {
    job.AddTv6(10, "KTV6", StoredPointAt(kLat, kLon, 40, 180), " 1 ");
    job.AddTv6(11, "KTV0", StoredPointAt(kLat, kLon, 40, 270), "2");
    ASSERT_TRUE(NewData(job.Db(), filter));
    EXPECT_EQ(job.Count("service = 'TV'"), 0);

    filter.tv6 = true;
    ASSERT_TRUE(NewData(job.Db(), filter));
    const auto zone1 = Row(job.Db(), "KTV6");
    EXPECT_EQ(zone1.at("service"), "TV");
    EXPECT_EQ(zone1.at("adjacency"), "TV6");
    EXPECT_EQ(Number(zone1, "radius"), 22.0);  // full-power class A target, zone 1
    EXPECT_EQ(Number(Row(job.Db(), "KTV0"), "radius"), 17.0);
    EXPECT_EQ(std::stoi(zone1.at("color1")), kColorTV6);
    EXPECT_EQ(zone1.at("station_channel"), "<null>");
}

TEST_F(TempDisplayTest, AmStationsAlwaysInTheTableWithNoSeparation) {
    job.AddAm(20, "KAM", StoredPointAt(kLat, kLon, 25, 300));
    filter.showAm = false;  // hiding AM filters the grid and map, not the table
    ASSERT_TRUE(NewData(job.Db(), filter));
    const auto am = Row(job.Db(), "KAM");
    ASSERT_FALSE(am.empty());
    EXPECT_EQ(am.at("service"), "AM");
    EXPECT_EQ(Number(am, "radius"), 0.0);
    EXPECT_DOUBLE_EQ(Number(am, "target_clearance"), Number(am, "target_distance"));
    EXPECT_EQ(std::stoi(am.at("color1")), kColorAM);
    EXPECT_EQ(std::stoi(am.at("color2")), kColorAM);
}

TEST_F(TempDisplayTest, OffsetsAboutARecentredMap) {
    Add(1, "KAAA", kChannel, 100.0, 0.0);
    const MapCentre centre{kLat + 1.0, kLon};
    ASSERT_TRUE(NewData(job.Db(), filter, &centre));
    const auto row = Row(job.Db(), "KAAA");
    EXPECT_NEAR(Number(row, "target_distance"), 100.0, 0.05);  // still from the target
    EXPECT_NEAR(Number(row, "offset_up"), 100.0 - 111.0, 0.5);   // about the new centre
}

TEST_F(TempDisplayTest, ChangedChannelAndClassChangeTheRelations) {
    Add(1, "KAAA", kChannel, 150, 0, "C1");
    ASSERT_TRUE(NewData(job.Db(), filter));
    EXPECT_EQ(Row(job.Db(), "KAAA").at("adjacency"), "Primary");

    ASSERT_TRUE(ChangeStationData({kChannel + 1, std::string("B"), std::nullopt}, &filter.target));
    EXPECT_EQ(filter.target.channel, kChannel + 1);
    EXPECT_EQ(filter.target.stationClass, 7);
    ASSERT_TRUE(NewData(job.Db(), filter));
    const auto row = Row(job.Db(), "KAAA");
    EXPECT_EQ(row.at("adjacency"), "1st Adj");
    spacing::StationRec target, other;
    target.station_class = 7;
    other.station_class = 10;
    other.relation = 1;
    EXPECT_EQ(Number(row, "radius"), spacing::LookupMinSep(target, other));
}

TEST_F(TempDisplayTest, BadTargetChangesLeaveTheTargetAlone) {
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scope(sink);
    const StudyTarget before = filter.target;
    EXPECT_FALSE(ChangeStationData({301, std::nullopt, std::nullopt}, &filter.target));
    EXPECT_FALSE(ChangeStationData({199, std::nullopt, std::nullopt}, &filter.target));
    EXPECT_FALSE(ChangeStationData({std::nullopt, std::string("Q"), std::nullopt}, &filter.target));
    EXPECT_EQ(filter.target.channel, before.channel);
    EXPECT_EQ(filter.target.stationClass, before.stationClass);
    ASSERT_EQ(sink.Reports().size(), 3u);
    EXPECT_EQ(sink.Reports()[0].routine, ":ChangeStationData:");
    EXPECT_TRUE(ChangeStationData({300, std::nullopt, std::string(" ")}, &filter.target));
    EXPECT_EQ(filter.target.intlClass, -1);
}

TEST_F(TempDisplayTest, FailedRebuildKeepsThePreviousTable) {
    Add(1, "KAAA", kChannel, 100.0, 0.0);
    ASSERT_TRUE(NewData(job.Db(), filter));
    job.Db().Exec("DROP TABLE party;");
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scope(sink);
    EXPECT_FALSE(NewData(job.Db(), filter));
    ASSERT_EQ(sink.Reports().size(), 1u);
    EXPECT_EQ(sink.Reports()[0].module, "frmDispJob");
    EXPECT_EQ(sink.Reports()[0].routine, ":NewData:");
    EXPECT_EQ(job.Count(), 1);
}

}  // namespace
}  // namespace qarvel::jobview
