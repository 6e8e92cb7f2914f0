#pragma once
// What every importer of station data shares: where the master database
// goes, the caller's progress callback and cancel flag, the summary of what
// was read, kept and skipped, and the run that ties them together.
//
// An importer reads its input as a stream, reports each unreadable record
// with file name and line and skips it, and writes the master database
// through MasterWriter (temporary name, renamed into place). An input it
// cannot use at all (a missing file or column, a cut-off or garbled file, no
// station records) fails the import with a clear message and leaves no file.

#include "importers/import_reader.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "importers/import_reader.h"
#include "stationdb/field_text.h"
#include "stationdb/master_writer.h"

namespace qarvel::importers {

// Where the imported master database goes: a packed ".fmd" container, or,
// for tests and benchmarks, the unpacked ".fdb" database itself.
struct ImportTarget {
    std::filesystem::path path;
    stationdb::MasterOutput output = stationdb::MasterOutput::Packed;

    static ImportTarget Packed(std::filesystem::path p) { return {std::move(p), stationdb::MasterOutput::Packed}; }
    static ImportTarget Unpacked(std::filesystem::path p) { return {std::move(p), stationdb::MasterOutput::Unpacked}; }
    // ".fdb" is unpacked, anything else packed.
    static ImportTarget ForPath(std::filesystem::path p);
};

struct ImportProgress {
    std::string stage;          // what is being read ("fm_eng_data.dat")
    double fraction = 0;        // 0 to 1 over all input files
    std::uint64_t records = 0;  // records read so far
};

// One unreadable record, skipped.
struct ImportIssue {
    std::string file;        // bare file name
    std::uint64_t line = 0;  // 1-based line where the record begins
    std::string problem;
};

struct ImportOptions {
    std::function<void(const ImportProgress&)> progress;  // called now and then
    std::function<void(const ImportIssue&)> onIssue;      // each bad record, as found
    const std::atomic<bool>* cancel = nullptr;            // set to stop; nothing is written
    bool eastPositive = false;  // csv: longitudes count east positive (west negative)
    std::string source;         // information.Source; empty: the importer says what it read
    std::string creationDate;   // five-character day code; empty: today
};

struct ImportSummary {
    std::uint64_t read = 0;     // station records read from the main input
    std::uint64_t kept = 0;     // FM records written
    std::uint64_t am = 0;       // AM records written
    std::uint64_t tv6 = 0;      // TV channel 6 records written
    std::uint64_t parties = 0;  // owner records written
    std::map<std::string, std::uint64_t> skipped;    // reason -> records
    std::map<std::string, std::uint64_t> byService;  // asd_service -> FM records kept
    std::map<std::string, std::uint64_t> byCountry;  // "US", "CA", "MX", "other" -> FM records kept
    std::vector<ImportIssue> issues;  // the first kMaxIssuesKept bad records
    std::uint64_t issueCount = 0;     // all bad records
    std::vector<std::string> notes;   // remarks, e.g. an optional file that was absent
    std::string error;                // why the import failed; empty when it worked

    static constexpr std::size_t kMaxIssuesKept = 200;
    std::uint64_t SkippedTotal() const;
};

// The summary as lines of text for people (read, kept, skipped by reason).
std::vector<std::string> FormatImportSummary(const ImportSummary& summary);

// Marks a Canadian, Mexican or other foreign FM record: border_code "A"
// (the separation lookup then uses the international tables), its class
// also as intl_class and its status as intl_status.
void MarkForeign(stationdb::FmRecord& record);

// Trimmed, single-line (SingleLine), UTF-8 text; nullopt when empty or a
// lone "-" (the regulator's "nothing here").
std::optional<std::string> OptionalText(std::string_view raw);

// Columns of a file with a header row, found by name. Names are compared
// without regard to case, blanks, "_", "-" and "." ("Call Sign", "call_sign"
// and "CALLSIGN" are one name).
class HeaderMap {
public:
    explicit HeaderMap(const std::vector<std::string>& header);
    // Index of the first of names present, or nullopt.
    std::optional<std::size_t> Find(std::initializer_list<std::string_view> names) const;
    // As Find; throws ImportFailure naming file and the first name when absent.
    std::size_t Require(std::initializer_list<std::string_view> names, const std::string& file) const;
    std::size_t Size() const { return m_size; }

private:
    std::unordered_map<std::string, std::size_t> m_index;
    std::size_t m_size = 0;
};

// The field at index (raw), or "" when the record is shorter or index absent.
std::string_view FieldAt(const std::vector<std::string>& fields, std::optional<std::size_t> index);

// The file called name in folder, its name compared without regard to case;
// empty when there is none.
std::filesystem::path FindInputFile(const std::filesystem::path& folder, std::string_view name);

// Owners known only by name: one party per distinct name, ids from 1 up.
class PartyBook {
public:
    // The owner's id, a new party row the first time a name is seen;
    // kNoOwnerPartyId for an empty name.
    int IdFor(stationdb::MasterWriter& writer, const std::string& name);

private:
    std::unordered_map<std::string, int> m_ids;
};

// State of one import: counts, bad records, progress and cancelling. The
// importers drive it; RunImport wraps it round the master database.
class ImportRun {
public:
    ImportRun(const ImportOptions& options, ImportSummary& summary);

    // Files to be read, for the progress fraction.
    void AddInputSize(std::uint64_t bytes) { m_totalBytes += bytes; }
    // Reports progress within the current file and checks the cancel flag
    // (throws ImportFailure "cancelled"). Cheap enough to call per record.
    void Tick(const DelimitedReader& reader);
    // The current file is done after `records` records; its bytes count as
    // read. Throws ImportFailure when more than half of them were unreadable
    // (a garbled file, or a file of another kind).
    void FileDone(const DelimitedReader& reader, std::uint64_t records);

    void BadRecord(const std::string& file, std::uint64_t line, const std::string& problem);
    void Skip(const std::string& reason) { ++m_summary.skipped[reason]; }
    void Note(const std::string& note) { m_summary.notes.push_back(note); }
    // Counts an FM record that the writer took.
    void Kept(const stationdb::FmRecord& record, stationdb::StationCountry country);
    // Writes an FM record; false (and a skip) when its id is out of range or
    // taken already. Throws ImportFailure when the database fails.
    bool WriteFm(stationdb::MasterWriter& writer, const stationdb::FmRecord& record, stationdb::StationCountry country);

    ImportSummary& Summary() { return m_summary; }
    const ImportOptions& Options() const { return m_options; }

private:
    const ImportOptions& m_options;
    ImportSummary& m_summary;
    std::uint64_t m_totalBytes = 0, m_doneBytes = 0;
    std::uint64_t m_ticks = 0;
    std::map<std::string, std::uint64_t> m_badByFile;
};

// Runs one import: opens the master database for target, calls
// body(writer, run), checks that the input was usable (some station records
// kept, no more bad records than good ones) and finishes the database. On
// any failure the reason goes to summary.error and to the error trap under
// routine, and nothing is left at target.
bool RunImport(std::string_view routine, const ImportTarget& target, const ImportOptions& options,
               const std::string& defaultSource, ImportSummary& summary,
               const std::function<void(stationdb::MasterWriter&, ImportRun&)>& body);

// RunImport for the importers that read a folder of dump files (CDBS, LMS):
// Importer(folder, writer, run).Run() fills the database; the default source
// text is dumpKind followed by the folder's name.
template <class Importer>
bool RunFolderImport(std::string_view routine, std::string_view dumpKind,
                     const std::filesystem::path& folder, const ImportTarget& out,
                     const ImportOptions& options, ImportSummary* summary) {
    ImportSummary local;
    ImportSummary& s = summary ? *summary : local;
    const std::filesystem::path name =
        folder.has_filename() ? folder.filename() : folder.parent_path().filename();
    return RunImport(routine, out, options, std::string(dumpKind) + " " + name.string(), s,
                     [&](stationdb::MasterWriter& writer, ImportRun& run) {
                         if (!std::filesystem::is_directory(folder)) {
                             throw ImportFailure("not a folder: " + folder.string());
                         }
                         Importer(folder, writer, run).Run();
                     });
}

}  // namespace qarvel::importers
