#include "search/query_builder.h"

#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include "stationdb/schema.h"  // TempPathBeside

namespace qarvel::search {

const std::string kDisplayQuery =
    "SELECT fm_data.border_code AS [Border],"
    "fm_data.rule_73_215_req_ind AS [73-215],"
    "fm_data.app_arn AS [ARN], fm_data.hag_horiz_rc_mtr AS [Ant AGL],"
    "fm_data.cutoff_date AS [Cutoff Date], fm_data.da_ind AS [Dir Ant],"
    "fm_data.border_dist AS [Dist Bdr], fm_data.docket_num AS [Docket No],"
    "fm_data.horiz_erp AS [ERP], fm_data.file_prefix AS [File Prfx],"
    "fm_data.vert_erp AS [ERP Vert],"
    "fm_data.intl_class AS [Intl Class], fm_data.intl_status AS [Intl Status],"
    "fm_data.lat AS [Latitude], fm_data.lon AS [Longitude],"
    "fm_data.max_horiz_erp AS [Max ERP], party.party_name AS [Owner],"
    "fm_data.app_service AS [Service], fm_data.comm_state AS [State],"
    "fm_data.asd_service AS [ASD Service], fm_data.facility_id AS [Facility ID],"
    "fm_data.fm_dom_status AS [Status], fm_data.asrn AS [Twr Reg #],"
    "fm_data.rcamsl_horiz_mtr AS [Ant AMSL], fm_data.haat_horiz_rc_mtr AS [Ant HAAT],"
    "fm_data.ant_rotation AS [Ant Rotation], fm_data.elev_amsl AS [Base AMSL],"
    "fm_data.bt_ind AS [Beamtilt], fm_data.cp_exp_date AS [CP Exp Date],"
    "fm_data.fac_callsign AS [Callsign], fm_data.station_channel AS [Channel],"
    "fm_data.comm_city AS [City Served], fm_data.station_class AS [Class],"
    "fm_data.application_id FROM party, fm_data WHERE fm_data.party_id = party.party_id";

const std::vector<std::string> kOperators = {" = ",    " < ",        " > ",       " <= ",         " >= ",
                                             " LIKE ", " NOT LIKE ", " BETWEEN ", " NOT BETWEEN "};

namespace {

std::string_view Trim(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

void AppendList(const std::vector<std::string>& fields, const char* table, Clauses& c) {
    if (fields.empty() || fields.front() == "NONE") return;
    c.from += std::string(table) + ", ";
    for (const std::string& field : fields)
        if (!field.empty()) c.select += field + ", ";
}

void DropLastSeparator(std::string& list) {
    if (list.size() > 2) list.resize(list.size() - 2);
}

bool IsNumber(std::string_view text) {
    double value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    return !text.empty() && ec == std::errc() && end == text.data() + text.size() && std::isfinite(value);
}

}  // namespace

std::string JetText(std::string_view text) {
    std::string out;
    for (const char c : text) {
        out += c;
        if (c == '\'') out += '\'';
    }
    return out;
}

std::variant<std::string, std::string_view> BasicQuery(const BasicEntries& e) {
    std::string query = kDisplayQuery;
    const std::pair<const std::string*, const char*> matches[] = {{&e.callSign, "fm_data.fac_callsign"},
                                                                  {&e.owner, "party.party_name"},
                                                                  {&e.city, "fm_data.comm_city"},
                                                                  {&e.state, "fm_data.comm_state"}};
    for (const auto& [entry, column] : matches) {
        const std::string_view text = Trim(*entry);
        if (!text.empty()) query += " AND " + std::string(column) + " LIKE '*" + JetText(text) + "*'";
    }
    const std::string_view channel = Trim(e.channel);
    if (!channel.empty()) {
        int number = 0;
        const auto [end, ec] = std::from_chars(channel.data(), channel.data() + channel.size(), number);
        if (ec != std::errc() || end != channel.data() + channel.size() || number < 200 || number > 300)
            return kInvalidChannel;
        query += " AND fm_data.station_channel = " + std::to_string(number);
    }
    return query;
}

std::string SearchByKeyQuery(long long applicationId) {
    return kDisplayQuery + " AND " + "fm_data.application_id = " + std::to_string(applicationId);
}

void BuildSelectFrom(const FieldChoice& choice, Clauses& c) {
    c.select.clear();
    c.from.clear();
    AppendList(choice.fmData, "fm_data", c);
    AppendList(choice.party, "party", c);
    AppendList(choice.tv6Data, "tv6_data", c);
    AppendList(choice.amData, "am_data", c);
    DropLastSeparator(c.select);
    DropLastSeparator(c.from);
}

std::string AppendCondition(const std::string& where, const std::string& joiner, const std::string& field,
                            const std::string& op, const std::string& value, const std::string& second) {
    std::string condition = field + op + value;
    if (op == " BETWEEN " || op == " NOT BETWEEN ") condition += " AND " + second;
    return where.empty() ? condition : where + joiner + condition;
}

std::string QuotedValue(std::string_view typed) {
    const std::string_view text = Trim(typed);
    if (IsNumber(text)) return std::string(text);
    return "'" + JetText(text) + "'";
}

std::string BuildOrder(const std::vector<std::pair<std::string, bool>>& fields) {
    std::string order;
    for (const auto& [field, descending] : fields) order += (order.empty() ? "" : ", ") + field + (descending ? " DESC" : " ASC");
    return order;
}

std::optional<std::string> WriteSql(const Clauses& c) {
    if (c.select.empty()) return std::nullopt;
    std::string query = "SELECT " + c.select;
    if (!c.from.empty()) {
        query += " FROM " + c.from;
        if (!c.where.empty()) {
            query += " WHERE " + c.where;
            if (!c.order.empty()) query += " ORDER BY " + c.order;
        }
    }
    return query;
}

std::string ManualQuery(std::string_view typed) {
    std::string_view text = Trim(typed);
    if (!text.empty() && text.back() == ';') text.remove_suffix(1);
    return std::string(text);
}

std::string ArchiveText(std::string_view query) {
    return std::string(kArchiveTitle) + "\r\n" + std::string(Trim(query)) + "\r\n";
}

std::optional<std::string> QueryFromArchive(std::string_view text) {
    const auto firstEnd = text.find('\n');
    if (Trim(text.substr(0, firstEnd)) != kArchiveTitle || firstEnd == std::string_view::npos) return std::nullopt;
    std::string_view rest = text.substr(firstEnd + 1);
    return std::string(Trim(rest.substr(0, rest.find('\n'))));
}

std::optional<std::string> ArchiveFileName(std::string_view name) {
    if (name.find('>') != std::string_view::npos) return std::nullopt;
    if (name.size() > 200) return std::string(name.substr(0, 200)) + ".txt";
    return std::string(name);
}

void WriteArchive(const std::filesystem::path& file, std::string_view query) {
    const auto temp = stationdb::TempPathBeside(file);
    {
        std::ofstream out(temp, std::ios::binary);
        out << ArchiveText(query);
        out.close();
        if (!out) {
            std::error_code ec;
            std::filesystem::remove(temp, ec);
            throw std::runtime_error(file.string() + ": cannot write the archive");
        }
    }
    std::error_code ec;
    std::filesystem::rename(temp, file, ec);
    if (ec) {
        std::filesystem::remove(temp, ec);
        throw std::runtime_error(file.string() + ": cannot write the archive");
    }
}

std::string ReadArchive(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw std::runtime_error(file.string() + ": cannot open the archive");
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    auto query = QueryFromArchive(text);
    if (!query) throw std::runtime_error(file.string() + ": " + std::string(kNotAnArchive));
    return *query;
}

}  // namespace qarvel::search
