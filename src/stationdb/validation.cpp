#include "stationdb/validation.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <optional>
#include <string_view>

#include "core/error_trap.h"
#include "core/prompt.h"
#include "stationdb/database.h"
#include "stationdb/day_code.h"
#include "stationdb/layout_check.h"

namespace qarvel::stationdb {
namespace {

namespace fs = std::filesystem;

constexpr const char* kInvalidJob = "Invalid or Damaged Jobfile!";
constexpr const char* kInvalidMaster = "Invalid or Damaged Master Database!";

std::string Lower(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

std::string Trim(std::string_view s) {
    const auto first = s.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return {};
    const auto last = s.find_last_not_of(" \t\r\n");
    return std::string(s.substr(first, last - first + 1));
}

// The five tables both kinds of file must hold, counted by lower-cased name;
// further tables are allowed.
int CountRequiredTables(const Database& db) {
    static constexpr std::string_view kRequired[] = {"fm_data", "am_data", "tv6_data", "information", "party"};
    int count = 0;
    for (const std::string& name : db.TableNames()) {
        const std::string lower = Lower(name);
        count += static_cast<int>(std::count(std::begin(kRequired), std::end(kRequired), lower));
    }
    return count;
}

// Text read wholly as a number; from_chars ignores the locale, which the
// desktop program sets from the user's environment.
template <class T>
std::optional<T> ParseNumber(std::string_view text) {
    T value{};
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

// Runs a check: false from the body or any error inside (database or file)
// makes the file invalid, and the user sees the check's own message.
template <class Body>
bool RunCheck(const char* invalidMessage, Body&& body) {
    bool valid = false;
    try {
        valid = body();
    } catch (const core::ProgramHalted&) {
        throw;
    } catch (...) {
        valid = false;
    }
    if (!valid) core::ShowPrompt(invalidMessage, {}, core::PromptButtons::Ok, core::PromptIcon::Critical);
    return valid;
}

// A problem found at the door: reported with the file's name, so that the
// user learns which table, column or value made the file unusable.
bool Refuse(const char* routine, const fs::path& path, const std::optional<std::string>& problem) {
    if (!problem) return false;
    core::ReportError("modFMdb", routine, path.string() + ": " + *problem);
    return true;
}

bool FileExists(const fs::path& path) {
    std::error_code ec;
    return fs::is_regular_file(path, ec);
}

bool ReadJobHeader(const fs::path& path, JobHeader& h) {
    // Check first: opening a missing file would create an empty database.
    if (!FileExists(path)) return false;
    const Database db(path, OpenMode::ReadOnly);
    if (CountRequiredTables(db) != 5) return false;
    Statement record = db.Prepare("SELECT * FROM information");
    if (!record.Step()) return false;
    // The header's own spelling; the columns are OffSetN and OffSetW, and
    // names are matched without regard to case.
    h.CDate = record.GetText("CDate");
    h.TChan = record.GetInt("TChan");
    h.Comments = record.GetText("Comments");
    h.Source = record.GetText("Source");
    h.TLat = record.GetDouble("TLat");
    h.TLon = record.GetDouble("TLon");
    h.TClass = record.GetText("TClass");
    h.OffsetN = record.GetDouble("OffsetN");
    h.OffsetW = record.GetDouble("OffsetW");
    h.ScanRange = record.GetInt("ScanRange");
    return !Refuse(":ValidJobFile:", path, LayoutProblem(db, DatabaseKind::Job)) &&
           !Refuse(":ValidJobFile:", path, HeaderProblem(h)) && !Refuse(":ValidJobFile:", path, PositionProblem(db));
}

bool ReadMasterInfo(const fs::path& path, MasterInfo& info) {
    if (!FileExists(path)) return false;
    const Database db(path, OpenMode::ReadOnly);
    if (CountRequiredTables(db) != 5) return false;
    Statement record = db.Prepare("SELECT * FROM information");
    if (!record.Step()) return false;
    info.creation_date = Trim(record.GetText("creation_date"));
    info.creation_size = Trim(record.GetText("creation_size"));
    const auto version = ParseNumber<float>(Trim(record.GetText("version")));
    if (!version) return false;
    info.version = *version;
    return true;
}

void AddColumnIfMissing(Database& db, std::string_view column, std::string_view type) {
    if (db.HasColumn("fm_data", column)) return;
    db.Exec("ALTER TABLE fm_data ADD COLUMN " + std::string(column) + " " + std::string(type));
}

// Older master databases lack columns the program reads. They are added
// empty, with the job layout's types; the version record is left as it is.
// Compared in single precision, as the version is kept: 1.9 is not below 1.9.
void UpgradeMaster(const fs::path& path, float version) {
    if (!(version < 1.9f)) return;
    Database db(path, OpenMode::ReadWrite);
    Transaction transaction(db);
    AddColumnIfMissing(db, "facility_id", "int");
    AddColumnIfMissing(db, "asd_service", "char(2)");
    if (version < 1.6f) AddColumnIfMissing(db, "vert_erp", "float");
    transaction.Commit();
}

// The age check; false when the database is dated more than two days ahead.
bool CheckAge(const MasterInfo& info, const FmdCheckOptions& options) {
    if (options.pendingOperation == "NoOp") return true;
    const auto created = ParseNumber<int>(info.creation_date);
    if (!created) return false;
    const int today = options.todayDayCode != 0 ? options.todayDayCode : TodayDayCode();
    const DatabaseAge age = MasterDatabaseAge(*created, today);
    if (age.dated_ahead) return false;
    if (age.months > 3) {
        core::ShowPrompt("This database is more than " + std::to_string(age.months) + " months old!\n" +
                             "Contact Velmont for a new database.",
                         {}, core::PromptButtons::Ok, core::PromptIcon::Information);
    }
    return true;
}

}  // namespace

bool ValidJobFile(const fs::path& path, JobHeader* header) {
    JobHeader read;
    const bool valid = RunCheck(kInvalidJob, [&] { return ReadJobHeader(path, read); });
    if (valid && header) *header = read;
    return valid;
}

bool ValidFMDFile(const fs::path& path, const FmdCheckOptions& options, MasterInfo* info) {
    MasterInfo read;
    const bool valid = RunCheck(kInvalidMaster, [&] {
        if (!ReadMasterInfo(path, read)) return false;
        UpgradeMaster(path, read.version);
        {
            const Database db(path, OpenMode::ReadOnly);
            const fs::path& shown = options.displayName.empty() ? path : options.displayName;
            if (Refuse(":ValidFMDFile:", shown, LayoutProblem(db, DatabaseKind::Master)) ||
                Refuse(":ValidFMDFile:", shown, PositionProblem(db))) {
                return false;
            }
        }
        return CheckAge(read, options);
    });
    if (valid && info) *info = read;
    return valid;
}

}  // namespace qarvel::stationdb
