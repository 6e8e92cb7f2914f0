#pragma once
// An editing session over one station database file: a packed master or local
// database (".fmd") is unpacked into a private scratch folder, edited there
// and packed back beside the original and renamed into place on Save; a plain
// database (".fdb", ".tdb") is edited in one transaction. Until Save the file
// on disk is untouched, so a failed or abandoned edit loses nothing.

#include <filesystem>
#include <memory>

#include "container/scratch_folder.h"
#include "stationdb/database.h"

namespace qarvel::editing {

class EditSession {
public:
    // Opens `file` for editing. With createMissing, a packed file that does
    // not exist starts as a new empty local database (the job layout, which
    // has the markers table). Throws std::runtime_error with one line naming
    // the file when it cannot be opened as a station database.
    explicit EditSession(const std::filesystem::path& file, bool createMissing = false);
    ~EditSession();
    EditSession(const EditSession&) = delete;
    EditSession& operator=(const EditSession&) = delete;

    stationdb::Database& Db() { return m_db; }
    const std::filesystem::path& File() const { return m_file; }
    // Writes the edits to the file (packed atomically, or committed). Throws
    // std::runtime_error on failure, leaving the file as it was.
    void Save();

private:
    std::filesystem::path m_file;
    bool m_packed = false;
    std::unique_ptr<container::ScratchFolder> m_scratch;
    std::filesystem::path m_workingCopy;
    stationdb::Database m_db;
    std::unique_ptr<stationdb::Transaction> m_transaction;
};

}  // namespace qarvel::editing
