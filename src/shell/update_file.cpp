#include "shell/update_file.h"

#include <QSettings>
#include <QString>

#include <fstream>
#include <vector>

#include "core/error_trap.h"
#include "shell/program_context.h"

namespace qarvel::shell {

namespace {

constexpr std::string_view kModule = "modFMdb";

std::string TrimRight(std::string line) {
    while (!line.empty() && (line.back() == ' ' || line.back() == '\t' || line.back() == '\r')) {
        line.pop_back();
    }
    return line;
}

bool FiveDigits(const std::string& text) {
    if (text.size() != 5) return false;
    for (char c : text) {
        if (c < '0' || c > '9') return false;
    }
    return true;
}

}  // namespace

std::filesystem::path UpdateFilePath(const ProgramContext& context) {
    return std::filesystem::path(JoinPath(context.settings.gDataDIR, kUpdateFileName));
}

std::optional<std::int16_t> ReadUpdateFile(const std::filesystem::path& file) {
    std::ifstream in(file);
    if (!in) return std::nullopt;
    std::vector<std::string> lines;
    std::string line;
    while (lines.size() < 2 && std::getline(in, line)) {
        line = TrimRight(std::move(line));
        if (!line.empty()) lines.push_back(line);
    }
    if (lines.size() < 2 || lines[0] != kUpdateFileTitle || !FiveDigits(lines[1])) {
        return std::nullopt;
    }
    const int number = std::stoi(lines[1]);
    if (number > 32767) return std::nullopt;
    return static_cast<std::int16_t>(number);
}

bool UpdateRegSettings(QSettings& store, ProgramContext& context) {
    return core::TrappedVoid(kModule, ":UpdateRegSettings:", [&] {
        const std::filesystem::path file = UpdateFilePath(context);
        const std::optional<std::int16_t> number = ReadUpdateFile(file);
        if (!number) throw core::TrapError(file.string() + " is not a valid update file");
        context.settings.LastUpdate = *number;
        store.setValue(QStringLiteral("Standard/LastUpdate"), QString::number(*number));
        store.sync();
    });
}

}  // namespace qarvel::shell
