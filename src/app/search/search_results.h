#pragma once
// The search results view `frmSrchResults`: the rows of a search in a grid
// that sorts by any column (click a heading) and filters as the user types,
// exported as CSV and printed or written to PDF. The search itself runs on a
// worker thread; Cancel stops it. A row offers "Study at This Station" and
// "What-if from This Station", which the main window may take up.

#include <QDialog>

#include <atomic>
#include <filesystem>
#include <memory>
#include <thread>

#include "search/query_runner.h"

class QLabel;
class QLineEdit;
class QPushButton;
class QSortFilterProxyModel;
class QStandardItemModel;
class QTableView;

namespace qarvel::app {

class SearchResults : public QDialog {
    Q_OBJECT

public:
    explicit SearchResults(QWidget* parent = nullptr);
    ~SearchResults() override;

    // Starts the query on the master database `fdb`; the grid fills when it
    // ends (finished() is emitted then, also after a failure or Cancel).
    void Run(const std::filesystem::path& fdb, const std::string& query, const QString& label);
    void Cancel();
    bool Running() const { return m_worker.joinable() && !m_done; }

    // The rows shown (after the filter) and the whole result.
    int ShownRows() const;
    const search::ResultTable& Result() const { return m_result; }
    void SetFilter(const QString& text);
    // Writes the shown rows as CSV beside `file` and renames it into place.
    bool ExportCsv(const std::filesystem::path& file) const;
    bool ExportPdf(const std::filesystem::path& file) const;
    // Offers "What-if from This Station" once the what-if study takes it.
    void SetWhatIfAvailable(bool available) { m_whatIf = available; }

signals:
    void finished();
    void studyRequested(qint64 applicationId);
    void whatIfRequested(qint64 applicationId);

private:
    void Fill();
    void ShowFailure(const QString& reason);
    qint64 SelectedKey() const;
    QString HtmlTable() const;

    QStandardItemModel* m_model;
    QSortFilterProxyModel* m_proxy;
    QTableView* m_view;
    QLineEdit* m_filter;
    QLabel* m_status;
    QPushButton* m_cancel;
    search::ResultTable m_result;
    std::string m_failure;
    std::atomic<bool> m_cancelFlag{false};
    std::atomic<bool> m_done{true};
    std::thread m_worker;
    bool m_whatIf = false;
};

}  // namespace qarvel::app
