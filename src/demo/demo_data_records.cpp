// The demo generator's table rows: identifiers, call signs, owners and the
// technical values of each planned station, in the regulator's styles
// (upper-case community names, file prefixes such as "BLH" and "BPED",
// translator call signs such as "K245AB"). Owners get names made from word
// lists, addresses in the 555-01xx telephone range and ".example" mail.

#include <algorithm>
#include <cctype>
#include <map>
#include <set>

#include "spacing/class_codes.h"
#include "demo/demo_data_internal.h"
#include "stationdb/field_text.h"  // StoredCoordinate

namespace qarvel::demo {
namespace {

constexpr int kOwnersCommercial = 170, kOwnersEducational = 60, kGroupOwners = 15;

// Whole number in at least `width` digits, zero-filled.
std::string Digits(int value, std::size_t width) {
    std::string text = std::to_string(value);
    return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

std::string Upper(std::string text, std::size_t limit) {
    for (char& ch : text) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    return text.substr(0, limit);
}

// Distinct whole numbers drawn from low..high.
class IdPool {
  public:
    IdPool(DemoRandom& random, int low, int high) : m_random(random), m_low(low), m_high(high) {}
    int Draw() {
        for (;;) {
            const int id = m_random.Between(m_low, m_high);
            if (m_used.insert(id).second) return id;
        }
    }

  private:
    DemoRandom& m_random;
    int m_low, m_high;
    std::set<int> m_used;
};

class CallSigns {
  public:
    explicit CallSigns(DemoRandom& random) : m_random(random) {}
    // Four letters, K west of the Mississippi and W east of it.
    std::string Station(bool west) {
        return Unique([&] {
            std::string call(1, west ? 'K' : 'W');
            for (int i = 0; i < 3; ++i) call += Letter();
            return call;
        });
    }
    // A translator's: K or W, the channel, two letters ("K245AB").
    std::string Translator(bool west, int channel) {
        return Unique([&] {
            std::string call = std::string(1, west ? 'K' : 'W') + std::to_string(channel);
            call += Letter();
            call += Letter();
            return call;
        });
    }

  private:
    char Letter() { return static_cast<char>('A' + m_random.Below(26)); }
    template <class Make>
    std::string Unique(Make make) {
        for (;;) {
            std::string call = make();
            if (m_used.insert(call).second) return call;
        }
    }
    DemoRandom& m_random;
    std::set<std::string> m_used;
};

struct ClassFacts {
    int maxErpHundredthsKw;  // maximum ERP in 1/100 kW
    int referenceHaatM;      // reference antenna height above average terrain, m
};

ClassFacts FactsOf(std::int16_t cls) {
    static const std::map<std::int16_t, ClassFacts> facts{
        {kClassL1, {10, 30}},     {kClassA, {600, 100}},    {kClassB1, {2500, 100}},
        {kClassB, {5000, 150}},   {kClassC3, {2500, 100}},  {kClassC2, {5000, 150}},
        {kClassC1, {10000, 299}}, {kClassC0, {10000, 450}}, {kClassC, {10000, 600}},
        {kClassD, {25, 100}}};
    const auto found = facts.find(cls);
    return found == facts.end() ? ClassFacts{600, 100} : found->second;
}

std::string AsdService(Kind kind) {
    switch (kind) {
        case Kind::LowPower:
            return "FL";
        case Kind::Translator:
            return "FX";
        case Kind::Booster:
            return "FB";
        default:
            return "FM";
    }
}

std::string FilePrefix(const Planned& p) {
    const bool licensed = p.status == "LIC";
    switch (p.kind) {
        case Kind::LowPower:
            return licensed ? "BLL" : "BNPL";
        case Kind::Translator:
            return licensed ? "BLFT" : "BNPFT";
        case Kind::Booster:
            return licensed ? "BLFTB" : "BNPFTB";
        case Kind::Modification:
            return p.educational ? "BPED" : "BPH";
        default:
            if (licensed) return p.educational ? "BLED" : "BLH";
            return p.educational ? "BNPED" : "BNPH";
    }
}

class RecordMaker {
  public:
    RecordMaker(const Plan& plan, DemoRandom& random)
        : m_plan(plan),
          m_random(random),
          m_applicationIds(random, 1000000, 2999999),
          m_facilityIds(random, 1000, 199999),
          m_partyIds(random, 100000, 999999),
          m_calls(random) {}

    DemoStations Make() {
        MakeOwners();
        for (std::size_t i = 0; i < m_plan.fm.size(); ++i) AddFm(m_plan.fm[i]);
        for (const int city : m_plan.amCities) AddAm(city);
        for (const Tv6Site& site : m_plan.tv6) AddTv6(site);
        for (const auto& [added, other] : m_plan.shortPairs) {
            m_out.shortSpacedPairs.push_back(
                {m_out.fm[static_cast<std::size_t>(added)].application_id,
                 m_out.fm[static_cast<std::size_t>(other)].application_id});
        }
        return std::move(m_out);
    }

  private:
    const mapdata::City& CityOf(int index) const { return m_plan.cities[static_cast<std::size_t>(index)]; }

    void MakeOwners() {
        static const char* const kPlaces[] = {
            "Prairie",     "Summit",    "Harbor",    "Red River", "Blue Ridge", "Lakeshore",
            "Canyon",      "Pinecrest", "Bayou",     "Frontier",  "Keystone",   "Cascade",
            "Granite",     "Mesa",      "Tidewater", "Heartland", "Big Sky",    "Gulf Coast",
            "Great Lakes", "Evergreen", "Sandhill",  "Riverbend", "Timberline", "High Plains",
            "Coastal",     "Piedmont",  "Ozark",     "Sierra",    "Delta",      "Northwoods"};
        static const char* const kCommercial[] = {
            "Broadcasting", "Media", "Radio", "Communications", "Radio Group", "Media Partners"};
        static const char* const kSuffixes[] = {"LLC", "Inc.", "Corp.", "Licensee LLC"};
        static const char* const kEducational[] = {
            "Public Radio, Inc.", "Educational Broadcasting Foundation", "Community Radio",
            "Christian Radio Association"};
        std::set<std::string> names;
        while (m_commercialOwners.size() < kOwnersCommercial) {
            // One draw per statement: the order of draws must not depend on
            // the compiler's order of evaluating arguments.
            std::string name = kPlaces[m_random.Below(30)];
            name += std::string(" ") + kCommercial[m_random.Below(6)];
            name += std::string(" ") + kSuffixes[m_random.Below(4)];
            if (names.insert(name).second) m_commercialOwners.push_back(AddParty(name));
        }
        while (m_educationalOwners.size() < kOwnersEducational) {
            std::string name = kPlaces[m_random.Below(30)];
            name += std::string(" ") + kEducational[m_random.Below(4)];
            if (names.insert(name).second) m_educationalOwners.push_back(AddParty(name));
        }
    }

    int AddParty(const std::string& name) {
        static const char* const kStreets[] = {
            "Main Street",   "Broadway",    "Commerce Drive",     "Tower Road",
            "Market Street", "Park Avenue", "Industrial Parkway", "Elm Street"};
        const mapdata::City& city = CityOf(static_cast<int>(m_random.Below(300)));
        stationdb::PartyRecord p;
        p.party_id = m_partyIds.Draw();
        const int number = m_random.Between(100, 9899);
        p.party_address1 = std::to_string(number) + " " + kStreets[m_random.Below(8)];
        if (m_random.Percent(30))
            p.party_address2 = "Suite " + std::to_string(m_random.Between(100, 999));
        p.party_company = name;
        p.party_legal_name = name;
        p.party_name = name;
        p.party_city = Upper(city.asciiName, 20);
        p.party_state = city.admin1;
        p.party_country = "US";
        p.party_zip1 = Digits(m_random.Between(10000, 99950), 5);
        const int areaCode = m_random.Between(201, 989);
        p.party_phone = std::to_string(areaCode) + "55501" + Digits(m_random.Between(0, 99), 2);
        std::string slug;
        for (const char ch : name) {
            if (std::isalnum(static_cast<unsigned char>(ch)))
                slug += static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
        }
        p.party_email = "licensing@" + slug.substr(0, 40) + ".example";
        m_out.parties.push_back(p);
        return p.party_id;
    }

    int DrawOwner(bool educational) {
        if (educational) return m_educationalOwners[m_random.Below(kOwnersEducational)];
        // A few groups own a large share of the commercial stations.
        const std::uint32_t pool = m_random.Percent(40) ? kGroupOwners : kOwnersCommercial;
        return m_commercialOwners[m_random.Below(pool)];
    }

    std::string CallSign(const Planned& p, bool west) {
        if (p.kind == Kind::Modification) return m_callOf.at(p.primary);
        if (p.kind == Kind::Translator) return m_calls.Translator(west, p.channel);
        if (p.kind == Kind::Booster) return m_callOf.at(p.primary).substr(0, 4) + "-FM1";
        if (p.kind == Kind::LowPower) return m_calls.Station(west) + "-LP";
        std::string call = m_calls.Station(west);
        if (m_random.Percent(30)) call += "-FM";
        return call;
    }

    int Owner(const Planned& p) {
        if (p.kind == Kind::Modification || p.kind == Kind::Booster) return m_ownerOf.at(p.primary);
        if (p.kind == Kind::Translator && m_random.Percent(60)) return m_ownerOf.at(p.primary);
        return DrawOwner(p.educational || p.kind == Kind::LowPower);
    }

    // Date of filing and a sequence of letters ("20150612AAI").
    std::string Arn(bool recent) {
        std::string arn = Date(recent ? 2023 : 1985, recent ? 2025 : 2022, "");
        arn += 'A';
        arn += static_cast<char>('A' + m_random.Below(26));
        arn += static_cast<char>('A' + m_random.Below(26));
        return arn;
    }

    std::string Date(int firstYear, int lastYear, const char* separator) {
        const int year = m_random.Between(firstYear, lastYear);
        const int month = m_random.Between(1, 12);
        const int day = m_random.Between(1, 28);
        return std::to_string(year) + separator + Digits(month, 2) + separator + Digits(day, 2);
    }

    void AddFm(const Planned& p) {
        const mapdata::City& city = CityOf(p.city);
        const int index = static_cast<int>(m_out.fm.size());
        stationdb::FmRecord r;
        r.application_id = m_applicationIds.Draw();
        r.fac_callsign = CallSign(p, WestOfMississippi(city.admin1));
        r.party_id = Owner(p);
        r.facility_id =
            p.kind == Kind::Modification ? m_facilityOf.at(p.primary) : m_facilityIds.Draw();
        r.lat = p.lat;
        r.lon = p.lon;
        if (p.status == "CP") r.cp_exp_date = Date(2026, 2029, "-");
        r.app_arn = Arn(p.status != "LIC");
        r.app_service = "FM";
        r.asd_service = AsdService(p.kind);
        r.file_prefix = FilePrefix(p);
        r.comm_city = Upper(city.asciiName, 20);
        r.comm_state = city.admin1;
        r.fm_dom_status = p.status;
        r.station_channel = p.channel;
        r.station_class = spacing::ClassName[static_cast<std::size_t>(p.cls + 1)];
        FillTechnical(p, city, r);
        m_callOf[index] = *r.fac_callsign;
        m_ownerOf[index] = r.party_id;
        m_facilityOf[index] = *r.facility_id;
        m_out.fm.push_back(std::move(r));
    }

    void FillTechnical(const Planned& p, const mapdata::City& city, stationdb::FmRecord& r) {
        const ClassFacts facts = FactsOf(p.cls);
        const bool shortSpaced = p.kind == Kind::ShortSpaced;
        const int erp = facts.maxErpHundredthsKw * m_random.Between(50, 100) / 100;
        const int hag = m_random.Between(p.cls == kClassD || p.cls == kClassL1 ? 10 : 40, 300);
        const int elevation = std::max(0, city.elevation) + m_random.Between(0, 60);
        r.elev_amsl = elevation;
        r.hag_horiz_rc_mtr = hag;
        r.horiz_erp = erp / 100.0;
        r.max_horiz_erp = r.horiz_erp;
        r.vert_erp = m_random.Percent(80) ? erp / 100.0 : 0.0;
        r.haat_horiz_rc_mtr = facts.referenceHaatM * m_random.Between(60, 100) / 100;
        r.rcamsl_horiz_mtr = elevation + hag;
        if (m_random.Percent(p.cls == kClassD || p.cls == kClassL1 ? 30 : 60))
            r.asrn = m_random.Between(1000000, 1299999);
        r.bt_ind = "N";
        // Short-spaced stations are authorised by contour protection, with
        // a directional antenna.
        r.rule_73_215_req_ind = shortSpaced || m_random.Percent(8) ? "Y" : "N";
        r.da_ind =
            shortSpaced || m_random.Percent(p.kind == Kind::Translator ? 40 : 12) ? "Y" : "N";
        if (r.da_ind == "Y") r.antenna_id = m_random.Between(10000, 199999);
    }

    void AddAm(int cityIndex) {
        static const char* const kModes[] = {"DA1", "DA2", "DAN", "DAD", "ND1", "ND2", "NDD"};
        const mapdata::City& city = CityOf(cityIndex);
        stationdb::AmRecord r;
        r.application_id = m_applicationIds.Draw();
        r.comm_city = Upper(city.asciiName, 20);
        r.comm_state = city.admin1;
        r.party_id = DrawOwner(false);
        r.ant_mode = kModes[m_random.Below(7)];
        // AM towers stand in open land outside town.
        r.lat = stationdb::StoredCoordinate(city.lat) + m_random.Between(-1500, 1500);
        r.lon = stationdb::StoredCoordinate(city.lon) + m_random.Between(-1500, 1500);
        r.fac_callsign = m_calls.Station(WestOfMississippi(city.admin1));
        m_out.am.push_back(std::move(r));
    }

    void AddTv6(const Tv6Site& site) {
        const mapdata::City& city = CityOf(site.city);
        stationdb::Tv6Record r;
        r.application_id = m_applicationIds.Draw();
        r.comm_city = Upper(city.asciiName, 20);
        r.comm_state = city.admin1;
        r.party_id = DrawOwner(false);
        r.lat = site.lat;
        r.lon = site.lon;
        r.fac_zone = site.facZone;
        r.fac_callsign = m_calls.Station(WestOfMississippi(city.admin1)) + "-TV";
        m_out.tv6.push_back(std::move(r));
    }

    const Plan& m_plan;
    DemoRandom& m_random;
    IdPool m_applicationIds, m_facilityIds, m_partyIds;
    CallSigns m_calls;
    std::vector<int> m_commercialOwners, m_educationalOwners;
    std::map<int, std::string> m_callOf;
    std::map<int, int> m_ownerOf, m_facilityOf;
    DemoStations m_out;
};

}  // namespace

DemoStations MakeRecords(const Plan& plan, DemoRandom& random) {
    return RecordMaker(plan, random).Make();
}

}  // namespace qarvel::demo
