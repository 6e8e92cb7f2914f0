#pragma once
// Helpers shared by the database, importer and map-data tests: a private temporary
// folder per test, the fixture and real-data folders, and reading back rows.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "stationdb/database.h"
#include "support/temp_folder.h"

namespace qarvel::testing_support {

namespace fs = std::filesystem;

inline fs::path FixtureDir() { return fs::path(QARVEL_SOURCE_DIR) / "tests" / "importers" / "fixtures"; }
inline fs::path SharedData() { return fs::path(QARVEL_SHARED_DATA); }

inline std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

inline void WriteAll(const fs::path& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary);
    out << bytes;
}

// Counts the rows a query returns.
inline int CountRows(const stationdb::Database& db, const std::string& sql) {
    stationdb::Statement st = db.Prepare(sql);
    int n = 0;
    while (st.Step()) ++n;
    return n;
}

inline int QueryInt(const stationdb::Database& db, const std::string& sql) {
    stationdb::Statement st = db.Prepare(sql);
    return st.Step() ? st.GetInt(0) : -1;
}

}  // namespace qarvel::testing_support
