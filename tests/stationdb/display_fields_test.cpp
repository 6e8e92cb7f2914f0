#include "stationdb/display_fields.h"

#include <gtest/gtest.h>

#include <ostream>

#include <map>
#include <string>

namespace qarvel::stationdb {
namespace {

// A settings section held in memory, standing for the user's settings store.
struct MemorySettings {
    std::map<std::string, std::string> values;
    SettingsReader Reader() const {
        return [this](const std::string& key) -> std::optional<std::string> {
            auto it = values.find(key);
            if (it == values.end()) return std::nullopt;
            return it->second;
        };
    }
    SettingsWriter Writer() {
        return [this](const std::string& key, const std::string& value) { values[key] = value; };
    }
};

struct BoolCase {
    const char* name;
    const char* text;
    std::optional<bool> expected;
    friend void PrintTo(const BoolCase& c, std::ostream* os) { *os << c.name; }
};

class BoolTextTest : public testing::TestWithParam<BoolCase> {};

TEST_P(BoolTextTest, Converts) {
    EXPECT_EQ(ParseBoolText(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    DisplayFlags, BoolTextTest,
    testing::Values(BoolCase{"TrueWord", "True", true}, BoolCase{"FalseWord", "False", false},
                    BoolCase{"LowerCase", "true", true}, BoolCase{"Blanks", "  False ", false},
                    BoolCase{"MinusOne", "-1", true}, BoolCase{"One", "1", true},
                    BoolCase{"Zero", "0", false}, BoolCase{"Fraction", "0.5", true},
                    BoolCase{"ZeroFraction", "0.0", false}, BoolCase{"Large", "255", true},
                    BoolCase{"Empty", "", std::nullopt}, BoolCase{"Word", "yes", std::nullopt},
                    BoolCase{"Trailing", "1x", std::nullopt},
                    BoolCase{"Hex", "0x1", std::nullopt}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(IntegerText, RangeAndFormat) {
    EXPECT_EQ(ParseIntegerText("32767", -32768, 32767), 32767);
    EXPECT_EQ(ParseIntegerText("32768", -32768, 32767), std::nullopt);
    EXPECT_EQ(ParseIntegerText(" -5 ", -32768, 32767), -5);
    EXPECT_EQ(ParseIntegerText("+7", 0, 255), 7);
    EXPECT_EQ(ParseIntegerText("-1", 0, 255), std::nullopt);
    EXPECT_EQ(ParseIntegerText("12.5", 0, 255), std::nullopt);
    EXPECT_EQ(ParseIntegerText("", 0, 255), std::nullopt);
}

TEST(DisplayFieldCatalogue, StationGridWithNoSettingsShowsEveryColumnInOrder) {
    MemorySettings settings;
    DisplayFieldCatalogue catalogue = BuildStationGridCatalogue(settings.Reader());
    ASSERT_EQ(catalogue.fields.size(), 33U);
    EXPECT_TRUE(catalogue.built);
    auto visible = VisibleFieldsInOrder(catalogue);
    ASSERT_EQ(visible.size(), 33U);
    for (std::size_t i = 0; i < visible.size(); ++i) {
        EXPECT_EQ(visible[i].fieldName, catalogue.fields[i].fieldName);
        EXPECT_EQ(visible[i].width, 0);
    }
    EXPECT_EQ(catalogue.fields[0].fieldName, "party.party_name");
    EXPECT_EQ(catalogue.fields[0].caption, "Owner");
    EXPECT_EQ(catalogue.fields[25].caption, "Twr Reg #");
    EXPECT_EQ(catalogue.fields[16].caption, "73-215");
    EXPECT_EQ(catalogue.fields[5].type, "char(11)");
    EXPECT_EQ(catalogue.fields[32].fieldName, "fm_data.facility_id");
    EXPECT_EQ(catalogue.fields[32].type, "int");
}

TEST(DisplayFieldCatalogue, JobGridWithNoSettingsShowsEveryColumnInOrder) {
    MemorySettings settings;
    DisplayFieldCatalogue catalogue = BuildJobGridCatalogue(settings.Reader());
    ASSERT_EQ(catalogue.fields.size(), 21U);
    const char* names[] = {"fac_callsign", "latdms", "londms", "comm_city", "comm_state",
                           "Service", "channel_text", "station_class", "intl_class",
                           "fm_dom_status", "radius", "target_clearance", "horiz_erp",
                           "haat_horiz_rc_mtr", "adjacency", "target_distance",
                           "target_bearing", "party_name", "vert_erp", "asd_service",
                           "facility_id"};
    auto visible = VisibleFieldsInOrder(catalogue);
    ASSERT_EQ(visible.size(), 21U);
    for (std::size_t i = 0; i < 21; ++i) EXPECT_EQ(visible[i].fieldName, names[i]) << i;
    EXPECT_EQ(catalogue.fields[10].caption, "Min Separation");
    EXPECT_EQ(catalogue.fields[11].caption, "Clearance");
}

TEST(DisplayFieldCatalogue, KeysAreNumberedFromZeroSoGdisp0IsTheOwner) {
    MemorySettings settings;
    settings.values["gdisp0"] = "False";
    DisplayFieldCatalogue catalogue = BuildStationGridCatalogue(settings.Reader());
    EXPECT_FALSE(catalogue.fields[0].visible);
    EXPECT_TRUE(catalogue.fields[1].visible);
    EXPECT_EQ(StationGridSelectList(catalogue).rfind("fm_data.fac_callsign,", 0), 0U);
}

TEST(DisplayFieldCatalogue, SettingsReorderHideAndSizeColumns) {
    MemorySettings settings;
    // Show only callsign, channel and owner, with the owner last.
    for (int i = 0; i < 33; ++i) settings.values["gdisp" + std::to_string(i)] = "0";
    settings.values["gdisp0"] = "-1";
    settings.values["gdisp1"] = "True";
    settings.values["gdisp2"] = "1";
    settings.values["gdispOrdr0"] = "40";
    settings.values["gdispOrdr2"] = "0";
    settings.values["gColWidth1"] = "1200";
    settings.values["gColWidth2"] = "junk";  // unreadable: automatic width
    DisplayFieldCatalogue catalogue = BuildStationGridCatalogue(settings.Reader());
    EXPECT_EQ(StationGridSelectList(catalogue),
              "fm_data.station_channel,fm_data.fac_callsign,party.party_name");
    EXPECT_EQ(catalogue.fields[1].width, 1200);
    EXPECT_EQ(catalogue.fields[2].width, 0);
}

TEST(DisplayFieldCatalogue, PositionOutOfByteRangeFallsBackToIndex) {
    MemorySettings settings;
    settings.values["gMapdispOrdr3"] = "256";
    DisplayFieldCatalogue catalogue = BuildJobGridCatalogue(settings.Reader());
    EXPECT_EQ(catalogue.fields[3].position, 3);
}

TEST(DisplayFieldCatalogue, SaveWritesBackWhatBuildReads) {
    MemorySettings settings;
    settings.values["gMapdisp4"] = "False";
    settings.values["gMapdispOrdr4"] = "0";
    settings.values["gMapdispOrdr0"] = "4";
    settings.values["gMapColWidth7"] = "-3";
    DisplayFieldCatalogue first = BuildJobGridCatalogue(settings.Reader());

    MemorySettings copy;
    SaveCatalogue(first, copy.Writer());
    EXPECT_EQ(copy.values.size(), 63U);
    EXPECT_EQ(copy.values["gMapdisp4"], "False");
    EXPECT_EQ(copy.values["gMapdisp5"], "True");
    DisplayFieldCatalogue second = BuildJobGridCatalogue(copy.Reader());
    for (std::size_t i = 0; i < first.fields.size(); ++i) {
        EXPECT_EQ(second.fields[i].visible, first.fields[i].visible) << i;
        EXPECT_EQ(second.fields[i].position, first.fields[i].position) << i;
        EXPECT_EQ(second.fields[i].width, first.fields[i].width) << i;
    }
}

TEST(DisplayFieldCatalogue, UnbuiltCatalogueIsNotWritten) {
    MemorySettings settings;
    SaveCatalogue(JobGridDefaults(), settings.Writer());
    EXPECT_TRUE(settings.values.empty());
}

}  // namespace
}  // namespace qarvel::stationdb
