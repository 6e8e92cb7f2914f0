// Screenshots of the desktop program's main views for the README, drawn on
// the "offscreen" platform:
//   app_screenshots OUT_DIR [DEMO_DIR]
// With DEMO_DIR (the folder `qarvel-cli demo` wrote: DemoMaster.fmd and the
// boundary files) the job is built on the demo data round Chicago;
// without it, on the small test world of the app tests.

#include <QApplication>
#include <QSlider>
#include <QTemporaryDir>
#include <QWizard>

#include <filesystem>
#include <iostream>
#include <memory>

#include "app/jobdisplay/filter_panel.h"
#include "app/jobdisplay/job_controller.h"
#include "app/jobdisplay/job_display.h"
#include "app/mainwin/main_window.h"
#include "app/jobdisplay/map_options_dialog.h"
#include "app/wizard/new_job_wizard.h"
#include "app/jobdisplay/redraw_scheduler.h"
#include "app_fixture.h"
#include "app/datatools/calculator_dialog.h"
#include "app/search/search_forms.h"
#include "app/search/search_results.h"
#include <QListWidget>
#include "app/datatools/record_editor.h"
#include "geodesy/map_constants.h"
#include "shell/scratch.h"
#include "spacing/min_sep.h"
#include "demo/demo_data.h"
#include "stationdb/master_package.h"

namespace fs = std::filesystem;
using namespace qarvel;

namespace {

bool Save(QWidget& widget, const fs::path& file) {
    const bool ok = widget.grab().save(QString::fromStdString(file.string()));
    std::cout << (ok ? "wrote " : "could not write ") << file.string() << "\n";
    return ok;
}

// A context on the demo data: its folder as data and resources directory,
// its master unpacked into a scratch folder under `temp`.
shell::ProgramContext DemoContext(const fs::path& demo, const fs::path& temp) {
    shell::ProgramContext context;
    context.tempFolder = temp;
    context.dataFolder = temp;
    context.settings = shell::DefaultSettings(temp);
    context.settings.gDataDIR = demo.generic_string();
    context.settings.gToolDIR = demo.generic_string();
    context.settings.gJobDIR = temp.generic_string();
    context.settings.gDBoptUseLocal = false;
    context.versionText = shell::VersionText(shell::ProgramVersion());
    context.jobGrid.built = true;
    shell::RecreateScratchFolder(context.MasterScratch());
    shell::RecreateScratchFolder(context.JobScratch());
    context.masterPackage = demo / demo::kDemoMasterFile;
    context.masterDatabase = stationdb::UnpackMasterDatabase(context.masterPackage, context.MasterScratch());
    return context;
}

app::NewJobRequest DemoRequest(const fs::path& jobs) {
    app::NewJobRequest request;
    request.inputs.lat = 41.8781;
    request.inputs.lon = 87.6298;
    request.inputs.channel = "204";
    request.inputs.stationClass = "A";
    request.inputs.scanRange = 300;
    request.inputs.comments = "Demo data study";
    request.jobFile = jobs / "chicago.fmj";
    return request;
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    if (argc < 2) {
        std::cerr << "usage: app_screenshots OUT_DIR [DEMO_DIR]\n";
        return 2;
    }
    const fs::path out = argv[1];
    fs::create_directories(out);
    geodesy::InitMapConstants();
    spacing::LoadMinSepTables();

    app::testing::AppWorld world;  // also answers any message
    QTemporaryDir temp;
    const bool demo = argc > 2 && fs::exists(fs::path(argv[2]) / demo::kDemoMasterFile);
    shell::ProgramContext context =
        demo ? DemoContext(argv[2], fs::path(temp.path().toStdString())) : world.Context();
    if (context.masterDatabase.empty()) {
        std::cerr << "the master database could not be unpacked\n";
        return 1;
    }
    auto window = std::make_unique<app::MainWindow>(context);
    window->resize(1500, 900);
    window->show();
    app::NewJobRequest request;
    if (demo) {
        request = DemoRequest(context.settings.gJobDIR);
    } else {
        request.inputs = world.JobInputs();
        request.jobFile = world.Jobs() / "omaha.fmj";
    }
    if (!window->Controller().NewJob(request)) {
        std::cerr << "the job could not be built\n";
        return 1;
    }
    app::JobDisplay& display = window->Display();
    display.Panel()->ScaleSlider()->setValue(demo ? 14 : 11);
    display.Panel()->ClearanceSlider()->setValue(demo ? 60 : 40);
    app::testing::WaitUntil([&] { return display.RebuildCount() > 1 && !display.Scheduler().Timer().isActive(); });
    bool ok = Save(*window, out / "main-window.png");

    display.ToolbarKey(QStringLiteral("Fill"));
    display.ToolbarKey(QStringLiteral("ChannelColor"));
    display.ToolbarKey(QStringLiteral("Map"));
    app::testing::WaitUntil([&] { return !display.Scheduler().Timer().isActive(); });
    ok = Save(*window, out / "map-channel-fill.png") && ok;

    app::NewJobWizard wizard(context.settings.gJobDIR);
    wizard.SetTarget(request.inputs.lat, request.inputs.lon, std::stoi(request.inputs.channel),
                     QString::fromStdString(request.inputs.stationClass));
    wizard.show();
    QApplication::processEvents();
    ok = Save(wizard, out / "new-job-wizard.png") && ok;
    wizard.hide();

    app::MapOptionsDialog options(context.settings);
    options.show();
    QApplication::processEvents();
    ok = Save(options, out / "map-options.png") && ok;
    options.hide();

    app::CalculatorDialog calculators(request.inputs.lat, request.inputs.lon);
    calculators.SetRangeTo(41.5, 88.1);
    calculators.show();
    QApplication::processEvents();
    ok = Save(calculators, out / "calculators.png") && ok;
    calculators.hide();

    app::RecordEditor editor(context.masterPackage);
    editor.Find(QStringLiteral("fac_callsign"), QStringLiteral("W*"), QStringLiteral("fac_callsign"), false);
    editor.show();
    QApplication::processEvents();
    ok = Save(editor, out / "record-editor.png") && ok;
    editor.hide();

    app::AdvancedSearchForm advanced(context.masterDatabase);
    advanced.findChild<QListWidget*>(QStringLiteral("lst_fm_data"))->item(15)->setSelected(true);
    advanced.findChild<QListWidget*>(QStringLiteral("lst_fm_data"))->item(22)->setSelected(true);
    advanced.AddCondition(QStringLiteral("fm_data.station_class"), QStringLiteral(" = "), QStringLiteral("C1"), {}, false);
    advanced.show();
    QApplication::processEvents();
    ok = Save(advanced, out / "advanced-search.png") && ok;
    advanced.hide();

    app::SearchResults results;
    results.Run(context.masterDatabase, search::kDisplayQuery +
                                            " AND fm_data.station_channel = 204",
                QStringLiteral("channel 204"));
    app::testing::WaitUntil([&] { return !results.Running(); });
    results.show();
    QApplication::processEvents();
    ok = Save(results, out / "search-results.png") && ok;
    results.hide();

    window->Controller().Job()->Discard();
    window.reset();
    return ok ? 0 : 1;
}
