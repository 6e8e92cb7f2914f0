#include "core/error_trap.h"
#include "core/prompt.h"

#include <gtest/gtest.h>

namespace qarvel::core {
namespace {

TEST(ErrorTrap, ReportsModuleAndRoutineAndReturnsFailureValue) {
    RecordingErrorSink sink;
    ScopedErrorSink scope(sink);
    int result = Trapped("modMinSep", ":LookupMinSep:", 0, []() -> int {
        throw TrapError("Subscript out of range");
    });
    EXPECT_EQ(result, 0);
    ASSERT_EQ(sink.Reports().size(), 1u);
    EXPECT_EQ(sink.Reports()[0].Text(), "modMinSep:LookupMinSep: Subscript out of range");
}

TEST(ErrorTrap, PassesResultThroughWhenNothingFails) {
    RecordingErrorSink sink;
    ScopedErrorSink scope(sink);
    EXPECT_EQ(Trapped("m", ":r:", -1, [] { return 7; }), 7);
    EXPECT_TRUE(sink.Reports().empty());
}

TEST(ErrorTrap, ProgramHaltIsNeverSwallowed) {
    ScopedHaltHandler halt([](int code) { throw ProgramHalted{code}; });
    EXPECT_THROW(Trapped("m", ":r:", 0, []() -> int { HaltProgram(3); }), ProgramHalted);
}

TEST(Prompt, RecordingPromptAnswersFromItsQueueThenDefaults) {
    RecordingPrompt prompt;
    ScopedPrompt scope(prompt);
    prompt.QueueAnswer(PromptAnswer::Cancel);
    EXPECT_EQ(ShowPrompt("Replace x?", "Replace Job", PromptButtons::OkCancel), PromptAnswer::Cancel);
    EXPECT_EQ(ShowPrompt("Save changes?", "", PromptButtons::YesNo), PromptAnswer::Yes);
    EXPECT_EQ(prompt.Texts(), (std::vector<std::string>{"Replace x?", "Save changes?"}));
    EXPECT_EQ(prompt.Messages()[0].title, "Replace Job");
}

}  // namespace
}  // namespace qarvel::core
