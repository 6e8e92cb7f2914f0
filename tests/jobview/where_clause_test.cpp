// The FM query of the study table, character for character.

#include "jobview/where_clause.h"

#include <gtest/gtest.h>

#include "core/error_trap.h"

namespace qarvel::jobview {
namespace {

StudyFilter NoSwitches(int channel) {
    StudyFilter f;
    f.target.channel = channel;
    f.primary = f.firstAdjacent = f.secondAdjacent = f.thirdAdjacent = f.intermediateFrequency = false;
    f.statusLI = f.statusCP = f.statusAP = f.statusAD = f.statusVA = f.statusDE = false;
    return f;
}

constexpr const char* kTail =
    " AND asd_service NOT LIKE 'FS' AND asd_service NOT LIKE 'FB'  AND party.party_id = fm_data.party_id ";

TEST(BuildWhereClause, CoChannelAndFirstAdjacentWithLicensedOnly) {
    StudyFilter f = NoSwitches(250);
    f.primary = f.firstAdjacent = true;
    f.statusLI = true;
    EXPECT_EQ(BuildWhereClause(f),
              std::string(" ( station_channel=250 OR station_channel=251 OR station_channel=249  )  AND "
                          " ( border_code LIKE 'A' OR fm_dom_status LIKE 'LI*'  ) ") +
                  kTail);
}

TEST(BuildWhereClause, NoRelationSwitchMatchesNoFmStation) {
    StudyFilter f = NoSwitches(250);
    f.statusCP = true;
    EXPECT_EQ(BuildWhereClause(f),
              std::string(" (station_channel=1) AND  ( border_code LIKE 'A' OR fm_dom_status LIKE 'CP*'  ) ") + kTail);
}

TEST(BuildWhereClause, NoStatusSwitchLeavesOnlyForeignStations) {
    StudyFilter f = NoSwitches(220);
    f.primary = true;
    EXPECT_EQ(BuildWhereClause(f),
              std::string(" ( station_channel=220  )  AND  ( border_code LIKE 'A'  ) ") + kTail);
}

TEST(BuildWhereClause, EveryRelationInClauseOrder) {
    StudyFilter f = NoSwitches(250);
    f.primary = f.firstAdjacent = f.secondAdjacent = f.thirdAdjacent = f.intermediateFrequency = true;
    f.statusLI = true;
    EXPECT_EQ(BuildWhereClause(f),
              std::string(" ( station_channel=250 OR station_channel=251 OR station_channel=249 OR "
                          "station_channel=252 OR station_channel=248 OR station_channel=253 OR "
                          "station_channel=247 OR station_channel=303 OR station_channel=197 OR "
                          "station_channel=304 OR station_channel=196  )  AND "
                          " ( border_code LIKE 'A' OR fm_dom_status LIKE 'LI*'  ) ") +
                  kTail);
}

TEST(BuildWhereClause, EveryStatusVacantAlsoAdmitsReserved) {
    StudyFilter f = NoSwitches(230);
    f.intermediateFrequency = true;
    f.statusLI = f.statusCP = f.statusAP = f.statusAD = f.statusVA = f.statusDE = true;
    EXPECT_EQ(BuildWhereClause(f),
              std::string(" ( station_channel=283 OR station_channel=177 OR station_channel=284 OR "
                          "station_channel=176  )  AND  ( border_code LIKE 'A' OR fm_dom_status LIKE 'LI*' OR "
                          "fm_dom_status LIKE 'CP*' OR fm_dom_status LIKE 'AP*' OR fm_dom_status LIKE 'AD*' OR "
                          "fm_dom_status LIKE 'VA*' OR fm_dom_status LIKE 'RS*' OR fm_dom_status LIKE 'DE*'  ) ") +
                  kTail);
}

TEST(BuildFmQuery, SelectListThenClause) {
    StudyFilter f = NoSwitches(250);
    f.primary = true;
    f.statusLI = true;
    EXPECT_EQ(BuildFmQuery(f),
              "SELECT station_channel, fac_callsign, comm_city, comm_state, vert_erp, facility_id, asd_service, "
              "lat, lon, fm_dom_status, horiz_erp, haat_horiz_rc_mtr,  station_class, rule_73_215_req_ind, "
              "intl_class,  border_code, fm_dom_status, application_id, party.party_name  FROM fm_data, party "
              "WHERE  ( station_channel=250  )  AND  ( border_code LIKE 'A' OR fm_dom_status LIKE 'LI*'  ) "
              " AND asd_service NOT LIKE 'FS' AND asd_service NOT LIKE 'FB'  AND party.party_id = "
              "fm_data.party_id ");
}

}  // namespace
}  // namespace qarvel::jobview
