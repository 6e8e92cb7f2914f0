#pragma once
// Inside the demo generator: the seeded random source, the planned stations
// and the channel planner. Not part of the module's interface.

#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "demo/demo_data.h"
#include "mapdata/places.h"

namespace qarvel::demo {

// Whole-number draws from a fixed-seed mt19937. The engine's output sequence
// is fixed by the C++ standard; the distributions are not, so none is used.
class DemoRandom {
  public:
    explicit DemoRandom(std::uint32_t seed) : m_engine(seed) {}
    // 0 to n - 1 (n > 0).
    std::uint32_t Below(std::uint32_t n) { return static_cast<std::uint32_t>(m_engine() % n); }
    int Between(int low, int high) {
        return low + static_cast<int>(Below(static_cast<std::uint32_t>(high - low + 1)));
    }
    bool Percent(std::uint32_t p) { return Below(100) < p; }
    template <class T>
    void Shuffle(std::vector<T>& items) {
        for (std::size_t i = items.size(); i > 1; --i)
            std::swap(items[i - 1], items[Below(static_cast<std::uint32_t>(i))]);
    }

  private:
    std::mt19937 m_engine;
};

enum class Kind { FullPower, Modification, LowPower, Translator, Booster, ShortSpaced };

struct Planned {
    Kind kind = Kind::FullPower;
    int city = 0;              // index into the candidate cities
    int lat = 0, lon = 0;      // stored units (degrees x 14400), longitude positive WEST
    std::int16_t cls = -1;     // spacing class index (ClassName[cls + 1])
    int channel = 0;           // 200..300; 0 while unassigned
    bool educational = false;  // non-commercial: prefers channels 201..220
    std::string status = "LIC";
    int primary = -1;  // modification, translator, booster: the station it belongs to
    int rank = 0;      // the station's number within its city (0 = first)
};

// A television channel 6 station the FM plan protects.
struct Tv6Site {
    int city = 0;
    int lat = 0, lon = 0;   // stored units, longitude positive WEST
    std::string facZone;    // "1", "2" or "3"
    std::int16_t zone = 0;  // ZoneIndex(facZone)
};

struct Plan {
    std::vector<mapdata::City> cities;  // the candidate cities, population order
    std::vector<Planned> fm;   // in the order they were placed
    std::vector<Tv6Site> tv6;
    std::vector<int> amCities;                    // cities with an AM station
    std::vector<std::pair<int, int>> shortPairs;  // indices into fm
};

// Class indices (ClassName[index + 1]) the generator uses.
inline constexpr std::int16_t kClassL1 = 1, kClassA = 4, kClassB1 = 6, kClassB = 7, kClassC3 = 8,
                              kClassC2 = 9, kClassC1 = 10, kClassC0 = 11, kClassC = 12,
                              kClassD = 13;
inline constexpr int kFirstChannel = 200, kLastChannel = 300;
inline constexpr int kFirstReserved = 201, kLastReserved = 220;  // non-commercial band
inline constexpr int kFirstCommercial = 221;

// Flat-earth distance in km between two positions in stored units
// (degrees x 14400, longitude positive WEST).
double DistanceKm(int lat1, int lon1, int lat2, int lon2);
// A cheap box test before DistanceKm: within degLat and degLon degrees.
bool MaybeWithin(int lat1, int lon1, int lat2, int lon2, double degLat, double degLon);

// The stations placed so far and the channels a new one may take.
class ChannelPlanner {
  public:
    ChannelPlanner(const std::vector<Planned>& placed, const std::vector<Tv6Site>& tv6)
        : m_placed(placed), m_tv6(tv6) {}

    // Channels 200..300 (index channel - 200) on which s, as class s.cls,
    // would come closer than a rule allows to a placed station other than
    // `ignore` (its own facility), checked both ways round, or, on 201..220,
    // to a channel 6 television station.
    std::array<bool, 101> Blocked(const Planned& s, int ignore = -1) const;

    // The first channel of first..last, from `start` on and wrapping round,
    // that is not blocked; 0 when there is none.
    int Find(const Planned& s, int first, int last, int start, int ignore = -1) const;

    // The separation (km) the rules ask between s on `channel` and o on its
    // own channel, the larger of the two ways round; 0 when unrelated.
    static int Required(const Planned& s, int channel, const Planned& o);

  private:
    void BlockTelevisionSix(const Planned& s, std::array<bool, 101>& blocked) const;

    const std::vector<Planned>& m_placed;
    const std::vector<Tv6Site>& m_tv6;
};

// Chooses sites, classes, channels and statuses.
Plan MakePlan(const std::vector<mapdata::City>& cities, DemoRandom& random);

// The table rows of a plan: ids, call signs, owners and technical values,
// drawn from the same random source after MakePlan.
DemoStations MakeRecords(const Plan& plan, DemoRandom& random);

// True when the state counts as zone I or I-A for the class choice
// (north-east; southern California is decided by latitude).
bool InNorthEastZone(const std::string& state, double latDeg);
// True for the states west of the Mississippi (call signs start with K).
bool WestOfMississippi(const std::string& state);

}  // namespace qarvel::demo
