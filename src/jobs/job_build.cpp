// MakeNewJob: the spatial selection and copy that fills a new job database.
//
// The job database is opened read-write with the master (and the local
// database) ATTACHed read-only, so a station is copied by one INSERT ...
// SELECT on its primary key, with the columns the two layouts share, by
// name. The box queries run on the master's and the local database's own
// connections, so the fixed query texts name their tables unqualified.

#include "jobs/job_build.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <ctime>
#include <limits>
#include <optional>
#include <system_error>
#include <vector>

#include "core/error_trap.h"
#include "core/prompt.h"
#include "geodesy/geodesy.h"
#include "stationdb/database.h"
#include "stationdb/schema.h"

namespace qarvel::jobs {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kModule = "modFMdb";
constexpr std::string_view kRoutine = ":MakeNewJob:";
constexpr std::string_view kMasterSchema = "master_db";
constexpr std::string_view kLocalSchema = "local_db";
constexpr double kStoredUnitsPerDegree = 14400.0;

// Unwinds a build the user stopped; not an error, so never reported.
struct BuildCancelled {};

std::string Lower(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return out;
}

std::int32_t ToStoredBound(double degrees) {
    // Rounded to nearest, halves to even (the default rounding mode).
    const double units = std::nearbyint(degrees * kStoredUnitsPerDegree);
    if (!(units >= std::numeric_limits<std::int32_t>::min() &&
          units <= std::numeric_limits<std::int32_t>::max())) {
        throw core::TrapError("Overflow: search box bound " + std::to_string(degrees));
    }
    return static_cast<std::int32_t>(units);
}

// The columns of `table` in the job layout that the source also has, quoted
// and comma-separated in the job's column order. A master with extra columns,
// or without columns a later layout added, still copies what both hold.
std::string SharedColumns(const stationdb::Database& job, std::string_view table, std::string_view schema) {
    std::vector<std::string> source;
    for (const std::string& name : job.ColumnNames(table, schema)) source.push_back(Lower(name));
    std::string list;
    for (const std::string& name : job.ColumnNames(table, "main")) {
        if (std::find(source.begin(), source.end(), Lower(name)) == source.end()) continue;
        if (!list.empty()) list += ", ";
        list += stationdb::QuoteIdentifier(name);
    }
    if (list.empty()) throw core::TrapError("table " + std::string(table) + " of " + std::string(schema) +
                                            " shares no column with the job");
    return list;
}

// "INSERT OR IGNORE INTO main.table (...) SELECT ... FROM schema.table WHERE
// key = ?1": one seek on the source's key, a row already in the job is kept.
stationdb::Statement PrepareCopy(const stationdb::Database& job, std::string_view table, std::string_view key, std::string_view schema) {
    const std::string columns = SharedColumns(job, table, schema);
    const std::string sql = "INSERT OR IGNORE INTO main." + stationdb::QuoteIdentifier(table) + " (" + columns + ") SELECT " +
                            columns + " FROM " + stationdb::QuoteIdentifier(schema) + "." + stationdb::QuoteIdentifier(table) +
                            " WHERE " + std::string(key) + " = ?1";
    return job.Prepare(sql);
}

std::string TodayTimestamp() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d 00:00:00", &local);
    return text;
}

class JobBuilder {
public:
    JobBuilder(const NewJobInputs& in, const JobBuildControl& control, int channel)
        : m_in(in), m_control(control), m_channel(channel),
          m_box(ComputeSearchBox(in.scanRange, in.lat, in.lon)),
          m_range(static_cast<float>(in.scanRange)) {}

    void Run() {
        m_job = stationdb::Database(m_in.jobPath, stationdb::OpenMode::ReadWrite);
        // A scratch file: a crash loses the build either way, so skip the syncs.
        m_job.Exec("PRAGMA synchronous = OFF");
        m_master = stationdb::Database(m_in.masterPath, stationdb::OpenMode::ReadOnly);
        m_job.Attach(m_in.masterPath, kMasterSchema);
        const bool useLocal = m_in.useLocal && !m_in.localPath.empty();
        if (useLocal) {
            m_local = stationdb::Database(m_in.localPath, stationdb::OpenMode::ReadOnly);
            m_job.Attach(m_in.localPath, kLocalSchema);
        }
        // The owners' link: ATTACH is refused inside a transaction, so it is
        // made before the one transaction of the build and removed after it.
        m_job.Attach(m_in.masterPath, kPartyLink);
        {
            stationdb::Transaction transaction(m_job);
            ScanMasterStations();
            if (useLocal) ScanLocalStations();
            WriteHeader();
            CopyOwners(useLocal);
            CopyCities();
            if (useLocal) CopyMarkers();
            transaction.Commit();
        }
        m_job.Detach(kPartyLink);
        if (useLocal) m_job.Detach(kLocalSchema);
        m_job.Detach(kMasterSchema);
    }

private:
    void Caption(std::string_view caption) const {
        if (m_control.progress) m_control.progress(std::string(caption));
    }
    void CheckCancel() const {
        if (m_control.cancel != nullptr && m_control.cancel->load(std::memory_order_relaxed)) throw BuildCancelled{};
    }

    // The rows of `source` to measure: the search box, or every row in the
    // reference variant (the head less its " WHERE ").
    stationdb::Statement SelectRows(const stationdb::Database& source, std::string_view head) const {
        if (m_control.boxPreselect) return source.Prepare(std::string(head) + BoxCondition(m_box));
        constexpr std::string_view kWhere = " WHERE ";
        return source.Prepare(std::string(head.substr(0, head.size() - kWhere.size())) + ";");
    }

    // Calls copy(application_id) for every row of the query within range.
    template <class Copy>
    void ScanRows(stationdb::Statement& rows, Copy&& copy) {
        while (rows.Step()) {
            CheckCancel();
            if (rows.IsNull(0) || rows.IsNull(1)) continue;
            const float distance = StationDistanceKm(m_in.lat, m_in.lon, rows.GetInt(0), rows.GetInt(1));
            if (distance < m_range) copy(rows.GetInt64(2));
        }
    }

    // One master table: each station within range is copied in its local
    // form when the local database holds it (the user's edit wins), else as
    // the master has it.
    void ScanMasterTable(std::string_view table, std::string_view head) {
        stationdb::Statement fromMaster = PrepareCopy(m_job, table, "application_id", kMasterSchema);
        std::optional<stationdb::Statement> fromLocal;
        if (m_local.IsOpen() && m_local.HasTable(table)) {
            fromLocal = PrepareCopy(m_job, table, "application_id", kLocalSchema);
        }
        stationdb::Statement rows = SelectRows(m_master, head);
        ScanRows(rows, [&](std::int64_t id) {
            if (fromLocal) {
                fromLocal->Bind(1, id).Run();
                if (m_job.Changes() > 0) return;
            }
            fromMaster.Bind(1, id).Run();
        });
    }

    void ScanMasterStations() {
        Caption(kCaptionScanFm);
        ScanMasterTable("fm_data", kFmBoxSelect);
        Caption(kCaptionScanTv6);
        ScanMasterTable("tv6_data", kTv6BoxSelect);
        Caption(kCaptionScanAm);
        ScanMasterTable("am_data", kAmBoxSelect);
    }

    // The three further scans: stations within range by their local position
    // that are not in the job yet (local-only stations, and edited stations
    // that the user moved into range).
    void ScanLocalStations() {
        Caption(kCaptionScanLocal);
        const std::pair<std::string_view, std::string_view> tables[] = {
            {"fm_data", kFmBoxSelect}, {"tv6_data", kTv6BoxSelect}, {"am_data", kAmBoxSelect}};
        for (const auto& [table, head] : tables) {
            if (!m_local.HasTable(table)) continue;
            stationdb::Statement fromLocal = PrepareCopy(m_job, table, "application_id", kLocalSchema);
            stationdb::Statement rows = SelectRows(m_local, head);
            ScanRows(rows, [&](std::int64_t id) { fromLocal.Bind(1, id).Run(); });
        }
    }

    void WriteHeader() {
        stationdb::Statement insert = m_job.Prepare(
            "INSERT INTO information (CDate, Comments, Source, TChan, TLat, TLon, TClass, TIClass,"
            " OffSetN, OffSetW, ScanRange) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11)");
        insert.BindAll(TodayTimestamp(), m_in.comments.empty() ? std::string("No Comments") : m_in.comments,
                       m_in.source, m_channel, m_in.lat, m_in.lon, m_in.stationClass, m_in.intlClass,
                       m_in.offsetN, m_in.offsetW, static_cast<int>(m_in.scanRange));
        insert.Run();
    }

    // Owners of every copied station, from the master through the
    // link_to_party attachment; an owner the master lacks comes from the
    // local database (the owner of a local-only station).
    void CopyOwners(bool useLocal) {
        Caption(kCaptionParties);
        std::vector<std::int64_t> ids;
        for (stationdb::Statement owners = m_job.Prepare(kPartyUnion); owners.Step();) {
            if (!owners.IsNull(0)) ids.push_back(owners.GetInt64(0));
        }
        stationdb::Statement fromMaster = PrepareCopy(m_job, "party", "party_id", kPartyLink);
        std::optional<stationdb::Statement> fromLocal;
        if (useLocal && m_local.HasTable("party")) fromLocal = PrepareCopy(m_job, "party", "party_id", kLocalSchema);
        for (const std::int64_t id : ids) {
            CheckCancel();
            fromMaster.Bind(1, id).Run();
            if (m_job.Changes() == 0 && fromLocal) fromLocal->Bind(1, id).Run();
        }
    }

    // Rows of source.table within 350 km of the centre, copied by rowid.
    void CopyNearby(const stationdb::Database& source, std::string_view schema, std::string_view table) {
        if (!source.HasTable(table)) return;
        stationdb::Statement copy = PrepareCopy(m_job, table, "rowid", schema);
        stationdb::Statement rows = source.Prepare("SELECT lat, lon, rowid FROM " + std::string(table) + ";");
        while (rows.Step()) {
            CheckCancel();
            if (rows.IsNull(0) || rows.IsNull(1)) continue;
            const float distance = StationDistanceKm(m_in.lat, m_in.lon, rows.GetInt(0), rows.GetInt(1));
            if (distance < kSurroundingsKm) copy.Bind(1, rows.GetInt64(2)).Run();
        }
    }

    void CopyCities() {
        Caption(kCaptionCities);
        CopyNearby(m_master, kMasterSchema, "places");
    }

    void CopyMarkers() {
        Caption(kCaptionMarkers);
        CopyNearby(m_local, kLocalSchema, "markers");
    }

    const NewJobInputs& m_in;
    const JobBuildControl& m_control;
    int m_channel;
    SearchBox m_box;
    float m_range;
    stationdb::Database m_job, m_master, m_local;
};

void RemoveQuietly(const fs::path& path) {
    std::error_code ec;
    fs::remove(path, ec);
    fs::path journal = path;
    journal += "-journal";
    fs::remove(journal, ec);
}

}  // namespace

SearchBox ComputeSearchBox(std::int16_t scanRangeKm, double latDeg, double lonDeg) {
    const float range = static_cast<float>(scanRangeKm);
    const float dLat = range / geodesy::KmPerDegLat(latDeg);
    const float dLon = range / geodesy::KmPerDegLon(latDeg);
    SearchBox box;
    box.north = ToStoredBound(std::min(latDeg + dLat, kBoxNorthLimit));
    box.south = ToStoredBound(std::max(latDeg - dLat, kBoxSouthLimit));
    box.l1 = ToStoredBound(lonDeg + dLon);
    box.l2 = ToStoredBound(lonDeg - dLon);
    return box;
}

std::string BoxCondition(const SearchBox& box) {
    return "(lat BETWEEN " + std::to_string(box.north) + " AND " + std::to_string(box.south) + ") AND " +
           "(lon BETWEEN " + std::to_string(box.l1) + " AND " + std::to_string(box.l2) + ");";
}

float StationDistanceKm(double centreLat, double centreLon, std::int32_t storedLat, std::int32_t storedLon) {
    double northKm = 0;
    double eastKm = 0;
    return static_cast<float>(geodesy::FlatDistance(centreLat, centreLon, storedLat / kStoredUnitsPerDegree,
                                                    storedLon / kStoredUnitsPerDegree, northKm, eastKm));
}

bool ParseJobChannel(std::string_view text, int* channel) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    double value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || ec != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return false;
    const double rounded = std::nearbyint(value);  // halves to even, as a 16-bit conversion rounds
    if (rounded < 200 || rounded > 300) return false;
    if (channel != nullptr) *channel = static_cast<int>(rounded);
    return true;
}

bool ValidJobLocation(double latDeg, double lonDeg) {
    if (!std::isfinite(latDeg) || !std::isfinite(lonDeg)) return false;
    if (latDeg < -kMaxTargetLatitude || latDeg > kMaxTargetLatitude) return false;
    return latDeg != 0 || lonDeg != 0;
}

bool MakeNewJob(const NewJobInputs& inputs, const JobBuildControl& control) {
    bool created = false;
    const bool built = core::Trapped(kModule, kRoutine, false, [&] {
        int channel = 0;
        if (!ParseJobChannel(inputs.channel, &channel)) {
            core::ShowPrompt("Invalid channel", {}, core::PromptButtons::Ok, core::PromptIcon::Critical);
            return false;
        }
        if (!ValidJobLocation(inputs.lat, inputs.lon)) {
            core::ShowPrompt("Invalid location", {}, core::PromptButtons::Ok, core::PromptIcon::Critical);
            return false;
        }
        if (!stationdb::CreateJobDatabase(inputs.jobPath)) return false;
        created = true;
        try {
            JobBuilder(inputs, control, channel).Run();
        } catch (const BuildCancelled&) {
            return false;
        }
        return true;
    });
    if (!built && created) RemoveQuietly(inputs.jobPath);
    return built;
}

}  // namespace qarvel::jobs
