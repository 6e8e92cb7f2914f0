// libFuzzer target for the Jet dialect translator, which rewrites query
// texts (typed by users in the search) before SQLite sees them: any text
// translates without a crash, and the translation then prepares or fails
// cleanly on a real database.

#include "stationdb/database.h"
#include "stationdb/jet_dialect.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static qarvel::stationdb::Database db(":memory:", qarvel::stationdb::OpenMode::Create);
    static const bool made = [] {
        db.Exec("CREATE TABLE fm_data (application_id int, fac_callsign char(13), station_channel int);"
                "INSERT INTO fm_data VALUES (1, 'KABC', 250)");
        return true;
    }();
    (void)made;
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        (void)qarvel::stationdb::TranslateJetSql(text);
        auto statement = db.Prepare(text);
        for (int rows = 0; rows < 100 && statement.Step(); ++rows) {
        }
    } catch (const std::exception&) {
    }
    return 0;
}
