#pragma once
// The user's settings: every key of the program's settings section, with its
// default and the way its stored text converts, and the QSettings store that
// keeps them (organisation and application "Qarvel ", trailing blank kept,
// group "Standard", every value stored as text).

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "stationdb/display_fields.h"

class QSettings;

namespace qarvel::shell {

struct ProgramContext;

inline constexpr std::string_view kSettingsApplication = "Qarvel ";  // trailing blank kept
inline constexpr std::string_view kSettingsSection = "Standard";
inline constexpr std::size_t kMruCount = 5;

// The values of the settings section. Field names are the keys. Folders are
// kept as texts with '/' separators, as stored.
struct ProgramSettings {
    std::string gDataDIR;   // folder of master databases
    std::string gJobDIR;    // folder of job files
    std::string gToolDIR;   // resources directory (map files, help, local database)
    std::string gDataFile;  // master database loaded at start-up (name inside gDataDIR)
    std::string iniFile;    // initialisation file; read, never written back
    std::int16_t LastUpdate = 0;  // last online database update applied
    bool gMapOptLatLon = true;
    bool gMapOptState = true;
    bool gMapOptCounty = true;
    bool gMapOptCities = true;
    std::int16_t gMapCityCount = 20;
    bool gMapOptMarkers = true;
    bool gMapOptCrosshair = true;
    bool gMapOptScale = true;
    bool gMapOptReduceRadii = false;
    std::int32_t gMapPrintScale = 1000000;  // printed map scale denominator (1:n)
    bool gDBoptLoadOnStartup = false;
    bool gDBoptMRUDef = true;
    bool gDBoptUseLocal = true;
    std::int32_t gGPStgtColor = 16777215;  // GPS target colour, 0xBBGGRR (white)
    std::int16_t gInetAccess = 0;          // 0: no Internet access
    std::string gProxyServer;
    // Recent job files, newest first ("MRUFile1".."MRUFile5"), and the master
    // database that belonged to each ("MRUConnect1".."MRUConnect5").
    std::array<std::string, kMruCount> MRUFile;
    std::array<std::string, kMruCount> MRUConnect;

    bool operator==(const ProgramSettings&) const = default;
};

// Defaults of the three folders: the program's data folder followed by
// "/Database", "/Jobs" and "/Resources".
ProgramSettings DefaultSettings(const std::filesystem::path& dataFolder);

// An option flag (gMapOpt..., gDBopt...) is true only for the stored text
// "1"; anything else, "True" and "-1" included, is false.
bool ParseOptionFlag(std::string_view text);
inline std::string OptionFlagText(bool value) { return value ? "1" : "0"; }

// One entry of the recent-files menu, index 1..5.
struct RecentFileItem {
    bool visible = false;    // an empty entry hides its menu item
    std::string caption;     // "&" index " " file name: the digit is the access key
    std::string file;
    std::string connection;  // the matching "MRUConnect" entry
};
std::array<RecentFileItem, kMruCount> RecentFilesMenu(const ProgramSettings& settings);

// Puts file (with its master database) at the top of the recent lists,
// dropping an older entry of the same file and the oldest beyond five.
void PushRecentFile(ProgramSettings& settings, const std::string& file,
                    const std::string& connection);

// ---- the store -----------------------------------------------------------

// The user's settings store in the platform's native format.
std::unique_ptr<QSettings> OpenUserSettings();
// A settings store in a given INI file (tests, portable installs).
std::unique_ptr<QSettings> OpenSettingsFile(const std::filesystem::path& file);

// Readers and writers of the "Standard" section of a store, as the
// display-field catalogues take them.
stationdb::SettingsReader SectionReader(QSettings& store);
stationdb::SettingsWriter SectionWriter(QSettings& store);

// Reads every key in table order into context.settings (absent or unreadable
// keys take their defaults, the folders' defaults from context.dataFolder)
// and fills context.recentFiles. Display-field keys are read when the
// catalogues are built. False when the trap caught a failure.
bool LoadSettings(QSettings& store, ProgramContext& context);
// Writes every key except iniFile, the display-field keys of each built
// catalogue, and the recent lists ("" for unused entries); syncs the store.
bool SaveSettings(QSettings& store, const ProgramContext& context);

// Builds both display-field catalogues from the store into the context.
bool BuildCatalogues(QSettings& store, ProgramContext& context);

// Joins a folder text and a name with one '/' ("a/b" + "c" -> "a/b/c",
// "a/b/" + "c" -> "a/b/c"; an empty folder gives the name alone).
std::string JoinPath(std::string_view folder, std::string_view name);

}  // namespace qarvel::shell
