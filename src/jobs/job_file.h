#pragma once
// The job file (".fmj"): a packed container (container.h) holding the job
// database and its two boundary files. A job is worked on unpacked in the job
// scratch folder, as base name ".tdb" (database), ".mst" (state lines) and
// ".mco" (county lines), and packed back when saved. JobFile owns that life
// cycle for the desktop program and the command line alike: build, open,
// save, save as, close.
//
// Messages: "Replace <path>?" titled "Replace Job" (OK/Cancel) before a save
// overwrites a file, "Save Failed!" when packing fails (the job stays open
// and the previous file is kept), "Save changes?" (Yes/No) when a changed job
// is closed, and ValidJobFile's "Invalid or Damaged Jobfile!" for a file that
// will not open as a job.

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#include "jobs/job_build.h"
#include "stationdb/validation.h"

namespace qarvel::jobs {

inline constexpr std::string_view kJobFileExtension = ".fmj";

// The file names derived from a job path: an empty file name becomes
// "noname.fmj"; a name not ending in ".fmj" (any case) gets ".fmj" appended;
// the working files are the base name with ".tdb", ".mst" and ".mco" in the
// job scratch folder.
struct JobPaths {
    std::filesystem::path folder;   // folder of the job file (may be empty)
    std::string baseName;           // file name without ".fmj"
    std::filesystem::path jobFile;  // folder / baseName ".fmj"
    std::filesystem::path tdb;      // scratch / baseName ".tdb"
    std::filesystem::path mst;      // scratch / baseName ".mst"
    std::filesystem::path mco;      // scratch / baseName ".mco"
};
JobPaths JobWorkingNames(const std::filesystem::path& jobPath, const std::filesystem::path& jobScratch);

// Packs the working files into `fmj` in the order ".tdb", ".mco", ".mst"
// (a missing boundary file is packed empty), written beside `fmj` under a
// temporary name and renamed into place. Reported under "modFMdb"
// ":PackJobFile:"; false on failure, the previous `fmj` kept.
bool PackJobFile(const JobPaths& paths, const std::filesystem::path& fmj);

// What `job info` shows: the header, the target's international class and
// the row count of each table (by lower-case table name).
struct JobSummary {
    stationdb::JobHeader header;
    std::string TIClass;
    std::map<std::string, std::int64_t> rowCounts;
};
// Reads the summary of the job database `tdb` (read-only). Reported under
// "modFMdb" ":ReadJobSummary:"; false when the file is not a valid job.
bool ReadJobSummary(const std::filesystem::path& tdb, JobSummary* summary);

class JobFile {
public:
    // jobScratch: the job scratch folder (created when missing).
    explicit JobFile(std::filesystem::path jobScratch);
    // Removes the working files of a job still open, without asking.
    ~JobFile();
    JobFile(const JobFile&) = delete;
    JobFile& operator=(const JobFile&) = delete;

    // Builds a new job to be saved as `fmjPath`: MakeNewJob into the working
    // ".tdb" (inputs.jobPath is replaced by it), then, when mapsFolder holds
    // "stmapH.dat" and "comapH.dat", cuts the ".mst" (limit 2 x range) and
    // ".mco" (1.5 x range) round the scan centre. The job is then open and
    // changed (not saved). False when no job is left open; a job already
    // open must be closed first.
    bool CreateNew(NewJobInputs inputs, const std::filesystem::path& fmjPath,
                   const std::filesystem::path& mapsFolder = {}, const JobBuildControl& control = {});

    // Opens `fmjPath`: unpacks it, checks the database with ValidJobFile,
    // adds vert_erp, asd_service and facility_id to fm_data where missing,
    // and moves the files to the working names of `fmjPath` (whatever names
    // they were packed under). False, with nothing left behind, when the file
    // is not a job; a job already open must be closed first.
    bool Open(const std::filesystem::path& fmjPath);

    // Saves to the job's own path; see SaveAs.
    bool Save();
    // Saves to `fmjPath` (".fmj" appended when missing): asks "Replace
    // <path>?" when the file exists (Cancel: false, nothing written), packs,
    // and on success makes that path the job's own and clears the changed
    // flag. When packing fails shows "Save Failed!", keeps the previous file
    // and the job open and returns false.
    bool SaveAs(const std::filesystem::path& fmjPath);

    // Closes the job: a changed job asks "Save changes?" (Yes saves first;
    // when that save does not happen the job stays open and the result is
    // false). The working files are removed. True when no job is open after.
    bool Close();
    // Closes without asking or saving.
    void Discard();

    bool IsOpen() const { return m_open; }
    bool IsChanged() const { return m_changed; }
    // The job's database was changed (a what-if edit, a new marker...).
    void MarkChanged() { m_changed = true; }
    const JobPaths& Paths() const { return m_paths; }
    const stationdb::JobHeader& Header() const { return m_header; }
    const std::filesystem::path& Scratch() const { return m_scratch; }

private:
    bool MoveWorkingFiles(const JobPaths& from, const JobPaths& to);
    void RemoveWorkingFiles() const;

    std::filesystem::path m_scratch;
    JobPaths m_paths;
    stationdb::JobHeader m_header;
    bool m_open = false;
    bool m_changed = false;
};

}  // namespace qarvel::jobs
