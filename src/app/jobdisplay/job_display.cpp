// The job display: loading a job, the study table's rebuild, the grid and
// the map's repaint. The handlers of the controls are in
// job_display_events.cpp.

#include "app/jobdisplay/job_display.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QSplitter>
#include <QStatusBar>
#include <QVBoxLayout>

#include "app/mainwin/display_texts.h"
#include "app/jobdisplay/filter_panel.h"
#include "app/jobdisplay/grid_model.h"
#include "app/jobdisplay/job_grid.h"
#include "app/jobdisplay/map_widget.h"
#include "app/output/print_job.h"
#include "app/jobdisplay/redraw_scheduler.h"
#include "core/error_trap.h"
#include "jobview/map_model.h"
#include "jobview/map_stations.h"
#include "jobview/where_clause.h"

namespace qarvel::app {

jobview::MapSettings MapSettingsFor(const jobview::MapSettings& switches, const shell::ProgramSettings& options,
                                    std::int32_t scale) {
    jobview::MapSettings s = switches;
    s.scale = scale;
    s.gMapOptLatLon = options.gMapOptLatLon;
    s.gMapOptState = options.gMapOptState;
    s.gMapOptCounty = options.gMapOptCounty;
    s.gMapOptCities = options.gMapOptCities;
    s.gMapCityCount = options.gMapCityCount;
    s.gMapOptMarkers = options.gMapOptMarkers;
    s.gMapOptCrosshair = options.gMapOptCrosshair;
    s.gMapOptScale = options.gMapOptScale;
    s.gMapOptReduceRadii = options.gMapOptReduceRadii;
    return s;
}

JobDisplay::JobDisplay(shell::ProgramContext& context, QWidget* parent)
    : QWidget(parent),
      m_context(context),
      m_scheduler(new RedrawScheduler(this)),
      m_map(new MapWidget(this)),
      m_grid(new JobGrid(context.jobGrid, this)),
      m_panel(new FilterPanel(this)) {
    setObjectName(QStringLiteral("frmDispJob"));
    m_scheduler->ready = [this] { return isVisible(); };
    BuildLayout();
    ConnectControls();
    ShowScale();
    m_panel->SetRangeText(RangeText());
}

JobDisplay::~JobDisplay() { m_db.Close(); }

void JobDisplay::BuildLayout() {
    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->setObjectName(QStringLiteral("splitMapGrid"));
    m_splitter->addWidget(m_map);
    m_splitter->addWidget(m_grid);
    m_splitter->setStretchFactor(0, 3);
    m_splitter->setStretchFactor(1, 2);
    m_splitter->setChildrenCollapsible(false);

    auto* scroll = new QScrollArea(this);
    scroll->setWidget(m_panel);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFixedWidth(m_panel->sizeHint().width() + 20);

    m_status = new QStatusBar(this);
    m_status->setObjectName(QStringLiteral("StatusBar1"));
    m_status->setSizeGripEnabled(false);
    m_pointerLat = new QLabel(this);
    m_pointerLat->setObjectName(QStringLiteral("lblPointerLat"));
    m_pointerLon = new QLabel(this);
    m_pointerLon->setObjectName(QStringLiteral("lblPointerLon"));
    m_rangeStatus = new QLabel(this);
    m_rangeStatus->setObjectName(QStringLiteral("lblRangeStatus"));
    m_scaleLabel = new QLabel(this);
    m_scaleLabel->setObjectName(QStringLiteral("lblScale"));
    for (QLabel* label : {m_pointerLat, m_pointerLon}) label->setMinimumWidth(120);
    m_status->addWidget(m_pointerLat);
    m_status->addWidget(m_pointerLon);
    m_status->addWidget(m_rangeStatus, 1);
    m_status->addPermanentWidget(m_scaleLabel);

    auto* body = new QHBoxLayout;
    body->addWidget(m_splitter, 1);
    body->addWidget(scroll);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(body, 1);
    layout->addWidget(m_status);
}

bool JobDisplay::Load(const jobs::JobPaths& paths, const stationdb::JobHeader& header) {
    Unload();
    const bool loaded = core::Trapped(jobview::kJobDisplayModule, ":FirstLoad:", false, [&] {
        m_db = stationdb::Database(paths.tdb, stationdb::OpenMode::ReadWrite);
        m_paths = paths;
        m_header = header;
        jobview::StudyTarget target;
        if (!jobview::ReadStudyTarget(m_db, &target)) return false;
        m_filter.target = target;
        m_pendingChange = {};
        m_centreLat = static_cast<float>(target.lat);
        m_centreLon = static_cast<float>(target.lon);
        // A missing boundary file only leaves its layer out.
        jobview::MapArrays arrays;
        if (jobview::LoadMapArray(paths.mst, paths.mco, paths.tdb, &arrays)) m_arrays = std::move(arrays);
        return true;
    });
    if (!loaded) {
        m_db.Close();
        return false;
    }
    setWindowTitle(QString::fromStdString(JobDisplayCaption(paths.baseName)));
    m_scheduler->SetDelay(false);  // Form_Load clears the delay
    m_panel->SetClearanceMaximum(std::max(kClearanceSliderMax, m_header.ScanRange));
    m_panel->ShowFilter(m_filter);
    m_panel->SetRangeText(RangeText());
    RebuildStudy();
    m_loaded = true;
    UpdateMap();
    return true;
}

void JobDisplay::Unload() {
    m_scheduler->Cancel();
    m_loaded = false;
    m_db.Close();
    m_arrays = {};
    m_map->Clear();
    m_grid->SetTable({});
    setWindowTitle(QString());
}

void JobDisplay::UpdateMap() { m_scheduler->UpdateMap(); }
void JobDisplay::UpdateGrid() { m_scheduler->UpdateGrid(); }

// The timer's grid work: the target editor's changes, then NewData about
// the current centre, then the grid's rows.
void JobDisplay::RebuildStudy() {
    if (!m_db.IsOpen()) return;
    if (m_pendingChange.channel || m_pendingChange.stationClass || m_pendingChange.intlClass) {
        jobview::ChangeStationData(m_pendingChange, &m_filter.target);
        m_pendingChange = {};
        m_panel->ShowFilter(m_filter);
    }
    const jobview::MapCentre centre{m_centreLat, m_centreLon};
    jobview::NewData(m_db, m_filter, &centre);
    ++m_rebuilds;
    ReloadGrid();
}

void JobDisplay::ReloadGrid() {
    if (!m_db.IsOpen()) return;
    jobview::GridTable table;
    if (jobview::ReadGrid(m_db, m_context.jobGrid, m_filter, m_sortList, &table)) m_grid->SetTable(std::move(table));
}

const jobview::GridTable& JobDisplay::GridTable() const { return m_grid->Model()->Table(); }

// RepaintMap for the screen: the stations strictly below the clearance
// limit in the grid's order, drawn by the renderer into the map's image.
void JobDisplay::RepaintMap() {
    m_panel->SetRangeText(RangeText());
    m_rangeStatus->setText(RangeText());
    if (!m_db.IsOpen()) return;
    jobview::MapScene scene;
    scene.centreLat = m_centreLat;
    scene.centreLon = m_centreLon;
    scene.arrays = &m_arrays;
    if (!jobview::ReadMapStations(m_db, m_filter.clearanceLimitKm, m_sortList, &scene.stations)) return;
    m_map->SetContent(std::move(scene), MapSettingsFor(m_switches, m_context.settings, m_scale));
    m_panel->SetCounts(m_map->List().counts);
    ++m_repaints;
}

QString JobDisplay::RangeText() const {
    return QString::fromStdString(
        jobview::RangeText(m_filter.clearanceLimitKm, m_context.settings.gMapOptReduceRadii));
}

QString JobDisplay::ScaleText() const {
    return QStringLiteral("1:") + QString::fromStdString(jobview::FormatScale(m_scale));
}

QString JobDisplay::PointerText() const { return m_pointerLat->text() + QLatin1Char(' ') + m_pointerLon->text(); }

void JobDisplay::ShowScale() { m_scaleLabel->setText(ScaleText()); }

PrintContent JobDisplay::ContentForPrint() const {
    PrintContent content;
    content.jobName = m_paths.baseName;
    content.masterSource = m_header.Source;
    content.comments = m_header.Comments;
    content.filter = m_filter;
    content.grid = GridTable();
    content.scene.centreLat = m_centreLat;
    content.scene.centreLon = m_centreLon;
    content.scene.arrays = &m_arrays;
    content.settings = MapSettingsFor(m_switches, m_context.settings, m_context.settings.gMapPrintScale);
    content.settings.printer = true;
    if (m_db.IsOpen()) {
        jobview::ReadMapStations(m_db, m_filter.clearanceLimitKm, m_sortList, &content.scene.stations);
    }
    return content;
}

}  // namespace qarvel::app
