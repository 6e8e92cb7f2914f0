// libFuzzer target for the packed-container reader. Job files arrive by
// e-mail, so UncompressFiles must refuse anything that would write outside
// its destination folder and must leave nothing behind when it refuses.
//
// Input: the first byte chooses the mode. Even: the remaining bytes are the
// container file as it lies on disk (exercises the zlib stream checks). Odd:
// the remaining bytes are the uncompressed layout, compressed here with
// compress2 at level 9 (reaches the directory checks at once).
//
// After every run the whole work tree is walked: only the input file, an
// empty scratch area and the destination folder may exist, and the folder
// may hold plain files only when the unpacking reported success. On success
// the harness also reads the layout itself and requires one file in the
// folder per directory entry, of the entry's size: a file written anywhere
// else (an absolute name, say) shows up as a missing one.

#include "core/error_trap.h"
#include "container/container.h"

#include <unistd.h>
#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;

// Refused containers are the common case here: keep stderr quiet.
class SilentSink : public qarvel::core::ErrorSink {
public:
    void Report(const qarvel::core::ErrorReport&) override {}
};

struct Work {
    fs::path base;  // everything the target may touch lies below this
    fs::path input;
    fs::path scratch;
    fs::path out;   // deep enough that "../" chains stay inside base
};

Work& TheWork() {
    static Work work = [] {
        Work w;
        w.base = fs::temp_directory_path() / ("qarvel-fuzz-" + std::to_string(getpid()));
        fs::remove_all(w.base);
        w.input = w.base / "in.fmj";
        w.scratch = w.base / "tmp";
        w.out = w.base / "a/b/c/d/e/out";
        fs::create_directories(w.scratch);
        fs::create_directories(w.out);
        setenv("TMPDIR", w.scratch.c_str(), 1);
        // The handler may run after `work` is destroyed: it keeps its own copy.
        static const std::string* base = new std::string(w.base.string());
        std::atexit([] {
            std::error_code ec;
            fs::remove_all(*base, ec);
        });
        return w;
    }();
    return work;
}

[[noreturn]] void Violation(const std::string& what) {
    std::fprintf(stderr, "container fuzz: %s\n", what.c_str());
    std::abort();
}

void CheckTree(const Work& w, bool unpacked) {
    std::set<fs::path> folders = {"tmp", "a", "a/b", "a/b/c", "a/b/c/d", "a/b/c/d/e", "a/b/c/d/e/out"};
    for (const auto& item : fs::recursive_directory_iterator(w.base)) {
        fs::path rel = fs::relative(item.path(), w.base);
        if (rel == "in.fmj" || folders.count(rel)) continue;
        bool inOut = item.path().parent_path() == w.out;
        if (!inOut) Violation("written outside the destination folder: " + rel.string());
        if (!unpacked) Violation("file left behind by a refused container: " + rel.string());
        if (!item.is_regular_file()) Violation("not a plain file: " + rel.string());
    }
}

// The uncompressed container, read independently of the code under test.
std::string Inflated(const std::string& packed) {
    std::string raw;
    z_stream zs{};
    inflateInit(&zs);
    zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    zs.avail_in = static_cast<uInt>(packed.size());
    char buffer[16384];
    int ret = Z_OK;
    while (ret == Z_OK) {
        zs.next_out = reinterpret_cast<Bytef*>(buffer);
        zs.avail_out = sizeof buffer;
        ret = inflate(&zs, Z_NO_FLUSH);
        raw.append(buffer, sizeof buffer - zs.avail_out);
    }
    inflateEnd(&zs);
    if (ret != Z_STREAM_END) Violation("accepted a stream zlib does not end");
    return raw;
}

void CheckOutput(const Work& w, const std::string& packed) {
    std::string raw = Inflated(packed);
    std::size_t pos = 0;
    std::size_t entries = 0;
    std::uint64_t total = 0;
    while (pos < raw.size() && raw[pos] != 0) {
        auto length = static_cast<unsigned char>(raw[pos]);
        if (pos + 1 + length + 4 > raw.size()) Violation("accepted a directory that runs past the data");
        std::uint32_t size = 0;
        for (int i = 3; i >= 0; --i) {
            size = size << 8 | static_cast<unsigned char>(raw[pos + 1 + length + static_cast<std::size_t>(i)]);
        }
        total += size;
        ++entries;
        pos += 1 + length + 4;
    }
    if (pos >= raw.size() || total != raw.size() - pos - 1) Violation("accepted sizes that do not fill the data");
    std::size_t files = 0;
    std::uint64_t written = 0;
    for (const auto& item : fs::directory_iterator(w.out)) {
        ++files;
        written += item.file_size();
    }
    if (files != entries || written != total) Violation("files missing from the destination folder");
}

void ClearOutput(const Work& w) {
    for (const auto& item : fs::directory_iterator(w.out)) fs::remove_all(item.path());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static SilentSink sink;
    static qarvel::core::ScopedErrorSink scoped(sink);
    const Work& w = TheWork();
    if (size == 0) return 0;

    std::string body(reinterpret_cast<const char*>(data) + 1, size - 1);
    if (data[0] & 1) {
        uLongf length = compressBound(static_cast<uLong>(body.size()));
        std::string packed(length, '\0');
        compress2(reinterpret_cast<Bytef*>(packed.data()), &length, reinterpret_cast<const Bytef*>(body.data()),
                  static_cast<uLong>(body.size()), 9);
        packed.resize(length);
        body.swap(packed);
    }
    std::ofstream(w.input, std::ios::binary | std::ios::trunc).write(body.data(),
                                                                      static_cast<std::streamsize>(body.size()));

    bool unpacked = qarvel::container::UncompressFiles(w.input, w.out);
    CheckTree(w, unpacked);
    if (unpacked) CheckOutput(w, body);
    ClearOutput(w);
    return 0;
}
