#include "importers/import_lms.h"

#include "core/error_trap.h"
#include "core/prompt.h"
#include "support/db_test_support.h"
#include "stationdb/database.h"
#include "stationdb/validation.h"

#include <gtest/gtest.h>

namespace qarvel::importers {
namespace {

using namespace qarvel::testing_support;

// The fixture folder holds a small LMS dump: FM, low-power, translator,
// AM, inactive and Canadian facilities, each file with columns of its own
// order and some the importer does not know; quoted fields with a line
// break, quotes and "|" in them; a location file without "|^|" terminators;
// Latin-1 text; a location with a bad hemisphere and a short row.
class ImportLmsTest : public TempFolderTest {
protected:
    fs::path CopyOfFixture() {
        const fs::path dump = Root() / "dump";
        fs::copy(FixtureDir() / "lms", dump);
        return dump;
    }
    bool Import(const fs::path& folder) {
        ImportOptions options;
        options.onIssue = [this](const ImportIssue& issue) { m_issues.push_back(issue); };
        return ImportLms(folder, ImportTarget::Unpacked(Out()), options, &m_summary);
    }
    fs::path Out() const { return Root() / "out.fdb"; }

    core::RecordingErrorSink m_sink;
    core::ScopedErrorSink m_scopedSink{m_sink};
    ImportSummary m_summary;
    std::vector<ImportIssue> m_issues;
};

TEST_F(ImportLmsTest, ReadsTheLicenceOfEachFmFacilityByColumnName) {
    ASSERT_TRUE(Import(FixtureDir() / "lms")) << m_summary.error;
    stationdb::Database db(Out(), stationdb::OpenMode::ReadOnly);
    stationdb::Statement st = db.Prepare(
        "SELECT fm_data.*, party.party_name FROM fm_data, party"
        " WHERE party.party_id = fm_data.party_id ORDER BY application_id");
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetInt("application_id"), 1);
    EXPECT_EQ(st.GetText("fac_callsign"), "KLMS");
    EXPECT_EQ(st.GetInt("facility_id"), 1001);
    EXPECT_EQ(st.GetText("asd_service"), "FM");
    EXPECT_EQ(st.GetText("fm_dom_status"), "LICEN");
    EXPECT_EQ(st.GetText("station_class"), "C3");  // of the licence, not the older application
    EXPECT_EQ(st.GetInt("station_channel"), 201);
    EXPECT_EQ(st.GetText("comm_city"), "SPRINGFIELD");
    EXPECT_EQ(st.GetInt("lat"), 535800);   // N 37 12 30, the active location
    EXPECT_EQ(st.GetInt("lon"), 1343490);  // W 93 17 52.5
    EXPECT_DOUBLE_EQ(st.GetDouble("rcamsl_horiz_mtr"), 450.5);
    EXPECT_DOUBLE_EQ(st.GetDouble("haat_horiz_rc_mtr"), 180.0);
    EXPECT_DOUBLE_EQ(st.GetDouble("hag_horiz_rc_mtr"), 60.0);
    EXPECT_EQ(st.GetText("da_ind"), "N");
    EXPECT_DOUBLE_EQ(st.GetDouble("horiz_erp"), 25.0);
    EXPECT_DOUBLE_EQ(st.GetDouble("max_horiz_erp"), 25.0);
    EXPECT_EQ(st.GetText("file_prefix"), "BLH");
    EXPECT_EQ(st.GetText("app_arn"), "20120101ABC");
    EXPECT_EQ(st.GetText("party_name"), "OZARK \"GOSPEL\" RADIO, INC.");  // quoted, over two lines

    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetText("fac_callsign"), "WLPF-LP");
    EXPECT_EQ(st.GetText("asd_service"), "FL");
    EXPECT_EQ(st.GetText("station_class"), "L1");  // none filed: the low-power class
    EXPECT_EQ(st.GetInt("lat"), 39 * 14400 + 57 * 240 + 165);
    EXPECT_TRUE(st.IsNull("horiz_erp"));

    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetText("fac_callsign"), "CKAA-FM");
    EXPECT_EQ(st.GetText("border_code"), "A");
    EXPECT_EQ(st.GetText("intl_class"), "B");
    EXPECT_EQ(st.GetText("party_name"), "SOCI\xC3\x89T\xC3\x89 RADIO");
    EXPECT_DOUBLE_EQ(st.GetDouble("horiz_erp"), 3.5);  // the power ERP when no horizontal one
    EXPECT_DOUBLE_EQ(st.GetDouble("vert_erp"), 3.0);
    EXPECT_EQ(st.GetText("da_ind"), "Y");
    EXPECT_EQ(st.GetInt("antenna_id"), 55501);
    EXPECT_DOUBLE_EQ(st.GetDouble("ant_rotation"), 30.0);
    EXPECT_FALSE(st.Step());

    core::RecordingPrompt prompt;
    core::ScopedPrompt scopedPrompt(prompt);
    EXPECT_TRUE(stationdb::ValidFMDFile(Out(), {"NoOp", 0, {}}));
}

TEST_F(ImportLmsTest, CountsAndReportsWhatItLeftOut) {
    ASSERT_TRUE(Import(FixtureDir() / "lms")) << m_summary.error;
    EXPECT_EQ(m_summary.read, 7u);  // FM-band facilities; the AM one is not counted
    EXPECT_EQ(m_summary.kept, 3u);
    const std::map<std::string, std::uint64_t> skipped = {{"inactive facility", 1},
                                                          {"no licence application", 1},
                                                          {"no transmitter location", 2},
                                                          {"unreadable record", 2}};
    EXPECT_EQ(m_summary.skipped, skipped);
    ASSERT_EQ(m_issues.size(), 2u);
    EXPECT_EQ(m_issues[0].file, "app_location.dat");
    EXPECT_EQ(m_issues[0].line, 6u);
    EXPECT_EQ(m_issues[0].problem, "the coordinates are not degrees, minutes, seconds and hemisphere");
    EXPECT_EQ(m_issues[1].line, 7u);
    EXPECT_EQ(m_issues[1].problem, "has 5 fields, the header 11");
    EXPECT_EQ(m_summary.parties, 3u);  // the licensees of the kept stations
}

TEST_F(ImportLmsTest, OptionalFilesMayBeAbsent) {
    const fs::path dump = CopyOfFixture();
    fs::remove(dump / "app_antenna.dat");
    fs::remove(dump / "app_antenna_frequency.dat");
    fs::remove(dump / "application.dat");
    ASSERT_TRUE(Import(dump)) << m_summary.error;
    EXPECT_EQ(m_summary.kept, 3u);
    EXPECT_EQ(m_summary.notes.size(), 3u);
    stationdb::Database db(Out(), stationdb::OpenMode::ReadOnly);
    EXPECT_EQ(QueryInt(db, "SELECT COUNT(*) FROM fm_data WHERE horiz_erp IS NULL AND app_arn IS NULL"), 3);
}

TEST_F(ImportLmsTest, AMissingColumnFailsAndWritesNothing) {
    const fs::path dump = CopyOfFixture();
    std::string text = ReadAll(dump / "facility.dat");
    text.replace(text.find("license_filing_id"), 17, "licence_id");
    WriteAll(dump / "facility.dat", text);
    EXPECT_FALSE(Import(dump));
    EXPECT_EQ(m_summary.error, "facility.dat: no column \"license_filing_id\" in the header (looked for license_filing_id)");
    EXPECT_EQ(Listing(Root()), std::vector<std::string>{"dump"});
}

TEST_F(ImportLmsTest, AQuoteLeftOpenFailsAndWritesNothing) {
    const fs::path dump = CopyOfFixture();
    std::string text = ReadAll(dump / "app_antenna.dat");
    WriteAll(dump / "app_antenna.dat", text + "loc-1002|ant-1002|ND|1|2|3|||\"OPEN\r\n");
    EXPECT_FALSE(Import(dump));
    EXPECT_NE(m_summary.error.find("app_antenna.dat:4: the file ends inside a quoted field"), std::string::npos)
        << m_summary.error;
    EXPECT_EQ(Listing(Root()), std::vector<std::string>{"dump"});
}

}  // namespace
}  // namespace qarvel::importers
