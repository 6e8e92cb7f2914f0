// The side calculators: distance and bearing, destination point, DMS text,
// and the required separation between two stations.

#include "cli/command_set.h"
#include "cli/coordinates.h"
#include "geodesy/geodesy.h"
#include "spacing/min_sep.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>

namespace qarvel::cli {
namespace {

using nlohmann::json;

struct DistanceArgs {
    std::string lat1, lon1, lat2, lon2;
    bool json = false;
};

int RunDistance(const DistanceArgs& a) {
    double lat1 = ParseCoordinate(a.lat1, Axis::Latitude, "LAT1");
    double lon1 = ParseCoordinate(a.lon1, Axis::Longitude, "LON1");
    double lat2 = ParseCoordinate(a.lat2, Axis::Latitude, "LAT2");
    double lon2 = ParseCoordinate(a.lon2, Axis::Longitude, "LON2");
    double north = 0, east = 0, distance = 0, bearing = 0;
    geodesy::FlatDistance(lat1, lon1, lat2, lon2, north, east);
    geodesy::DistBearing(lat1, lon1, lat2, lon2, distance, bearing);
    if (bearing < 0) bearing += 360.0;
    double back = geodesy::BackBearing(bearing);
    std::string p1 = geodesy::DegToDMS(lat1) + " " + geodesy::DegToDMS(lon1);
    std::string p2 = geodesy::DegToDMS(lat2) + " " + geodesy::DegToDMS(lon2);
    if (a.json) {
        json out = {{"distance_km", distance}, {"north_km", north},      {"east_km", east},
                    {"bearing_deg", bearing},  {"back_bearing_deg", back},
                    {"point1_dms", p1},        {"point2_dms", p2}};
        std::cout << out.dump() << "\n";
        return kExitOk;
    }
    std::cout << fmt::format("Distance:     {:.2f} km\n", distance)
              << fmt::format("North leg:    {:.2f} km\n", north)
              << fmt::format("East leg:     {:.2f} km\n", east)
              << fmt::format("Bearing:      {:.2f} deg\n", bearing)
              << fmt::format("Back bearing: {:.2f} deg\n", back)
              << "Point 1:      " << p1 << "\n"
              << "Point 2:      " << p2 << "\n"
              << "(latitude north positive, longitude west positive)\n";
    return kExitOk;
}

struct PositionArgs {
    std::string lat, lon, distance, bearing;
    bool json = false;
};

int RunPosition(const PositionArgs& a) {
    double lat = ParseCoordinate(a.lat, Axis::Latitude, "LAT");
    double lonWest = ParseCoordinate(a.lon, Axis::Longitude, "LON");
    double distance = ParseNumber(a.distance, "DISTANCE_KM");
    double bearing = ParseNumber(a.bearing, "BEARING_DEG");
    if (distance < 0 || distance > 5000) {
        throw UsageError("DISTANCE_KM", "'" + a.distance + "' must lie in 0 to 5000 km");
    }
    if (bearing < 0 || bearing > 360) {
        throw UsageError("BEARING_DEG", "'" + a.bearing + "' must lie in 0 to 360 degrees");
    }
    // GetPosn adds its east leg to the longitude, so it is handed east-positive
    // longitudes and the answer turned back to the station tables' west-positive.
    double lat2 = 0, lonEast2 = 0;
    geodesy::GetPosn(lat, -lonWest, lat2, lonEast2, distance, bearing);
    double lon2 = -lonEast2;
    if (a.json) {
        json out = {{"lat", lat2},
                    {"lon", lon2},
                    {"lat_dms", geodesy::DegToDMS(lat2)},
                    {"lon_dms", geodesy::DegToDMS(lon2)}};
        std::cout << out.dump() << "\n";
        return kExitOk;
    }
    std::cout << fmt::format("Latitude:  {:.6f} ({})\n", lat2, geodesy::DegToDMS(lat2))
              << fmt::format("Longitude: {:.6f} ({})\n", lon2, geodesy::DegToDMS(lon2))
              << "(latitude north positive, longitude west positive)\n";
    return kExitOk;
}

struct DmsArgs {
    std::string degrees;
    bool json = false;
};

int RunDms(const DmsArgs& a) {
    double degrees = ParseNumber(a.degrees, "DEGREES");
    if (std::abs(degrees) > 360) {
        throw UsageError("DEGREES", "'" + a.degrees + "' must lie in -360 to 360");
    }
    std::string text = geodesy::DegToDMS(degrees);
    if (a.json) {
        std::cout << json{{"degrees", degrees}, {"dms", text}}.dump() << "\n";
    } else {
        std::cout << text << "\n";
    }
    return kExitOk;
}

void AddDistance(CommandSet& commands) {
    auto args = std::make_shared<DistanceArgs>();
    CLI::App* sub = commands.Add(
        "distance", "Distance (km), legs and bearings between two points",
        [args] { return RunDistance(*args); });
    sub->add_option("LAT1", args->lat1, "first latitude (40.75, 40:45:00, 40.75N)")->required();
    sub->add_option("LON1", args->lon1, "first longitude (bare number is west; 2.35E)")
        ->required();
    sub->add_option("LAT2", args->lat2, "second latitude")->required();
    sub->add_option("LON2", args->lon2, "second longitude")->required();
    sub->add_flag("--json", args->json, "print one JSON object");
}

void AddPosition(CommandSet& commands) {
    auto args = std::make_shared<PositionArgs>();
    CLI::App* sub = commands.Add(
        "position", "The point at a distance (km) and bearing (degrees) from a point",
        [args] { return RunPosition(*args); });
    sub->add_option("LAT", args->lat, "start latitude")->required();
    sub->add_option("LON", args->lon, "start longitude (bare number is west)")->required();
    sub->add_option("DISTANCE_KM", args->distance, "distance, km")->required();
    sub->add_option("BEARING_DEG", args->bearing, "bearing, degrees clockwise from north")
        ->required();
    sub->add_flag("--json", args->json, "print one JSON object");
}

void AddDms(CommandSet& commands) {
    auto args = std::make_shared<DmsArgs>();
    CLI::App* sub = commands.Add("dms", "Decimal degrees as +DDD:MM:SS text",
                                 [args] { return RunDms(*args); });
    sub->add_option("DEGREES", args->degrees, "decimal degrees")->required();
    sub->add_flag("--json", args->json, "print one JSON object");
}

}  // namespace

void RegisterMinSepCommand(CommandSet& commands);

void RegisterCalculatorCommands(CommandSet& commands) {
    geodesy::InitMapConstants();
    spacing::LoadMinSepTables();
    AddDistance(commands);
    AddPosition(commands);
    AddDms(commands);
    RegisterMinSepCommand(commands);
}

}  // namespace qarvel::cli
