#pragma once
// The fast AutoScan engine. The master database's FM rows (the columns the
// FM query selects, plus fm_dom_status and asd_service for its filter) and
// its TV channel 6 rows are read ONCE into a MasterIndex, by channel and
// sorted by latitude. A scan then visits, per query channel, only the
// stations inside a box round the target that provably holds every station
// able to lower a minimum, filters them in memory with the query's own Jet
// LIKE patterns, and applies the same per-station rules as the reference
// engine (station_rows.h). The minima, list and order come out bit-identical
// to the reference engine's.
//
// Threading: a MasterIndex is immutable once loaded and may be shared by any
// number of threads; each thread needs its own FastEngine.

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

#include "spacing/min_sep.h"
#include "studies/autoscan.h"

namespace qarvel::stationdb {
class Database;
}

namespace qarvel::studies {

class MasterIndex {
  public:
    // Channels any query of a scan can name: 200 - 54 .. 300 + 54.
    static constexpr int kLowestChannel = kFirstScanChannel - 54;
    static constexpr int kHighestChannel = kLastScanChannel + 54;

    // One FM or TV6 station as the scan needs it. `record` is the station
    // working record (relation left 0); `filterBits` holds the WHERE
    // clause's LIKE results that were true: bit 0 "border_code LIKE 'A'",
    // bit 1 + i the status pattern kStatusPatterns[i].
    struct Station {
        spacing::StationRec record;
        uint8_t filterBits = 0;
    };
    // Stations of one channel (or the TV6 stations), sorted by latitude,
    // with the latitudes (degrees) alongside for the band search.
    struct Bucket {
        std::vector<double> lats;
        std::vector<Station> stations;
    };

    // Reads the master database at fdbPath (an unpacked ".fdb"). Null when it
    // cannot be opened. A table or column that the reference queries would
    // miss is reported under "frmAutoScan" ":InitValues:" and makes the
    // engine answer as the failing query would.
    static std::shared_ptr<const MasterIndex> Load(const std::filesystem::path& fdbPath);

    const Bucket& Channel(int channel) const;  // kLowestChannel..kHighestChannel
    const Bucket& Tv6() const { return m_tv6; }
    bool FmReadable() const { return m_fmReadable; }
    bool HasStatusColumn() const { return m_hasStatusColumn; }
    bool Tv6Readable() const { return m_tv6Readable; }
    std::size_t FmStationCount() const;

  private:
    MasterIndex() = default;
    void LoadFm(const stationdb::Database& db);
    void LoadTv6(const stationdb::Database& db);

    std::array<Bucket, kHighestChannel - kLowestChannel + 1> m_channels;
    Bucket m_tv6;
    bool m_fmReadable = false;
    bool m_hasStatusColumn = false;
    bool m_tv6Readable = false;
};

class FastEngine : public ClearanceEngine {
  public:
    explicit FastEngine(std::shared_ptr<const MasterIndex> index);

    float FindMinClearance(const ScanTarget& target, int channel,
                           const ScanOptions& options) override;

    // The widest separation any table can require (km): the box is built on
    // 350 + this.
    static int MaxSeparation();

  private:
    struct Box;
    void ScanBucket(const MasterIndex::Bucket& bucket, const Box& box, uint8_t mask,
                    const spacing::StationRec& target, spacing::StationRec& scratch, bool tv,
                    float& minimum) const;

    std::shared_ptr<const MasterIndex> m_index;
    spacing::StationRec m_fm;  // scratch working records, reused
    spacing::StationRec m_tv;
};

}  // namespace qarvel::studies
