// The job commands with the system's prompts: open, save ("Replace Job"),
// close ("Save changes?", "Save Failed!"), new job in the progress window,
// master databases, recent files.

#include "app/jobdisplay/job_controller.h"

#include <QAction>

#include <gtest/gtest.h>

#include <fstream>
#include <memory>

#include "app/jobdisplay/job_display.h"
#include "app/mainwin/main_actions.h"
#include "app/mainwin/main_window.h"
#include "app/wizard/new_job_wizard.h"
#include "app_fixture.h"

namespace qarvel::app {
namespace {

namespace fs = std::filesystem;
using core::PromptAnswer;

class JobControllerTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_window = std::make_unique<MainWindow>(m_context);
        m_window->show();
    }
    void TearDown() override { m_window.reset(); }

    JobController& Controller() { return m_window->Controller(); }
    std::vector<std::string> Texts() { return m_world.Prompt().Texts(); }
    NewJobRequest Request(const fs::path& fmj) const {
        NewJobRequest request;
        request.inputs = m_world.JobInputs();
        request.jobFile = fmj;
        return request;
    }

    testing::AppWorld m_world;
    shell::ProgramContext m_context = m_world.Context();
    std::unique_ptr<MainWindow> m_window;
};

TEST_F(JobControllerTest, OpenShowsTheJobAndRemembersIt) {
    const fs::path fmj = m_world.MakeJob();
    ASSERT_TRUE(Controller().OpenJob(fmj));
    EXPECT_TRUE(m_window->Display().IsLoaded());
    EXPECT_EQ(m_context.settings.MRUFile[0], fmj.generic_string());
    EXPECT_EQ(m_context.settings.MRUConnect[0], m_world.MasterFmd().generic_string());
    QAction* first = m_window->Actions().recent[0];
    EXPECT_TRUE(first->isVisible());
    EXPECT_EQ(first->text().toStdString(), "&1 " + fmj.generic_string());
    EXPECT_FALSE(m_window->Actions().recent[1]->isVisible());
    EXPECT_TRUE(Texts().empty());
}

TEST_F(JobControllerTest, SavingOverTheJobFileAsksReplaceJob) {
    const fs::path fmj = m_world.MakeJob();
    ASSERT_TRUE(Controller().OpenJob(fmj));
    m_world.Prompt().QueueAnswer(PromptAnswer::Cancel);
    const auto written = fs::last_write_time(fmj);
    EXPECT_FALSE(Controller().SaveJob());
    ASSERT_EQ(m_world.Prompt().Messages().size(), 1u);
    EXPECT_EQ(m_world.Prompt().Messages()[0].text, "Replace " + fmj.string() + "?");
    EXPECT_EQ(m_world.Prompt().Messages()[0].title, "Replace Job");
    EXPECT_EQ(m_world.Prompt().Messages()[0].buttons, core::PromptButtons::OkCancel);
    EXPECT_EQ(fs::last_write_time(fmj), written);
    EXPECT_TRUE(Controller().SaveJob());  // OK this time
    EXPECT_EQ(m_world.Prompt().Messages().size(), 2u);
}

TEST_F(JobControllerTest, NewJobBuildsInTheProgressWindow) {
    const fs::path fmj = m_world.Jobs() / "fresh.fmj";
    ASSERT_TRUE(Controller().NewJob(Request(fmj)));
    const auto& captions = Controller().LastBuildCaptions();
    EXPECT_NE(std::find(captions.begin(), captions.end(), "Scanning FM Stations"), captions.end());
    EXPECT_NE(std::find(captions.begin(), captions.end(), "Building County Maps"), captions.end());
    EXPECT_TRUE(Controller().HasJob());
    EXPECT_TRUE(Controller().Job()->IsChanged());
    EXPECT_TRUE(m_window->Display().IsLoaded());
    EXPECT_EQ(m_window->Display().windowTitle(), "Job Display - fresh");
    EXPECT_EQ(m_window->Display().Header().Source, "app test master");
    EXPECT_FALSE(fs::exists(fmj));  // built, not yet saved
}

TEST_F(JobControllerTest, ClosingAChangedJobAsksSaveChanges) {
    const fs::path fmj = m_world.Jobs() / "fresh.fmj";
    ASSERT_TRUE(Controller().NewJob(Request(fmj)));
    m_world.Prompt().QueueAnswer(PromptAnswer::No);
    EXPECT_TRUE(Controller().CloseJob());
    EXPECT_EQ(Texts(), std::vector<std::string>{"Save changes?"});
    EXPECT_FALSE(Controller().HasJob());
    EXPECT_FALSE(m_window->Display().IsLoaded());
    EXPECT_FALSE(fs::exists(fmj));
}

TEST_F(JobControllerTest, YesToSaveChangesSavesBeforeClosing) {
    const fs::path fmj = m_world.Jobs() / "fresh.fmj";
    ASSERT_TRUE(Controller().NewJob(Request(fmj)));
    EXPECT_TRUE(Controller().CloseJob());  // Yes by default
    EXPECT_EQ(Texts(), std::vector<std::string>{"Save changes?"});
    EXPECT_TRUE(fs::exists(fmj));
}

TEST_F(JobControllerTest, FailedSaveKeepsTheJobOpen) {
    const fs::path fmj = m_world.Root() / "no such folder" / "fresh.fmj";
    ASSERT_TRUE(Controller().NewJob(Request(fmj)));
    EXPECT_FALSE(Controller().CloseJob());  // Yes, but the save cannot be written
    EXPECT_EQ(Texts(), (std::vector<std::string>{"Save changes?", "Save Failed!"}));
    EXPECT_TRUE(Controller().HasJob());
    EXPECT_TRUE(m_window->Display().IsLoaded());
}

TEST_F(JobControllerTest, OpeningAnotherJobClosesTheFirst) {
    const fs::path first = m_world.MakeJob("first");
    const fs::path second = m_world.MakeJob("second");
    ASSERT_TRUE(Controller().OpenJob(first));
    ASSERT_TRUE(Controller().OpenJob(second));
    EXPECT_EQ(m_window->Display().windowTitle(), "Job Display - second");
    EXPECT_EQ(m_context.settings.MRUFile[0], second.generic_string());
    EXPECT_EQ(m_context.settings.MRUFile[1], first.generic_string());
    ASSERT_TRUE(Controller().OpenRecent(2));
    EXPECT_EQ(m_window->Display().windowTitle(), "Job Display - first");
}

TEST_F(JobControllerTest, DamagedJobFileIsRefused) {
    const fs::path bad = m_world.Jobs() / "bad.fmj";
    std::ofstream(bad) << "not a job";
    EXPECT_FALSE(Controller().OpenJob(bad));
    EXPECT_FALSE(Controller().HasJob());
    EXPECT_FALSE(m_window->Display().IsLoaded());
}

TEST_F(JobControllerTest, NewJobNeedsAMasterDatabase) {
    m_context.masterDatabase.clear();
    EXPECT_FALSE(Controller().NewJob(Request(m_world.Jobs() / "x.fmj")));
    EXPECT_FALSE(Controller().HasJob());
}

TEST_F(JobControllerTest, LoadingAMasterReplacesTheOneInUse) {
    const fs::path previous = m_context.masterDatabase;
    ASSERT_TRUE(Controller().LoadMaster(m_world.MasterFmd()));
    EXPECT_NE(m_context.masterDatabase, previous);
    EXPECT_TRUE(fs::exists(m_context.masterDatabase));
    EXPECT_FALSE(fs::exists(previous));
    EXPECT_EQ(m_context.pendingOperation, "NoOp");
    EXPECT_EQ(MasterSource(m_context.masterDatabase, m_world.MasterFmd()), "app test master");
}

TEST(BoundaryFolderTest, PrefersTheDataFolderWhenItHoldsTheMaps) {
    testing::AppWorld world;
    shell::ProgramSettings s;
    s.gDataDIR = world.Data().string();
    s.gToolDIR = "/elsewhere";
    EXPECT_EQ(BoundaryFolder(s), world.Data());
    s.gDataDIR = world.Jobs().string();
    EXPECT_EQ(BoundaryFolder(s), fs::path("/elsewhere"));
}

}  // namespace
}  // namespace qarvel::app
