// libFuzzer target for the TopoJSON reader: any bytes either give a
// topology or a TopoJsonError, never a crash, a hang or memory out of
// proportion to the input (the reader bounds nesting and stitching).

#include "mapdata/topojson.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const auto topology = qarvel::mapdata::Topology::Parse(
            std::string_view(reinterpret_cast<const char*>(data), size));
        for (const auto& name : topology.ObjectNames()) (void)topology.Geometries(name);
    } catch (const qarvel::mapdata::TopoJsonError&) {
    }
    return 0;
}
