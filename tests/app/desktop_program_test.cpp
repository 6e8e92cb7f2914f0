// The program's start through the shell's start-up sequence, with a job or
// a master database on the command line, and its orderly end.

#include "app/mainwin/desktop_program.h"

#include <gtest/gtest.h>

#include "app/jobdisplay/job_controller.h"
#include "app/jobdisplay/job_display.h"
#include "app/jobdisplay/grid_model.h"
#include "app/jobdisplay/job_grid.h"
#include "app/mainwin/main_window.h"
#include "app_fixture.h"

namespace qarvel::app {
namespace {

namespace fs = std::filesystem;
using shell::CommandLineOutcome;

TEST(DesktopProgramTest, JobOnTheCommandLineOpensInTheJobDisplay) {
    testing::AppWorld world;
    const fs::path fmj = world.MakeJob();
    DesktopProgram program(world.Environment({fmj.string()}));
    const shell::StartupResult result = program.Start();
    ASSERT_TRUE(result.showMainWindow);
    EXPECT_EQ(result.commandLine, CommandLineOutcome::OpenedJob);
    MainWindow* window = program.Window();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->objectName(), "frmMain");
    JobDisplay& display = window->Display();
    ASSERT_TRUE(testing::WaitUntil([&] { return display.RepaintCount() > 0; }));
    EXPECT_GT(display.Grid()->Model()->rowCount(), 0);
    EXPECT_EQ(window->windowTitle(), "Qarvel 0.1.0 - Job Display - omaha");
    EXPECT_TRUE(world.Prompt().Texts().empty());
}

TEST(DesktopProgramTest, MasterOnTheCommandLineIsUnpacked) {
    testing::AppWorld world;
    DesktopProgram program(world.Environment({world.MasterFmd().string()}));
    const shell::StartupResult result = program.Start();
    ASSERT_TRUE(result.showMainWindow);
    EXPECT_EQ(result.commandLine, CommandLineOutcome::LoadedMaster);
    const shell::ProgramContext& context = program.Context();
    EXPECT_EQ(context.masterPackage, world.MasterFmd());
    EXPECT_EQ(context.masterDatabase.parent_path(), context.MasterScratch());
    EXPECT_TRUE(fs::exists(context.masterDatabase));
    EXPECT_TRUE(program.Window()->Controller().HasMaster());
    EXPECT_FALSE(program.Window()->Controller().HasJob());
}

TEST(DesktopProgramTest, ClosingTheWindowShutsTheProgramDown) {
    testing::AppWorld world;
    const fs::path fmj = world.MakeJob();
    DesktopProgram program(world.Environment({fmj.string()}));
    ASSERT_TRUE(program.Start().showMainWindow);
    const fs::path scratch = program.Context().JobScratch();
    ASSERT_TRUE(fs::exists(scratch));
    EXPECT_TRUE(program.Window()->close());
    EXPECT_TRUE(world.Prompt().Texts().empty());  // the job was not changed
    EXPECT_FALSE(fs::exists(scratch));
    world.Settings().sync();
    EXPECT_EQ(world.Settings().value(QStringLiteral("Standard/MRUFile1")).toString().toStdString(),
              fmj.generic_string());
}

TEST(DesktopProgramTest, RefusingToLocateResourcesEndsTheProgram) {
    testing::AppWorld world;
    world.Settings().setValue(QStringLiteral("Standard/gToolDIR"), QStringLiteral("/no/such/folder"));
    world.Prompt().QueueAnswer(core::PromptAnswer::No);
    DesktopProgram program(world.Environment());
    const shell::StartupResult result = program.Start();
    EXPECT_FALSE(result.showMainWindow);
    ASSERT_EQ(world.Prompt().Texts().size(), 1u);
    EXPECT_EQ(world.Prompt().Texts()[0], "Resources Directory Not Found!\nAttempt to Locate?");
    ASSERT_NE(program.Window(), nullptr);  // made at "create forms", never shown
    EXPECT_FALSE(program.Window()->isVisible());
}

}  // namespace
}  // namespace qarvel::app
