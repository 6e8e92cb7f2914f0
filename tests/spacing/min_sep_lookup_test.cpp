#include "spacing/min_sep.h"

#include <gtest/gtest.h>

#include <cmath>
#include <ostream>
#include <string>
#include <vector>

#include "core/error_trap.h"

namespace qarvel::spacing {
namespace {

// Class indices, spelled out so a test reads like the engineer's question.
constexpr int16_t L2 = 0, L1 = 1, A3 = 2, A1 = 3, A = 4, AA = 5, B1 = 6, B = 7, C3 = 8, C2 = 9,
                  C1 = 10, C0 = 11, C = 12, D = 13;
constexpr int16_t kCo = 0, kFirst = 1, kSecond = 2, kThird = 3, kIF = 4;

StationRec Target(int16_t stationClass, int16_t intlClass = -1, int16_t channel = 250) {
    StationRec rec;
    rec.lat = 40.0;
    rec.lon = 100.0;
    rec.station_channel = channel;
    rec.station_class = stationClass;
    rec.intl_class = intlClass;
    return rec;
}

StationRec Domestic(int16_t stationClass, int16_t relation, std::string state = "CO") {
    StationRec rec;
    rec.lat = 39.0;
    rec.station_class = stationClass;
    rec.relation = relation;
    rec.comm_state = std::move(state);
    return rec;
}

StationRec Foreign(int16_t intlClass, int16_t relation, double lat) {
    StationRec rec;
    rec.lat = lat;
    rec.border_code = "A";
    rec.station_class = -1;  // foreign stations carry only their international class
    rec.intl_class = intlClass;
    rec.relation = relation;
    return rec;
}

StationRec Tv6(int16_t zone) {
    StationRec rec;
    rec.service = "TV";
    rec.zone = zone;
    rec.station_class = -1;
    return rec;
}

const double kJustAbove37 = std::nextafter(37.0, 90.0);

// Readable test names and failure messages: each case prints as its name.
struct CaseName {
    template <class Case>
    std::string operator()(const ::testing::TestParamInfo<Case>& param) const {
        return param.param.name;
    }
};

struct LookupCase {
    const char* name;
    StationRec target;
    StationRec other;
    int16_t expectedKm;
    std::string expectedTable;       // "" when no table applies
    std::vector<int> expectedCell;   // indices in the table's documented order
};

void PrintTo(const LookupCase& c, std::ostream* os) { *os << c.name; }

class LookupMinSepTest : public ::testing::TestWithParam<LookupCase> {
protected:
    core::RecordingErrorSink m_sink;
    core::ScopedErrorSink m_scope{m_sink};
};

TEST_P(LookupMinSepTest, GivesSeparationAndCellWithoutError) {
    const LookupCase& c = GetParam();
    MinSepCell cell;
    EXPECT_EQ(LookupMinSep(c.target, c.other, &cell), c.expectedKm);
    EXPECT_EQ(cell.table, c.expectedTable);
    EXPECT_EQ(cell.indices, c.expectedCell);
    EXPECT_EQ(LookupMinSep(c.target, c.other), c.expectedKm) << "overload without cell";
    EXPECT_TRUE(m_sink.Reports().empty()) << m_sink.Reports().front().Text();
}

StationRec WithService(StationRec rec, std::string service) {
    rec.service = std::move(service);
    return rec;
}

StationRec WithBorder(StationRec rec, std::string border) {
    rec.border_code = std::move(border);
    return rec;
}

StationRec WithState(StationRec rec, std::string state) {
    rec.comm_state = std::move(state);
    return rec;
}

INSTANTIATE_TEST_SUITE_P(
    WorkedValues, LookupMinSepTest,
    ::testing::Values(
        LookupCase{"A_A_Co", Target(A), Domestic(A, kCo), 115, "MinSep", {A, A, kCo}},
        LookupCase{"C_C_Co", Target(C), Domestic(C, kCo), 290, "MinSep", {C, C, kCo}},
        LookupCase{"B_C1_Second", Target(B), Domestic(C1, kSecond), 79, "MinSep", {B, C1, kSecond}},
        LookupCase{"B_C1_Third", Target(B), Domestic(C1, kThird), 79, "MinSep", {B, C1, kThird}},
        // The grid is not symmetric for the low-power classes.
        LookupCase{"L1_L2_Co", Target(L1), Domestic(L2, kCo), 0, "MinSep", {L1, L2, kCo}},
        LookupCase{"L2_L1_Co", Target(L2), Domestic(L1, kCo), 16, "MinSep", {L2, L1, kCo}},
        LookupCase{"EducationalUsesSameTable", Target(A3),
                   WithService(Domestic(C0, kIF), "ED"), 25, "MinSep", {A3, C0, kIF}},
        LookupCase{"UnknownOtherClass", Target(A), Domestic(-1, kCo), 0, "", {}},
        // A blank other class wins over an out-of-range relation: no error.
        LookupCase{"UnknownOtherClassBadRelation", Target(A), Domestic(-1, 9), 0, "", {}}),
    CaseName{});

INSTANTIATE_TEST_SUITE_P(
    PuertoRicoVirginIslands, LookupMinSepTest,
    ::testing::Values(
        LookupCase{"L2_B_PR", Target(L2), Domestic(B, kCo, "PR"), 126, "MinSepPRVI", {L2, B, kCo}},
        LookupCase{"L1_D_VI_First", Target(L1), Domestic(D, kFirst, "VI"), 13, "MinSepPRVI",
                   {L1, D, kFirst}},
        LookupCase{"L1_A_PR_IF", Target(L1), Domestic(A, kIF, "PR"), 9, "MinSepPRVI", {L1, A, kIF}},
        // Only a low-power target uses the island grid.
        LookupCase{"A_A_PR", Target(A), Domestic(A, kCo, "PR"), 115, "MinSep", {A, A, kCo}},
        // The state code is compared exactly.
        LookupCase{"L2_B_LowerCasePr", Target(L2), Domestic(B, kCo, "pr"), 99, "MinSep",
                   {L2, B, kCo}},
        // A foreign station never reaches the island grid.
        LookupCase{"ForeignInPr", Target(L2), WithState(Foreign(A, kCo, 18.0), "PR"), 34,
                   "MinSepSouth", {L2, A, kCo}}),
    CaseName{});

INSTANTIATE_TEST_SUITE_P(
    International, LookupMinSepTest,
    ::testing::Values(
        // Exactly 37.0 is south, where a domestic "A" counts as "AA".
        LookupCase{"A_At37IsSouthAsAA", Target(A), Foreign(A, kCo, 37.0), 111, "MinSepSouth",
                   {AA, A, kCo}},
        LookupCase{"A_JustAbove37IsNorthAsA", Target(A), Foreign(A, kCo, kJustAbove37), 151,
                   "MinSepNorth", {A, A, kCo}},
        LookupCase{"A_Below37", Target(A), Foreign(B, kFirst, 32.5), 125, "MinSepSouth",
                   {AA, B, kFirst}},
        // "A1" and "AA" have no mapping case and read the "L2" row.
        LookupCase{"A1_North_L2Row", Target(A1), Foreign(A, kCo, 45.0), 53, "MinSepNorth",
                   {L2, A, kCo}},
        LookupCase{"A1_South_L2Row", Target(A1), Foreign(A, kCo, 30.0), 34, "MinSepSouth",
                   {L2, A, kCo}},
        LookupCase{"AA_South_L2Row", Target(AA), Foreign(B, kIF, 30.0), 11, "MinSepSouth",
                   {L2, B, kIF}},
        LookupCase{"C3_MapsToB1", Target(C3), Foreign(B1, kCo, 45.0), 197, "MinSepNorth",
                   {B1, B1, kCo}},
        LookupCase{"C0_MapsToC", Target(C0), Foreign(C, kCo, 30.0), 290, "MinSepSouth",
                   {C, C, kCo}},
        // The target's own international class takes precedence over mapping.
        LookupCase{"OwnIntlClassUsed", Target(D, B), Foreign(B, kCo, 45.0), 237, "MinSepNorth",
                   {B, B, kCo}},
        LookupCase{"NorthThirdDiffersFromSecond", Target(C, C), Foreign(C, kThird, 50.0), 113,
                   "MinSepNorth", {C, C, kThird}},
        LookupCase{"ForeignWithoutIntlClass", Target(A), Foreign(-1, kCo, 45.0), 0, "", {}},
        // Only the exact code "A" selects the international path.
        LookupCase{"LowerCaseBorderIsDomestic", Target(A), WithBorder(Domestic(A, kCo), "a"), 115,
                   "MinSep", {A, A, kCo}},
        LookupCase{"PaddedBorderIsDomestic", Target(A), WithBorder(Domestic(A, kCo), "A "), 115,
                   "MinSep", {A, A, kCo}}),
    CaseName{});

StationRec OnChannel(StationRec rec, int16_t channel) {
    rec.station_channel = channel;
    return rec;
}

INSTANTIATE_TEST_SUITE_P(
    TelevisionChannel6, LookupMinSepTest,
    ::testing::Values(
        LookupCase{"A_Zone0", Target(A), Tv6(0), 17, "MinSepTV6Zone", {A, 0}},
        LookupCase{"C0_Zone1", Target(C0), Tv6(1), 41, "MinSepTV6Zone", {C0, 1}},
        LookupCase{"D_NoRule", Target(D), Tv6(1), 0, "MinSepTV6Zone", {D, 1}},
        LookupCase{"L1_Ch201", Target(L1, -1, 201), Tv6(0), 219, "MinSepTV6Chan", {L1, 0}},
        LookupCase{"L2_Ch220", Target(L2, -1, 220), Tv6(1), 133, "MinSepTV6Chan", {L2, 19}},
        LookupCase{"L1_Ch221", Target(L1, -1, 221), Tv6(0), 0, "", {}},
        LookupCase{"L2_Ch200", Target(L2, -1, 200), Tv6(0), 0, "", {}},
        // A low-power target ignores the zone, so even a bad zone is harmless.
        LookupCase{"L1_Ch210_BadZone", OnChannel(Target(L1), 210), Tv6(7), 151, "MinSepTV6Chan",
                   {L1, 9}}),
    CaseName{});

INSTANTIATE_TEST_SUITE_P(
    OtherServices, LookupMinSepTest,
    ::testing::Values(
        LookupCase{"Am", Target(A), WithService(Domestic(A, kCo), "AM"), 0, "", {}},
        LookupCase{"LowerCaseFm", Target(A), WithService(Domestic(A, kCo), "fm"), 0, "", {}},
        LookupCase{"Empty", Target(A), WithService(Domestic(A, kCo), ""), 0, "", {}},
        // No table is consulted, so bad indices do not matter.
        LookupCase{"AmWithBadIndices", Target(-1), WithService(Domestic(20, 9), "AM"), 0, "", {}}),
    CaseName{});

struct SubscriptCase {
    const char* name;
    StationRec target;
    StationRec other;
};

void PrintTo(const SubscriptCase& c, std::ostream* os) { *os << c.name; }

class SubscriptErrorTest : public ::testing::TestWithParam<SubscriptCase> {
protected:
    core::RecordingErrorSink m_sink;
    core::ScopedErrorSink m_scope{m_sink};
};

TEST_P(SubscriptErrorTest, ReportedUnderModMinSepAndGivesZero) {
    MinSepCell cell{"stale", {1, 2, 3}};
    EXPECT_EQ(LookupMinSep(GetParam().target, GetParam().other, &cell), 0);
    EXPECT_EQ(cell.table, "");
    EXPECT_TRUE(cell.indices.empty());
    ASSERT_EQ(m_sink.Reports().size(), 1u);
    const core::ErrorReport report = m_sink.Reports()[0];
    EXPECT_EQ(report.module, "modMinSep");
    EXPECT_EQ(report.routine, ":LookupMinSep:");
    EXPECT_EQ(report.description, "Subscript out of range");

    EXPECT_EQ(LookupMinSep(GetParam().target, GetParam().other), 0);
    EXPECT_EQ(m_sink.Reports().size(), 2u) << "overload without cell reports too";
}

INSTANTIATE_TEST_SUITE_P(
    OutOfBounds, SubscriptErrorTest,
    ::testing::Values(
        SubscriptCase{"DomesticTargetClassUnknown", Target(-1), Domestic(A, kCo)},
        SubscriptCase{"DomesticOtherClassTooHigh", Target(A), Domestic(14, kCo)},
        SubscriptCase{"DomesticRelation5", Target(A), Domestic(A, 5)},
        SubscriptCase{"DomesticRelationNegative", Target(A), Domestic(A, -1)},
        SubscriptCase{"IslandRelation5", Target(L2), Domestic(A, 5, "VI")},
        SubscriptCase{"ForeignTargetDWithoutIntlClass", Target(D), Foreign(A, kCo, 45.0)},
        SubscriptCase{"ForeignTargetDSouth", Target(D), Foreign(A, kCo, 30.0)},
        SubscriptCase{"ForeignTargetUnknownClass", Target(-1), Foreign(A, kCo, 30.0)},
        SubscriptCase{"ForeignTargetIntlClassTooHigh", Target(A, 14), Foreign(A, kCo, 30.0)},
        SubscriptCase{"ForeignOtherIntlClassTooHigh", Target(A), Foreign(99, kCo, 45.0)},
        SubscriptCase{"ForeignRelation5", Target(A), Foreign(A, 5, 45.0)},
        SubscriptCase{"TvZone2", Target(A), Tv6(2)},
        SubscriptCase{"TvZoneNegative", Target(B), Tv6(-1)},
        SubscriptCase{"TvTargetClassUnknown", Target(-1), Tv6(0)}),
    CaseName{});

// Mapping of a target's domestic class to an international class when it
// has none, read back from the cell the lookup used.
struct MappingCase {
    const char* name;
    int16_t targetClass;
    int expectedNorth;
    int expectedSouth;
};

void PrintTo(const MappingCase& c, std::ostream* os) { *os << c.name; }

class IntlMappingTest : public ::testing::TestWithParam<MappingCase> {
protected:
    core::RecordingErrorSink m_sink;
    core::ScopedErrorSink m_scope{m_sink};
};

TEST_P(IntlMappingTest, MapsTargetClassPerSide) {
    MinSepCell cell;
    LookupMinSep(Target(GetParam().targetClass), Foreign(C, kCo, 45.0), &cell);
    ASSERT_EQ(cell.indices.size(), 3u);
    EXPECT_EQ(cell.indices[0], GetParam().expectedNorth);
    LookupMinSep(Target(GetParam().targetClass), Foreign(C, kCo, 37.0), &cell);
    ASSERT_EQ(cell.indices.size(), 3u);
    EXPECT_EQ(cell.indices[0], GetParam().expectedSouth);
    EXPECT_TRUE(m_sink.Reports().empty());
}

INSTANTIATE_TEST_SUITE_P(
    EveryClass, IntlMappingTest,
    ::testing::Values(MappingCase{"L2", L2, L2, L2}, MappingCase{"L1", L1, L1, L1},
                      MappingCase{"A3", A3, A, A}, MappingCase{"A1", A1, L2, L2},
                      MappingCase{"A", A, A, AA}, MappingCase{"AA", AA, L2, L2},
                      MappingCase{"B1", B1, B1, B1}, MappingCase{"B", B, B, B},
                      MappingCase{"C3", C3, B1, B1}, MappingCase{"C2", C2, B, B},
                      MappingCase{"C1", C1, C1, C1}, MappingCase{"C0", C0, C, C},
                      MappingCase{"C", C, C, C},
                      // Not a class at all: no case either, so the "L2" row.
                      MappingCase{"Class20", 20, L2, L2}),
    CaseName{});

TEST(LoadMinSepTables, RepeatedLoadsChangeNothing) {
    LoadMinSepTables();
    LoadMinSepTables();
    EXPECT_EQ(LookupMinSep(Target(C), Domestic(C, kCo)), 290);
}

TEST(LookupMinSep, NullCellIsAllowed) {
    EXPECT_EQ(LookupMinSep(Target(A), Domestic(A, kFirst), nullptr), 72);
}

}  // namespace
}  // namespace qarvel::spacing
