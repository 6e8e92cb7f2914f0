// The progress window runs its work on a worker thread, shows the stage
// captions and stops the work on Cancel.

#include "app/mainwin/progress_window.h"

#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace qarvel::app {
namespace {

TEST(ProgressWindowTest, RunsTheWorkAndShowsItsStages) {
    ProgressWindow window;
    EXPECT_EQ(window.objectName(), "frmProcessing");
    bool onWorker = false;
    const auto gui = std::this_thread::get_id();
    const bool result = window.Run(QStringLiteral("MakeNewJob"), {QStringLiteral("One"), QStringLiteral("Two")},
                                   [&](const ProgressWindow::Progress& progress, const std::atomic<bool>&) {
                                       onWorker = std::this_thread::get_id() != gui;
                                       progress("One");
                                       progress("Two");
                                       return true;
                                   },
                                   true);
    EXPECT_TRUE(result);
    EXPECT_TRUE(onWorker);
    EXPECT_FALSE(window.Cancelled());
    EXPECT_EQ(window.Captions(), (QStringList{QStringLiteral("One"), QStringLiteral("Two")}));
    EXPECT_EQ(window.windowTitle(), "MakeNewJob");
}

TEST(ProgressWindowTest, CancelStopsTheWork) {
    ProgressWindow window;
    QTimer::singleShot(50, &window, [&] { window.findChild<QPushButton*>(QStringLiteral("cmdCancel"))->click(); });
    const bool result = window.Run(QStringLiteral("MakeNewJob"), {},
                                   [](const ProgressWindow::Progress&, const std::atomic<bool>& cancel) {
                                       for (int i = 0; i < 500 && !cancel; ++i) {
                                           std::this_thread::sleep_for(std::chrono::milliseconds(10));
                                       }
                                       return !cancel;
                                   },
                                   true);
    EXPECT_FALSE(result);
    EXPECT_TRUE(window.Cancelled());
}

TEST(ProgressWindowTest, WorkThatCannotStopHasNoCancel) {
    ProgressWindow window;
    bool enabled = true;
    QTimer::singleShot(0, &window, [&] {
        enabled = window.findChild<QPushButton*>(QStringLiteral("cmdCancel"))->isEnabled();
        window.reject();  // closing the window does not stop such work either
    });
    const bool result = window.Run(QStringLiteral("UnPackDatabase"), {},
                                   [](const ProgressWindow::Progress&, const std::atomic<bool>& cancel) {
                                       std::this_thread::sleep_for(std::chrono::milliseconds(100));
                                       return !cancel;
                                   },
                                   false);
    EXPECT_FALSE(enabled);
    EXPECT_TRUE(result);
}

}  // namespace
}  // namespace qarvel::app
