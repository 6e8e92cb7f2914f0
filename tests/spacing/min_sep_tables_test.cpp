// Checks of the separation tables themselves: against the regulator's
// published domestic table, against hand-copied cells, and for the
// structure every grid must have.

#include "spacing/min_sep_tables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "spacing/min_sep.h"

namespace qarvel::spacing {
namespace {

constexpr int16_t L2 = 0, L1 = 1, A3 = 2, A1 = 3, A = 4, AA = 5, B1 = 6, B = 7, C3 = 8, C2 = 9,
                  C1 = 10, C0 = 11, C = 12, D = 13;

// One line of the domestic table of 47 CFR 73.207(b)(1): minimum distances
// in km for co-channel, 200 kHz, 400/600 kHz and 10.6/10.8 MHz, which hold
// whichever class is the proposed one.
// Readable test names and failure messages: each case prints as its name.
struct CaseName {
    template <class Case>
    std::string operator()(const ::testing::TestParamInfo<Case>& param) const {
        return param.param.name;
    }
};

struct CfrRow {
    const char* name;
    int16_t first;
    int16_t second;
    int16_t co;
    int16_t adj200;
    int16_t adj400600;
    int16_t if106108;
};

void PrintTo(const CfrRow& c, std::ostream* os) { *os << c.name; }

class CfrDomesticTableTest : public ::testing::TestWithParam<CfrRow> {};

StationRec DomesticTarget(int16_t stationClass) {
    StationRec rec;
    rec.station_class = stationClass;
    return rec;
}

StationRec DomesticOther(int16_t stationClass, int16_t relation) {
    StationRec rec;
    rec.station_class = stationClass;
    rec.relation = relation;
    return rec;
}

TEST_P(CfrDomesticTableTest, LookupMatchesPublishedDistancesBothWays) {
    const CfrRow& row = GetParam();
    const int16_t expected[5] = {row.co, row.adj200, row.adj400600, row.adj400600, row.if106108};
    for (int16_t relation = 0; relation < 5; ++relation) {
        const int16_t want = expected[relation];
        EXPECT_EQ(LookupMinSep(DomesticTarget(row.first), DomesticOther(row.second, relation)), want)
            << "relation " << relation;
        EXPECT_EQ(LookupMinSep(DomesticTarget(row.second), DomesticOther(row.first, relation)), want)
            << "reversed, relation " << relation;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cfr73207, CfrDomesticTableTest,
    ::testing::Values(
        CfrRow{"A_A", A, A, 115, 72, 31, 10}, CfrRow{"A_B1", A, B1, 143, 96, 48, 12},
        CfrRow{"A_B", A, B, 178, 113, 69, 15}, CfrRow{"A_C3", A, C3, 142, 89, 42, 12},
        CfrRow{"A_C2", A, C2, 166, 106, 55, 15}, CfrRow{"A_C1", A, C1, 200, 133, 75, 22},
        CfrRow{"A_C0", A, C0, 215, 152, 86, 25}, CfrRow{"A_C", A, C, 226, 165, 95, 29},
        CfrRow{"B1_B1", B1, B1, 175, 114, 50, 14}, CfrRow{"B1_B", B1, B, 211, 145, 71, 17},
        CfrRow{"B1_C3", B1, C3, 175, 114, 50, 14}, CfrRow{"B1_C2", B1, C2, 200, 134, 56, 17},
        CfrRow{"B1_C1", B1, C1, 233, 161, 77, 24}, CfrRow{"B1_C0", B1, C0, 248, 180, 87, 27},
        CfrRow{"B1_C", B1, C, 259, 193, 105, 31}, CfrRow{"B_B", B, B, 241, 169, 74, 20},
        CfrRow{"B_C3", B, C3, 211, 145, 71, 17}, CfrRow{"B_C2", B, C2, 241, 169, 74, 20},
        CfrRow{"B_C1", B, C1, 270, 195, 79, 27}, CfrRow{"B_C0", B, C0, 272, 214, 89, 31},
        CfrRow{"B_C", B, C, 274, 217, 105, 35}, CfrRow{"C3_C3", C3, C3, 153, 99, 43, 14},
        CfrRow{"C3_C2", C3, C2, 177, 117, 56, 17}, CfrRow{"C3_C1", C3, C1, 211, 144, 76, 24},
        CfrRow{"C3_C0", C3, C0, 226, 163, 87, 27}, CfrRow{"C3_C", C3, C, 237, 176, 96, 31},
        CfrRow{"C2_C2", C2, C2, 190, 130, 58, 20}, CfrRow{"C2_C1", C2, C1, 224, 158, 79, 27},
        CfrRow{"C2_C0", C2, C0, 239, 176, 89, 31}, CfrRow{"C2_C", C2, C, 249, 188, 105, 35},
        CfrRow{"C1_C1", C1, C1, 245, 177, 82, 34}, CfrRow{"C1_C0", C1, C0, 259, 196, 94, 37},
        CfrRow{"C1_C", C1, C, 270, 209, 105, 41}, CfrRow{"C0_C0", C0, C0, 270, 207, 96, 41},
        CfrRow{"C0_C", C0, C, 281, 220, 105, 45}, CfrRow{"C_C", C, C, 290, 241, 105, 48}),
    CaseName{});

// Cells copied by hand, chosen where the regulator's table gives no check:
// the low-power and "A3" rows, the "D" column, the international and island
// grids and the channel 6 tables.
struct SpotCase {
    const char* name;
    int16_t value;
    int16_t expected;
};

void PrintTo(const SpotCase& c, std::ostream* os) { *os << c.name; }

class SpotValueTest : public ::testing::TestWithParam<SpotCase> {};

TEST_P(SpotValueTest, CellHoldsCopiedValue) { EXPECT_EQ(GetParam().value, GetParam().expected); }

// Table cell in the lookup's index order [target][other][relation].
int16_t Cell(const ClassTable& table, int16_t target, int16_t other, int16_t relation) {
    return table.at(static_cast<std::size_t>(relation))
        .at(static_cast<std::size_t>(target))
        .at(static_cast<std::size_t>(other));
}

int16_t Prvi(int16_t target, int16_t other, int16_t relation) {
    return MinSepPRVI.at(static_cast<std::size_t>(relation))
        .at(static_cast<std::size_t>(target))
        .at(static_cast<std::size_t>(other));
}

int16_t Chan(int16_t target, int channel) {
    return MinSepTV6Chan.at(static_cast<std::size_t>(target)).at(static_cast<std::size_t>(channel - 201));
}

int16_t Zone(int16_t target, int zone) {
    return MinSepTV6Zone.at(static_cast<std::size_t>(target)).at(static_cast<std::size_t>(zone));
}

INSTANTIATE_TEST_SUITE_P(
    HandCopied, SpotValueTest,
    ::testing::Values(
        SpotCase{"Dom_Co_L2_A3", Cell(MinSep, L2, A3, 0), 59},
        SpotCase{"Dom_Co_L2_B", Cell(MinSep, L2, B, 0), 99},
        SpotCase{"Dom_Co_L1_D", Cell(MinSep, L1, D, 0), 24},
        SpotCase{"Dom_Co_A3_A3", Cell(MinSep, A3, A3, 0), 105},
        SpotCase{"Dom_Co_A3_C", Cell(MinSep, A3, C, 0), 222},
        SpotCase{"Dom_Co_D_C", Cell(MinSep, D, C, 0), 0},
        SpotCase{"Dom_First_L2_C0", Cell(MinSep, L2, C0, 1), 99},
        SpotCase{"Dom_First_L1_D", Cell(MinSep, L1, D, 1), 13},
        SpotCase{"Dom_First_A3_C2", Cell(MinSep, A3, C2, 1), 105},
        SpotCase{"Dom_Second_L1_B1", Cell(MinSep, L1, B1, 2), 46},
        SpotCase{"Dom_Third_A3_A3", Cell(MinSep, A3, A3, 3), 27},
        SpotCase{"Dom_IF_L1_C", Cell(MinSep, L1, C, 4), 28},
        SpotCase{"Dom_IF_A3_C3", Cell(MinSep, A3, C3, 4), 12},
        SpotCase{"North_Co_A1_A1", Cell(MinSepNorth, A1, A1, 0), 78},
        SpotCase{"North_Co_C_C", Cell(MinSepNorth, C, C, 0), 306},
        SpotCase{"North_Co_L1_C1", Cell(MinSepNorth, L1, C1, 0), 113},
        SpotCase{"North_First_L1_A1", Cell(MinSepNorth, L1, A1, 1), 30},
        SpotCase{"North_First_C1_C", Cell(MinSepNorth, C1, C, 1), 230},
        SpotCase{"North_Second_B_B", Cell(MinSepNorth, B, B, 2), 94},
        SpotCase{"North_Third_B_B", Cell(MinSepNorth, B, B, 3), 74},
        SpotCase{"North_IF_B1_B1", Cell(MinSepNorth, B1, B1, 4), 24},
        SpotCase{"North_IF_A1_C", Cell(MinSepNorth, A1, C, 4), 26},
        SpotCase{"North_IF_L1_A", Cell(MinSepNorth, L1, A, 4), 7},
        SpotCase{"South_Co_AA_AA", Cell(MinSepSouth, AA, AA, 0), 115},
        SpotCase{"South_Co_B_C", Cell(MinSepSouth, B, C, 0), 270},
        SpotCase{"South_Co_L2_AA", Cell(MinSepSouth, L2, AA, 0), 39},
        SpotCase{"South_First_B_AA", Cell(MinSepSouth, B, AA, 1), 125},
        SpotCase{"South_First_C_C", Cell(MinSepSouth, C, C, 1), 228},
        SpotCase{"South_Second_L2_A", Cell(MinSepSouth, L2, A, 2), 24},
        SpotCase{"South_Third_L2_A", Cell(MinSepSouth, L2, A, 3), 25},
        SpotCase{"South_Second_B_B", Cell(MinSepSouth, B, B, 2), 65},
        SpotCase{"South_IF_L1_C", Cell(MinSepSouth, L1, C, 4), 27},
        SpotCase{"South_IF_AA_AA", Cell(MinSepSouth, AA, AA, 4), 10},
        SpotCase{"Prvi_Co_L2_B", Prvi(L2, B, 0), 126},
        SpotCase{"Prvi_Co_L1_L2", Prvi(L1, L2, 0), 0},
        SpotCase{"Prvi_First_L2_C0", Prvi(L2, C0, 1), 99},
        SpotCase{"Prvi_IF_L1_D", Prvi(L1, D, 4), 3},
        SpotCase{"Tv6Zone_B_1", Zone(B, 1), 26},
        SpotCase{"Tv6Zone_C1_0", Zone(C1, 0), 29},
        SpotCase{"Tv6Zone_L2_0", Zone(L2, 0), 0},
        SpotCase{"Tv6Chan_L2_201", Chan(L2, 201), 171},
        SpotCase{"Tv6Chan_L1_212", Chan(L1, 212), 149},
        SpotCase{"Tv6Chan_L1_220", Chan(L1, 220), 136},
        SpotCase{"Tv6Chan_L2_218", Chan(L2, 218), 134}),
    CaseName{});

TEST(TableStructure, SecondAndThirdAdjacentIdenticalInDomesticAndIslandTables) {
    EXPECT_EQ(MinSep[2], MinSep[3]);
    EXPECT_EQ(MinSepPRVI[2], MinSepPRVI[3]);
}

// The international grids follow the neighbours' agreements, whose 2nd- and
// 3rd-adjacent distances are not the same: the northern one differs in every
// cell with a rule (3rd always the smaller), the southern one in a single
// cell of the "L2" row.
TEST(TableStructure, InternationalSecondAndThirdAdjacentDifferAsPublished) {
    for (std::size_t t = 0; t < kClassCount; ++t) {
        for (std::size_t o = 0; o < kClassCount; ++o) {
            const int16_t second = MinSepNorth[2][t][o];
            const int16_t third = MinSepNorth[3][t][o];
            EXPECT_EQ(second == 0, third == 0) << t << "," << o;
            if (second != 0) {
                EXPECT_LT(third, second) << t << "," << o;
            }
            if (t != static_cast<std::size_t>(L2) || o != static_cast<std::size_t>(A)) {
                EXPECT_EQ(MinSepSouth[2][t][o], MinSepSouth[3][t][o]) << t << "," << o;
            }
        }
    }
}

// Every cell outside the classes a table serves must be empty: a value there
// means a row or column slipped when the grid was edited.
void ExpectRulesOnlyFor(const ClassTable& table, const std::vector<int16_t>& rows,
                        const std::vector<int16_t>& columns, const char* name) {
    auto has = [](const std::vector<int16_t>& set, std::size_t i) {
        return std::find(set.begin(), set.end(), static_cast<int16_t>(i)) != set.end();
    };
    for (std::size_t r = 0; r < kRelationCount; ++r) {
        for (std::size_t t = 0; t < kClassCount; ++t) {
            for (std::size_t o = 0; o < kClassCount; ++o) {
                if (!has(rows, t) || !has(columns, o)) {
                    EXPECT_EQ(table[r][t][o], 0) << name << " [" << t << "][" << o << "][" << r << "]";
                }
            }
        }
    }
}

TEST(TableStructure, DomesticGridsHaveNoA1OrAAClasses) {
    const std::vector<int16_t> domestic = {L2, L1, A3, A, B1, B, C3, C2, C1, C0, C, D};
    ExpectRulesOnlyFor(MinSep, domestic, domestic, "MinSep");
    for (const LowPowerGrid& grid : MinSepPRVI) {
        for (const Row& row : grid) {
            EXPECT_EQ(row[A3], 0);
            EXPECT_EQ(row[A1], 0);
            EXPECT_EQ(row[AA], 0);
        }
    }
}

TEST(TableStructure, InternationalGridsOnlyForNeighbourClasses) {
    ExpectRulesOnlyFor(MinSepNorth, {L2, L1, A1, A, B1, B, C1, C}, {A1, A, B1, B, C1, C},
                       "MinSepNorth");
    ExpectRulesOnlyFor(MinSepSouth, {L2, L1, A, AA, B1, B, C1, C}, {A, AA, B1, B, C1, C},
                       "MinSepSouth");
}

TEST(TableStructure, InternationalGridsSymmetricBetweenFullPowerClasses) {
    // Unlike the low-power rows, the agreements' distances hold whichever
    // station is the proposed one.
    for (std::size_t r = 0; r < kRelationCount; ++r) {
        for (std::size_t t = A1; t < kClassCount; ++t) {
            for (std::size_t o = A1; o < kClassCount; ++o) {
                EXPECT_EQ(MinSepNorth[r][t][o], MinSepNorth[r][o][t]) << t << "," << o << "," << r;
                EXPECT_EQ(MinSepSouth[r][t][o], MinSepSouth[r][o][t]) << t << "," << o << "," << r;
            }
        }
    }
}

TEST(TableStructure, Tv6ChannelDistancesFallWithChannelAndLowPowerL1NeedsMore) {
    for (std::size_t i = 1; i < kTv6ChannelCount; ++i) {
        EXPECT_LE(MinSepTV6Chan[0][i], MinSepTV6Chan[0][i - 1]) << i;
        EXPECT_LE(MinSepTV6Chan[1][i], MinSepTV6Chan[1][i - 1]) << i;
    }
    for (std::size_t i = 0; i < kTv6ChannelCount; ++i) {
        EXPECT_GE(MinSepTV6Chan[1][i], MinSepTV6Chan[0][i]) << i;
    }
}

}  // namespace
}  // namespace qarvel::spacing
