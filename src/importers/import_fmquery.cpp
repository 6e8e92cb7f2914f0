#include "importers/import_fmquery.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

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

// The fields of one FM Query record, whichever form it came in.
enum Field {
    kFCallSign, kFFrequency, kFService, kFChannel, kFAntennaType, kFClass, kFStatus, kFCity, kFState, kFCountry,
    kFFilePrefix, kFArn, kFErpHoriz, kFErpVert, kFHaatHoriz, kFHaatVert, kFFacilityId, kFLatHemisphere,
    kFLatDegrees, kFLatMinutes, kFLatSeconds, kFLonHemisphere, kFLonDegrees, kFLonMinutes, kFLonSeconds,
    kFLicensee, kFRcamslHoriz, kFRcamslVert, kFDaId, kFRotation, kFAsrn, kFHeightAboveGround, kFApplicationId,
    kFieldCount
};
using Fields = std::array<std::string, kFieldCount>;

// The fixed-width form: fields at their columns, checked by the unit texts
// that stand at fixed places.
std::optional<std::string> FixedWidthFields(std::string_view line, Fields& f) {
    if (line.size() < kMinLineLength)
        return "the line has " + std::to_string(line.size()) + " characters; an FM Query record has at least " +
               std::to_string(kMinLineLength);
    const struct {
        Span span;
        std::string_view text;
    } anchors[] = {{kMhz, "MHz"},         {kErpHorizUnit, "kW"},   {kErpVertUnit, "kW"},
                   {kDistanceUnit, "km"}, {kRcamslHorizUnit, "m"}, {kHeightUnit, "m"}};
    for (const auto& anchor : anchors) {
        if (Cut(line, anchor.span) != anchor.text)
            return "no \"" + std::string(anchor.text) + "\" at column " + std::to_string(anchor.span.begin + 1) +
                   "; not an FM Query line";
    }
    const Span spans[] = {kCallSign,      kFrequency,  kService,   kChannel,    kAntennaType, kClass,
                          kStatus,        kCity,       kState,     kCountry,    kFilePrefix,  kArn,
                          kErpHoriz,      kErpVert,    kHaatHoriz, kHaatVert,   kFacilityId,  kLatHemisphere,
                          kLatDegrees,    kLatMinutes, kLatSeconds, kLonHemisphere, kLonDegrees, kLonMinutes,
                          kLonSeconds,    kLicensee,   kRcamslHoriz, kRcamslVert, kDaId,      kRotation,
                          kAsrn,          kHeightAboveGround};
    for (std::size_t i = 0; i < std::size(spans); ++i) f[i] = std::string(Cut(line, spans[i]));
    std::string_view arn = f[kFArn];
    if (!arn.empty() && arn.front() == '-') arn.remove_prefix(1);
    f[kFArn] = std::string(arn);
    f[kFApplicationId] = std::string(stationdb::TrimView(line.substr(kApplicationIdAt)));
    return std::nullopt;
}

// The pipe-delimited form: "|value |value |...|", values padded with
// blanks, numbers with their units ("8.     kW", "152.4  m"), "-" for empty.
// 36 fields in early downloads (no application id), 37, or 38 with the
// newer licensing system's record id (32 hexadecimal digits) at the end.
constexpr std::size_t kPipeFields = 37;

std::string WithoutUnit(std::string_view value) {
    for (std::string_view unit : {"MHz", "kW", "km", "mi", "deg", "m"}) {
        if (value.size() > unit.size() && value.substr(value.size() - unit.size()) == unit) {
            value = stationdb::TrimView(value.substr(0, value.size() - unit.size()));
            break;
        }
    }
    return value == "-" || value == "-." ? std::string() : std::string(value);
}

bool IsRecordId(std::string_view text) {
    return text.size() == 32 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

std::vector<std::string_view> SplitPipes(std::string_view line) {
    line = stationdb::TrimView(line);
    if (line.size() >= 2 && line.front() == '|' && line.back() == '|') line = line.substr(1, line.size() - 2);
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    for (std::size_t i = 0; i <= line.size(); ++i) {
        if (i == line.size() || line[i] == '|') {
            parts.push_back(stationdb::TrimView(line.substr(start, i - start)));
            start = i + 1;
        }
    }
    return parts;
}

std::optional<std::string> PipeFields(std::string_view line, Fields& f) {
    std::vector<std::string_view> v = SplitPipes(line);
    if (v.size() == kPipeFields + 1) {
        if (!IsRecordId(v.back())) return "the last field '" + std::string(v.back()) + "' is not a 32-digit record id";
        v.pop_back();
    }
    if (v.size() != kPipeFields && v.size() != kPipeFields - 1)
        return "the record has " + std::to_string(v.size()) + " fields; an FM Query record has 36 to 38";
    // Field positions of the pipe form; the distance, miles and azimuth to a
    // search centre (27 to 29) and the hours and international class (5, 7)
    // are not kept.
    const std::size_t at[] = {0,  1,  2,  3,  4,  6,  8,  9,  10, 11, 12, 12, 13, 14, 15, 16, 17,
                              18, 19, 20, 21, 22, 23, 24, 25, 26, 30, 31, 32, 33, 34, 35, 36};
    for (std::size_t i = 0; i < kFieldCount; ++i) f[i] = at[i] < v.size() ? WithoutUnit(v[at[i]]) : std::string();
    // The file number with or without blanks: "BLED   -20051109ACD", "BLED-20151123CUH".
    const std::string number = f[kFFilePrefix];
    const auto dash = number.find('-');
    f[kFFilePrefix] = std::string(stationdb::TrimView(std::string_view(number).substr(0, dash)));
    f[kFArn] = dash == std::string::npos ? std::string() : std::string(stationdb::TrimView(number.substr(dash + 1)));
    if (v.size() == kPipeFields - 1) f[kFApplicationId] = "-";  // downloads before the application id
    return std::nullopt;
}

// Reads the fields of one record into an FM record; collects the first problem.
class FieldParser {
public:
    explicit FieldParser(const Fields& f) : m_f(f) {}

    const std::string& Problem() const { return m_problem; }
    std::string_view Text(Field field) const {
        const std::string_view t = m_f[field];
        return t == "-" ? std::string_view() : t;
    }

    std::optional<double> Number(Field field, const char* what) {
        const std::string_view text = Text(field);
        if (text.empty()) return std::nullopt;
        auto value = stationdb::ParseNumber(text);
        if (!value) Fail(std::string(what) + " '" + std::string(text) + "' is not a number");
        return value;
    }

    std::optional<int> Integer(Field field, const char* what) {
        const std::string_view text = Text(field);
        if (text.empty()) return std::nullopt;
        auto value = stationdb::ParseInteger(text);
        if (!value || *value < INT32_MIN || *value > INT32_MAX) {
            Fail(std::string(what) + " '" + std::string(text) + "' is not a whole number");
            return std::nullopt;
        }
        return static_cast<int>(*value);
    }

    // Degrees, minutes, seconds and hemisphere to stored units (west and
    // north positive).
    std::optional<int> Coordinate(Field hemisphere, char negative, char positive, const char* what) {
        const std::string_view h = Text(hemisphere);
        const auto d = Number(Field(hemisphere + 1), what), m = Number(Field(hemisphere + 2), what),
                   s = Number(Field(hemisphere + 3), what);
        if (h.size() != 1 || (h[0] != negative && h[0] != positive) || !d || !m || !s) {
            Fail(std::string(what) + " '" + std::string(h) + " " + std::string(Text(Field(hemisphere + 1))) + " " +
                 std::string(Text(Field(hemisphere + 2))) + " " + std::string(Text(Field(hemisphere + 3))) +
                 "' is not degrees, minutes and seconds");
            return std::nullopt;
        }
        auto stored = stationdb::StoredFromDms(*d, *m, *s, h[0] == negative);
        if (!stored) Fail(std::string(what) + " is out of range");
        return stored;
    }

    void Fail(const std::string& problem) {
        if (m_problem.empty()) m_problem = problem;
    }

private:
    const Fields& m_f;
    std::string m_problem;
};

struct ParsedLine {
    stationdb::FmRecord record;
    std::string licensee;
    stationdb::StationCountry country = stationdb::StationCountry::US;
    bool fmChannel = true;
    bool unnumbered = false;  // the record carries no application id
    std::string problem;
};

// Records of downloads from before the application id are numbered in a
// block of their own, in file order, below the what-if identifiers.
constexpr int kFirstUnnumberedId = 90000001;

// fm_data column <- FM Query field:
//   application_id      <- application id (last field; "-" in early pipe downloads: none)
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
ParsedLine ParseFields(const Fields& fields) {
    ParsedLine out;
    FieldParser p(fields);
    stationdb::FmRecord& r = out.record;
    r.station_channel = p.Integer(kFChannel, "channel");
    if (!p.Problem().empty() || !r.station_channel) {
        out.problem = p.Problem().empty() ? "no channel" : p.Problem();
        return out;
    }
    out.fmChannel = *r.station_channel >= 200 && *r.station_channel <= 300;
    p.Number(kFFrequency, "frequency");
    r.fac_callsign = OptionalText(p.Text(kFCallSign));
    r.asd_service = OptionalText(p.Text(kFService));
    if (!r.asd_service) p.Fail("no service code");
    r.app_service = r.asd_service;
    const std::string_view antenna = p.Text(kFAntennaType);
    if (antenna == "DA") r.da_ind = "Y";
    else if (antenna == "ND") r.da_ind = "N";
    else p.Fail("antenna type '" + std::string(antenna) + "' is neither DA nor ND");
    r.station_class = OptionalText(p.Text(kFClass));
    r.fm_dom_status = OptionalText(p.Text(kFStatus));
    r.comm_city = OptionalText(p.Text(kFCity));
    r.comm_state = OptionalText(p.Text(kFState));
    out.country = stationdb::CountryFromCode(p.Text(kFCountry));
    r.file_prefix = OptionalText(p.Text(kFFilePrefix));
    r.app_arn = OptionalText(p.Text(kFArn));
    r.horiz_erp = p.Number(kFErpHoriz, "horizontal ERP");
    r.vert_erp = p.Number(kFErpVert, "vertical ERP");
    r.haat_horiz_rc_mtr = p.Number(kFHaatHoriz, "horizontal HAAT");
    p.Number(kFHaatVert, "vertical HAAT");
    if (auto facility = p.Integer(kFFacilityId, "facility id"); facility && *facility > 0) r.facility_id = facility;
    const auto lat = p.Coordinate(kFLatHemisphere, 'S', 'N', "latitude");
    const auto lon = p.Coordinate(kFLonHemisphere, 'E', 'W', "longitude");
    r.lat = lat.value_or(0);
    r.lon = lon.value_or(0);
    out.licensee = OptionalText(p.Text(kFLicensee)).value_or("");
    r.rcamsl_horiz_mtr = p.Number(kFRcamslHoriz, "horizontal RCAMSL");
    p.Number(kFRcamslVert, "vertical RCAMSL");
    r.antenna_id = p.Integer(kFDaId, "directional antenna id");
    r.ant_rotation = p.Number(kFRotation, "rotation");
    r.asrn = p.Integer(kFAsrn, "antenna structure registration");
    r.hag_horiz_rc_mtr = p.Number(kFHeightAboveGround, "height above ground");
    const std::string_view idText = fields[kFApplicationId];
    if (idText == "-") {
        out.unnumbered = true;
    } else if (const auto id = stationdb::ParseInteger(idText); !id) {
        p.Fail("application id '" + std::string(idText) + "' is not a whole number");
    } else {
        r.application_id = *id > 0 && *id <= stationdb::kMaxImportedApplicationId ? static_cast<int>(*id) : -1;
    }
    if (out.country != stationdb::StationCountry::US) MarkForeign(r);
    out.problem = p.Problem();
    return out;
}

// A record line in either form, told apart by its first character.
ParsedLine ParseLine(std::string_view line) {
    Fields fields;
    const bool pipe = stationdb::TrimView(line).starts_with('|');
    if (auto problem = pipe ? PipeFields(line, fields) : FixedWidthFields(line, fields)) {
        ParsedLine failed;
        failed.problem = *problem;
        return failed;
    }
    return ParseFields(fields);
}

// The heading line of a pipe download names the columns.
bool IsHeading(std::string_view line) { return stationdb::TrimView(line).starts_with("|Callsign|"); }

void ImportLines(const std::filesystem::path& file, stationdb::MasterWriter& writer, ImportRun& run) {
    DelimitedReader reader(file, DelimitedFormat{'\0', false, false});
    run.AddInputSize(reader.Size());
    PartyBook parties;
    int nextUnnumbered = kFirstUnnumberedId;
    std::vector<std::string> fields;
    std::uint64_t records = 0;
    while (reader.Next(fields)) {
        run.Tick(reader);
        if (stationdb::TrimView(fields[0]).empty() || IsHeading(fields[0])) continue;
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
        if (parsed.unnumbered) parsed.record.application_id = nextUnnumbered++;
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
