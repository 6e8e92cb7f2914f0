// The main window's switchboard: the toolbar of the program's image keys,
// the recent files, and which commands a closed job leaves usable.

#include "app/mainwin/main_window.h"

#include <QAction>
#include <QToolBar>

#include <gtest/gtest.h>

#include <memory>

#include "app/jobdisplay/job_controller.h"
#include "app/mainwin/main_actions.h"
#include "app_fixture.h"

namespace qarvel::app {
namespace {

TEST(MainWindowTest, ToolbarHoldsEveryImageKeyWithAnIcon) {
    testing::AppWorld world;
    shell::ProgramContext context = world.Context();
    MainWindow window(context);
    EXPECT_EQ(window.objectName(), "frmMain");
    const auto toolbarActions = window.Actions().toolbar->actions();
    for (const std::string& key : shell::ToolbarImageKeys()) {
        QAction* action = window.findChild<QAction*>(QString::fromStdString(key));
        ASSERT_NE(action, nullptr) << key;
        EXPECT_FALSE(action->icon().isNull()) << key;
        EXPECT_TRUE(toolbarActions.contains(action)) << key;
    }
    EXPECT_EQ(window.Actions().toolbar->objectName(), "MainToolbar");
}

TEST(MainWindowTest, JobCommandsWaitForAJob) {
    testing::AppWorld world;
    shell::ProgramContext context = world.Context();
    MainWindow window(context);
    EXPECT_FALSE(window.Actions().saveJob->isEnabled());
    EXPECT_FALSE(window.Actions().printMap->isEnabled());
    EXPECT_TRUE(window.Actions().newJob->isEnabled());
    EXPECT_TRUE(window.Actions().openMaster->isEnabled());
    ASSERT_TRUE(window.Controller().OpenJob(world.MakeJob()));
    EXPECT_TRUE(window.Actions().saveJob->isEnabled());
    EXPECT_TRUE(window.Actions().exportCsv->isEnabled());
    EXPECT_TRUE(window.Controller().CloseJob());
    EXPECT_FALSE(window.Actions().closeJob->isEnabled());
}

TEST(MainWindowTest, RecentFilesShowTheirAccessKeys) {
    testing::AppWorld world;
    shell::ProgramContext context = world.Context();
    context.settings.MRUFile = {"/jobs/a.fmj", "/jobs/b.fmj", "", "", ""};
    context.recentFiles = shell::RecentFilesMenu(context.settings);
    MainWindow window(context);
    EXPECT_EQ(window.Actions().recent[0]->text(), "&1 /jobs/a.fmj");
    EXPECT_EQ(window.Actions().recent[1]->text(), "&2 /jobs/b.fmj");
    EXPECT_FALSE(window.Actions().recent[2]->isVisible());
}

}  // namespace
}  // namespace qarvel::app
