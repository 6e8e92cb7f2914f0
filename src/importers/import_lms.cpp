#include "importers/import_lms.h"

#include <climits>
#include <unordered_map>

namespace qarvel::importers {
namespace {

namespace fs = std::filesystem;
using Fields = std::vector<std::string>;

// fm_data column <- LMS source (file.column):
//   application_id      <- numbered from 1 (LMS application ids are UUID text)
//   party_id            <- application_facility.licensee_name, one party per name
//   lat, lon            <- app_location.aloc_lat_deg/_mm/_ss/_dir, aloc_long_deg/_mm/_ss/_dir
//   cutoff_date, cp_exp_date              no source in these files: empty
//   app_arn, file_prefix <- application.aapp_file_num, "BLED-20130320AFA" split at "-"
//   app_service, asd_service <- facility.service_code
//   facility_id         <- facility.facility_id
//   comm_city, comm_state <- facility.community_served_city/_state
//                          (else application_facility.afac_community_city/_state_code)
//   fac_callsign        <- facility.callsign
//   asrn, border_dist, elev_amsl, docket_num, bt_ind, rule_73_215_req_ind
//                          no source in these files: empty
//   border_code         <- "A" when application_facility.country_code is not US
//   fm_dom_status       <- facility.facility_status (LICEN, LICRP, CPOFF...)
//   hag_horiz_rc_mtr    <- app_antenna.aant_rc_hag (or aant_horiz_rc_hgt)
//   max_horiz_erp       <- app_antenna_frequency.aafq_max_erp_kw
//   station_channel     <- application_facility.afac_channel (else facility.channel)
//   station_class       <- application_facility.station_class_code (else
//                          aafq_class_station_code; else "D" for translators and
//                          boosters and "L1" for low-power stations, as the
//                          regulator lists them)
//   horiz_erp           <- aafq_horiz_erp_kw (else aafq_power_erp_kw)
//   vert_erp            <- aafq_vert_erp_kw
//   haat_horiz_rc_mtr   <- aant_rc_haat (or aant_horiz_rc_haat)
//   rcamsl_horiz_mtr    <- aant_rc_amsl (or aant_horiz_rc_amsl)
//   ant_rotation        <- aant_rotation_deg
//   da_ind              <- aant_antenna_type_code: "D..." "Y", "N..." "N"
//   antenna_id          <- aant_antenna_id
//   intl_class, intl_status <- class and status of foreign records

struct FacilityInfo {
    std::optional<std::string> callsign, service, city, state, status;
    std::optional<int> channel;
    std::string licenceApplication;
    bool picked = false;
};

// One station being imported: the licence application of an FM facility
// and what the other files say about it.
struct Pick {
    int facilityId = 0;
    stationdb::FmRecord record;
    std::string licensee;
    std::optional<std::string> country, afacCity, afacState, freqClass;
    bool located = false, hasAntenna = false, hasFrequency = false;
};

bool Inactive(const Fields& f, std::optional<std::size_t> column) {
    return stationdb::Upper(stationdb::TrimView(FieldAt(f, column))) == "N";
}

std::optional<std::string> Text(const Fields& f, std::optional<std::size_t> column) {
    return OptionalText(FieldAt(f, column));
}

class LmsImport {
public:
    LmsImport(const fs::path& folder, stationdb::MasterWriter& writer, ImportRun& run)
        : m_folder(folder), m_writer(writer), m_run(run) {}

    void Run() {
        const fs::path facility = Required("facility.dat");
        const fs::path appFacility = Required("application_facility.dat");
        const fs::path location = Required("app_location.dat");
        const fs::path antenna = Optional("app_antenna.dat", "no antenna heights or directional data");
        const fs::path frequency = Optional("app_antenna_frequency.dat", "no ERP");
        const fs::path application = Optional("application.dat", "no file numbers");
        ReadFacilities(facility);
        ReadApplicationFacilities(appFacility);
        ReadLocations(location);
        if (!antenna.empty()) ReadAntennas(antenna);
        if (!frequency.empty()) ReadFrequencies(frequency);
        if (!application.empty()) ReadApplications(application);
        WriteStations();
    }

private:
    fs::path Required(std::string_view name) {
        fs::path path = FindInputFile(m_folder, name);
        if (path.empty())
            throw ImportFailure(m_folder.string() + ": no " + std::string(name) + "; is this an LMS dump folder?");
        m_run.AddInputSize(fs::file_size(path));
        return path;
    }

    fs::path Optional(std::string_view name, std::string_view consequence) {
        fs::path path = FindInputFile(m_folder, name);
        if (path.empty()) m_run.Note("no " + std::string(name) + ": " + std::string(consequence));
        else m_run.AddInputSize(fs::file_size(path));
        return path;
    }

    // Streams a file with a header row: setup(header, file) finds the columns,
    // onRow(fields) returns the problem of a row it cannot use.
    template <class Setup, class OnRow>
    void ReadTable(const fs::path& path, Setup&& setup, OnRow&& onRow) {
        DelimitedReader reader(path, DelimitedFormat{'|', true, FirstLineEndsWithCaret(path)});
        Fields fields;
        if (!reader.Next(fields)) throw ImportFailure(reader.Name() + ": the file is empty (no header row)");
        const HeaderMap header(fields);
        setup(header, reader.Name());
        std::uint64_t records = 0;
        while (reader.Next(fields)) {
            m_run.Tick(reader);
            ++records;
            std::string problem;
            if (fields.size() != header.Size())
                problem = "has " + std::to_string(fields.size()) + " fields, the header " +
                          std::to_string(header.Size());
            else
                problem = onRow(fields);
            if (!problem.empty()) m_run.BadRecord(reader.Name(), reader.RecordLine(), problem);
        }
        m_run.FileDone(reader, records);
    }

    static std::optional<double> Number(const Fields& f, std::optional<std::size_t> column, const char* name,
                                        std::string& problem) {
        const std::string_view text = stationdb::TrimView(FieldAt(f, column));
        if (text.empty()) return std::nullopt;
        auto value = stationdb::ParseNumber(text);
        if (!value && problem.empty()) problem = std::string(name) + " '" + std::string(text) + "' is not a number";
        return value;
    }

    static std::optional<int> Integer(const Fields& f, std::optional<std::size_t> column) {
        const auto value = stationdb::ParseInteger(FieldAt(f, column));
        if (!value || *value < INT_MIN || *value > INT_MAX) return std::nullopt;
        return static_cast<int>(*value);
    }

    void ReadFacilities(const fs::path& path) {
        std::size_t id = 0, callsign = 0, service = 0, city = 0, state = 0, status = 0, licence = 0;
        std::optional<std::size_t> active, channel;
        ReadTable(
            path,
            [&](const HeaderMap& h, const std::string& file) {
                id = h.Require({"facility_id", "fac_id"}, file);
                callsign = h.Require({"callsign", "fac_callsign"}, file);
                service = h.Require({"service_code", "fac_service"}, file);
                city = h.Require({"community_served_city", "comm_city"}, file);
                state = h.Require({"community_served_state", "comm_state"}, file);
                status = h.Require({"facility_status", "fac_status"}, file);
                licence = h.Require({"license_filing_id"}, file);
                active = h.Find({"active_ind"});
                channel = h.Find({"channel", "fac_channel"});
            },
            [&](const Fields& f) -> std::string {
                const auto facilityId = Integer(f, id);
                if (!facilityId) return "facility_id '" + stationdb::Trimmed(f[id]) + "' is not a whole number";
                const std::string code = stationdb::Upper(stationdb::TrimView(f[service]));
                if (code.empty() || code[0] != 'F') return {};  // not an FM-band service
                ++m_run.Summary().read;
                if (Inactive(f, active)) {
                    m_run.Skip("inactive facility");
                    return {};
                }
                FacilityInfo info;
                info.callsign = Text(f, callsign);
                info.service = code;
                info.city = Text(f, city);
                info.state = Text(f, state);
                info.status = Text(f, status);
                info.channel = Integer(f, channel);
                info.licenceApplication = stationdb::Trimmed(f[licence]);
                m_facilities.emplace(*facilityId, std::move(info));
                return {};
            });
    }

    void ReadApplicationFacilities(const fs::path& path) {
        std::size_t app = 0, facility = 0;
        std::optional<std::size_t> channel, country, licensee, cls, city, state, active;
        ReadTable(
            path,
            [&](const HeaderMap& h, const std::string& file) {
                app = h.Require({"afac_application_id"}, file);
                facility = h.Require({"afac_facility_id"}, file);
                channel = h.Find({"afac_channel"});
                country = h.Find({"country_code", "afac_country_code"});
                licensee = h.Find({"licensee_name"});
                cls = h.Find({"station_class_code", "afac_class_station_code"});
                city = h.Find({"afac_community_city"});
                state = h.Find({"afac_community_state_code"});
                active = h.Find({"active_ind"});
            },
            [&](const Fields& f) -> std::string {
                const auto facilityId = Integer(f, facility);
                if (!facilityId) return "afac_facility_id '" + stationdb::Trimmed(f[facility]) + "' is not a whole number";
                const auto found = m_facilities.find(*facilityId);
                const std::string appId = stationdb::Trimmed(f[app]);
                if (found == m_facilities.end() || found->second.picked || Inactive(f, active) ||
                    appId != found->second.licenceApplication || appId.empty())
                    return {};
                found->second.picked = true;
                Pick pick;
                pick.facilityId = *facilityId;
                pick.record.station_channel = Integer(f, channel);
                pick.country = Text(f, country);
                pick.licensee = Text(f, licensee).value_or("");
                pick.record.station_class = Text(f, cls);
                pick.afacCity = Text(f, city);
                pick.afacState = Text(f, state);
                m_pickByApp.emplace(appId, m_picks.size());
                m_picks.push_back(std::move(pick));
                return {};
            });
        const std::uint64_t without = m_facilities.size() - m_picks.size();
        if (without > 0) m_run.Summary().skipped["no licence application"] += without;
    }

    void ReadLocations(const fs::path& path) {
        std::size_t app = 0, loc = 0, latDeg = 0, latMin = 0, latSec = 0, latDir = 0, lonDeg = 0, lonMin = 0,
                    lonSec = 0, lonDir = 0;
        std::optional<std::size_t> active;
        ReadTable(
            path,
            [&](const HeaderMap& h, const std::string& file) {
                app = h.Require({"aloc_aapp_application_id"}, file);
                loc = h.Require({"aloc_loc_record_id"}, file);
                latDeg = h.Require({"aloc_lat_deg"}, file);
                latMin = h.Require({"aloc_lat_mm"}, file);
                latSec = h.Require({"aloc_lat_ss"}, file);
                latDir = h.Require({"aloc_lat_dir"}, file);
                lonDeg = h.Require({"aloc_long_deg"}, file);
                lonMin = h.Require({"aloc_long_mm"}, file);
                lonSec = h.Require({"aloc_long_ss"}, file);
                lonDir = h.Require({"aloc_long_dir"}, file);
                active = h.Find({"aloc_active_ind"});
            },
            [&](const Fields& f) -> std::string {
                const auto found = m_pickByApp.find(stationdb::Trimmed(f[app]));
                if (found == m_pickByApp.end() || Inactive(f, active)) return {};
                Pick& pick = m_picks[found->second];
                if (pick.located) return {};
                const auto lat = stationdb::StoredFromDmsText(f[latDeg], f[latMin], f[latSec], f[latDir], true);
                const auto lon = stationdb::StoredFromDmsText(f[lonDeg], f[lonMin], f[lonSec], f[lonDir], false);
                if (!lat || !lon) return "the coordinates are not degrees, minutes, seconds and hemisphere";
                pick.record.lat = *lat;
                pick.record.lon = *lon;
                pick.located = true;
                m_pickByLocation.emplace(stationdb::Trimmed(f[loc]), found->second);
                return {};
            });
    }

    void ReadAntennas(const fs::path& path) {
        std::size_t loc = 0, antenna = 0;
        std::optional<std::size_t> amsl, haat, hag, rotation, antennaId, type, active;
        ReadTable(
            path,
            [&](const HeaderMap& h, const std::string& file) {
                loc = h.Require({"aant_aloc_loc_record_id"}, file);
                antenna = h.Require({"aant_antenna_record_id"}, file);
                amsl = h.Find({"aant_rc_amsl", "aant_horiz_rc_amsl"});
                haat = h.Find({"aant_rc_haat", "aant_horiz_rc_haat"});
                hag = h.Find({"aant_rc_hag", "aant_horiz_rc_hgt"});
                rotation = h.Find({"aant_rotation_deg"});
                antennaId = h.Find({"aant_antenna_id"});
                type = h.Find({"aant_antenna_type_code"});
                active = h.Find({"aant_active_ind"});
            },
            [&](const Fields& f) -> std::string {
                const auto found = m_pickByLocation.find(stationdb::Trimmed(f[loc]));
                if (found == m_pickByLocation.end() || Inactive(f, active)) return {};
                Pick& pick = m_picks[found->second];
                if (pick.hasAntenna) return {};
                std::string problem;
                stationdb::FmRecord& r = pick.record;
                r.rcamsl_horiz_mtr = Number(f, amsl, "aant_rc_amsl", problem);
                r.haat_horiz_rc_mtr = Number(f, haat, "aant_rc_haat", problem);
                r.hag_horiz_rc_mtr = Number(f, hag, "aant_rc_hag", problem);
                r.ant_rotation = Number(f, rotation, "aant_rotation_deg", problem);
                r.antenna_id = Integer(f, antennaId);
                const std::string code = stationdb::Upper(stationdb::TrimView(FieldAt(f, type)));
                if (!code.empty()) r.da_ind = code[0] == 'D' ? "Y" : "N";
                if (!problem.empty()) return problem;
                pick.hasAntenna = true;
                m_pickByAntenna.emplace(stationdb::Trimmed(f[antenna]), found->second);
                return {};
            });
    }

    void ReadFrequencies(const fs::path& path) {
        std::size_t antenna = 0;
        std::optional<std::size_t> horiz, vert, power, maxErp, cls, active;
        ReadTable(
            path,
            [&](const HeaderMap& h, const std::string& file) {
                antenna = h.Require({"aafq_aant_antenna_record_id"}, file);
                horiz = h.Find({"aafq_horiz_erp_kw"});
                vert = h.Find({"aafq_vert_erp_kw"});
                power = h.Find({"aafq_power_erp_kw"});
                maxErp = h.Find({"aafq_max_erp_kw"});
                cls = h.Find({"aafq_class_station_code"});
                active = h.Find({"aafq_active_ind"});
            },
            [&](const Fields& f) -> std::string {
                const auto found = m_pickByAntenna.find(stationdb::Trimmed(f[antenna]));
                if (found == m_pickByAntenna.end() || Inactive(f, active)) return {};
                Pick& pick = m_picks[found->second];
                if (pick.hasFrequency) return {};
                std::string problem;
                stationdb::FmRecord& r = pick.record;
                const auto h = Number(f, horiz, "aafq_horiz_erp_kw", problem);
                const auto p = Number(f, power, "aafq_power_erp_kw", problem);
                r.horiz_erp = h ? h : p;
                r.vert_erp = Number(f, vert, "aafq_vert_erp_kw", problem);
                r.max_horiz_erp = Number(f, maxErp, "aafq_max_erp_kw", problem);
                pick.freqClass = Text(f, cls);
                if (!problem.empty()) return problem;
                pick.hasFrequency = true;
                return {};
            });
    }

    void ReadApplications(const fs::path& path) {
        std::size_t app = 0, fileNum = 0;
        ReadTable(
            path,
            [&](const HeaderMap& h, const std::string& file) {
                app = h.Require({"aapp_application_id"}, file);
                fileNum = h.Require({"aapp_file_num"}, file);
            },
            [&](const Fields& f) -> std::string {
                const auto found = m_pickByApp.find(stationdb::Trimmed(f[app]));
                if (found == m_pickByApp.end()) return {};
                const std::string number = stationdb::Trimmed(f[fileNum]);
                const std::size_t dash = number.find('-');
                stationdb::FmRecord& r = m_picks[found->second].record;
                r.file_prefix = OptionalText(number.substr(0, dash));
                if (dash != std::string::npos) r.app_arn = OptionalText(number.substr(dash + 1));
                return {};
            });
    }

    // The class the regulator lists for stations whose filings carry none.
    static std::optional<std::string> ClassOfService(const std::optional<std::string>& service) {
        if (service == "FX" || service == "FB") return "D";
        if (service == "FL") return "L1";
        return std::nullopt;
    }

    void WriteStations() {
        PartyBook parties;
        int nextId = 1;
        for (Pick& pick : m_picks) {
            if (!pick.located) {
                m_run.Skip("no transmitter location");
                continue;
            }
            const FacilityInfo& fac = m_facilities.at(pick.facilityId);
            stationdb::FmRecord& r = pick.record;
            if (!r.station_channel) r.station_channel = fac.channel;
            if (!r.station_channel || *r.station_channel < 200 || *r.station_channel > 300) {
                m_run.Skip("not an FM channel");
                continue;
            }
            r.facility_id = pick.facilityId;
            r.fac_callsign = fac.callsign;
            r.asd_service = fac.service;
            r.app_service = fac.service;
            r.fm_dom_status = fac.status;
            r.comm_city = fac.city ? fac.city : pick.afacCity;
            r.comm_state = fac.state ? fac.state : pick.afacState;
            if (!r.station_class) r.station_class = pick.freqClass ? pick.freqClass : ClassOfService(fac.service);
            const stationdb::StationCountry country =
                pick.country ? stationdb::CountryFromCode(*pick.country)
                             : stationdb::CountryOfStation(r.fac_callsign.value_or(""), r.comm_state.value_or(""));
            if (country != stationdb::StationCountry::US) MarkForeign(r);
            r.party_id = parties.IdFor(m_writer, pick.licensee);
            r.application_id = nextId;
            if (m_run.WriteFm(m_writer, r, country)) ++nextId;
        }
    }

    fs::path m_folder;
    stationdb::MasterWriter& m_writer;
    ImportRun& m_run;
    std::unordered_map<int, FacilityInfo> m_facilities;
    std::vector<Pick> m_picks;
    std::unordered_map<std::string, std::size_t> m_pickByApp, m_pickByLocation, m_pickByAntenna;
};

}  // namespace

bool ImportLms(const fs::path& folder, const ImportTarget& out, const ImportOptions& options,
               ImportSummary* summary) {
    return RunFolderImport<LmsImport>(":ImportLms:", "LMS dump", folder, out, options, summary);
}

}  // namespace qarvel::importers
