#pragma once
// The reference AutoScan engine: for every channel it sends the FM query
// (BuildFmQuery) and, where the TV channel 6 check applies, kTv6Query to the
// master database and walks the records in the order returned - the
// straightforward path, kept as the yardstick for the fast engine.

#include <filesystem>
#include <memory>

#include "stationdb/database.h"
#include "studies/autoscan.h"

namespace qarvel::studies {

class ReferenceEngine : public ClearanceEngine {
  public:
    // Opens the master database (an unpacked ".fdb") read-only for the
    // engine's life. Null when it cannot be opened (reported under
    // "frmAutoScan" ":InitValues:").
    static std::unique_ptr<ReferenceEngine> Open(const std::filesystem::path& fdbPath);

    float FindMinClearance(const ScanTarget& target, int channel,
                           const ScanOptions& options) override;

  private:
    explicit ReferenceEngine(stationdb::Database db) : m_db(std::move(db)) {}
    stationdb::Database m_db;
};

}  // namespace qarvel::studies
