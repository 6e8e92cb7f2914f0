#include "shell/settings.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include "shell/program_context.h"

namespace qarvel::shell {
namespace {

class SettingsTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_dir.isValid());
        m_context.dataFolder = Path("program");
    }
    std::filesystem::path Path(const char* name) const {
        return std::filesystem::path(m_dir.path().toStdString()) / name;
    }
    std::unique_ptr<QSettings> Store(const char* name = "settings.ini") const {
        return OpenSettingsFile(Path(name));
    }
    static void Put(QSettings& store, const char* key, const char* value) {
        store.setValue(QStringLiteral("Standard/") + QString::fromLatin1(key),
                       QString::fromLatin1(value));
    }

    QTemporaryDir m_dir;
    ProgramContext m_context;
};

TEST_F(SettingsTest, AbsentKeysTakeTheirDefaults) {
    auto store = Store();
    ASSERT_TRUE(LoadSettings(*store, m_context));
    const ProgramSettings& s = m_context.settings;
    const std::string base = Path("program").generic_string();
    EXPECT_EQ(s.gDataDIR, base + "/Database");
    EXPECT_EQ(s.gJobDIR, base + "/Jobs");
    EXPECT_EQ(s.gToolDIR, base + "/Resources");
    EXPECT_EQ(s.iniFile, base + "/Resources/qarvel.ini");
    EXPECT_EQ(s.gDataFile, "");
    EXPECT_TRUE(s.gMapOptLatLon && s.gMapOptState && s.gMapOptCounty && s.gMapOptCities &&
                s.gMapOptMarkers && s.gMapOptCrosshair && s.gMapOptScale);
    EXPECT_FALSE(s.gMapOptReduceRadii);
    EXPECT_EQ(s.gMapCityCount, 20);
    EXPECT_EQ(s.gMapPrintScale, 1000000);
    EXPECT_FALSE(s.gDBoptLoadOnStartup);
    EXPECT_TRUE(s.gDBoptMRUDef && s.gDBoptUseLocal);
    EXPECT_EQ(s.gGPStgtColor, 0xFFFFFF);
    EXPECT_EQ(s.gInetAccess, 0);
    EXPECT_EQ(s, DefaultSettings(Path("program")));
}

// Option flags are true only for "1"; display flags accept boolean text.
TEST_F(SettingsTest, OptionFlagsAndDisplayFlagsConvertDifferently) {
    auto store = Store();
    Put(*store, "gMapOptScale", "True");
    Put(*store, "gMapOptState", "-1");
    Put(*store, "gMapOptCounty", "1");
    Put(*store, "gMapOptLatLon", " 1");
    Put(*store, "gMapOptReduceRadii", "1");
    Put(*store, "gdisp0", "True");
    Put(*store, "gdisp1", "-1");
    Put(*store, "gdisp2", "0");
    Put(*store, "gdisp3", "False");
    Put(*store, "gMapdisp0", "2");
    ASSERT_TRUE(LoadSettings(*store, m_context));
    ASSERT_TRUE(BuildCatalogues(*store, m_context));
    EXPECT_FALSE(m_context.settings.gMapOptScale);
    EXPECT_FALSE(m_context.settings.gMapOptState);
    EXPECT_TRUE(m_context.settings.gMapOptCounty);
    EXPECT_FALSE(m_context.settings.gMapOptLatLon);
    EXPECT_TRUE(m_context.settings.gMapOptReduceRadii);
    EXPECT_TRUE(m_context.stationGrid.fields[0].visible);
    EXPECT_TRUE(m_context.stationGrid.fields[1].visible);
    EXPECT_FALSE(m_context.stationGrid.fields[2].visible);
    EXPECT_FALSE(m_context.stationGrid.fields[3].visible);
    EXPECT_TRUE(m_context.jobGrid.fields[0].visible);
}

TEST_F(SettingsTest, UnreadableNumbersTakeTheirDefaults) {
    auto store = Store();
    Put(*store, "gMapCityCount", "many");
    Put(*store, "LastUpdate", "40000");            // beyond 16 bits
    Put(*store, "gMapPrintScale", "3000000000");   // beyond 32 bits
    Put(*store, "gGPStgtColor", "255");
    ASSERT_TRUE(LoadSettings(*store, m_context));
    EXPECT_EQ(m_context.settings.gMapCityCount, 20);
    EXPECT_EQ(m_context.settings.LastUpdate, 0);
    EXPECT_EQ(m_context.settings.gMapPrintScale, 1000000);
    EXPECT_EQ(m_context.settings.gGPStgtColor, 255);
}

TEST_F(SettingsTest, SaveThenLoadReadsBackIdentically) {
    auto store = Store();
    ASSERT_TRUE(LoadSettings(*store, m_context));
    ASSERT_TRUE(BuildCatalogues(*store, m_context));
    ProgramSettings& s = m_context.settings;
    s.gDataDIR = "/srv/fm/Database";
    s.gJobDIR = "/home/eng/jobs";
    s.gToolDIR = "/opt/qarvel/Resources";
    s.gDataFile = "east, 2024.fmd";  // a comma must survive the INI file
    s.LastUpdate = 42;
    s.gMapOptLatLon = false;
    s.gMapOptCities = false;
    s.gMapCityCount = 35;
    s.gMapOptReduceRadii = true;
    s.gMapPrintScale = 250000;
    s.gDBoptLoadOnStartup = true;
    s.gDBoptUseLocal = false;
    s.gGPStgtColor = 0x0000FF;
    s.gInetAccess = 2;
    s.gProxyServer = "proxy:8080";
    PushRecentFile(s, "/home/eng/jobs/b.fmj", "/srv/fm/Database/east.fmd");
    PushRecentFile(s, "/home/eng/jobs/a.fmj", "");
    m_context.stationGrid.fields[0].visible = false;
    m_context.stationGrid.fields[4].position = 9;
    m_context.stationGrid.fields[7].width = 1500;
    m_context.jobGrid.fields[20].visible = false;
    ASSERT_TRUE(SaveSettings(*store, m_context));

    auto reopened = Store();
    ProgramContext second;
    second.dataFolder = m_context.dataFolder;
    ASSERT_TRUE(LoadSettings(*reopened, second));
    ASSERT_TRUE(BuildCatalogues(*reopened, second));
    // iniFile is never written back, so it is derived from gToolDIR again.
    s.iniFile = "/opt/qarvel/Resources/qarvel.ini";
    EXPECT_EQ(second.settings, s);
    for (std::size_t i = 0; i < second.stationGrid.fields.size(); ++i) {
        EXPECT_EQ(second.stationGrid.fields[i].visible, m_context.stationGrid.fields[i].visible);
        EXPECT_EQ(second.stationGrid.fields[i].position, m_context.stationGrid.fields[i].position);
        EXPECT_EQ(second.stationGrid.fields[i].width, m_context.stationGrid.fields[i].width);
    }
    EXPECT_FALSE(second.jobGrid.fields[20].visible);
}

TEST_F(SettingsTest, ValuesAreStoredAsTextUnderTheStandardSection) {
    auto store = Store();
    ASSERT_TRUE(LoadSettings(*store, m_context));
    m_context.settings.gMapOptScale = false;
    ASSERT_TRUE(SaveSettings(*store, m_context));
    QFile file(QString::fromStdString(Path("settings.ini").string()));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    EXPECT_TRUE(text.contains(QStringLiteral("[Standard]")));
    EXPECT_TRUE(text.contains(QStringLiteral("gMapOptScale=0\n")));
    EXPECT_TRUE(text.contains(QStringLiteral("gMapOptCounty=1\n")));
    EXPECT_TRUE(text.contains(QStringLiteral("gMapPrintScale=1000000\n")));
    EXPECT_TRUE(text.contains(QStringLiteral("MRUFile5=\n")));
    EXPECT_FALSE(text.contains(QStringLiteral("iniFile")));
}

TEST_F(SettingsTest, CataloguesNotBuiltAreNotWritten) {
    auto store = Store();
    ASSERT_TRUE(LoadSettings(*store, m_context));
    Put(*store, "gMapdisp3", "False");
    ASSERT_TRUE(SaveSettings(*store, m_context));
    EXPECT_EQ(store->value(QStringLiteral("Standard/gMapdisp3")).toString(), "False");
    EXPECT_FALSE(store->contains(QStringLiteral("Standard/gMapdisp4")));
    EXPECT_FALSE(store->contains(QStringLiteral("Standard/gdisp0")));

    ASSERT_TRUE(BuildCatalogues(*store, m_context));
    ASSERT_TRUE(SaveSettings(*store, m_context));
    EXPECT_EQ(store->value(QStringLiteral("Standard/gMapdisp3")).toString(), "False");
    EXPECT_EQ(store->value(QStringLiteral("Standard/gMapdisp4")).toString(), "True");
    EXPECT_EQ(store->value(QStringLiteral("Standard/gdispOrdr32")).toString(), "32");
}

TEST_F(SettingsTest, RecentFilesMenuCaptionsAndHiddenEntries) {
    auto store = Store();
    Put(*store, "MRUFile1", "/jobs/north.fmj");
    Put(*store, "MRUConnect1", "/db/east.fmd");
    Put(*store, "MRUFile3", "/jobs/south.fmj");
    Put(*store, "MRUConnect2", "/db/orphan.fmd");  // no file 2: not read
    ASSERT_TRUE(LoadSettings(*store, m_context));
    const auto& menu = m_context.recentFiles;
    EXPECT_TRUE(menu[0].visible);
    EXPECT_EQ(menu[0].caption, "&1 /jobs/north.fmj");
    EXPECT_EQ(menu[0].connection, "/db/east.fmd");
    EXPECT_FALSE(menu[1].visible);
    EXPECT_EQ(m_context.settings.MRUConnect[1], "");
    EXPECT_TRUE(menu[2].visible);
    EXPECT_EQ(menu[2].caption, "&3 /jobs/south.fmj");
    EXPECT_FALSE(menu[3].visible);
    EXPECT_FALSE(menu[4].visible);
}

TEST(RecentFiles, PushMovesToTopAndKeepsFive) {
    ProgramSettings s;
    for (int i = 1; i <= 6; ++i) PushRecentFile(s, "job" + std::to_string(i), "db");
    EXPECT_EQ(s.MRUFile[0], "job6");
    EXPECT_EQ(s.MRUFile[4], "job2");
    PushRecentFile(s, "job4", "other");
    EXPECT_EQ(s.MRUFile[0], "job4");
    EXPECT_EQ(s.MRUConnect[0], "other");
    EXPECT_EQ(s.MRUFile[1], "job6");
    EXPECT_EQ(s.MRUFile[2], "job5");
    EXPECT_EQ(s.MRUFile[3], "job3");
    EXPECT_EQ(s.MRUFile[4], "job2");
}

TEST(ProgramContextValues, ToolbarKeysVersionAndPaths) {
    const auto& keys = ToolbarImageKeys();
    EXPECT_EQ(keys[0], "Fill");
    EXPECT_EQ(keys[11], "SrchBasic");
    EXPECT_EQ(keys[12], "SaveJob");
    EXPECT_EQ(keys[13], "SrchSQL");
    EXPECT_EQ(keys[20], "GPS");
    EXPECT_EQ(VersionText(VersionRecord{2, 7, 13}), "2.7.13");
    EXPECT_EQ(JoinPath("/a/b", "c"), "/a/b/c");
    EXPECT_EQ(JoinPath("/a/b/", "c"), "/a/b/c");
    EXPECT_EQ(JoinPath("", "c"), "c");
}

}  // namespace
}  // namespace qarvel::shell
