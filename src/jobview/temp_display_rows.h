#pragma once
// Reading the job's station records into study-table rows, and writing the
// rows. Internal to the study table's rebuild.

#include <string>

#include "jobview/temp_display.h"
#include "stationdb/database.h"

namespace qarvel::jobview {

// Stored coordinates are degrees x 14400 (quarter seconds of arc).
inline constexpr double kStoredUnitsPerDegree = 14400.0;

// Column of station_channel in the FM query's rows.
inline constexpr int kFmChannelColumn = 0;

// The columns an FM query row gives as they stand (position in degrees).
TempDisplayRow ReadFmRecord(const stationdb::Statement& fm);
// A row of kTv6Select; its zone text goes to *facZone.
TempDisplayRow ReadTv6Record(const stationdb::Statement& tv, std::string* facZone);
// A row of kAmSelect.
TempDisplayRow ReadAmRecord(const stationdb::Statement& am);

// Inserts rows into `tempdisplay` through one prepared statement.
class TempDisplayWriter {
public:
    explicit TempDisplayWriter(stationdb::Database& job);
    void Insert(const TempDisplayRow& row);

private:
    stationdb::Statement m_insert;
};

}  // namespace qarvel::jobview
