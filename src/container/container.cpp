#include "container/container.h"

#include "core/error_trap.h"
#include "core/interrupt.h"

#include <zlib.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <random>
#include <set>
#include <utility>

namespace qarvel::container {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view kModule = "modFileComp";
constexpr int kLevel = 9;  // zlib's best compression

using Buffer = std::array<unsigned char, kContainerBlockSize>;

[[noreturn]] void Fail(const std::string& what) { throw core::TrapError(what); }

std::string Quoted(const fs::path& path) { return "\"" + path.string() + "\""; }

// A stored name for messages: printable bytes as they are, others as \xNN.
std::string Printable(std::string_view name) {
    static const char* hex = "0123456789ABCDEF";
    std::string out = "\"";
    for (unsigned char c : name) {
        if (c >= 0x20 && c < 0x7F) {
            out += static_cast<char>(c);
        } else {
            out += "\\x";
            out += hex[c >> 4];
            out += hex[c & 15];
        }
    }
    return out + "\"";
}

// An open C stream, closed when it goes out of scope. Close() reports the
// failure of the final flush, which is where a full disk shows up.
class File {
public:
    File() = default;
    explicit File(std::FILE* file) : m_file(file) {}
    File(File&& other) noexcept : m_file(std::exchange(other.m_file, nullptr)) {}
    File& operator=(File&& other) noexcept {
        std::swap(m_file, other.m_file);
        return *this;
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() {
        if (m_file) std::fclose(m_file);
    }
    std::FILE* Get() const { return m_file; }
    void Close(const fs::path& path) {
        if (m_file && std::fclose(std::exchange(m_file, nullptr)) != 0) {
            Fail("cannot write " + Quoted(path));
        }
    }

private:
    std::FILE* m_file = nullptr;
};

std::FILE* OpenStream(const fs::path& path, const char* mode) {
#ifdef _WIN32
    std::wstring wideMode(mode, mode + std::char_traits<char>::length(mode));
    return _wfopen(path.c_str(), wideMode.c_str());
#else
    return std::fopen(path.c_str(), mode);
#endif
}

// Removes a file when it goes out of scope, unless released.
class RemoveGuard {
public:
    explicit RemoveGuard(fs::path path) : m_path(std::move(path)) {}
    RemoveGuard(RemoveGuard&& other) noexcept
        : m_path(std::move(other.m_path)), m_active(std::exchange(other.m_active, false)) {}
    RemoveGuard(const RemoveGuard&) = delete;
    RemoveGuard& operator=(const RemoveGuard&) = delete;
    RemoveGuard& operator=(RemoveGuard&&) = delete;
    ~RemoveGuard() {
        std::error_code ec;
        if (m_active) fs::remove(m_path, ec);
    }
    const fs::path& Path() const { return m_path; }
    void Release() { m_active = false; }

private:
    fs::path m_path;
    bool m_active = true;
};

std::string RandomTag() {
    thread_local std::mt19937_64 engine{std::random_device{}()};
    static const char* hex = "0123456789abcdef";
    std::uint64_t bits = engine();
    std::string tag;
    for (int i = 0; i < 12; ++i, bits >>= 4) tag += hex[bits & 15];
    return tag;
}

// Opens a new file for writing and reading under a fresh name; the "x" mode
// makes the creation exclusive, so an existing file is never reused.
std::pair<File, fs::path> OpenUniqueFile(const fs::path& folder, const fs::path& prefix,
                                         std::string_view suffix) {
    for (int attempt = 0; attempt < 100; ++attempt) {
        fs::path candidate = folder / prefix;
        candidate += RandomTag();
        candidate += std::string(suffix);
        errno = 0;
        if (std::FILE* file = OpenStream(candidate, "w+bx")) return {File(file), candidate};
        if (errno != EEXIST) break;
    }
    Fail("cannot create a temporary file in " + Quoted(folder));
}

std::pair<File, fs::path> OpenScratchFile() {
    return OpenUniqueFile(fs::temp_directory_path(), "qarvel", ".tmp");
}

void WriteBytes(std::FILE* out, const void* data, std::size_t count, const fs::path& path) {
    if (count != 0 && std::fwrite(data, 1, count, out) != count) Fail("cannot write " + Quoted(path));
}

// Copies exactly `count` bytes through the one reusable buffer.
void CopyBlocks(std::FILE* in, std::FILE* out, std::uint64_t count, Buffer& buffer,
                const fs::path& inPath, const fs::path& outPath) {
    while (count > 0) {
        std::size_t block = count < buffer.size() ? static_cast<std::size_t>(count) : buffer.size();
        if (std::fread(buffer.data(), 1, block, in) != block) {
            Fail("cannot read " + Quoted(inPath) + " (shorter than expected)");
        }
        WriteBytes(out, buffer.data(), block, outPath);
        count -= block;
    }
}

struct Entry {
    std::string name;   // code page 1252 bytes, as stored
    std::int32_t size;  // bytes
    fs::path path;      // source (packing) or target (unpacking)
};

// Folds ASCII and Latin-1 capitals so that names a case-blind file system
// would confuse count as the same.
std::string FoldCase(std::string_view name) {
    std::string folded(name);
    for (char& c : folded) {
        auto b = static_cast<unsigned char>(c);
        if ((b >= 'A' && b <= 'Z') || (b >= 0xC0 && b <= 0xDE && b != 0xD7)) {
            c = static_cast<char>(b + 0x20);
        }
    }
    return folded;
}

void CheckNames(const std::vector<Entry>& entries) {
    std::set<std::string> seen;
    for (const Entry& entry : entries) {
        std::string problem = ContainerNameProblem(entry.name);
        if (!problem.empty()) Fail(problem + ": " + Printable(entry.name));
        if (!seen.insert(FoldCase(entry.name)).second) {
            Fail("file name appears twice: " + Printable(entry.name));
        }
    }
}

// --- Packing ---------------------------------------------------------------

Entry SourceEntry(const fs::path& source) {
    std::error_code ec;
    if (!fs::is_regular_file(source, ec)) Fail("cannot open source file " + Quoted(source));
    std::uintmax_t size = fs::file_size(source, ec);
    if (ec) Fail("cannot read source file " + Quoted(source));
    if (size > static_cast<std::uintmax_t>(INT32_MAX)) {
        Fail("source file " + Quoted(source) + " is 2 GiB or larger");
    }
    std::u8string bare = source.filename().u8string();
    std::optional<std::string> name = Utf8ToCp1252(std::string(bare.begin(), bare.end()));
    if (!name) Fail("file name cannot be stored in code page 1252: " + Quoted(source.filename()));
    return {*name, static_cast<std::int32_t>(size), source};
}

void WriteDirectory(std::FILE* out, const std::vector<Entry>& entries, const fs::path& path) {
    for (const Entry& entry : entries) {
        auto size = static_cast<std::uint32_t>(entry.size);
        unsigned char length = static_cast<unsigned char>(entry.name.size());
        unsigned char sizeBytes[4] = {static_cast<unsigned char>(size), static_cast<unsigned char>(size >> 8),
                                      static_cast<unsigned char>(size >> 16),
                                      static_cast<unsigned char>(size >> 24)};
        WriteBytes(out, &length, 1, path);
        WriteBytes(out, entry.name.data(), entry.name.size(), path);
        WriteBytes(out, sizeBytes, 4, path);
    }
    unsigned char end = 0;
    WriteBytes(out, &end, 1, path);
}

// zlib's own stream format (what compress2 writes), level 9, streamed from
// `in` through fixed buffers; `input` doubles as the copy buffer.
void Deflate(std::FILE* in, std::FILE* out, Buffer& input, const fs::path& outPath) {
    z_stream zs{};
    if (deflateInit(&zs, kLevel) != Z_OK) Fail("the compressor could not start");
    auto output = std::make_unique<Buffer>();
    std::string problem;
    int flush = Z_NO_FLUSH;
    while (problem.empty() && flush != Z_FINISH) {
        zs.avail_in = static_cast<uInt>(std::fread(input.data(), 1, input.size(), in));
        zs.next_in = input.data();
        if (std::ferror(in)) problem = "cannot read the scratch file";
        if (core::Interrupted()) problem = "interrupted";
        flush = std::feof(in) ? Z_FINISH : Z_NO_FLUSH;
        while (problem.empty()) {
            zs.avail_out = static_cast<uInt>(output->size());
            zs.next_out = output->data();
            if (deflate(&zs, flush) == Z_STREAM_ERROR) problem = "the compressor failed";
            std::size_t have = output->size() - zs.avail_out;
            if (have != 0 && std::fwrite(output->data(), 1, have, out) != have) {
                problem = "cannot write " + Quoted(outPath);
            }
            if (zs.avail_out != 0) break;
        }
    }
    deflateEnd(&zs);
    if (!problem.empty()) Fail(problem);
}

void Pack(const fs::path& destination, const std::vector<fs::path>& sources) {
    std::vector<Entry> entries;
    for (const fs::path& source : sources) entries.push_back(SourceEntry(source));
    if (entries.size() > kContainerMaxEntries) Fail("too many files for one container");
    CheckNames(entries);

    auto [scratch, scratchPath] = OpenScratchFile();
    RemoveGuard scratchGuard(scratchPath);
    WriteDirectory(scratch.Get(), entries, scratchPath);
    auto buffer = std::make_unique<Buffer>();
    for (const Entry& entry : entries) {
        File in(OpenStream(entry.path, "rb"));
        if (!in.Get()) Fail("cannot open source file " + Quoted(entry.path));
        CopyBlocks(in.Get(), scratch.Get(), static_cast<std::uint64_t>(entry.size), *buffer, entry.path,
                   scratchPath);
        if (std::fgetc(in.Get()) != EOF) Fail("source file " + Quoted(entry.path) + " changed while packing");
    }
    if (std::fflush(scratch.Get()) != 0) Fail("cannot write " + Quoted(scratchPath));
    std::rewind(scratch.Get());

    fs::path folder = destination.parent_path().empty() ? fs::path(".") : destination.parent_path();
    fs::path prefix = destination.filename();
    prefix += ".";
    auto [packed, packedPath] = OpenUniqueFile(folder, prefix, ".part");
    RemoveGuard packedGuard(packedPath);
    Deflate(scratch.Get(), packed.Get(), *buffer, packedPath);
    packed.Close(packedPath);
    std::error_code ec;
    fs::rename(packedPath, destination, ec);
    if (ec) Fail("cannot write " + Quoted(destination) + ": " + ec.message());
    packedGuard.Release();
}

// --- Unpacking -------------------------------------------------------------

// Inflates the whole of `in` into `out`; returns the number of bytes written.
// The stream must end exactly at the end of the file.
// The stream may not inflate beyond `limit` bytes, nor leave the scratch
// volume with less than kContainerFreeSpaceReserve bytes free: a small
// hostile file must not fill the disk.
std::uint64_t Inflate(std::FILE* in, std::FILE* out, const fs::path& outPath, std::uint64_t limit) {
    constexpr std::uint64_t kSpaceCheckEvery = 16u << 20;
    std::uint64_t nextSpaceCheck = 0;
    z_stream zs{};
    if (inflateInit(&zs) != Z_OK) Fail("the decompressor could not start");
    auto input = std::make_unique<Buffer>();
    auto output = std::make_unique<Buffer>();
    std::uint64_t total = 0;
    std::string problem;
    bool ended = false;
    while (!ended && problem.empty()) {
        zs.avail_in = static_cast<uInt>(std::fread(input->data(), 1, input->size(), in));
        zs.next_in = input->data();
        if (std::ferror(in)) problem = "cannot read the container";
        else if (zs.avail_in == 0) problem = "the container is truncated";
        else if (core::Interrupted()) problem = "interrupted";
        while (problem.empty()) {
            zs.avail_out = static_cast<uInt>(output->size());
            zs.next_out = output->data();
            int ret = inflate(&zs, Z_NO_FLUSH);
            if (ret == Z_NEED_DICT || ret == Z_DATA_ERROR || ret == Z_MEM_ERROR || ret == Z_STREAM_ERROR) {
                problem = std::string("the container is damaged (") + (zs.msg ? zs.msg : zError(ret)) + ")";
                break;
            }
            std::size_t have = output->size() - zs.avail_out;
            if (have != 0 && std::fwrite(output->data(), 1, have, out) != have) {
                problem = "cannot write " + Quoted(outPath);
            }
            total += have;
            if (total > limit) {
                problem = "the container inflates beyond " + std::to_string(limit) + " bytes";
                break;
            }
            if (total >= nextSpaceCheck) {
                std::error_code spaceError;
                const auto space = fs::space(outPath.parent_path(), spaceError);
                if (!spaceError && space.available < kContainerFreeSpaceReserve) {
                    problem = "not enough free disk space to unpack the container";
                    break;
                }
                nextSpaceCheck = total + kSpaceCheckEvery;
            }
            if (ret == Z_STREAM_END) ended = true;
            if (ended || zs.avail_out != 0) break;
        }
    }
    bool trailing = ended && (zs.avail_in != 0 || std::fgetc(in) != EOF);
    inflateEnd(&zs);
    if (!problem.empty()) Fail(problem);
    if (trailing) Fail("the container has data after its end");
    return total;
}

// Reads and checks the whole directory against the decompressed size before
// anything is written: every read stays inside the data, sizes are
// non-negative, and the contents fill the rest of the data exactly.
std::vector<Entry> ReadDirectory(std::FILE* in, std::uint64_t dataSize) {
    std::vector<Entry> entries;
    std::uint64_t position = 0;
    auto take = [&](void* into, std::size_t count) {
        if (count > dataSize - position || std::fread(into, 1, count, in) != count) {
            Fail("the container directory runs past the end of its data");
        }
        position += count;
    };
    for (;;) {
        unsigned char length = 0;
        take(&length, 1);
        if (length == 0) break;
        if (entries.size() == kContainerMaxEntries) Fail("the container holds too many files");
        std::string name(length, '\0');
        take(name.data(), length);
        unsigned char b[4];
        take(b, 4);
        auto raw = static_cast<std::uint32_t>(b[0] | (b[1] << 8) | (b[2] << 16) |
                                              (static_cast<std::uint32_t>(b[3]) << 24));
        if (raw > static_cast<std::uint32_t>(INT32_MAX)) Fail("negative file size for " + Printable(name));
        entries.push_back({std::move(name), static_cast<std::int32_t>(raw), {}});
    }
    CheckNames(entries);
    std::uint64_t contents = 0;
    for (const Entry& entry : entries) contents += static_cast<std::uint64_t>(entry.size);
    if (contents > dataSize - position) Fail("the container's file sizes overrun its data");
    if (contents < dataSize - position) Fail("the container has data after its last file");
    return entries;
}

void Unpack(const fs::path& source, const fs::path& folder, std::uint64_t maxInflatedBytes) {
    std::error_code ec;
    if (!fs::is_directory(folder, ec)) Fail("destination folder " + Quoted(folder) + " does not exist");
    File in(OpenStream(source, "rb"));
    if (!in.Get()) Fail("cannot open container " + Quoted(source));
    auto [scratch, scratchPath] = OpenScratchFile();
    RemoveGuard scratchGuard(scratchPath);
    std::uint64_t dataSize = Inflate(in.Get(), scratch.Get(), scratchPath, maxInflatedBytes);
    if (std::fflush(scratch.Get()) != 0) Fail("cannot write " + Quoted(scratchPath));
    std::rewind(scratch.Get());

    std::vector<Entry> entries = ReadDirectory(scratch.Get(), dataSize);
    for (Entry& entry : entries) {
        std::optional<std::string> utf8 = Cp1252ToUtf8(entry.name);
        if (!utf8) Fail("file name is not valid in code page 1252: " + Printable(entry.name));
        entry.path = folder / fs::path(std::u8string(utf8->begin(), utf8->end()));
        if (fs::is_directory(fs::symlink_status(entry.path, ec))) {
            Fail("a folder is in the way of " + Quoted(entry.path));
        }
    }

    // Write every file under a temporary name first; rename only when all worked.
    auto buffer = std::make_unique<Buffer>();
    std::vector<RemoveGuard> written;
    for (const Entry& entry : entries) {
        auto [out, outPath] = OpenUniqueFile(folder, "~qarvel", ".part");
        written.emplace_back(outPath);
        CopyBlocks(scratch.Get(), out.Get(), static_cast<std::uint64_t>(entry.size), *buffer, scratchPath,
                   outPath);
        out.Close(outPath);
    }
    std::vector<RemoveGuard> placed;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        fs::rename(written[i].Path(), entries[i].path, ec);
        if (ec) Fail("cannot write " + Quoted(entries[i].path) + ": " + ec.message());
        written[i].Release();
        placed.emplace_back(entries[i].path);
    }
    for (RemoveGuard& guard : placed) guard.Release();
}

template <class Body>
bool RunTrapped(std::string_view routine, std::string* statusText, Body&& body) {
    std::string status(kContainerSuccess);
    bool ok = core::Trapped(kModule, routine, false, [&] {
        try {
            body();
            return true;
        } catch (const std::exception& e) {
            status = e.what();
            throw;
        }
    });
    if (!ok && status == kContainerSuccess) status = "unknown error";
    if (statusText) *statusText = status;
    return ok;
}

}  // namespace

bool CompressFiles(const fs::path& destination, const std::vector<fs::path>& sources,
                   std::string* statusText) {
    return RunTrapped(":CompressFiles:", statusText, [&] { Pack(destination, sources); });
}

bool UncompressFiles(const fs::path& source, const fs::path& destinationFolder, std::string* statusText,
                     std::uint64_t maxInflatedBytes) {
    return RunTrapped(":UncompressFiles:", statusText, [&] { Unpack(source, destinationFolder, maxInflatedBytes); });
}

fs::path CreateUniqueFile(const fs::path& folder, std::string_view prefix, std::string_view suffix) {
    auto [file, path] = OpenUniqueFile(folder, fs::path(std::string(prefix)), suffix);
    file.Close(path);
    return path;
}

fs::path CreateUniqueFolder(const fs::path& parent, std::string_view prefix) {
    for (int attempt = 0; attempt < 100; ++attempt) {
        fs::path candidate = parent / (std::string(prefix) + RandomTag());
        std::error_code ec;
        if (fs::create_directory(candidate, ec)) return candidate;
        if (ec) break;
    }
    Fail("cannot create a folder in " + Quoted(parent));
}

}  // namespace qarvel::container
