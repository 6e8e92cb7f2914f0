#pragma once
// Job building (MakeNewJob): a new job database holding every station of the
// master database within the scan range of a target, the user's edited
// stations from the local database, their owners, and the cities and markers
// of the surroundings, with the job header.
//
// Units: latitudes and longitudes in degrees, latitude positive north,
// longitude positive WEST (as the station tables count it); the tables store
// them as whole numbers of 1/14400 degree ("stored units"). Distances in km.
//
// Selection: a box round the target (in stored units) limits the rows read;
// each row in the box is measured with FlatDistance, the result held in
// single precision, and copied only when strictly less than the scan range.
// Cities and markers are copied within 350 km whatever the scan range.

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace qarvel::jobs {

// The progress captions shown while a job is built, in the order they come.
inline constexpr std::string_view kCaptionScanFm = "Scanning FM Stations";
inline constexpr std::string_view kCaptionScanTv6 = "Scanning TV6 Stations";
inline constexpr std::string_view kCaptionScanAm = "Scanning AM Stations";
inline constexpr std::string_view kCaptionScanLocal = "Scanning Local Stations";
inline constexpr std::string_view kCaptionParties = "Scanning Parties";
inline constexpr std::string_view kCaptionCities = "Scanning Cities";
inline constexpr std::string_view kCaptionMarkers = "Scanning Markers";

// The box query heads; the box condition (BoxCondition) follows them.
inline constexpr std::string_view kFmBoxSelect = "SELECT lat, lon, application_id, app_arn FROM fm_data WHERE ";
inline constexpr std::string_view kTv6BoxSelect = "SELECT lat, lon, application_id FROM tv6_data WHERE ";
inline constexpr std::string_view kAmBoxSelect = "SELECT lat, lon, application_id FROM am_data WHERE ";
// The owners of every copied station, run on the job database.
inline constexpr std::string_view kPartyUnion =
    "SELECT party_id FROM tv6_data UNION"
    " SELECT party_id FROM am_data UNION"
    " SELECT party_id FROM fm_data;";
// The schema name under which the master is attached to copy owners.
inline constexpr std::string_view kPartyLink = "link_to_party";
// Cities and markers are copied within this distance, whatever the range.
inline constexpr double kSurroundingsKm = 350.0;
// The box never reaches beyond these latitudes (degrees); deliberately
// asymmetric, and applied to the box only, not to the location check.
inline constexpr double kBoxNorthLimit = 75.0;
inline constexpr double kBoxSouthLimit = 10.0;
// Valid target latitudes are -76 to 76 degrees inclusive.
inline constexpr double kMaxTargetLatitude = 76.0;

// What MakeNewJob builds. The header columns take these values as given.
struct NewJobInputs {
    std::int16_t scanRange = 0;  // ScanRange, km; the box and distance limit
    double lat = 0;              // scan centre, degrees north (-76 to 76)
    double lon = 0;              // scan centre, degrees positive WEST
    std::string channel;         // TChan as text: "200" to "300"
    std::string stationClass;    // TClass ("A", "B1"...)
    std::string intlClass;       // TIClass
    double offsetN = 0;          // OffSetN: north offset of the study centre from the target
    double offsetW = 0;          // OffSetW: west offset of the study centre from the target
    std::string comments;        // Comments; "No Comments" when empty
    std::string source;          // Source: the master database the job came from
    std::filesystem::path jobPath;     // the new job database (".tdb"); must not exist yet
    std::filesystem::path masterPath;  // unpacked master database (".fdb"), opened read-only
    std::filesystem::path localPath;   // unpacked local database; empty: none
    // gDBoptUseLocal. When false the local database is not consulted at all:
    // neither its edited stations, nor its local-only stations, nor its
    // markers or owners come into the job.
    bool useLocal = true;
};

// How a build reports and is stopped.
struct JobBuildControl {
    std::function<void(const std::string& caption)> progress;  // one call per stage
    const std::atomic<bool>* cancel = nullptr;  // set to stop; the partial job is removed
    // Reference variant for benchmarks: when false, every row of a station
    // table is read and measured instead of the rows of the search box.
    bool boxPreselect = true;
};

// MakeNewJob: builds the job database inputs.jobPath. Shows "Invalid channel"
// for a channel outside 200..300 (or not a number) and "Invalid location"
// for a latitude outside -76..76, a point (0, 0) or a non-finite coordinate;
// nothing is created then. Any failure afterwards (database errors, a
// cancelled build) is reported under "modFMdb" ":MakeNewJob:" (a cancel is
// not reported) and the partial job database is removed. Never changes the
// master or local database. True when the job was built.
bool MakeNewJob(const NewJobInputs& inputs, const JobBuildControl& control = {});

// The search box round the scan centre, in stored units (degrees x 14400,
// rounded half to even). dLat = range / KmPerDegLat(lat) and dLon = range /
// KmPerDegLon(lat), in single precision; north = min(lat + dLat, 75),
// south = max(lat - dLat, 10); l1 is lon + dLon (the west side, as longitude
// counts west), l2 is lon - dLon. Throws core::TrapError when a bound does
// not fit 32 bits.
struct SearchBox {
    std::int32_t north = 0, south = 0, l1 = 0, l2 = 0;
};
SearchBox ComputeSearchBox(std::int16_t scanRangeKm, double latDeg, double lonDeg);

// "(lat BETWEEN " north " AND " south ") AND (lon BETWEEN " l1 " AND " l2 ");"
std::string BoxCondition(const SearchBox& box);

// The single-precision distance (km) by which a station is kept: the
// FlatDistance from the centre (degrees) to the station (stored units, WEST
// positive longitude) rounded to 32 bits. Kept when less than the range.
float StationDistanceKm(double centreLat, double centreLon, std::int32_t storedLat, std::int32_t storedLon);

// Reads the channel text as the job builder does: a number rounded half to
// even to a whole channel; false for text that is not a number or lies
// outside 200..300.
bool ParseJobChannel(std::string_view text, int* channel);

// True for a target the builder accepts: finite, latitude -76..76 inclusive,
// and not the point (0, 0).
bool ValidJobLocation(double latDeg, double lonDeg);

}  // namespace qarvel::jobs
