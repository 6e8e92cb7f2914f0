// libFuzzer target for the boundary-file decoder (stmapH.dat, comapH.dat
// and a job's .mst/.mco): bytes decode to lines or a BoundaryFileError.

#include "mapdata/boundary_file.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const auto lines =
            qarvel::mapdata::DecodeBoundaryFile(std::string_view(reinterpret_cast<const char*>(data), size));
        for (const auto& line : lines)
            for (const auto& point : line.points)
                if (!std::isfinite(point.lat) || !std::isfinite(point.lon)) std::abort();  // refused by contract
    } catch (const qarvel::mapdata::BoundaryFileError&) {
    }
    return 0;
}
