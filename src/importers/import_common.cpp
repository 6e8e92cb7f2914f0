#include "importers/import_common.h"

#include "core/error_trap.h"

namespace qarvel::importers {
namespace {

constexpr std::string_view kModule = "modImport";
constexpr std::uint64_t kTickEvery = 512;

std::string Counts(const std::map<std::string, std::uint64_t>& counts) {
    std::string text;
    for (const auto& [key, n] : counts) {
        if (!text.empty()) text += ", ";
        text += key + " " + std::to_string(n);
    }
    return text;
}

}  // namespace

ImportTarget ImportTarget::ForPath(std::filesystem::path p) {
    std::string ext = stationdb::Upper(p.extension().string());
    return ext == ".FDB" ? Unpacked(std::move(p)) : Packed(std::move(p));
}

std::uint64_t ImportSummary::SkippedTotal() const {
    std::uint64_t total = 0;
    for (const auto& entry : skipped) total += entry.second;
    return total;
}

std::vector<std::string> FormatImportSummary(const ImportSummary& s) {
    std::vector<std::string> lines;
    lines.push_back("Records read: " + std::to_string(s.read));
    std::string kept = "FM records kept: " + std::to_string(s.kept);
    if (!s.byService.empty()) kept += " (" + Counts(s.byService) + ")";
    lines.push_back(kept);
    std::map<std::string, std::uint64_t> foreign = s.byCountry;
    foreign.erase("US");
    if (!foreign.empty()) lines.push_back("Foreign FM records: " + Counts(foreign));
    if (s.am > 0) lines.push_back("AM records: " + std::to_string(s.am));
    if (s.tv6 > 0) lines.push_back("TV channel 6 records: " + std::to_string(s.tv6));
    lines.push_back("Owner records: " + std::to_string(s.parties));
    lines.push_back("Skipped: " + std::to_string(s.SkippedTotal()));
    for (const auto& [reason, n] : s.skipped) lines.push_back("  " + reason + ": " + std::to_string(n));
    for (const std::string& note : s.notes) lines.push_back("Note: " + note);
    return lines;
}

void MarkForeign(stationdb::FmRecord& record) {
    record.border_code = "A";
    record.intl_class = record.station_class;
    record.intl_status = record.fm_dom_status;
}

std::optional<std::string> OptionalText(std::string_view raw) {
    const std::string_view text = stationdb::TrimView(raw);
    if (text.empty() || text == "-") return std::nullopt;
    return stationdb::TextToUtf8(stationdb::SingleLine(text));
}

namespace {

std::string NormalName(std::string_view name) {
    std::string out;
    for (char c : stationdb::TrimView(name)) {
        if (c == ' ' || c == '_' || c == '-' || c == '.') continue;
        out += (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return out;
}

}  // namespace

HeaderMap::HeaderMap(const std::vector<std::string>& header) : m_size(header.size()) {
    for (std::size_t i = 0; i < header.size(); ++i) {
        std::string_view name = header[i];
        if (i == 0 && name.substr(0, 3) == "\xEF\xBB\xBF") name.remove_prefix(3);  // UTF-8 byte-order mark
        m_index.emplace(NormalName(name), i);  // the first of two equal names wins
    }
}

std::optional<std::size_t> HeaderMap::Find(std::initializer_list<std::string_view> names) const {
    for (std::string_view name : names) {
        const auto found = m_index.find(NormalName(name));
        if (found != m_index.end()) return found->second;
    }
    return std::nullopt;
}

std::size_t HeaderMap::Require(std::initializer_list<std::string_view> names, const std::string& file) const {
    if (auto index = Find(names)) return *index;
    std::string list;
    for (std::string_view name : names) list += (list.empty() ? "" : ", ") + std::string(name);
    throw ImportFailure(file + ": no column \"" + std::string(*names.begin()) + "\" in the header (looked for " +
                        list + ")");
}

std::string_view FieldAt(const std::vector<std::string>& fields, std::optional<std::size_t> index) {
    if (!index || *index >= fields.size()) return {};
    return fields[*index];
}

std::filesystem::path FindInputFile(const std::filesystem::path& folder, std::string_view name) {
    const std::string wanted = stationdb::Upper(name);
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ec)) {
        if (entry.is_regular_file(ec) && stationdb::Upper(entry.path().filename().string()) == wanted) return entry.path();
    }
    return {};
}

int PartyBook::IdFor(stationdb::MasterWriter& writer, const std::string& name) {
    if (name.empty()) return stationdb::kNoOwnerPartyId;
    const auto found = m_ids.find(name);
    if (found != m_ids.end()) return found->second;
    const int id = static_cast<int>(m_ids.size()) + 1;
    stationdb::PartyRecord party;
    party.party_id = id;
    party.party_name = name;
    party.party_legal_name = name;
    if (writer.AddParty(party) != stationdb::AddResult::Added) throw ImportFailure("cannot add owner: " + writer.LastError());
    m_ids.emplace(name, id);
    return id;
}

ImportRun::ImportRun(const ImportOptions& options, ImportSummary& summary)
    : m_options(options), m_summary(summary) {}

void ImportRun::Tick(const DelimitedReader& reader) {
    if (++m_ticks % kTickEvery != 0) return;
    if (m_options.cancel && m_options.cancel->load()) throw ImportFailure("cancelled");
    if (!m_options.progress) return;
    ImportProgress p;
    p.stage = reader.Name();
    p.records = m_ticks;
    const std::uint64_t done = m_doneBytes + reader.BytesRead();
    p.fraction = m_totalBytes > 0 ? static_cast<double>(done) / static_cast<double>(m_totalBytes) : 0;
    if (p.fraction > 1) p.fraction = 1;
    m_options.progress(p);
}

void ImportRun::FileDone(const DelimitedReader& reader, std::uint64_t records) {
    m_doneBytes += reader.Size();
    if (m_options.cancel && m_options.cancel->load()) throw ImportFailure("cancelled");
    const std::uint64_t bad = m_badByFile[reader.Name()];
    if (bad > 0 && bad * 2 > records)
        throw ImportFailure(reader.Name() + ": " + std::to_string(bad) + " of " + std::to_string(records) +
                            " records are unreadable; the file is garbled or of another kind");
}

void ImportRun::BadRecord(const std::string& file, std::uint64_t line, const std::string& problem) {
    ++m_summary.issueCount;
    ++m_badByFile[file];
    Skip("unreadable record");
    ImportIssue issue{file, line, problem};
    if (m_options.onIssue) m_options.onIssue(issue);
    if (m_summary.issues.size() < ImportSummary::kMaxIssuesKept) m_summary.issues.push_back(std::move(issue));
}

void ImportRun::Kept(const stationdb::FmRecord& record, stationdb::StationCountry country) {
    ++m_summary.kept;
    ++m_summary.byService[record.asd_service.value_or("?")];
    ++m_summary.byCountry[std::string(stationdb::CountryCode(country))];
}

bool ImportRun::WriteFm(stationdb::MasterWriter& writer, const stationdb::FmRecord& record, stationdb::StationCountry country) {
    if (record.application_id <= 0 || record.application_id > stationdb::kMaxImportedApplicationId) {
        Skip("application id out of range");
        return false;
    }
    switch (writer.AddFm(record)) {
        case stationdb::AddResult::Added:
            Kept(record, country);
            return true;
        case stationdb::AddResult::Duplicate:
            Skip("duplicate application id");
            return false;
        case stationdb::AddResult::Failed:
            break;
    }
    throw ImportFailure("cannot write the master database: " + writer.LastError());
}

bool RunImport(std::string_view routine, const ImportTarget& target, const ImportOptions& options,
               const std::string& defaultSource, ImportSummary& summary,
               const std::function<void(stationdb::MasterWriter&, ImportRun&)>& body) {
    summary = ImportSummary{};
    stationdb::MasterWriter writer;
    try {
        stationdb::MasterHeader header;
        header.source = options.source.empty() ? defaultSource : options.source;
        header.creation_date = options.creationDate;
        if (!writer.Open(target.path, header, target.output)) throw ImportFailure(writer.LastError());
        ImportRun run(options, summary);
        body(writer, run);
        if (summary.kept == 0) throw ImportFailure("no FM station records found");
        summary.am = writer.AmCount();
        summary.tv6 = writer.Tv6Count();
        if (!writer.Finish()) throw ImportFailure(writer.LastError());
        summary.parties = writer.PartyCount();
        return true;
    } catch (const core::ProgramHalted&) {
        throw;
    } catch (const std::exception& e) {
        summary.error = e.what();
    }
    writer.Abandon();
    core::ReportError(kModule, routine, summary.error);
    return false;
}

}  // namespace qarvel::importers
