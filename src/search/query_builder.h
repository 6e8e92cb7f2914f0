#pragma once
// The database search's query texts: the basic search over fm_data and
// party, searchByKey, the advanced search's four clauses and the current
// query built from them, and query archives. The texts are the program's
// own Jet-dialect queries; values typed by the user reach them only through
// JetText, which doubles quotes, so no entry can end a literal.

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace qarvel::search {

// The fixed display query of the basic search and of searchByKey.
extern const std::string kDisplayQuery;

inline constexpr std::string_view kNoCurrentDatabase = "No Current Database";
inline constexpr std::string_view kInvalidChannel = "Invalid channel number";
inline constexpr std::string_view kArchiveTitle = "Qarvel SQL Query";
inline constexpr std::string_view kNotAnArchive = "Not a valid Query Archive!";
inline constexpr std::string_view kInvalidFileName = "That filename is invalid.";

// The text of a Jet string literal's body: quotes doubled.
std::string JetText(std::string_view text);

struct BasicEntries {
    std::string callSign, owner, city, state, channel;  // empty: not searched
};

// The basic search's query (IsDataPresent): the display query with a
// contains-match per filled entry (call sign, owner, city, state, in that
// order) and the channel; or kInvalidChannel for a channel entry that is not
// 200 to 300.
std::variant<std::string, std::string_view> BasicQuery(const BasicEntries& entries);

// The display query of one station.
std::string SearchByKeyQuery(long long applicationId);

// --- Advanced search -------------------------------------------------------

// Chosen fields per table, in the order fm_data, party, tv6_data, am_data;
// a list whose first entry is "NONE" (or an empty list) leaves its table out.
struct FieldChoice {
    std::vector<std::string> fmData, party, tv6Data, amData;
};

struct Clauses {
    std::string select, from, where, order;
};

// buildSELECT_FROM: the select and from lists of the chosen fields.
void BuildSelectFrom(const FieldChoice& choice, Clauses& clauses);

// The nine operators of a condition.
extern const std::vector<std::string> kOperators;

// MakeWhereList: appends one condition ("fm_data.station_channel", " = ",
// value) to the where text after joiner (" AND " or " OR ") when there is one
// already. Values are written as given: numbers bare, text in quotes by the
// caller (QuotedValue); BETWEEN takes the second value.
std::string AppendCondition(const std::string& where, const std::string& joiner, const std::string& field,
                            const std::string& op, const std::string& value, const std::string& second = {});

// A typed value for a condition: a number stays bare, text becomes a quoted
// Jet literal with its quotes doubled.
std::string QuotedValue(std::string_view typed);

// build_ORDER: "field ASC, field DESC".
std::string BuildOrder(const std::vector<std::pair<std::string, bool>>& fieldsDescending);

// write_sql: the current query from the clauses, or nullopt when the select
// list is empty. Each later clause is added only when every earlier one is
// present (an order without a where is dropped), as the program always did.
std::optional<std::string> WriteSql(const Clauses& clauses);

// A query typed by hand: trimmed, a final ";" removed.
std::string ManualQuery(std::string_view typed);

// --- Archives ----------------------------------------------------------------

// The archive file's text: the title line and the query, each ending CR LF.
std::string ArchiveText(std::string_view query);
// The query of an archive's text, or nullopt when its first line is not the
// title (kNotAnArchive).
std::optional<std::string> QueryFromArchive(std::string_view text);
// A chosen archive name: refused (nullopt) when it holds ">", cut to 200
// characters and given ".txt" when longer.
std::optional<std::string> ArchiveFileName(std::string_view name);

// Writes an archive beside `file` and renames it into place; reads one.
// Throw std::runtime_error with one line on failure.
void WriteArchive(const std::filesystem::path& file, std::string_view query);
std::string ReadArchive(const std::filesystem::path& file);

}  // namespace qarvel::search
