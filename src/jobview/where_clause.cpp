#include "jobview/where_clause.h"

#include "core/error_trap.h"

namespace qarvel::jobview {

namespace {

// Drops the trailing "OR " of a term list, leaving the blank before it.
void CutThree(std::string& text) { text.erase(text.size() - 3); }

struct StatusTerm {
    bool StudyFilter::*flag;
    std::string_view term;
};

// The status terms in clause order; vacant and reserved share one switch.
constexpr StatusTerm kStatusTerms[] = {
    {&StudyFilter::statusLI, "fm_dom_status LIKE 'LI*'"},
    {&StudyFilter::statusCP, "fm_dom_status LIKE 'CP*'"},
    {&StudyFilter::statusAP, "fm_dom_status LIKE 'AP*'"},
    {&StudyFilter::statusAD, "fm_dom_status LIKE 'AD*'"},
    {&StudyFilter::statusVA, "fm_dom_status LIKE 'VA*'"},
    {&StudyFilter::statusVA, "fm_dom_status LIKE 'RS*'"},
    {&StudyFilter::statusDE, "fm_dom_status LIKE 'DE*'"},
};

}  // namespace

std::vector<int> RelationChannels(int c, const StudyFilter& filter) {
    std::vector<int> channels;
    if (filter.primary) channels.push_back(c);
    if (filter.firstAdjacent) channels.insert(channels.end(), {c + 1, c - 1});
    if (filter.secondAdjacent) channels.insert(channels.end(), {c + 2, c - 2});
    if (filter.thirdAdjacent) channels.insert(channels.end(), {c + 3, c - 3});
    if (filter.intermediateFrequency) channels.insert(channels.end(), {c + 53, c - 53, c + 54, c - 54});
    return channels;
}

std::string BuildWhereClause(const StudyFilter& filter) {
    return core::Trapped(kJobDisplayModule, ":BuildWhereClause:", std::string(), [&] {
        std::string clause = " ";
        const std::vector<int> channels = RelationChannels(filter.target.channel, filter);
        if (channels.empty()) {
            clause += "(station_channel=1) AND ";
        } else {
            clause += "( ";
            for (int c : channels) clause += "station_channel=" + std::to_string(c) + " OR ";
            CutThree(clause);
            clause += " ) ";
            clause += " AND ";
        }
        clause += " ( ";
        clause += "border_code LIKE 'A' OR ";
        for (const StatusTerm& s : kStatusTerms) {
            if (filter.*s.flag) clause += std::string(s.term) + " OR ";
        }
        CutThree(clause);
        clause += " ) ";
        clause += " AND asd_service NOT LIKE 'FS' AND asd_service NOT LIKE 'FB' ";
        clause += " AND party.party_id = fm_data.party_id ";
        return clause;
    });
}

std::string BuildFmQuery(const StudyFilter& filter) {
    return std::string(kFmSelect) + BuildWhereClause(filter);
}

}  // namespace qarvel::jobview
