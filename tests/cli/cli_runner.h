#pragma once
// Runs the built qarvel-cli as a user would, capturing its output and exit
// status. Shared by the command-line tests.

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace qarvel::testing {

struct CliRun {
    int status = -1;
    std::string out, err;
};

inline std::string ShellQuote(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

inline std::string ReadFileText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// Runs qarvel-cli with args; its temporary folder is `tmp` when given, so
// that scratch files it leaves behind can be seen by the test.
inline CliRun RunCli(const std::vector<std::string>& args, const std::filesystem::path& work,
                     const std::filesystem::path& tmp = {}) {
    std::filesystem::create_directories(work);
    std::string command;
    if (!tmp.empty()) command = "TMPDIR=" + ShellQuote(tmp.string()) + " ";
    command += ShellQuote(QARVEL_CLI);
    for (const std::string& arg : args) command += " " + ShellQuote(arg);
    command += " </dev/null >" + ShellQuote((work / "out.txt").string()) + " 2>" +
               ShellQuote((work / "err.txt").string());
    int raw = std::system(command.c_str());
    CliRun run;
    run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    run.out = ReadFileText(work / "out.txt");
    run.err = ReadFileText(work / "err.txt");
    return run;
}

// A fresh folder named after the running test, removed by the destructor.
class TestFolder {
public:
    explicit TestFolder(const std::string& prefix) {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        std::string name = prefix + info->test_suite_name() + "_" + info->name();
        for (char& c : name) {
            if (c == '/') c = '_';
        }
        m_path = std::filesystem::temp_directory_path() / name;
        std::filesystem::remove_all(m_path);
        std::filesystem::create_directories(m_path);
    }
    ~TestFolder() { std::filesystem::remove_all(m_path); }
    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

}  // namespace qarvel::testing
