#pragma once
// An unpacked master database for a command's life: a ".fmd" is unpacked
// into a scratch folder that is removed afterwards; anything else is taken
// as an unpacked ".fdb". Either must pass the layout and position checks.

#include <filesystem>
#include <memory>
#include <string>

#include "container/scratch_folder.h"

namespace qarvel::cli {

class MasterFile {
  public:
    // Throws UsageError for a missing file, DataError for a damaged one.
    explicit MasterFile(const std::string& dbArg);
    MasterFile(const MasterFile&) = delete;
    MasterFile& operator=(const MasterFile&) = delete;
    const std::filesystem::path& Fdb() const { return m_fdb; }

  private:
    void Check(const std::string& dbArg) const;
    std::unique_ptr<container::ScratchFolder> m_scratch;  // a member, so it goes when the constructor throws
    std::filesystem::path m_fdb;
};

}  // namespace qarvel::cli
