#pragma once
// One station record of a master or local database (fm_data, am_data or
// tv6_data, found by application_id), read by column name and changed field
// by field with every value checked against the column before anything is
// written. A changed record is entered in the side table `user_edits`, so
// that a later import or update can tell the user's corrections from the
// regulator's data.

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "stationdb/database.h"

namespace qarvel::editing {

// NULL, a whole number, a number or text, as stored.
using FieldValue = std::variant<std::monostate, std::int64_t, double, std::string>;

struct ColumnSpec {
    std::string name;
    enum class Kind { Integer, Real, Text, Date } kind = Kind::Text;
    std::size_t width = 0;  // characters for char(n)/varchar(n); 0: no limit
};

struct StationRecord {
    std::string table;  // fm_data, am_data or tv6_data
    std::vector<std::pair<ColumnSpec, FieldValue>> fields;  // in column order
};

inline constexpr const char* kUserEditsTable = "user_edits";

// The columns of a table with their kinds and widths, from its declared types.
std::vector<ColumnSpec> TableColumns(const stationdb::Database& db, const std::string& table);

// The record with this application_id, or nullopt.
std::optional<StationRecord> GetStation(const stationdb::Database& db, std::int64_t applicationId);

// The stored value of `text` for a column of `table`, or the one-line reason
// it does not fit: numbers where numbers belong, channel 200 to 300, known
// class codes, stored coordinates within +-90 / +-180 degrees (x 14400),
// dates as YYYY-MM-DD or MM/DD/YYYY, text within the column's width. An empty
// text is NULL.
std::variant<FieldValue, std::string> ParseField(const std::string& table, const ColumnSpec& column,
                                                 const std::string& text);

// Sets the given columns (name, text) of the record. Every value is checked
// first; the first problem throws std::invalid_argument naming the column and
// nothing is written. Unknown columns, application_id itself and a missing
// record are refused the same way. Records the edit in user_edits.
void SetStationFields(stationdb::Database& db, std::int64_t applicationId,
                      const std::vector<std::pair<std::string, std::string>>& assignments);

// True when the record was changed by the user (user_edits names it).
bool IsUserEdited(const stationdb::Database& db, const std::string& table, std::int64_t applicationId);

}  // namespace qarvel::editing
