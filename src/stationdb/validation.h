#pragma once
// The checks by which a file is accepted as a job or as a master database.
// Both run under the error trap: any database failure inside makes the file
// invalid and shows the check's own message, never the engine's.

#include <filesystem>
#include <string>

#include "stationdb/day_code.h"  // DayCode, TodayDayCode

namespace qarvel::stationdb {

// The job header, read from a job's information record. TLat and TLon are
// degrees (longitude positive WEST); OffsetN/OffsetW the north and west
// offsets of the study centre; ScanRange km; TChan 200 to 300. CDate is the
// stored build date as text.
struct JobHeader {
    std::string CDate;
    int TChan = 0;
    std::string Comments, Source;
    double TLat = 0, TLon = 0;
    std::string TClass;
    double OffsetN = 0, OffsetW = 0;
    int ScanRange = 0;
};

// True when path is a usable job: it exists, holds the tables fm_data,
// am_data, tv6_data, information and party (other tables are allowed), and
// its first information record has every header field (names matched
// without regard to case). The header is written to *header only when the
// file is valid. Otherwise shows "Invalid or Damaged Jobfile!" and returns
// false. The file is opened read-only.
bool ValidJobFile(const std::filesystem::path& path, JobHeader* header = nullptr);

// A master database's header: creation_date (day code text), creation_size,
// and version as a single-precision number (1.9).
struct MasterInfo {
    std::string creation_date, creation_size;
    float version = 0;
};

struct FmdCheckOptions {
    // The program's pending operation; the age warning is skipped while it
    // is "NoOp".
    std::string pendingOperation;
    // Today's day code for the age check; 0 means the real today.
    int todayDayCode = 0;
    // The file as the user knows it (the packed ".fmd"), named in reports;
    // empty: the checked path itself.
    std::filesystem::path displayName;
};

// True when path (an unpacked master database) is usable: it exists, holds
// the same five tables as a job, and its information record gives
// creation_date, creation_size and version. A database older than 1.9 is
// upgraded in place (fm_data gains facility_id and asd_service, and below 1.6
// also vert_erp). A database dated more than two days ahead is refused; one
// more than three months old is accepted with a warning, unless the pending
// operation is "NoOp". Otherwise shows "Invalid or Damaged Master Database!"
// and returns false. *info is written only when the file is valid.
bool ValidFMDFile(const std::filesystem::path& path, const FmdCheckOptions& options = {},
                  MasterInfo* info = nullptr);

}  // namespace qarvel::stationdb
