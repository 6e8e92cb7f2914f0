// BuildJobMap: one pass over a national boundary file, copying the polylines
// whose first point lies near the target.

#include "mapdata/job_map.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "core/error_trap.h"
#include "geodesy/geodesy.h"
#include "stationdb/schema.h"  // TempPathBeside

namespace qarvel::mapdata {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kModule = "modMapping";

// Little-endian 32-bit floats from a file, through a block buffer. A file
// that ends inside a float ends the stream there.
class FloatReader {
public:
    explicit FloatReader(const fs::path& path) : m_in(path, std::ios::binary) {
        if (!m_in) throw core::TrapError("cannot open \"" + path.string() + "\"");
    }
    bool Next(float& value) {
        if (m_pos + 4 > m_size && !Refill()) return false;
        const auto* b = reinterpret_cast<const unsigned char*>(m_buffer.data() + m_pos);
        const std::uint32_t bits = static_cast<std::uint32_t>(b[0]) | static_cast<std::uint32_t>(b[1]) << 8 |
                                   static_cast<std::uint32_t>(b[2]) << 16 | static_cast<std::uint32_t>(b[3]) << 24;
        value = std::bit_cast<float>(bits);
        m_pos += 4;
        return true;
    }

private:
    bool Refill() {
        const std::size_t left = m_size - m_pos;
        std::copy(m_buffer.begin() + static_cast<std::ptrdiff_t>(m_pos),
                  m_buffer.begin() + static_cast<std::ptrdiff_t>(m_size), m_buffer.begin());
        m_in.read(m_buffer.data() + left, static_cast<std::streamsize>(m_buffer.size() - left));
        m_size = left + static_cast<std::size_t>(m_in.gcount());
        m_pos = 0;
        return m_size >= 4;
    }

    std::ifstream m_in;
    std::array<char, 65536> m_buffer{};
    std::size_t m_pos = 0, m_size = 0;
};

void Append(std::string& out, float value) {
    const auto bits = std::bit_cast<std::uint32_t>(value);
    for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<char>((bits >> shift) & 0xFFu));
}

// The cut of `source` as bytes.
std::string CutBoundaryFile(const fs::path& source, double targetLat, double targetLon, double limitKm) {
    FloatReader in(source);
    std::string out;
    float value = 0;
    if (!in.Next(value)) return out;  // the leading separator
    float marker = 0, lat = 0, lon = 0;
    while (in.Next(marker) && marker != 0.0f && in.Next(lat) && in.Next(lon)) {
        const bool keep = PolylineKept(PolylineDistanceKm(targetLat, targetLon, lat, lon), limitKm);
        if (keep) {
            for (const float v : {0.0f, marker, lat, lon}) Append(out, v);
        }
        // The further points, up to the next separator (which is consumed).
        float pointLat = 0, pointLon = 0;
        while (in.Next(pointLat) && pointLat != 0.0f) {
            if (!in.Next(pointLon)) return out;
            if (keep) {
                Append(out, pointLat);
                Append(out, pointLon);
            }
        }
    }
    return out;
}

void WriteFileBeside(const fs::path& destination, const std::string& bytes) {
    const fs::path temp = stationdb::TempPathBeside(destination);
    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        out.close();
        if (!out) {
            std::error_code ec;
            fs::remove(temp, ec);
            throw core::TrapError("cannot write \"" + destination.string() + "\"");
        }
    }
    std::error_code ec;
    fs::rename(temp, destination, ec);
    if (ec) {
        fs::remove(temp, ec);
        throw core::TrapError("cannot write \"" + destination.string() + "\": " + ec.message());
    }
}

}  // namespace

double PolylineDistanceKm(double targetLat, double targetLon, float firstLat, float firstLon) {
    const double lat = firstLat;
    const double lon = firstLon;
    if (!(std::fabs(targetLon - lon) <= kMapWindowDeg && std::fabs(targetLat - lat) <= kMapWindowDeg)) {
        return kUnmeasuredKm;
    }
    double northKm = 0;
    double eastKm = 0;
    return geodesy::FlatDistance(targetLat, targetLon, lat, lon, northKm, eastKm);
}

bool PolylineKept(double distanceKm, double limitKm) {
    return std::nearbyint(distanceKm) < limitKm;  // halves to even (the default rounding mode)
}

bool BuildJobMap(const fs::path& source, const fs::path& destination, double targetLat, double targetLon,
                 double limitKm) {
    return core::TrappedVoid(kModule, ":BuildJobMap:", [&] {
        WriteFileBeside(destination, CutBoundaryFile(source, targetLat, targetLon, limitKm));
    });
}

}  // namespace qarvel::mapdata
