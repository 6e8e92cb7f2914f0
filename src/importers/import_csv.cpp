#include "importers/import_csv.h"

#include <array>

namespace qarvel::importers {
namespace {

// Class texts of the separation tables.
constexpr std::array<std::string_view, 14> kClasses = {"L2", "L1", "A3", "A1", "A",  "AA", "B1",
                                                       "B",  "C3", "C2", "C1", "C0", "C",  "D"};

bool IsFmClass(std::string_view text) {
    for (std::string_view c : kClasses)
        if (c == text) return true;
    return false;
}

struct CsvColumns {
    std::size_t callsign, cls, latitude, longitude, city, state;
    std::optional<std::size_t> channel, frequency, status, service, country;
};

CsvColumns FindColumns(const HeaderMap& h, const std::string& file) {
    CsvColumns c{};
    c.callsign = h.Require({"callsign", "call_sign", "call", "call_letters", "fac_callsign"}, file);
    c.channel = h.Find({"channel", "station_channel", "ch"});
    c.frequency = h.Find({"frequency_mhz", "frequency", "freq", "freq_mhz", "mhz"});
    if (!c.channel && !c.frequency)
        throw ImportFailure(file + ": no column \"channel\" or \"frequency_mhz\" in the header");
    c.cls = h.Require({"class", "station_class", "fm_class"}, file);
    c.latitude = h.Require({"latitude", "lat"}, file);
    c.longitude = h.Require({"longitude", "lon", "long", "lng"}, file);
    c.city = h.Require({"city", "community", "comm_city", "city_of_license"}, file);
    c.state = h.Require({"state", "comm_state", "province", "state_province"}, file);
    c.status = h.Find({"status", "fm_dom_status", "license_status"});
    c.service = h.Find({"service", "asd_service", "app_service"});
    c.country = h.Find({"country", "country_code"});
    return c;
}

// One row as an FM record; the problem text when the row is unusable.
struct RowResult {
    stationdb::FmRecord record;
    stationdb::StationCountry country = stationdb::StationCountry::US;
    std::string problem;
};

std::optional<int> RowChannel(const std::vector<std::string>& row, const CsvColumns& c, std::string& problem) {
    const std::string_view channelText = stationdb::TrimView(FieldAt(row, c.channel));
    if (!channelText.empty()) {
        const auto channel = stationdb::ParseInteger(channelText);
        if (channel && *channel >= 200 && *channel <= 300) return static_cast<int>(*channel);
        problem = "channel '" + std::string(channelText) + "' is not an FM channel (200 to 300)";
        return std::nullopt;
    }
    const std::string_view mhzText = stationdb::TrimView(FieldAt(row, c.frequency));
    const auto mhz = stationdb::ParseNumber(mhzText);
    if (auto channel = mhz ? stationdb::ChannelFromFrequency(*mhz) : std::nullopt) return channel;
    problem = mhzText.empty() ? "no channel or frequency"
                              : "frequency '" + std::string(mhzText) + "' is not an FM channel (87.9 to 107.9 MHz)";
    return std::nullopt;
}

RowResult ParseRow(const std::vector<std::string>& row, const CsvColumns& c, std::size_t columns,
                   bool eastPositive) {
    RowResult out;
    if (row.size() != columns) {
        out.problem = "has " + std::to_string(row.size()) + " fields, the header " + std::to_string(columns);
        return out;
    }
    stationdb::FmRecord& r = out.record;
    const auto channel = RowChannel(row, c, out.problem);
    if (!channel) return out;
    r.station_channel = channel;
    const std::string cls = stationdb::Upper(stationdb::TrimView(row[c.cls]));
    if (!IsFmClass(cls)) {
        out.problem = "class '" + cls + "' is not an FM station class";
        return out;
    }
    r.station_class = cls;
    const auto lat = stationdb::ParseNumber(row[c.latitude]);
    const auto lon = stationdb::ParseNumber(row[c.longitude]);
    if (!lat || *lat < -90 || *lat > 90) {
        out.problem = "latitude '" + stationdb::Trimmed(row[c.latitude]) + "' is not a number of degrees (-90 to 90)";
        return out;
    }
    if (!lon || *lon < -180 || *lon > 180) {
        out.problem = "longitude '" + stationdb::Trimmed(row[c.longitude]) + "' is not a number of degrees (-180 to 180)";
        return out;
    }
    r.lat = stationdb::StoredCoordinate(*lat);
    r.lon = stationdb::StoredCoordinate(eastPositive ? -*lon : *lon);  // stored longitude is west positive
    r.fac_callsign = OptionalText(row[c.callsign]);
    r.comm_city = OptionalText(row[c.city]);
    r.comm_state = OptionalText(row[c.state]);
    r.fm_dom_status = OptionalText(FieldAt(row, c.status)).value_or("LIC");
    r.asd_service = OptionalText(FieldAt(row, c.service)).value_or("FM");
    r.app_service = r.asd_service;
    const std::string_view countryText = stationdb::TrimView(FieldAt(row, c.country));
    out.country = countryText.empty() ? stationdb::CountryOfStation(r.fac_callsign.value_or(""), r.comm_state.value_or(""))
                                      : stationdb::CountryFromCode(countryText);
    if (out.country != stationdb::StationCountry::US) MarkForeign(r);
    return out;
}

bool Blank(const std::vector<std::string>& row) {
    for (const std::string& field : row)
        if (!stationdb::TrimView(field).empty()) return false;
    return true;
}

void ImportRows(const std::filesystem::path& csv, stationdb::MasterWriter& writer, ImportRun& run) {
    DelimitedReader reader(csv, DelimitedFormat{',', true, false});
    run.AddInputSize(reader.Size());
    std::vector<std::string> row;
    if (!reader.Next(row)) throw ImportFailure(reader.Name() + ": the file is empty");
    const HeaderMap header(row);
    const CsvColumns columns = FindColumns(header, reader.Name());
    const bool eastPositive = run.Options().eastPositive;
    std::uint64_t records = 0;
    int nextId = 1;
    while (reader.Next(row)) {
        run.Tick(reader);
        if (Blank(row)) continue;
        ++records;
        ++run.Summary().read;
        RowResult result = ParseRow(row, columns, header.Size(), eastPositive);
        if (!result.problem.empty()) {
            if (!reader.RecordTerminated())
                throw ImportFailure(reader.Name() + ":" + std::to_string(reader.RecordLine()) + ": " +
                                    result.problem + ", and the line has no line break: the file seems cut off");
            run.BadRecord(reader.Name(), reader.RecordLine(), result.problem);
            continue;
        }
        result.record.application_id = nextId;
        if (run.WriteFm(writer, result.record, result.country)) ++nextId;
    }
    run.FileDone(reader, records);
}

}  // namespace

bool ImportCsv(const std::filesystem::path& csv, const ImportTarget& out, const ImportOptions& options,
               ImportSummary* summary) {
    ImportSummary local;
    ImportSummary& s = summary ? *summary : local;
    return RunImport(":ImportCsv:", out, options, "Station list " + csv.filename().string(), s,
                     [&](stationdb::MasterWriter& writer, ImportRun& run) { ImportRows(csv, writer, run); });
}

}  // namespace qarvel::importers
