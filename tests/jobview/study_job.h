#pragma once
// A job database in a temporary folder, filled row by row, for the study
// table, grid and map tests. Real SQLite, the job layout of CreateJobDatabase.

#include <gtest/gtest.h>

#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <utility>

#include "geodesy/geodesy.h"
#include "stationdb/database.h"
#include "stationdb/schema.h"

namespace qarvel::jobview::testing {

namespace fs = std::filesystem;

inline int Stored(double degrees) { return static_cast<int>(std::lround(degrees * 14400.0)); }

// A point distanceKm from (lat, lonWest) on a bearing, in stored units
// (longitude positive WEST). GetPosn counts longitude east, hence the signs.
inline std::pair<int, int> StoredPointAt(double lat, double lonWest, double distanceKm, double bearing) {
    double lat2 = 0, lonEast = 0;
    geodesy::GetPosn(lat, -lonWest, lat2, lonEast, distanceKm, bearing);
    return {Stored(lat2), Stored(-lonEast)};
}

struct FmStation {
    int id = 0;
    std::string callsign;
    int channel = 220;
    std::string stationClass = "A";
    std::pair<int, int> at;  // stored units
    std::string status = "LIC";
    std::string asdService = "FM";
    std::string borderCode;
    std::string rule73215 = "N";
    std::string intlClass;
    std::string state = "KS";
    int party = 1;
};

class StudyJob {
public:
    StudyJob() {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        std::string name = "qarvel_study_" + std::to_string(::getpid()) + "_" + info->test_suite_name() + "_" +
                           info->name();
        for (char& c : name) {
            if (c == '/') c = '_';
        }
        m_dir = fs::temp_directory_path() / name;
        fs::remove_all(m_dir);
        fs::create_directories(m_dir);
        EXPECT_TRUE(stationdb::CreateJobDatabase(Path()));
        m_db = stationdb::Database(Path(), stationdb::OpenMode::ReadWrite);
        m_db.Run("INSERT INTO party (party_id, party_name) VALUES (1, 'Prairie Radio');");
    }
    ~StudyJob() {
        m_db.Close();
        fs::remove_all(m_dir);
    }
    fs::path Path() const { return m_dir / "study.tdb"; }
    const fs::path& Folder() const { return m_dir; }
    stationdb::Database& Db() { return m_db; }

    void SetTarget(double lat, double lonWest, int channel, const std::string& cls, const std::string& intl = "") {
        m_db.Run("DELETE FROM information;");
        m_db.Run("INSERT INTO information (CDate, Comments, Source, TChan, TLat, TLon, TClass, TIClass, OffSetN,"
                 " OffSetW, ScanRange) VALUES ('2024001', 'test', 'test', ?1, ?2, ?3, ?4, ?5, 0, 0, 300);",
                 channel, lat, lonWest, cls, intl);
    }
    void AddFm(const FmStation& s) {
        m_db.Run("INSERT INTO fm_data (application_id, party_id, lat, lon, asd_service, facility_id, comm_city,"
                 " comm_state, fac_callsign, border_code, fm_dom_status, station_channel, station_class,"
                 " horiz_erp, vert_erp, haat_horiz_rc_mtr, rule_73_215_req_ind, intl_class)"
                 " VALUES (?1, ?2, ?3, ?4, ?5, ?6, 'Salina', ?7, ?8, ?9, ?10, ?11, ?12, 6.0, 6.0, 100.0, ?13, ?14);",
                 s.id, s.party, s.at.first, s.at.second, s.asdService, s.id + 5000, s.state, s.callsign,
                 s.borderCode, s.status, s.channel, s.stationClass, s.rule73215, s.intlClass);
    }
    void AddTv6(int id, const std::string& callsign, std::pair<int, int> at, const std::string& zone) {
        m_db.Run("INSERT INTO tv6_data (application_id, comm_city, comm_state, party_id, lat, lon, fac_zone,"
                 " fac_callsign) VALUES (?1, 'Wichita', 'KS', 1, ?2, ?3, ?4, ?5);",
                 id, at.first, at.second, zone, callsign);
    }
    void AddAm(int id, const std::string& callsign, std::pair<int, int> at) {
        m_db.Run("INSERT INTO am_data (application_id, comm_city, comm_state, party_id, ant_mode, lat, lon,"
                 " fac_callsign) VALUES (?1, 'Hays', 'KS', 1, 'ND', ?2, ?3, ?4);",
                 id, at.first, at.second, callsign);
    }
    std::int64_t Count(const std::string& where = "1=1") {
        stationdb::Statement s = m_db.Prepare("SELECT COUNT(*) FROM tempdisplay WHERE " + where + ";");
        s.Step();
        return s.GetInt64(0);
    }

private:
    fs::path m_dir;
    stationdb::Database m_db;
};

}  // namespace qarvel::jobview::testing
