#pragma once
// A scratch folder that lives as long as the object: removed, with all it
// holds, when the object goes out of scope, so that an interrupted command
// leaves nothing behind in the temporary folder.

#include "container/container.h"

#include <filesystem>
#include <string_view>
#include <system_error>

namespace qarvel::container {

class ScratchFolder {
public:
    struct Adopt {};
    // A fresh folder, named prefix followed by random characters, under the
    // system's temporary folder. Throws std::runtime_error when it cannot be made.
    explicit ScratchFolder(std::string_view prefix)
        : m_path(CreateUniqueFolder(std::filesystem::temp_directory_path(), prefix)) {}
    // Takes charge of a folder made (or about to be made) by the caller.
    ScratchFolder(Adopt, std::filesystem::path path) : m_path(std::move(path)) {}
    ~ScratchFolder() {
        std::error_code ec;
        std::filesystem::remove_all(m_path, ec);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

}  // namespace qarvel::container
