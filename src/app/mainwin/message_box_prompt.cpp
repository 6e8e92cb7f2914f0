#include "app/mainwin/message_box_prompt.h"

#include <QApplication>
#include <QThread>

namespace qarvel::app {

QMessageBox::StandardButtons ButtonsFor(core::PromptButtons buttons) {
    switch (buttons) {
        case core::PromptButtons::Ok: return QMessageBox::Ok;
        case core::PromptButtons::OkCancel: return QMessageBox::Ok | QMessageBox::Cancel;
        case core::PromptButtons::YesNo: return QMessageBox::Yes | QMessageBox::No;
        case core::PromptButtons::YesNoCancel: return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    }
    return QMessageBox::Ok;
}

QMessageBox::Icon IconFor(core::PromptIcon icon) {
    switch (icon) {
        case core::PromptIcon::Information: return QMessageBox::Information;
        case core::PromptIcon::Warning: return QMessageBox::Warning;
        case core::PromptIcon::Critical: return QMessageBox::Critical;
        case core::PromptIcon::Question: return QMessageBox::Question;
    }
    return QMessageBox::NoIcon;
}

core::PromptAnswer AnswerFor(QMessageBox::StandardButton pressed, core::PromptButtons buttons) {
    switch (pressed) {
        case QMessageBox::Ok: return core::PromptAnswer::Ok;
        case QMessageBox::Yes: return core::PromptAnswer::Yes;
        case QMessageBox::No: return core::PromptAnswer::No;
        case QMessageBox::Cancel: return core::PromptAnswer::Cancel;
        default: break;
    }
    switch (buttons) {
        case core::PromptButtons::Ok: return core::PromptAnswer::Ok;
        case core::PromptButtons::YesNo: return core::PromptAnswer::No;
        default: return core::PromptAnswer::Cancel;
    }
}

namespace {

core::PromptAnswer ShowOnThisThread(const core::PromptMessage& message) {
    QMessageBox box(IconFor(message.icon),
                    QString::fromStdString(message.title.empty() ? std::string(kProgramTitle) : message.title),
                    QString::fromStdString(message.text), ButtonsFor(message.buttons),
                    QApplication::activeWindow());
    const auto pressed = static_cast<QMessageBox::StandardButton>(box.exec());
    return AnswerFor(pressed, message.buttons);
}

}  // namespace

core::PromptAnswer MessageBoxPrompt::Show(const core::PromptMessage& message) {
    QCoreApplication* app = QCoreApplication::instance();
    if (app == nullptr || QThread::currentThread() == app->thread()) return ShowOnThisThread(message);
    // Widgets live on the user-interface thread only: ask there and wait.
    core::PromptAnswer answer = core::PromptAnswer::Cancel;
    QMetaObject::invokeMethod(
        app, [&] { answer = ShowOnThisThread(message); }, Qt::BlockingQueuedConnection);
    return answer;
}

}  // namespace qarvel::app
