// libFuzzer target for the FM Query importer: any file either imports
// (with bad lines reported and skipped) or is refused with its reason; the
// output master is complete or absent, never half written.

#include "importers/import_fmquery.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fs::path dir = [] {
        const fs::path d = fs::temp_directory_path() / ("qarvel-fuzz-fmquery-" + std::to_string(::getpid()));
        fs::create_directories(d);
        return d;
    }();
    const fs::path input = dir / "query.txt";
    const fs::path master = dir / "out.fdb";
    {
        std::ofstream out(input, std::ios::binary);
        out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
    qarvel::importers::ImportSummary summary;
    const bool ok = qarvel::importers::ImportFmQuery(input, qarvel::importers::ImportTarget::Unpacked(master), {},
                                                     &summary);
    std::error_code ec;
    if (!ok && fs::exists(master, ec)) std::abort();  // a refused import leaves no master
    fs::remove(master, ec);
    return 0;
}
