// The message boxes that answer the prompt interface, on the user-interface
// thread and from a worker thread.

#include "app/mainwin/message_box_prompt.h"

#include <QApplication>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

#include <ostream>

#include <thread>

#include "app_fixture.h"

namespace qarvel::app {
namespace {

using core::PromptAnswer;
using core::PromptButtons;

struct AnswerCase {
    const char* name;
    QMessageBox::StandardButton pressed;
    PromptButtons buttons;
    PromptAnswer answer;
};
// Test names and failure messages show the case by its name.
void PrintTo(const AnswerCase& c, std::ostream* os) { *os << c.name; }


class AnswerForTest : public ::testing::TestWithParam<AnswerCase> {};

TEST_P(AnswerForTest, MapsTheButton) {
    EXPECT_EQ(AnswerFor(GetParam().pressed, GetParam().buttons), GetParam().answer);
}

INSTANTIATE_TEST_SUITE_P(
    Table, AnswerForTest,
    ::testing::Values(AnswerCase{"Ok", QMessageBox::Ok, PromptButtons::OkCancel, PromptAnswer::Ok},
                      AnswerCase{"Cancel", QMessageBox::Cancel, PromptButtons::OkCancel, PromptAnswer::Cancel},
                      AnswerCase{"Yes", QMessageBox::Yes, PromptButtons::YesNo, PromptAnswer::Yes},
                      AnswerCase{"No", QMessageBox::No, PromptButtons::YesNo, PromptAnswer::No},
                      AnswerCase{"ClosedYesNoIsNo", QMessageBox::NoButton, PromptButtons::YesNo, PromptAnswer::No},
                      AnswerCase{"ClosedOkCancelIsCancel", QMessageBox::NoButton, PromptButtons::OkCancel,
                                 PromptAnswer::Cancel},
                      AnswerCase{"ClosedOkIsOk", QMessageBox::NoButton, PromptButtons::Ok, PromptAnswer::Ok}),
    [](const auto& c) { return std::string(c.param.name); });

TEST(ButtonsForTest, EachSetHasItsButtons) {
    EXPECT_EQ(ButtonsFor(PromptButtons::OkCancel), QMessageBox::Ok | QMessageBox::Cancel);
    EXPECT_EQ(ButtonsFor(PromptButtons::YesNoCancel), QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
}

// Presses `button` on the next message box to appear and records its texts.
void PressWhenShown(QMessageBox::StandardButton button, QString* text, QString* title) {
    auto* timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, [=] {
        for (QWidget* w : QApplication::topLevelWidgets()) {
            auto* box = qobject_cast<QMessageBox*>(w);
            if (box == nullptr || !box->isVisible()) continue;
            *text = box->text();
            *title = box->windowTitle();
            box->button(button)->click();
            timer->stop();
            timer->deleteLater();
            return;
        }
    });
    timer->start(10);
}

TEST(MessageBoxPromptTest, ShowsTheTextAndReturnsTheAnswer) {
    MessageBoxPrompt prompt;
    QString text, title;
    PressWhenShown(QMessageBox::No, &text, &title);
    const PromptAnswer answer = prompt.Show({"Save changes?", "", PromptButtons::YesNo, core::PromptIcon::Question});
    EXPECT_EQ(answer, PromptAnswer::No);
    EXPECT_EQ(text, "Save changes?");
    EXPECT_EQ(title, "Qarvel");
}

TEST(MessageBoxPromptTest, WorkerThreadAsksOnTheInterfaceThread) {
    MessageBoxPrompt prompt;
    QString text, title;
    PressWhenShown(QMessageBox::Ok, &text, &title);
    PromptAnswer answer = PromptAnswer::Cancel;
    std::atomic<bool> done{false};
    std::thread worker([&] {
        answer = prompt.Show({"Replace /x.fmj?", "Replace Job", PromptButtons::OkCancel, core::PromptIcon::Question});
        done = true;
    });
    EXPECT_TRUE(testing::WaitUntil([&] { return done.load(); }));
    worker.join();
    EXPECT_EQ(answer, PromptAnswer::Ok);
    EXPECT_EQ(title, "Replace Job");
}

}  // namespace
}  // namespace qarvel::app
