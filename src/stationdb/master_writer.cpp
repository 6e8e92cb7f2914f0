#include "stationdb/master_writer.h"

#include <sqlite3.h>

#include "core/error_trap.h"
#include "stationdb/database.h"
#include "stationdb/day_code.h"
#include "stationdb/master_package.h"

namespace qarvel::stationdb {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kModule = "modFMdb";

constexpr std::string_view kInsertFm =
    "INSERT INTO fm_data (application_id, party_id, lat, lon, cutoff_date, cp_exp_date,"
    " app_arn, app_service, asd_service, facility_id, file_prefix, comm_city, comm_state,"
    " fac_callsign, asrn, border_code, border_dist, elev_amsl, fm_dom_status,"
    " hag_horiz_rc_mtr, max_horiz_erp, station_channel, station_class, horiz_erp, vert_erp,"
    " haat_horiz_rc_mtr, rcamsl_horiz_mtr, ant_rotation, docket_num, bt_ind,"
    " rule_73_215_req_ind, da_ind, antenna_id, intl_class, intl_status) VALUES"
    " (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16, ?17, ?18,"
    " ?19, ?20, ?21, ?22, ?23, ?24, ?25, ?26, ?27, ?28, ?29, ?30, ?31, ?32, ?33, ?34, ?35)";
constexpr std::string_view kInsertAm =
    "INSERT INTO am_data (application_id, comm_city, comm_state, party_id, ant_mode, lat, lon,"
    " fac_callsign) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)";
constexpr std::string_view kInsertTv6 =
    "INSERT INTO tv6_data (application_id, comm_city, comm_state, party_id, lat, lon, fac_zone,"
    " fac_callsign) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)";
constexpr std::string_view kInsertParty =
    "INSERT INTO party (party_id, party_address1, party_address2, party_company,"
    " party_legal_name, party_name, party_city, party_state, party_country, party_zip1,"
    " party_phone, party_email) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12)";
constexpr std::string_view kInsertPlace =
    "INSERT INTO places (name, pop, lat, lon) VALUES (?1, ?2, ?3, ?4)";
// Every owner a station refers to gets a row, so that joins on party_id keep
// the station (see kNoOwnerPartyId).
constexpr std::string_view kAddMissingParties =
    "INSERT INTO party (party_id, party_name)"
    " SELECT DISTINCT party_id, '' FROM (SELECT party_id FROM fm_data"
    " UNION SELECT party_id FROM am_data UNION SELECT party_id FROM tv6_data)"
    " WHERE party_id IS NOT NULL AND party_id NOT IN (SELECT party_id FROM party)";

void RemoveTree(const fs::path& path) {
    if (path.empty()) return;
    std::error_code ec;
    fs::remove_all(path, ec);
}

bool IsConstraintFailure(const DatabaseError& e) { return (e.Code() & 0xff) == SQLITE_CONSTRAINT; }

}  // namespace

// Members are declared so that the transaction is rolled back and the
// statements finalised before the database closes.
struct MasterWriter::State {
    fs::path destination;
    MasterOutput output = MasterOutput::Packed;
    fs::path folder;  // private working folder beside the destination
    fs::path fdb;
    bool fillCreationSize = false;
    Database db;
    Statement fm, am, tv6, party, place;
    std::unique_ptr<Transaction> transaction;

    void ReleaseStatements() {
        fm = Statement();
        am = Statement();
        tv6 = Statement();
        party = Statement();
        place = Statement();
    }

    ~State() {
        transaction.reset();
        ReleaseStatements();
        if (db.IsOpen()) db.Close();
        RemoveTree(folder);
    }
};

MasterWriter::MasterWriter() = default;
MasterWriter::~MasterWriter() = default;

bool MasterWriter::IsOpen() const { return m_state != nullptr; }

void MasterWriter::Abandon() { m_state.reset(); }

bool MasterWriter::Open(const fs::path& destination, const MasterHeader& header, MasterOutput output) {
    Abandon();
    m_fm = m_am = m_tv6 = m_party = m_places = 0;
    m_lastError.clear();
    auto state = std::make_unique<State>();
    const bool opened = core::Trapped(kModule, ":MasterWriter.Open:", false, [&] {
        if (!destination.has_filename()) throw core::TrapError("no file name in \"" + destination.string() + "\"");
        const fs::path parent = destination.parent_path().empty() ? fs::path(".") : destination.parent_path();
        if (!fs::is_directory(parent)) throw core::TrapError("folder does not exist: " + parent.string());
        state->destination = destination;
        state->output = output;
        state->folder = TempPathBeside(destination);
        fs::create_directory(state->folder);
        state->fdb = state->folder / destination.stem();
        state->fdb += ".fdb";

        MasterHeader h = header;
        if (h.creation_date.empty()) h.creation_date = DayCodeText(TodayDayCode());
        state->fillCreationSize = h.creation_size.empty();
        if (!CreateMasterDatabase(state->fdb, h)) throw core::TrapError("cannot create " + state->fdb.string());

        state->db = Database(state->fdb, OpenMode::ReadWrite);
        // A half-built file is thrown away on any failure, so durability of
        // each step buys nothing; the commit at the end still writes it whole.
        state->db.Exec("PRAGMA synchronous=OFF");
        state->transaction = std::make_unique<Transaction>(state->db);
        state->fm = state->db.Prepare(kInsertFm);
        state->am = state->db.Prepare(kInsertAm);
        state->tv6 = state->db.Prepare(kInsertTv6);
        state->party = state->db.Prepare(kInsertParty);
        state->place = state->db.Prepare(kInsertPlace);
        return true;
    });
    if (!opened) {
        m_lastError = "cannot create a master database for " + destination.string();
        return false;
    }
    m_state = std::move(state);
    return true;
}

template <class Body>
AddResult MasterWriter::Insert(const char* routine, std::uint64_t& counter, Body&& body) {
    if (!m_state) {
        m_lastError = "the master database is not open";
        core::ReportError(kModule, routine, m_lastError);
        return AddResult::Failed;
    }
    try {
        body(*m_state);
        ++counter;
        return AddResult::Added;
    } catch (const DatabaseError& e) {
        if (IsConstraintFailure(e)) return AddResult::Duplicate;
        m_lastError = e.what();
    } catch (const std::exception& e) {
        m_lastError = e.what();
    }
    core::ReportError(kModule, routine, m_lastError);
    return AddResult::Failed;
}

AddResult MasterWriter::AddFm(const FmRecord& r) {
    return Insert(":MasterWriter.AddFm:", m_fm, [&](State& s) {
        s.fm.BindAll(r.application_id, r.party_id, r.lat, r.lon, r.cutoff_date, r.cp_exp_date, r.app_arn,
                     r.app_service, r.asd_service, r.facility_id, r.file_prefix, r.comm_city, r.comm_state,
                     r.fac_callsign, r.asrn, r.border_code, r.border_dist, r.elev_amsl, r.fm_dom_status,
                     r.hag_horiz_rc_mtr, r.max_horiz_erp, r.station_channel, r.station_class, r.horiz_erp,
                     r.vert_erp, r.haat_horiz_rc_mtr, r.rcamsl_horiz_mtr, r.ant_rotation, r.docket_num, r.bt_ind,
                     r.rule_73_215_req_ind, r.da_ind, r.antenna_id, r.intl_class, r.intl_status);
        s.fm.Run();
    });
}

AddResult MasterWriter::AddAm(const AmRecord& r) {
    return Insert(":MasterWriter.AddAm:", m_am, [&](State& s) {
        s.am.BindAll(r.application_id, r.comm_city, r.comm_state, r.party_id, r.ant_mode, r.lat, r.lon,
                     r.fac_callsign);
        s.am.Run();
    });
}

AddResult MasterWriter::AddTv6(const Tv6Record& r) {
    return Insert(":MasterWriter.AddTv6:", m_tv6, [&](State& s) {
        s.tv6.BindAll(r.application_id, r.comm_city, r.comm_state, r.party_id, r.lat, r.lon, r.fac_zone,
                      r.fac_callsign);
        s.tv6.Run();
    });
}

AddResult MasterWriter::AddParty(const PartyRecord& r) {
    return Insert(":MasterWriter.AddParty:", m_party, [&](State& s) {
        s.party.BindAll(r.party_id, r.party_address1, r.party_address2, r.party_company, r.party_legal_name,
                        r.party_name, r.party_city, r.party_state, r.party_country, r.party_zip1, r.party_phone,
                        r.party_email);
        s.party.Run();
    });
}

bool MasterWriter::AddPlace(const PlaceRecord& r) {
    return Insert(":MasterWriter.AddPlace:", m_places, [&](State& s) {
               s.place.BindAll(r.name, r.pop, r.lat, r.lon);
               s.place.Run();
           }) == AddResult::Added;
}

bool MasterWriter::Finish() {
    if (!m_state) {
        m_lastError = "the master database is not open";
        core::ReportError(kModule, ":MasterWriter.Finish:", m_lastError);
        return false;
    }
    const bool done = core::Trapped(kModule, ":MasterWriter.Finish:", false, [&] {
        State& s = *m_state;
        s.db.Exec(kAddMissingParties);
        m_party += static_cast<std::uint64_t>(s.db.Changes());
        if (s.fillCreationSize) s.db.Run("UPDATE information SET creation_size = ?1", std::to_string(m_fm));
        s.transaction->Commit();
        s.transaction.reset();
        s.ReleaseStatements();
        s.db.Close();
        if (s.output == MasterOutput::Packed) {
            if (!PackMasterDatabase(s.fdb, s.destination)) throw core::TrapError("cannot pack " + s.destination.string());
        } else {
            fs::rename(s.fdb, s.destination);
        }
        return true;
    });
    if (!done && m_lastError.empty()) m_lastError = "cannot write " + m_state->destination.string();
    m_state.reset();  // removes the working folder either way
    return done;
}

}  // namespace qarvel::stationdb
