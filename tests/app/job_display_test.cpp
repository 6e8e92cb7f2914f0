// The job display on a real job: loading, the deferred rebuild, sliders,
// toolbar switches, sorting, recentring, the mouse read-outs and the grid's
// columns written back to the catalogue.

#include "app/jobdisplay/job_display.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QMouseEvent>
#include <QSlider>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

#include <memory>

#include "app/mainwin/display_texts.h"
#include "app/jobdisplay/filter_panel.h"
#include "app/jobdisplay/grid_model.h"
#include "app/jobdisplay/job_controller.h"
#include "app/jobdisplay/job_grid.h"
#include "app/mainwin/main_actions.h"
#include "app/mainwin/main_window.h"
#include "app/jobdisplay/map_widget.h"
#include "app/jobdisplay/redraw_scheduler.h"
#include "app_fixture.h"
#include "shell/settings.h"
#include "geodesy/geodesy.h"
#include "spacing/class_codes.h"
#include "stationdb/database.h"

namespace qarvel::app {
namespace {

using testing::WaitUntil;

class JobDisplayTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_fmj = m_world.MakeJob();
        m_window = std::make_unique<MainWindow>(m_context);
        m_window->resize(1200, 800);
        m_window->show();
        ASSERT_TRUE(m_window->Controller().OpenJob(m_fmj));
        ASSERT_TRUE(WaitUntil([&] { return Display().RepaintCount() > 0; }));
    }
    void TearDown() override { m_window.reset(); }

    JobDisplay& Display() const { return m_window->Display(); }
    FilterPanel& Panel() const { return *Display().Panel(); }
    GridModel& Grid() const { return *Display().Grid()->Model(); }
    template <class T>
    T* Find(const char* name) const {
        return Display().findChild<T*>(QString::fromLatin1(name));
    }
    // Waits for the rebuild after `before` and for the repaint after it.
    bool WaitRebuild(int before) {
        return WaitUntil([&] { return Display().RebuildCount() > before && !Display().Scheduler().Timer().isActive(); },
                         4000);
    }
    std::vector<QString> Column(const QString& caption) const {
        std::vector<QString> cells;
        const int c = Grid().ColumnOfCaption(caption);
        for (int r = 0; r < Grid().rowCount(); ++r) cells.push_back(Grid().CellText(r, c));
        return cells;
    }
    std::int64_t Count(const std::string& sql) const {
        stationdb::Database db(Display().Paths().tdb, stationdb::OpenMode::ReadOnly);
        stationdb::Statement s = db.Prepare(sql);
        s.Step();
        return s.GetInt64(0);
    }
    void SendMouse(QEvent::Type type, QPointF at, Qt::MouseButton button, Qt::MouseButtons buttons) {
        QWidget* map = Display().Map();
        QMouseEvent event(type, at, map->mapToGlobal(at), button, buttons, Qt::NoModifier);
        QApplication::sendEvent(map, &event);
    }

    testing::AppWorld m_world;
    shell::ProgramContext m_context = m_world.Context();
    std::filesystem::path m_fmj;
    std::unique_ptr<MainWindow> m_window;
};

TEST_F(JobDisplayTest, LoadShowsTheJobOnMapAndGrid) {
    EXPECT_EQ(Display().objectName(), "frmDispJob");
    EXPECT_EQ(Display().windowTitle(), "Job Display - omaha");
    EXPECT_TRUE(m_window->windowTitle().endsWith(QStringLiteral("Job Display - omaha")));
    EXPECT_EQ(Display().RebuildCount(), 1);
    EXPECT_EQ(Display().Filter().target.channel, testing::kTargetChannel);
    EXPECT_DOUBLE_EQ(Display().Centre().lat, static_cast<double>(static_cast<float>(testing::kTargetLat)));
    // The grid lists what the study table holds at or below the limit.
    EXPECT_EQ(Grid().rowCount(), Count("SELECT COUNT(*) FROM tempdisplay WHERE target_clearance <= 20 AND service <> 'AM';"));
    EXPECT_GT(Grid().rowCount(), 3);
    EXPECT_EQ(Grid().columnCount(), static_cast<int>(stationdb::VisibleFieldsInOrder(m_context.jobGrid).size()));
    EXPECT_EQ(Display().RangeText(), "Range: 20 km : Clearance = FCC");
    EXPECT_EQ(Find<QLabel>("lblScale")->text(), "1:1,000,000");
    EXPECT_TRUE(Display().Arrays().stateMapLoaded);
    EXPECT_TRUE(Display().Arrays().countyMapLoaded);
}

TEST_F(JobDisplayTest, LegendCountsTheDrawnStations) {
    const jobview::MapCounts& counts = Display().Map()->List().counts;
    int total = 0;
    for (int n : counts.byRelation) total += n;
    EXPECT_GT(total, 0);
    EXPECT_EQ(Find<QLabel>("lblCountPri")->text(), StationsText(counts.byRelation[0]));
    EXPECT_EQ(Find<QLabel>("lblCountLI")->text(), StationsText(counts.byStatus[0]));
    EXPECT_TRUE(Find<QLabel>("lblCountFirst")->text().endsWith(QStringLiteral(" stations")));
}

TEST_F(JobDisplayTest, QuickFilterClicksCoalesceIntoOneRebuild) {
    const int before = Display().RebuildCount();
    Find<QCheckBox>("optCP")->click();
    Find<QCheckBox>("optAP")->click();
    Find<QCheckBox>("optDE")->click();
    Find<QToolButton>("btnChanUp")->click();
    Find<QToolButton>("btnChanUp")->click();
    emit Find<QComboBox>("cboClass")->textActivated(QStringLiteral("B"));
    EXPECT_EQ(Display().Scheduler().Timer().interval(), kFilterDelayMs);
    EXPECT_TRUE(Find<QLabel>("lblChannel")->text().contains(QStringLiteral("252")));
    WaitUntil([] { return false; }, 300);
    EXPECT_EQ(Display().RebuildCount(), before);  // still inside the second
    ASSERT_TRUE(WaitRebuild(before));
    WaitUntil([] { return false; }, 100);
    EXPECT_EQ(Display().RebuildCount(), before + 1);
    EXPECT_EQ(Display().Filter().target.channel, 252);
    EXPECT_EQ(Display().Filter().target.stationClass, spacing::ClassIndex("B"));
    EXPECT_FALSE(Display().Filter().statusCP);
    EXPECT_TRUE(Display().Filter().statusDE);
    EXPECT_EQ(Count("SELECT COUNT(*) FROM tempdisplay WHERE fm_dom_status LIKE 'CP*';"), 0);
}

TEST_F(JobDisplayTest, ClearanceSliderRebuildsOnceForManyMoves) {
    const int before = Display().RebuildCount();
    QSlider* slider = Panel().ClearanceSlider();
    EXPECT_EQ(slider->objectName(), "sliderClearance");
    for (int km : {15, 10, 7, 5}) slider->setValue(km);
    EXPECT_EQ(Display().RangeText(), "Range: 5 km : Clearance = FCC");
    ASSERT_TRUE(WaitRebuild(before));
    EXPECT_EQ(Display().RebuildCount(), before + 1);
    for (const QString& cell : Column(QStringLiteral("Clearance"))) EXPECT_LE(cell.toDouble(), 5.0) << cell.toStdString();
}

TEST_F(JobDisplayTest, ReducedRadiiChangeTheRangeText) {
    m_context.settings.gMapOptReduceRadii = true;
    const int repaints = Display().RepaintCount();
    Display().MapOptionsChanged();
    EXPECT_EQ(Find<QLabel>("lblRange")->text(), "Range: 20 km : Clearance = -0.5km");
    EXPECT_TRUE(WaitUntil([&] { return Display().RepaintCount() > repaints; }));
}

TEST_F(JobDisplayTest, ScaleSliderRedrawsAtOnce) {
    const int repaints = Display().RepaintCount();
    const int rebuilds = Display().RebuildCount();
    Panel().ScaleSlider()->setValue(1);
    EXPECT_EQ(Display().RepaintCount(), repaints + 1);  // no timer involved
    EXPECT_EQ(Display().ScaleText(), "1:50,000");
    EXPECT_EQ(Display().Map()->Frame().scale, 50000);
    Panel().ScaleSlider()->setValue(20);
    EXPECT_EQ(Find<QLabel>("lblScale")->text(), "1:5,000,000");
    EXPECT_EQ(Display().RebuildCount(), rebuilds);
}

TEST_F(JobDisplayTest, SortingByCaptionAndByHeadingClicks) {
    int before = Display().RebuildCount();
    ASSERT_TRUE(Display().SortGrid(QStringLiteral("Callsign")));
    EXPECT_EQ(Display().SortList(), "fac_callsign");
    ASSERT_TRUE(WaitRebuild(before));
    std::vector<QString> calls = Column(QStringLiteral("Callsign"));
    EXPECT_TRUE(std::is_sorted(calls.begin(), calls.end()));
    // A click on the sorted column's heading turns the order round.
    QHeaderView* header = Display().Grid()->horizontalHeader();
    const int column = Grid().ColumnOfCaption(QStringLiteral("Callsign"));
    before = Display().RebuildCount();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      QPoint(header->sectionViewportPosition(column) + 5, header->height() / 2));
    EXPECT_EQ(Display().SortList(), "fac_callsign DESC");
    ASSERT_TRUE(WaitRebuild(before));
    calls = Column(QStringLiteral("Callsign"));
    EXPECT_TRUE(std::is_sorted(calls.rbegin(), calls.rend()));
    EXPECT_FALSE(Display().SortGrid(QStringLiteral("No Such Caption")));
}

TEST_F(JobDisplayTest, DoubleClickRecentresAndMovesTheOffsets) {
    const std::string offsetSql = "SELECT CAST(offset_right * 1000 AS INTEGER) FROM tempdisplay WHERE fac_callsign = 'KCOA';";
    const std::int64_t offsetBefore = Count(offsetSql);
    const int before = Display().RebuildCount();
    MapWidget* map = Display().Map();
    const QPoint centre(map->width() / 2, map->height() / 2);
    QTest::mouseDClick(map, Qt::LeftButton, {}, centre + QPoint(100, 0));  // east of the centre
    ASSERT_TRUE(WaitRebuild(before));
    const double kmPerPixel = map->Frame().widthKm / map->width();
    double north = 0, east = 0;
    const jobview::MapCentre c = Display().Centre();
    geodesy::FlatDistance(testing::kTargetLat, testing::kTargetLon, c.lat, c.lon, north, east);
    EXPECT_NEAR(east, 100 * kmPerPixel, 2 * kmPerPixel);
    EXPECT_NEAR(north, 0.0, 2 * kmPerPixel);
    // Offsets are now taken about the new centre: a station moves west on the map.
    EXPECT_NEAR(static_cast<double>(Count(offsetSql) - offsetBefore) / 1000.0, 100 * kmPerPixel, 2 * kmPerPixel);
}

TEST_F(JobDisplayTest, RecentreBeforeLoadingChangesNothing) {
    JobDisplay fresh(m_context);
    fresh.RecenterMap(40.0, 90.0);
    EXPECT_DOUBLE_EQ(fresh.Centre().lat, 0.0);
    EXPECT_FALSE(fresh.Scheduler().GridPending());
}

TEST_F(JobDisplayTest, AmSwitchFiltersTheGridButNotTheStudyTable) {
    Panel().ClearanceSlider()->setValue(60);  // the AM station is 30 km away, no separation
    int before = Display().RebuildCount();
    ASSERT_TRUE(WaitRebuild(before));
    auto hasAm = [&] {
        const auto services = Column(QStringLiteral("Service"));
        return std::find(services.begin(), services.end(), QStringLiteral("AM")) != services.end();
    };
    EXPECT_FALSE(hasAm());
    before = Display().RebuildCount();
    m_window->Actions().am->trigger();
    ASSERT_TRUE(WaitRebuild(before));
    EXPECT_TRUE(Display().Switches().showAm);
    EXPECT_TRUE(hasAm());
    before = Display().RebuildCount();
    ASSERT_TRUE(Display().ToolbarKey(QStringLiteral("noAM")));
    ASSERT_TRUE(WaitRebuild(before));
    EXPECT_FALSE(hasAm());
    EXPECT_FALSE(m_window->Actions().am->isChecked());
    EXPECT_EQ(Count("SELECT COUNT(*) FROM tempdisplay WHERE service = 'AM';"), 1);
}

TEST_F(JobDisplayTest, DrawingSwitchesRepaintWithoutRebuilding) {
    const int rebuilds = Display().RebuildCount();
    const int repaints = Display().RepaintCount();
    ASSERT_TRUE(Display().ToolbarKey(QStringLiteral("Fill")));
    ASSERT_TRUE(Display().ToolbarKey(QStringLiteral("ChannelColor")));
    ASSERT_TRUE(Display().ToolbarKey(QStringLiteral("noCalls")));
    ASSERT_TRUE(WaitUntil([&] { return Display().RepaintCount() > repaints; }));
    WaitUntil([] { return false; }, 50);
    EXPECT_EQ(Display().RepaintCount(), repaints + 1);
    EXPECT_EQ(Display().RebuildCount(), rebuilds);
    EXPECT_TRUE(Display().Switches().fillCircles);
    EXPECT_EQ(Display().Switches().coloring, jobview::StationColoring::Channel);
    EXPECT_TRUE(m_window->Actions().drawFill->isChecked());
    EXPECT_TRUE(m_window->Actions().channelColors->isChecked());
    m_window->Actions().Key(QStringLiteral("Fill"))->trigger();  // fill -> points
    EXPECT_FALSE(Display().Switches().showCircles);
    EXPECT_FALSE(Display().ToolbarKey(QStringLiteral("NoSuchKey")));
}

TEST_F(JobDisplayTest, ViewModesShowMapGridOrBoth) {
    Display().ToolbarKey(QStringLiteral("Map"));
    EXPECT_TRUE(Display().Map()->isVisible());
    EXPECT_FALSE(Display().Grid()->isVisible());
    Display().ToolbarKey(QStringLiteral("Grid"));
    EXPECT_FALSE(Display().Map()->isVisible());
    EXPECT_TRUE(Display().Grid()->isVisible());
    m_window->Actions().Key(QStringLiteral("MapGrid"))->trigger();  // grid -> map and grid
    EXPECT_TRUE(Display().Map()->isVisible());
    EXPECT_TRUE(Display().Grid()->isVisible());
    EXPECT_TRUE(m_window->Actions().viewMapGrid->isChecked());
}

TEST_F(JobDisplayTest, PointerPositionInDegreesMinutesSeconds) {
    MapWidget* map = Display().Map();
    SendMouse(QEvent::MouseMove, QPointF(map->width() / 2.0, map->height() / 2.0), Qt::NoButton, Qt::NoButton);
    EXPECT_TRUE(Find<QLabel>("lblPointerLat")->text().startsWith(QStringLiteral("41\u00b0 1")));
    EXPECT_TRUE(Find<QLabel>("lblPointerLat")->text().endsWith(QStringLiteral("N")));
    EXPECT_TRUE(Find<QLabel>("lblPointerLon")->text().startsWith(QStringLiteral("9")));
    EXPECT_TRUE(Find<QLabel>("lblPointerLon")->text().endsWith(QStringLiteral("W")));
}

TEST_F(JobDisplayTest, DragMeasuresRangeAndBearing) {
    MapWidget* map = Display().Map();
    const QPointF a(map->width() / 2.0 - 50, map->height() / 2.0);
    const QPointF b = a + QPointF(100, 0);  // due east
    SendMouse(QEvent::MouseButtonPress, a, Qt::LeftButton, Qt::LeftButton);
    SendMouse(QEvent::MouseMove, a + QPointF(50, 0), Qt::NoButton, Qt::LeftButton);
    SendMouse(QEvent::MouseMove, b, Qt::NoButton, Qt::LeftButton);
    SendMouse(QEvent::MouseButtonRelease, b, Qt::LeftButton, Qt::NoButton);
    const auto& messages = m_world.Prompt().Messages();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].title, "Range and Bearing");
    const QString text = QString::fromStdString(messages[0].text);
    const double km = text.section(QStringLiteral("km"), 0, 0).toDouble();
    EXPECT_NEAR(km, 100.0 * map->Frame().widthKm / map->width(), 0.1);
    EXPECT_TRUE(text.contains(QStringLiteral("miles)\n@ ")));
    const double bearing = text.section(QStringLiteral("@ "), 1).section(QLatin1Char(' '), 0, 0).toDouble();
    EXPECT_NEAR(bearing, 90.0, 0.5);
    EXPECT_TRUE(text.endsWith(QStringLiteral(" Degree")));
}

TEST_F(JobDisplayTest, ClickWithoutDragMeasuresNothing) {
    MapWidget* map = Display().Map();
    const QPointF at(map->width() / 3.0, map->height() / 3.0);
    SendMouse(QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton);
    SendMouse(QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton);
    EXPECT_TRUE(m_world.Prompt().Messages().empty());
}

TEST_F(JobDisplayTest, MapRepaintsFromItsCachedImage) {
    const int renders = Display().Map()->RenderCount();
    Display().Map()->repaint();
    EXPECT_EQ(Display().Map()->RenderCount(), renders);
    EXPECT_FALSE(Display().Map()->Image().isNull());
}

TEST_F(JobDisplayTest, ColumnChangesAreWrittenBackAndSaved) {
    JobGrid* grid = Display().Grid();
    ASSERT_TRUE(grid->SetColumnVisible(QStringLiteral("Owner"), false));
    EXPECT_EQ(Grid().ColumnOfCaption(QStringLiteral("Owner")), -1);
    QHeaderView* header = grid->horizontalHeader();
    header->moveSection(0, 3);  // "Callsign" to the fourth place
    EXPECT_TRUE(WaitUntil([&] { return Grid().ColumnOfCaption(QStringLiteral("Callsign")) == 3; }));
    EXPECT_EQ(header->logicalIndex(3), 3);  // the reload put the model in that order
    header->resizeSection(Grid().ColumnOfCaption(QStringLiteral("City")), 222);
    ASSERT_TRUE(shell::SaveSettings(m_world.Settings(), m_context));
    // Catalogue entries: 0 Callsign, 3 City, 17 Owner.
    EXPECT_EQ(m_world.Settings().value(QStringLiteral("Standard/gMapdisp17")).toString(), "False");
    EXPECT_EQ(m_world.Settings().value(QStringLiteral("Standard/gMapdispOrdr0")).toString(), "3");
    EXPECT_EQ(m_world.Settings().value(QStringLiteral("Standard/gMapColWidth3")).toString(), "222");
    // The last visible column cannot be hidden.
    for (const auto& field : m_context.jobGrid.fields) grid->SetColumnVisible(QString::fromStdString(field.caption), false);
    EXPECT_EQ(Grid().columnCount(), 1);
}

}  // namespace
}  // namespace qarvel::app
