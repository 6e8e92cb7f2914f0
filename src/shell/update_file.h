#pragma once
// The online-update record. When the online update of the master database
// has applied an update, it leaves a small text file in the master database
// folder (gDataDIR), named "QarvelUpdate.txt":
//
//   Qarvel Update File
//   00042
//
// The first line is the file's title, exactly "Qarvel Update File"; the
// second is the update number, five decimal digits (00000..32767, the range
// of `LastUpdate`). Blank lines and trailing blanks or carriage returns are
// ignored. UpdateRegSettings stores the number under `LastUpdate`; the file
// stays where it is (storing the same number again changes nothing).

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

class QSettings;

namespace qarvel::shell {

struct ProgramContext;

inline constexpr std::string_view kUpdateFileName = "QarvelUpdate.txt";
inline constexpr std::string_view kUpdateFileTitle = "Qarvel Update File";

// gDataDIR joined with "QarvelUpdate.txt".
std::filesystem::path UpdateFilePath(const ProgramContext& context);

// The update number of an update file; nullopt when the file is absent or
// not an update file (wrong title, not five digits, above 32767).
std::optional<std::int16_t> ReadUpdateFile(const std::filesystem::path& file);

// Stores the update number of the update file under `LastUpdate`, in the
// context and at once in the store. False when the file is not a valid
// update file (reported to the error trap).
bool UpdateRegSettings(QSettings& store, ProgramContext& context);

}  // namespace qarvel::shell
