#include "app_fixture.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <bit>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <vector>

#include "geodesy/geodesy.h"
#include "shell/scratch.h"
#include "shell/settings.h"
#include "jobs/job_file.h"
#include "stationdb/master_package.h"
#include "stationdb/master_writer.h"

namespace qarvel::app::testing {

namespace {

int Stored(double degrees) { return static_cast<int>(std::lround(degrees * 14400.0)); }

// Stored position distanceKm from the target on a bearing (longitude WEST).
std::pair<int, int> At(double distanceKm, double bearing) {
    double lat = 0, lonEast = 0;
    geodesy::GetPosn(kTargetLat, -kTargetLon, lat, lonEast, distanceKm, bearing);
    return {Stored(lat), Stored(-lonEast)};
}

struct StationSpec {
    const char* call;
    int channel;
    const char* cls;
    double km;
    double bearing;
    const char* status;
    const char* service;
};

// Every relation of channel 250, near and far, in several statuses.
constexpr StationSpec kStations[] = {
    {"KCOA", 250, "A", 60, 0, "LIC", "FM"},     {"KFAB", 251, "C1", 150, 90, "LIC", "FM"},
    {"KSEC", 252, "B", 90, 180, "CP", "FM"},    {"KTHD", 253, "A", 40, 270, "APP", "FM"},
    {"KIFA", 303, "C3", 20, 45, "LIC", "FM"},   {"KFAR", 250, "C", 250, 225, "LIC", "FM"},
    {"KNWA", 249, "C3", 120, 315, "LIC", "FM"}, {"KSEB", 248, "A", 70, 135, "LIC", "FM"},
    {"KNRC", 247, "C2", 200, 10, "CP", "FM"},   {"KWST", 250, "A", 290, 270, "APP", "FM"},
    {"K250XX", 250, "D", 30, 200, "LIC", "FX"}, {"KBST", 250, "A", 35, 300, "LIC", "FB"},
};

std::string FloatBytes(const std::vector<float>& values) {
    std::string out;
    for (const float v : values) {
        const auto bits = std::bit_cast<std::uint32_t>(v);
        for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<char>((bits >> shift) & 0xFFu));
    }
    return out;
}

}  // namespace

bool WaitUntil(const std::function<bool()>& done, int timeoutMs) {
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > timeoutMs) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(2);
    }
    return true;
}

AppWorld::AppWorld() {
    m_root = fs::path(m_dir.path().toStdString());
    fs::create_directories(Data());
    fs::create_directories(Jobs());
    fs::create_directories(Temp());
    WriteMaster();
    WriteBoundaryFiles();
    m_settings = shell::OpenSettingsFile(m_root / "settings.ini");
    for (const auto& [key, value] : {std::pair{"gDataDIR", Data()}, std::pair{"gToolDIR", Data()},
                                     std::pair{"gJobDIR", Jobs()}}) {
        m_settings->setValue(QStringLiteral("Standard/") + QString::fromLatin1(key),
                             QString::fromStdString(value.generic_string()));
    }
    m_settings->sync();
}

AppWorld::~AppWorld() = default;

void AppWorld::WriteMaster() {
    stationdb::MasterWriter writer;
    stationdb::MasterHeader header;
    header.source = "app test master";
    header.creation_date = "24001";
    if (!writer.Open(MasterFdb(), header, stationdb::MasterOutput::Unpacked)) return;
    stationdb::PartyRecord owner;
    owner.party_id = 1;
    owner.party_name = "Prairie Radio";
    writer.AddParty(owner);
    int id = 1;
    for (const StationSpec& s : kStations) {
        stationdb::FmRecord r;
        r.application_id = id++;
        r.party_id = 1;
        std::tie(r.lat, r.lon) = At(s.km, s.bearing);
        r.fac_callsign = s.call;
        r.station_channel = s.channel;
        r.station_class = s.cls;
        r.fm_dom_status = s.status;
        r.asd_service = s.service;
        r.comm_city = "Somewhere";
        r.comm_state = "NE";
        r.horiz_erp = 6.0;
        r.haat_horiz_rc_mtr = 100.0;
        r.rule_73_215_req_ind = "N";
        writer.AddFm(r);
    }
    stationdb::AmRecord am;
    am.application_id = 500;
    am.party_id = 1;
    am.fac_callsign = "KAMX";
    am.ant_mode = "ND";
    std::tie(am.lat, am.lon) = At(30, 90);
    writer.AddAm(am);
    stationdb::Tv6Record tv;
    tv.application_id = 600;
    tv.party_id = 1;
    tv.fac_callsign = "KTV6";
    tv.fac_zone = "2";
    std::tie(tv.lat, tv.lon) = At(100, 180);
    writer.AddTv6(tv);
    for (const auto& [name, km, bearing] : {std::tuple{"Omaha", 15.0, 60.0}, std::tuple{"Lincoln", 80.0, 240.0},
                                            std::tuple{"Fremont", 50.0, 320.0}}) {
        stationdb::PlaceRecord place;
        place.name = name;
        place.pop = 100000;
        std::tie(place.lat, place.lon) = At(km, bearing);
        writer.AddPlace(place);
    }
    writer.Finish();
    stationdb::PackMasterDatabase(MasterFdb(), MasterFmd());
}

void AppWorld::WriteBoundaryFiles() {
    // One state line passing west of the target, one county square round it.
    std::ofstream(Data() / "stmapH.dat", std::ios::binary)
        << FloatBytes({0, 31, 40.0f, 96.6f, 41.0f, 96.5f, 42.0f, 96.4f, 43.0f, 96.5f, 0, 0});
    std::ofstream(Data() / "comapH.dat", std::ios::binary)
        << FloatBytes({0, 31055, 41.0f, 95.7f, 41.5f, 95.7f, 41.5f, 96.3f, 41.0f, 96.3f, 41.0f, 95.7f, 0, 0});
}

jobs::NewJobInputs AppWorld::JobInputs(int scanRangeKm) const {
    jobs::NewJobInputs in;
    in.scanRange = static_cast<std::int16_t>(scanRangeKm);
    in.lat = kTargetLat;
    in.lon = kTargetLon;
    in.channel = std::to_string(kTargetChannel);
    in.stationClass = "C2";
    in.comments = "app test";
    in.source = "app test master";
    in.masterPath = MasterFdb();
    in.useLocal = false;
    return in;
}

fs::path AppWorld::MakeJob(const std::string& name, int scanRangeKm) {
    const fs::path fmj = Jobs() / (name + ".fmj");
    jobs::JobFile job(m_root / "build");
    if (job.CreateNew(JobInputs(scanRangeKm), fmj, Data())) job.SaveAs(fmj);
    job.Discard();
    return fmj;
}

shell::ProgramContext AppWorld::Context() const {
    shell::ProgramContext context;
    context.dataFolder = m_root;
    context.tempFolder = Temp();
    context.settings = shell::DefaultSettings(m_root);
    context.settings.gDataDIR = Data().generic_string();
    context.settings.gToolDIR = Data().generic_string();
    context.settings.gJobDIR = Jobs().generic_string();
    context.versionText = "0.1.0";
    context.toolbarKeys = shell::ToolbarImageKeys();
    context.jobGrid.built = true;
    shell::RecreateScratchFolder(context.MasterScratch());
    shell::RecreateScratchFolder(context.JobScratch());
    context.masterPackage = MasterFmd();
    context.masterDatabase = stationdb::UnpackMasterDatabase(MasterFmd(), context.MasterScratch());
    return context;
}

shell::StartupEnvironment AppWorld::Environment(std::vector<std::string> arguments) {
    shell::StartupEnvironment env;
    env.tempFolder = Temp();
    env.dataFolder = m_root;
    env.lockFilePath = m_root / "qarvel.lock";
    env.settings = m_settings.get();
    env.arguments = std::move(arguments);
    env.sqliteVersion = "3.40.1";
    env.freeSpace = [](const fs::path&) { return std::int64_t{4096}; };
    env.volumeName = [](const fs::path&) { return std::string("/"); };
    env.pickFolder = [](const fs::path&) { return std::optional<fs::path>(); };
    env.todayDayCode = 24010;
    return env;
}

}  // namespace qarvel::app::testing
