#include "app/mainwin/main_window.h"

#include "app/datatools/data_tools_menu.h"
#include "app/search/search_menu.h"

#include <QAction>
#include <QCloseEvent>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolBar>

#include "app/output/csv_export.h"
#include "app/mainwin/display_texts.h"
#include "app/jobdisplay/job_controller.h"
#include "app/jobdisplay/job_display.h"
#include "app/jobdisplay/job_grid.h"
#include "app/mainwin/main_actions.h"
#include "app/jobdisplay/map_options_dialog.h"
#include "app/wizard/new_job_wizard.h"
#include "app/output/print_job.h"
#include "jobs/job_file.h"

namespace qarvel::app {

namespace fs = std::filesystem;

namespace {
fs::path ToPath(const QString& text) { return fs::path(text.toStdString()); }
QString ToQString(const fs::path& path) { return QString::fromStdString(path.string()); }
}  // namespace

MainWindow::MainWindow(shell::ProgramContext& context, QWidget* parent)
    : QMainWindow(parent),
      m_context(context),
      m_actions(new MainActions(*this)),
      m_pages(new QStackedWidget(this)),
      m_display(new JobDisplay(context, m_pages)),
      m_controller(new JobController(context, *m_display, this)),
      m_master(new QLabel(this)),
      m_tools(new DataToolsMenu(*this, *m_actions, context, [this]() -> std::optional<std::pair<double, double>> {
          if (!m_controller->HasJob()) return std::nullopt;
          return std::make_pair(m_display->Header().TLat, m_display->Header().TLon);
      })),
      m_search(new SearchMenu(*this, *m_actions, context, [this](const SearchMenu::Station& s) {
          NewJobAt(StudyTarget{s.lat, s.lonWest, s.channel, s.stationClass});
      })) {
    setObjectName(QStringLiteral("frmMain"));
    auto* empty = new QLabel(tr("Open a job or start a new one from the File menu."), m_pages);
    empty->setObjectName(QStringLiteral("lblNoJob"));
    empty->setAlignment(Qt::AlignCenter);
    m_pages->addWidget(empty);
    m_pages->addWidget(m_display);
    setCentralWidget(m_pages);
    m_master->setObjectName(QStringLiteral("lblMaster"));
    statusBar()->addWidget(m_master, 1);
    resize(1200, 800);
    ConnectFileCommands();
    ConnectViewCommands();
    connect(m_display, &JobDisplay::pointActionsRequested, m_tools, &DataToolsMenu::PointMenu);
    Refresh();
}

MainWindow::~MainWindow() {
    // The controller releases the display's connection and the job's working
    // files, so it goes while the display still exists.
    delete m_controller;
}

void MainWindow::ConnectFileCommands() {
    MainActions& a = *m_actions;
    connect(a.newJob, &QAction::triggered, this, &MainWindow::NewJob);
    connect(a.openJob, &QAction::triggered, this, &MainWindow::OpenJob);
    connect(a.saveJob, &QAction::triggered, m_controller, &JobController::SaveJob);
    connect(a.saveJobAs, &QAction::triggered, this, &MainWindow::SaveJobAs);
    connect(a.closeJob, &QAction::triggered, m_controller, &JobController::CloseJob);
    connect(a.openMaster, &QAction::triggered, this, &MainWindow::OpenMaster);
    connect(a.exportCsv, &QAction::triggered, this, &MainWindow::ExportCsv);
    connect(a.printMap, &QAction::triggered, this, &MainWindow::PrintMap);
    connect(a.Key(QStringLiteral("Print")), &QAction::triggered, this, &MainWindow::PrintMap);
    connect(a.printGrid, &QAction::triggered, this, &MainWindow::PrintGrid);
    connect(a.printMapPdf, &QAction::triggered, this, &MainWindow::PrintMapPdf);
    connect(a.printGridPdf, &QAction::triggered, this, &MainWindow::PrintGridPdf);
    connect(a.exit, &QAction::triggered, this, &QMainWindow::close);
    connect(a.mapOptions, &QAction::triggered, this, &MainWindow::MapOptions);
    connect(a.about, &QAction::triggered, this, &MainWindow::About);
    for (std::size_t i = 0; i < a.recent.size(); ++i) {
        connect(a.recent[i], &QAction::triggered, this,
                [this, i] { m_controller->OpenRecent(static_cast<int>(i) + 1); });
    }
    connect(m_controller, &JobController::jobChanged, this, &MainWindow::Refresh);
    connect(m_controller, &JobController::recentFilesChanged, this, &MainWindow::Refresh);
    connect(m_controller, &JobController::masterChanged, this, &MainWindow::Refresh);
}

void MainWindow::ConnectViewCommands() {
    MainActions& a = *m_actions;
    JobDisplay* d = m_display;
    connect(a.Key(QStringLiteral("Fill")), &QAction::triggered, this, &MainWindow::CycleDrawing);
    connect(a.drawFill, &QAction::triggered, d, [d] { d->ToolbarKey(QStringLiteral("Fill")); });
    connect(a.drawCircles, &QAction::triggered, d, [d] { d->ToolbarKey(QStringLiteral("Circles")); });
    connect(a.drawPoints, &QAction::triggered, d, [d] { d->ToolbarKey(QStringLiteral("Points")); });
    connect(a.channelColors, &QAction::triggered, d, [d](bool on) {
        d->ToolbarKey(on ? QStringLiteral("ChannelColor") : QStringLiteral("ClearColor"));
    });
    connect(a.calls, &QAction::triggered, d, [d](bool on) { d->ToolbarKey(on ? QStringLiteral("Calls") : QStringLiteral("noCalls")); });
    connect(a.am, &QAction::triggered, d, [d](bool on) { d->ToolbarKey(on ? QStringLiteral("AM") : QStringLiteral("noAM")); });
    connect(a.borders, &QAction::triggered, d,
            [d](bool on) { d->ToolbarKey(on ? QStringLiteral("Borders") : QStringLiteral("noBorders")); });
    connect(a.Key(QStringLiteral("MapGrid")), &QAction::triggered, this, &MainWindow::CycleLayout);
    connect(a.viewMap, &QAction::triggered, d, [d] { d->ToolbarKey(QStringLiteral("Map")); });
    connect(a.viewMapGrid, &QAction::triggered, d, [d] { d->ToolbarKey(QStringLiteral("MapGrid")); });
    connect(a.viewGrid, &QAction::triggered, d, [d] { d->ToolbarKey(QStringLiteral("Grid")); });
    connect(a.Key(QStringLiteral("SelFields")), &QAction::triggered, this, [this] {
        QMenu* menu = m_display->Grid()->ColumnMenu(this);
        menu->exec(QCursor::pos());
        menu->deleteLater();
    });
    connect(a.Key(QStringLiteral("SortAsc")), &QAction::triggered, this, [this] { Sort(false); });
    connect(a.Key(QStringLiteral("SortDesc")), &QAction::triggered, this, [this] { Sort(true); });
    connect(d, &JobDisplay::switchesChanged, this, &MainWindow::FollowSwitches);
}

// The toolbar's "Fill" button steps circles -> fill -> points -> circles.
void MainWindow::CycleDrawing() {
    const jobview::MapSettings& s = m_display->Switches();
    if (!s.showCircles) m_display->ToolbarKey(QStringLiteral("Circles"));
    else if (s.fillCircles) m_display->ToolbarKey(QStringLiteral("Points"));
    else m_display->ToolbarKey(QStringLiteral("Fill"));
}

// The toolbar's "MapGrid" button steps map and grid -> map -> grid.
void MainWindow::CycleLayout() {
    switch (m_display->Mode()) {
        case ViewMode::MapGrid: m_display->SetViewMode(ViewMode::Map); break;
        case ViewMode::Map: m_display->SetViewMode(ViewMode::Grid); break;
        case ViewMode::Grid: m_display->SetViewMode(ViewMode::MapGrid); break;
    }
}

void MainWindow::FollowSwitches() {
    const jobview::MapSettings& s = m_display->Switches();
    MainActions& a = *m_actions;
    (s.showCircles ? (s.fillCircles ? a.drawFill : a.drawCircles) : a.drawPoints)->setChecked(true);
    a.channelColors->setChecked(s.coloring == jobview::StationColoring::Channel);
    a.calls->setChecked(s.showCalls);
    a.am->setChecked(s.showAm);
    a.borders->setChecked(s.showBorders);
    const ViewMode mode = m_display->Mode();
    (mode == ViewMode::Map ? a.viewMap : mode == ViewMode::Grid ? a.viewGrid : a.viewMapGrid)->setChecked(true);
}

void MainWindow::Sort(bool descending) {
    QString caption = m_display->Grid()->CurrentCaption();
    if (caption.isEmpty()) caption = QStringLiteral("Clearance");
    m_display->SortGrid(caption, descending);
}

void MainWindow::Refresh() {
    m_actions->ShowRecentFiles(m_context.recentFiles);
    const bool open = m_controller->HasJob();
    for (QAction* action : {m_actions->saveJob, m_actions->saveJobAs, m_actions->closeJob, m_actions->exportCsv,
                            m_actions->printMap, m_actions->printGrid, m_actions->printMapPdf,
                            m_actions->printGridPdf, m_actions->Key(QStringLiteral("Print")),
                            m_actions->Key(QStringLiteral("SelFields")), m_actions->Key(QStringLiteral("SortAsc")),
                            m_actions->Key(QStringLiteral("SortDesc"))}) {
        action->setEnabled(open);
    }
    m_pages->setCurrentIndex(open ? 1 : 0);
    QString title = QStringLiteral("Qarvel ") + QString::fromStdString(m_context.versionText);
    if (open) title += QStringLiteral(" - ") + m_display->windowTitle();
    setWindowTitle(title);
    m_master->setText(m_context.masterPackage.empty()
                          ? tr("No master database loaded")
                          : tr("Master Database: ") + ToQString(m_context.masterPackage.filename()));
    FollowSwitches();
}

QString MainWindow::JobFolder() const { return QString::fromStdString(m_context.settings.gJobDIR); }

void MainWindow::NewJob() { NewJobAt(std::nullopt); }

void MainWindow::NewJobAt(const std::optional<StudyTarget>& target) {
    if (!m_controller->HasMaster()) {
        QMessageBox::information(this, tr("New Job"), tr("Open a master database first."));
        OpenMaster();
        if (!m_controller->HasMaster()) return;
    }
    NewJobWizard wizard(ToPath(JobFolder()), this);
    if (target) wizard.SetTarget(target->lat, target->lonWest, target->channel, target->stationClass);
    if (wizard.exec() != QDialog::Accepted) return;
    m_controller->NewJob(wizard.Request());
}

void MainWindow::OpenJob() {
    const QString file = QFileDialog::getOpenFileName(this, tr("Open Job"), JobFolder(), tr("Jobs (*.fmj)"));
    if (!file.isEmpty()) m_controller->OpenJob(ToPath(file));
}

void MainWindow::SaveJobAs() {
    if (!m_controller->HasJob()) return;
    const QString start = ToQString(m_controller->Job()->Paths().jobFile);
    // The job file asks "Replace ...?" itself, so the dialog does not.
    const QString file = QFileDialog::getSaveFileName(this, tr("Save Job As"), start, tr("Jobs (*.fmj)"), nullptr,
                                                      QFileDialog::DontConfirmOverwrite);
    if (!file.isEmpty()) m_controller->SaveJobAs(ToPath(file));
}

void MainWindow::OpenMaster() {
    const QString file = QFileDialog::getOpenFileName(this, tr("Open Master Database"),
                                                      QString::fromStdString(m_context.settings.gDataDIR),
                                                      tr("Master databases (*.fmd)"));
    if (!file.isEmpty()) m_controller->LoadMaster(ToPath(file));
}

void MainWindow::ExportCsv() {
    if (!m_controller->HasJob()) return;
    const QString file = QFileDialog::getSaveFileName(this, tr("Export Grid"), JobFolder(), tr("CSV files (*.csv)"));
    if (!file.isEmpty()) ExportGridCsv(m_display->GridTable(), ToPath(file));
}

void MainWindow::PrintMap() {
    if (!m_controller->HasJob()) return;
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageOrientation(QPageLayout::Landscape);
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() == QDialog::Accepted) app::PrintMap(m_display->ContentForPrint(), printer);
}

void MainWindow::PrintGrid() {
    if (!m_controller->HasJob()) return;
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageOrientation(QPageLayout::Landscape);
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() == QDialog::Accepted) app::PrintGrid(m_display->ContentForPrint(), printer);
}

void MainWindow::PrintMapPdf() {
    if (!m_controller->HasJob()) return;
    const QString file = QFileDialog::getSaveFileName(this, tr("Map to PDF"), JobFolder(), tr("PDF files (*.pdf)"));
    if (!file.isEmpty()) PrintMapToPdf(m_display->ContentForPrint(), ToPath(file));
}

void MainWindow::PrintGridPdf() {
    if (!m_controller->HasJob()) return;
    const QString file = QFileDialog::getSaveFileName(this, tr("Grid to PDF"), JobFolder(), tr("PDF files (*.pdf)"));
    if (!file.isEmpty()) PrintGridToPdf(m_display->ContentForPrint(), ToPath(file));
}

void MainWindow::MapOptions() {
    MapOptionsDialog dialog(m_context.settings, this);
    if (dialog.exec() != QDialog::Accepted) return;
    dialog.ApplyTo(m_context.settings);
    m_display->MapOptionsChanged();
}

void MainWindow::About() {
    QMessageBox::about(this, tr("About Qarvel"),
                       QStringLiteral("Qarvel ") + QString::fromStdString(m_context.versionText) +
                           tr("\nFM broadcast spacing studies."));
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (!m_controller->CloseJob() || (onShutdown && !onShutdown())) {
        event->ignore();
        return;
    }
    event->accept();
}

}  // namespace qarvel::app
