// The texts of AutoScan: the FM query, the status texts, the list lines and
// their order, and when the TV channel 6 check runs.

#include <gtest/gtest.h>

#include "studies/autoscan.h"

namespace qarvel::studies {
namespace {

ScanOptions NoFlags() {
    ScanOptions o;
    o.coChannel = o.firstAdjacent = o.secondAdjacent = o.thirdAdjacent = false;
    o.intermediateFrequency = false;
    o.statusLI = o.statusCP = o.statusAP = o.statusAD = o.statusVA = o.statusDE = false;
    o.tv6 = false;
    return o;
}

TEST(BuildFmQuery, Channel250CoChannelFirstAdjacentLicensedOnly) {
    ScanOptions o = NoFlags();
    o.coChannel = o.firstAdjacent = o.statusLI = true;
    EXPECT_EQ(BuildFmQuery(250, o),
              "SELECT fac_callsign, station_channel, lat, lon,  station_class, intl_class, "
              "border_code FROM fm_data WHERE  ( station_channel=250 OR station_channel=251 OR "
              "station_channel=249  )  AND  ( border_code LIKE 'A' OR fm_dom_status LIKE 'LI*'  "
              ")  AND asd_service NOT LIKE 'FS' AND asd_service NOT LIKE 'FB' ");
}

TEST(BuildWhereClause, NoRelationMatchesNoFmChannelAndNoStatusLeavesBorderAlone) {
    EXPECT_EQ(BuildWhereClause(200, NoFlags()),
              " (station_channel=1) AND  ( border_code LIKE 'A'  )  AND asd_service NOT LIKE "
              "'FS' AND asd_service NOT LIKE 'FB' ");
}

TEST(BuildWhereClause, EveryFlagInTheClauseOrder) {
    ScanOptions o;
    o.statusAD = o.statusVA = o.statusDE = true;
    EXPECT_EQ(BuildWhereClause(300, o),
              " ( station_channel=300 OR station_channel=301 OR station_channel=299 OR "
              "station_channel=302 OR station_channel=298 OR station_channel=303 OR "
              "station_channel=297 OR station_channel=353 OR station_channel=247 OR "
              "station_channel=354 OR station_channel=246  )  AND  ( border_code LIKE 'A' OR "
              "fm_dom_status LIKE 'LI*' OR fm_dom_status LIKE 'CP*' OR fm_dom_status LIKE "
              "'AP*' OR fm_dom_status LIKE 'AD*' OR fm_dom_status LIKE 'VA*' OR fm_dom_status "
              "LIKE 'RS*' OR fm_dom_status LIKE 'DE*'  )  AND asd_service NOT LIKE 'FS' AND "
              "asd_service NOT LIKE 'FB' ");
}

TEST(StatusTexts, CaptionAndProgress) {
    EXPECT_EQ(ScanCaption(4), "AutoScan for Class A");
    EXPECT_EQ(ScanCaption(0), "AutoScan for Class L2");
    EXPECT_EQ(ScanCaption(13), "AutoScan for Class D");
    EXPECT_EQ(ScanningChannelText(200), "Scanning channel 200");
    EXPECT_EQ(kScanAbortedText, "Scan aborted");
}

TEST(StatusTexts, SingularOnlyForOneOpening) {
    EXPECT_EQ(ScanCompleteText(0), "Scanning complete: 0 openings found.");
    EXPECT_EQ(ScanCompleteText(1), "Scanning complete: 1 opening found.");
    EXPECT_EQ(ScanCompleteText(2), "Scanning complete: 2 openings found.");
    EXPECT_EQ(ScanCompleteText(101), "Scanning complete: 101 openings found.");
}

TEST(ListLines, ChannelTabClearanceTwoDecimals) {
    EXPECT_EQ(FormatListLine(245, 12.34f), "245\t12.34");
    EXPECT_EQ(FormatListLine(200, 350.0f), "200\t350.00");
    EXPECT_EQ(FormatListLine(300, -87.456f), "300\t-87.46");
    EXPECT_EQ(FormatListLine(201, 0.0f), "201\t0.00");
    // Short-spaced by a hair: not an opening, and the line says so.
    EXPECT_EQ(FormatListLine(202, -0.001f), "202\t-0.00");
    EXPECT_FLOAT_EQ(ListLineClearance("245\t12.34"), 12.34f);
    EXPECT_FLOAT_EQ(ListLineClearance("300\t-87.46"), -87.46f);
}

std::vector<int> Channels(const std::vector<std::string>& list) {
    std::vector<int> channels;
    for (const auto& line : list) channels.push_back(std::stoi(line.substr(0, 3)));
    return channels;
}

TEST(InsertIntoList, DescendingWithTiesInScanOrder) {
    std::vector<std::string> list;
    InsertIntoList(list, 200, 5.0f);
    InsertIntoList(list, 201, 10.0f);
    InsertIntoList(list, 202, 5.0f);  // tie with 200: after it
    InsertIntoList(list, 203, -3.0f);
    InsertIntoList(list, 204, 350.0f);
    InsertIntoList(list, 205, 10.0f);  // tie with 201: after it
    EXPECT_EQ(Channels(list), (std::vector<int>{204, 201, 205, 200, 202, 203}));
}

TEST(InsertIntoList, ComparesTheValuesTheLinesShow) {
    // 12.341 and 12.338 both show 12.34: an equal pair, so scan order holds
    // even though the later raw value is larger.
    std::vector<std::string> list;
    InsertIntoList(list, 210, 12.338f);
    InsertIntoList(list, 211, 12.341f);
    InsertIntoList(list, 212, 12.346f);  // shows 12.35: first
    EXPECT_EQ(Channels(list), (std::vector<int>{212, 210, 211}));
}

TEST(InsertIntoList, StopsAtAnEmptyLine) {
    std::vector<std::string> list = {"250\t1.00", "", "251\t9.00"};
    InsertIntoList(list, 252, 0.5f);
    EXPECT_EQ(list[1], "252\t0.50");
}

struct Tv6Case {
    const char* name;
    int channel;
    int16_t targetClass;
    bool tv6;
    bool applies;
};

class Tv6CheckTest : public ::testing::TestWithParam<Tv6Case> {};

TEST_P(Tv6CheckTest, RunsOnlyWhereTheRulesSay) {
    ScanOptions o;
    o.tv6 = GetParam().tv6;
    EXPECT_EQ(Tv6CheckApplies(GetParam().channel, GetParam().targetClass, o), GetParam().applies);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, Tv6CheckTest,
    ::testing::Values(Tv6Case{"L2_200", 200, 0, true, false}, Tv6Case{"L2_201", 201, 0, true, true},
                      Tv6Case{"L1_220", 220, 1, true, true}, Tv6Case{"L1_221", 221, 1, true, false},
                      Tv6Case{"L1_253", 253, 1, true, false}, Tv6Case{"A_253", 253, 4, true, true},
                      Tv6Case{"A_201", 201, 4, true, false}, Tv6Case{"D_253", 253, 13, true, true},
                      Tv6Case{"C_252", 252, 12, true, false},
                      Tv6Case{"A_253_off", 253, 4, false, false},
                      Tv6Case{"L1_205_off", 205, 1, false, false}),
    [](const auto& p) { return std::string(p.param.name); });

}  // namespace
}  // namespace qarvel::studies
