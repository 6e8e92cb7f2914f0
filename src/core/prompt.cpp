#include "core/prompt.h"

#include <cstdio>
#include <cstdlib>

namespace qarvel::core {
namespace {

Prompt* g_prompt = nullptr;
HaltHandler g_haltHandler;

}  // namespace

PromptAnswer StderrPrompt::Show(const PromptMessage& message) {
    if (!message.title.empty()) {
        std::fprintf(stderr, "%s: %s\n", message.title.c_str(), message.text.c_str());
    } else {
        std::fprintf(stderr, "%s\n", message.text.c_str());
    }
    switch (message.buttons) {
        case PromptButtons::Ok:
            return PromptAnswer::Ok;
        case PromptButtons::OkCancel:
            return m_answerYes ? PromptAnswer::Ok : PromptAnswer::Cancel;
        case PromptButtons::YesNo:
        case PromptButtons::YesNoCancel:
            return m_answerYes ? PromptAnswer::Yes : PromptAnswer::No;
    }
    return PromptAnswer::Cancel;
}

PromptAnswer RecordingPrompt::Show(const PromptMessage& message) {
    m_messages.push_back(message);
    if (!m_answers.empty()) {
        PromptAnswer answer = m_answers.front();
        m_answers.pop_front();
        return answer;
    }
    bool yesNo = message.buttons == PromptButtons::YesNo ||
                 message.buttons == PromptButtons::YesNoCancel;
    return yesNo ? PromptAnswer::Yes : PromptAnswer::Ok;
}

std::vector<std::string> RecordingPrompt::Texts() const {
    std::vector<std::string> texts;
    for (const auto& m : m_messages) texts.push_back(m.text);
    return texts;
}

Prompt& CurrentPrompt() {
    static StderrPrompt fallback;
    return g_prompt ? *g_prompt : fallback;
}

PromptAnswer ShowPrompt(const std::string& text, const std::string& title, PromptButtons buttons,
                        PromptIcon icon) {
    return CurrentPrompt().Show({text, title, buttons, icon});
}

ScopedPrompt::ScopedPrompt(Prompt& prompt) : m_previous(g_prompt) { g_prompt = &prompt; }
ScopedPrompt::~ScopedPrompt() { g_prompt = m_previous; }

void HaltProgram(int exitCode) {
    if (g_haltHandler) g_haltHandler(exitCode);
    std::exit(exitCode);
}

ScopedHaltHandler::ScopedHaltHandler(HaltHandler handler) : m_previous(std::move(g_haltHandler)) {
    g_haltHandler = std::move(handler);
}
ScopedHaltHandler::~ScopedHaltHandler() { g_haltHandler = std::move(m_previous); }

}  // namespace qarvel::core
