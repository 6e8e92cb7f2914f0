#pragma once
// A synthetic job for the study benchmarks: stations spread over the 350 km
// round a target in Kansas, and county lines as a grid of 40 km counties
// (about 20 points per side) over the 450 km that a job's county file holds.
// Deterministic: a small fixed-seed generator.

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <string>
#include <unistd.h>

#include "geodesy/geodesy.h"
#include "jobview/map_arrays.h"
#include "stationdb/database.h"
#include "stationdb/schema.h"

namespace qarvel::bench {

inline constexpr double kTargetLat = 39.05;
inline constexpr double kTargetLon = 95.68;  // WEST
inline constexpr int kTargetChannel = 250;

class Lcg {
public:
    std::uint32_t Next(std::uint32_t bound) {
        m_state = m_state * 1664525u + 1013904223u;
        return (m_state >> 8) % bound;
    }

private:
    std::uint32_t m_state = 20240501u;
};

// Stored units (degrees x 14400, longitude WEST) of a point km from the
// target on a bearing.
inline std::pair<int, int> StoredAt(double km, double bearing) {
    double lat = 0, lonEast = 0;
    geodesy::GetPosn(kTargetLat, -kTargetLon, lat, lonEast, km, bearing);
    return {static_cast<int>(std::lround(lat * 14400)), static_cast<int>(std::lround(-lonEast * 14400))};
}

// "K" and the number: built without operator+ on a literal, which GCC 12
// misreports under -Wrestrict.
inline std::string CallSign(const char* prefix, int number) {
    std::string call(prefix);
    call.append(std::to_string(number));
    return call;
}

// Writes a job database at `tdb` with `fm` FM stations (on channels related
// to the target when `relatedOnly`, else on any of 200..300), 40 AM and 10
// TV channel 6 stations, one owner each.
inline void WriteSyntheticJob(const std::filesystem::path& tdb, int fm, bool relatedOnly) {
    static const int kRelated[] = {250, 251, 249, 252, 248, 253, 247, 303, 197, 304, 196};
    static const char* kClasses[] = {"A", "B1", "B", "C3", "C2", "C1", "C0", "C", "L1", "D"};
    static const char* kStatuses[] = {"LIC", "LIC", "LIC", "CP", "APP"};
    std::filesystem::remove(tdb);
    stationdb::CreateJobDatabase(tdb);
    stationdb::Database db(tdb, stationdb::OpenMode::ReadWrite);
    stationdb::Transaction transaction(db);
    db.Run("INSERT INTO information (CDate, Comments, Source, TChan, TLat, TLon, TClass, TIClass, OffSetN, OffSetW,"
           " ScanRange) VALUES ('2024-05-01 00:00:00', 'bench', 'synthetic', ?1, ?2, ?3, 'C2', '', 0, 0, 350);",
           kTargetChannel, kTargetLat, kTargetLon);
    db.Run("INSERT INTO party (party_id, party_name) VALUES (1, 'Synthetic Broadcasting LLC');");
    Lcg rng;
    stationdb::Statement insert = db.Prepare(
        "INSERT INTO fm_data (application_id, party_id, lat, lon, asd_service, facility_id, comm_city, comm_state,"
        " fac_callsign, fm_dom_status, station_channel, station_class, horiz_erp, vert_erp, haat_horiz_rc_mtr,"
        " rule_73_215_req_ind) VALUES (?1, 1, ?2, ?3, 'FM', ?4, 'Anytown', 'KS', ?5, ?6, ?7, ?8, 6, 6, 100, 'N');");
    for (int i = 1; i <= fm; ++i) {
        const auto at = StoredAt(5.0 + rng.Next(34500) / 100.0, rng.Next(36000) / 100.0);
        const int channel = relatedOnly ? kRelated[rng.Next(11)] : 200 + static_cast<int>(rng.Next(101));
        insert.BindAll(i, at.first, at.second, i + 1000, CallSign("K", i), kStatuses[rng.Next(5)], channel,
                       kClasses[rng.Next(10)]);
        insert.Run();
    }
    for (int i = 1; i <= 40; ++i) {
        const auto at = StoredAt(rng.Next(35000) / 100.0, rng.Next(360));
        db.Run("INSERT INTO am_data (application_id, party_id, lat, lon, fac_callsign, ant_mode) VALUES (?1, 1, ?2,"
               " ?3, ?4, 'ND');",
               i, at.first, at.second, CallSign("KAM", i));
    }
    for (int i = 1; i <= 10; ++i) {
        const auto at = StoredAt(rng.Next(35000) / 100.0, rng.Next(360));
        db.Run("INSERT INTO tv6_data (application_id, party_id, lat, lon, fac_callsign, fac_zone) VALUES (?1, 1, ?2,"
               " ?3, ?4, ?5);",
               i, at.first, at.second, CallSign("KTV", i), i % 2 ? "1" : "2");
    }
    transaction.Commit();
}

// County lines: the edges of 40 km squares within 450 km of the target, one
// polyline per edge, 20 segments each; row 0 as the loader leaves it.
inline jobview::MapArrays SyntheticCountyLines() {
    jobview::MapArrays arrays;
    arrays.countyMapLoaded = true;
    std::vector<jobview::MapRow>& rows = arrays.countyMap;
    rows.push_back({0.0f, 0.0f});
    const double kmLat = geodesy::KmPerDegLat(kTargetLat), kmLon = geodesy::KmPerDegLon(kTargetLat);
    float marker = 1.0f;
    auto edge = [&](double x0, double y0, double x1, double y1) {
        rows.push_back({0.0f, marker++});
        for (int k = 0; k <= 20; ++k) {
            const double x = x0 + (x1 - x0) * k / 20.0, y = y0 + (y1 - y0) * k / 20.0;
            rows.push_back({static_cast<float>(kTargetLat + y / kmLat), static_cast<float>(kTargetLon + x / kmLon)});
        }
    };
    for (double x = -440; x < 440; x += 40) {
        for (double y = -440; y < 440; y += 40) {
            if (std::hypot(x, y) > 450) continue;
            edge(x, y, x + 40, y);
            edge(x, y, x, y + 40);
        }
    }
    return arrays;
}

inline std::filesystem::path BenchFolder(const std::string& name) {
    std::string leaf = name;
    leaf.append("_").append(std::to_string(::getpid()));
    const auto folder = std::filesystem::temp_directory_path() / leaf;
    std::filesystem::create_directories(folder);
    return folder;
}

}  // namespace qarvel::bench
