#include "studies/reference_engine.h"

#include "core/error_trap.h"
#include "spacing/class_codes.h"
#include "studies/station_rows.h"

namespace qarvel::studies {

std::unique_ptr<ReferenceEngine> ReferenceEngine::Open(const std::filesystem::path& fdbPath) {
    return core::Trapped(kAutoScanModule, ":InitValues:", std::unique_ptr<ReferenceEngine>(), [&] {
        stationdb::Database db(fdbPath, stationdb::OpenMode::ReadOnly);
        return std::unique_ptr<ReferenceEngine>(new ReferenceEngine(std::move(db)));
    });
}

float ReferenceEngine::FindMinClearance(const ScanTarget& target, int channel,
                                        const ScanOptions& options) {
    float minimum = kNoStationClearance;
    // A failing query ends this channel with the minimum reached so far.
    core::TrappedVoid(kAutoScanModule, ":FindMinClearance:", [&] {
        const spacing::StationRec targetRec = TargetRecord(target, channel);
        spacing::StationRec station;
        {
            stationdb::Statement fm = m_db.Prepare(BuildFmQuery(channel, options));
            while (fm.Step()) {
                if (!ReadFmStation(fm, station)) continue;
                // The WHERE clause admits only related channels, so the
                // relation is always found.
                station.relation = spacing::RelationFromChannels(channel, station.station_channel);
                CountFmStation(targetRec, station, minimum);
            }
        }
        if (!Tv6CheckApplies(channel, target.stationClass, options)) return;
        stationdb::Statement tv = m_db.Prepare(kTv6Query);
        while (tv.Step()) {
            if (ReadTv6Station(tv, station)) CountTv6Station(targetRec, station, minimum);
        }
    });
    return minimum;
}

}  // namespace qarvel::studies
