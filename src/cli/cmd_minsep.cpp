// qarvel-cli minsep: the required separation between a target and another
// station, with the table and cell that gave it.

#include "cli/command_set.h"
#include "cli/coordinates.h"
#include "spacing/min_sep.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <iostream>
#include <memory>

namespace qarvel::cli {
namespace {

struct MinSepArgs {
    std::string targetClass, otherClass, relation = "primary";
    std::string targetIntlClass, otherIntlClass, border, otherLat, otherState;
    std::string service = "FM", zone = "0", targetChannel;
    bool json = false;
};

std::string ClassList() {
    std::vector<std::string> names(spacing::ClassName.begin() + 1, spacing::ClassName.end());
    return fmt::format("{}", fmt::join(names, ", "));
}

int16_t ParseClass(const std::string& text, const std::string& argument) {
    int16_t index = spacing::ClassIndex(text);
    if (index < 0) {
        throw UsageError(argument, "unknown class '" + text + "'; allowed: " + ClassList());
    }
    return index;
}

int16_t ParseOptionalClass(const std::string& text, const std::string& argument) {
    return text.empty() ? int16_t{-1} : ParseClass(text, argument);
}

int16_t ParseRelation(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    static const char* const kNames[] = {"primary", "1st", "2nd", "3rd", "if"};
    for (int16_t i = 0; i < 5; ++i) {
        if (text == kNames[i]) return i;
    }
    throw UsageError("--relation", "unknown relation '" + text +
                                       "'; allowed: primary, 1st, 2nd, 3rd, if");
}

spacing::StationRec TargetRecord(const MinSepArgs& a) {
    spacing::StationRec target;
    target.station_class = ParseClass(a.targetClass, "--target-class");
    target.intl_class = ParseOptionalClass(a.targetIntlClass, "--target-intl-class");
    if (!a.targetChannel.empty()) {
        double channel = ParseNumber(a.targetChannel, "--target-channel");
        if (channel < 200 || channel > 300 || channel != static_cast<int>(channel)) {
            throw UsageError("--target-channel",
                             "'" + a.targetChannel + "' is not an FM channel 200 to 300");
        }
        target.station_channel = static_cast<int16_t>(channel);
    }
    return target;
}

spacing::StationRec OtherRecord(const MinSepArgs& a) {
    spacing::StationRec other;
    if (a.service != "FM" && a.service != "ED" && a.service != "TV") {
        throw UsageError("--service", "unknown service '" + a.service + "'; allowed: FM, ED, TV");
    }
    other.service = a.service;
    if (a.zone != "0" && a.zone != "1") {
        throw UsageError("--zone", "'" + a.zone + "' is not a television zone; allowed: 0, 1");
    }
    other.zone = static_cast<int16_t>(a.zone == "1" ? 1 : 0);
    if (a.service != "TV") {
        if (a.otherClass.empty()) {
            throw UsageError("--other-class", "required for FM and ED stations");
        }
        other.station_class = ParseClass(a.otherClass, "--other-class");
    }
    other.relation = ParseRelation(a.relation);
    other.border_code = a.border;
    other.intl_class = ParseOptionalClass(a.otherIntlClass, "--other-intl-class");
    // A foreign station given without its international class is taken to
    // carry its domestic class there.
    if (other.border_code == "A" && other.intl_class < 0) other.intl_class = other.station_class;
    if (!a.otherLat.empty()) other.lat = ParseCoordinate(a.otherLat, Axis::Latitude, "--other-lat");
    other.comm_state = a.otherState;
    return other;
}

int RunMinSep(const MinSepArgs& a) {
    spacing::StationRec target = TargetRecord(a);
    spacing::StationRec other = OtherRecord(a);
    spacing::MinSepCell cell;
    int separation = spacing::LookupMinSep(target, other, &cell);
    std::string where = cell.table.empty()
                            ? std::string("no table applies")
                            : fmt::format("{}[{}]", cell.table, fmt::join(cell.indices, "]["));
    if (a.json) {
        nlohmann::json out = {{"separation_km", separation},
                              {"table", cell.table},
                              {"cell", cell.indices}};
        std::cout << out.dump() << "\n";
    } else {
        std::cout << separation << " km (" << where << ")\n";
    }
    return kExitOk;
}

}  // namespace

void RegisterMinSepCommand(CommandSet& commands) {
    auto a = std::make_shared<MinSepArgs>();
    CLI::App* sub = commands.Add("minsep", "Required separation (km) between a target and a station",
                                 [a] { return RunMinSep(*a); });
    sub->add_option("--target-class", a->targetClass, "target's class (A, B, C1, ...)")
        ->required();
    sub->add_option("--other-class", a->otherClass, "other station's class (not for TV)");
    sub->add_option("--relation", a->relation, "primary, 1st, 2nd, 3rd or if (default primary)");
    sub->add_option("--target-intl-class", a->targetIntlClass, "target's international class");
    sub->add_option("--other-intl-class", a->otherIntlClass,
                    "other station's international class (default: its class, with --border A)");
    sub->add_option("--border", a->border, "other station's border code (A: foreign station)");
    sub->add_option("--other-lat", a->otherLat, "other station's latitude (north/south grid)");
    sub->add_option("--other-state", a->otherState, "other station's state (PR, VI matter)");
    sub->add_option("--service", a->service, "other station's service: FM, ED or TV");
    sub->add_option("--zone", a->zone, "television zone of a TV channel 6 station: 0 or 1");
    sub->add_option("--target-channel", a->targetChannel, "target's FM channel, 200 to 300");
    sub->add_flag("--json", a->json, "print one JSON object");
}

}  // namespace qarvel::cli
