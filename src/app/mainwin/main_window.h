#pragma once
// The main window: a switchboard. It holds the menus and toolbar
// (MainActions), the job display (JobDisplay) and the job controller
// (JobController), and passes each command to the class that owns the
// work: job files to the controller, drawing switches and sorting to the
// display, printing to PrintJob, map options to MapOptionsDialog.

#include <QMainWindow>

#include <filesystem>
#include <functional>
#include <optional>

#include "shell/program_context.h"

class QLabel;
class QStackedWidget;

namespace qarvel::app {

class DataToolsMenu;
class SearchMenu;
class JobController;
class JobDisplay;
class MainActions;

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(shell::ProgramContext& context, QWidget* parent = nullptr);
    ~MainWindow() override;

    JobController& Controller() const { return *m_controller; }
    JobDisplay& Display() const { return *m_display; }
    MainActions& Actions() const { return *m_actions; }
    DataToolsMenu& Tools() const { return *m_tools; }
    SearchMenu& Search() const { return *m_search; }

    // After start-up: the recent files, title and enabled commands from
    // the context the start-up filled.
    void Refresh();

    // Called when the window closes after the job was closed: the orderly
    // end of the program (settings saved, scratch folders removed). False
    // keeps the program running.
    std::function<bool()> onShutdown;

    // The commands that ask the user for a file or printer; the work goes
    // to the controller, the display and PrintJob.
    void NewJob();
    // The wizard started at a given target (a station found by a search).
    struct StudyTarget {
        double lat = 0, lonWest = 0;
        int channel = 0;
        QString stationClass;
    };
    void NewJobAt(const std::optional<StudyTarget>& target);
    void OpenJob();
    void SaveJobAs();
    void OpenMaster();
    void ExportCsv();
    void PrintMap();
    void PrintGrid();
    void PrintMapPdf();
    void PrintGridPdf();
    void MapOptions();
    void About();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void ConnectFileCommands();
    void ConnectViewCommands();
    void FollowSwitches();
    void CycleDrawing();
    void CycleLayout();
    void Sort(bool descending);
    QString JobFolder() const;

    shell::ProgramContext& m_context;
    MainActions* m_actions;
    QStackedWidget* m_pages;
    JobDisplay* m_display;
    JobController* m_controller;
    QLabel* m_master;
    DataToolsMenu* m_tools;
    SearchMenu* m_search;
};

}  // namespace qarvel::app
