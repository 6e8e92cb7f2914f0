#include "spacing/class_codes.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace qarvel::spacing {
namespace {

// Readable test names and failure messages: each case prints as its name.
struct CaseName {
    template <class Case>
    std::string operator()(const ::testing::TestParamInfo<Case>& param) const {
        return param.param.name;
    }
};

struct ClassIndexCase {
    const char* name;
    std::string text;
    int16_t expected;
};

void PrintTo(const ClassIndexCase& c, std::ostream* os) { *os << c.name; }

class ClassIndexTest : public ::testing::TestWithParam<ClassIndexCase> {};

TEST_P(ClassIndexTest, MatchesTrimmedUpperCaseText) {
    EXPECT_EQ(ClassIndex(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ClassIndexTest,
    ::testing::Values(ClassIndexCase{"LowerCase", "a", 4},
                      ClassIndexCase{"PaddedBothSides", " A ", 4},
                      ClassIndexCase{"TrailingBlanksOfFixedField", "C1  ", 10},
                      ClassIndexCase{"LowPowerL2", "l2", 0},
                      ClassIndexCase{"TwoLettersNotPrefix", "AA", 5},
                      ClassIndexCase{"LastEntry", "d", 13},
                      ClassIndexCase{"ZeroNotLetterO", "C0", 11},
                      ClassIndexCase{"LetterONotZero", "CO", -1},
                      ClassIndexCase{"Hyphenated", "A-1", -1},
                      ClassIndexCase{"InnerBlank", "C 1", -1},
                      ClassIndexCase{"Empty", "", -1},
                      // Entry 0 is " " but is never matched: blank means unknown.
                      ClassIndexCase{"BlankEntry", " ", -1},
                      ClassIndexCase{"Unknown", "E", -1}),
    CaseName{});

TEST(ClassIndex, EveryClassNameRoundTrips) {
    for (int16_t i = 0; i < 14; ++i) {
        EXPECT_EQ(ClassIndex(ClassName[static_cast<std::size_t>(i + 1)]), i) << i;
    }
}

TEST(ClassName, TextsInIndexOrder) {
    const std::array<std::string, 15> expected = {
        " ", "L2", "L1", "A3", "A1", "A", "AA", "B1", "B", "C3", "C2", "C1", "C0", "C", "D"};
    EXPECT_EQ(ClassName, expected);
}

TEST(RelName, TextsInRelationOrderWithTv6Label) {
    const std::array<std::string, 7> expected = {
        "", "Primary", "1st Adj", "2nd Adj", "3rd Adj", "IF", "TV6"};
    EXPECT_EQ(RelName, expected);
}

struct RelationCase {
    const char* name;
    int target;
    int other;
    int16_t expected;
};

void PrintTo(const RelationCase& c, std::ostream* os) { *os << c.name; }

class RelationFromChannelsTest : public ::testing::TestWithParam<RelationCase> {};

TEST_P(RelationFromChannelsTest, ClassifiesChannelDifference) {
    EXPECT_EQ(RelationFromChannels(GetParam().target, GetParam().other), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Differences, RelationFromChannelsTest,
    ::testing::Values(RelationCase{"CoChannel", 250, 250, 0},
                      RelationCase{"Plus1", 250, 251, 1},
                      RelationCase{"Minus1", 250, 249, 1},
                      RelationCase{"Plus2", 250, 252, 2},
                      RelationCase{"Minus2", 250, 248, 2},
                      RelationCase{"Plus3", 250, 253, 3},
                      RelationCase{"Minus3", 250, 247, 3},
                      RelationCase{"Plus53", 201, 254, 4},
                      RelationCase{"Plus54", 201, 255, 4},
                      RelationCase{"Minus53", 300, 247, 4},
                      RelationCase{"Minus54", 300, 246, 4},
                      RelationCase{"Plus4None", 250, 254, -1},
                      RelationCase{"Minus4None", 250, 246, -1},
                      RelationCase{"Plus52None", 201, 253, -1},
                      RelationCase{"Plus55None", 201, 256, -1},
                      RelationCase{"Minus52None", 300, 248, -1},
                      RelationCase{"Minus55None", 300, 245, -1},
                      RelationCase{"FarApartNone", 200, 300, -1},
                      RelationCase{"ExtremeValuesNone", -2147483647 - 1, 2147483647, -1}),
    CaseName{});

struct ZoneCase {
    const char* name;
    std::string text;
    int16_t expected;
};

void PrintTo(const ZoneCase& c, std::ostream* os) { *os << c.name; }

class ZoneIndexTest : public ::testing::TestWithParam<ZoneCase> {};

TEST_P(ZoneIndexTest, OneOnlyForTrimmedTextOne) {
    EXPECT_EQ(ZoneIndex(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Cases, ZoneIndexTest,
                         ::testing::Values(ZoneCase{"One", "1", 1}, ZoneCase{"PaddedOne", " 1  ", 1},
                                           ZoneCase{"Two", "2", 0}, ZoneCase{"Empty", "", 0},
                                           ZoneCase{"LeadingZero", "01", 0},
                                           ZoneCase{"RomanOne", "I", 0},
                                           ZoneCase{"OneA", "1A", 0}),
                         CaseName{});

}  // namespace
}  // namespace qarvel::spacing
