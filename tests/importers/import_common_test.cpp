// Field conversions and the record reader shared by the importers.

#include "importers/import_common.h"
#include "importers/import_reader.h"
#include "stationdb/field_text.h"

#include "support/db_test_support.h"

#include <gtest/gtest.h>

namespace qarvel::importers {
namespace {

using namespace qarvel::testing_support;

struct CoordinateCase {
    const char* name;
    double degrees;
    int stored;
};

class StoredCoordinateTest : public ::testing::TestWithParam<CoordinateCase> {};

TEST_P(StoredCoordinateTest, TruncatesTowardZero) {
    EXPECT_EQ(stationdb::StoredCoordinate(GetParam().degrees), GetParam().stored);
}

INSTANTIATE_TEST_SUITE_P(
    Values, StoredCoordinateTest,
    ::testing::Values(CoordinateCase{"Whole", 40.75, 586800}, CoordinateCase{"BinaryRoundingBelow", 0.7, 10080},
                      CoordinateCase{"JustBelowAUnit", 77.206944, 1111779},
                      CoordinateCase{"NegativeTowardZero", -77.206944, -1111779},
                      CoordinateCase{"QuarterSecond", 1.0 / 14400.0, 1}, CoordinateCase{"BelowAQuarterSecond", 1.0 / 57600.0, 0}, CoordinateCase{"Zero", 0.0, 0}),
    [](const auto& testInfo) { return std::string(testInfo.param.name); });

TEST(StoredFromDmsTest, ConvertsInQuarterSecondsAndChecksRanges) {
    EXPECT_EQ(stationdb::StoredFromDms(37, 22, 8.0, false), 538112);  // 37*14400 + 22*240 + 32
    EXPECT_EQ(stationdb::StoredFromDms(122, 5, 2.0, false), 1758008);
    EXPECT_EQ(stationdb::StoredFromDms(37, 22, 7.43, false), 538109);  // 29.72 quarter seconds truncated
    EXPECT_EQ(stationdb::StoredFromDms(14, 19, 21.0, true), -206244);  // south
    EXPECT_EQ(stationdb::StoredFromDms(144, 49, 53.0, true), -2085572);  // east of Greenwich
    EXPECT_EQ(stationdb::StoredFromDms(40, 60, 0, false), std::nullopt);
    EXPECT_EQ(stationdb::StoredFromDms(40, 0, 60, false), std::nullopt);
    EXPECT_EQ(stationdb::StoredFromDms(181, 0, 0, false), std::nullopt);
}

TEST(ParseNumberTest, TakesWholeFieldsOnly) {
    EXPECT_EQ(stationdb::ParseNumber(" 6.  "), 6.0);
    EXPECT_EQ(stationdb::ParseNumber("-75.0"), -75.0);
    EXPECT_EQ(stationdb::ParseNumber(".5"), 0.5);
    EXPECT_EQ(stationdb::ParseNumber("+2"), 2.0);
    EXPECT_EQ(stationdb::ParseNumber("-"), std::nullopt);
    EXPECT_EQ(stationdb::ParseNumber("12abc"), std::nullopt);
    EXPECT_EQ(stationdb::ParseNumber("1,5"), std::nullopt);
    EXPECT_EQ(stationdb::ParseNumber(""), std::nullopt);
    EXPECT_EQ(stationdb::ParseInteger("285006"), 285006);
    EXPECT_EQ(stationdb::ParseInteger("-1"), -1);
    EXPECT_EQ(stationdb::ParseInteger("2.5"), std::nullopt);
}

TEST(ParseRegulatorDateTest, ReadsMonthDayYear) {
    EXPECT_EQ(stationdb::ParseRegulatorDate("05/11/1999"), "1999-05-11");
    EXPECT_EQ(stationdb::ParseRegulatorDate("2/29/2000"), "2000-02-29");
    EXPECT_EQ(stationdb::ParseRegulatorDate("02/29/1900"), std::nullopt);  // not a leap year
    EXPECT_EQ(stationdb::ParseRegulatorDate("13/01/2000"), std::nullopt);
    EXPECT_EQ(stationdb::ParseRegulatorDate("2016-06-01 00:00:00"), "2016-06-01");
    EXPECT_EQ(stationdb::ParseRegulatorDate(""), std::nullopt);
    EXPECT_EQ(stationdb::ParseRegulatorDate("1999"), std::nullopt);
}

TEST(ChannelFromFrequencyTest, CoversTheBandAndNothingElse) {
    EXPECT_EQ(stationdb::ChannelFromFrequency(87.9), 200);
    EXPECT_EQ(stationdb::ChannelFromFrequency(88.1), 201);
    EXPECT_EQ(stationdb::ChannelFromFrequency(107.9), 300);
    EXPECT_EQ(stationdb::ChannelFromFrequency(98.11), 251);
    EXPECT_EQ(stationdb::ChannelFromFrequency(98.0), std::nullopt);  // between channels
    EXPECT_EQ(stationdb::ChannelFromFrequency(87.7), std::nullopt);
    EXPECT_EQ(stationdb::ChannelFromFrequency(108.1), std::nullopt);
    EXPECT_EQ(stationdb::ChannelFromFrequency(1e30), std::nullopt);
}

TEST(TextEncodingTest, Latin1AndCodePage1252BecomeUtf8) {
    EXPECT_EQ(stationdb::Latin1ToUtf8("CAF\xC9"), "CAF\xC3\x89");
    EXPECT_EQ(stationdb::Latin1ToUtf8("\x93Q\x94"), "\xE2\x80\x9CQ\xE2\x80\x9D");  // curly quotes
    EXPECT_EQ(stationdb::TextToUtf8("CAF\xC3\x89"), "CAF\xC3\x89");             // already UTF-8
    EXPECT_EQ(stationdb::TextToUtf8("CAF\xC9"), "CAF\xC3\x89");
    EXPECT_FALSE(stationdb::IsValidUtf8("\xC3"));
    EXPECT_TRUE(stationdb::IsValidUtf8("plain"));
}

struct CountryCase {
    const char* callSign;
    const char* state;
    stationdb::StationCountry country;
};

class CountryOfStationTest : public ::testing::TestWithParam<CountryCase> {};

TEST_P(CountryOfStationTest, DecidesByProvinceThenCallSign) {
    EXPECT_EQ(stationdb::CountryOfStation(GetParam().callSign, GetParam().state), GetParam().country)
        << GetParam().callSign << " " << GetParam().state;
}

INSTANTIATE_TEST_SUITE_P(
    Stations, CountryOfStationTest,
    ::testing::Values(CountryCase{"KSFH", "CA", stationdb::StationCountry::US},  // CA is California here
                      CountryCase{"WAAA", "ON", stationdb::StationCountry::Canada},
                      CountryCase{"CBBBFM", "", stationdb::StationCountry::Canada},
                      CountryCase{"VF2507", "BC", stationdb::StationCountry::Canada},
                      CountryCase{"CKBN", "QU", stationdb::StationCountry::Canada},
                      CountryCase{"XHCERFM", "NL", stationdb::StationCountry::Mexico},
                      CountryCase{"NEW-FM", "SO", stationdb::StationCountry::Mexico},
                      CountryCase{"ZCBN", "BV", stationdb::StationCountry::Other},
                      CountryCase{"", "PR", stationdb::StationCountry::US}));

TEST_F(TempFolderTest, CaretRecordsMayHoldLineBreaks) {
    const fs::path file = Root() / "d.dat";
    WriteAll(file, "1|A|^|\r\n2|two\r\nlines|^|\r\n\r\n3||^|");
    DelimitedReader reader(file, DelimitedFormat{'|', false, true});
    std::vector<std::string> fields;
    ASSERT_TRUE(reader.Next(fields));
    EXPECT_EQ(fields, (std::vector<std::string>{"1", "A"}));
    ASSERT_TRUE(reader.Next(fields));
    EXPECT_EQ(fields, (std::vector<std::string>{"2", "two\nlines"}));
    EXPECT_EQ(reader.RecordLine(), 2u);
    ASSERT_TRUE(reader.Next(fields));
    EXPECT_EQ(fields, (std::vector<std::string>{"3", ""}));
    EXPECT_EQ(reader.RecordLine(), 5u);
    EXPECT_FALSE(reader.Next(fields));
}

TEST_F(TempFolderTest, CaretFileCutOffInARecordFails) {
    const fs::path file = Root() / "d.dat";
    WriteAll(file, "1|A|^|\n2|B");
    DelimitedReader reader(file, DelimitedFormat{'|', false, true});
    std::vector<std::string> fields;
    ASSERT_TRUE(reader.Next(fields));
    try {
        reader.Next(fields);
        FAIL() << "no failure";
    } catch (const ImportFailure& e) {
        EXPECT_STREQ(e.what(), "d.dat:2: the file ends in the middle of a record (no |^| terminator; cut off?)");
    }
}

TEST_F(TempFolderTest, QuotedFieldsHoldDelimitersAndQuotes) {
    const fs::path file = Root() / "q.csv";
    WriteAll(file, "a,\"b,c\",\"say \"\"hi\"\"\",\"two\r\nlines\"\nlast,x");
    DelimitedReader reader(file, DelimitedFormat{',', true, false});
    std::vector<std::string> fields;
    ASSERT_TRUE(reader.Next(fields));
    EXPECT_EQ(fields, (std::vector<std::string>{"a", "b,c", "say \"hi\"", "two\nlines"}));
    EXPECT_TRUE(reader.RecordTerminated());
    ASSERT_TRUE(reader.Next(fields));
    EXPECT_EQ(fields, (std::vector<std::string>{"last", "x"}));
    EXPECT_EQ(reader.RecordLine(), 3u);
    EXPECT_FALSE(reader.RecordTerminated());
}

TEST(HeaderMapTest, MatchesSpellingsWithoutCaseOrSeparators) {
    const HeaderMap header({"\xEF\xBB\xBF" "Call Sign", "FREQUENCY_MHZ", "lat"});
    EXPECT_EQ(header.Find({"callsign"}), 0u);
    EXPECT_EQ(header.Find({"frequency-mhz"}), 1u);
    EXPECT_EQ(header.Find({"latitude", "lat"}), 2u);
    EXPECT_EQ(header.Find({"longitude"}), std::nullopt);
    EXPECT_THROW(header.Require({"longitude", "lon"}, "x.csv"), ImportFailure);
}

}  // namespace
}  // namespace qarvel::importers
