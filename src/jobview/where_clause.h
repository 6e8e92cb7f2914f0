#pragma once
// The query texts by which the job display reads the job's stations into the
// study table. The texts are the program's own: built exactly, blanks and
// all, and compared by the tests.

#include <string>
#include <string_view>
#include <vector>

#include "jobview/study_filter.h"

namespace qarvel::jobview {

// Error-trap module name of the job display.
inline constexpr std::string_view kJobDisplayModule = "frmDispJob";

// Head of the FM query; BuildWhereClause follows it.
inline constexpr std::string_view kFmSelect =
    "SELECT station_channel, fac_callsign, comm_city, comm_state, vert_erp, facility_id, "
    "asd_service, lat, lon, fm_dom_status, horiz_erp, haat_horiz_rc_mtr,  station_class, "
    "rule_73_215_req_ind, intl_class,  border_code, fm_dom_status, application_id, "
    "party.party_name  FROM fm_data, party WHERE ";

// Television channel 6 stations with their owners.
inline constexpr std::string_view kTv6Select =
    "SELECT lat, lon, fac_callsign, fac_zone, comm_city, comm_state, application_id, "
    "party.party_name FROM tv6_data, party WHERE party.party_id = tv6_data.party_id;";

// AM stations with their owners.
inline constexpr std::string_view kAmSelect =
    "SELECT ant_mode, lat, lon, fac_callsign, comm_city, comm_state, application_id, "
    "party.party_name FROM am_data, party WHERE party.party_id = am_data.party_id;";

// The FM channels the relation switches admit for target channel c, in the
// clause's order: c; c+1, c-1; c+2, c-2; c+3, c-3; c+53, c-53, c+54, c-54.
std::vector<int> RelationChannels(int channel, const StudyFilter& filter);

// The WHERE clause of the FM query for the filter's target channel:
//  " " then the channel group "( station_channel=c OR ... ) " and " AND "
//  (or "(station_channel=1) AND ", which matches no FM station, when no
//  relation switch is on); then " ( border_code LIKE 'A' OR " and the
//  status terms "fm_dom_status LIKE 'LI*' OR "... with the last "OR " cut,
//  " ) "; then " AND asd_service NOT LIKE 'FS' AND asd_service NOT LIKE 'FB' "
//  (translators and boosters never count) and
//  " AND party.party_id = fm_data.party_id ".
// A foreign station (border code "A") is admitted whatever its status. Empty
// text after an error (reported under "frmDispJob" ":BuildWhereClause:").
std::string BuildWhereClause(const StudyFilter& filter);

// kFmSelect followed by BuildWhereClause(filter).
std::string BuildFmQuery(const StudyFilter& filter);

}  // namespace qarvel::jobview
