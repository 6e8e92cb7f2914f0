#pragma once
// A fresh folder for each test under the system's temporary folder, named
// after the test and the process so that parallel runs never share one, and
// removed afterwards with everything in it.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace qarvel::testing_support {

inline std::filesystem::path FreshTestFolder() {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string("qarvel_") + info->test_suite_name() + "_" + info->name() + "_" +
                       std::to_string(::getpid());
    std::replace(name.begin(), name.end(), '/', '_');  // parameterised names hold a '/'
    const std::filesystem::path dir = std::filesystem::temp_directory_path() / name;
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    return dir;
}

// The names in a folder, sorted: shows what a routine left behind.
inline std::vector<std::string> Listing(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& item : std::filesystem::directory_iterator(folder))
        names.push_back(item.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

class TempFolderTest : public ::testing::Test {
protected:
    void SetUp() override { m_root = FreshTestFolder(); }
    void TearDown() override { std::filesystem::remove_all(m_root); }
    const std::filesystem::path& Root() const { return m_root; }

    std::filesystem::path m_root;
};

}  // namespace qarvel::testing_support
