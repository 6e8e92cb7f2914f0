#include "studies/autoscan.h"

#include <fmt/format.h>
#include <charconv>

#include "core/error_trap.h"
#include "spacing/class_codes.h"
#include "studies/where_terms.h"

namespace qarvel::studies {

namespace {

// Drops the last three characters, as the clause builder cuts its trailing
// "OR " (leaving the blank before it).
void CutThree(std::string& text) {
    text.erase(text.size() - 3);
}

}  // namespace

std::vector<int> QueryChannels(int channel, const ScanOptions& options) {
    std::vector<int> channels;
    if (options.coChannel) channels.push_back(channel);
    if (options.firstAdjacent) channels.insert(channels.end(), {channel + 1, channel - 1});
    if (options.secondAdjacent) channels.insert(channels.end(), {channel + 2, channel - 2});
    if (options.thirdAdjacent) channels.insert(channels.end(), {channel + 3, channel - 3});
    if (options.intermediateFrequency) {
        channels.insert(channels.end(), {channel + 53, channel - 53, channel + 54, channel - 54});
    }
    return channels;
}

std::string BuildWhereClause(int channel, const ScanOptions& options) {
    return core::Trapped(kAutoScanModule, ":BuildWhereClause:", std::string(), [&] {
        std::string clause = " ";
        const std::vector<int> channels = QueryChannels(channel, options);
        if (!channels.empty()) {
            clause += "( ";
            for (int c : channels) clause += fmt::format("station_channel={} OR ", c);
            CutThree(clause);
            clause += " ) ";
            clause += " AND ";
        } else {
            // Matches no FM station: only the TV channel 6 check can lower
            // the minimum.
            clause += "(station_channel=1) AND ";
        }
        clause += " ( ";
        clause += fmt::format("border_code LIKE '{}' OR ", kBorderPattern);
        for (const StatusPattern& s : kStatusPatterns) {
            if (options.*s.flag) clause += fmt::format("fm_dom_status LIKE '{}' OR ", s.pattern);
        }
        CutThree(clause);
        clause += " ) ";
        for (std::string_view service : kExcludedServicePatterns) {
            clause += fmt::format(" AND asd_service NOT LIKE '{}'", service);
        }
        clause += " ";
        return clause;
    });
}

std::string BuildFmQuery(int channel, const ScanOptions& options) {
    return std::string("SELECT fac_callsign, station_channel, lat, lon, ") +
           " station_class, intl_class, border_code" + " FROM fm_data WHERE " +
           BuildWhereClause(channel, options);
}

bool Tv6CheckApplies(int channel, int16_t targetClass, const ScanOptions& options) {
    if (!options.tv6) return false;
    const bool lowPower = targetClass == 0 || targetClass == 1;
    return lowPower ? (channel >= 201 && channel <= 220) : channel == 253;
}

std::string ScanCaption(int16_t targetClass) {
    const int entry = targetClass + 1;  // entry 0 is the blank of the unknown class
    const bool known = entry >= 0 && entry < static_cast<int>(spacing::ClassName.size());
    return "AutoScan for Class " +
           (known ? spacing::ClassName[static_cast<std::size_t>(entry)] : std::string(" "));
}

std::string ScanningChannelText(int channel) {
    return fmt::format("Scanning channel {}", channel);
}

std::string ScanCompleteText(int openings) {
    return fmt::format("Scanning complete: {} opening{} found.", openings,
                       openings == 1 ? "" : "s");
}

std::string FormatListLine(int channel, float clearance) {
    return fmt::format("{}\t{:.2f}", channel, static_cast<double>(clearance));
}

float ListLineClearance(std::string_view line) {
    if (line.size() <= 3) return 0.0f;
    std::string_view number = line.substr(3);
    while (!number.empty() && (number.front() == '\t' || number.front() == ' ')) {
        number.remove_prefix(1);
    }
    float value = 0.0f;
    std::from_chars(number.data(), number.data() + number.size(), value);
    return value;
}

void InsertIntoList(std::vector<std::string>& list, int channel, float clearance) {
    core::TrappedVoid(kAutoScanModule, ":InsertIntoList:", [&] {
        std::string line = FormatListLine(channel, clearance);
        // Both sides are compared as the list shows them, so two channels
        // that display the same clearance stay in scan order.
        const float value = ListLineClearance(line);
        std::size_t index = 0;
        for (; index < list.size(); ++index) {
            if (list[index].empty() || ListLineClearance(list[index]) < value) break;
        }
        list.insert(list.begin() + static_cast<std::ptrdiff_t>(index), std::move(line));
    });
}

ScanResult ScanChannels(ClearanceEngine& engine, const ScanTarget& target,
                        const ScanOptions& options, const ScanProgress& progress,
                        const std::atomic<bool>* abort) {
    ScanResult result;
    auto tell = [&](const std::string& text) {
        if (progress) progress(text);
    };
    result.caption = ScanCaption(target.stationClass);
    tell(result.caption);
    result.lines.reserve(kScanChannelCount);
    result.minima.reserve(kScanChannelCount);
    for (int channel = kFirstScanChannel; channel <= kLastScanChannel; ++channel) {
        result.status = ScanningChannelText(channel);
        tell(result.status);
        if (abort != nullptr && abort->load()) {
            result.status = std::string(kScanAbortedText);
            result.aborted = true;
            tell(result.status);
            return result;
        }
        const float clearance = engine.FindMinClearance(target, channel, options);
        if (clearance >= 0.0f) ++result.openings;  // exactly 0.00 is open
        result.minima.push_back(clearance);
        InsertIntoList(result.lines, channel, clearance);
    }
    result.status = ScanCompleteText(result.openings);
    tell(result.status);
    return result;
}

}  // namespace qarvel::studies
