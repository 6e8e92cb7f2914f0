#include "app/mainwin/main_actions.h"

#include <QAction>
#include <QActionGroup>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QStyle>
#include <QToolBar>
#include <QToolButton>

namespace qarvel::app {

namespace {

struct KeyLook {
    const char* key;
    QStyle::StandardPixmap icon;
    const char* text;
};

// The image keys in index order with the style's nearest standard icon.
constexpr std::array<KeyLook, shell::kToolbarKeyCount> kKeyLooks = {{
    {"Fill", QStyle::SP_DialogYesButton, "Fill / Circles / Points"},
    {"Colors", QStyle::SP_DesktopIcon, "Colour by channel"},
    {"Calls", QStyle::SP_FileDialogDetailedView, "Call signs"},
    {"AM", QStyle::SP_MediaVolume, "AM stations"},
    {"MapGrid", QStyle::SP_FileDialogListView, "Map / Map and Grid / Grid"},
    {"Borders", QStyle::SP_TitleBarNormalButton, "Borders"},
    {"NewJob", QStyle::SP_FileIcon, "New Job..."},
    {"OpenJob", QStyle::SP_DialogOpenButton, "Open Job..."},
    {"CloseJob", QStyle::SP_DialogCloseButton, "Close Job"},
    {"SelFields", QStyle::SP_FileDialogContentsView, "Grid Columns..."},
    {"SearchDB", QStyle::SP_FileDialogInfoView, "Search Database"},
    {"SrchBasic", QStyle::SP_FileDialogStart, "Basic Search"},
    {"SaveJob", QStyle::SP_DialogSaveButton, "Save Job"},
    {"SrchSQL", QStyle::SP_FileDialogToParent, "SQL Search"},
    {"SortAsc", QStyle::SP_ArrowUp, "Sort Ascending"},
    {"SortDesc", QStyle::SP_ArrowDown, "Sort Descending"},
    {"Print", QStyle::SP_DriveFDIcon, "Print Map..."},
    {"NewDB", QStyle::SP_DriveHDIcon, "Open Master Database..."},
    {"Calc", QStyle::SP_ComputerIcon, "Calculators"},
    {"AutoScan", QStyle::SP_BrowserReload, "AutoScan"},
    {"GPS", QStyle::SP_DriveNetIcon, "GPS"},
}};

// Keys of subsystems this program does not offer yet: shown, not usable.
constexpr std::array<const char*, 2> kUnavailableKeys = {"AutoScan", "GPS"};

// The order on the toolbar: file commands, drawing switches, grid, other.
constexpr std::array<const char*, shell::kToolbarKeyCount> kToolbarOrder = {
    "NewJob", "OpenJob", "SaveJob", "CloseJob", "Print", "NewDB",    "Fill",     "Colors",   "Calls",    "AM",  "Borders",
    "MapGrid", "SelFields", "SortAsc", "SortDesc", "SearchDB", "SrchBasic", "SrchSQL", "Calc", "AutoScan", "GPS"};

}  // namespace

MainActions::MainActions(QMainWindow& window) : QObject(&window) {
    MakeToolbar(window);
    MakeMenus(window);
}

QAction* MainActions::Key(const QString& key) const {
    const auto it = m_keys.find(key);
    return it == m_keys.end() ? nullptr : it->second;
}

QAction* MainActions::MakeChoice(QActionGroup* group, const QString& name, const QString& text) {
    auto* action = new QAction(text, group);
    action->setObjectName(name);
    action->setCheckable(true);
    return action;
}

void MainActions::MakeToolbar(QMainWindow& window) {
    QStyle* style = window.style();
    for (const KeyLook& look : kKeyLooks) {
        auto* action = new QAction(style->standardIcon(look.icon), tr(look.text), &window);
        action->setObjectName(QString::fromLatin1(look.key));
        m_keys[action->objectName()] = action;
    }
    for (const char* key : kUnavailableKeys) Key(QString::fromLatin1(key))->setEnabled(false);
    for (const char* key : {"Colors", "Calls", "AM", "Borders"}) Key(QString::fromLatin1(key))->setCheckable(true);
    channelColors = Key(QStringLiteral("Colors"));
    calls = Key(QStringLiteral("Calls"));
    calls->setChecked(true);
    am = Key(QStringLiteral("AM"));
    borders = Key(QStringLiteral("Borders"));
    borders->setChecked(true);

    auto* drawing = new QActionGroup(this);
    drawCircles = MakeChoice(drawing, QStringLiteral("mnuCircles"), tr("&Circles"));
    drawFill = MakeChoice(drawing, QStringLiteral("mnuFill"), tr("&Fill"));
    drawPoints = MakeChoice(drawing, QStringLiteral("mnuPoints"), tr("&Points"));
    drawCircles->setChecked(true);
    auto* fillMenu = new QMenu(&window);
    fillMenu->addActions(drawing->actions());
    Key(QStringLiteral("Fill"))->setMenu(fillMenu);

    auto* layout = new QActionGroup(this);
    viewMap = MakeChoice(layout, QStringLiteral("mnuViewMap"), tr("&Map"));
    viewMapGrid = MakeChoice(layout, QStringLiteral("mnuViewMapGrid"), tr("Map &and Grid"));
    viewGrid = MakeChoice(layout, QStringLiteral("mnuViewGrid"), tr("&Grid"));
    viewMapGrid->setChecked(true);
    auto* layoutMenu = new QMenu(&window);
    layoutMenu->addActions(layout->actions());
    Key(QStringLiteral("MapGrid"))->setMenu(layoutMenu);

    toolbar = window.addToolBar(tr("Main"));
    toolbar->setObjectName(QStringLiteral("MainToolbar"));
    for (const char* key : kToolbarOrder) {
        if (std::string_view(key) == "Fill" || std::string_view(key) == "SelFields" ||
            std::string_view(key) == "SearchDB") {
            toolbar->addSeparator();
        }
        toolbar->addAction(Key(QString::fromLatin1(key)));
    }
    for (const char* key : {"Fill", "MapGrid", "Print"}) {
        if (auto* button = qobject_cast<QToolButton*>(toolbar->widgetForAction(Key(QString::fromLatin1(key))))) {
            button->setPopupMode(QToolButton::MenuButtonPopup);
        }
    }
}

void MainActions::MakeMenus(QMainWindow& window) {
    newJob = Key(QStringLiteral("NewJob"));
    openJob = Key(QStringLiteral("OpenJob"));
    saveJob = Key(QStringLiteral("SaveJob"));
    closeJob = Key(QStringLiteral("CloseJob"));
    openMaster = Key(QStringLiteral("NewDB"));
    newJob->setShortcut(QKeySequence::New);
    openJob->setShortcut(QKeySequence::Open);
    saveJob->setShortcut(QKeySequence::Save);
    saveJobAs = new QAction(tr("Save Job &As..."), &window);
    saveJobAs->setObjectName(QStringLiteral("mnuSaveAs"));
    exportCsv = new QAction(tr("&Export Grid as CSV..."), &window);
    exportCsv->setObjectName(QStringLiteral("mnuExportCsv"));
    printMap = new QAction(tr("&Print Map..."), &window);
    printMap->setObjectName(QStringLiteral("mnuPrintMap"));
    printMap->setShortcut(QKeySequence::Print);
    printGrid = new QAction(tr("Print &Grid..."), &window);
    printGrid->setObjectName(QStringLiteral("mnuPrintGrid"));
    printMapPdf = new QAction(tr("Map to &PDF..."), &window);
    printMapPdf->setObjectName(QStringLiteral("mnuMapPdf"));
    printGridPdf = new QAction(tr("Grid to P&DF..."), &window);
    printGridPdf->setObjectName(QStringLiteral("mnuGridPdf"));
    exit = new QAction(tr("E&xit"), &window);
    exit->setObjectName(QStringLiteral("mnuExit"));
    mapOptions = new QAction(tr("&Map Options..."), &window);
    mapOptions->setObjectName(QStringLiteral("mnuMapOptions"));
    about = new QAction(tr("&About Qarvel"), &window);
    about->setObjectName(QStringLiteral("mnuAbout"));
    printMenu = new QMenu(&window);
    printMenu->addActions({printMap, printGrid, printMapPdf, printGridPdf});
    Key(QStringLiteral("Print"))->setMenu(printMenu);

    QMenu* file = window.menuBar()->addMenu(tr("&File"));
    file->setObjectName(QStringLiteral("mnuFile"));
    file->addActions({newJob, openJob, saveJob, saveJobAs, closeJob});
    file->addSeparator();
    file->addActions({openMaster, exportCsv});
    file->addSeparator();
    file->addActions({printMap, printGrid, printMapPdf, printGridPdf});
    file->addSeparator();
    for (std::size_t i = 0; i < recent.size(); ++i) {
        recent[i] = file->addAction(QString());
        recent[i]->setObjectName(QStringLiteral("mnuMRU%1").arg(i + 1));
        recent[i]->setVisible(false);
    }
    file->addSeparator();
    file->addAction(exit);

    QMenu* view = window.menuBar()->addMenu(tr("&View"));
    view->setObjectName(QStringLiteral("mnuView"));
    view->addActions({viewMap, viewMapGrid, viewGrid});
    view->addSeparator();
    view->addActions({drawCircles, drawFill, drawPoints});
    view->addSeparator();
    view->addActions({channelColors, calls, am, borders});
    view->addSeparator();
    view->addActions({Key(QStringLiteral("SelFields")), Key(QStringLiteral("SortAsc")), Key(QStringLiteral("SortDesc"))});

    QMenu* options = window.menuBar()->addMenu(tr("&Options"));
    options->setObjectName(QStringLiteral("mnuOptions"));
    options->addAction(mapOptions);
    QMenu* help = window.menuBar()->addMenu(tr("&Help"));
    help->setObjectName(QStringLiteral("mnuHelp"));
    help->addAction(about);
}

void MainActions::ShowRecentFiles(const std::array<shell::RecentFileItem, shell::kMruCount>& items) {
    for (std::size_t i = 0; i < recent.size(); ++i) {
        recent[i]->setVisible(items[i].visible);
        recent[i]->setText(QString::fromStdString(items[i].caption));
    }
}

}  // namespace qarvel::app
