#include "jobview/temp_display_rows.h"

namespace qarvel::jobview {

namespace {

std::optional<double> OptionalDouble(const stationdb::Statement& row, int column) {
    if (row.IsNull(column)) return std::nullopt;
    return row.GetDouble(column);
}

std::optional<std::int64_t> OptionalInt(const stationdb::Statement& row, int column) {
    if (row.IsNull(column)) return std::nullopt;
    return row.GetInt64(column);
}

double Degrees(const stationdb::Statement& row, int column) {
    return static_cast<double>(row.GetInt64(column)) / kStoredUnitsPerDegree;
}

// FM query columns (kFmSelect's list; fm_dom_status appears twice there).
enum FmColumn : int {
    kCallsign = 1, kCity = 2, kState = 3, kVertErp = 4, kFacilityId = 5, kAsdService = 6,
    kLat = 7, kLon = 8, kStatus = 9, kHorizErp = 10, kHaat = 11, kClass = 12, kRule73215 = 13,
    kIntlClass = 14, kBorderCode = 15, kApplicationId = 17, kPartyName = 18,
};

// TV6 and AM query columns: lat, lon, callsign, then city, state, id, owner.
struct OtherColumns {
    int lat, lon, callsign, city, state, applicationId, partyName;
};
constexpr OtherColumns kTv6Columns{0, 1, 2, 4, 5, 6, 7};
constexpr OtherColumns kAmColumns{1, 2, 3, 4, 5, 6, 7};

TempDisplayRow ReadOther(const stationdb::Statement& row, const OtherColumns& c) {
    TempDisplayRow out;
    out.lat = Degrees(row, c.lat);
    out.lon = Degrees(row, c.lon);
    out.fac_callsign = row.GetText(c.callsign);
    out.comm_city = row.GetOptionalText(c.city);
    out.comm_state = row.GetOptionalText(c.state);
    out.application_id = row.GetInt64(c.applicationId);
    out.party_name = row.GetOptionalText(c.partyName);
    return out;
}

template <class T>
void BindOptional(stationdb::Statement& insert, int index, const std::optional<T>& value) {
    if (value) insert.Bind(index, *value);
    else insert.Bind(index, nullptr);
}

}  // namespace

TempDisplayRow ReadFmRecord(const stationdb::Statement& fm) {
    TempDisplayRow row;
    row.fac_callsign = fm.GetText(kCallsign);
    row.comm_city = fm.GetOptionalText(kCity);
    row.comm_state = fm.GetOptionalText(kState);
    row.vert_erp = OptionalDouble(fm, kVertErp);
    row.facility_id = OptionalInt(fm, kFacilityId);
    row.asd_service = fm.GetOptionalText(kAsdService);
    row.lat = Degrees(fm, kLat);
    row.lon = Degrees(fm, kLon);
    row.fm_dom_status = fm.GetOptionalText(kStatus);
    row.horiz_erp = OptionalDouble(fm, kHorizErp);
    row.haat_horiz_rc_mtr = OptionalDouble(fm, kHaat);
    row.station_class = fm.GetOptionalText(kClass);
    row.rule_73_215_req_ind = fm.GetOptionalText(kRule73215);
    row.intl_class = fm.GetOptionalText(kIntlClass);
    row.border_code = fm.GetOptionalText(kBorderCode);
    row.application_id = fm.GetInt64(kApplicationId);
    row.party_name = fm.GetOptionalText(kPartyName);
    return row;
}

TempDisplayRow ReadTv6Record(const stationdb::Statement& tv, std::string* facZone) {
    if (facZone != nullptr) *facZone = tv.GetText(3);
    return ReadOther(tv, kTv6Columns);
}

TempDisplayRow ReadAmRecord(const stationdb::Statement& am) { return ReadOther(am, kAmColumns); }

TempDisplayWriter::TempDisplayWriter(stationdb::Database& job) {
    std::string sql = "INSERT INTO tempdisplay VALUES (";
    for (std::size_t i = 1; i <= kTempDisplayColumns.size(); ++i) {
        sql += (i > 1 ? ", ?" : "?") + std::to_string(i);
    }
    m_insert = job.Prepare(sql + ");");
}

void TempDisplayWriter::Insert(const TempDisplayRow& r) {
    stationdb::Statement& s = m_insert;
    int i = 0;
    s.Bind(++i, r.fac_callsign);
    s.Bind(++i, r.lat);
    s.Bind(++i, r.latdms);
    s.Bind(++i, r.lon);
    s.Bind(++i, r.londms);
    BindOptional(s, ++i, r.comm_city);
    BindOptional(s, ++i, r.comm_state);
    BindOptional(s, ++i, r.border_code);
    BindOptional(s, ++i, r.station_channel);
    BindOptional(s, ++i, r.channel_text);
    BindOptional(s, ++i, r.station_class);
    BindOptional(s, ++i, r.intl_class);
    BindOptional(s, ++i, r.rule_73_215_req_ind);
    s.Bind(++i, r.target_distance);
    s.Bind(++i, r.target_bearing);
    s.Bind(++i, r.radius);
    s.Bind(++i, r.target_clearance);
    s.Bind(++i, r.color1);
    s.Bind(++i, r.color2);
    s.Bind(++i, r.offset_up);
    s.Bind(++i, r.offset_right);
    s.Bind(++i, r.service);
    BindOptional(s, ++i, r.horiz_erp);
    BindOptional(s, ++i, r.vert_erp);
    BindOptional(s, ++i, r.asd_service);
    BindOptional(s, ++i, r.facility_id);
    BindOptional(s, ++i, r.haat_horiz_rc_mtr);
    BindOptional(s, ++i, r.fm_dom_status);
    s.Bind(++i, r.adjacency);
    BindOptional(s, ++i, r.party_name);
    s.Bind(++i, r.application_id);
    s.Run();
}

}  // namespace qarvel::jobview
