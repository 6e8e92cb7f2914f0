#include "shell/program_context.h"

namespace qarvel::shell {

const std::array<std::string, kToolbarKeyCount>& ToolbarImageKeys() {
    static const std::array<std::string, kToolbarKeyCount> keys{
        "Fill",     "Colors",    "Calls",     "AM",      "MapGrid", "Borders",  "NewJob",
        "OpenJob",  "CloseJob",  "SelFields", "SearchDB", "SrchBasic", "SaveJob", "SrchSQL",
        "SortAsc",  "SortDesc",  "Print",     "NewDB",   "Calc",    "AutoScan", "GPS"};
    return keys;
}

VersionRecord ProgramVersion() {
    return VersionRecord{QARVEL_VERSION_MAJOR, QARVEL_VERSION_MINOR, QARVEL_VERSION_REVISION};
}

std::string VersionText(const VersionRecord& version) {
    return std::to_string(version.major) + "." + std::to_string(version.minor) + "." +
           std::to_string(version.revision);
}

}  // namespace qarvel::shell
