#include "app/search/search_menu.h"

#include <QAction>
#include <QMainWindow>
#include <QMenuBar>

#include "app/mainwin/main_actions.h"
#include "app/search/search_forms.h"
#include "app/search/search_results.h"
#include "editing/station_record.h"

namespace qarvel::app {

SearchMenu::SearchMenu(QMainWindow& window, MainActions& actions, shell::ProgramContext& context,
                       std::function<void(const Station&)> studyAt)
    : QObject(&window), m_window(window), m_context(context), m_studyAt(std::move(studyAt)) {
    QAction* basic = actions.Key(QStringLiteral("SrchBasic"));
    QAction* advanced = actions.Key(QStringLiteral("SearchDB"));
    QAction* manual = actions.Key(QStringLiteral("SrchSQL"));
    for (QAction* a : {basic, advanced, manual}) a->setEnabled(true);
    basic->setShortcut(QKeySequence::Find);
    QMenu* menu = new QMenu(tr("&Search"), &window);
    menu->setObjectName(QStringLiteral("mnuSearch"));
    menu->addActions({basic, advanced});
    // Before Tools and Help.
    QAction* before = nullptr;
    for (QAction* entry : window.menuBar()->actions())
        if (entry->menu() && (entry->menu()->objectName() == QStringLiteral("mnuTools") ||
                              entry->menu()->objectName() == QStringLiteral("mnuHelp"))) {
            before = entry;
            break;
        }
    window.menuBar()->insertMenu(before, menu);
    connect(basic, &QAction::triggered, this, &SearchMenu::Basic);
    connect(advanced, &QAction::triggered, this, &SearchMenu::Advanced);
    connect(manual, &QAction::triggered, this, &SearchMenu::Advanced);
}

SearchResults* SearchMenu::ShowResults(const QString& query, const QString& label) {
    auto* results = new SearchResults(&m_window);
    results->setAttribute(Qt::WA_DeleteOnClose);
    connect(results, &SearchResults::studyRequested, this, &SearchMenu::StudyAtStation);
    results->show();
    results->Run(m_context.masterDatabase, query.toStdString(), label);
    return results;
}

void SearchMenu::Basic() {
    auto* form = new BasicSearchForm(m_context.masterDatabase, &m_window);
    form->setAttribute(Qt::WA_DeleteOnClose);
    connect(form, &BasicSearchForm::queryReady, this, &SearchMenu::ShowResults);
    form->show();
}

void SearchMenu::Advanced() {
    auto* form = new AdvancedSearchForm(m_context.masterDatabase, &m_window);
    form->setAttribute(Qt::WA_DeleteOnClose);
    connect(form, &AdvancedSearchForm::queryReady, this, &SearchMenu::ShowResults);
    form->show();
}

void SearchMenu::StudyAtStation(qint64 applicationId) {
    try {
        const stationdb::Database db(m_context.masterDatabase, stationdb::OpenMode::ReadOnly);
        const auto record = editing::GetStation(db, applicationId);
        if (!record) return;
        Station s;
        for (const auto& [column, value] : record->fields) {
            const auto* whole = std::get_if<std::int64_t>(&value);
            if (column.name == "lat" && whole) s.lat = static_cast<double>(*whole) / 14400.0;
            if (column.name == "lon" && whole) s.lonWest = static_cast<double>(*whole) / 14400.0;
            if (column.name == "station_channel" && whole) s.channel = static_cast<int>(*whole);
            if (const auto* text = std::get_if<std::string>(&value); text && column.name == "station_class")
                s.stationClass = QString::fromStdString(*text);
        }
        if (m_studyAt) m_studyAt(s);
    } catch (const std::exception&) {
        // The master went away meanwhile: nothing to study.
    }
}

}  // namespace qarvel::app
