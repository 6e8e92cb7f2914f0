// The fast engine against the reference engine on the national FM list
// (../shared/data/fm-stations-national.csv, longitudes east positive):
// 200 pseudo-random points over the conterminous states and points on the
// Canadian and Mexican borders, every class, with and without the TV channel
// 6 check and with several relation and status sets.
//
// The list has no statuses, services or TV channel 6 stations, so some are
// set deterministically after the import (the positions, channels and
// classes stay real) to make every filter and rule take part.

#include <gtest/gtest.h>

#include <random>

#include "core/error_trap.h"
#include "identity_check.h"
#include "importers/import_csv.h"
#include "test_master.h"

namespace qarvel::studies {
namespace {

namespace fs = std::filesystem;

fs::path NationalCsv() {
    return fs::path(QARVEL_SHARED_DATA) / "fm-stations-national.csv";
}

void VaryStatusesAndAddTv6(stationdb::Database& db) {
    db.Exec(
        "UPDATE fm_data SET fm_dom_status = CASE application_id % 9"
        " WHEN 0 THEN 'CP' WHEN 1 THEN 'APP' WHEN 2 THEN 'AD' WHEN 3 THEN 'VAC'"
        " WHEN 4 THEN 'DEL' WHEN 5 THEN 'RSV' ELSE fm_dom_status END;"
        "UPDATE fm_data SET asd_service = CASE application_id % 23"
        " WHEN 0 THEN 'FS' WHEN 1 THEN 'FB' WHEN 2 THEN NULL WHEN 3 THEN 'ED' ELSE asd_service END;"
        "UPDATE fm_data SET fac_callsign = fac_callsign || '\xC2\xA4' WHERE application_id % 97 = "
        "0;"
        // Only to make the reference engine's per-channel query quick; an
        // index changes the order of rows, never which rows.
        "CREATE INDEX fm_channel ON fm_data (station_channel);");
    std::mt19937 rng(6);
    std::uniform_real_distribution<double> lat(25.0, 49.0), lon(67.0, 124.0);
    stationdb::Statement insert = db.Prepare(
        "INSERT INTO tv6_data (application_id, lat, lon, fac_zone) VALUES (?1, ?2, ?3, ?4)");
    for (int i = 1; i <= 40; ++i) {
        insert.BindAll(i, test::Stored(lat(rng)), test::Stored(lon(rng)), i % 3 == 0 ? "1" : "0");
        insert.Run();
    }
}

std::vector<ScanOptions> OptionSets() {
    std::vector<ScanOptions> sets(5);
    sets[1].tv6 = false;
    sets[2].statusAD = sets[2].statusVA = sets[2].statusDE = true;
    sets[2].intermediateFrequency = false;
    sets[3].statusLI = sets[3].statusCP = sets[3].statusAP = false;
    sets[3].thirdAdjacent = false;
    sets[4].coChannel = sets[4].secondAdjacent = false;
    sets[4].statusCP = false;
    sets[4].tv6 = false;
    return sets;
}

TEST(EngineIdentityNational, TwoHundredPointsEveryClass) {
    if (!fs::exists(NationalCsv()))
        GTEST_SKIP() << "no " << NationalCsv() << ": shared data absent";
    test::TempFolder folder;
    const fs::path fdb = folder.Path() / "national.fdb";
    importers::ImportOptions options;
    options.eastPositive = true;
    importers::ImportSummary summary;
    ASSERT_TRUE(importers::ImportCsv(NationalCsv(), importers::ImportTarget::Unpacked(fdb), options,
                                     &summary))
        << summary.error;
    ASSERT_GT(summary.kept, 10000u);
    {
        stationdb::Database db(fdb, stationdb::OpenMode::ReadWrite);
        VaryStatusesAndAddTv6(db);
    }
    core::RecordingErrorSink sink;  // class D meets foreign stations: reports, not compared
    core::ScopedErrorSink scoped(sink);
    auto reference = ReferenceEngine::Open(fdb);
    FastEngine fast(MasterIndex::Load(fdb));
    ASSERT_TRUE(reference);

    std::vector<std::pair<double, double>> points = {
        {42.32, 83.04},  {42.90, 78.88},  {48.99, 122.75}, {45.01, 73.45}, {47.0, 67.8},
        {32.55, 117.05}, {31.76, 106.49}, {25.90, 97.50},  {27.50, 99.50}, {37.0, 97.0},
        {24.55, 81.78},  {44.99, 93.26},  {49.0, 95.15},   {46.5, 84.35}};
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> lat(25.0, 49.0), lon(67.0, 124.5);
    // The reference engine costs some 50 times more without optimisation;
    // an unoptimised build compares fewer random points.
#ifdef NDEBUG
    constexpr int kRandomPoints = 200;
#else
    constexpr int kRandomPoints = 28;
#endif
    for (int i = 0; i < kRandomPoints; ++i) points.emplace_back(lat(rng), lon(rng));
    const std::vector<ScanOptions> sets = OptionSets();
    int limited = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const auto cls = static_cast<int16_t>(i % 14);
        const int16_t intl = i % 4 == 1 ? static_cast<int16_t>((i * 5) % 14) : int16_t{-1};
        limited +=
            test::ExpectSameScan(*reference, fast, {points[i].first, points[i].second, cls, intl},
                                 sets[(i / 14) % sets.size()]);
        if (HasFailure()) break;  // one target's differences are enough to read
    }
    EXPECT_GT(limited, static_cast<int>(points.size()) * 101 / 2);
}

}  // namespace
}  // namespace qarvel::studies
