#pragma once
// Layouts of the station databases. A job database (".tdb", packed into a
// ".fmj") holds the stations around one target; a master database (".fdb",
// packed as ".fmd") the stations of a whole region. Both are SQLite files
// with the tables, column order and keys below.
//
// Coordinates: lat and lon in every station and city table are int, stored
// units = degrees x 14400 truncated (a quarter arc-second); longitude is
// positive WEST. The job header (information) stores degrees as float.

#include <filesystem>
#include <string>
#include <string_view>

namespace qarvel::stationdb {

class Database;

// The statements that create a job database, in the order they are run. The
// texts are part of the format: tests compare them.
inline constexpr std::string_view kCreateAmData =
    "CREATE TABLE am_data ("
    " application_id int NOT NULL CONSTRAINT amKey PRIMARY KEY,"
    " comm_city varchar(20), comm_state char(2),"
    " party_id int,"
    " ant_mode char(3),"
    " lat int,"
    " lon int,"
    " fac_callsign char(13) );";
inline constexpr std::string_view kCreateTv6Data =
    "CREATE TABLE tv6_data ("
    " application_id int NOT NULL CONSTRAINT tv6Key PRIMARY KEY,"
    " comm_city varchar(20), comm_state char(2),"
    " party_id int,"
    " lat int,"
    " lon int,"
    " fac_zone varchar(3),"
    " fac_callsign char(13) );";
inline constexpr std::string_view kCreateParty =
    "CREATE TABLE party ("
    " party_id int NOT NULL CONSTRAINT partyKey PRIMARY KEY,"
    " party_address1 varchar(40), party_address2 varchar(40),"
    " party_company varchar(60), party_legal_name varchar(255),"
    " party_name varchar(60), party_city varchar(20),"
    " party_state char(2), party_country char(2),"
    " party_zip1 char(5), party_phone char(10),"
    " party_email varchar(60) );";
inline constexpr std::string_view kCreateFmData =
    "CREATE TABLE fm_data ("
    " application_id int NOT NULL CONSTRAINT fmKey PRIMARY KEY,"
    " party_id int,"
    " lat int, lon int,"
    " cutoff_date timestamp, cp_exp_date timestamp,"
    " app_arn char(12), app_service char(2), asd_service char(2),"
    " facility_id int, file_prefix char(10),"
    " comm_city varchar(20), comm_state char(2),"
    " fac_callsign char(13), asrn int,"
    " border_code char(1), border_dist float,"
    " elev_amsl float, fm_dom_status varchar(6),"
    " hag_horiz_rc_mtr float, max_horiz_erp float,"
    " station_channel int, station_class varchar(2),"
    " horiz_erp float, vert_erp float,"
    " haat_horiz_rc_mtr float, rcamsl_horiz_mtr float,"
    " ant_rotation float, docket_num varchar(20),"
    " bt_ind char(1), rule_73_215_req_ind char(1), da_ind char(1),"
    " antenna_id int, intl_class varchar(2), intl_status char(6) );";
inline constexpr std::string_view kCreatePlaces =
    "CREATE TABLE places ("
    " name varchar(64), pop int,"
    " lat int, lon int);";
inline constexpr std::string_view kCreateMarkers =
    "CREATE TABLE markers ("
    " name varchar(128), jdate char(5),"
    " lat int, lon int);";
inline constexpr std::string_view kCreateInformation =
    "CREATE TABLE information ("
    " CDate timestamp, Comments varchar(255),"
    " Source varchar(255), TChan int,"
    " TLat float, TLon float, TClass char(2), TIClass char(2),"
    " OffSetN float, OffSetW float, ScanRange int);";

// A master database's header record. creation_date is the five-character
// day code of the day it was made (day_code.h); version is read back as a
// single-precision number; source says where the station data came from
// (for the generated demo database it says so).
struct MasterHeader {
    std::string creation_date;
    std::string creation_size;
    std::string version = "1.9";
    std::string source;
};

// The master's own information table and its primary-key indexes, which
// carry the names the job builder seeks on.
inline constexpr std::string_view kCreateMasterInformation =
    "CREATE TABLE information ("
    " creation_date char(5), creation_size varchar(32),"
    " version varchar(8), Source varchar(255));";
inline constexpr std::string_view kCreateMasterIndexes =
    "CREATE UNIQUE INDEX fmkey ON fm_data (application_id);"
    " CREATE UNIQUE INDEX amkey ON am_data (application_id);"
    " CREATE UNIQUE INDEX tv6key ON tv6_data (application_id);"
    " CREATE UNIQUE INDEX partykey ON party (party_id);";

// Creates an empty job database at path (the parent folder is made when
// missing). An existing file is not overwritten. On failure shows
// "Invalid file path" and returns false. Written under a temporary name
// beside path and renamed into place.
bool CreateJobDatabase(const std::filesystem::path& path);

// Creates (or replaces) an empty master database at fdbPath with the header
// record h: tables fm_data, am_data, tv6_data, party, places, information and
// the indexes fmkey, amkey, tv6key, partykey. Written under a temporary name
// beside fdbPath and renamed into place; a failure leaves any previous file
// as it was, is reported through the error trap and returns false.
bool CreateMasterDatabase(const std::filesystem::path& fdbPath, const MasterHeader& h);

// The same layouts on an open, empty database, for callers that fill the
// tables before renaming the file into place (importers). Throw
// DatabaseError on failure.
void CreateJobSchema(Database& db);
void CreateMasterSchema(Database& db, const MasterHeader& h);

// A name beside target for writing a file before renaming it into place:
// same folder, target's name with a unique suffix.
std::filesystem::path TempPathBeside(const std::filesystem::path& target);

}  // namespace qarvel::stationdb
