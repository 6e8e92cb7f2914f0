#pragma once
// The main window's commands as actions: the menus (File, View, Options,
// Help), the recent-files entries ("&1 name" ...) and the toolbar of the
// program's 21 image keys ("Fill", "Colors", "Calls", "AM", "MapGrid",
// "Borders", "NewJob", "OpenJob", "CloseJob", "SelFields", "SearchDB",
// "SrchBasic", "SaveJob", "SrchSQL", "SortAsc", "SortDesc", "Print",
// "NewDB", "Calc", "AutoScan", "GPS"), each action named by its key and
// shown with a standard icon of the style. Only building and naming here;
// the main window connects them.

#include <QObject>
#include <QString>

#include <array>
#include <map>

#include "shell/program_context.h"
#include "shell/settings.h"

class QAction;
class QActionGroup;
class QMainWindow;
class QMenu;
class QToolBar;

namespace qarvel::app {

class MainActions : public QObject {
    Q_OBJECT

public:
    explicit MainActions(QMainWindow& window);

    // The toolbar action of an image key; null for an unknown key.
    QAction* Key(const QString& key) const;

    // Shows the recent files: one entry per visible item, captioned as
    // the settings give it ("&1 name").
    void ShowRecentFiles(const std::array<shell::RecentFileItem, shell::kMruCount>& items);

    QToolBar* toolbar = nullptr;
    // File menu.
    QAction* newJob = nullptr;
    QAction* openJob = nullptr;
    QAction* saveJob = nullptr;
    QAction* saveJobAs = nullptr;
    QAction* closeJob = nullptr;
    QAction* openMaster = nullptr;
    QAction* exportCsv = nullptr;
    QAction* printMap = nullptr;
    QAction* printGrid = nullptr;
    QAction* printMapPdf = nullptr;
    QAction* printGridPdf = nullptr;
    QAction* exit = nullptr;
    std::array<QAction*, shell::kMruCount> recent{};
    // View menu: the drawing switches and the layout.
    QAction* viewMap = nullptr;
    QAction* viewMapGrid = nullptr;
    QAction* viewGrid = nullptr;
    QAction* drawFill = nullptr;
    QAction* drawCircles = nullptr;
    QAction* drawPoints = nullptr;
    QAction* channelColors = nullptr;  // checked: "ChannelColor", else "ClearColor"
    QAction* calls = nullptr;
    QAction* am = nullptr;
    QAction* borders = nullptr;
    // Options and Help.
    QAction* mapOptions = nullptr;
    QAction* about = nullptr;
    QMenu* printMenu = nullptr;

private:
    void MakeToolbar(QMainWindow& window);
    void MakeMenus(QMainWindow& window);
    QAction* MakeChoice(QActionGroup* group, const QString& name, const QString& text);

    std::map<QString, QAction*> m_keys;
};

}  // namespace qarvel::app
