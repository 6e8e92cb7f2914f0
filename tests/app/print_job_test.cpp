// Printing: the header and colour key texts, page counting, and real PDF
// files of the map and the grid.

#include "app/output/print_job.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>

#include "app/jobdisplay/job_controller.h"
#include "app/jobdisplay/job_display.h"
#include "app/mainwin/main_window.h"
#include "app_fixture.h"
#include "jobview/station_colors.h"
#include "spacing/class_codes.h"

namespace qarvel::app {
namespace {

namespace fs = std::filesystem;

std::string ReadAll(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// Page objects in a PDF ("/Type /Page", not "/Type /Pages").
int PdfPages(const std::string& pdf) {
    int pages = 0;
    for (std::size_t at = pdf.find("/Type /Page"); at != std::string::npos; at = pdf.find("/Type /Page", at + 1)) {
        if (pdf.compare(at, 12, "/Type /Pages") != 0) ++pages;
    }
    return pages;
}

PrintContent SampleContent() {
    PrintContent c;
    c.jobName = "omaha";
    c.masterSource = "app test master";
    c.comments = "app test";
    c.filter.target = {41.25, 96.0, 250, spacing::ClassIndex("C2"), -1};
    c.settings.scale = 1000000;
    return c;
}

TEST(PrintHeaderTest, LinesInTheirOrderWithTheTickedBoxes) {
    const std::vector<std::string> expected = {
        "Job: omaha",
        "Master Database: app test master",
        "Lat: +041:15:00 Lon: +096:00:00",
        "Scale: 1:1,000,000",
        "Channel: 250 : 97.9 MHz Class: C2",
        "Status: Licensed, Construction Permit, Application",
        "Channels: Primary, 1st Adj, 2nd Adj, 3rd Adj, IF",
        "Range: 20 km",
        "Comments: app test",
        "Description: Stations coloured by clearance",
    };
    EXPECT_EQ(HeaderLines(SampleContent()), expected);
    PrintContent other = SampleContent();
    other.filter.statusLI = false;
    other.filter.statusDE = true;
    other.filter.tv6 = true;
    other.filter.primary = false;
    other.filter.clearanceLimitKm = 12.5;
    const auto lines = HeaderLines(other);
    EXPECT_EQ(lines[5], "Status: Construction Permit, Application, Deleted");
    EXPECT_EQ(lines[6], "Channels: 1st Adj, 2nd Adj, 3rd Adj, IF, TV6");
    EXPECT_EQ(lines[7], "Range: 12.5 km");
}

TEST(PrintHeaderTest, ColourKeyFollowsTheColouring) {
    const auto clearance = ColourKey(jobview::StationColoring::Clearance);
    ASSERT_EQ(clearance.size(), 4u);
    EXPECT_EQ(clearance[0].first, "Short");
    EXPECT_EQ(clearance[1].first, "Close");
    EXPECT_EQ(clearance[1].second, jobview::kColorPrintedYellow);  // yellow is unreadable on paper
    EXPECT_EQ(clearance[3].first, "Short/Directional");
    const auto channel = ColourKey(jobview::StationColoring::Channel);
    ASSERT_EQ(channel.size(), 6u);
    EXPECT_EQ(channel[1].first, "1st Adj");
    EXPECT_EQ(channel[5].first, "TV6");
}

TEST(PrintHeaderTest, PagesAndDate) {
    EXPECT_EQ(PageText(2, 7), "Page 2 of 7");
    EXPECT_EQ(DateText(QDate(2024, 3, 9)), "Date: 2024-03-09");
    EXPECT_EQ(GridPageCount(0, 40), 1);
    EXPECT_EQ(GridPageCount(40, 40), 1);
    EXPECT_EQ(GridPageCount(41, 40), 2);
}

class PrintJobTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_window = std::make_unique<MainWindow>(m_context);
        m_window->show();
        ASSERT_TRUE(m_window->Controller().OpenJob(m_world.MakeJob()));
        ASSERT_TRUE(testing::WaitUntil([&] { return m_window->Display().RepaintCount() > 0; }));
    }
    void TearDown() override { m_window.reset(); }

    testing::AppWorld m_world;
    shell::ProgramContext m_context = m_world.Context();
    std::unique_ptr<MainWindow> m_window;
};

TEST_F(PrintJobTest, MapPrintsToOnePdfPageAtThePrintScale) {
    m_context.settings.gMapPrintScale = 500000;
    const PrintContent content = m_window->Display().ContentForPrint();
    EXPECT_TRUE(content.settings.printer);
    EXPECT_EQ(content.settings.scale, 500000);
    EXPECT_FALSE(content.scene.stations.empty());
    const fs::path pdf = m_world.Root() / "map.pdf";
    ASSERT_TRUE(PrintMapToPdf(content, pdf));
    const std::string bytes = ReadAll(pdf);
    EXPECT_EQ(bytes.rfind("%PDF", 0), 0u);
    EXPECT_EQ(PdfPages(bytes), 1);
    EXPECT_FALSE(fs::exists(m_world.Root() / "map.pdf.part"));
    EXPECT_TRUE(m_world.Prompt().Texts().empty());
}

TEST_F(PrintJobTest, LongGridPrintsPageByPage) {
    PrintContent content = m_window->Display().ContentForPrint();
    ASSERT_FALSE(content.grid.rows.empty());
    const auto rows = content.grid.rows;
    while (content.grid.rows.size() < 300) content.grid.rows.insert(content.grid.rows.end(), rows.begin(), rows.end());
    const fs::path pdf = m_world.Root() / "grid.pdf";
    ASSERT_TRUE(PrintGridToPdf(content, pdf));
    EXPECT_GT(PdfPages(ReadAll(pdf)), 1);
}

TEST_F(PrintJobTest, UnwritableTargetShowsPrintingError) {
    const fs::path pdf = m_world.Root() / "no such folder" / "map.pdf";
    EXPECT_FALSE(PrintMapToPdf(m_window->Display().ContentForPrint(), pdf));
    EXPECT_EQ(m_world.Prompt().Texts(), std::vector<std::string>{"Printing Error"});
    EXPECT_FALSE(fs::exists(pdf));
}

}  // namespace
}  // namespace qarvel::app
