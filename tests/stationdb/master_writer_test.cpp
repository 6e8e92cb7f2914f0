#include "stationdb/master_writer.h"

#include "core/error_trap.h"
#include "core/prompt.h"
#include "support/db_test_support.h"
#include "stationdb/database.h"
#include "stationdb/master_package.h"
#include "stationdb/validation.h"

#include <gtest/gtest.h>

namespace qarvel::stationdb {
namespace {

using namespace qarvel::testing_support;

MasterHeader TestHeader() {
    MasterHeader h;
    h.source = "master writer test";
    return h;
}

FmRecord FullFmRecord() {
    FmRecord r;
    r.application_id = 4711;
    r.party_id = 12;
    r.lat = 538112;
    r.lon = 1757528;
    r.cutoff_date = "1999-05-11";
    r.cp_exp_date = "2001-01-31";
    r.app_arn = "19990511KA";
    r.app_service = "FM";
    r.asd_service = "FM";
    r.facility_id = 62118;
    r.file_prefix = "BLED";
    r.comm_city = "MOUNTAIN VIEW";
    r.comm_state = "CA";
    r.fac_callsign = "KSFH";
    r.asrn = 1234567;
    r.border_dist = 512.5;
    r.elev_amsl = 47;
    r.fm_dom_status = "LIC";
    r.hag_horiz_rc_mtr = 27;
    r.max_horiz_erp = 0.01;
    r.station_channel = 200;
    r.station_class = "D";
    r.horiz_erp = 0.01;
    r.vert_erp = 0.02;
    r.haat_horiz_rc_mtr = -75;
    r.rcamsl_horiz_mtr = 74;
    r.ant_rotation = 15;
    r.docket_num = "MM 98-155";
    r.bt_ind = "N";
    r.rule_73_215_req_ind = "Y";
    r.da_ind = "N";
    r.antenna_id = 72720;
    return r;
}

class MasterWriterTest : public TempFolderTest {
protected:
    // Unpacks a written ".fmd" into the test folder and opens it.
    Database OpenPacked(const fs::path& fmd) {
        fs::create_directories(Root() / "scratch");
        fs::path fdb = UnpackMasterDatabase(fmd, Root() / "scratch");
        EXPECT_FALSE(fdb.empty());
        return Database(fdb, OpenMode::ReadOnly);
    }
};

TEST_F(MasterWriterTest, PackedMasterHoldsEveryColumnAndPassesValidation) {
    const fs::path fmd = Root() / "master.fmd";
    MasterWriter writer;
    ASSERT_TRUE(writer.Open(fmd, TestHeader()));
    EXPECT_EQ(writer.AddFm(FullFmRecord()), AddResult::Added);
    PartyRecord owner;
    owner.party_id = 12;
    owner.party_name = "MOUNTAIN VIEW PUBLIC BROADCASTING";
    EXPECT_EQ(writer.AddParty(owner), AddResult::Added);
    AmRecord am{77, "BOSTON", "MA", kNoOwnerPartyId, "DA2", 608400, 1022400, "WBZ"};
    EXPECT_EQ(writer.AddAm(am), AddResult::Added);
    Tv6Record tv{88, "ALBANY", "NY", 13, 615600, 1065600, "1", "WRGB"};
    EXPECT_EQ(writer.AddTv6(tv), AddResult::Added);
    EXPECT_TRUE(writer.AddPlace({"Boston", 650000, 608400, 1022400}));
    ASSERT_TRUE(writer.Finish());
    EXPECT_EQ(Listing(Root()), std::vector<std::string>{"master.fmd"});

    Database db = OpenPacked(fmd);
    core::RecordingPrompt prompt;
    core::ScopedPrompt scoped(prompt);
    MasterInfo info;
    EXPECT_TRUE(ValidFMDFile(db.Path(), {"NoOp", 0, {}}, &info));
    EXPECT_EQ(info.creation_size, "1");  // the FM row count when none was given
    EXPECT_FLOAT_EQ(info.version, 1.9f);

    Statement st = db.Prepare("SELECT * FROM fm_data");
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetInt("application_id"), 4711);
    EXPECT_EQ(st.GetInt("lat"), 538112);
    EXPECT_EQ(st.GetInt("lon"), 1757528);
    EXPECT_EQ(st.GetText("cutoff_date"), "1999-05-11");
    EXPECT_EQ(st.GetText("app_arn"), "19990511KA");
    EXPECT_EQ(st.GetText("asd_service"), "FM");
    EXPECT_EQ(st.GetText("fm_dom_status"), "LIC");
    EXPECT_EQ(st.GetInt("station_channel"), 200);
    EXPECT_DOUBLE_EQ(st.GetDouble("haat_horiz_rc_mtr"), -75);
    EXPECT_DOUBLE_EQ(st.GetDouble("vert_erp"), 0.02);
    EXPECT_EQ(st.GetText("rule_73_215_req_ind"), "Y");
    EXPECT_TRUE(st.IsNull("border_code"));
    EXPECT_TRUE(st.IsNull("intl_class"));
    EXPECT_EQ(st.GetInt("antenna_id"), 72720);

    // The AM station had no owner: an empty owner row keeps it in joins.
    EXPECT_EQ(QueryInt(db, "SELECT COUNT(*) FROM am_data, party WHERE party.party_id = am_data.party_id"), 1);
    EXPECT_EQ(QueryInt(db, "SELECT COUNT(*) FROM tv6_data, party WHERE party.party_id = tv6_data.party_id"), 1);
    EXPECT_EQ(QueryInt(db, "SELECT COUNT(*) FROM party"), 3);
    EXPECT_EQ(QueryInt(db, "SELECT pop FROM places WHERE name = 'Boston'"), 650000);
}

TEST_F(MasterWriterTest, UnpackedOutputIsTheDatabaseItself) {
    const fs::path fdb = Root() / "national.fdb";
    MasterWriter writer;
    ASSERT_TRUE(writer.Open(fdb, TestHeader(), MasterOutput::Unpacked));
    FmRecord r = FullFmRecord();
    r.party_id = kNoOwnerPartyId;
    EXPECT_EQ(writer.AddFm(r), AddResult::Added);
    ASSERT_TRUE(writer.Finish());
    EXPECT_EQ(Listing(Root()), std::vector<std::string>{"national.fdb"});
    Database db(fdb, OpenMode::ReadOnly);
    EXPECT_EQ(QueryInt(db, "SELECT COUNT(*) FROM fm_data, party WHERE party.party_id = fm_data.party_id"), 1);
    EXPECT_EQ(QueryInt(db, "SELECT COUNT(*) FROM information WHERE Source = 'master writer test'"), 1);
}

TEST_F(MasterWriterTest, DuplicateKeysAreRefusedAndTheWriterCarriesOn) {
    MasterWriter writer;
    ASSERT_TRUE(writer.Open(Root() / "m.fdb", TestHeader(), MasterOutput::Unpacked));
    EXPECT_EQ(writer.AddFm(FullFmRecord()), AddResult::Added);
    EXPECT_EQ(writer.AddFm(FullFmRecord()), AddResult::Duplicate);
    PartyRecord p;
    p.party_id = 5;
    EXPECT_EQ(writer.AddParty(p), AddResult::Added);
    EXPECT_EQ(writer.AddParty(p), AddResult::Duplicate);
    FmRecord other = FullFmRecord();
    other.application_id = 4712;
    EXPECT_EQ(writer.AddFm(other), AddResult::Added);
    EXPECT_EQ(writer.FmCount(), 2u);
    ASSERT_TRUE(writer.Finish());
    Database db(Root() / "m.fdb", OpenMode::ReadOnly);
    EXPECT_EQ(QueryInt(db, "SELECT COUNT(*) FROM fm_data"), 2);
}

TEST_F(MasterWriterTest, AbandonedWriterLeavesNothingAndKeepsThePreviousFile) {
    const fs::path fmd = Root() / "master.fmd";
    WriteAll(fmd, "previous");
    {
        MasterWriter writer;
        ASSERT_TRUE(writer.Open(fmd, TestHeader()));
        EXPECT_EQ(writer.AddFm(FullFmRecord()), AddResult::Added);
        EXPECT_EQ(Listing(Root()).size(), 2u);  // the working folder exists meanwhile
    }
    EXPECT_EQ(Listing(Root()), std::vector<std::string>{"master.fmd"});
    EXPECT_EQ(ReadAll(fmd), "previous");
}

TEST_F(MasterWriterTest, MissingFolderIsReportedAndNothingIsMade) {
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scoped(sink);
    MasterWriter writer;
    EXPECT_FALSE(writer.Open(Root() / "absent" / "m.fmd", TestHeader()));
    EXPECT_FALSE(writer.IsOpen());
    EXPECT_EQ(writer.AddFm(FullFmRecord()), AddResult::Failed);
    EXPECT_FALSE(writer.Finish());
    ASSERT_FALSE(sink.Reports().empty());
    EXPECT_EQ(sink.Reports().front().routine, ":MasterWriter.Open:");
    EXPECT_TRUE(Listing(Root()).empty());
}

}  // namespace
}  // namespace qarvel::stationdb
