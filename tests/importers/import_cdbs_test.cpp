#include "importers/import_cdbs.h"

#include "core/error_trap.h"
#include "core/prompt.h"
#include "support/db_test_support.h"
#include "stationdb/database.h"
#include "stationdb/validation.h"

#include <gtest/gtest.h>

namespace qarvel::importers {
namespace {

using namespace qarvel::testing_support;

// The fixture folder holds a small CDBS dump: current and archived FM
// engineering records (one Canadian, one translator with Latin-1 names, one
// whose record runs over two lines, two unreadable ones), their
// applications, facilities, owners and dates, two antenna systems of one AM
// station and a channel 6 television station.
class ImportCdbsTest : public TempFolderTest {
protected:
    fs::path CopyOfFixture() {
        const fs::path dump = Root() / "dump";
        fs::copy(FixtureDir() / "cdbs", dump);
        return dump;
    }
    bool Import(const fs::path& folder) {
        ImportOptions options;
        options.onIssue = [this](const ImportIssue& issue) { m_issues.push_back(issue); };
        return ImportCdbs(folder, ImportTarget::Unpacked(Out()), options, &m_summary);
    }
    fs::path Out() const { return Root() / "out.fdb"; }

    core::RecordingErrorSink m_sink;
    core::ScopedErrorSink m_scopedSink{m_sink};
    ImportSummary m_summary;
    std::vector<ImportIssue> m_issues;
};

TEST_F(ImportCdbsTest, JoinsTheFilesIntoCurrentFmRecords) {
    ASSERT_TRUE(Import(FixtureDir() / "cdbs")) << m_summary.error;
    stationdb::Database db(Out(), stationdb::OpenMode::ReadOnly);
    stationdb::Statement st = db.Prepare(
        "SELECT fm_data.*, party.party_name, party.party_phone FROM fm_data, party"
        " WHERE party.party_id = fm_data.party_id AND application_id = 1001");
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetText("fac_callsign"), "WAAA");
    EXPECT_EQ(st.GetText("comm_city"), "NEW YORK");
    EXPECT_EQ(st.GetText("comm_state"), "NY");
    EXPECT_EQ(st.GetText("app_arn"), "20150601ABC");
    EXPECT_EQ(st.GetText("file_prefix"), "BLED");
    EXPECT_EQ(st.GetText("app_service"), "FM");
    EXPECT_EQ(st.GetText("asd_service"), "FM");
    EXPECT_EQ(st.GetText("fm_dom_status"), "LIC");
    EXPECT_EQ(st.GetText("station_class"), "A");
    EXPECT_EQ(st.GetInt("station_channel"), 201);
    EXPECT_EQ(st.GetInt("facility_id"), 501);
    EXPECT_EQ(st.GetInt("lat"), 586776);   // N 40 44 54
    EXPECT_EQ(st.GetInt("lon"), 1065396);  // W 73 59 9
    EXPECT_DOUBLE_EQ(st.GetDouble("haat_horiz_rc_mtr"), 150.0);
    EXPECT_DOUBLE_EQ(st.GetDouble("horiz_erp"), 6.0);
    EXPECT_DOUBLE_EQ(st.GetDouble("max_horiz_erp"), 6.0);
    EXPECT_DOUBLE_EQ(st.GetDouble("rcamsl_horiz_mtr"), 200.0);
    EXPECT_DOUBLE_EQ(st.GetDouble("hag_horiz_rc_mtr"), 50.0);
    EXPECT_DOUBLE_EQ(st.GetDouble("elev_amsl"), 150.5);
    EXPECT_EQ(st.GetInt("asrn"), 1000123);
    EXPECT_EQ(st.GetText("cutoff_date"), "1999-05-11");
    EXPECT_EQ(st.GetText("cp_exp_date"), "2001-01-31");
    EXPECT_EQ(st.GetText("da_ind"), "N");
    EXPECT_EQ(st.GetText("bt_ind"), "N");
    EXPECT_TRUE(st.IsNull("border_code"));
    EXPECT_TRUE(st.IsNull("rule_73_215_req_ind"));
    // The applicant, not the counsel listed first nor the facility's licensee.
    EXPECT_EQ(st.GetText("party_name"), "EMPIRE BROADCASTING, INC.");
    EXPECT_EQ(st.GetText("party_phone"), "2125550100");

    stationdb::Statement ca = db.Prepare("SELECT * FROM fm_data WHERE application_id = 1002");
    ASSERT_TRUE(ca.Step());
    EXPECT_EQ(ca.GetText("fac_callsign"), "CBXX-FM");
    EXPECT_EQ(ca.GetText("border_code"), "A");
    EXPECT_EQ(ca.GetText("intl_class"), "C1");
    EXPECT_EQ(ca.GetText("intl_status"), "LIC");
    EXPECT_EQ(ca.GetText("da_ind"), "Y");
    EXPECT_EQ(ca.GetText("bt_ind"), "Y");
    EXPECT_EQ(ca.GetInt("antenna_id"), 777);
    EXPECT_DOUBLE_EQ(ca.GetDouble("ant_rotation"), 20.0);
    EXPECT_EQ(ca.GetInt("party_id"), stationdb::kNoOwnerPartyId);

    stationdb::Statement fx = db.Prepare(
        "SELECT fm_data.*, party.party_name FROM fm_data, party"
        " WHERE party.party_id = fm_data.party_id AND application_id = 1003");
    ASSERT_TRUE(fx.Step());
    EXPECT_EQ(fx.GetText("comm_city"), "ESPA\xC3\x91OLA");
    EXPECT_EQ(fx.GetText("party_name"), "RADIO NUEVA ESPA\xC3\x91" "A");
    EXPECT_EQ(fx.GetText("asd_service"), "FX");
    EXPECT_EQ(fx.GetText("fm_dom_status"), "CP");
    EXPECT_EQ(fx.GetText("docket_num"), "MB 12-34");
    EXPECT_EQ(fx.GetInt("lat"), 518402);   // N 36 0 0.50
    EXPECT_EQ(fx.GetInt("lon"), 1527125);  // W 106 3 1.25
    EXPECT_TRUE(fx.IsNull("cutoff_date"));
    EXPECT_EQ(fx.GetText("cp_exp_date"), "2017-12-31");

    // No status on the engineering record: the facility's; owner through the
    // facility, named by its legal name.
    stationdb::Statement lake = db.Prepare(
        "SELECT fm_data.fm_dom_status, party.party_name FROM fm_data, party"
        " WHERE party.party_id = fm_data.party_id AND application_id = 1005");
    ASSERT_TRUE(lake.Step());
    EXPECT_EQ(lake.GetText(0), "LICEN");
    EXPECT_EQ(lake.GetText(1), "LAKESIDE RADIO LLC");

    stationdb::Statement am = db.Prepare("SELECT * FROM am_data");
    ASSERT_TRUE(am.Step());
    EXPECT_EQ(am.GetInt("application_id"), 2001);
    EXPECT_EQ(am.GetText("fac_callsign"), "WBZZ");
    EXPECT_EQ(am.GetText("ant_mode"), "DA2");
    EXPECT_EQ(am.GetInt("lat"), 608808);
    EXPECT_EQ(am.GetInt("lon"), 1026240);
    EXPECT_FALSE(am.Step());
    stationdb::Statement tv = db.Prepare("SELECT * FROM tv6_data");
    ASSERT_TRUE(tv.Step());
    EXPECT_EQ(tv.GetText("fac_callsign"), "WRGB");
    EXPECT_EQ(tv.GetText("fac_zone"), "1");
    EXPECT_EQ(tv.GetText("comm_city"), "ALBANY");
    EXPECT_FALSE(tv.Step());
}

TEST_F(ImportCdbsTest, CountsAndReportsWhatItLeftOut) {
    ASSERT_TRUE(Import(FixtureDir() / "cdbs")) << m_summary.error;
    EXPECT_EQ(m_summary.read, 8u);
    EXPECT_EQ(m_summary.kept, 4u);
    EXPECT_EQ(m_summary.am, 1u);
    EXPECT_EQ(m_summary.tv6, 1u);
    EXPECT_EQ(m_summary.parties, 4u);  // three owners and the unknown owner
    const std::map<std::string, std::uint64_t> skipped = {{"archived engineering record", 1},
                                                          {"not an FM channel", 1},
                                                          {"second antenna system of an AM station", 1},
                                                          {"unreadable record", 2}};
    EXPECT_EQ(m_summary.skipped, skipped);
    ASSERT_EQ(m_issues.size(), 2u);
    EXPECT_EQ(m_issues[0].file, "fm_eng_data.dat");
    EXPECT_EQ(m_issues[0].line, 6u);  // after the record that spans lines 4 and 5
    EXPECT_EQ(m_issues[0].problem, "has 10 fields; fm_eng_data.dat records have at least 63");
    EXPECT_EQ(m_issues[1].line, 7u);
    EXPECT_EQ(m_summary.byCountry.at("CA"), 1u);
    EXPECT_TRUE(m_summary.notes.empty());

    core::RecordingPrompt prompt;
    core::ScopedPrompt scopedPrompt(prompt);
    EXPECT_TRUE(stationdb::ValidFMDFile(Out(), {"NoOp", 0, {}}));
}

TEST_F(ImportCdbsTest, AMissingOptionalFileIsNoted) {
    const fs::path dump = CopyOfFixture();
    fs::remove(dump / "am_ant_sys.dat");
    ASSERT_TRUE(Import(dump)) << m_summary.error;
    EXPECT_EQ(m_summary.am, 0u);
    ASSERT_EQ(m_summary.notes.size(), 1u);
    EXPECT_EQ(m_summary.notes[0], "no am_ant_sys.dat: no AM stations");
}

TEST_F(ImportCdbsTest, AMissingRequiredFileFailsAndWritesNothing) {
    const fs::path dump = CopyOfFixture();
    fs::remove(dump / "facility.dat");
    EXPECT_FALSE(Import(dump));
    EXPECT_NE(m_summary.error.find("no facility.dat"), std::string::npos) << m_summary.error;
    EXPECT_FALSE(fs::exists(Out()));
    EXPECT_EQ(Listing(Root()), std::vector<std::string>{"dump"});
}

TEST_F(ImportCdbsTest, ACutOffDumpFailsAndWritesNothing) {
    const fs::path dump = CopyOfFixture();
    std::string text = ReadAll(dump / "application.dat");
    WriteAll(dump / "application.dat", text.substr(0, text.size() - 40));
    EXPECT_FALSE(Import(dump));
    EXPECT_NE(m_summary.error.find("application.dat:"), std::string::npos) << m_summary.error;
    EXPECT_NE(m_summary.error.find("cut off"), std::string::npos) << m_summary.error;
    EXPECT_EQ(Listing(Root()), std::vector<std::string>{"dump"});
}

TEST_F(ImportCdbsTest, AFileWithoutRecordTerminatorsIsRefused) {
    const fs::path dump = CopyOfFixture();
    std::string lines;
    for (int i = 0; i < 100; ++i) lines += "1001|x|y\r\n";
    WriteAll(dump / "fm_eng_data.dat", lines);
    EXPECT_FALSE(Import(dump));
    EXPECT_NE(m_summary.error.find("without its |^| terminator"), std::string::npos) << m_summary.error;
    EXPECT_FALSE(fs::exists(Out()));
}

}  // namespace
}  // namespace qarvel::importers
