#include "importers/import_csv.h"

#include "core/error_trap.h"
#include "core/prompt.h"
#include "support/db_test_support.h"
#include "stationdb/database.h"
#include "stationdb/master_package.h"
#include "stationdb/validation.h"

#include <gtest/gtest.h>

namespace qarvel::importers {
namespace {

using namespace qarvel::testing_support;

// The query shape the searches and AutoScan use: a station that is missing
// from its answer is lost to every study.
constexpr const char* kStudyQuery =
    "SELECT fm_data.application_id FROM fm_data, party WHERE"
    " ( border_code LIKE 'A' OR fm_dom_status LIKE 'LI*' )"
    " AND asd_service NOT LIKE 'FS' AND asd_service NOT LIKE 'FB'"
    " AND party.party_id = fm_data.party_id";

class ImportCsvTest : public TempFolderTest {
protected:
    fs::path Write(const std::string& name, const std::string& text) {
        const fs::path path = Root() / name;
        WriteAll(path, text);
        return path;
    }
    bool Import(const fs::path& csv, ImportOptions options = {}) {
        m_issues.clear();
        options.onIssue = [this](const ImportIssue& issue) { m_issues.push_back(issue); };
        return ImportCsv(csv, ImportTarget::Unpacked(Out()), options, &m_summary);
    }
    fs::path Out() const { return Root() / "out.fdb"; }

    core::RecordingErrorSink m_sink;
    core::ScopedErrorSink m_scopedSink{m_sink};
    ImportSummary m_summary;
    std::vector<ImportIssue> m_issues;
};

TEST_F(ImportCsvTest, FindsColumnsByCommonSpellingsAndFillsTheStudyColumns) {
    const fs::path csv = Write("list.csv",
                               "Community,Call_Sign,Frequency_MHz,Station Class,LAT,Lon,State,extra\n"
                               "\"SPRINGFIELD, EAST\",WAAA,88.1,a,40.75,-89.5,IL,x\n"
                               "BANFF,CJAY-1,95.1,B,51.198056,-115.611944,AB,y\n");
    ImportOptions options;
    options.eastPositive = true;
    ASSERT_TRUE(Import(csv, options)) << m_summary.error;
    stationdb::Database db(Out(), stationdb::OpenMode::ReadOnly);
    stationdb::Statement st = db.Prepare("SELECT * FROM fm_data ORDER BY application_id");
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetInt("application_id"), 1);
    EXPECT_EQ(st.GetText("fac_callsign"), "WAAA");
    EXPECT_EQ(st.GetText("comm_city"), "SPRINGFIELD, EAST");
    EXPECT_EQ(st.GetInt("station_channel"), 201);
    EXPECT_EQ(st.GetText("station_class"), "A");
    EXPECT_EQ(st.GetInt("lat"), 586800);    // 40.75 x 14400
    EXPECT_EQ(st.GetInt("lon"), 1288800);   // 89.5 west
    EXPECT_EQ(st.GetText("asd_service"), "FM");
    EXPECT_EQ(st.GetText("app_service"), "FM");
    EXPECT_EQ(st.GetText("fm_dom_status"), "LIC");
    EXPECT_TRUE(st.IsNull("border_code"));
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetInt("application_id"), 2);
    EXPECT_EQ(st.GetInt("station_channel"), 236);
    EXPECT_EQ(st.GetText("border_code"), "A");
    EXPECT_EQ(st.GetText("intl_class"), "B");
    EXPECT_EQ(st.GetInt("lat"), 737252);    // 51.198056 x 14400 = 737252.0064
    EXPECT_EQ(st.GetInt("lon"), 1664811);   // 115.611944 x 14400 = 1664811.99
    EXPECT_EQ(CountRows(db, kStudyQuery), 2);
    EXPECT_EQ(m_summary.byCountry.at("CA"), 1u);
}

TEST_F(ImportCsvTest, OptionalColumnsOverrideTheDefaults) {
    const fs::path csv = Write("list.csv",
                               "callsign,channel,class,latitude,longitude,city,state,status,service,country\n"
                               "K201AB,201,D,35,100,TOWN,TX,CP,FX,US\n"
                               "XHAB,202,A,32,115,TIJUANA,BN,,,MX\n");
    ASSERT_TRUE(Import(csv)) << m_summary.error;
    stationdb::Database db(Out(), stationdb::OpenMode::ReadOnly);
    stationdb::Statement st = db.Prepare("SELECT asd_service, fm_dom_status, lon, border_code FROM fm_data ORDER BY 1");
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetText(0), "FM");
    EXPECT_EQ(st.GetText(1), "LIC");
    EXPECT_EQ(st.GetText(3), "A");
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetText(0), "FX");
    EXPECT_EQ(st.GetText(1), "CP");
    EXPECT_EQ(st.GetInt(2), 1440000);  // west positive as given
    EXPECT_EQ(m_summary.byService.at("FX"), 1u);
}

TEST_F(ImportCsvTest, BadRowsAreReportedWithLineAndSkipped) {
    const fs::path csv = Write("list.csv",
                               "callsign,channel,station_class,latitude,longitude,community,state\n"
                               "WAAA,201,A,40,80,A,PA\n"
                               "WBBB,199,A,40,80,B,PA\n"
                               "WCCC,202,Q,40,80,C,PA\n"
                               "\n"
                               "WDDD,203,A,north,80,D,PA\n"
                               "WEEE,204,A,40,80,E\n"
                               "WFFF,205,B,41,81,F,OH\n"
                               "WGGG,206,B,41,81,G,OH\n"
                               "WHHH,207,B,41,81,H,OH\n"
                               "WIII,208,B,41,81,I,OH\n");
    ASSERT_TRUE(Import(csv)) << m_summary.error;
    ASSERT_EQ(m_issues.size(), 4u);
    EXPECT_EQ(m_issues[0].file, "list.csv");
    EXPECT_EQ(m_issues[0].line, 3u);
    EXPECT_NE(m_issues[0].problem.find("channel '199'"), std::string::npos);
    EXPECT_EQ(m_issues[1].line, 4u);
    EXPECT_EQ(m_issues[2].line, 6u);  // the empty line still counts
    EXPECT_NE(m_issues[2].problem.find("latitude 'north'"), std::string::npos);
    EXPECT_EQ(m_issues[3].line, 7u);
    EXPECT_EQ(m_summary.read, 9u);
    EXPECT_EQ(m_summary.kept, 5u);
    EXPECT_EQ(m_summary.skipped.at("unreadable record"), 4u);
    stationdb::Database db(Out(), stationdb::OpenMode::ReadOnly);
    // Identifiers run on without gaps over the kept rows.
    EXPECT_EQ(QueryInt(db, "SELECT MAX(application_id) FROM fm_data"), 5);
}

TEST_F(ImportCsvTest, Latin1TextBecomesUtf8) {
    const fs::path csv = Write("list.csv", "callsign,channel,class,lat,lon,city,state\n"
                                           "CBF-FM,230,C1,45.5,73.6,MONTR\xC9" "AL,QC\n");
    ASSERT_TRUE(Import(csv)) << m_summary.error;
    stationdb::Database db(Out(), stationdb::OpenMode::ReadOnly);
    stationdb::Statement st = db.Prepare("SELECT comm_city FROM fm_data");
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetText(0), "MONTR\xC3\x89" "AL");
}

struct UnusableCase {
    const char* name;
    std::string text;
    const char* message;  // part of the error
};

class ImportCsvUnusableTest : public ImportCsvTest, public ::testing::WithParamInterface<UnusableCase> {};

TEST_P(ImportCsvUnusableTest, FailsWithAClearMessageAndWritesNothing) {
    const fs::path csv = Write("list.csv", GetParam().text);
    EXPECT_FALSE(Import(csv));
    EXPECT_NE(m_summary.error.find(GetParam().message), std::string::npos) << m_summary.error;
    EXPECT_EQ(Listing(Root()), std::vector<std::string>{"list.csv"});
    ASSERT_EQ(m_sink.Reports().size(), 1u);
    EXPECT_EQ(m_sink.Reports()[0].routine, ":ImportCsv:");
}

const std::string kGood = "WAAA,201,A,40,80,A,PA\nWBBB,202,A,40,80,B,PA\n";
const std::string kHeader = "callsign,channel,class,latitude,longitude,city,state\n";
const std::string kCutOff = kHeader + kGood + "WCCC,203,A,4";
const std::string kOpenQuote = kHeader + kGood + "WCCC,203,A,40,80,\"C,PA\n";
const std::string kBinary = kHeader + kGood + std::string("WC\0CC,203,A,40,80,C,PA\n", 23);
const std::string kGarbled = kHeader + kGood + "x\ny\nz\n";

INSTANTIATE_TEST_SUITE_P(
    Inputs, ImportCsvUnusableTest,
    ::testing::Values(
        UnusableCase{"Empty", "", "empty"},
        UnusableCase{"HeaderOnly", "callsign,channel,class,latitude,longitude,city,state\n", "no FM station"},
        UnusableCase{"NoLatitude", "callsign,channel,class,longitude,city,state\nW,201,A,80,X,PA\n",
                     "no column \"latitude\""},
        UnusableCase{"NoChannel", "callsign,class,latitude,longitude,city,state\nW,A,40,80,X,PA\n",
                     "no column \"channel\""},
        UnusableCase{"CutOff", kCutOff, "cut off"},
        UnusableCase{"OpenQuote", kOpenQuote, "quoted field"},
        UnusableCase{"Binary", kBinary, "NUL"},
        UnusableCase{"Garbled", kGarbled, "3 of 5 records are unreadable"}),
    [](const auto& testInfo) { return std::string(testInfo.param.name); });

TEST_F(ImportCsvTest, CancelledImportWritesNothing) {
    std::string text = kHeader;
    for (int i = 0; i < 3000; ++i) text += "WAAA,201,A,40,80,A,PA\n";
    const fs::path csv = Write("list.csv", text);
    std::atomic<bool> cancel{true};
    ImportOptions options;
    options.cancel = &cancel;
    EXPECT_FALSE(Import(csv, options));
    EXPECT_EQ(m_summary.error, "cancelled");
    EXPECT_EQ(Listing(Root()), std::vector<std::string>{"list.csv"});
}

TEST_F(ImportCsvTest, ReportsProgressOverTheFile) {
    std::string text = kHeader;
    for (int i = 0; i < 3000; ++i) text += "WAAA,201,A,40,80,A,PA\n";
    const fs::path csv = Write("list.csv", text);
    std::vector<double> fractions;
    ImportOptions options;
    options.progress = [&](const ImportProgress& p) { fractions.push_back(p.fraction); };
    ASSERT_TRUE(Import(csv, options));
    ASSERT_GE(fractions.size(), 4u);
    EXPECT_TRUE(std::is_sorted(fractions.begin(), fractions.end()));
    EXPECT_GT(fractions.back(), 0.8);
    EXPECT_LE(fractions.back(), 1.0);
}

TEST_F(ImportCsvTest, NationalListImportsEveryRecordWithItsCountry) {
    const fs::path csv = SharedData() / "fm-stations-national.csv";
    if (!fs::exists(csv)) GTEST_SKIP() << "real station data not found at " << csv;
    ImportOptions options;
    options.eastPositive = true;
    ASSERT_TRUE(ImportCsv(csv, ImportTarget::Packed(Root() / "national.fmd"), options, &m_summary))
        << m_summary.error;
    EXPECT_EQ(m_summary.read, 11116u);
    EXPECT_EQ(m_summary.kept, 11116u);
    EXPECT_EQ(m_summary.issueCount, 0u);
    // Counted by hand from the file: C and V call signs or provinces are
    // Canadian; X call signs and the Mexican state codes (NL is Nuevo Leon
    // here, its stations all XH...) Mexican; ZCBN on Tortola is neither.
    EXPECT_EQ(m_summary.byCountry.at("CA"), 512u);
    EXPECT_EQ(m_summary.byCountry.at("MX"), 146u);
    EXPECT_EQ(m_summary.byCountry.at("other"), 1u);
    EXPECT_EQ(m_summary.byCountry.at("US"), 11116u - 659u);

    fs::create_directories(Root() / "scratch");
    const fs::path fdb = stationdb::UnpackMasterDatabase(Root() / "national.fmd", Root() / "scratch");
    ASSERT_FALSE(fdb.empty());
    core::RecordingPrompt prompt;
    core::ScopedPrompt scopedPrompt(prompt);
    EXPECT_TRUE(stationdb::ValidFMDFile(fdb, {"NoOp", 0, {}}));
    stationdb::Database db(fdb, stationdb::OpenMode::ReadOnly);
    EXPECT_EQ(CountRows(db, kStudyQuery), 11116);
    EXPECT_EQ(QueryInt(db, "SELECT COUNT(*) FROM fm_data WHERE border_code = 'A'"), 659);
    // First row: CBBBFM,232,94.3,B,44.3125,-77.206944,BELLEVILLE,(no state)
    stationdb::Statement st = db.Prepare("SELECT * FROM fm_data WHERE application_id = 1");
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetText("fac_callsign"), "CBBBFM");
    EXPECT_EQ(st.GetInt("station_channel"), 232);
    EXPECT_EQ(st.GetInt("lat"), 638100);
    EXPECT_EQ(st.GetInt("lon"), 1111779);  // 77.206944 x 14400 = 1111779.99 truncated
    EXPECT_TRUE(st.IsNull("comm_state"));
    EXPECT_EQ(st.GetText("intl_class"), "B");
}

}  // namespace
}  // namespace qarvel::importers
