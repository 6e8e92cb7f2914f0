#include "cli/cmd_import.h"

#include "core/interrupt.h"

#include "core/error_trap.h"
#include "importers/import_cdbs.h"
#include "importers/import_csv.h"
#include "importers/import_fmquery.h"
#include "importers/import_lms.h"

#include <fmt/format.h>

#include <atomic>
#include <filesystem>
#include <iostream>
#include <memory>

namespace qarvel::cli {
namespace {

namespace fs = std::filesystem;
using namespace stationdb;
using namespace importers;

enum class Source { Cdbs, Lms, FmQuery, Csv };

struct ImportArgs {
    std::string input;
    std::string out;
    std::string source;
    bool eastPositive = false;
    bool quiet = false;
};

// Bad records listed on stderr before the rest are only counted.
constexpr std::uint64_t kIssuesShown = 20;
// Inputs at least this large get a progress line.
constexpr std::uint64_t kProgressFromBytes = 1 << 20;

bool ReadsFolder(Source source) { return source == Source::Cdbs || source == Source::Lms; }

std::uint64_t InputSize(const fs::path& input) {
    std::error_code ec;
    if (fs::is_regular_file(input, ec)) return fs::file_size(input, ec);
    std::uint64_t total = 0;
    for (const auto& entry : fs::directory_iterator(input, ec))
        if (entry.is_regular_file(ec)) total += entry.file_size(ec);
    return total;
}

void CheckArguments(Source source, const ImportArgs& a) {
    const fs::path input(a.input);
    if (ReadsFolder(source) && !fs::is_directory(input)) throw UsageError("DIR", "'" + a.input + "' is not a folder");
    if (!ReadsFolder(source) && !fs::is_regular_file(input))
        throw UsageError("FILE", "'" + a.input + "' is not a file");
    const fs::path out(a.out);
    const std::string ext = Upper(out.extension().string());
    if (ext != ".FMD" && ext != ".FDB")
        throw UsageError("--out", "'" + a.out + "' must end in .fmd (packed) or .fdb (unpacked)");
    if (out.has_parent_path() && !fs::is_directory(out.parent_path()))
        throw UsageError("--out", "folder '" + out.parent_path().string() + "' does not exist");
}

bool Import(Source source, const fs::path& input, const ImportTarget& target, const ImportOptions& options,
            ImportSummary* summary) {
    switch (source) {
        case Source::Cdbs: return ImportCdbs(input, target, options, summary);
        case Source::Lms: return ImportLms(input, target, options, summary);
        case Source::FmQuery: return ImportFmQuery(input, target, options, summary);
        case Source::Csv: break;
    }
    return ImportCsv(input, target, options, summary);
}

int RunImport(Source source, const ImportArgs& a) {
    CheckArguments(source, a);
    const bool showProgress = !a.quiet && InputSize(a.input) >= kProgressFromBytes;
    int shownPercent = -1;
    ImportOptions options;
    options.eastPositive = a.eastPositive;
    options.source = a.source;
    options.cancel = core::InterruptFlag();  // Ctrl-C stops the import and removes its temporary files
    if (showProgress) {
        options.progress = [&](const ImportProgress& p) {
            const int percent = static_cast<int>(p.fraction * 100);
            if (percent == shownPercent) return;
            shownPercent = percent;
            std::cerr << fmt::format("\rImporting {}: {:3d}%", p.stage, percent) << std::flush;
        };
    }
    std::uint64_t issues = 0;
    options.onIssue = [&](const ImportIssue& issue) {
        if (++issues > kIssuesShown) return;
        if (shownPercent >= 0) std::cerr << "\n";
        shownPercent = -1;
        std::cerr << "qarvel-cli: " << issue.file << ":" << issue.line << ": " << issue.problem << "\n";
    };

    // The import's own failure report becomes the one message below.
    core::RecordingErrorSink errors;
    core::ScopedErrorSink scopedErrors(errors);
    ImportSummary summary;
    const bool ok = Import(source, a.input, ImportTarget::ForPath(a.out), options, &summary);
    if (shownPercent >= 0) std::cerr << "\n";
    if (issues > kIssuesShown)
        std::cerr << "qarvel-cli: " << issues - kIssuesShown << " more unreadable records not shown\n";
    if (!ok) {
        std::cerr << "qarvel-cli: import failed: " << summary.error << "\n";
        return kExitFailed;
    }
    for (const std::string& line : FormatImportSummary(summary)) std::cout << line << "\n";
    std::cout << "Wrote " << a.out << "\n";
    return kExitOk;
}

void AddImport(CommandSet& commands, CLI::App* group, const std::string& name, const std::string& description,
               Source source) {
    auto args = std::make_shared<ImportArgs>();
    CLI::App* sub = commands.Add(group, name, description, [args, source] { return RunImport(source, *args); });
    if (ReadsFolder(source)) {
        sub->add_option("DIR", args->input, "folder of the dump's .dat files")->required();
    } else {
        sub->add_option("FILE", args->input, "the file to import")->required();
    }
    sub->add_option("-o,--out", args->out, "the master database to write: .fmd (packed) or .fdb (unpacked)")
        ->required();
    if (source == Source::Csv) {
        sub->add_flag("--east-positive", args->eastPositive,
                      "longitudes count east positive (west negative); without it west is positive");
    }
    sub->add_flag("-q,--quiet", args->quiet, "no progress line");
    sub->add_option("--source", args->source,
                    "where the data came from, kept in the master's information record (default: the input's name)");
}

}  // namespace

void RegisterImportCommands(CommandSet& commands) {
    // Other command files add their imports to the same group.
    CLI::App* group = commands.AddGroup("import", "Import station, place and boundary data");
    AddImport(commands, group, "cdbs", "CDBS public dump folder (pipe-delimited .dat files, read by position)",
              Source::Cdbs);
    AddImport(commands, group, "lms", "LMS public dump folder (.dat files with header rows)", Source::Lms);
    AddImport(commands, group, "fmquery", "\"FM Query\" fixed-width text output", Source::FmQuery);
    AddImport(commands, group, "csv", "Comma-separated FM station list, columns found by header name",
              Source::Csv);
}

}  // namespace qarvel::cli
