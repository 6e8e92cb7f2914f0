#pragma once
// Small master databases for the AutoScan tests, made with the master schema
// and plain INSERTs. Positions are given in degrees (longitude positive WEST)
// and stored as degrees x 14400 truncated, as the importers store them.

#include <gtest/gtest.h>

#include <unistd.h>
#include <cmath>
#include <filesystem>
#include <memory>
#include <optional>
#include <random>
#include <string>

#include "stationdb/database.h"
#include "stationdb/schema.h"
#include "studies/fast_engine.h"
#include "studies/reference_engine.h"

namespace qarvel::studies::test {

inline int Stored(double degrees) {
    return static_cast<int>(degrees * 14400.0);
}

struct FmRow {
    std::optional<std::string> callsign = "KTST";
    std::optional<int> channel = 250;
    std::optional<int> lat = Stored(40.0);  // stored units
    std::optional<int> lon = Stored(80.0);  // stored units, WEST positive
    std::optional<std::string> stationClass = "A";
    std::optional<std::string> intlClass = std::nullopt;
    std::optional<std::string> borderCode = std::nullopt;
    std::optional<std::string> status = "LIC";
    std::optional<std::string> service = "FM";
};

// A fresh folder under the system's temporary folder, removed at the end.
class TempFolder {
  public:
    TempFolder() {
        static int counter = 0;
        m_path = std::filesystem::temp_directory_path() /
                 ("qarvel-studies-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
        std::filesystem::remove_all(m_path);
        std::filesystem::create_directories(m_path);
    }
    ~TempFolder() {
        std::error_code ec;
        std::filesystem::remove_all(m_path, ec);
    }
    const std::filesystem::path& Path() const { return m_path; }

  private:
    std::filesystem::path m_path;
};

class TestMaster {
  public:
    explicit TestMaster(const std::string& name = "master.fdb") : m_path(m_folder.Path() / name) {
        stationdb::MasterHeader header;
        header.creation_date = "26001";
        header.creation_size = "0";
        EXPECT_TRUE(stationdb::CreateMasterDatabase(m_path, header));
        m_db = stationdb::Database(m_path, stationdb::OpenMode::ReadWrite);
    }

    const std::filesystem::path& Path() const { return m_path; }
    stationdb::Database& Db() { return m_db; }

    void AddFm(const FmRow& r) {
        m_db.Run(
            "INSERT INTO fm_data (application_id, fac_callsign, station_channel, lat, lon,"
            " station_class, intl_class, border_code, fm_dom_status, asd_service)"
            " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10)",
            ++m_nextId, r.callsign, r.channel, r.lat, r.lon, r.stationClass, r.intlClass,
            r.borderCode, r.status, r.service);
    }
    void AddTv6(int lat, int lon, std::optional<std::string> zone = "0") {
        m_db.Run(
            "INSERT INTO tv6_data (application_id, lat, lon, fac_zone, fac_callsign)"
            " VALUES (?1, ?2, ?3, ?4, 'WTV6')",
            ++m_nextId, lat, lon, zone);
    }

    std::unique_ptr<ClearanceEngine> Engine(bool fast) const {
        if (fast) return std::make_unique<FastEngine>(MasterIndex::Load(m_path));
        return ReferenceEngine::Open(m_path);
    }

  private:
    TempFolder m_folder;
    std::filesystem::path m_path;
    stationdb::Database m_db;
    int m_nextId = 0;
};

}  // namespace qarvel::studies::test
