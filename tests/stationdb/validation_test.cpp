// Acceptance of job files and master databases: table counting, header
// fields, the version upgrade, and the age check with its thresholds.

#include "stationdb/validation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/error_trap.h"
#include "core/prompt.h"
#include "stationdb/database.h"
#include "stationdb/day_code.h"
#include "stationdb/schema.h"
#include "support/temp_folder.h"

namespace qarvel::stationdb {
namespace {

namespace fs = std::filesystem;

const std::string kInvalidJob = "Invalid or Damaged Jobfile!";
const std::string kInvalidMaster = "Invalid or Damaged Master Database!";

std::string FileBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

class ValidationTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = qarvel::testing_support::FreshTestFolder();
    }
    void TearDown() override { fs::remove_all(m_dir); }

    // A job as the job builder leaves it, header included.
    fs::path MakeJob() {
        const fs::path job = m_dir / "job.tdb";
        EXPECT_TRUE(CreateJobDatabase(job));
        Database db(job, OpenMode::ReadWrite);
        db.Run("INSERT INTO information (CDate, Comments, Source, TChan, TLat, TLon, TClass, TIClass, OffSetN,"
               " OffSetW, ScanRange) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11)",
               "2024-05-02 10:30:00", "No Comments", "master.fdb", 253, 40.5, 105.25, "C1", "A", 1.5, -2.0, 300);
        return job;
    }

    // A master database with the given version and creation day code. An
    // "old" master has an fm_data without the columns later versions added.
    fs::path MakeMaster(const std::string& version, const std::string& created, bool oldLayout = false) {
        const fs::path fdb = m_dir / "master.fdb";
        EXPECT_TRUE(CreateMasterDatabase(fdb, {created, "100", version, "test"}));
        if (oldLayout) {
            // The layout of its day: without the columns its successors added.
            Database db(fdb, OpenMode::ReadWrite);
            db.Exec("ALTER TABLE fm_data DROP COLUMN facility_id; ALTER TABLE fm_data DROP COLUMN asd_service;"
                    "INSERT INTO fm_data (application_id, lat, lon, station_channel) VALUES (1, 2, 3, 250)");
            if (std::stof(version) < 1.6f) db.Exec("ALTER TABLE fm_data DROP COLUMN vert_erp");
        }
        return fdb;
    }

    fs::path m_dir;
    core::RecordingPrompt m_prompt;
    core::ScopedPrompt m_scopedPrompt{m_prompt};
    core::RecordingErrorSink m_errors;
    core::ScopedErrorSink m_scopedErrors{m_errors};
};

// ------------------------------------------------------------------ jobs

TEST_F(ValidationTest, NewJobIsValidAndGivesItsHeader) {
    const fs::path job = MakeJob();
    const std::string before = FileBytes(job);
    JobHeader h;
    ASSERT_TRUE(ValidJobFile(job, &h));
    EXPECT_TRUE(m_prompt.Texts().empty());
    EXPECT_EQ(h.CDate, "2024-05-02 10:30:00");
    EXPECT_EQ(h.TChan, 253);
    EXPECT_EQ(h.Comments, "No Comments");
    EXPECT_EQ(h.Source, "master.fdb");
    EXPECT_DOUBLE_EQ(h.TLat, 40.5);
    EXPECT_DOUBLE_EQ(h.TLon, 105.25);
    EXPECT_EQ(h.TClass, "C1");
    EXPECT_DOUBLE_EQ(h.OffsetN, 1.5);  // column OffSetN
    EXPECT_DOUBLE_EQ(h.OffsetW, -2.0);
    EXPECT_EQ(h.ScanRange, 300);
    EXPECT_EQ(FileBytes(job), before);  // read-only
}

TEST_F(ValidationTest, SixthTableIsFineMissingPartyIsNot) {
    const fs::path job = MakeJob();
    { Database(job, OpenMode::ReadWrite).Exec("CREATE TABLE user_notes (x int)"); }
    EXPECT_TRUE(ValidJobFile(job));
    { Database(job, OpenMode::ReadWrite).Exec("DROP TABLE party"); }
    JobHeader h;
    h.TChan = -1;
    EXPECT_FALSE(ValidJobFile(job, &h));
    EXPECT_EQ(h.TChan, -1);  // untouched when invalid
    EXPECT_EQ(m_prompt.Texts(), std::vector<std::string>{kInvalidJob});
}

TEST_F(ValidationTest, TableAndFieldNamesIgnoreCase) {
    const fs::path job = m_dir / "upper.tdb";
    {
        // The job layout with every table and column name in capitals.
        Database db(job, OpenMode::Create);
        for (std::string_view create : {kCreateAmData, kCreateTv6Data, kCreateParty, kCreateFmData, kCreateInformation}) {
            std::string upper(create);
            std::transform(upper.begin(), upper.end(), upper.begin(), [](unsigned char c) { return char(std::toupper(c)); });
            db.Exec(upper);
        }
        db.Exec("INSERT INTO INFORMATION VALUES ('d', 'c', 's', 201, 1, 2, 'A', '', 3, 4, 50)");
    }
    JobHeader h;
    ASSERT_TRUE(ValidJobFile(job, &h));
    EXPECT_EQ(h.TChan, 201);
    EXPECT_DOUBLE_EQ(h.OffsetN, 3);
    EXPECT_EQ(h.ScanRange, 50);
}

TEST_F(ValidationTest, MissingFieldOrEmptyHeaderIsInvalid) {
    const fs::path job = m_dir / "job.tdb";
    ASSERT_TRUE(CreateJobDatabase(job));
    EXPECT_FALSE(ValidJobFile(job));  // information has no record
    {
        Database db(job, OpenMode::ReadWrite);
        db.Exec("DROP TABLE information; CREATE TABLE information (CDate timestamp, TChan int);"
                " INSERT INTO information VALUES ('d', 250)");
    }
    EXPECT_FALSE(ValidJobFile(job));
    EXPECT_EQ(m_prompt.Texts(), (std::vector<std::string>{kInvalidJob, kInvalidJob}));
}

TEST_F(ValidationTest, MissingOrDamagedFilesShowOnlyTheCheckMessage) {
    EXPECT_FALSE(ValidJobFile(m_dir / "absent.tdb"));
    EXPECT_FALSE(fs::exists(m_dir / "absent.tdb"));
    EXPECT_FALSE(ValidFMDFile(m_dir / "absent.fdb"));
    EXPECT_FALSE(fs::exists(m_dir / "absent.fdb"));

    { std::ofstream(m_dir / "text.tdb") << "this is not a database, just some text long enough to look like one"; }
    EXPECT_FALSE(ValidJobFile(m_dir / "text.tdb"));
    EXPECT_FALSE(ValidFMDFile(m_dir / "text.tdb"));
    { std::ofstream(m_dir / "empty.tdb"); }
    EXPECT_FALSE(ValidJobFile(m_dir / "empty.tdb"));
    EXPECT_FALSE(ValidJobFile(m_dir));  // a folder

    EXPECT_EQ(m_prompt.Texts(), (std::vector<std::string>{kInvalidJob, kInvalidMaster, kInvalidJob, kInvalidMaster,
                                                          kInvalidJob, kInvalidJob}));
    EXPECT_TRUE(m_errors.Reports().empty());  // the engine's message goes nowhere near the user
}

// ------------------------------------------------------- master: upgrade

// A master in the layout of its version's day: below 1.9 the missing
// columns are added; a 1.9 or later master without them is damaged.
struct UpgradeCase {
    const char* name;
    const char* version;
    bool upgraded;
};

class MasterUpgradeTest : public ValidationTest, public ::testing::WithParamInterface<UpgradeCase> {};

TEST_P(MasterUpgradeTest, AddsTheColumnsTheVersionLacks) {
    const UpgradeCase& c = GetParam();
    const fs::path fdb = MakeMaster(c.version, "24100", /*oldLayout=*/true);
    MasterInfo info;
    ASSERT_EQ(ValidFMDFile(fdb, {"NoOp", 0, {}}, &info), c.upgraded);
    if (!c.upgraded) {
        ASSERT_EQ(m_errors.Reports().size(), 1u);
        EXPECT_NE(m_errors.Reports()[0].description.find("fm_data: column asd_service is missing"), std::string::npos);
        return;
    }
    Database db(fdb, OpenMode::ReadOnly);
    for (const char* column : {"facility_id", "asd_service", "vert_erp"}) EXPECT_TRUE(db.HasColumn("fm_data", column));
    Statement row = db.Prepare("SELECT * FROM fm_data");
    ASSERT_TRUE(row.Step());  // the records stay
    EXPECT_EQ(row.GetInt("station_channel"), 250);
    EXPECT_TRUE(row.IsNull("facility_id"));
}

INSTANTIATE_TEST_SUITE_P(Versions, MasterUpgradeTest,
                         ::testing::Values(UpgradeCase{"V1_5", "1.5", true}, UpgradeCase{"V1_6", "1.6", true},
                                           UpgradeCase{"V1_8", " 1.8 ", true}, UpgradeCase{"V1_9", "1.9", false},
                                           UpgradeCase{"V2_0", "2.0", false}),
                         [](const ::testing::TestParamInfo<UpgradeCase>& p) { return std::string(p.param.name); });

// Damage the program would otherwise meet as an empty grid or a wrong
// count of open channels: refused at the door with its reason.
struct DamageCase {
    const char* name;
    const char* sql;
    const char* reason;
};

class JobDamageTest : public ValidationTest, public ::testing::WithParamInterface<DamageCase> {};

TEST_P(JobDamageTest, IsRefusedWithItsReason) {
    const fs::path job = MakeJob();
    Database(job, OpenMode::ReadWrite).Exec(GetParam().sql);
    EXPECT_FALSE(ValidJobFile(job));
    ASSERT_EQ(m_errors.Reports().size(), 1u);
    EXPECT_NE(m_errors.Reports()[0].description.find(GetParam().reason), std::string::npos)
        << m_errors.Reports()[0].description;
}

INSTANTIATE_TEST_SUITE_P(
    Damage, JobDamageTest,
    ::testing::Values(DamageCase{"MissingColumn", "ALTER TABLE fm_data DROP COLUMN station_class", "station_class is missing"},
                      DamageCase{"TextForNumber", "ALTER TABLE am_data DROP COLUMN lat; ALTER TABLE am_data ADD COLUMN lat text",
                                 "lat is declared text, expected int"},
                      DamageCase{"ChannelOutOfRange", "UPDATE information SET TChan = 999", "TChan 999"},
                      DamageCase{"UnknownClass", "UPDATE information SET TClass = 'ZZ'", "TClass 'ZZ'"},
                      DamageCase{"LatitudeBeyondPole", "UPDATE information SET TLat = 91", "TLat"},
                      DamageCase{"HugeStationPosition", "INSERT INTO fm_data (application_id, lat, lon) VALUES (7, 1e308, 0)",
                                 "application_id 7"}),
    [](const ::testing::TestParamInfo<DamageCase>& p) { return std::string(p.param.name); });

TEST_F(ValidationTest, CurrentMasterIsNotWrittenAndGivesItsInfo) {
    const fs::path fdb = MakeMaster("1.9", "24100");
    const std::string before = FileBytes(fdb);
    MasterInfo info;
    ASSERT_TRUE(ValidFMDFile(fdb, {"", DayCode(2024, 100), {}}, &info));
    EXPECT_EQ(info.creation_date, "24100");
    EXPECT_EQ(info.creation_size, "100");
    EXPECT_EQ(info.version, 1.9f);
    EXPECT_EQ(FileBytes(fdb), before);
}

TEST_F(ValidationTest, UnreadableVersionOrDateIsInvalid) {
    MakeMaster("new", "24100");
    EXPECT_FALSE(ValidFMDFile(m_dir / "master.fdb", {"NoOp", 0, {}}));
    fs::remove(m_dir / "master.fdb");
    MakeMaster("1.9", "soon");
    EXPECT_FALSE(ValidFMDFile(m_dir / "master.fdb", {"", DayCode(2024, 100), {}}));
    EXPECT_EQ(m_prompt.Texts(), (std::vector<std::string>{kInvalidMaster, kInvalidMaster}));
}

TEST_F(ValidationTest, MasterNeedsTheFiveTables) {
    const fs::path fdb = MakeMaster("1.9", "24100");
    { Database(fdb, OpenMode::ReadWrite).Exec("DROP TABLE tv6_data"); }
    EXPECT_FALSE(ValidFMDFile(fdb, {"NoOp", 0, {}}));
    EXPECT_EQ(m_prompt.Texts(), std::vector<std::string>{kInvalidMaster});
}

// ------------------------------------------------------ master: age check

struct AgeCase {
    const char* name;
    int created;          // day code of the database
    int today;            // today's day code
    const char* pending;  // pending operation
    bool valid;
    const char* warning;  // expected message, "" for none
};

class MasterAgeTest : public ValidationTest, public ::testing::WithParamInterface<AgeCase> {};

TEST_P(MasterAgeTest, ThresholdsAndMessages) {
    const AgeCase& c = GetParam();
    const fs::path fdb = MakeMaster("1.9", DayCodeText(c.created));
    EXPECT_EQ(ValidFMDFile(fdb, {c.pending, c.today, {}}), c.valid);
    std::vector<std::string> expected;
    if (!c.valid) expected.push_back(kInvalidMaster);
    if (*c.warning) expected.push_back(c.warning);
    EXPECT_EQ(m_prompt.Texts(), expected);
    if (*c.warning) {
        EXPECT_EQ(m_prompt.Messages().back().icon, core::PromptIcon::Information);
    }
}

const char* const kFourMonths = "This database is more than 4 months old!\nContact Velmont for a new database.";

INSTANTIATE_TEST_SUITE_P(
    Boundaries, MasterAgeTest,
    ::testing::Values(
        AgeCase{"SameDay", 24200, 24200, "", true, ""},
        AgeCase{"Days96IsThreeMonths", 24104, 24200, "", true, ""},
        AgeCase{"Days123IsThreeMonths", 24077, 24200, "", true, ""},
        AgeCase{"Days124IsFourMonths", 24076, 24200, "", true, kFourMonths},
        AgeCase{"TwoDaysAheadAccepted", 24202, 24200, "", true, ""},
        AgeCase{"ThreeDaysAheadRefused", 24203, 24200, "", false, ""},
        AgeCase{"AcrossNewYear", 23300, 24030, "", true, ""},  // 95 days
        AgeCase{"LastYearBehind", 23200, 24200, "", true,
                "This database is more than 11 months old!\nContact Velmont for a new database."},
        // Today's year part below the database's gains 10: 9300 -> 100 is 165 days.
        AgeCase{"TenYearWrap", 9300, 100, "", true,
                "This database is more than 5 months old!\nContact Velmont for a new database."},
        AgeCase{"NoOpSkipsWarning", 23200, 24200, "NoOp", true, ""},
        AgeCase{"NoOpSkipsRefusal", 24300, 24200, "NoOp", true, ""}),
    [](const ::testing::TestParamInfo<AgeCase>& p) { return std::string(p.param.name); });

TEST(DayCodeTest, YearModuloHundredAndDayOfYear) {
    EXPECT_EQ(DayCode(2024, 123), 24123);
    EXPECT_EQ(DayCode(2005, 10), 5010);
    EXPECT_EQ(DayCode(1999, 365), 99365);
    EXPECT_EQ(DayCodeText(5010), "05010");
    EXPECT_EQ(DayCodeText(24123), "24123");
    EXPECT_EQ(DayCodeDays(24123), 123 + 24 * 365);
    const int today = TodayDayCode();
    EXPECT_GE(today % 1000, 1);
    EXPECT_LE(today % 1000, 366);
    EXPECT_FALSE(MasterDatabaseAge(today, TodayDayCode()).dated_ahead);
}

}  // namespace
}  // namespace qarvel::stationdb
