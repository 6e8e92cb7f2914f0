#pragma once
// Checks at the door of a station database: every table and column the
// program reads is there with the kind of value it reads (whole number,
// number or text), and the values that steer a study are in range, so that
// a damaged file is refused with its reason instead of giving an empty grid
// or a wrong count of open channels.

#include <optional>
#include <string>

#include "stationdb/database.h"
#include "stationdb/validation.h"

namespace qarvel::stationdb {

enum class DatabaseKind { Master, Job };

// The first missing table or column, or a column declared for another kind
// of value ("fm_data: column station_class is missing", "fm_data: column
// lat is declared text, expected int"); nullopt when the layout serves.
std::optional<std::string> LayoutProblem(const Database& db, DatabaseKind kind);

// The first station whose position cannot be a place on earth: a stored
// lat or lon that is not a whole number of 1/14400 degree within 90 and 180
// degrees ("fm_data: application_id 12: lat 1e+308 is out of range").
std::optional<std::string> PositionProblem(const Database& db);

// A job header value out of range: channel 200 to 300, a known class,
// latitude within 90 and longitude within 180 degrees, finite offsets, scan
// range 1 to 32767 km.
std::optional<std::string> HeaderProblem(const JobHeader& header);

}  // namespace qarvel::stationdb
