#pragma once
// The prompt interface: every message the system shows the user goes through
// here, with its exact text. The desktop program answers with message boxes,
// the command line with stderr and fixed answers, tests with a recording fake.

#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace qarvel::core {

enum class PromptButtons { Ok, OkCancel, YesNo, YesNoCancel };
enum class PromptIcon { Information, Warning, Critical, Question };
enum class PromptAnswer { Ok, Cancel, Yes, No };

struct PromptMessage {
    std::string text;
    std::string title;  // empty: the program's name
    PromptButtons buttons = PromptButtons::Ok;
    PromptIcon icon = PromptIcon::Information;
};

class Prompt {
public:
    virtual ~Prompt() = default;
    virtual PromptAnswer Show(const PromptMessage& message) = 0;
};

// For the command line: prints the text on stderr and gives a fixed answer to
// questions (the cautious one unless told otherwise), since nobody is there
// to answer.
class StderrPrompt : public Prompt {
public:
    explicit StderrPrompt(bool answerYes = false) : m_answerYes(answerYes) {}
    PromptAnswer Show(const PromptMessage& message) override;

private:
    bool m_answerYes;
};

// For tests: records every message and answers from a queue (Ok or Yes when
// the queue is empty).
class RecordingPrompt : public Prompt {
public:
    PromptAnswer Show(const PromptMessage& message) override;
    void QueueAnswer(PromptAnswer answer) { m_answers.push_back(answer); }
    const std::vector<PromptMessage>& Messages() const { return m_messages; }
    std::vector<std::string> Texts() const;

private:
    std::deque<PromptAnswer> m_answers;
    std::vector<PromptMessage> m_messages;
};

// The prompt in force: the installed one, else a StderrPrompt.
Prompt& CurrentPrompt();

// Shorthand for CurrentPrompt().Show(...).
PromptAnswer ShowPrompt(const std::string& text, const std::string& title = {},
                        PromptButtons buttons = PromptButtons::Ok,
                        PromptIcon icon = PromptIcon::Information);

class ScopedPrompt {
public:
    explicit ScopedPrompt(Prompt& prompt);
    ~ScopedPrompt();
    ScopedPrompt(const ScopedPrompt&) = delete;
    ScopedPrompt& operator=(const ScopedPrompt&) = delete;

private:
    Prompt* m_previous;
};

// The one fatal stop of the system: ends the program at once with exitCode.
// Tests install a handler that throws ProgramHalted instead.
using HaltHandler = std::function<void(int exitCode)>;
[[noreturn]] void HaltProgram(int exitCode);
class ScopedHaltHandler {
public:
    explicit ScopedHaltHandler(HaltHandler handler);
    ~ScopedHaltHandler();
    ScopedHaltHandler(const ScopedHaltHandler&) = delete;
    ScopedHaltHandler& operator=(const ScopedHaltHandler&) = delete;

private:
    HaltHandler m_previous;
};

}  // namespace qarvel::core
