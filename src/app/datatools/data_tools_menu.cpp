#include "app/datatools/data_tools_menu.h"

#include <QAction>
#include <QFileDialog>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

#include "app/datatools/calculator_dialog.h"
#include "app/datatools/markers_dialog.h"
#include "app/datatools/record_editor.h"
#include "app/mainwin/main_actions.h"
#include "core/prompt.h"

namespace qarvel::app {

DataToolsMenu::DataToolsMenu(QMainWindow& window, MainActions& actions, shell::ProgramContext& context,
                             std::function<std::optional<std::pair<double, double>>()> target)
    : QObject(&window), m_window(window), m_context(context), m_target(std::move(target)) {
    calculators = actions.Key(QStringLiteral("Calc"));
    calculators->setEnabled(true);
    markers = new QAction(tr("&Markers..."), &window);
    markers->setObjectName(QStringLiteral("mnuMarkers"));
    editLocal = new QAction(tr("Edit &Local Records..."), &window);
    editLocal->setObjectName(QStringLiteral("mnuEditLocal"));
    editMaster = new QAction(tr("Edit Master &Records..."), &window);
    editMaster->setObjectName(QStringLiteral("mnuEditMaster"));
    QMenu* tools = window.menuBar()->addMenu(tr("&Tools"));
    tools->setObjectName(QStringLiteral("mnuTools"));
    tools->addActions({calculators, markers});
    tools->addSeparator();
    tools->addActions({editLocal, editMaster});
    // The Help menu stays last.
    for (QAction* menu : window.menuBar()->actions()) {
        if (menu->menu() && menu->menu()->objectName() == QStringLiteral("mnuHelp")) {
            window.menuBar()->removeAction(menu);
            window.menuBar()->addAction(menu);
            break;
        }
    }
    connect(calculators, &QAction::triggered, this, &DataToolsMenu::Calculators);
    connect(markers, &QAction::triggered, this, &DataToolsMenu::Markers);
    connect(editLocal, &QAction::triggered, this, &DataToolsMenu::EditLocalRecords);
    connect(editMaster, &QAction::triggered, this, &DataToolsMenu::EditMasterRecords);
}

void DataToolsMenu::Calculators() {
    const auto target = m_target();
    auto* dialog = new CalculatorDialog(target ? target->first : 0.0, target ? target->second : 0.0, &m_window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
}

void DataToolsMenu::PointMenu(double lat, double lonWest, QPoint global) {
    QMenu menu(&m_window);
    menu.setObjectName(QStringLiteral("mnuMapPoint"));
    menu.addAction(tr("Add &Marker Here..."), this, [=, this] { AddMarkerAt(lat, lonWest); });
    menu.addAction(tr("&Range and Bearing to Here"), this, [=, this] { RangeToPoint(lat, lonWest); });
    menu.exec(global);
}

void DataToolsMenu::AddMarkerAt(double lat, double lonWest) {
    MarkersDialog dialog(m_context.localDatabase, &m_window);
    connect(&dialog, &MarkersDialog::markersChanged, this, &DataToolsMenu::markersChanged);
    dialog.AddAt(lat, lonWest);
}

void DataToolsMenu::RangeToPoint(double lat, double lonWest) {
    const auto target = m_target();
    auto* dialog = new CalculatorDialog(target ? target->first : lat, target ? target->second : lonWest, &m_window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->SetRangeTo(lat, lonWest);
    dialog->show();
}

void DataToolsMenu::Markers() {
    auto* dialog = new MarkersDialog(m_context.localDatabase, &m_window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &MarkersDialog::markersChanged, this, &DataToolsMenu::markersChanged);
    dialog->show();
}

void DataToolsMenu::OpenEditor(const std::filesystem::path& file) {
    try {
        auto* editor = new RecordEditor(file, &m_window);
        editor->setAttribute(Qt::WA_DeleteOnClose);
        editor->show();
    } catch (const std::exception& e) {
        core::ShowPrompt(e.what(), "Edit Records", core::PromptButtons::Ok, core::PromptIcon::Warning);
    }
}

// The working copy: the program packs it back into LocalData.fmd at its end.
void DataToolsMenu::EditLocalRecords() { OpenEditor(m_context.localDatabase); }

void DataToolsMenu::EditMasterRecords() {
    const QString file = QFileDialog::getOpenFileName(&m_window, tr("Edit Master Database"),
                                                      QString::fromStdString(m_context.settings.gDataDIR),
                                                      tr("Master Database (*.fmd)"));
    if (!file.isEmpty()) OpenEditor(file.toStdString());
}

}  // namespace qarvel::app
