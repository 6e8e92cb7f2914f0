#pragma once
// The job display `frmDispJob`: the open job's map beside its grid, the
// controls that filter the stations, and the status bar (`StatusBar1`)
// with the pointer's position and the scale. It owns the job database's
// connection, the study table `tempdisplay` (rebuilt through NewData), the
// loaded boundary arrays, the map centre and scale, and the toolbar's
// drawing switches. Redraws go through the one deferred-redraw timer.
//
// Units: degrees (longitude positive WEST), km; the scale is N of 1:N.

#include <QWidget>

#include <cstdint>
#include <optional>
#include <string>

#include "jobview/display_list.h"
#include "jobview/grid_query.h"
#include "jobview/map_arrays.h"
#include "jobview/study_filter.h"
#include "jobview/temp_display.h"
#include "shell/program_context.h"
#include "stationdb/database.h"
#include "jobs/job_file.h"

class QLabel;
class QSplitter;
class QStatusBar;

namespace qarvel::app {

class FilterPanel;
class JobGrid;
class MapWidget;
class RedrawScheduler;
struct PrintContent;

enum class ViewMode { Map, MapGrid, Grid };  // toolbar keys "Map", "MapGrid", "Grid"

// The map settings for a drawing: the toolbar switches of `switches`, the
// map options of the settings store, and the scale.
jobview::MapSettings MapSettingsFor(const jobview::MapSettings& switches, const shell::ProgramSettings& options,
                                    std::int32_t scale);

class JobDisplay : public QWidget {
    Q_OBJECT

public:
    explicit JobDisplay(shell::ProgramContext& context, QWidget* parent = nullptr);
    ~JobDisplay() override;

    // Form_Load and FirstLoad: opens the job database `paths.tdb`, reads
    // the target, centres the map on it, loads the boundary arrays, builds
    // `tempdisplay` and the grid, and requests the map. False (reported
    // under "frmDispJob" ":FirstLoad:") when the job cannot be shown.
    bool Load(const jobs::JobPaths& paths, const stationdb::JobHeader& header);
    // Form_Unload: drops pending redraws, closes the connection, clears map
    // and grid. The job's files belong to the job file and stay.
    void Unload();
    bool IsLoaded() const { return m_loaded; }

    // Redraw requests (see RedrawScheduler).
    void UpdateMap();
    void UpdateGrid();
    // Recentres on a position (degrees, longitude WEST); nothing before
    // the job has finished loading.
    void RecenterMap(double lat, double lonWest);
    // sliderScale: position 1..20; redraws at once.
    void SetScalePosition(int position);
    // sliderClearance: the clearance limit in km.
    void SetClearanceLimit(int km);
    // A toolbar key: "AM", "noAM", "Fill", "Points", "Circles", "Calls",
    // "noCalls", "ChannelColor", "ClearColor", "Borders", "noBorders",
    // "Map", "MapGrid", "Grid". False for any other key.
    bool ToolbarKey(const QString& key);
    void SetViewMode(ViewMode mode);
    ViewMode Mode() const { return m_mode; }
    // SortGrid: sorts grid and map by the column of a caption; ascending,
    // or descending when asked. An unknown caption changes nothing.
    bool SortGrid(const QString& caption, bool descending = false);
    // The map options changed (map options dialog): redraw.
    void MapOptionsChanged();

    const jobview::StudyFilter& Filter() const { return m_filter; }
    jobview::MapCentre Centre() const { return {m_centreLat, m_centreLon}; }
    std::int32_t Scale() const { return m_scale; }
    const std::string& SortList() const { return m_sortList; }
    // The toolbar's drawing switches.
    const jobview::MapSettings& Switches() const { return m_switches; }
    const stationdb::JobHeader& Header() const { return m_header; }
    const jobs::JobPaths& Paths() const { return m_paths; }
    const jobview::MapArrays& Arrays() const { return m_arrays; }
    // The rows the grid shows now.
    const jobview::GridTable& GridTable() const;
    // What printing and export need: the stations drawn, the grid and the
    // header values; the map at the print scale on paper.
    PrintContent ContentForPrint() const;

    int RebuildCount() const { return m_rebuilds; }
    int RepaintCount() const { return m_repaints; }
    MapWidget* Map() const { return m_map; }
    JobGrid* Grid() const { return m_grid; }
    FilterPanel* Panel() const { return m_panel; }
    RedrawScheduler& Scheduler() const { return *m_scheduler; }
    QString RangeText() const;
    QString ScaleText() const;
    QString PointerText() const;

signals:
    // The user asked for the actions of a map point (latitude, longitude
    // west, in degrees) at the screen position `global`.
    void pointActionsRequested(double lat, double lonWest, QPoint global);
    // The toolbar switches or view mode changed (the main window's actions
    // follow).
    void switchesChanged();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void BuildLayout();
    void ConnectControls();
    void RebuildStudy();
    void ReloadGrid();
    void RepaintMap();
    void ShowScale();
    void ShowPointer(double xKm, double yKm);
    void ShowMeasurement(double x1, double y1, double x2, double y2);
    void RecentreAt(double xKm, double yKm);
    void FilterControlChanged();
    void StepChannel(int delta);

    shell::ProgramContext& m_context;
    stationdb::Database m_db;
    jobs::JobPaths m_paths;
    stationdb::JobHeader m_header;
    jobview::MapArrays m_arrays;
    jobview::StudyFilter m_filter;
    jobview::TargetChange m_pendingChange;
    jobview::MapSettings m_switches;
    float m_centreLat = 0;
    float m_centreLon = 0;
    std::int32_t m_scale = 1000000;
    std::string m_sortList;
    bool m_loaded = false;
    ViewMode m_mode = ViewMode::MapGrid;
    int m_rebuilds = 0;
    int m_repaints = 0;

    RedrawScheduler* m_scheduler;
    MapWidget* m_map;
    JobGrid* m_grid;
    FilterPanel* m_panel;
    QSplitter* m_splitter = nullptr;
    QStatusBar* m_status = nullptr;
    QLabel* m_pointerLat = nullptr;
    QLabel* m_pointerLon = nullptr;
    QLabel* m_rangeStatus = nullptr;
    QLabel* m_scaleLabel = nullptr;
};

}  // namespace qarvel::app
