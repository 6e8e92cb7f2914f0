// The study table: its layout, the per-station computations and the rebuild.

#include "jobview/temp_display.h"

#include <sqlite3.h>

#include <array>
#include <cmath>
#include <cstdio>

#include "core/error_trap.h"
#include "geodesy/geodesy.h"
#include "jobview/station_colors.h"
#include "jobview/temp_display_rows.h"
#include "jobview/where_clause.h"
#include "spacing/class_codes.h"
#include "spacing/min_sep.h"
#include "stationdb/database.h"

namespace qarvel::jobview {

namespace {

constexpr int kFirstFmChannel = 200;
constexpr int kLastFmChannel = 300;

// A whole-degree bearing as an int column stores it: rounded half to even.
int WholeBearing(double bearingDeg) { return static_cast<int>(std::nearbyint(bearingDeg)); }

// Distance, bearing from the target, and the offsets about the map centre:
// x = km west (offset_right), y = km north (offset_up).
void PlaceRow(const StudyTarget& target, const MapCentre& centre, TempDisplayRow& row) {
    row.latdms = geodesy::DegToDMS(row.lat);
    row.londms = geodesy::DegToDMS(row.lon);
    double north = 0, east = 0, bearing = 0;
    row.target_distance = geodesy::FlatDistance(target.lat, target.lon, row.lat, row.lon, north, east);
    if (centre.lat != target.lat || centre.lon != target.lon) {
        geodesy::FlatDistance(centre.lat, centre.lon, row.lat, row.lon, north, east);
    }
    row.offset_up = north;
    row.offset_right = -east;
    double distance = 0;
    geodesy::DistBearing(target.lat, target.lon, row.lat, row.lon, distance, bearing);
    row.target_bearing = WholeBearing(bearing);
}

spacing::StationRec TargetRec(const StudyTarget& target) {
    spacing::StationRec rec;
    rec.lat = target.lat;
    rec.lon = target.lon;
    rec.station_channel = static_cast<int16_t>(target.channel);
    rec.station_class = target.stationClass;
    rec.intl_class = target.intlClass;
    rec.service = "FM";
    return rec;
}

void FinishRow(TempDisplayRow& row, double separation) {
    row.radius = separation;
    row.target_clearance = row.target_distance - separation;
    row.color2 = ColorByClearance(row.target_clearance, row.rule_73_215_req_ind.value_or(""));
}

std::string Trimmed(const std::optional<std::string>& text) {
    if (!text) return {};
    const std::size_t first = text->find_first_not_of(' ');
    if (first == std::string::npos) return {};
    return text->substr(first, text->find_last_not_of(' ') - first + 1);
}

void FillTv6Row(const StudyTarget& target, const MapCentre& centre, const std::string& facZone,
                TempDisplayRow& row) {
    row.service = "TV";
    PlaceRow(target, centre, row);
    spacing::StationRec tv;
    tv.lat = row.lat;
    tv.lon = row.lon;
    tv.service = "TV";
    tv.zone = spacing::ZoneIndex(facZone);
    tv.comm_state = row.comm_state.value_or("");
    row.adjacency = spacing::RelName[6];
    row.color1 = kColorTV6;
    FinishRow(row, spacing::LookupMinSep(TargetRec(target), tv));
}

void FillAmRow(const StudyTarget& target, const MapCentre& centre, TempDisplayRow& row) {
    row.service = "AM";
    PlaceRow(target, centre, row);
    row.adjacency = "AM";
    FinishRow(row, 0.0);
    row.color1 = kColorAM;
    row.color2 = kColorAM;
}

// The working copy of a job is expendable - the saved job is its packed
// ".fmj" - and the study table is rebuilt whenever the job is opened, so its
// rebuild need not wait for the disk: the connection's synchronous setting
// is OFF for the rebuild and put back after. SQLite refuses the change inside
// a transaction; a caller's open transaction keeps its setting.
class UnsyncedRebuild {
public:
    explicit UnsyncedRebuild(stationdb::Database& db) : m_db(db) {
        if (sqlite3_get_autocommit(db.Handle()) == 0) return;
        stationdb::Statement current = db.Prepare("PRAGMA synchronous;");
        if (!current.Step()) return;
        m_previous = current.GetInt(0);
        current = stationdb::Statement();
        db.Exec("PRAGMA synchronous=OFF;");
    }
    ~UnsyncedRebuild() {
        if (m_previous < 0) return;
        try {
            m_db.Exec("PRAGMA synchronous=" + std::to_string(m_previous) + ";");
        } catch (const std::exception&) {
            // The setting only affects speed and crash safety of the scratch copy.
        }
    }
    UnsyncedRebuild(const UnsyncedRebuild&) = delete;
    UnsyncedRebuild& operator=(const UnsyncedRebuild&) = delete;

private:
    stationdb::Database& m_db;
    int m_previous = -1;
};

std::string FormatChannelText(int channel) {
    const double mhz = 87.9 + 0.2 * (channel - 200);
    char text[48];
    std::snprintf(text, sizeof text, "%d : %04.1f MHz", channel, mhz);
    return text;
}

}  // namespace

std::string CreateTempDisplaySql() {
    std::string sql = "CREATE TABLE tempdisplay (";
    for (std::size_t i = 0; i < kTempDisplayColumns.size(); ++i) {
        if (i > 0) sql += ", ";
        sql += std::string(kTempDisplayColumns[i].name) + " " + std::string(kTempDisplayColumns[i].type);
    }
    return sql + ");";
}

std::string_view ServiceOfApplication(std::int64_t applicationId) {
    return applicationId > kLastMasterApplicationId ? "ED" : "FM";
}

std::string ChannelText(int channel) {
    // The FM band's texts are made once: the rebuild asks for one per row.
    static const std::array<std::string, kLastFmChannel - kFirstFmChannel + 1> band = [] {
        std::array<std::string, kLastFmChannel - kFirstFmChannel + 1> texts;
        for (int c = kFirstFmChannel; c <= kLastFmChannel; ++c) texts[c - kFirstFmChannel] = FormatChannelText(c);
        return texts;
    }();
    if (channel < kFirstFmChannel || channel > kLastFmChannel) return FormatChannelText(channel);
    return band[static_cast<std::size_t>(channel - kFirstFmChannel)];
}

void ComputeFmRow(const StudyTarget& target, const MapCentre& centre, int channel, TempDisplayRow& row) {
    row.service = std::string(ServiceOfApplication(row.application_id));
    row.station_channel = channel;
    row.channel_text = ChannelText(channel);
    PlaceRow(target, centre, row);
    spacing::StationRec other;
    other.lat = row.lat;
    other.lon = row.lon;
    other.station_channel = static_cast<int16_t>(channel);
    other.relation = spacing::RelationFromChannels(target.channel, channel);
    other.station_class = spacing::ClassIndex(row.station_class.value_or(""));
    other.intl_class = spacing::ClassIndex(row.intl_class.value_or(""));
    other.border_code = Trimmed(row.border_code);
    other.service = row.service;
    other.comm_state = Trimmed(row.comm_state);
    // The query admits related channels only; an unrelated row (a channel
    // outside the FM band) gets no separation rather than a table fault.
    const bool related = other.relation >= 0;
    row.adjacency = related ? spacing::RelName[static_cast<std::size_t>(other.relation) + 1] : "";
    row.color1 = ColorByRelation(other.relation);
    FinishRow(row, related ? spacing::LookupMinSep(TargetRec(target), other) : 0);
}

bool NewData(stationdb::Database& job, const StudyFilter& filter, const MapCentre* centre) {
    return core::TrappedVoid(kJobDisplayModule, ":NewData:", [&] {
        const MapCentre about = centre ? *centre : MapCentre{filter.target.lat, filter.target.lon};
        const UnsyncedRebuild unsynced(job);
        stationdb::Savepoint savepoint(job);
        if (job.HasTable("tempdisplay")) job.Exec(kDropTempDisplay);
        job.Exec(CreateTempDisplaySql());
        TempDisplayWriter writer(job);

        stationdb::Statement fm = job.Prepare(BuildFmQuery(filter));
        while (fm.Step()) {
            TempDisplayRow row = ReadFmRecord(fm);
            ComputeFmRow(filter.target, about, fm.GetInt(kFmChannelColumn), row);
            writer.Insert(row);
        }
        if (filter.tv6) {
            stationdb::Statement tv = job.Prepare(kTv6Select);
            while (tv.Step()) {
                std::string facZone;
                TempDisplayRow row = ReadTv6Record(tv, &facZone);
                FillTv6Row(filter.target, about, facZone, row);
                writer.Insert(row);
            }
        }
        stationdb::Statement am = job.Prepare(kAmSelect);
        while (am.Step()) {
            TempDisplayRow row = ReadAmRecord(am);
            FillAmRow(filter.target, about, row);
            writer.Insert(row);
        }
        savepoint.Commit();
    });
}

bool ReadStudyTarget(const stationdb::Database& job, StudyTarget* target) {
    return core::TrappedVoid(kJobDisplayModule, ":FirstLoad:", [&] {
        stationdb::Statement info = job.Prepare("SELECT * FROM information;");
        if (!info.Step()) throw core::TrapError("the job has no information record");
        StudyTarget read;
        read.lat = info.GetDouble("TLat");
        read.lon = info.GetDouble("TLon");
        read.channel = info.GetInt("TChan");
        read.stationClass = spacing::ClassIndex(info.GetText("TClass"));
        if (info.FindColumn("TIClass")) read.intlClass = spacing::ClassIndex(info.GetText("TIClass"));
        if (target != nullptr) *target = read;
    });
}

bool ChangeStationData(const TargetChange& change, StudyTarget* target) {
    return core::TrappedVoid(kJobDisplayModule, ":ChangeStationData:", [&] {
        StudyTarget changed = target ? *target : StudyTarget{};
        if (change.channel) {
            if (*change.channel < kFirstFmChannel || *change.channel > kLastFmChannel) {
                throw core::TrapError("channel " + std::to_string(*change.channel) + " is not 200 to 300");
            }
            changed.channel = *change.channel;
        }
        if (change.stationClass) {
            changed.stationClass = spacing::ClassIndex(*change.stationClass);
            if (changed.stationClass < 0) throw core::TrapError("unknown class \"" + *change.stationClass + "\"");
        }
        if (change.intlClass) {
            changed.intlClass = spacing::ClassIndex(*change.intlClass);
            const bool blank = change.intlClass->find_first_not_of(' ') == std::string::npos;
            if (changed.intlClass < 0 && !blank) {
                throw core::TrapError("unknown international class \"" + *change.intlClass + "\"");
            }
        }
        if (target != nullptr) *target = changed;
    });
}

}  // namespace qarvel::jobview
