// The job grid: its query text, sort captions, number formats, and the one
// difference from the map - a clearance equal to the limit is listed but not
// drawn.

#include "jobview/grid_query.h"

#include <gtest/gtest.h>

#include <cmath>

#include "core/error_trap.h"
#include "jobview/map_stations.h"
#include "jobview/temp_display.h"
#include "study_job.h"

namespace qarvel::jobview {
namespace {

using stationdb::DisplayField;

std::vector<DisplayField> Fields(std::initializer_list<std::pair<const char*, const char*>> list) {
    std::vector<DisplayField> fields;
    for (const auto& [name, caption] : list) fields.push_back({name, caption, true, 0, "", 0});
    return fields;
}

TEST(BuildGridQuery, HiddenAmDefaultOrder) {
    StudyFilter f;
    f.clearanceLimitKm = 20;
    EXPECT_EQ(BuildGridQuery(Fields({{"fac_callsign", "Callsign"}, {"target_clearance", "Clearance"}}), f, ""),
              "SELECT fac_callsign AS [Callsign], target_clearance AS [Clearance] FROM tempdisplay  WHERE "
              "target_clearance <= 20 AND Service <> 'AM' ORDER BY target_clearance;");
}

TEST(BuildGridQuery, AmShownSortedFractionalLimit) {
    StudyFilter f;
    f.clearanceLimitKm = 12.5;
    f.showAm = true;
    EXPECT_EQ(BuildGridQuery(Fields({{"Service", "Service"}}), f, "target_distance"),
              "SELECT Service AS [Service] FROM tempdisplay  WHERE target_clearance <= 12.5 ORDER BY "
              "target_distance;");
}

TEST(BuildGridQuery, CatalogueCaptionsAreBracketedAliases) {
    StudyFilter f;
    const std::string sql = BuildGridQuery(stationdb::VisibleFieldsInOrder(stationdb::JobGridDefaults()), f, "");
    EXPECT_EQ(sql.rfind("SELECT fac_callsign AS [Callsign], latdms AS [Latitude], londms AS [Longitude], ", 0), 0u);
    EXPECT_NE(sql.find("radius AS [Min Separation], "), std::string::npos);
    EXPECT_NE(sql.find("facility_id AS [Facility ID] FROM tempdisplay "), std::string::npos);
}

TEST(FormatLimit, ShortestText) {
    EXPECT_EQ(FormatLimit(10.0), "10");
    EXPECT_EQ(FormatLimit(-3.0), "-3");
    EXPECT_EQ(FormatLimit(0.1), "0.1");
}

struct SortCase {
    const char* caption;
    const char* column;
};
class SortGridTest : public ::testing::TestWithParam<SortCase> {};

TEST_P(SortGridTest, CaptionGivesColumn) { EXPECT_EQ(SortGrid(GetParam().caption), GetParam().column); }

INSTANTIATE_TEST_SUITE_P(Captions, SortGridTest,
                         ::testing::Values(SortCase{"Callsign", "fac_callsign"}, SortCase{"Latitude", "latdms"},
                                           SortCase{"Service", "service"}, SortCase{"Channel", "channel_text"},
                                           SortCase{"Min Separation", "radius"},
                                           SortCase{"Clearance", "target_clearance"},
                                           SortCase{"HAAT", "haat_horiz_rc_mtr"}, SortCase{"Owner", "party_name"},
                                           SortCase{"Bearing", "target_bearing"},
                                           SortCase{"Facility ID", "facility_id"}),
                         [](const auto& tc) {
                             std::string name = tc.param.column;
                             return name;
                         });

TEST(SortGrid, UnknownCaptionIsReported) {
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scope(sink);
    EXPECT_EQ(SortGrid("callsign"), "");  // captions match exactly
    ASSERT_EQ(sink.Reports().size(), 1u);
    EXPECT_EQ(sink.Reports()[0].routine, ":SortGrid:");
}

TEST(FormatGridCell, NumberFormats) {
    EXPECT_EQ(FormatGridCell("radius", std::int64_t{115}), "115.00");
    EXPECT_EQ(FormatGridCell("target_clearance", -15.456), "-15.46");
    EXPECT_EQ(FormatGridCell("target_distance", 3.0), "3.00");
    EXPECT_EQ(FormatGridCell("target_bearing", std::int64_t{5}), "005");
    EXPECT_EQ(FormatGridCell("target_bearing", std::int64_t{270}), "270");
    EXPECT_EQ(FormatGridCell("horiz_erp", 6.0), "6");
    EXPECT_EQ(FormatGridCell("horiz_erp", 0.25), "0.25");
    EXPECT_EQ(FormatGridCell("fac_callsign", std::string("KAAA")), "KAAA");
    EXPECT_EQ(FormatGridCell("vert_erp", GridValue{}), "");
}

class GridAndMapTest : public ::testing::Test {
protected:
    void SetUp() override {
        job.SetTarget(39.0, 98.0, 220, "A");
        ASSERT_TRUE(ReadStudyTarget(job.Db(), &filter.target));
        testing::FmStation s;
        s.id = 1;
        s.callsign = "KAAA";
        s.channel = 220;
        s.at = testing::StoredPointAt(39.0, 98.0, 100.0, 0.0);
        job.AddFm(s);
        s.id = 2;
        s.callsign = "KBBB";
        s.at = testing::StoredPointAt(39.0, 98.0, 200.0, 90.0);
        job.AddFm(s);
        job.AddAm(3, "KAM", testing::StoredPointAt(39.0, 98.0, 5.0, 0.0));
        ASSERT_TRUE(NewData(job.Db(), filter));
    }
    double Clearance(const std::string& call) {
        stationdb::Statement s = job.Db().Prepare("SELECT target_clearance FROM tempdisplay WHERE fac_callsign=?1;");
        s.Bind(1, call);
        EXPECT_TRUE(s.Step());
        return s.GetDouble(0);
    }
    std::vector<std::string> GridCalls() {
        GridTable table;
        EXPECT_TRUE(ReadGrid(job.Db(), stationdb::JobGridDefaults(), filter, "", &table));
        std::vector<std::string> calls;
        for (const auto& row : table.rows) calls.push_back(std::get<std::string>(row[0]));
        return calls;
    }
    std::vector<std::string> MapCalls() {
        std::vector<MapStation> stations;
        EXPECT_TRUE(ReadMapStations(job.Db(), filter.clearanceLimitKm, "", &stations));
        std::vector<std::string> calls;
        for (const MapStation& s : stations) calls.push_back(s.callsign);
        return calls;
    }
    testing::StudyJob job;
    StudyFilter filter;
};

TEST_F(GridAndMapTest, ClearanceEqualToTheLimitIsListedButNotDrawn) {
    filter.clearanceLimitKm = Clearance("KBBB");  // exactly representable in the query text
    EXPECT_EQ(GridCalls(), (std::vector<std::string>{"KAAA", "KBBB"}));
    // The map query reads AM rows too; the drawing leaves them out while AM
    // is hidden.
    EXPECT_EQ(MapCalls(), (std::vector<std::string>{"KAAA", "KAM"}));
    filter.clearanceLimitKm = std::nextafter(Clearance("KBBB"), 1e9);
    EXPECT_EQ(MapCalls(), (std::vector<std::string>{"KAAA", "KAM", "KBBB"}));
}

TEST_F(GridAndMapTest, HidingAmFiltersTheGridNotTheTable) {
    filter.clearanceLimitKm = 200;
    filter.showAm = false;
    EXPECT_EQ(GridCalls(), (std::vector<std::string>{"KAAA", "KBBB"}));
    EXPECT_EQ(job.Count("service = 'AM'"), 1);
    filter.showAm = true;
    EXPECT_EQ(GridCalls(), (std::vector<std::string>{"KAAA", "KAM", "KBBB"}));
}

TEST_F(GridAndMapTest, GridColumnsAreTheTableNamesInCatalogueOrder) {
    GridTable table;
    ASSERT_TRUE(ReadGrid(job.Db(), stationdb::JobGridDefaults(), filter, SortGrid("Distance"), &table));
    ASSERT_EQ(table.columns.size(), 21u);
    EXPECT_EQ(table.columns[5], "service");
    EXPECT_EQ(table.captions[5], "Service");
    EXPECT_EQ(table.columns[20], "facility_id");
    ASSERT_EQ(table.rows.size(), 1u);  // KAAA; KBBB is clear by more than 20 km, KAM hidden
}

}  // namespace
}  // namespace qarvel::jobview
