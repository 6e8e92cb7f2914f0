#include "importers/import_fmquery.h"

#include <cstdint>

namespace qarvel::importers {
namespace {

// A field's columns in the line, 0-based, end exclusive (the line begins
// with one blank).
struct Span {
    std::size_t begin, end;
};

// Field positions of an FM Query line, in order.
constexpr Span kCallSign{1, 14};
constexpr Span kFrequency{14, 20};
constexpr Span kMhz{20, 25};          // "MHz"
constexpr Span kService{25, 29};
constexpr Span kChannel{29, 34};
constexpr Span kAntennaType{34, 39};  // "DA" or "ND"
// 39..60: a field the query always leaves "-"
constexpr Span kClass{60, 64};
// 64..68: a field the query always leaves "-"
constexpr Span kStatus{68, 76};
constexpr Span kCity{76, 102};
constexpr Span kState{102, 106};
constexpr Span kCountry{106, 110};
constexpr Span kFilePrefix{110, 117};
constexpr Span kArn{117, 131};  // "-" then the application reference number
constexpr Span kErpHoriz{131, 138};
constexpr Span kErpHorizUnit{138, 142};  // "kW"
constexpr Span kErpVert{142, 149};
constexpr Span kErpVertUnit{149, 153};  // "kW"
constexpr Span kHaatHoriz{153, 162};
constexpr Span kHaatVert{162, 171};
constexpr Span kFacilityId{171, 183};
constexpr Span kLatHemisphere{183, 186};
constexpr Span kLatDegrees{186, 190};
constexpr Span kLatMinutes{190, 194};
constexpr Span kLatSeconds{194, 201};
constexpr Span kLonHemisphere{201, 204};
constexpr Span kLonDegrees{204, 209};
constexpr Span kLonMinutes{209, 213};
constexpr Span kLonSeconds{213, 220};
constexpr Span kLicensee{220, 300};
constexpr Span kDistanceUnit{305, 312};  // "km"; distance and bearing to a search centre, unused
constexpr Span kRcamslHoriz{333, 340};
constexpr Span kRcamslHorizUnit{340, 342};  // "m"
constexpr Span kRcamslVert{342, 349};
constexpr Span kDaId{351, 362};
constexpr Span kRotation{362, 371};
constexpr Span kAsrn{371, 380};
constexpr Span kHeightAboveGround{380, 387};
constexpr Span kHeightUnit{387, 389};  // "m"
constexpr std::size_t kApplicationIdAt = 389;  // runs to the end of the line
constexpr std::size_t kMinLineLength = kApplicationIdAt + 1;

std::string_view Cut(std::string_view line, Span span) {
    if (span.begin >= line.size()) return {};
    return stationdb::TrimView(line.substr(span.begin, span.end - span.begin));
}

// Reads one line into an FM record; collects the first problem.
class LineParser {
public:
    explicit LineParser(std::string_view line) : m_line(line) {}

    const std::string& Problem() const { return m_problem; }

    bool CheckLayout() {
        if (m_line.size() < kMinLineLength) {
            Fail("the line has " + std::to_string(m_line.size()) + " characters; an FM Query record has at least " +
                 std::to_string(kMinLineLength));
            return false;
        }
        const struct {
            Span span;
            std::string_view text;
        } anchors[] = {{kMhz, "MHz"},          {kErpHorizUnit, "kW"}, {kErpVertUnit, "kW"},
                       {kDistanceUnit, "km"},  {kRcamslHorizUnit, "m"}, {kHeightUnit, "m"}};
        for (const auto& anchor : anchors) {
            if (Cut(m_line, anchor.span) != anchor.text) {
                Fail("no \"" + std::string(anchor.text) + "\" at column " + std::to_string(anchor.span.begin + 1) +
                     "; not an FM Query line");
                return false;
            }
        }
        return true;
    }

    std::optional<double> Number(Span span, const char* what) {
        const std::string_view text = Cut(m_line, span);
        if (text.empty() || text == "-") return std::nullopt;
        auto value = stationdb::ParseNumber(text);
        if (!value) Fail(std::string(what) + " '" + std::string(text) + "' is not a number");
        return value;
    }

    std::optional<int> Integer(Span span, const char* what) {
        const std::string_view text = Cut(m_line, span);
        if (text.empty() || text == "-") return std::nullopt;
        auto value = stationdb::ParseInteger(text);
        if (!value || *value < INT32_MIN || *value > INT32_MAX) {
            Fail(std::string(what) + " '" + std::string(text) + "' is not a whole number");
            return std::nullopt;
        }
        return static_cast<int>(*value);
    }

    // Degrees, minutes, seconds and hemisphere to stored units (west and
    // north positive).
    std::optional<int> Coordinate(Span hemisphere, Span deg, Span min, Span sec, char negative, char positive,
                                  const char* what) {
        const std::string_view h = Cut(m_line, hemisphere);
        const auto d = Number(deg, what), m = Number(min, what), s = Number(sec, what);
        if (h.size() != 1 || (h[0] != negative && h[0] != positive) || !d || !m || !s) {
            Fail(std::string(what) + " '" + std::string(Cut(m_line, {hemisphere.begin, sec.end})) +
                 "' is not degrees, minutes and seconds");
            return std::nullopt;
        }
        auto stored = stationdb::StoredFromDms(*d, *m, *s, h[0] == negative);
        if (!stored) Fail(std::string(what) + " is out of range");
        return stored;
    }

    std::string_view Text(Span span) const { return Cut(m_line, span); }
    std::string_view Tail(std::size_t from) const { return stationdb::TrimView(m_line.substr(from)); }

    void Fail(const std::string& problem) {
        if (m_problem.empty()) m_problem = problem;
    }

private:
    std::string_view m_line;
    std::string m_problem;
};

struct ParsedLine {
    stationdb::FmRecord record;
    std::string licensee;
    stationdb::StationCountry country = stationdb::StationCountry::US;
    bool fmChannel = true;
    std::string problem;
};

// fm_data column <- FM Query field:
//   application_id      <- application id (last field)
//   party_id            <- licensee, one party per distinct name (PartyBook)
//   lat, lon            <- latitude and longitude (N/S, E/W, degrees, minutes, seconds)
//   cutoff_date, cp_exp_date              no source: empty
//   app_arn             <- file number after the prefix ("BLED -19990511KA" -> 19990511KA)
//   app_service, asd_service <- service (FM, FX, FL, FB, FS, FA, FR)
//   facility_id         <- facility id; the query's placeholders -1, -2 and 0 stay empty
//   file_prefix         <- file number prefix (BLED, BPFT...)
//   comm_city, comm_state <- city, state
//   fac_callsign        <- call sign
//   asrn                <- antenna structure registration number
//   border_code         <- "A" for records of another country than US (MarkForeign)
//   border_dist, elev_amsl                no source: empty
//   fm_dom_status       <- status as written (LIC, CP, CP MOD, VAC, OPER, USE...)
//   hag_horiz_rc_mtr    <- height above ground, m
//   max_horiz_erp                         no source: empty
//   station_channel     <- channel
//   station_class       <- class
//   horiz_erp, vert_erp <- ERP horizontal and vertical, kW
//   haat_horiz_rc_mtr   <- HAAT horizontal, m (the vertical HAAT has no column)
//   rcamsl_horiz_mtr    <- RCAMSL horizontal, m (the vertical RCAMSL has no column)
//   ant_rotation        <- directional antenna rotation, degrees
//   docket_num, bt_ind, rule_73_215_req_ind no source: empty
//   da_ind              <- antenna type: DA "Y", ND "N"
//   antenna_id          <- directional antenna id
//   intl_class, intl_status <- class and status of foreign records (MarkForeign)
ParsedLine ParseLine(std::string_view line) {
    ParsedLine out;
    LineParser p(line);
    if (!p.CheckLayout()) {
        out.problem = p.Problem();
        return out;
    }
    stationdb::FmRecord& r = out.record;
    r.station_channel = p.Integer(kChannel, "channel");
    if (!p.Problem().empty() || !r.station_channel) {
        out.problem = p.Problem().empty() ? "no channel" : p.Problem();
        return out;
    }
    out.fmChannel = *r.station_channel >= 200 && *r.station_channel <= 300;
    p.Number(kFrequency, "frequency");
    r.fac_callsign = OptionalText(p.Text(kCallSign));
    r.asd_service = OptionalText(p.Text(kService));
    if (!r.asd_service) p.Fail("no service code");
    r.app_service = r.asd_service;
    const std::string_view antenna = p.Text(kAntennaType);
    if (antenna == "DA") r.da_ind = "Y";
    else if (antenna == "ND") r.da_ind = "N";
    else p.Fail("antenna type '" + std::string(antenna) + "' is neither DA nor ND");
    r.station_class = OptionalText(p.Text(kClass));
    r.fm_dom_status = OptionalText(p.Text(kStatus));
    r.comm_city = OptionalText(p.Text(kCity));
    r.comm_state = OptionalText(p.Text(kState));
    out.country = stationdb::CountryFromCode(p.Text(kCountry));
    r.file_prefix = OptionalText(p.Text(kFilePrefix));
    std::string_view arn = p.Text(kArn);
    if (!arn.empty() && arn.front() == '-') arn.remove_prefix(1);
    r.app_arn = OptionalText(arn);
    r.horiz_erp = p.Number(kErpHoriz, "horizontal ERP");
    r.vert_erp = p.Number(kErpVert, "vertical ERP");
    r.haat_horiz_rc_mtr = p.Number(kHaatHoriz, "horizontal HAAT");
    p.Number(kHaatVert, "vertical HAAT");
    if (auto facility = p.Integer(kFacilityId, "facility id"); facility && *facility > 0) r.facility_id = facility;
    const auto lat = p.Coordinate(kLatHemisphere, kLatDegrees, kLatMinutes, kLatSeconds, 'S', 'N', "latitude");
    const auto lon = p.Coordinate(kLonHemisphere, kLonDegrees, kLonMinutes, kLonSeconds, 'E', 'W', "longitude");
    r.lat = lat.value_or(0);
    r.lon = lon.value_or(0);
    out.licensee = OptionalText(p.Text(kLicensee)).value_or("");
    r.rcamsl_horiz_mtr = p.Number(kRcamslHoriz, "horizontal RCAMSL");
    p.Number(kRcamslVert, "vertical RCAMSL");
    r.antenna_id = p.Integer(kDaId, "directional antenna id");
    r.ant_rotation = p.Number(kRotation, "rotation");
    r.asrn = p.Integer(kAsrn, "antenna structure registration");
    r.hag_horiz_rc_mtr = p.Number(kHeightAboveGround, "height above ground");
    const auto id = stationdb::ParseInteger(p.Tail(kApplicationIdAt));
    if (!id) p.Fail("application id '" + std::string(p.Tail(kApplicationIdAt)) + "' is not a whole number");
    else r.application_id = *id > 0 && *id <= stationdb::kMaxImportedApplicationId ? static_cast<int>(*id) : -1;
    if (out.country != stationdb::StationCountry::US) MarkForeign(r);
    out.problem = p.Problem();
    return out;
}

void ImportLines(const std::filesystem::path& file, stationdb::MasterWriter& writer, ImportRun& run) {
    DelimitedReader reader(file, DelimitedFormat{'\0', false, false});
    run.AddInputSize(reader.Size());
    PartyBook parties;
    std::vector<std::string> fields;
    std::uint64_t records = 0;
    while (reader.Next(fields)) {
        run.Tick(reader);
        if (stationdb::TrimView(fields[0]).empty()) continue;
        ++records;
        ++run.Summary().read;
        ParsedLine parsed = ParseLine(fields[0]);
        if (!parsed.problem.empty()) {
            if (!reader.RecordTerminated())
                throw ImportFailure(reader.Name() + ":" + std::to_string(reader.RecordLine()) + ": " +
                                    parsed.problem + ", and the line has no line break: the file seems cut off");
            run.BadRecord(reader.Name(), reader.RecordLine(), parsed.problem);
            continue;
        }
        if (!parsed.fmChannel) {
            run.Skip("not an FM channel");
            continue;
        }
        parsed.record.party_id = parties.IdFor(writer, parsed.licensee);
        run.WriteFm(writer, parsed.record, parsed.country);
    }
    run.FileDone(reader, records);
}

}  // namespace

bool ImportFmQuery(const std::filesystem::path& file, const ImportTarget& out, const ImportOptions& options,
                   ImportSummary* summary) {
    ImportSummary local;
    ImportSummary& s = summary ? *summary : local;
    return RunImport(":ImportFmQuery:", out, options, "FM Query " + file.filename().string(), s,
                     [&](stationdb::MasterWriter& writer, ImportRun& run) { ImportLines(file, writer, run); });
}

}  // namespace qarvel::importers
