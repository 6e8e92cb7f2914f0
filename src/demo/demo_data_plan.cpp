// The demo generator's plan: which cities get stations, of which class, on
// which channel, in which status. Big cities get several stations of the
// large classes, mid-size cities one or two, small towns one; channels are
// given greedily (ChannelPlanner) so that nearly everything is fully spaced,
// and a few stations are then put deliberately short.

#include <algorithm>
#include <map>
#include <set>
#include <stdexcept>

#include "geodesy/geodesy.h"
#include "demo/demo_data_internal.h"
#include "stationdb/field_text.h"  // StoredCoordinate

namespace qarvel::demo {
namespace {

constexpr std::size_t kFullPowerTarget = 1120;
constexpr std::size_t kTv6Count = 12, kAmCount = 60, kModifications = 50, kLowPower = 40;
constexpr std::size_t kTranslators = 110, kBoosters = 25, kShortPairs = 8;
constexpr std::int64_t kMetroPopulation = 250000, kMidPopulation = 30000;

enum Tier { kMetro, kMid, kSmall };

struct Site {
    int city = 0;
    int count = 0;
    Tier tier = kSmall;
};

bool UsableSite(const mapdata::City& c) {
    static const std::set<std::string, std::less<>> states{
        "AK", "AL", "AR", "AZ", "CA", "CO", "CT", "DC", "DE", "FL", "GA", "HI", "IA",
        "ID", "IL", "IN", "KS", "KY", "LA", "MA", "MD", "ME", "MI", "MN", "MO", "MS",
        "MT", "NC", "ND", "NE", "NH", "NJ", "NM", "NV", "NY", "OH", "OK", "OR", "PA",
        "RI", "SC", "SD", "TN", "TX", "UT", "VA", "VT", "WA", "WI", "WV", "WY"};
    // Sections of a city and abandoned or historical places hold no station.
    static const std::set<std::string, std::less<>> skipped{"PPLX", "PPLQ", "PPLH", "PPLW"};
    return c.country == "US" && states.count(c.admin1) > 0 && skipped.count(c.featureCode) == 0;
}

// Cities that already hold a station, for "is one within R km" (R up to
// about 45 km): one-degree cells, searched 3 x 3 around the city.
class SiteGrid {
  public:
    void Add(const mapdata::City& c) { m_cells[Key(c)].push_back(&c); }
    bool AnyWithin(const mapdata::City& c, double km) const {
        const auto [la, lo] = Key(c);
        for (int dla = -1; dla <= 1; ++dla) {
            for (int dlo = -1; dlo <= 1; ++dlo) {
                const auto cell = m_cells.find({la + dla, lo + dlo});
                if (cell == m_cells.end()) continue;
                for (const mapdata::City* o : cell->second) {
                    double n = 0, e = 0;
                    if (geodesy::FlatDistance(c.lat, c.lon, o->lat, o->lon, n, e) < km) return true;
                }
            }
        }
        return false;
    }

  private:
    static std::pair<int, int> Key(const mapdata::City& c) {
        return {static_cast<int>(c.lat + 90.0), static_cast<int>(c.lon + 360.0)};
    }
    std::map<std::pair<int, int>, std::vector<const mapdata::City*>> m_cells;
};

std::int16_t Weighted(DemoRandom& random,
                      std::initializer_list<std::pair<std::int16_t, std::uint32_t>> table) {
    std::uint32_t total = 0;
    for (const auto& entry : table) total += entry.second;
    std::uint32_t pick = random.Below(total);
    for (const auto& [cls, weight] : table) {
        if (pick < weight) return cls;
        pick -= weight;
    }
    return kClassA;
}

// Zone I (north-east) has classes B, B1 and A; elsewhere C to A, the big
// classes in the big cities and, as in the West, some rural class C.
std::int16_t ChooseClass(DemoRandom& r, bool northEast, Tier tier, int rank) {
    if (northEast) {
        if (tier == kMetro) {
            if (rank < 3) return Weighted(r, {{kClassB, 80}, {kClassB1, 20}});
            return rank < 5 ? kClassB1 : kClassA;
        }
        if (tier == kMid) return Weighted(r, {{kClassB, 20}, {kClassB1, 25}, {kClassA, 55}});
        return Weighted(r, {{kClassA, 85}, {kClassB1, 10}, {kClassB, 5}});
    }
    if (tier == kMetro) {
        if (rank == 0) return Weighted(r, {{kClassC, 50}, {kClassC0, 50}});
        if (rank == 1) return Weighted(r, {{kClassC0, 50}, {kClassC1, 50}});
        if (rank < 4) return Weighted(r, {{kClassC1, 60}, {kClassC2, 40}});
        if (rank < 6) return Weighted(r, {{kClassC2, 50}, {kClassC3, 50}});
        return Weighted(r, {{kClassC3, 50}, {kClassA, 50}});
    }
    if (tier == kMid)
        return Weighted(r, {{kClassC1, 15}, {kClassC2, 25}, {kClassC3, 30}, {kClassA, 30}});
    return Weighted(r, {{kClassA, 40},
                        {kClassC3, 20},
                        {kClassC2, 15},
                        {kClassC1, 10},
                        {kClassC0, 5},
                        {kClassC, 10}});
}

// The next smaller class tried when a station finds no channel; -1 after A.
std::int16_t Downgrade(std::int16_t cls) {
    static const std::map<std::int16_t, std::int16_t> next{
        {kClassC, kClassC0}, {kClassC0, kClassC1}, {kClassC1, kClassC2}, {kClassC2, kClassC3},
        {kClassC3, kClassA}, {kClassB, kClassB1},  {kClassB1, kClassA}};
    const auto found = next.find(cls);
    return found == next.end() ? std::int16_t{-1} : found->second;
}

// The class a modification application asks for: one step up.
std::int16_t Upgrade(std::int16_t cls, bool northEast) {
    static const std::map<std::int16_t, std::int16_t> zoneTwo{{kClassA, kClassC3},
                                                              {kClassC3, kClassC2},
                                                              {kClassC2, kClassC1},
                                                              {kClassC1, kClassC0},
                                                              {kClassC0, kClassC}};
    static const std::map<std::int16_t, std::int16_t> zoneOne{{kClassA, kClassB1},
                                                              {kClassB1, kClassB}};
    const auto& table = northEast ? zoneOne : zoneTwo;
    const auto found = table.find(cls);
    return found == table.end() ? cls : found->second;
}

// The big stations are placed first, so they get the channels they need.
int Strength(std::int16_t cls) {
    static const std::map<std::int16_t, int> order{{kClassC, 8},  {kClassC0, 7}, {kClassB, 6},
                                                   {kClassC1, 5}, {kClassC2, 4}, {kClassB1, 3},
                                                   {kClassC3, 2}, {kClassA, 1}};
    const auto found = order.find(cls);
    return found == order.end() ? 0 : found->second;
}

std::string DrawStatus(DemoRandom& r, std::uint32_t licensed, std::uint32_t permits) {
    const std::uint32_t pick = r.Below(100);
    return pick < licensed ? "LIC" : pick < licensed + permits ? "CP" : "APP";
}

class PlanBuilder {
  public:
    PlanBuilder(const std::vector<mapdata::City>& cities, DemoRandom& random) : m_random(random) {
        for (const mapdata::City& c : cities) {
            if (UsableSite(c)) m_plan.cities.push_back(c);
        }
        if (m_plan.cities.size() < 1000) {
            throw std::invalid_argument("the demo needs the US cities of the GeoNames list; only " +
                                        std::to_string(m_plan.cities.size()) +
                                        " usable cities were given");
        }
    }

    Plan Build() {
        ChooseTelevisionSix();
        const std::vector<Site> sites = ChooseSites();
        PlaceFullPower(sites);
        AddModifications();
        AddLowPower();
        AddTranslators();
        AddBoosters();
        AddShortSpacedPairs();
        ChooseAmCities(sites);
        return std::move(m_plan);
    }

  private:
    const mapdata::City& CityAt(int index) const { return m_plan.cities[static_cast<std::size_t>(index)]; }

    Planned At(int city, Kind kind, int jitter) {
        Planned p;
        p.kind = kind;
        p.city = city;
        p.lat = stationdb::StoredCoordinate(CityAt(city).lat) + m_random.Between(-jitter, jitter);
        p.lon = stationdb::StoredCoordinate(CityAt(city).lon) + m_random.Between(-jitter, jitter);
        return p;
    }

    bool NorthEast(const Planned& p) const {
        return InNorthEastZone(CityAt(p.city).admin1, CityAt(p.city).lat);
    }

    // Indices of the candidate cities between minKm and maxKm from p.
    std::vector<int> CitiesBetween(const Planned& p, double minKm, double maxKm) const {
        std::vector<int> found;
        for (std::size_t i = 0; i < m_plan.cities.size(); ++i) {
            const int lat = stationdb::StoredCoordinate(m_plan.cities[i].lat),
                      lon = stationdb::StoredCoordinate(m_plan.cities[i].lon);
            if (!MaybeWithin(p.lat, p.lon, lat, lon, maxKm / 100.0, maxKm / 40.0)) continue;
            const double d = DistanceKm(p.lat, p.lon, lat, lon);
            if (d >= minKm && d <= maxKm) found.push_back(static_cast<int>(i));
        }
        return found;
    }

    // Indices of placed stations of `kind` and status "LIC", shuffled.
    std::vector<int> Licensed(Kind kind) {
        std::vector<int> found;
        for (std::size_t i = 0; i < m_plan.fm.size(); ++i) {
            if (m_plan.fm[i].kind == kind && m_plan.fm[i].status == "LIC")
                found.push_back(static_cast<int>(i));
        }
        m_random.Shuffle(found);
        return found;
    }

    int FindInBand(const Planned& p, bool anyBand, int ignore = -1) {
        const int commercial =
            m_planner.Find(p, kFirstCommercial, kLastChannel,
                           m_random.Between(kFirstCommercial, kLastChannel), ignore);
        if (!p.educational && !anyBand) return commercial;
        const int reserved =
            m_planner.Find(p, kFirstReserved, kLastReserved,
                           m_random.Between(kFirstReserved, kLastReserved), ignore);
        if (p.educational) return reserved != 0 ? reserved : commercial;
        return m_random.Percent(20) && reserved != 0 ? reserved
               : commercial != 0                     ? commercial
                                                     : reserved;
    }

    void ChooseTelevisionSix() {
        for (std::size_t i = 0; i < m_plan.cities.size() && m_plan.tv6.size() < kTv6Count; ++i) {
            const mapdata::City& c = m_plan.cities[i];
            if (c.population < 100000 || c.population > 1500000 || !m_random.Percent(40)) continue;
            Tv6Site site{static_cast<int>(i), stationdb::StoredCoordinate(c.lat), stationdb::StoredCoordinate(c.lon), "2",
                         0};
            const bool tooClose =
                std::any_of(m_plan.tv6.begin(), m_plan.tv6.end(), [&](const Tv6Site& t) {
                    return DistanceKm(site.lat, site.lon, t.lat, t.lon) < 250.0;
                });
            if (tooClose) continue;
            static const std::set<std::string> gulf{"AL", "FL", "LA", "MS", "TX"};
            if (InNorthEastZone(c.admin1, c.lat)) site.facZone = "1";
            if (gulf.count(c.admin1) > 0 && c.lat < 31.0) site.facZone = "3";
            site.zone = site.facZone == "1" ? 1 : 0;
            m_plan.tv6.push_back(site);
        }
    }

    std::vector<Site> ChooseSites() {
        std::vector<Site> sites;
        SiteGrid metros, all;
        std::size_t planned = 0;
        auto add = [&](std::size_t i, int count, Tier tier) {
            sites.push_back({static_cast<int>(i), count, tier});
            all.Add(m_plan.cities[i]);
            if (tier == kMetro) metros.Add(m_plan.cities[i]);
            planned += static_cast<std::size_t>(count);
        };
        std::vector<int> small;
        for (std::size_t i = 0; i < m_plan.cities.size(); ++i) {
            const mapdata::City& c = m_plan.cities[i];
            if (c.population >= kMetroPopulation) {
                if (!metros.AnyWithin(c, 40.0))
                    add(i, static_cast<int>(std::min<std::int64_t>(10, 2 + c.population / 400000)),
                        kMetro);
            } else if (c.population >= kMidPopulation) {
                if (!all.AnyWithin(c, 30.0)) add(i, c.population >= 80000 ? 2 : 1, kMid);
            } else {
                small.push_back(static_cast<int>(i));
            }
        }
        m_random.Shuffle(small);
        for (const int i : small) {
            if (planned >= kFullPowerTarget) break;
            if (!all.AnyWithin(CityAt(i), 45.0)) add(static_cast<std::size_t>(i), 1, kSmall);
        }
        return sites;
    }

    void PlaceFullPower(const std::vector<Site>& sites) {
        std::vector<Planned> wanted;
        for (const Site& site : sites) {
            for (int rank = 0; rank < site.count; ++rank) {
                Planned p = At(site.city, Kind::FullPower, 400);
                p.rank = rank;
                p.cls = ChooseClass(m_random, NorthEast(p), site.tier, rank);
                p.educational = m_random.Percent(20);
                p.status = DrawStatus(m_random, 88, 6);
                wanted.push_back(p);
            }
        }
        std::stable_sort(wanted.begin(), wanted.end(), [](const Planned& a, const Planned& b) {
            return Strength(a.cls) > Strength(b.cls);
        });
        for (Planned& p : wanted) {
            for (; p.cls != -1; p.cls = Downgrade(p.cls)) {
                p.channel = FindInBand(p, false);
                if (p.channel != 0) {
                    m_plan.fm.push_back(p);
                    break;
                }
            }
        }
    }

    // Applications to move a licensed station a few km, often to the next
    // class up; they share the station's facility and channel.
    void AddModifications() {
        std::size_t made = 0;
        for (const int j : Licensed(Kind::FullPower)) {
            if (made == kModifications) break;
            Planned m = m_plan.fm[static_cast<std::size_t>(j)];
            m.kind = Kind::Modification;
            m.primary = j;
            m.lat += m_random.Between(-720, 720);
            m.lon += m_random.Between(-720, 720);
            m.status = m_random.Percent(50) ? "CP" : "APP";
            const std::int16_t wanted = m_random.Percent(60) ? Upgrade(m.cls, NorthEast(m)) : m.cls;
            for (const std::int16_t cls : {wanted, m.cls}) {
                Planned trial = m;
                trial.cls = cls;
                if (!m_planner.Blocked(trial,
                                       j)[static_cast<std::size_t>(m.channel - kFirstChannel)]) {
                    m_plan.fm.push_back(trial);
                    ++made;
                    break;
                }
            }
        }
    }

    void AddLowPower() {
        std::vector<int> towns;
        for (std::size_t i = 0; i < m_plan.cities.size(); ++i) {
            const std::int64_t pop = m_plan.cities[i].population;
            if (pop >= 5000 && pop <= 300000) towns.push_back(static_cast<int>(i));
        }
        m_random.Shuffle(towns);
        std::size_t made = 0;
        for (std::size_t k = 0; k < towns.size() && k < 4 * kLowPower && made < kLowPower; ++k) {
            Planned p = At(towns[k], Kind::LowPower, 200);
            p.cls = kClassL1;
            p.status = DrawStatus(m_random, 80, 10);
            p.channel = m_planner.Find(p, kFirstReserved, kLastChannel,
                                       m_random.Between(kFirstReserved, kLastChannel));
            if (p.channel == 0) continue;
            m_plan.fm.push_back(p);
            ++made;
        }
    }

    // Translators rebroadcast a station in a town 30 to 120 km away, on a
    // channel of their own. The rules set no separation for class D, so
    // the channel is chosen as if they were low-power stations (L1).
    void AddTranslators() {
        std::size_t made = 0;
        for (const int j : Licensed(Kind::FullPower)) {
            if (made == kTranslators) break;
            const std::vector<int> towns =
                CitiesBetween(m_plan.fm[static_cast<std::size_t>(j)], 30.0, 120.0);
            if (towns.empty()) continue;
            Planned t = At(towns[m_random.Below(static_cast<std::uint32_t>(towns.size()))],
                           Kind::Translator, 300);
            t.cls = kClassL1;
            t.primary = j;
            t.educational = m_plan.fm[static_cast<std::size_t>(j)].educational;
            t.status = DrawStatus(m_random, 85, 10);
            t.channel = FindInBand(t, true);
            if (t.channel == 0) continue;
            t.cls = kClassD;
            m_plan.fm.push_back(t);
            ++made;
        }
    }

    // Boosters fill gaps in a station's own area on its own channel.
    void AddBoosters() {
        std::size_t made = 0;
        for (const int j : Licensed(Kind::FullPower)) {
            if (made == kBoosters) break;
            const Planned& primary = m_plan.fm[static_cast<std::size_t>(j)];
            const std::vector<int> towns = CitiesBetween(primary, 8.0, 40.0);
            if (towns.empty()) continue;
            Planned b = At(towns[m_random.Below(static_cast<std::uint32_t>(towns.size()))],
                           Kind::Booster, 200);
            b.cls = kClassL1;
            b.primary = j;
            b.channel = primary.channel;
            b.educational = primary.educational;
            if (m_planner.Blocked(b, j)[static_cast<std::size_t>(b.channel - kFirstChannel)])
                continue;
            b.cls = kClassD;
            m_plan.fm.push_back(b);
            ++made;
        }
    }

    // Class A stations 35 to 70 km from a licensed station, on its channel
    // or the next: closer than any co-channel or first-adjacent rule allows.
    void AddShortSpacedPairs() {
        for (const int j : Licensed(Kind::FullPower)) {
            if (m_plan.shortPairs.size() == kShortPairs) break;
            const Planned& other = m_plan.fm[static_cast<std::size_t>(j)];
            const std::vector<int> towns = CitiesBetween(other, 35.0, 70.0);
            if (towns.empty() || other.channel < kFirstCommercial) continue;
            Planned s = At(towns[m_random.Below(static_cast<std::uint32_t>(towns.size()))],
                           Kind::ShortSpaced, 0);
            s.cls = kClassA;
            const bool coChannel = m_plan.shortPairs.size() % 2 == 0;
            s.channel = coChannel                      ? other.channel
                        : other.channel < kLastChannel ? other.channel + 1
                                                       : other.channel - 1;
            if (DistanceKm(s.lat, s.lon, other.lat, other.lon) >=
                ChannelPlanner::Required(s, s.channel, other))
                continue;
            m_plan.fm.push_back(s);
            m_plan.shortPairs.push_back({static_cast<int>(m_plan.fm.size() - 1), j});
        }
    }

    void ChooseAmCities(const std::vector<Site>& sites) {
        std::vector<int> cities;
        for (const Site& s : sites) {
            if (s.tier != kSmall) cities.push_back(s.city);
        }
        m_random.Shuffle(cities);
        cities.resize(std::min(cities.size(), kAmCount));
        m_plan.amCities = cities;
    }

    DemoRandom& m_random;
    Plan m_plan;
    ChannelPlanner m_planner{m_plan.fm, m_plan.tv6};
};

}  // namespace

Plan MakePlan(const std::vector<mapdata::City>& cities, DemoRandom& random) {
    return PlanBuilder(cities, random).Build();
}

}  // namespace qarvel::demo
