// The search forms and the results view on the offscreen platform, against
// the test world's master database.

#include "app/search/search_forms.h"
#include "app/search/search_results.h"

#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "app_fixture.h"

namespace qarvel::app {
namespace {

TEST(BasicSearchFormTest, BuildsTheQueryOrSaysWhy) {
    testing::AppWorld world;
    BasicSearchForm none({});
    EXPECT_FALSE(none.Search());
    EXPECT_EQ(world.Prompt().Texts().back(), "No Current Database");

    BasicSearchForm form(world.MasterFdb());
    QString query;
    QObject::connect(&form, &BasicSearchForm::queryReady, [&](const QString& q, const QString&) { query = q; });
    form.findChild<QLineEdit*>(QStringLiteral("tbxChan"))->setText(QStringLiteral("303"));
    EXPECT_FALSE(form.Search());
    EXPECT_EQ(world.Prompt().Texts().back(), "Invalid channel number");
    form.findChild<QLineEdit*>(QStringLiteral("tbxChan"))->setText(QStringLiteral("250"));
    form.findChild<QLineEdit*>(QStringLiteral("tbxCallSign"))->setText(QStringLiteral("kc"));
    ASSERT_TRUE(form.Search());
    EXPECT_TRUE(query.endsWith(" AND fm_data.fac_callsign LIKE '*kc*' AND fm_data.station_channel = 250"));
}

TEST(AdvancedSearchFormTest, ClausesArchivesAndTheManualQuery) {
    testing::AppWorld world;
    AdvancedSearchForm form(world.MasterFdb());
    form.AddCondition(QStringLiteral("fm_data.station_channel"), QStringLiteral(" BETWEEN "), QStringLiteral("249"),
                      QStringLiteral("251"), false);
    form.AddOrder(QStringLiteral("fm_data.fac_callsign"), true);
    EXPECT_TRUE(form.ManualText().isEmpty());  // nothing until fields are chosen
    form.findChild<QListWidget*>(QStringLiteral("lst_fm_data"))->item(0)->setSelected(true);
    EXPECT_EQ(form.ManualText(), "SELECT fm_data.application_id FROM fm_data WHERE fm_data.station_channel BETWEEN 249 "
                                 "AND 251 ORDER BY fm_data.fac_callsign DESC;");

    const auto archive = world.Root() / "query.txt";
    ASSERT_TRUE(form.SaveArchive(archive));
    form.SetManualText(QStringLiteral("SELECT 1"));
    ASSERT_TRUE(form.OpenArchive(archive));
    EXPECT_TRUE(form.ManualText().startsWith("SELECT fm_data.application_id FROM fm_data"));
    std::ofstream(world.Root() / "other.txt") << "hello\r\nSELECT 2\r\n";
    EXPECT_FALSE(form.OpenArchive(world.Root() / "other.txt"));
    EXPECT_EQ(world.Prompt().Texts().back(), "Not a valid Query Archive!");
    EXPECT_TRUE(form.ManualText().startsWith("SELECT fm_data.application_id"));  // kept as it was
    EXPECT_FALSE(form.SaveArchive(world.Root() / "a>b.txt"));

    QString ran;
    QObject::connect(&form, &AdvancedSearchForm::queryReady, [&](const QString& q, const QString&) { ran = q; });
    form.SetManualText(QStringLiteral("  SELECT fac_callsign FROM fm_data;  "));
    form.RunQuery();
    EXPECT_EQ(ran, "SELECT fac_callsign FROM fm_data");
}

TEST(SearchResultsTest, RunsFiltersAndExports) {
    testing::AppWorld world;
    SearchResults results;
    results.Run(world.MasterFdb(), "SELECT fac_callsign AS [Callsign], station_channel AS [Channel] FROM fm_data",
                QStringLiteral("all"));
    ASSERT_TRUE(testing::WaitUntil([&] { return !results.Running(); }));
    const int all = results.ShownRows();
    EXPECT_GT(all, 5);
    results.SetFilter(QStringLiteral("kcoa"));
    EXPECT_EQ(results.ShownRows(), 1);
    const auto csv = world.Root() / "found.csv";
    ASSERT_TRUE(results.ExportCsv(csv));
    std::ifstream in(csv, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "Callsign,Channel\r\nKCOA,250\r\n");
    EXPECT_TRUE(results.ExportPdf(world.Root() / "found.pdf"));

    results.Run(world.MasterFdb(), "DELETE FROM fm_data", QStringLiteral("bad"));
    ASSERT_TRUE(testing::WaitUntil([&] { return !results.Running(); }));
    EXPECT_EQ(results.ShownRows(), 0);
}

}  // namespace
}  // namespace qarvel::app
