// The deferred redraw: many requests give one tick; a filter change waits a
// second; a hidden display keeps its work until shown.

#include "app/jobdisplay/redraw_scheduler.h"

#include <gtest/gtest.h>

#include "app_fixture.h"

namespace qarvel::app {
namespace {

using testing::WaitUntil;

class RedrawSchedulerTest : public ::testing::Test {
protected:
    void SetUp() override {
        QObject::connect(&m_scheduler, &RedrawScheduler::rebuildGrid, [this] { ++m_rebuilds; });
        QObject::connect(&m_scheduler, &RedrawScheduler::repaintMap, [this] { ++m_repaints; });
    }
    RedrawScheduler m_scheduler;
    int m_rebuilds = 0;
    int m_repaints = 0;
};

TEST_F(RedrawSchedulerTest, ManyRequestsGiveOneRedraw) {
    for (int i = 0; i < 10; ++i) {
        m_scheduler.UpdateMap();
        m_scheduler.UpdateGrid();
    }
    EXPECT_EQ(m_scheduler.Timer().interval(), kRedrawDelayMs);
    EXPECT_TRUE(m_scheduler.Timer().isActive());
    ASSERT_TRUE(WaitUntil([&] { return m_repaints > 0; }));
    WaitUntil([] { return false; }, 50);  // nothing further arrives
    EXPECT_EQ(m_rebuilds, 1);
    EXPECT_EQ(m_repaints, 1);
    EXPECT_FALSE(m_scheduler.MapPending());
    EXPECT_FALSE(m_scheduler.GridPending());
    EXPECT_FALSE(m_scheduler.Timer().isActive());
}

TEST_F(RedrawSchedulerTest, MapRequestAloneDoesNotRebuild) {
    m_scheduler.UpdateMap();
    ASSERT_TRUE(WaitUntil([&] { return m_repaints == 1; }));
    EXPECT_EQ(m_rebuilds, 0);
}

TEST_F(RedrawSchedulerTest, FilterChangeWaitsASecondAndClearsTheDelay) {
    m_scheduler.SetDelay(true);
    m_scheduler.UpdateGrid();
    EXPECT_EQ(m_scheduler.Timer().interval(), kFilterDelayMs);
    WaitUntil([] { return false; }, 300);
    EXPECT_EQ(m_rebuilds, 0);  // still waiting
    m_scheduler.UpdateGrid();  // another click restarts the wait
    ASSERT_TRUE(WaitUntil([&] { return m_rebuilds == 1; }, 3000));
    EXPECT_FALSE(m_scheduler.Delay());
    m_scheduler.UpdateMap();
    EXPECT_EQ(m_scheduler.Timer().interval(), kRedrawDelayMs);
}

TEST_F(RedrawSchedulerTest, HiddenDisplayKeepsWorkUntilResumed) {
    bool visible = false;
    m_scheduler.ready = [&] { return visible; };
    m_scheduler.UpdateGrid();
    WaitUntil([] { return false; }, 50);
    EXPECT_EQ(m_rebuilds, 0);
    EXPECT_TRUE(m_scheduler.GridPending());
    visible = true;
    m_scheduler.Resume();
    ASSERT_TRUE(WaitUntil([&] { return m_rebuilds == 1; }));
    EXPECT_EQ(m_repaints, 1);
}

TEST_F(RedrawSchedulerTest, CancelDropsPendingWork) {
    m_scheduler.UpdateGrid();
    m_scheduler.Cancel();
    WaitUntil([] { return false; }, 50);
    EXPECT_EQ(m_rebuilds + m_repaints, 0);
}

}  // namespace
}  // namespace qarvel::app
