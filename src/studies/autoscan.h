#pragma once
// AutoScan (frmAutoScan): for a location and a station class, the smallest
// clearance (distance less required separation, km) to any relevant station
// on every FM channel 200..300, listed from the most open channel to the most
// short-spaced, with the count of channels whose clearance is 0 km or more.
//
// The scan loop, the list and the query texts live here; the per-channel
// minimum comes from a ClearanceEngine (reference_engine.h runs the query per
// channel on the master database, fast_engine.h answers from memory; both
// give the same minima bit for bit).
//
// Coordinates: degrees, latitude north positive, longitude positive WEST
// (the station tables' convention). Distances and clearances in km.

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace qarvel::studies {

inline constexpr std::string_view kAutoScanModule = "frmAutoScan";

inline constexpr int kFirstScanChannel = 200;
inline constexpr int kLastScanChannel = 300;
inline constexpr int kScanChannelCount = kLastScanChannel - kFirstScanChannel + 1;  // 101
// The clearance of a channel with no relevant station (km). Every minimum
// starts here, so no channel ever reports more.
inline constexpr float kNoStationClearance = 350.0f;

// The target of a scan.
struct ScanTarget {
    double lat = 0;            // degrees, north positive
    double lon = 0;            // degrees, positive WEST
    int16_t stationClass = 4;  // class index 0..13 ("A" = 4)
    int16_t intlClass = -1;    // international class index 0..13, -1 none
};

// The eleven scan flags of the job display plus its TV channel 6 flag. The
// defaults are the command line's: every relation, the statuses licensed
// (LI), construction permit (CP) and application (AP), and TV6 on - the
// stations an engineer has to protect when looking for a new channel.
struct ScanOptions {
    bool coChannel = true;              // 1 "Primary"
    bool firstAdjacent = true;          // 2 +-1 channel
    bool secondAdjacent = true;         // 3 +-2
    bool thirdAdjacent = true;          // 4 +-3
    bool intermediateFrequency = true;  // 5 IF: +-53, +-54
    bool statusLI = true;               // 6
    bool statusCP = true;               // 7
    bool statusAP = true;               // 8
    bool statusAD = false;              // 9
    bool statusVA = false;              // 10 "VA" and "RS"
    bool statusDE = false;              // 11
    bool tv6 = true;                    // TV channel 6 check
};

// The FM channels that the WHERE clause admits for target channel c, in the
// clause's order: c; c+1, c-1; c+2, c-2; c+3, c-3; c+53, c-53, c+54, c-54,
// each group only when its relation flag is set.
std::vector<int> QueryChannels(int channel, const ScanOptions& options);

// The WHERE clause for target channel `channel` (200..300), character for
// character as the FM query sends it (see BuildFmQuery). Empty text after an
// error (reported under ":BuildWhereClause:").
std::string BuildWhereClause(int channel, const ScanOptions& options);

// The full FM query text for `channel`:
// "SELECT fac_callsign, station_channel, lat, lon,  station_class, intl_class,
// border_code FROM fm_data WHERE " + BuildWhereClause(...).
std::string BuildFmQuery(int channel, const ScanOptions& options);

// The TV channel 6 query.
inline constexpr std::string_view kTv6Query = "SELECT lat, lon, fac_zone FROM tv6_data;";

// True when the TV channel 6 stations count on `channel`: the TV6 flag is set
// and either the channel is 201..220 with a low-power target ("L2", "L1") or
// the channel is 253 with any other target class.
bool Tv6CheckApplies(int channel, int16_t targetClass, const ScanOptions& options);

// Status texts.
std::string ScanCaption(int16_t targetClass);  // "AutoScan for Class " + class name
std::string ScanningChannelText(int channel);  // "Scanning channel 245"
inline constexpr std::string_view kScanAbortedText = "Scan aborted";
std::string ScanCompleteText(int openings);  // "Scanning complete: 1 opening found."

// One list line: the channel, a tab, the clearance formatted "0.00"
// ("245\t12.34"). A clearance that rounds to zero from below keeps its sign
// ("-0.00"): it is short-spaced and not an opening.
std::string FormatListLine(int channel, float clearance);

// The clearance of a list line, read back as a single-precision number from
// the text after the three-digit channel. So the list orders by the "0.00"
// values it shows.
float ListLineClearance(std::string_view line);

// Inserts the line for (channel, clearance) in sorted place: before the first
// line whose clearance (read back from its text) is smaller than the new
// line's (read back the same way), or before the first empty line, or at the
// end. The list stays in descending order; equal values keep scan order.
void InsertIntoList(std::vector<std::string>& list, int channel, float clearance);

// Finds the minimum clearance of one channel. Implementations report their
// errors under "frmAutoScan" and ":FindMinClearance:" and return the minimum
// reached so far (350 when none); they never throw.
class ClearanceEngine {
  public:
    virtual ~ClearanceEngine() = default;
    // Smallest clearance (km, single precision) over the relevant stations
    // with the target placed on `channel` (200..300); 350 when none counts.
    virtual float FindMinClearance(const ScanTarget& target, int channel,
                                   const ScanOptions& options) = 0;
};

// Receives every status text of a scan in order: the caption, "Scanning
// channel N" before each channel, and "Scan aborted" or "Scanning complete:
// ..." at the end. The desktop form also lets its event loop run here.
using ScanProgress = std::function<void(const std::string& text)>;

struct ScanResult {
    std::string caption;             // "AutoScan for Class A"
    std::vector<std::string> lines;  // List1, sorted
    std::vector<float> minima;       // by channel - 200, for the channels scanned
    int openings = 0;                // channels with a clearance of 0 or more
    std::string status;              // the final status text
    bool aborted = false;
};

// Scans channels 200..300 in order. `abort` (may be null) is tested at the
// start of each channel, so a request is honoured before the next channel's
// queries and never inside one; the caller clears it before starting. An
// aborted scan keeps the channels scanned so far, sorted.
ScanResult ScanChannels(ClearanceEngine& engine, const ScanTarget& target,
                        const ScanOptions& options, const ScanProgress& progress = {},
                        const std::atomic<bool>* abort = nullptr);

}  // namespace qarvel::studies
