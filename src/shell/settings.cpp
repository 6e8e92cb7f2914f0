#include "shell/settings.h"

#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <variant>
#include <vector>

#include "core/error_trap.h"
#include "shell/program_context.h"

namespace qarvel::shell {

namespace {

constexpr std::string_view kModule = "modFMdb";

// Where a key's default comes from: a fixed text, or a folder followed by a
// name (the program's data folder for the three folders, gToolDIR for the
// initialisation file).
enum class DefaultFrom { Text, DataFolder, ToolDir };

using Member = std::variant<std::string ProgramSettings::*, bool ProgramSettings::*,
                            std::int16_t ProgramSettings::*, std::int32_t ProgramSettings::*>;

struct SettingKey {
    const char* key;
    Member member;
    DefaultFrom from;
    const char* defaultText;  // the text, or the name joined to the folder
    bool writeBack = true;
};

// The settings section, in the order it is read and written. Option flags
// are the bool members; their defaults are the stored texts "1"/"0".
const std::vector<SettingKey>& KeyTable() {
    using S = ProgramSettings;
    static const std::vector<SettingKey> table{
        {"gDataDIR", &S::gDataDIR, DefaultFrom::DataFolder, "Database"},
        {"gJobDIR", &S::gJobDIR, DefaultFrom::DataFolder, "Jobs"},
        {"gToolDIR", &S::gToolDIR, DefaultFrom::DataFolder, "Resources"},
        {"gDataFile", &S::gDataFile, DefaultFrom::Text, ""},
        {"iniFile", &S::iniFile, DefaultFrom::ToolDir, "qarvel.ini", false},
        {"LastUpdate", &S::LastUpdate, DefaultFrom::Text, "0"},
        {"gMapOptLatLon", &S::gMapOptLatLon, DefaultFrom::Text, "1"},
        {"gMapOptState", &S::gMapOptState, DefaultFrom::Text, "1"},
        {"gMapOptCounty", &S::gMapOptCounty, DefaultFrom::Text, "1"},
        {"gMapOptCities", &S::gMapOptCities, DefaultFrom::Text, "1"},
        {"gMapCityCount", &S::gMapCityCount, DefaultFrom::Text, "20"},
        {"gMapOptMarkers", &S::gMapOptMarkers, DefaultFrom::Text, "1"},
        {"gMapOptCrosshair", &S::gMapOptCrosshair, DefaultFrom::Text, "1"},
        {"gMapOptScale", &S::gMapOptScale, DefaultFrom::Text, "1"},
        {"gMapOptReduceRadii", &S::gMapOptReduceRadii, DefaultFrom::Text, "0"},
        {"gMapPrintScale", &S::gMapPrintScale, DefaultFrom::Text, "1000000"},
        {"gDBoptLoadOnStartup", &S::gDBoptLoadOnStartup, DefaultFrom::Text, "0"},
        {"gDBoptMRUDef", &S::gDBoptMRUDef, DefaultFrom::Text, "1"},
        {"gDBoptUseLocal", &S::gDBoptUseLocal, DefaultFrom::Text, "1"},
        {"gGPStgtColor", &S::gGPStgtColor, DefaultFrom::Text, "16777215"},
        {"gInetAccess", &S::gInetAccess, DefaultFrom::Text, "0"},
        {"gProxyServer", &S::gProxyServer, DefaultFrom::Text, ""},
    };
    return table;
}

std::string DefaultText(const SettingKey& entry, const std::filesystem::path& dataFolder,
                        const ProgramSettings& sofar) {
    switch (entry.from) {
        case DefaultFrom::DataFolder:
            return JoinPath(dataFolder.generic_string(), entry.defaultText);
        case DefaultFrom::ToolDir:
            return JoinPath(sofar.gToolDIR, entry.defaultText);
        case DefaultFrom::Text:
            break;
    }
    return entry.defaultText;
}

// Converts one stored text (or, when it is absent or unreadable, the
// default text) into its member.
void Assign(ProgramSettings& settings, const Member& member, const std::optional<std::string>& stored,
            const std::string& fallback) {
    std::visit(
        [&](auto field) {
            using T = std::remove_cvref_t<decltype(settings.*field)>;
            if constexpr (std::is_same_v<T, std::string>) {
                settings.*field = stored.value_or(fallback);
            } else if constexpr (std::is_same_v<T, bool>) {
                settings.*field = ParseOptionFlag(stored.value_or(fallback));
            } else {
                auto parse = [](const std::string& text) {
                    return stationdb::ParseIntegerText(text, std::numeric_limits<T>::min(),
                                                       std::numeric_limits<T>::max());
                };
                auto value = stored ? parse(*stored) : std::nullopt;
                if (!value) value = parse(fallback);
                settings.*field = static_cast<T>(value.value_or(0));
            }
        },
        member);
}

std::string StoredText(const ProgramSettings& settings, const Member& member) {
    return std::visit(
        [&](auto field) -> std::string {
            using T = std::remove_cvref_t<decltype(settings.*field)>;
            if constexpr (std::is_same_v<T, std::string>) {
                return settings.*field;
            } else if constexpr (std::is_same_v<T, bool>) {
                return OptionFlagText(settings.*field);
            } else {
                return std::to_string(settings.*field);
            }
        },
        member);
}

QString SectionKey(const std::string& key) {
    return QString::fromUtf8(kSettingsSection.data(), static_cast<qsizetype>(kSettingsSection.size())) +
           QLatin1Char('/') + QString::fromStdString(key);
}

std::optional<std::string> ReadKey(QSettings& store, const std::string& key) {
    const QString full = SectionKey(key);
    if (!store.contains(full)) return std::nullopt;
    const QVariant value = store.value(full);
    // An INI file edited by hand turns an unquoted "a,b" into a list.
    if (value.typeId() == QMetaType::QStringList) {
        return value.toStringList().join(QLatin1Char(',')).toStdString();
    }
    if (!value.canConvert<QString>()) return std::string();
    return value.toString().toStdString();
}

void WriteKey(QSettings& store, const std::string& key, const std::string& text) {
    store.setValue(SectionKey(key), QString::fromStdString(text));
}

void LoadRecentFiles(QSettings& store, ProgramContext& context) {
    ProgramSettings& settings = context.settings;
    for (std::size_t i = 0; i < kMruCount; ++i) {
        settings.MRUFile[i] =
            ReadKey(store, stationdb::NumberedKey("MRUFile", i + 1)).value_or(std::string());
        settings.MRUConnect[i] =
            settings.MRUFile[i].empty()
                ? std::string()
                : ReadKey(store, stationdb::NumberedKey("MRUConnect", i + 1)).value_or(std::string());
    }
    context.recentFiles = RecentFilesMenu(settings);
}

}  // namespace

ProgramSettings DefaultSettings(const std::filesystem::path& dataFolder) {
    ProgramSettings settings;
    for (const SettingKey& entry : KeyTable()) {
        Assign(settings, entry.member, std::nullopt, DefaultText(entry, dataFolder, settings));
    }
    return settings;
}

bool ParseOptionFlag(std::string_view text) { return text == "1"; }

std::array<RecentFileItem, kMruCount> RecentFilesMenu(const ProgramSettings& settings) {
    std::array<RecentFileItem, kMruCount> menu;
    for (std::size_t i = 0; i < kMruCount; ++i) {
        if (settings.MRUFile[i].empty()) continue;
        menu[i].visible = true;
        menu[i].caption = "&" + std::to_string(i + 1) + " " + settings.MRUFile[i];
        menu[i].file = settings.MRUFile[i];
        menu[i].connection = settings.MRUConnect[i];
    }
    return menu;
}

void PushRecentFile(ProgramSettings& settings, const std::string& file,
                    const std::string& connection) {
    std::vector<std::pair<std::string, std::string>> entries{{file, connection}};
    for (std::size_t i = 0; i < kMruCount; ++i) {
        if (!settings.MRUFile[i].empty() && settings.MRUFile[i] != file) {
            entries.emplace_back(settings.MRUFile[i], settings.MRUConnect[i]);
        }
    }
    for (std::size_t i = 0; i < kMruCount; ++i) {
        settings.MRUFile[i] = i < entries.size() ? entries[i].first : std::string();
        settings.MRUConnect[i] = i < entries.size() ? entries[i].second : std::string();
    }
}

std::unique_ptr<QSettings> OpenUserSettings() {
    const QString name = QString::fromUtf8(kSettingsApplication.data(),
                                           static_cast<qsizetype>(kSettingsApplication.size()));
    return std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope, name, name);
}

std::unique_ptr<QSettings> OpenSettingsFile(const std::filesystem::path& file) {
    return std::make_unique<QSettings>(QString::fromStdString(file.string()),
                                       QSettings::IniFormat);
}

stationdb::SettingsReader SectionReader(QSettings& store) {
    return [&store](const std::string& key) { return ReadKey(store, key); };
}

stationdb::SettingsWriter SectionWriter(QSettings& store) {
    return [&store](const std::string& key, const std::string& value) {
        WriteKey(store, key, value);
    };
}

bool LoadSettings(QSettings& store, ProgramContext& context) {
    return core::TrappedVoid(kModule, ":LoadSettings:", [&] {
        ProgramSettings settings;
        for (const SettingKey& entry : KeyTable()) {
            Assign(settings, entry.member, ReadKey(store, entry.key),
                   DefaultText(entry, context.dataFolder, settings));
        }
        context.settings = std::move(settings);
        LoadRecentFiles(store, context);
    });
}

bool SaveSettings(QSettings& store, const ProgramContext& context) {
    return core::TrappedVoid(kModule, ":SaveSettings:", [&] {
        const ProgramSettings& settings = context.settings;
        for (const SettingKey& entry : KeyTable()) {
            if (entry.writeBack) WriteKey(store, entry.key, StoredText(settings, entry.member));
        }
        const auto writer = SectionWriter(store);
        stationdb::SaveCatalogue(context.stationGrid, writer);
        stationdb::SaveCatalogue(context.jobGrid, writer);
        for (std::size_t i = 0; i < kMruCount; ++i) {
            WriteKey(store, stationdb::NumberedKey("MRUFile", i + 1), settings.MRUFile[i]);
            WriteKey(store, stationdb::NumberedKey("MRUConnect", i + 1), settings.MRUConnect[i]);
        }
        store.sync();
        if (store.status() != QSettings::NoError) {
            throw core::TrapError("the settings store could not be written");
        }
    });
}

bool BuildCatalogues(QSettings& store, ProgramContext& context) {
    return core::TrappedVoid(kModule, ":BuildCatalogues:", [&] {
        const auto reader = SectionReader(store);
        context.stationGrid = stationdb::BuildStationGridCatalogue(reader);
        context.jobGrid = stationdb::BuildJobGridCatalogue(reader);
    });
}

std::string JoinPath(std::string_view folder, std::string_view name) {
    std::string joined(folder);
    if (!joined.empty() && joined.back() != '/' && joined.back() != '\\') joined += '/';
    joined += name;
    return joined;
}

}  // namespace qarvel::shell
