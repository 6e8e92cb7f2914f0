#include "importers/import_fmquery.h"

#include "core/error_trap.h"
#include "core/prompt.h"
#include "support/db_test_support.h"
#include "stationdb/database.h"
#include "stationdb/master_package.h"
#include "stationdb/validation.h"

#include <gtest/gtest.h>

#include <map>

namespace qarvel::importers {
namespace {

using namespace qarvel::testing_support;

class ImportFmQueryTest : public TempFolderTest {
protected:
    bool Import(const fs::path& file, const ImportTarget& target) {
        ImportOptions options;
        options.onIssue = [this](const ImportIssue& issue) { m_issues.push_back(issue); };
        return ImportFmQuery(file, target, options, &m_summary);
    }
    bool ImportFixture() { return Import(FixtureDir() / "fmquery_small.txt", ImportTarget::Unpacked(Out())); }
    fs::path Out() const { return Root() / "out.fdb"; }

    core::RecordingErrorSink m_sink;
    core::ScopedErrorSink m_scopedSink{m_sink};
    ImportSummary m_summary;
    std::vector<ImportIssue> m_issues;
};

TEST_F(ImportFmQueryTest, FixtureRecordsAreReadFieldByField) {
    ASSERT_TRUE(ImportFixture()) << m_summary.error;
    stationdb::Database db(Out(), stationdb::OpenMode::ReadOnly);
    stationdb::Statement st = db.Prepare(
        "SELECT fm_data.*, party.party_name FROM fm_data, party"
        " WHERE party.party_id = fm_data.party_id AND application_id = 1679347");
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetText("fac_callsign"), "WQRS");
    EXPECT_EQ(st.GetText("asd_service"), "FM");
    EXPECT_EQ(st.GetText("app_service"), "FM");
    EXPECT_EQ(st.GetInt("station_channel"), 201);
    EXPECT_EQ(st.GetText("da_ind"), "Y");
    EXPECT_EQ(st.GetText("station_class"), "B1");
    EXPECT_EQ(st.GetText("fm_dom_status"), "CP");
    EXPECT_EQ(st.GetText("comm_city"), "RIVER CITY");
    EXPECT_EQ(st.GetText("comm_state"), "PA");
    EXPECT_EQ(st.GetText("file_prefix"), "BPED");
    EXPECT_EQ(st.GetText("app_arn"), "20150601AFB");
    EXPECT_DOUBLE_EQ(st.GetDouble("horiz_erp"), 3.5);
    EXPECT_DOUBLE_EQ(st.GetDouble("vert_erp"), 2.9);
    EXPECT_DOUBLE_EQ(st.GetDouble("haat_horiz_rc_mtr"), 116.1);
    EXPECT_EQ(st.GetInt("facility_id"), 94050);
    EXPECT_EQ(st.GetInt("lat"), 577570);   // N 40 6 32.50
    EXPECT_EQ(st.GetInt("lon"), 1110280);  // W 77 6 10.00
    EXPECT_DOUBLE_EQ(st.GetDouble("rcamsl_horiz_mtr"), 122.6);
    EXPECT_EQ(st.GetInt("antenna_id"), 121527);
    EXPECT_DOUBLE_EQ(st.GetDouble("ant_rotation"), 15);
    EXPECT_EQ(st.GetInt("asrn"), 1007057);
    EXPECT_DOUBLE_EQ(st.GetDouble("hag_horiz_rc_mtr"), 115);
    EXPECT_TRUE(st.IsNull("border_code"));
    EXPECT_TRUE(st.IsNull("cutoff_date"));
    EXPECT_EQ(st.GetText("party_name"), "RADIO SE\xC3\x91" "AL EDUCATIVA, INC.");  // from Latin-1

    // South latitude and east longitude count negative in stored units.
    stationdb::Statement guam = db.Prepare("SELECT lat, lon, party_id FROM fm_data WHERE fac_callsign = 'KGUM'");
    ASSERT_TRUE(guam.Step());
    EXPECT_EQ(guam.GetInt(0), -194228);
    EXPECT_EQ(guam.GetInt(1), -2085572);
    EXPECT_EQ(guam.GetInt(2), QueryInt(db, "SELECT party_id FROM fm_data WHERE fac_callsign = 'WQRS'"));

    // The Canadian vacant allotment: no call sign, no owner, no facility.
    stationdb::Statement ca = db.Prepare("SELECT * FROM fm_data WHERE application_id = 537140");
    ASSERT_TRUE(ca.Step());
    EXPECT_TRUE(ca.IsNull("fac_callsign"));
    EXPECT_TRUE(ca.IsNull("facility_id"));  // -1 in the file
    EXPECT_TRUE(ca.IsNull("app_arn"));
    EXPECT_EQ(ca.GetText("asd_service"), "FA");
    EXPECT_EQ(ca.GetText("border_code"), "A");
    EXPECT_EQ(ca.GetText("intl_class"), "C1");
    EXPECT_EQ(ca.GetText("intl_status"), "VAC");
    EXPECT_EQ(ca.GetInt("party_id"), stationdb::kNoOwnerPartyId);
    EXPECT_EQ(QueryInt(db, "SELECT COUNT(*) FROM fm_data, party WHERE party.party_id = fm_data.party_id"), 6);
    EXPECT_EQ(QueryInt(db, "SELECT COUNT(*) FROM party"), 3);  // two licensees and the unknown owner
}

TEST_F(ImportFmQueryTest, FixtureBadLinesAreReportedAndOtherChannelsSkipped) {
    ASSERT_TRUE(ImportFixture()) << m_summary.error;
    EXPECT_EQ(m_summary.read, 9u);
    EXPECT_EQ(m_summary.kept, 6u);
    EXPECT_EQ(m_summary.skipped.at("not an FM channel"), 1u);
    EXPECT_EQ(m_summary.skipped.at("unreadable record"), 2u);
    ASSERT_EQ(m_issues.size(), 2u);
    EXPECT_EQ(m_issues[0].file, "fmquery_small.txt");
    EXPECT_EQ(m_issues[0].line, 6u);
    EXPECT_EQ(m_issues[0].problem, "the line has 52 characters; an FM Query record has at least 390");
    EXPECT_EQ(m_issues[1].line, 7u);
    EXPECT_EQ(m_issues[1].problem, "horizontal ERP 'x.5' is not a number");
    EXPECT_EQ(m_summary.byCountry.at("CA"), 1u);
    EXPECT_EQ(m_summary.byCountry.at("MX"), 1u);
}

TEST_F(ImportFmQueryTest, CutOffFileFailsAndWritesNothing) {
    std::string text = ReadAll(FixtureDir() / "fmquery_small.txt");
    text.resize(text.size() - 100);  // the last line loses its end and its line break
    WriteAll(Root() / "cut.txt", text);
    EXPECT_FALSE(Import(Root() / "cut.txt", ImportTarget::Packed(Root() / "out.fmd")));
    EXPECT_NE(m_summary.error.find("cut.txt:9:"), std::string::npos) << m_summary.error;
    EXPECT_NE(m_summary.error.find("cut off"), std::string::npos) << m_summary.error;
    EXPECT_EQ(Listing(Root()), std::vector<std::string>{"cut.txt"});
}

TEST_F(ImportFmQueryTest, AFileOfAnotherKindIsRefused) {
    WriteAll(Root() / "other.txt", "callsign,channel\nKAAA,201\nKBBB,202\n");
    EXPECT_FALSE(Import(Root() / "other.txt", ImportTarget::Packed(Root() / "out.fmd")));
    EXPECT_NE(m_summary.error.find("3 of 3 records are unreadable"), std::string::npos) << m_summary.error;
    EXPECT_EQ(Listing(Root()), std::vector<std::string>{"other.txt"});
}

class ImportFmQueryRealTest : public ImportFmQueryTest {
protected:
    void SetUp() override {
        ImportFmQueryTest::SetUp();
        const fs::path file = SharedData() / "fmquery-channels-200-207.txt";
        if (!fs::exists(file)) GTEST_SKIP() << "real station data not found at " << file;
        ASSERT_TRUE(Import(file, ImportTarget::Packed(Root() / "fmq.fmd"))) << m_summary.error;
        fs::create_directories(Root() / "scratch");
        m_fdb = stationdb::UnpackMasterDatabase(Root() / "fmq.fmd", Root() / "scratch");
        ASSERT_FALSE(m_fdb.empty());
    }
    fs::path m_fdb;
};

TEST_F(ImportFmQueryRealTest, HoldsEveryRecordByServiceAndCountry) {
    EXPECT_EQ(m_summary.read, 2497u);
    EXPECT_EQ(m_summary.kept, 2497u);
    EXPECT_EQ(m_summary.issueCount, 0u);
    const std::map<std::string, std::uint64_t> services = {{"FA", 176}, {"FB", 20}, {"FL", 27}, {"FM", 1557},
                                                           {"FR", 68},  {"FS", 90}, {"FX", 559}};
    EXPECT_EQ(m_summary.byService, services);
    const std::map<std::string, std::uint64_t> countries = {{"CA", 206}, {"MX", 59}, {"US", 2231}, {"other", 1}};
    EXPECT_EQ(m_summary.byCountry, countries);
    EXPECT_EQ(m_summary.parties, 977u);  // 976 licensee names and the unknown owner

    core::RecordingPrompt prompt;
    core::ScopedPrompt scopedPrompt(prompt);
    EXPECT_TRUE(stationdb::ValidFMDFile(m_fdb, {"NoOp", 0, {}}));
    stationdb::Database db(m_fdb, stationdb::OpenMode::ReadOnly);
    EXPECT_EQ(QueryInt(db, "SELECT COUNT(*) FROM fm_data, party WHERE party.party_id = fm_data.party_id"), 2497);
    EXPECT_EQ(QueryInt(db, "SELECT COUNT(*) FROM fm_data WHERE asd_service IS NULL OR station_channel IS NULL"), 0);
    // The study filter: foreign records and licensed domestic ones, without
    // auxiliaries and boosters (counted from the file: 2141).
    EXPECT_EQ(QueryInt(db, "SELECT COUNT(*) FROM fm_data WHERE ( border_code LIKE 'A' OR fm_dom_status LIKE 'LI*' )"
                           " AND asd_service NOT LIKE 'FS' AND asd_service NOT LIKE 'FB'"),
              2141);
}

TEST_F(ImportFmQueryRealTest, RecordsMatchTheFileByHand) {
    stationdb::Database db(m_fdb, stationdb::OpenMode::ReadOnly);
    // KSFH 87.9 FM 200 ND D LIC MOUNTAIN VIEW CA US BLED -19990511KA 0.01 kW 0.01 kW
    // -75.0 -75.0 62118 N 37 22 8.00 W 122 5 2.00 ... 74. m 74.0 m - - - 27. m 285006
    stationdb::Statement st = db.Prepare("SELECT * FROM fm_data WHERE application_id = 285006");
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetText("fac_callsign"), "KSFH");
    EXPECT_EQ(st.GetInt("station_channel"), 200);
    EXPECT_EQ(st.GetText("station_class"), "D");
    EXPECT_EQ(st.GetText("fm_dom_status"), "LIC");
    EXPECT_EQ(st.GetText("da_ind"), "N");
    EXPECT_EQ(st.GetText("file_prefix"), "BLED");
    EXPECT_EQ(st.GetText("app_arn"), "19990511KA");
    EXPECT_DOUBLE_EQ(st.GetDouble("horiz_erp"), 0.01);
    EXPECT_DOUBLE_EQ(st.GetDouble("haat_horiz_rc_mtr"), -75.0);
    EXPECT_EQ(st.GetInt("facility_id"), 62118);
    EXPECT_EQ(st.GetInt("lat"), 538112);
    EXPECT_EQ(st.GetInt("lon"), 1758008);
    EXPECT_DOUBLE_EQ(st.GetDouble("rcamsl_horiz_mtr"), 74.0);
    EXPECT_DOUBLE_EQ(st.GetDouble("hag_horiz_rc_mtr"), 27.0);
    EXPECT_TRUE(st.IsNull("antenna_id"));

    // - 88.1 FR 201 ND C1 - "-" status CALGARY AB CA RM -- ... -1 N 51 3 54.00 W 114 12 47.00 537140
    stationdb::Statement fr = db.Prepare("SELECT * FROM fm_data WHERE application_id = 537140");
    ASSERT_TRUE(fr.Step());
    EXPECT_TRUE(fr.IsNull("fac_callsign"));
    EXPECT_TRUE(fr.IsNull("fm_dom_status"));
    EXPECT_EQ(fr.GetText("file_prefix"), "RM");
    EXPECT_TRUE(fr.IsNull("app_arn"));
    EXPECT_EQ(fr.GetText("border_code"), "A");
    EXPECT_EQ(fr.GetText("intl_class"), "C1");
    EXPECT_EQ(fr.GetInt("lat"), 51 * 14400 + 3 * 240 + 54 * 4);
    EXPECT_EQ(fr.GetInt("lon"), 114 * 14400 + 12 * 240 + 47 * 4);

    // - 88.7 FM 204 ND B OPER TODMANS PEAK BV VI ... 8.53 kW 0. kW 329.0 0.0 198835 ... 1686824
    stationdb::Statement bvi = db.Prepare("SELECT * FROM fm_data WHERE application_id = 1686824");
    ASSERT_TRUE(bvi.Step());
    EXPECT_EQ(bvi.GetText("border_code"), "A");
    EXPECT_EQ(bvi.GetText("fm_dom_status"), "OPER");
    EXPECT_EQ(bvi.GetText("intl_status"), "OPER");
    EXPECT_DOUBLE_EQ(bvi.GetDouble("horiz_erp"), 8.53);
    EXPECT_DOUBLE_EQ(bvi.GetDouble("vert_erp"), 0.0);
    EXPECT_EQ(bvi.GetInt("facility_id"), 198835);

    // K200AA ... 1689. m 1689.0 m 72720 - - 34. m 1146642, owner CALVARY CHAPEL OF TWIN FALLS, INC.
    stationdb::Statement fx = db.Prepare(
        "SELECT fm_data.*, party.party_name FROM fm_data, party"
        " WHERE party.party_id = fm_data.party_id AND application_id = 1146642");
    ASSERT_TRUE(fx.Step());
    EXPECT_EQ(fx.GetText("asd_service"), "FX");
    EXPECT_EQ(fx.GetInt("antenna_id"), 72720);
    EXPECT_TRUE(fx.IsNull("asrn"));
    EXPECT_EQ(fx.GetText("party_name"), "CALVARY CHAPEL OF TWIN FALLS, INC.");
    EXPECT_EQ(QueryInt(db, "SELECT COUNT(*) FROM fm_data, party WHERE party.party_id = fm_data.party_id"
                           " AND party.party_name = 'CALVARY CHAPEL OF TWIN FALLS, INC.'"),
              QueryInt(db, "SELECT COUNT(*) FROM fm_data WHERE party_id = " +
                               std::to_string(fx.GetInt("party_id"))));
}

}  // namespace
}  // namespace qarvel::importers

namespace qarvel::importers {
namespace {

// One pipe-delimited record as the regulator writes it, with the fields a
// case changes given by position (0-based field index).
std::string PipeLine(const std::map<int, std::string>& changes = {}, int fields = 37) {
    std::vector<std::string> f = {"KTST        ", "89.7  MHz ", "FX ", "209 ", "ND  ", "-   ", "D  ", "-  ", "LIC    ",
                                  "STERLING ", "AK ", "US ", "BLED   -20051109ACD ", "0.25   kW ", "-.     kW ",
                                  "61.1    ", "0.0     ", "93589      ", "N ", "60 ", "29 ", "19.33 ", "W ", "150 ",
                                  "44 ", "42.83 ", "RADIO INC. ", "   0.00 km ", "   0.00 mi ", "  0.00 deg ",
                                  "97.    m", "0.0    m", "-         ", "-       ", "1275477 ", "21.7   m", "1451054   ",
                                  "0123456789abcdef0123456789ABCDEF"};
    for (const auto& [at, value] : changes) f[static_cast<std::size_t>(at)] = value;
    std::string line = "|";
    for (int i = 0; i < fields; ++i) line += f[static_cast<std::size_t>(i)] + "|";
    return line + "\n";
}

struct PipeCase {
    const char* name;
    std::string text;
    int kept;
    const char* problem;  // part of the first reported problem, or ""
};
void PrintTo(const PipeCase& c, std::ostream* os) { *os << c.name; }

class PipeFormTest : public ImportFmQueryTest, public ::testing::WithParamInterface<PipeCase> {};

TEST_P(PipeFormTest, ReadsOrReportsTheRecord) {
    // A good record first, so that the file keeps something.
    const fs::path file = Root() / "query.txt";
    WriteAll(file, PipeLine({{36, "1451099"}}) + GetParam().text);
    ASSERT_TRUE(Import(file, ImportTarget::Unpacked(Out()))) << m_summary.error;
    stationdb::Database db(Out(), stationdb::OpenMode::ReadOnly);
    EXPECT_EQ(CountRows(db, "SELECT * FROM fm_data"), GetParam().kept + 1);
    if (*GetParam().problem) {
        ASSERT_FALSE(m_issues.empty());
        EXPECT_NE(m_issues[0].problem.find(GetParam().problem), std::string::npos) << m_issues[0].problem;
    } else {
        EXPECT_TRUE(m_issues.empty()) << m_issues[0].problem;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Downloads, PipeFormTest,
    ::testing::Values(
        PipeCase{"ThirtySevenFields", PipeLine(), 1, ""},
        PipeCase{"HeadingAndBlankLines", "|Callsign|Frequency|Service|\n\n" + PipeLine() + "\n\n" + PipeLine({{36, "1451055"}}), 2, ""},
        PipeCase{"EarlyDownloadWithoutApplicationId", PipeLine({}, 36) + PipeLine({}, 36), 2, ""},
        PipeCase{"RecordIdOfTheNewerSystem", PipeLine({}, 38), 1, ""},
        PipeCase{"NotARecordId", PipeLine({{37, "xyz"}}, 38), 0, "record id"},
        PipeCase{"FileNumberWithoutBlanks", PipeLine({{12, "BLED-20151123CUH"}}), 1, ""},
        PipeCase{"FieldsMissing", PipeLine({}, 30), 0, "30 fields"},
        PipeCase{"DamagedLatitude", PipeLine({{19, "6O"}}), 0, "latitude"},
        PipeCase{"MixedWithFixedWidth", PipeLine() + " not a record\n", 1, "an FM Query record has at least"}),
    [](const auto& c) { return std::string(c.param.name); });

TEST_F(ImportFmQueryTest, PipeRecordIsReadFieldByField) {
    const fs::path file = Root() / "query.txt";
    WriteAll(file, PipeLine({{12, "BLED-20151123CUH"}}));
    ASSERT_TRUE(Import(file, ImportTarget::Unpacked(Out()))) << m_summary.error;
    stationdb::Database db(Out(), stationdb::OpenMode::ReadOnly);
    stationdb::Statement st = db.Prepare("SELECT * FROM fm_data WHERE application_id = 1451054");
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetText("fac_callsign"), "KTST");
    EXPECT_EQ(st.GetText("asd_service"), "FX");
    EXPECT_EQ(st.GetInt("station_channel"), 209);
    EXPECT_EQ(st.GetText("station_class"), "D");
    EXPECT_EQ(st.GetText("file_prefix"), "BLED");
    EXPECT_EQ(st.GetText("app_arn"), "20151123CUH");
    EXPECT_DOUBLE_EQ(st.GetDouble("horiz_erp"), 0.25);
    EXPECT_TRUE(st.IsNull("vert_erp"));  // "-.     kW"
    EXPECT_EQ(st.GetInt("lat"), 871037);   // N 60 29 19.33
    EXPECT_EQ(st.GetInt("lon"), 2170731);  // W 150 44 42.83
    EXPECT_DOUBLE_EQ(st.GetDouble("hag_horiz_rc_mtr"), 21.7);
    EXPECT_EQ(st.GetInt("asrn"), 1275477);
}

TEST_F(ImportFmQueryTest, RealPipeDownloads) {
    for (const auto& [name, kept] : {std::pair{"fmquery-pipe-al-ak-ga.txt", 737}, std::pair{"fmquery-pipe-ga-header.txt", 344}}) {
        const fs::path file = SharedData() / name;
        if (!fs::exists(file)) GTEST_SKIP() << "../shared/data is absent";
        fs::remove(Out());
        ASSERT_TRUE(Import(file, ImportTarget::Unpacked(Out()))) << m_summary.error;
        stationdb::Database db(Out(), stationdb::OpenMode::ReadOnly);
        EXPECT_EQ(CountRows(db, "SELECT * FROM fm_data"), kept) << name;
    }
}

}  // namespace
}  // namespace qarvel::importers
