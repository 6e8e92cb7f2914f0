#include "editing/edit_session.h"

#include <stdexcept>

#include "stationdb/master_package.h"
#include "stationdb/schema.h"

namespace qarvel::editing {

namespace fs = std::filesystem;

namespace {

bool IsPacked(const fs::path& file) { return file.extension() == ".fmd"; }

std::runtime_error Failure(const fs::path& file, const std::string& what) {
    return std::runtime_error(file.string() + ": " + what);
}

}  // namespace

EditSession::EditSession(const fs::path& file, bool createMissing) : m_file(file), m_packed(IsPacked(file)) {
    std::error_code ec;
    const bool exists = fs::is_regular_file(file, ec);
    if (!exists && !(createMissing && m_packed)) throw Failure(file, "no such database file");
    if (m_packed) {
        m_scratch = std::make_unique<container::ScratchFolder>("qarvel-edit-");
        if (exists) {
            m_workingCopy = stationdb::UnpackMasterDatabase(file, m_scratch->Path());
            if (m_workingCopy.empty()) throw Failure(file, "not a packed station database");
        } else {
            m_workingCopy = m_scratch->Path() / "local.fdb";
            if (!stationdb::CreateJobDatabase(m_workingCopy)) throw Failure(file, "cannot create a local database");
        }
    } else {
        m_workingCopy = file;
    }
    try {
        m_db = stationdb::Database(m_workingCopy, stationdb::OpenMode::ReadWrite);
    } catch (const stationdb::DatabaseError&) {
        throw Failure(file, "not a station database");
    }
    if (!m_db.HasTable("fm_data")) throw Failure(file, "not a station database (no fm_data table)");
    m_transaction = std::make_unique<stationdb::Transaction>(m_db);
}

EditSession::~EditSession() {
    m_transaction.reset();  // rolls back what was not saved
    m_db.Close();
}

void EditSession::Save() {
    try {
        m_transaction->Commit();
    } catch (const stationdb::DatabaseError& e) {
        throw Failure(m_file, std::string("cannot save the changes: ") + e.EngineMessage());
    }
    m_transaction = std::make_unique<stationdb::Transaction>(m_db);
    if (!m_packed) return;
    // The container packs a closed file; the transaction is reopened after.
    m_transaction.reset();
    m_db.Close();
    const bool packed = stationdb::PackMasterDatabase(m_workingCopy, m_file);
    m_db = stationdb::Database(m_workingCopy, stationdb::OpenMode::ReadWrite);
    m_transaction = std::make_unique<stationdb::Transaction>(m_db);
    if (!packed) throw Failure(m_file, "cannot write the packed database");
}

}  // namespace qarvel::editing
