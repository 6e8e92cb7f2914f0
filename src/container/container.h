#pragma once
// The packed file container of module "modFileComp": job files (".fmj") and
// master databases (".fmd") travel as several files laid end to end behind a
// small directory and compressed as one zlib stream (deflate level 9, the
// layout compress2() writes and uncompress() reads).
//
// Uncompressed layout, in order:
//   per file: name length L (8-bit unsigned), the bare name (L bytes, one byte
//             per character in code page 1252), size (32-bit signed, little-endian)
//   directory end: one 0 byte
//   the files' contents, in directory order, with nothing between them.
//
// Containers arrive by e-mail, so unpacking trusts nothing: a stored name
// that could reach outside the destination folder, a size that is negative or
// overruns the data, a truncated stream or trailing bytes make the whole
// container refused, and nothing is left behind.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qarvel::container {

// The compressor's status text when it worked.
inline constexpr std::string_view kContainerSuccess = "Success";
// Files are copied through one reusable buffer of at most this many bytes, so
// memory does not grow with the size of a job database.
inline constexpr std::size_t kContainerBlockSize = 32767;
// A stored name is at most 255 bytes (its length is one byte; 0 ends the directory).
inline constexpr std::size_t kContainerMaxNameBytes = 255;
// Sanity bound on the directory: a job packs three files, a master one.
inline constexpr std::size_t kContainerMaxEntries = 4096;
inline constexpr std::uint64_t kContainerMaxInflatedBytes = std::uint64_t{1} << 30;
inline constexpr std::uint64_t kContainerFreeSpaceReserve = std::uint64_t{64} << 20;

// Packs the files of `sources`, in order, into the container `destination`.
// Each stored name is the source's bare file name converted from UTF-8 to code
// page 1252; a name that code page cannot represent, an empty or over-long
// name, a name UncompressFiles would refuse, two sources with the same name
// (ignoring ASCII case), a file of 2^31 bytes or more, or a missing source
// fails. The container is written to a temporary file beside `destination`
// and renamed into place, so a failure keeps the previous container.
// Errors are reported to the error trap as "modFileComp" ":CompressFiles:".
// statusText (optional) receives "Success" or what went wrong.
bool CompressFiles(const std::filesystem::path& destination,
                   const std::vector<std::filesystem::path>& sources,
                   std::string* statusText = nullptr);

// Unpacks the container `source` into the existing folder `destinationFolder`,
// each file under its stored name (replacing a file of that name). The whole
// container is decompressed to a scratch file in the temporary folder and its
// directory checked against the decompressed size before any file is written;
// the files are written under temporary names and renamed only when all of
// them were written. On failure no file of the container remains in the
// folder and earlier files of the same names are untouched (except when a
// final rename itself fails, after which the renamed files are removed).
// Errors are reported as "modFileComp" ":UncompressFiles:".
// A container may inflate to at most maxInflatedBytes (a national master is
// a few megabytes), and unpacking stops when the temporary folder's volume
// would keep less than kContainerFreeSpaceReserve free.
bool UncompressFiles(const std::filesystem::path& source,
                     const std::filesystem::path& destinationFolder,
                     std::string* statusText = nullptr,
                     std::uint64_t maxInflatedBytes = kContainerMaxInflatedBytes);

// --- Helpers shared with the master-database packing --------------------------

// Code page 1252 <-> UTF-8. Empty optional when the text cannot be converted
// (a character outside the code page, invalid UTF-8, or one of the five bytes
// the code page leaves undefined).
std::optional<std::string> Utf8ToCp1252(std::string_view utf8);
std::optional<std::string> Cp1252ToUtf8(std::string_view cp1252);

// Empty when `name` (code page 1252 bytes) is safe to create inside a folder,
// else the reason: empty or longer than 255 bytes, ".", "..", anything
// containing "..", "/", "\\", ":" (drive prefixes, alternate streams),
// control characters, or a reserved device name (CON, NUL, COM1...).
std::string ContainerNameProblem(std::string_view name);

// Creates a new empty file with a fresh name "<prefix><random><suffix>" in
// `folder`, never reusing an existing name; throws core::TrapError on failure.
std::filesystem::path CreateUniqueFile(const std::filesystem::path& folder,
                                       std::string_view prefix, std::string_view suffix);
// Creates a new empty folder with a fresh name inside `parent`.
std::filesystem::path CreateUniqueFolder(const std::filesystem::path& parent,
                                         std::string_view prefix);

}  // namespace qarvel::container
