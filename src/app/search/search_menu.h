#pragma once
// The Search menu of the main window and its toolbar keys ("SrchBasic" the
// basic search, "SearchDB" and "SrchSQL" the advanced search): the forms, and
// the results view that runs what they build on the master in use.

#include <QObject>

#include <functional>

#include "shell/program_context.h"

class QMainWindow;

namespace qarvel::app {

class MainActions;
class SearchResults;

class SearchMenu : public QObject {
    Q_OBJECT

public:
    struct Station {
        double lat = 0, lonWest = 0;
        int channel = 0;
        QString stationClass;
    };
    // `studyAt` starts a new job at a station found by a search.
    SearchMenu(QMainWindow& window, MainActions& actions, shell::ProgramContext& context,
               std::function<void(const Station&)> studyAt);

    void Basic();
    void Advanced();
    // Runs a query in a results view; the view, for tests.
    SearchResults* ShowResults(const QString& query, const QString& label);

private:
    void StudyAtStation(qint64 applicationId);

    QMainWindow& m_window;
    shell::ProgramContext& m_context;
    std::function<void(const Station&)> m_studyAt;
};

}  // namespace qarvel::app
