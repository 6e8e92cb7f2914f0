#pragma once
// The desktop program's answer to the prompt interface: each message of the
// system is a modal QMessageBox with its exact text, title, buttons and
// icon. Messages raised on a worker thread (a job being built in the
// progress window) are shown on the user-interface thread, the worker
// waiting for the answer.

#include <QMessageBox>

#include "core/prompt.h"

namespace qarvel::app {

// The program's name, the title of a message that names none.
inline constexpr const char* kProgramTitle = "Qarvel";

class MessageBoxPrompt : public core::Prompt {
public:
    core::PromptAnswer Show(const core::PromptMessage& message) override;
};

QMessageBox::StandardButtons ButtonsFor(core::PromptButtons buttons);
QMessageBox::Icon IconFor(core::PromptIcon icon);
// The answer a pressed button gives; a closed box counts as the cautious
// answer of its button set (Cancel or No; Ok for a lone OK).
core::PromptAnswer AnswerFor(QMessageBox::StandardButton pressed, core::PromptButtons buttons);

}  // namespace qarvel::app
