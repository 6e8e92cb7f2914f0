#pragma once
// The Tools menu of the main window: the calculators (also the "Calc"
// toolbar key), the markers of the local database, and the record editor
// over the local database or a master database file.

#include <QObject>
#include <QPoint>

#include <functional>
#include <optional>
#include <utility>

#include "shell/program_context.h"

class QAction;
class QMainWindow;

namespace qarvel::app {

class MainActions;

class DataToolsMenu : public QObject {
    Q_OBJECT

public:
    // `target` gives the open job's target (latitude, longitude west), or
    // nothing when no job is open.
    DataToolsMenu(QMainWindow& window, MainActions& actions, shell::ProgramContext& context,
                  std::function<std::optional<std::pair<double, double>>()> target);

    void Calculators();
    void Markers();
    void EditLocalRecords();
    void EditMasterRecords();
    // The map's point menu: a marker there, or range and bearing from the
    // target to it.
    void PointMenu(double lat, double lonWest, QPoint global);
    void AddMarkerAt(double lat, double lonWest);
    void RangeToPoint(double lat, double lonWest);

    QAction* calculators = nullptr;
    QAction* markers = nullptr;
    QAction* editLocal = nullptr;
    QAction* editMaster = nullptr;

signals:
    // Markers changed: jobs built from now on carry them.
    void markersChanged();

private:
    void OpenEditor(const std::filesystem::path& file);

    QMainWindow& m_window;
    shell::ProgramContext& m_context;
    std::function<std::optional<std::pair<double, double>>()> m_target;
};

}  // namespace qarvel::app
