// LoadMapArray: the boundary files are read whole (a job's cut files are
// small) and laid out in rows as the drawing expects them.

#include "jobview/map_arrays.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <optional>
#include <system_error>

#include "core/error_trap.h"
#include "stationdb/database.h"

namespace qarvel::jobview {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kModule = "modMapping";
constexpr long long kStateSkipBytes = 16;

long long RoundedPairs(long long bytes) {
    return static_cast<long long>(std::nearbyint(static_cast<double>(bytes) / 8.0));  // halves to even
}

// The file's bytes, or nullopt when it does not exist.
std::optional<std::string> ReadWholeFile(const fs::path& path) {
    std::error_code ec;
    if (path.empty() || !fs::is_regular_file(path, ec)) return std::nullopt;
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// The little-endian float at offset, 0.0 beyond the end of the bytes.
float FloatAt(const std::string& bytes, long long offset) {
    if (offset < 0 || offset + 4 > static_cast<long long>(bytes.size())) return 0.0f;
    const auto* b = reinterpret_cast<const unsigned char*>(bytes.data() + offset);
    const std::uint32_t bits = static_cast<std::uint32_t>(b[0]) | static_cast<std::uint32_t>(b[1]) << 8 |
                               static_cast<std::uint32_t>(b[2]) << 16 | static_cast<std::uint32_t>(b[3]) << 24;
    return std::bit_cast<float>(bits);
}

// Loads `rows` rows from offset `skip`; the flag is set when the file exists
// and gives at least one row.
void LoadBoundary(const fs::path& file, bool isState, std::vector<MapRow>& rows, bool& loaded) {
    rows.clear();
    loaded = false;
    const std::optional<std::string> bytes = ReadWholeFile(file);
    if (!bytes) return;
    const long long size = static_cast<long long>(bytes->size());
    const long long count = isState ? StateMapRows(size) : CountyMapRows(size);
    if (count <= 0) return;
    const long long skip = isState ? kStateSkipBytes : 0;
    rows.resize(static_cast<std::size_t>(count));
    for (long long i = 0; i < count; ++i) {
        rows[static_cast<std::size_t>(i)] = {FloatAt(*bytes, skip + 8 * i), FloatAt(*bytes, skip + 8 * i + 4)};
    }
    loaded = true;
}

std::vector<MapPlace> ReadPlaces(const stationdb::Database& db, std::string_view table) {
    std::vector<MapPlace> places;
    if (!db.HasTable(table)) return places;
    stationdb::Statement rows = db.Prepare("SELECT name, lat, lon FROM " + std::string(table) + ";");
    while (rows.Step()) places.push_back({rows.GetText(0), rows.GetInt(1), rows.GetInt(2)});
    return places;
}

}  // namespace

long long StateMapRows(long long bytes) {
    const long long upper = RoundedPairs(bytes) - 4;
    return upper < 0 ? 0 : upper + 1;
}

long long CountyMapRows(long long bytes) {
    const long long upper = RoundedPairs(bytes);
    return (upper < 0 ? 0 : upper) + 1;
}

bool LoadMapArray(const fs::path& mst, const fs::path& mco, const fs::path& tdb, MapArrays* arrays) {
    return core::TrappedVoid(kModule, ":LoadMapArray:", [&] {
        MapArrays loaded;
        LoadBoundary(mst, true, loaded.stateMap, loaded.stateMapLoaded);
        LoadBoundary(mco, false, loaded.countyMap, loaded.countyMapLoaded);
        const stationdb::Database db(tdb, stationdb::OpenMode::ReadOnly);
        loaded.places = ReadPlaces(db, "places");
        loaded.markers = ReadPlaces(db, "markers");
        if (arrays != nullptr) *arrays = std::move(loaded);
    });
}

}  // namespace qarvel::jobview
