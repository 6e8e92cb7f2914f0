#include "stationdb/layout_check.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>
#include <vector>

#include "spacing/class_codes.h"
#include "stationdb/schema.h"

namespace qarvel::stationdb {

namespace {

// SQLite's type affinity of a declared type: the kind of value a column keeps.
std::string Affinity(std::string declared) {
    std::transform(declared.begin(), declared.end(), declared.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    if (declared.find("INT") != std::string::npos) return "int";
    if (declared.find("CHAR") != std::string::npos || declared.find("CLOB") != std::string::npos ||
        declared.find("TEXT") != std::string::npos)
        return "text";
    if (declared.find("REAL") != std::string::npos || declared.find("FLOA") != std::string::npos ||
        declared.find("DOUB") != std::string::npos)
        return "float";
    return "numeric";
}

using Layout = std::map<std::string, std::vector<std::pair<std::string, std::string>>>;

Layout ReadLayout(const Database& db) {
    Layout layout;
    for (const std::string& table : db.TableNames()) {
        Statement info = db.Prepare("SELECT name, type FROM pragma_table_info(?1)");
        info.Bind(1, table);
        std::string lower = table;
        std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return char(std::tolower(c)); });
        while (info.Step()) layout[lower].emplace_back(info.GetText(0), Affinity(info.GetText(1)));
    }
    return layout;
}

// The layout every file of this kind is made with, read from a fresh one.
const Layout& Expected(DatabaseKind kind) {
    static const Layout job = [] {
        Database db(":memory:", OpenMode::Create);
        CreateJobSchema(db);
        return ReadLayout(db);
    }();
    static const Layout master = [] {
        Database db(":memory:", OpenMode::Create);
        CreateMasterSchema(db, {});
        return ReadLayout(db);
    }();
    return kind == DatabaseKind::Job ? job : master;
}

bool SameName(const std::string& a, const std::string& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y)); });
}

// Places and markers are optional (an old master has no places); the
// station tables, owners and header are not.
bool Required(const std::string& table) { return table != "places" && table != "markers"; }

// Columns that opening an older job adds when missing (after this check).
bool AddedOnOpen(DatabaseKind kind, const std::string& table, const std::string& column) {
    return kind == DatabaseKind::Job && table == "fm_data" &&
           (column == "vert_erp" || column == "asd_service" || column == "facility_id");
}

}  // namespace

std::optional<std::string> LayoutProblem(const Database& db, DatabaseKind kind) {
    const Layout actual = ReadLayout(db);
    for (const auto& [table, columns] : Expected(kind)) {
        const auto found = actual.find(table);
        if (found == actual.end()) {
            if (Required(table)) return "table " + table + " is missing";
            continue;
        }
        for (const auto& expected : columns) {
            const std::string& name = expected.first;
            const std::string& affinity = expected.second;
            const auto column = std::find_if(found->second.begin(), found->second.end(),
                                             [&](const auto& c) { return SameName(c.first, name); });
            if (column == found->second.end()) {
                if (AddedOnOpen(kind, table, name)) continue;
                return table + ": column " + name + " is missing";
            }
            // "numeric" (a timestamp) holds text or numbers alike.
            if (column->second != affinity && affinity != "numeric" && column->second != "numeric")
                return table + ": column " + name + " is declared " + column->second + ", expected " + affinity;
        }
    }
    return std::nullopt;
}

std::optional<std::string> PositionProblem(const Database& db) {
    for (const char* table : {"fm_data", "am_data", "tv6_data"}) {
        Statement bad = db.Prepare(std::string("SELECT application_id, lat, lon FROM ") + table +
                                   " WHERE (lat IS NOT NULL AND (typeof(lat) <> 'integer' OR abs(lat) > 1296000))"
                                   " OR (lon IS NOT NULL AND (typeof(lon) <> 'integer' OR abs(lon) > 2592000)) LIMIT 1");
        if (bad.Step()) {
            return std::string(table) + ": application_id " + bad.GetText(0) + ": position " + bad.GetText(1) + ", " +
                   bad.GetText(2) + " is not a place on earth (1/14400 degree, within 90 and 180 degrees)";
        }
    }
    return std::nullopt;
}

std::optional<std::string> HeaderProblem(const JobHeader& h) {
    if (h.TChan < 200 || h.TChan > 300) return "information: TChan " + std::to_string(h.TChan) + " is not a channel 200 to 300";
    if (spacing::ClassIndex(h.TClass) < 0) return "information: TClass '" + h.TClass + "' is not a station class";
    if (!std::isfinite(h.TLat) || std::fabs(h.TLat) > 90) return "information: TLat is not a latitude";
    if (!std::isfinite(h.TLon) || std::fabs(h.TLon) > 180) return "information: TLon is not a longitude";
    if (!std::isfinite(h.OffsetN) || !std::isfinite(h.OffsetW)) return "information: the offsets are not numbers";
    if (h.ScanRange < 1 || h.ScanRange > 32767) return "information: ScanRange is not 1 to 32767 km";
    return std::nullopt;
}

}  // namespace qarvel::stationdb
