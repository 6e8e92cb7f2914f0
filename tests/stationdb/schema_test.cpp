// Job and master database layouts: the CREATE texts, column order and types,
// keys and index names, and the failure paths of creation.

#include "stationdb/schema.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <cctype>
#include <map>

#include "core/error_trap.h"
#include "core/prompt.h"
#include "stationdb/database.h"
#include "support/temp_folder.h"

namespace qarvel::stationdb {
namespace {

namespace fs = std::filesystem;

class SchemaTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = qarvel::testing_support::FreshTestFolder();
    }
    void TearDown() override { fs::remove_all(m_dir); }

    // Every file left in the folder (no temporary names may stay behind).
    std::vector<std::string> FilesIn(const fs::path& dir) const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(dir)) names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    fs::path m_dir;
    core::RecordingPrompt m_prompt;
    core::ScopedPrompt m_scopedPrompt{m_prompt};
    core::RecordingErrorSink m_errors;
    core::ScopedErrorSink m_scopedErrors{m_errors};
};

std::string Stored(std::string_view createText) {
    std::string text(createText);
    if (!text.empty() && text.back() == ';') text.pop_back();  // SQLite keeps the text without it
    return text;
}

// The columns of fm_data and party, in the order of the format.
const std::vector<std::string> kFmColumns = {
    "application_id", "party_id",      "lat",           "lon",         "cutoff_date",
    "cp_exp_date",    "app_arn",       "app_service",   "asd_service", "facility_id",
    "file_prefix",    "comm_city",     "comm_state",    "fac_callsign", "asrn",
    "border_code",    "border_dist",   "elev_amsl",     "fm_dom_status", "hag_horiz_rc_mtr",
    "max_horiz_erp",  "station_channel", "station_class", "horiz_erp",  "vert_erp",
    "haat_horiz_rc_mtr", "rcamsl_horiz_mtr", "ant_rotation", "docket_num", "bt_ind",
    "rule_73_215_req_ind", "da_ind",   "antenna_id",    "intl_class",  "intl_status"};
const std::vector<std::string> kPartyColumns = {
    "party_id",   "party_address1", "party_address2", "party_company", "party_legal_name", "party_name",
    "party_city", "party_state",    "party_country",  "party_zip1",    "party_phone",      "party_email"};

// name -> (declared type in lower case, primary-key flag) of one table.
std::map<std::string, std::pair<std::string, int>> Declared(const Database& db, const std::string& table) {
    Statement info = db.Prepare("SELECT name, type, pk FROM pragma_table_info(?1)");
    info.Bind(1, table);
    std::map<std::string, std::pair<std::string, int>> out;
    while (info.Step()) {
        std::string type = info.GetText(1);
        std::transform(type.begin(), type.end(), type.begin(), [](unsigned char c) { return char(std::tolower(c)); });
        out[info.GetText(0)] = {type, info.GetInt(2)};
    }
    return out;
}

TEST_F(SchemaTest, JobDatabaseHasTheTablesInOrderWithTheirTexts) {
    const fs::path job = m_dir / "new" / "folder" / "job.tdb";
    ASSERT_TRUE(CreateJobDatabase(job));
    EXPECT_TRUE(m_prompt.Texts().empty());
    EXPECT_EQ(FilesIn(job.parent_path()), std::vector<std::string>{"job.tdb"});

    Database db(job, OpenMode::ReadOnly);
    Statement tables = db.Prepare("SELECT name, sql FROM sqlite_master WHERE type = 'table' ORDER BY rowid");
    const std::pair<const char*, std::string_view> expected[] = {
        {"am_data", kCreateAmData}, {"tv6_data", kCreateTv6Data}, {"party", kCreateParty},
        {"fm_data", kCreateFmData}, {"places", kCreatePlaces},    {"markers", kCreateMarkers},
        {"information", kCreateInformation}};
    for (const auto& [name, text] : expected) {
        ASSERT_TRUE(tables.Step()) << "missing " << name;
        EXPECT_EQ(tables.GetText(0), name);
        EXPECT_EQ(tables.GetText(1), Stored(text));
    }
    EXPECT_FALSE(tables.Step());
}

TEST_F(SchemaTest, StationTablesHaveTheFormatColumnsTypesAndKeys) {
    const fs::path job = m_dir / "job.tdb";
    ASSERT_TRUE(CreateJobDatabase(job));
    Database db(job, OpenMode::ReadWrite);
    EXPECT_EQ(db.ColumnNames("fm_data"), kFmColumns);
    EXPECT_EQ(db.ColumnNames("party"), kPartyColumns);
    EXPECT_EQ(db.ColumnNames("information"),
              (std::vector<std::string>{"CDate", "Comments", "Source", "TChan", "TLat", "TLon", "TClass", "TIClass",
                                        "OffSetN", "OffSetW", "ScanRange"}));

    const auto fm = Declared(db, "fm_data");
    EXPECT_EQ(fm.at("application_id"), std::make_pair(std::string("int"), 1));
    EXPECT_EQ(fm.at("cutoff_date").first, "timestamp");
    EXPECT_EQ(fm.at("app_arn").first, "char(12)");
    EXPECT_EQ(fm.at("border_dist").first, "float");
    EXPECT_EQ(fm.at("fm_dom_status").first, "varchar(6)");
    EXPECT_EQ(fm.at("intl_status").first, "char(6)");
    EXPECT_EQ(Declared(db, "party").at("party_id"), std::make_pair(std::string("int"), 1));
    EXPECT_EQ(Declared(db, "party").at("party_legal_name").first, "varchar(255)");

    // The keys hold: a second record with the same key is refused.
    db.Run("INSERT INTO fm_data (application_id, lat) VALUES (1, 100)");
    EXPECT_THROW(db.Run("INSERT INTO fm_data (application_id) VALUES (1)"), DatabaseError);
    EXPECT_THROW(db.Run("INSERT INTO party (party_id) VALUES (NULL)"), DatabaseError);
    // Declared float columns keep fractions; int columns integers.
    db.Run("UPDATE fm_data SET border_dist = ?1, lat = ?2 WHERE application_id = 1", 12.75, 7000000);
    Statement row = db.Prepare("SELECT border_dist, lat FROM fm_data");
    ASSERT_TRUE(row.Step());
    EXPECT_DOUBLE_EQ(row.GetDouble(0), 12.75);
    EXPECT_EQ(row.Type(1), ColumnType::Integer);
}

TEST_F(SchemaTest, ExistingFileIsNotReplaced) {
    const fs::path job = m_dir / "job.tdb";
    { std::ofstream(job) << "somebody's job"; }
    EXPECT_FALSE(CreateJobDatabase(job));
    EXPECT_EQ(m_prompt.Texts(), std::vector<std::string>{"Invalid file path"});
    ASSERT_EQ(m_errors.Reports().size(), 1u);
    EXPECT_EQ(m_errors.Reports()[0].module, "modFMdb");
    EXPECT_EQ(m_errors.Reports()[0].routine, ":CreateJobDatabase:");
    std::ifstream in(job);
    std::string content;
    std::getline(in, content);
    EXPECT_EQ(content, "somebody's job");
    EXPECT_EQ(FilesIn(m_dir), std::vector<std::string>{"job.tdb"});
}

TEST_F(SchemaTest, UnusablePathGivesInvalidFilePath) {
    { std::ofstream(m_dir / "plainfile") << "x"; }
    EXPECT_FALSE(CreateJobDatabase(m_dir / "plainfile" / "job.tdb"));  // a file where a folder should be
    EXPECT_FALSE(CreateJobDatabase(m_dir / ""));                          // no file name
    EXPECT_EQ(m_prompt.Texts(), (std::vector<std::string>{"Invalid file path", "Invalid file path"}));
}

TEST_F(SchemaTest, MasterDatabaseLayoutIndexesAndHeader) {
    const fs::path fdb = m_dir / "master.fdb";
    const MasterHeader header{"24123", "1234567", "1.9", "Demo data (generated)"};
    ASSERT_TRUE(CreateMasterDatabase(fdb, header));
    EXPECT_EQ(FilesIn(m_dir), std::vector<std::string>{"master.fdb"});

    Database db(fdb, OpenMode::ReadOnly);
    EXPECT_EQ(db.TableNames(), (std::vector<std::string>{"fm_data", "am_data", "tv6_data", "party", "places",
                                                          "information"}));
    EXPECT_EQ(db.ColumnNames("fm_data"), kFmColumns);
    EXPECT_EQ(db.ColumnNames("party"), kPartyColumns);

    Statement indexes = db.Prepare(
        "SELECT m.name, m.tbl_name, i.name FROM sqlite_master AS m, pragma_index_info(m.name) AS i"
        " WHERE m.type = 'index' AND m.sql IS NOT NULL ORDER BY m.name");
    std::vector<std::string> found;
    while (indexes.Step()) found.push_back(indexes.GetText(0) + " " + indexes.GetText(1) + "(" + indexes.GetText(2) + ")");
    EXPECT_EQ(found, (std::vector<std::string>{"amkey am_data(application_id)", "fmkey fm_data(application_id)",
                                               "partykey party(party_id)", "tv6key tv6_data(application_id)"}));

    Statement info = db.Prepare("SELECT * FROM information");
    ASSERT_TRUE(info.Step());
    EXPECT_EQ(info.GetText("creation_date"), "24123");
    EXPECT_EQ(info.GetText("creation_size"), "1234567");
    EXPECT_EQ(info.GetText("version"), "1.9");
    EXPECT_EQ(info.GetText("source"), "Demo data (generated)");
    EXPECT_FALSE(info.Step());
}

TEST_F(SchemaTest, MasterReplacesAnOldFileButAFailureKeepsIt) {
    const fs::path fdb = m_dir / "master.fdb";
    ASSERT_TRUE(CreateMasterDatabase(fdb, {"24001", "1", "1.9", "first"}));
    ASSERT_TRUE(CreateMasterDatabase(fdb, {"24002", "2", "1.9", "second"}));
    {
        Database db(fdb, OpenMode::ReadOnly);
        Statement info = db.Prepare("SELECT Source FROM information");
        ASSERT_TRUE(info.Step());
        EXPECT_EQ(info.GetText(0), "second");
    }
    // A folder in the target's place cannot be replaced: reported, nothing left over.
    fs::create_directories(m_dir / "taken.fdb" / "inner");
    EXPECT_FALSE(CreateMasterDatabase(m_dir / "taken.fdb", {}));
    ASSERT_EQ(m_errors.Reports().size(), 1u);
    EXPECT_EQ(m_errors.Reports()[0].routine, ":CreateMasterDatabase:");
    EXPECT_EQ(FilesIn(m_dir), (std::vector<std::string>{"master.fdb", "taken.fdb"}));
}

TEST(TempPathBesideTest, SameFolderDistinctNames) {
    const fs::path target = fs::path("/some/folder") / "job.tdb";
    const fs::path a = TempPathBeside(target), b = TempPathBeside(target);
    EXPECT_EQ(a.parent_path(), target.parent_path());
    EXPECT_NE(a, b);
    EXPECT_NE(a, target);
}

}  // namespace
}  // namespace qarvel::stationdb
