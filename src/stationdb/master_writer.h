#pragma once
// Writes a new master database: the importers of the regulator's station
// data, the demo generator and the benchmarks fill one through this class.
//
// The database is built unpacked (".fdb") in a private folder beside the
// destination, with one prepared INSERT per table inside one transaction.
// Finish() commits it and either packs it into the ".fmd" destination or
// moves the ".fdb" itself there; until then nothing exists under the
// destination's name, and a writer destroyed without Finish() removes
// everything it made.
//
// Stored units: lat and lon are degrees x 14400 truncated toward zero
// (StoredCoordinate in import_text.h), latitude positive north, longitude
// positive WEST. Timestamps are text "YYYY-MM-DD".

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "stationdb/schema.h"  // MasterHeader

namespace qarvel::stationdb {

// The owner every station without a known owner refers to. The searches and
// the job builder join fm_data to party on party_id, so a station whose
// party_id had no party row would silently drop out of every study; Finish()
// therefore adds an empty party row for each referenced id that has none.
inline constexpr int kNoOwnerPartyId = 0;

// Identifiers above this are reserved for what-if stations added to a job.
inline constexpr int kMaxImportedApplicationId = 100000000;

// One row of fm_data, every column in table order. Nullable columns are
// optional; the study queries filter on asd_service, fm_dom_status,
// station_channel and station_class, so importers fill those whenever their
// source allows.
struct FmRecord {
    int application_id = 0;               // primary key, 1 to kMaxImportedApplicationId
    int party_id = kNoOwnerPartyId;       // owner, refers to party
    int lat = 0;                          // 1/14400 degree, north positive
    int lon = 0;                          // 1/14400 degree, WEST positive
    std::optional<std::string> cutoff_date;  // "YYYY-MM-DD"
    std::optional<std::string> cp_exp_date;  // "YYYY-MM-DD"
    std::optional<std::string> app_arn;
    std::optional<std::string> app_service;
    std::optional<std::string> asd_service;  // "FM", "FX", "FL", "FB", "FS", "FA", "FR"
    std::optional<int> facility_id;
    std::optional<std::string> file_prefix;
    std::optional<std::string> comm_city;
    std::optional<std::string> comm_state;
    std::optional<std::string> fac_callsign;
    std::optional<int> asrn;
    std::optional<std::string> border_code;  // "A" for Canadian and Mexican stations
    std::optional<double> border_dist;       // km
    std::optional<double> elev_amsl;         // m
    std::optional<std::string> fm_dom_status;  // "LIC", "CP", "APP", "VAC", ...
    std::optional<double> hag_horiz_rc_mtr;  // m
    std::optional<double> max_horiz_erp;     // kW
    std::optional<int> station_channel;      // 200 to 300
    std::optional<std::string> station_class;  // "A", "B1", "C0", "D", "L1", ...
    std::optional<double> horiz_erp;         // kW
    std::optional<double> vert_erp;          // kW
    std::optional<double> haat_horiz_rc_mtr;  // m
    std::optional<double> rcamsl_horiz_mtr;   // m
    std::optional<double> ant_rotation;       // degrees
    std::optional<std::string> docket_num;
    std::optional<std::string> bt_ind;
    std::optional<std::string> rule_73_215_req_ind;
    std::optional<std::string> da_ind;        // "Y" directional, "N" not
    std::optional<int> antenna_id;
    std::optional<std::string> intl_class;
    std::optional<std::string> intl_status;
};

struct AmRecord {
    int application_id = 0;
    std::optional<std::string> comm_city;
    std::optional<std::string> comm_state;
    int party_id = kNoOwnerPartyId;
    std::optional<std::string> ant_mode;  // "DA1", "ND2", ...
    int lat = 0;                          // 1/14400 degree, north positive
    int lon = 0;                          // 1/14400 degree, WEST positive
    std::optional<std::string> fac_callsign;
};

struct Tv6Record {
    int application_id = 0;
    std::optional<std::string> comm_city;
    std::optional<std::string> comm_state;
    int party_id = kNoOwnerPartyId;
    int lat = 0;  // 1/14400 degree, north positive
    int lon = 0;  // 1/14400 degree, WEST positive
    std::optional<std::string> fac_zone;
    std::optional<std::string> fac_callsign;
};

struct PartyRecord {
    int party_id = 0;
    std::optional<std::string> party_address1;
    std::optional<std::string> party_address2;
    std::optional<std::string> party_company;
    std::optional<std::string> party_legal_name;
    std::optional<std::string> party_name;  // shown as "Owner"
    std::optional<std::string> party_city;
    std::optional<std::string> party_state;
    std::optional<std::string> party_country;
    std::optional<std::string> party_zip1;
    std::optional<std::string> party_phone;  // digits only
    std::optional<std::string> party_email;
};

struct PlaceRecord {
    std::string name;
    std::optional<int> pop;
    int lat = 0;  // 1/14400 degree, north positive
    int lon = 0;  // 1/14400 degree, WEST positive
};

enum class MasterOutput {
    Packed,    // destination is a ".fmd" container holding the database
    Unpacked,  // destination is the ".fdb" database itself
};

enum class AddResult {
    Added,
    Duplicate,  // a row with the same key is already there; nothing added
    Failed,     // a database failure, reported through the error trap
};

class MasterWriter {
public:
    MasterWriter();
    ~MasterWriter();  // removes everything it made unless Finish() succeeded
    MasterWriter(const MasterWriter&) = delete;
    MasterWriter& operator=(const MasterWriter&) = delete;

    // Starts a master database that Finish() will put at destination. The
    // destination's folder must exist; a file already there is replaced only
    // by a successful Finish(). An empty header.creation_date becomes today's
    // day code; an empty creation_size becomes the number of FM rows. Returns
    // false (reported through the error trap) when the database cannot be made.
    bool Open(const std::filesystem::path& destination, const MasterHeader& header,
              MasterOutput output = MasterOutput::Packed);

    AddResult AddFm(const FmRecord& record);
    AddResult AddAm(const AmRecord& record);
    AddResult AddTv6(const Tv6Record& record);
    AddResult AddParty(const PartyRecord& record);
    bool AddPlace(const PlaceRecord& record);

    // Adds the missing owner rows, commits, and packs the database into the
    // destination (or moves it there). False on failure, in which case the
    // destination is as it was before.
    bool Finish();
    // Drops everything made so far. Safe to call more than once.
    void Abandon();

    bool IsOpen() const;
    std::uint64_t FmCount() const { return m_fm; }
    std::uint64_t AmCount() const { return m_am; }
    std::uint64_t Tv6Count() const { return m_tv6; }
    std::uint64_t PartyCount() const { return m_party; }
    std::uint64_t PlaceCount() const { return m_places; }
    // The text of the last failure ("" when none).
    const std::string& LastError() const { return m_lastError; }

private:
    struct State;
    template <class Body>
    AddResult Insert(const char* routine, std::uint64_t& counter, Body&& body);

    std::unique_ptr<State> m_state;
    std::uint64_t m_fm = 0, m_am = 0, m_tv6 = 0, m_party = 0, m_places = 0;
    std::string m_lastError;
};

}  // namespace qarvel::stationdb
