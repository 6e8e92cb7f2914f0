// The job display's handlers: the sliders, check boxes, channel buttons and
// class lists, the toolbar keys, the grid's headings, and the mouse on the
// map.

#include <QLabel>
#include <QSplitter>
#include <QStatusBar>

#include "app/mainwin/display_texts.h"
#include "app/jobdisplay/filter_panel.h"
#include "app/jobdisplay/job_display.h"
#include "app/jobdisplay/job_grid.h"
#include "app/jobdisplay/map_widget.h"
#include "app/jobdisplay/redraw_scheduler.h"
#include "core/prompt.h"
#include "geodesy/geodesy.h"
#include "jobview/grid_query.h"
#include "jobview/map_model.h"

namespace qarvel::app {

namespace {
constexpr int kFirstChannel = 200;
constexpr int kLastChannel = 300;
constexpr const char* kDescending = " DESC";
}  // namespace

void JobDisplay::ConnectControls() {
    connect(m_scheduler, &RedrawScheduler::rebuildGrid, this, &JobDisplay::RebuildStudy);
    connect(m_scheduler, &RedrawScheduler::repaintMap, this, &JobDisplay::RepaintMap);
    connect(m_panel, &FilterPanel::scalePositionChanged, this, &JobDisplay::SetScalePosition);
    connect(m_panel, &FilterPanel::clearanceChanged, this, &JobDisplay::SetClearanceLimit);
    connect(m_panel, &FilterPanel::switchesChanged, this, &JobDisplay::FilterControlChanged);
    connect(m_panel, &FilterPanel::channelStep, this, &JobDisplay::StepChannel);
    connect(m_panel, &FilterPanel::classChosen, this, [this](const QString& text) {
        m_pendingChange.stationClass = text.toStdString();
        m_scheduler->SetDelay(true);
        UpdateGrid();
    });
    connect(m_panel, &FilterPanel::intlClassChosen, this, [this](const QString& text) {
        m_pendingChange.intlClass = text.toStdString();
        m_scheduler->SetDelay(true);
        UpdateGrid();
    });
    connect(m_grid, &JobGrid::sortRequested, this, [this](const QString& caption) {
        // A second click on the sorted column turns the order round.
        const std::string column = jobview::SortGrid(caption.toStdString());
        SortGrid(caption, !column.empty() && m_sortList == column);
    });
    connect(m_grid, &JobGrid::columnsChanged, this, &JobDisplay::ReloadGrid);
    connect(m_map, &MapWidget::pointerMoved, this, &JobDisplay::ShowPointer);
    connect(m_map, &MapWidget::measured, this, &JobDisplay::ShowMeasurement);
    connect(m_map, &MapWidget::recentreRequested, this, &JobDisplay::RecentreAt);
    connect(m_map, &MapWidget::contextRequested, this, [this](double xKm, double yKm, QPoint global) {
        if (!m_loaded) return;
        const LatLon point = OffsetToLatLon({m_centreLat, m_centreLon}, xKm, yKm);
        emit pointActionsRequested(point.lat, point.lon, global);
    });
}

void JobDisplay::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    m_scheduler->Resume();
}

void JobDisplay::SetScalePosition(int position) {
    const std::int32_t scale = jobview::ScaleForSliderPosition(position);
    if (scale == 0) return;
    m_scale = scale;
    m_panel->SetScalePosition(position);
    ShowScale();
    // The scale slider redraws at once, not through the timer.
    RepaintMap();
}

void JobDisplay::SetClearanceLimit(int km) {
    m_filter.clearanceLimitKm = km;
    m_panel->SetRangeText(RangeText());
    m_rangeStatus->setText(RangeText());
    UpdateGrid();
}

// A status or relation box: the filter changes, and the rebuild waits a
// second so that several quick clicks give one.
void JobDisplay::FilterControlChanged() {
    m_panel->ReadSwitches(m_filter);
    m_scheduler->SetDelay(true);
    UpdateGrid();
}

void JobDisplay::StepChannel(int delta) {
    const int current = m_pendingChange.channel.value_or(m_filter.target.channel);
    const int next = std::clamp(current + delta, kFirstChannel, kLastChannel);
    if (next == current) return;
    m_pendingChange.channel = next;
    jobview::StudyFilter shown = m_filter;
    shown.target.channel = next;
    m_panel->ShowFilter(shown);
    m_scheduler->SetDelay(true);
    UpdateGrid();
}

bool JobDisplay::ToolbarKey(const QString& key) {
    jobview::MapSettings& s = m_switches;
    bool rebuild = false;
    if (key == QLatin1String("AM") || key == QLatin1String("noAM")) {
        s.showAm = key == QLatin1String("AM");
        m_filter.showAm = s.showAm;
        rebuild = true;
    } else if (key == QLatin1String("Fill")) {
        s.fillCircles = true;
        s.showCircles = true;
    } else if (key == QLatin1String("Points")) {
        s.fillCircles = false;
        s.showCircles = false;
    } else if (key == QLatin1String("Circles")) {
        s.fillCircles = false;
        s.showCircles = true;
    } else if (key == QLatin1String("Calls") || key == QLatin1String("noCalls")) {
        s.showCalls = key == QLatin1String("Calls");
    } else if (key == QLatin1String("ChannelColor") || key == QLatin1String("ClearColor")) {
        s.coloring = key == QLatin1String("ChannelColor") ? jobview::StationColoring::Channel
                                                          : jobview::StationColoring::Clearance;
    } else if (key == QLatin1String("Borders") || key == QLatin1String("noBorders")) {
        s.showBorders = key == QLatin1String("Borders");
    } else if (key == QLatin1String("Map")) {
        SetViewMode(ViewMode::Map);
        return true;
    } else if (key == QLatin1String("MapGrid")) {
        SetViewMode(ViewMode::MapGrid);
        return true;
    } else if (key == QLatin1String("Grid")) {
        SetViewMode(ViewMode::Grid);
        return true;
    } else {
        return false;
    }
    if (rebuild) UpdateGrid();
    else UpdateMap();
    emit switchesChanged();
    return true;
}

void JobDisplay::SetViewMode(ViewMode mode) {
    m_mode = mode;
    m_map->setVisible(mode != ViewMode::Grid);
    m_grid->setVisible(mode != ViewMode::Map);
    emit switchesChanged();
}

bool JobDisplay::SortGrid(const QString& caption, bool descending) {
    const std::string column = jobview::SortGrid(caption.toStdString());
    if (column.empty()) return false;
    m_sortList = descending ? column + kDescending : column;
    m_grid->ShowSortIndicator(caption, descending);
    UpdateGrid();
    return true;
}

void JobDisplay::MapOptionsChanged() {
    m_panel->SetRangeText(RangeText());
    m_rangeStatus->setText(RangeText());
    UpdateMap();
}

void JobDisplay::RecenterMap(double lat, double lonWest) {
    if (!m_loaded) return;
    m_centreLat = static_cast<float>(lat);
    m_centreLon = static_cast<float>(lonWest);
    UpdateGrid();
}

void JobDisplay::RecentreAt(double xKm, double yKm) {
    if (!m_loaded) return;
    const LatLon point = OffsetToLatLon({m_centreLat, m_centreLon}, xKm, yKm);
    RecenterMap(point.lat, point.lon);
}

void JobDisplay::ShowPointer(double xKm, double yKm) {
    if (!m_loaded) return;
    const LatLon point = OffsetToLatLon({m_centreLat, m_centreLon}, xKm, yKm);
    m_pointerLat->setText(QString::fromStdString(PointerDms(point.lat, true)));
    m_pointerLon->setText(QString::fromStdString(PointerDms(point.lon, false)));
}

void JobDisplay::ShowMeasurement(double x1, double y1, double x2, double y2) {
    if (!m_loaded) return;
    const LatLon centre{m_centreLat, m_centreLon};
    const LatLon a = OffsetToLatLon(centre, x1, y1);
    const LatLon b = OffsetToLatLon(centre, x2, y2);
    double distance = 0;
    double bearing = 0;
    geodesy::DistBearing(a.lat, a.lon, b.lat, b.lon, distance, bearing);
    core::ShowPrompt(RangeAndBearingText(distance, bearing), std::string(kRangeAndBearingTitle));
}

}  // namespace qarvel::app
