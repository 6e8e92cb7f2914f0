// AutoScan on small real master databases, run through both engines: every
// case must hold for the reference (query per channel) and the fast engine.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "core/error_trap.h"
#include "geodesy/geodesy.h"
#include "spacing/min_sep.h"
#include "studies/autoscan.h"
#include "test_master.h"

namespace qarvel::studies {
namespace {

using test::FmRow;
using test::Stored;
using test::TestMaster;

constexpr double kLat = 40.0;
constexpr double kLon = 80.0;  // WEST

ScanTarget Target(int16_t cls = 4) {
    return {kLat, kLon, cls, -1};
}

ScanOptions OnlyCoChannel() {
    ScanOptions o;
    o.firstAdjacent = o.secondAdjacent = o.thirdAdjacent = o.intermediateFrequency = false;
    o.tv6 = false;
    return o;
}

// A station `km` due north of the target.
int NorthOf(double km) {
    return Stored(kLat + km / geodesy::KmPerDegLat(kLat + km / 222.0));
}

std::string LineOf(const ScanResult& r, int channel) {
    for (const auto& line : r.lines) {
        if (line.rfind(std::to_string(channel) + "\t", 0) == 0) return line;
    }
    return "";
}

float MinOf(const ScanResult& r, int channel) {
    return r.minima.at(static_cast<std::size_t>(channel - kFirstScanChannel));
}

class EngineTest : public ::testing::TestWithParam<bool> {
  protected:
    ScanResult Scan(const ScanTarget& target, const ScanOptions& options,
                    const ScanProgress& progress = {}, const std::atomic<bool>* abort = nullptr) {
        auto engine = master.Engine(GetParam());
        EXPECT_TRUE(engine);
        return ScanChannels(*engine, target, options, progress, abort);
    }
    TestMaster master;
};

TEST_P(EngineTest, NoStationInReachGives350AndCountsAsOpen) {
    master.AddFm({.channel = 250, .lat = NorthOf(2000)});
    const ScanResult r = Scan(Target(), ScanOptions{});
    ASSERT_EQ(r.lines.size(), 101u);  // channel 200 included
    EXPECT_EQ(LineOf(r, 250), "250\t350.00");
    EXPECT_EQ(r.openings, 101);
    EXPECT_EQ(r.status, "Scanning complete: 101 openings found.");
    EXPECT_FALSE(r.aborted);
}

TEST_P(EngineTest, AllRelationsOffAndTv6OffGives101Openings) {
    for (int ch = 200; ch <= 300; ++ch) master.AddFm({.channel = ch, .lat = NorthOf(1)});
    master.AddTv6(Stored(kLat), Stored(kLon));
    ScanOptions o;
    o.coChannel = o.firstAdjacent = o.secondAdjacent = o.thirdAdjacent = false;
    o.intermediateFrequency = o.tv6 = false;
    const ScanResult r = Scan(Target(), o);
    EXPECT_EQ(r.openings, 101);
    for (const auto& line : r.lines) EXPECT_EQ(line.substr(3), "\t350.00");
}

TEST_P(EngineTest, OneOpeningIsSingularNoneIsPlural) {
    for (int ch = 200; ch <= 300; ++ch) {
        if (ch != 250) master.AddFm({.channel = ch, .lat = NorthOf(5)});
    }
    ScanResult r = Scan(Target(), OnlyCoChannel());
    EXPECT_EQ(r.openings, 1);
    EXPECT_EQ(r.status, "Scanning complete: 1 opening found.");
    EXPECT_EQ(r.lines.front(), "250\t350.00");

    master.AddFm({.channel = 250, .lat = NorthOf(5)});
    r = Scan(Target(), OnlyCoChannel());
    EXPECT_EQ(r.status, "Scanning complete: 0 openings found.");
}

TEST_P(EngineTest, RelationsFollowTheChannelDifference) {
    // One class A station 20 km away on 250: it limits exactly the channels
    // related to 250, each by that relation's separation.
    master.AddFm({.channel = 250, .lat = NorthOf(20)});
    const ScanResult r = Scan(Target(), ScanOptions{});
    spacing::StationRec target;
    target.station_class = 4;
    spacing::StationRec other;
    other.station_class = 4;
    double ns = 0, ew = 0;
    const double d =
        geodesy::FlatDistance(kLat, kLon, NorthOf(20) / 14400.0, Stored(kLon) / 14400.0, ns, ew);
    for (int ch = 200; ch <= 300; ++ch) {
        const int16_t rel = spacing::RelationFromChannels(ch, 250);
        float expected = kNoStationClearance;
        if (rel >= 0) {
            other.relation = rel;
            target.station_channel = static_cast<int16_t>(ch);
            const int required = spacing::LookupMinSep(target, other);
            if (required > 0) expected = static_cast<float>(d - required);
        }
        EXPECT_EQ(MinOf(r, ch), expected) << "channel " << ch;
    }
}

TEST_P(EngineTest, ZeroRequiredSeparationNeverLowersTheMinimum) {
    // "A1" and "AA" have no domestic rule, a blank class none at all.
    master.AddFm({.channel = 250, .lat = NorthOf(1), .stationClass = "A1"});
    master.AddFm({.channel = 250, .lat = NorthOf(1), .stationClass = "AA"});
    master.AddFm({.channel = 250, .lat = NorthOf(1), .stationClass = std::nullopt});
    const ScanResult r = Scan(Target(), ScanOptions{});
    EXPECT_EQ(r.openings, 101);
    EXPECT_EQ(LineOf(r, 250), "250\t350.00");
}

TEST_P(EngineTest, StatusServiceAndBorderFilters) {
    const ScanOptions licensedOnly = [] {
        ScanOptions o = OnlyCoChannel();
        o.statusCP = o.statusAP = false;
        return o;
    }();
    // Counted: licence in lower case (LIKE ignores case); a foreign station
    // with no status at all. Not counted: a permit while only LI is on, a
    // translator, a booster, a station whose service is unknown (NULL).
    master.AddFm({.channel = 201, .lat = NorthOf(10), .status = "lic"});
    master.AddFm({.channel = 202,
                  .lat = NorthOf(10),
                  .intlClass = "A",
                  .borderCode = "A",
                  .status = std::nullopt});
    master.AddFm({.channel = 203, .lat = NorthOf(10), .status = "CP"});
    master.AddFm({.channel = 204, .lat = NorthOf(10), .service = "FS"});
    master.AddFm({.channel = 205, .lat = NorthOf(10), .service = "fb"});
    master.AddFm({.channel = 206, .lat = NorthOf(10), .service = std::nullopt});
    master.AddFm({.channel = 207, .lat = NorthOf(10), .status = "RSV"});
    ScanResult r = Scan(Target(), licensedOnly);
    EXPECT_LT(MinOf(r, 201), 0);
    EXPECT_LT(MinOf(r, 202), 0);
    for (int ch : {203, 204, 205, 206, 207}) EXPECT_EQ(MinOf(r, ch), 350.0f) << ch;

    ScanOptions vacant = licensedOnly;
    vacant.statusVA = true;  // "VA" and "RS" share the flag
    r = Scan(Target(), vacant);
    EXPECT_LT(MinOf(r, 207), 0);
}

TEST_P(EngineTest, ExcludedRecordsAreSkipped) {
    master.AddFm({.callsign = "K\xC2\xA4XYZ", .channel = 210, .lat = NorthOf(10)});  // UTF-8 "¤"
    master.AddFm(
        {.callsign = std::string("KXYZ\xA4"), .channel = 211, .lat = NorthOf(10)});  // Latin-1
    master.AddFm(
        {.callsign = "K\xC3\xA4Z", .channel = 212, .lat = NorthOf(10)});  // "ä" is not the marker
    master.AddFm({.callsign = std::nullopt, .channel = 213, .lat = NorthOf(10)});
    const ScanResult r = Scan(Target(), OnlyCoChannel());
    EXPECT_EQ(MinOf(r, 210), 350.0f);
    EXPECT_EQ(MinOf(r, 211), 350.0f);
    EXPECT_LT(MinOf(r, 212), 0);
    EXPECT_LT(MinOf(r, 213), 0);
}

TEST_P(EngineTest, Tv6CountsByChannelAndClassEvenWithoutARule) {
    master.AddTv6(NorthOf(10), Stored(kLon), "1");
    // Class D has no channel 6 rule (0 km): the station still counts on 253
    // with its plain distance; nowhere else.
    ScanOptions o = OnlyCoChannel();
    o.tv6 = true;
    ScanResult r = Scan(Target(13), o);
    EXPECT_EQ(r.openings, 101);
    EXPECT_NEAR(MinOf(r, 253), 10.0, 0.01);
    for (int ch = 200; ch <= 300; ++ch) {
        if (ch != 253) {
            EXPECT_EQ(MinOf(r, ch), 350.0f) << ch;
        }
    }
    // Class A (zone 1: 22 km): only 253, short-spaced.
    r = Scan(Target(4), o);
    EXPECT_NEAR(MinOf(r, 253), 10.0 - 22.0, 0.01);
    EXPECT_EQ(r.openings, 100);
    // Class L1: 201..220, by channel; 253 untouched.
    r = Scan(Target(1), o);
    EXPECT_NEAR(MinOf(r, 201), 10.0 - 219.0, 0.01);
    EXPECT_NEAR(MinOf(r, 220), 10.0 - 136.0, 0.01);
    EXPECT_EQ(MinOf(r, 221), 350.0f);
    EXPECT_EQ(MinOf(r, 253), 350.0f);
    EXPECT_EQ(MinOf(r, 200), 350.0f);
    EXPECT_EQ(r.openings, 81);
    // TV6 check off: nothing.
    o.tv6 = false;
    EXPECT_EQ(Scan(Target(1), o).openings, 101);
}

// A station (stored latitude) and a target due south of it at exactly
// `required` km: the search walks the target latitude one double at a time
// until FlatDistance gives the separation exactly, moving the station by one
// stored unit when no double hits it.
struct ExactPair {
    int stationLat = 0;
    double targetLat = 0;
};

std::optional<ExactPair> AtExactly(int stationLat, double required) {
    for (int shift = 0; shift < 5000; ++shift) {
        const double s = (stationLat + shift) / 14400.0;
        double ns = 0, ew = 0;
        auto distance = [&](double t) { return geodesy::FlatDistance(t, kLon, s, kLon, ns, ew); };
        double lo = s - required / 100.0, hi = s;  // lo too far, hi too near
        for (int i = 0; i < 200; ++i) {
            const double mid = (lo + hi) / 2;
            (distance(mid) > required ? lo : hi) = mid;
        }
        double t = std::nextafter(lo, -1000.0);
        for (int step = 0; step < 64; ++step, t = std::nextafter(t, 1000.0)) {
            if (distance(t) == required) return ExactPair{stationLat + shift, t};
        }
    }
    return std::nullopt;
}

TEST_P(EngineTest, ExactlyZeroClearanceIsAnOpeningAHairLessIsNot) {
    spacing::StationRec a;
    a.station_class = 4;
    a.relation = 0;
    const double required = spacing::LookupMinSep(a, a);
    ASSERT_GT(required, 0);
    const auto exact = AtExactly(Stored(41.0), required);
    ASSERT_TRUE(exact) << "no target latitude at exactly " << required << " km";
    master.AddFm({.channel = 250, .lat = exact->stationLat});
    ScanTarget target{exact->targetLat, kLon, 4, -1};
    ScanResult r = Scan(target, OnlyCoChannel());
    EXPECT_EQ(MinOf(r, 250), 0.0f);
    EXPECT_EQ(LineOf(r, 250), "250\t0.00");
    EXPECT_EQ(r.openings, 101);

    // A little nearer: short-spaced by a hair, shown "-0.00", not open.
    target.lat += 1e-9;
    r = Scan(target, OnlyCoChannel());
    EXPECT_LT(MinOf(r, 250), 0.0f);
    EXPECT_EQ(LineOf(r, 250), "250\t-0.00");
    EXPECT_EQ(r.openings, 100);
}

TEST_P(EngineTest, CancelStopsAtTheNextChannelAndKeepsTheListSorted) {
    for (int ch = 200; ch <= 300; ch += 3) master.AddFm({.channel = ch, .lat = NorthOf(ch - 150)});
    std::atomic<bool> abort{false};
    std::vector<std::string> texts;
    const ScanResult r = Scan(
        Target(), ScanOptions{},
        [&](const std::string& text) {
            texts.push_back(text);
            if (text == "Scanning channel 230") abort = true;
        },
        &abort);
    EXPECT_TRUE(r.aborted);
    EXPECT_EQ(r.status, "Scan aborted");
    ASSERT_EQ(r.lines.size(), 30u);  // 200..229
    EXPECT_TRUE(std::is_sorted(r.lines.begin(), r.lines.end(), [](const auto& x, const auto& y) {
        return ListLineClearance(x) > ListLineClearance(y);
    }));
    EXPECT_NE(ListLineClearance(r.lines.front()), ListLineClearance(r.lines.back()));
    ASSERT_EQ(texts.size(), 33u);
    EXPECT_EQ(texts.front(), "AutoScan for Class A");
    EXPECT_EQ(texts[1], "Scanning channel 200");
    EXPECT_EQ(texts.back(), "Scan aborted");
}

TEST_P(EngineTest, MissingTv6TableKeepsTheFmMinimumOfThatChannel) {
    master.AddFm({.channel = 253, .lat = NorthOf(200)});
    master.Db().Exec("DROP TABLE tv6_data");
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scoped(sink);
    ScanOptions o;
    const ScanResult r = Scan(Target(), o);
    EXPECT_NEAR(MinOf(r, 253), 200 - 115, 0.5);
    ASSERT_FALSE(sink.Reports().empty());
    EXPECT_EQ(sink.Reports().front().module, "frmAutoScan");
    EXPECT_EQ(sink.Reports().front().routine, GetParam() ? ":InitValues:" : ":FindMinClearance:");
}

TEST_P(EngineTest, MissingServiceColumnFailsEveryChannelAt350) {
    master.AddFm({.channel = 250, .lat = NorthOf(1)});
    master.Db().Exec("ALTER TABLE fm_data DROP COLUMN asd_service");
    master.AddTv6(NorthOf(1), Stored(kLon));
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scoped(sink);
    const ScanResult r = Scan(Target(), ScanOptions{});
    EXPECT_EQ(r.openings, 101);
    EXPECT_EQ(MinOf(r, 253), 350.0f);  // the failed FM query skips the TV6 check too
    EXPECT_FALSE(sink.Reports().empty());
}

INSTANTIATE_TEST_SUITE_P(Engines, EngineTest, ::testing::Values(false, true),
                         [](const auto& p) { return p.param ? "Fast" : "Reference"; });

}  // namespace
}  // namespace qarvel::studies
