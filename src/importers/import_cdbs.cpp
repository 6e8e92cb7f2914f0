#include "importers/import_cdbs.h"

#include <climits>
#include <unordered_map>
#include <unordered_set>

#include "importers/import_cdbs_layout.h"

namespace qarvel::importers {
namespace {

namespace fs = std::filesystem;
using Fields = std::vector<std::string>;

// fm_data column <- CDBS source (file.field):
//   application_id      <- fm_eng_data.application_id
//   party_id            <- party of the application (app_party, the applicant
//                          first) or else of the facility (fac_party)
//   lat, lon            <- fm_eng_data lat_deg/min/sec/dir, lon_deg/min/sec/dir
//   cutoff_date         <- app_tracking.cutoff_date
//   cp_exp_date         <- app_tracking.cp_exp_date
//   app_arn             <- application.app_arn
//   app_service         <- application.app_service
//   asd_service         <- fm_eng_data.asd_service (else application.app_service,
//                          else facility.fac_service)
//   facility_id         <- fm_eng_data.facility_id (else application.facility_id)
//   file_prefix         <- application.file_prefix
//   comm_city, comm_state <- application.comm_city/comm_state (else facility's)
//   fac_callsign        <- facility.fac_callsign (the current one; else application's)
//   asrn                <- fm_eng_data.asrn
//   border_code         <- "A" for Canadian, Mexican and other foreign facilities
//                          (facility.fac_country); fm_eng_data.border_code is a
//                          border zone, not carried, since the separation lookup
//                          reads "A" as a foreign station
//   border_dist         <- fm_eng_data.border_dist
//   elev_amsl           <- fm_eng_data.elev_amsl
//   fm_dom_status       <- fm_eng_data.fm_dom_status (else facility.fac_status)
//   hag_horiz_rc_mtr    <- fm_eng_data.hag_horiz_rc_mtr
//   max_horiz_erp       <- fm_eng_data.max_horiz_erp
//   station_channel     <- fm_eng_data.station_channel
//   station_class       <- fm_eng_data.station_class
//   horiz_erp, vert_erp <- fm_eng_data.horiz_erp, vert_erp
//   haat_horiz_rc_mtr   <- fm_eng_data.haat_horiz_rc_mtr
//   rcamsl_horiz_mtr    <- fm_eng_data.rcamsl_horiz_mtr
//   ant_rotation        <- fm_eng_data.ant_rotation
//   docket_num          <- fm_eng_data.docket_num
//   bt_ind              <- "Y" when fm_eng_data.horiz_bt_erp or vert_bt_erp is above 0, else "N"
//   rule_73_215_req_ind    no source in these files: empty
//   da_ind              <- fm_eng_data.antenna_type: "D..." "Y", "N..." "N"
//   antenna_id          <- fm_eng_data.antenna_id
//   intl_class, intl_status <- station_class and fm_dom_status of foreign records
// am_data: application_id, ant_mode, lat, lon <- am_ant_sys; comm_city,
//   comm_state, fac_callsign <- application (call sign from facility when
//   known); party_id as for FM. One row per application: the first current
//   antenna system.
// tv6_data: application_id, fac_zone, lat, lon <- tv_eng_data (station_channel
//   6 only); comm_city, comm_state, fac_callsign, party_id as for AM.
// party: party_id, party_address1, party_address2, party_company,
//   party_legal_name, party_city, party_state, party_country, party_zip1,
//   party_email <- party.dat as named; party_name <- party_name (else
//   party_legal_name); party_phone <- party_phone, digits only.

std::optional<std::string> Latin1Text(std::string_view raw) {
    const std::string_view text = stationdb::TrimView(raw);
    if (text.empty()) return std::nullopt;
    return stationdb::Latin1ToUtf8(stationdb::SingleLine(text));
}

std::optional<std::string> Digits(std::string_view raw) {
    std::string out;
    for (char c : raw)
        if (c >= '0' && c <= '9') out += c;
    if (out.empty()) return std::nullopt;
    return out;
}

// How well a party of an application or facility stands for its owner:
// the applicant first, then the licensee, the permittee, an assignee; no
// counsel or contact (types "CN..."), nor the seller of a station.
int PartyRank(std::string_view rawType) {
    const std::string type = stationdb::Upper(stationdb::TrimView(rawType));
    if (type == "APPLI") return 0;
    if (type == "LICEN" || type == "PERMI" || type == "PERMT" || type == "OWNER") return 1;
    if (type == "ASTRE") return 2;
    if (type.rfind("CN", 0) == 0 || type == "ASTRO") return -1;
    return 3;
}

struct AppInfo {
    std::optional<std::string> arn, service, prefix, city, state, callsign;
    std::optional<int> facility;
};

struct FacInfo {
    std::optional<std::string> callsign, city, state, service, status;
    std::optional<stationdb::StationCountry> country;
};

struct Tracking {
    std::optional<std::string> cutoff, cpExp;
};

struct PartyChoice {
    int party = stationdb::kNoOwnerPartyId;
    int rank = INT_MAX;
};

struct PendingTv {
    stationdb::Tv6Record record;
    std::optional<int> facility;
};

class CdbsImport {
public:
    CdbsImport(const fs::path& folder, stationdb::MasterWriter& writer, ImportRun& run)
        : m_folder(folder), m_writer(writer), m_run(run) {}

    void Run() {
        const fs::path fmEng = Required("fm_eng_data.dat", "the FM engineering records");
        const fs::path application = Required("application.dat", "the applications");
        const fs::path facility = Required("facility.dat", "the facilities");
        const fs::path tracking = Optional("app_tracking.dat", "no cut-off or permit expiry dates");
        const fs::path appParty = Optional("app_party.dat", "owners found by facility only");
        const fs::path facParty = Optional("fac_party.dat", "owners found by application only");
        const fs::path party = Optional("party.dat", "owners without names");
        const fs::path am = Optional("am_ant_sys.dat", "no AM stations");
        const fs::path tv = Optional("tv_eng_data.dat", "no channel 6 television stations");

        m_run.Summary().read =
            Read(fmEng, cdbs::fm_eng::kMinFields, [this](const Fields& f) { return FmEngRecord(f); });
        if (!am.empty()) Read(am, cdbs::am_ant_sys::kMinFields, [this](const Fields& f) { return AmRecordOf(f); });
        if (!tv.empty()) Read(tv, cdbs::tv_eng::kMinFields, [this](const Fields& f) { return TvRecordOf(f); });
        Read(application, cdbs::application::kMinFields, [this](const Fields& f) { return ApplicationRecord(f); });
        Read(facility, cdbs::facility::kMinFields, [this](const Fields& f) { return FacilityRecord(f); });
        if (!tracking.empty())
            Read(tracking, cdbs::app_tracking::kMinFields, [this](const Fields& f) { return TrackingRecord(f); });
        if (!appParty.empty())
            Read(appParty, cdbs::party_link::kMinFields, [this](const Fields& f) { return PartyLink(f, m_appParty, m_apps); });
        if (!facParty.empty())
            Read(facParty, cdbs::party_link::kMinFields, [this](const Fields& f) { return PartyLink(f, m_facParty, m_facs); });
        WriteStations();
        if (!party.empty()) Read(party, cdbs::party::kMinFields, [this](const Fields& f) { return PartyRecordOf(f); });
    }

private:
    fs::path Required(std::string_view name, std::string_view what) {
        fs::path path = FindInputFile(m_folder, name);
        if (path.empty())
            throw ImportFailure(m_folder.string() + ": no " + std::string(name) + " (" + std::string(what) +
                                "); is this a CDBS dump folder?");
        m_run.AddInputSize(fs::file_size(path));
        return path;
    }

    fs::path Optional(std::string_view name, std::string_view consequence) {
        fs::path path = FindInputFile(m_folder, name);
        if (path.empty()) m_run.Note("no " + std::string(name) + ": " + std::string(consequence));
        else m_run.AddInputSize(fs::file_size(path));
        return path;
    }

    // Streams one file; onRecord returns the problem of a record it cannot
    // use. Returns the number of records read.
    template <class OnRecord>
    std::uint64_t Read(const fs::path& path, std::size_t minFields, OnRecord&& onRecord) {
        DelimitedReader reader(path, DelimitedFormat{'|', false, true});
        Fields fields;
        std::uint64_t records = 0;
        while (reader.Next(fields)) {
            m_run.Tick(reader);
            ++records;
            std::string problem;
            if (fields.size() < minFields)
                problem = "has " + std::to_string(fields.size()) + " fields; " + reader.Name() +
                          " records have at least " + std::to_string(minFields);
            else
                problem = onRecord(fields);
            if (!problem.empty()) m_run.BadRecord(reader.Name(), reader.RecordLine(), problem);
        }
        m_run.FileDone(reader, records);
        return records;
    }

    // An optional number field; a field that is neither empty nor a number
    // is a problem of the record.
    std::optional<double> Number(const Fields& f, std::size_t i, const char* name, std::string& problem) {
        if (stationdb::TrimView(f[i]).empty()) return std::nullopt;
        auto value = stationdb::ParseNumber(f[i]);
        if (!value && problem.empty()) problem = std::string(name) + " '" + stationdb::Trimmed(f[i]) + "' is not a number";
        return value;
    }

    std::optional<int> Integer(const Fields& f, std::size_t i, const char* name, std::string& problem) {
        if (stationdb::TrimView(f[i]).empty()) return std::nullopt;
        auto value = stationdb::ParseInteger(f[i]);
        if ((!value || *value < INT_MIN || *value > INT_MAX) && problem.empty()) {
            problem = std::string(name) + " '" + stationdb::Trimmed(f[i]) + "' is not a whole number";
            return std::nullopt;
        }
        return value ? std::optional<int>(static_cast<int>(*value)) : std::nullopt;
    }

    std::string FmEngRecord(const Fields& f) {
        namespace c = cdbs::fm_eng;
        if (stationdb::Upper(stationdb::TrimView(f[c::eng_record_type])) != "C") {
            m_run.Skip("archived engineering record");
            return {};
        }
        std::string problem;
        stationdb::FmRecord r;
        r.station_channel = Integer(f, c::station_channel, "station_channel", problem);
        if (!problem.empty()) return problem;
        if (!r.station_channel || *r.station_channel < 200 || *r.station_channel > 300) {
            m_run.Skip("not an FM channel");
            return {};
        }
        const auto id = Integer(f, c::application_id, "application_id", problem);
        if (!id) return problem.empty() ? "no application_id" : problem;
        r.application_id = *id;
        const auto lat = stationdb::StoredFromDmsText(f[c::lat_deg], f[c::lat_min], f[c::lat_sec], f[c::lat_dir], true);
        const auto lon = stationdb::StoredFromDmsText(f[c::lon_deg], f[c::lon_min], f[c::lon_sec], f[c::lon_dir], false);
        if (!lat || !lon) return "the coordinates are not degrees, minutes, seconds and hemisphere";
        r.lat = *lat;
        r.lon = *lon;
        r.ant_rotation = Number(f, c::ant_rotation, "ant_rotation", problem);
        r.antenna_id = Integer(f, c::antenna_id, "antenna_id", problem);
        const std::string type = stationdb::Upper(stationdb::TrimView(f[c::antenna_type]));
        if (!type.empty()) r.da_ind = type[0] == 'D' ? "Y" : "N";
        r.asd_service = Latin1Text(f[c::asd_service]);
        r.asrn = Integer(f, c::asrn, "asrn", problem);
        r.border_dist = Number(f, c::border_dist, "border_dist", problem);
        r.docket_num = Latin1Text(f[c::docket_num]);
        r.elev_amsl = Number(f, c::elev_amsl, "elev_amsl", problem);
        r.facility_id = Integer(f, c::facility_id, "facility_id", problem);
        r.fm_dom_status = Latin1Text(f[c::fm_dom_status]);
        r.haat_horiz_rc_mtr = Number(f, c::haat_horiz_rc_mtr, "haat_horiz_rc_mtr", problem);
        r.hag_horiz_rc_mtr = Number(f, c::hag_horiz_rc_mtr, "hag_horiz_rc_mtr", problem);
        const auto hbt = Number(f, c::horiz_bt_erp, "horiz_bt_erp", problem);
        const auto vbt = Number(f, c::vert_bt_erp, "vert_bt_erp", problem);
        r.bt_ind = (hbt.value_or(0) > 0 || vbt.value_or(0) > 0) ? "Y" : "N";
        r.horiz_erp = Number(f, c::horiz_erp, "horiz_erp", problem);
        r.max_horiz_erp = Number(f, c::max_horiz_erp, "max_horiz_erp", problem);
        r.rcamsl_horiz_mtr = Number(f, c::rcamsl_horiz_mtr, "rcamsl_horiz_mtr", problem);
        r.station_class = Latin1Text(f[c::station_class]);
        r.vert_erp = Number(f, c::vert_erp, "vert_erp", problem);
        if (!problem.empty()) return problem;
        m_neededApps.insert(r.application_id);
        if (r.facility_id) m_neededFacs.insert(*r.facility_id);
        m_fm.push_back(std::move(r));
        return {};
    }

    std::string AmRecordOf(const Fields& f) {
        namespace c = cdbs::am_ant_sys;
        if (stationdb::Upper(stationdb::TrimView(f[c::eng_record_type])) != "C") return {};
        std::string problem;
        const auto id = Integer(f, c::application_id, "application_id", problem);
        const auto lat = stationdb::StoredFromDmsText(f[c::lat_deg], f[c::lat_min], f[c::lat_sec], f[c::lat_dir], true);
        const auto lon = stationdb::StoredFromDmsText(f[c::lon_deg], f[c::lon_min], f[c::lon_sec], f[c::lon_dir], false);
        if (!id) return problem.empty() ? "no application_id" : problem;
        if (!lat || !lon) return "the coordinates are not degrees, minutes, seconds and hemisphere";
        stationdb::AmRecord r;
        r.application_id = *id;
        r.ant_mode = Latin1Text(f[c::ant_mode]);
        r.lat = *lat;
        r.lon = *lon;
        m_neededApps.insert(r.application_id);
        m_am.push_back(std::move(r));
        return {};
    }

    std::string TvRecordOf(const Fields& f) {
        namespace c = cdbs::tv_eng;
        if (stationdb::Upper(stationdb::TrimView(f[c::eng_record_type])) != "C") return {};
        if (stationdb::ParseInteger(f[c::station_channel]) != 6) return {};
        std::string problem;
        const auto id = Integer(f, c::application_id, "application_id", problem);
        const auto facility = Integer(f, c::facility_id, "facility_id", problem);
        const auto lat = stationdb::StoredFromDmsText(f[c::lat_deg], f[c::lat_min], f[c::lat_sec], f[c::lat_dir], true);
        const auto lon = stationdb::StoredFromDmsText(f[c::lon_deg], f[c::lon_min], f[c::lon_sec], f[c::lon_dir], false);
        if (!id) return problem.empty() ? "no application_id" : problem;
        if (!lat || !lon) return "the coordinates are not degrees, minutes, seconds and hemisphere";
        PendingTv tv;
        tv.record.application_id = *id;
        tv.record.fac_zone = Latin1Text(f[c::fac_zone]);
        tv.record.lat = *lat;
        tv.record.lon = *lon;
        tv.facility = facility;
        m_neededApps.insert(*id);
        if (facility) m_neededFacs.insert(*facility);
        m_tv.push_back(std::move(tv));
        return {};
    }

    std::string ApplicationRecord(const Fields& f) {
        namespace c = cdbs::application;
        const auto id = stationdb::ParseInteger(f[c::application_id]);
        if (!id) return "application_id '" + stationdb::Trimmed(f[c::application_id]) + "' is not a whole number";
        if (*id > INT_MAX || !m_neededApps.count(static_cast<int>(*id))) return {};
        AppInfo info;
        info.arn = Latin1Text(f[c::app_arn]);
        info.service = Latin1Text(f[c::app_service]);
        info.prefix = Latin1Text(f[c::file_prefix]);
        info.city = Latin1Text(f[c::comm_city]);
        info.state = Latin1Text(f[c::comm_state]);
        info.callsign = Latin1Text(f[c::fac_callsign]);
        if (const auto facility = stationdb::ParseInteger(f[c::facility_id]); facility && *facility <= INT_MAX) {
            info.facility = static_cast<int>(*facility);
            m_neededFacs.insert(*info.facility);
        }
        m_apps.emplace(static_cast<int>(*id), std::move(info));
        return {};
    }

    std::string FacilityRecord(const Fields& f) {
        namespace c = cdbs::facility;
        const auto id = stationdb::ParseInteger(f[c::facility_id]);
        if (!id) return "facility_id '" + stationdb::Trimmed(f[c::facility_id]) + "' is not a whole number";
        if (*id > INT_MAX || !m_neededFacs.count(static_cast<int>(*id))) return {};
        FacInfo info;
        info.callsign = Latin1Text(f[c::fac_callsign]);
        info.city = Latin1Text(f[c::comm_city]);
        info.state = Latin1Text(f[c::comm_state]);
        info.service = Latin1Text(f[c::fac_service]);
        info.status = Latin1Text(f[c::fac_status]);
        if (!stationdb::TrimView(f[c::fac_country]).empty()) info.country = stationdb::CountryFromCode(f[c::fac_country]);
        m_facs.emplace(static_cast<int>(*id), std::move(info));
        return {};
    }

    std::string TrackingRecord(const Fields& f) {
        namespace c = cdbs::app_tracking;
        const auto id = stationdb::ParseInteger(f[c::application_id]);
        if (!id) return "application_id '" + stationdb::Trimmed(f[c::application_id]) + "' is not a whole number";
        if (*id > INT_MAX || !m_neededApps.count(static_cast<int>(*id))) return {};
        m_tracking[static_cast<int>(*id)] = {stationdb::ParseRegulatorDate(f[c::cutoff_date]), stationdb::ParseRegulatorDate(f[c::cp_exp_date])};
        return {};
    }

    template <class Map>
    std::string PartyLink(const Fields& f, std::unordered_map<int, PartyChoice>& choices, const Map& wanted) {
        namespace c = cdbs::party_link;
        const auto key = stationdb::ParseInteger(f[c::key]);
        const auto party = stationdb::ParseInteger(f[c::party_id]);
        if (!key || !party) return "the key or party_id is not a whole number";
        if (*key > INT_MAX || *party > INT_MAX || !wanted.count(static_cast<int>(*key))) return {};
        const int rank = PartyRank(f[c::party_type]);
        if (rank < 0) return {};
        PartyChoice& choice = choices[static_cast<int>(*key)];
        if (rank < choice.rank) choice = {static_cast<int>(*party), rank};
        return {};
    }

    std::string PartyRecordOf(const Fields& f) {
        namespace c = cdbs::party;
        const auto id = stationdb::ParseInteger(f[c::party_id]);
        if (!id) return "party_id '" + stationdb::Trimmed(f[c::party_id]) + "' is not a whole number";
        if (*id > INT_MAX || !m_neededParties.count(static_cast<int>(*id))) return {};
        stationdb::PartyRecord p;
        p.party_id = static_cast<int>(*id);
        p.party_address1 = Latin1Text(f[c::party_address1]);
        p.party_address2 = Latin1Text(f[c::party_address2]);
        p.party_company = Latin1Text(f[c::party_company]);
        p.party_legal_name = Latin1Text(f[c::party_legal_name]);
        p.party_name = Latin1Text(f[c::party_name]);
        if (!p.party_name) p.party_name = p.party_legal_name;
        p.party_city = Latin1Text(f[c::party_city]);
        p.party_state = Latin1Text(f[c::party_state]);
        p.party_country = Latin1Text(f[c::party_country]);
        p.party_zip1 = Latin1Text(f[c::party_zip1]);
        p.party_phone = Digits(f[c::party_phone]);
        p.party_email = Latin1Text(f[c::party_email]);
        if (m_writer.AddParty(p) == stationdb::AddResult::Failed) throw ImportFailure(m_writer.LastError());
        return {};
    }

    const AppInfo* App(int id) const {
        const auto found = m_apps.find(id);
        return found == m_apps.end() ? nullptr : &found->second;
    }
    const FacInfo* Fac(std::optional<int> id) const {
        if (!id) return nullptr;
        const auto found = m_facs.find(*id);
        return found == m_facs.end() ? nullptr : &found->second;
    }

    int OwnerOf(int application, std::optional<int> facility) {
        int party = stationdb::kNoOwnerPartyId;
        if (const auto a = m_appParty.find(application); a != m_appParty.end()) party = a->second.party;
        else if (facility) {
            if (const auto b = m_facParty.find(*facility); b != m_facParty.end()) party = b->second.party;
        }
        if (party != stationdb::kNoOwnerPartyId) m_neededParties.insert(party);
        return party;
    }

    template <class T>
    static std::optional<T> Either(const std::optional<T>& first, const std::optional<T>& second) {
        return first ? first : second;
    }

    void CompleteFm(stationdb::FmRecord& r, const AppInfo* app, const FacInfo* fac) {
        if (app) {
            r.app_arn = app->arn;
            r.app_service = app->service;
            r.file_prefix = app->prefix;
            if (!r.facility_id) r.facility_id = app->facility;
        }
        r.comm_city = Either(app ? app->city : std::nullopt, fac ? fac->city : std::nullopt);
        r.comm_state = Either(app ? app->state : std::nullopt, fac ? fac->state : std::nullopt);
        r.fac_callsign = Either(fac ? fac->callsign : std::nullopt, app ? app->callsign : std::nullopt);
        if (!r.asd_service) r.asd_service = Either(r.app_service, fac ? fac->service : std::nullopt);
        if (!r.fm_dom_status && fac) r.fm_dom_status = fac->status;
        if (const auto t = m_tracking.find(r.application_id); t != m_tracking.end()) {
            r.cutoff_date = t->second.cutoff;
            r.cp_exp_date = t->second.cpExp;
        }
    }

    void WriteStations() {
        for (stationdb::FmRecord& r : m_fm) {
            const AppInfo* app = App(r.application_id);
            const FacInfo* fac = Fac(r.facility_id ? r.facility_id : (app ? app->facility : std::nullopt));
            CompleteFm(r, app, fac);
            r.party_id = OwnerOf(r.application_id, r.facility_id);
            const stationdb::StationCountry country = fac && fac->country ? *fac->country
                                                               : stationdb::CountryOfStation(r.fac_callsign.value_or(""),
                                                                                  r.comm_state.value_or(""));
            if (country != stationdb::StationCountry::US) MarkForeign(r);
            m_run.WriteFm(m_writer, r, country);
        }
        m_fm.clear();
        for (stationdb::AmRecord& r : m_am) {
            const AppInfo* app = App(r.application_id);
            const FacInfo* fac = Fac(app ? app->facility : std::nullopt);
            FillPlace(r, app, fac);
            r.party_id = OwnerOf(r.application_id, app ? app->facility : std::nullopt);
            Check(m_writer.AddAm(r), "second antenna system of an AM station");
        }
        for (PendingTv& tv : m_tv) {
            const AppInfo* app = App(tv.record.application_id);
            const std::optional<int> facility = tv.facility ? tv.facility : (app ? app->facility : std::nullopt);
            FillPlace(tv.record, app, Fac(facility));
            tv.record.party_id = OwnerOf(tv.record.application_id, facility);
            Check(m_writer.AddTv6(tv.record), "second channel 6 record of an application");
        }
    }

    template <class Record>
    static void FillPlace(Record& r, const AppInfo* app, const FacInfo* fac) {
        r.comm_city = Either(app ? app->city : std::nullopt, fac ? fac->city : std::nullopt);
        r.comm_state = Either(app ? app->state : std::nullopt, fac ? fac->state : std::nullopt);
        r.fac_callsign = Either(fac ? fac->callsign : std::nullopt, app ? app->callsign : std::nullopt);
    }

    void Check(stationdb::AddResult result, const char* duplicateReason) {
        if (result == stationdb::AddResult::Duplicate) m_run.Skip(duplicateReason);
        if (result == stationdb::AddResult::Failed) throw ImportFailure(m_writer.LastError());
    }

    fs::path m_folder;
    stationdb::MasterWriter& m_writer;
    ImportRun& m_run;
    std::vector<stationdb::FmRecord> m_fm;
    std::vector<stationdb::AmRecord> m_am;
    std::vector<PendingTv> m_tv;
    std::unordered_set<int> m_neededApps, m_neededFacs, m_neededParties;
    std::unordered_map<int, AppInfo> m_apps;
    std::unordered_map<int, FacInfo> m_facs;
    std::unordered_map<int, Tracking> m_tracking;
    std::unordered_map<int, PartyChoice> m_appParty, m_facParty;
};

}  // namespace

bool ImportCdbs(const fs::path& folder, const ImportTarget& out, const ImportOptions& options,
                ImportSummary* summary) {
    return RunFolderImport<CdbsImport>(":ImportCdbs:", "CDBS dump", folder, out, options, summary);
}

}  // namespace qarvel::importers
