#include "app/search/search_results.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPageLayout>
#include <QPdfWriter>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTableView>
#include <QTextDocument>
#include <QVBoxLayout>

#include <fstream>

#include "core/csv_text.h"
#include "stationdb/schema.h"  // TempPathBeside

namespace qarvel::app {

namespace {

QString Text(const search::Value& value) {
    if (const auto* i = std::get_if<std::int64_t>(&value)) return QString::number(*i);
    if (const auto* d = std::get_if<double>(&value)) return QString::number(*d, 'g', 12);
    if (const auto* s = std::get_if<std::string>(&value)) return QString::fromStdString(*s);
    return {};
}

QPushButton* Button(const QString& name, const QString& text, QWidget* parent) {
    auto* b = new QPushButton(text, parent);
    b->setObjectName(name);
    return b;
}

}  // namespace

SearchResults::SearchResults(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmSrchResults"));
    setWindowTitle(tr("Search Results"));
    m_model = new QStandardItemModel(this);
    m_proxy = new QSortFilterProxyModel(this);
    m_proxy->setSourceModel(m_model);
    m_proxy->setFilterKeyColumn(-1);
    m_proxy->setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_proxy->setSortRole(Qt::UserRole);
    m_view = new QTableView(this);
    m_view->setObjectName(QStringLiteral("grdResults"));
    m_view->setModel(m_proxy);
    m_view->setSortingEnabled(true);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    m_view->verticalHeader()->hide();
    m_filter = new QLineEdit(this);
    m_filter->setObjectName(QStringLiteral("txtFilter"));
    m_filter->setPlaceholderText(tr("Filter the rows"));
    m_filter->setClearButtonEnabled(true);
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("lblStatus"));
    m_cancel = Button(QStringLiteral("cmdCancel"), tr("Cancel"), this);
    auto* csv = Button(QStringLiteral("cmdCsv"), tr("Export CSV..."), this);
    auto* pdf = Button(QStringLiteral("cmdPdf"), tr("Print to PDF..."), this);
    auto* close = new QDialogButtonBox(QDialogButtonBox::Close, this);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(m_status, 1);
    for (QWidget* w : std::initializer_list<QWidget*>{m_cancel, csv, pdf, close}) bottom->addWidget(w);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_filter);
    layout->addWidget(m_view, 1);
    layout->addLayout(bottom);
    resize(1100, 600);

    connect(m_filter, &QLineEdit::textChanged, this, &SearchResults::SetFilter);
    connect(m_cancel, &QPushButton::clicked, this, &SearchResults::Cancel);
    connect(close, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(csv, &QPushButton::clicked, this, [this] {
        const QString file = QFileDialog::getSaveFileName(this, tr("Export CSV"), {}, tr("CSV (*.csv)"));
        if (!file.isEmpty()) ExportCsv(file.toStdString());
    });
    connect(pdf, &QPushButton::clicked, this, [this] {
        const QString file = QFileDialog::getSaveFileName(this, tr("Print to PDF"), {}, tr("PDF (*.pdf)"));
        if (!file.isEmpty()) ExportPdf(file.toStdString());
    });
    connect(m_view, &QTableView::customContextMenuRequested, this, [this](const QPoint& at) {
        const qint64 key = SelectedKey();
        if (key == 0) return;
        QMenu menu(this);
        menu.addAction(tr("Study at This Station"), this, [this, key] { emit studyRequested(key); });
        if (m_whatIf) menu.addAction(tr("What-if from This Station"), this, [this, key] { emit whatIfRequested(key); });
        menu.exec(m_view->viewport()->mapToGlobal(at));
    });
    m_cancel->setEnabled(false);
}

SearchResults::~SearchResults() {
    Cancel();
    if (m_worker.joinable()) m_worker.join();
}

void SearchResults::Run(const std::filesystem::path& fdb, const std::string& query, const QString& label) {
    if (m_worker.joinable()) {
        Cancel();
        m_worker.join();
    }
    m_cancelFlag = false;
    m_done = false;
    m_failure.clear();
    m_status->setText(tr("Searching: %1").arg(label));
    m_cancel->setEnabled(true);
    m_worker = std::thread([this, fdb, query] {
        search::ResultTable result;
        std::string failure;
        try {
            result = search::RunQuery(fdb, query, 100000, &m_cancelFlag);
        } catch (const std::exception& e) {
            failure = e.what();
        }
        QMetaObject::invokeMethod(this, [this, result = std::move(result), failure]() mutable {
            m_result = std::move(result);
            m_failure = failure;
            m_done = true;
            m_cancel->setEnabled(false);
            if (m_failure.empty()) Fill();
            else ShowFailure(QString::fromStdString(m_failure));
            emit finished();
        }, Qt::QueuedConnection);
    });
}

void SearchResults::Cancel() { m_cancelFlag = true; }

void SearchResults::Fill() {
    m_model->clear();
    QStringList headings;
    for (const auto& c : m_result.columns) headings << QString::fromStdString(c);
    m_model->setHorizontalHeaderLabels(headings);
    for (const auto& row : m_result.rows) {
        QList<QStandardItem*> items;
        for (const auto& value : row) {
            auto* item = new QStandardItem(Text(value));
            // Numbers sort as numbers; text as text.
            if (const auto* i = std::get_if<std::int64_t>(&value)) item->setData(QVariant::fromValue(*i), Qt::UserRole);
            else if (const auto* d = std::get_if<double>(&value)) item->setData(*d, Qt::UserRole);
            else item->setData(item->text(), Qt::UserRole);
            if (!std::holds_alternative<std::string>(value)) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            items << item;
        }
        m_model->appendRow(items);
    }
    // The columns an engineer reads first lead the view; the query keeps its order.
    int place = 0;
    for (const char* name : {"Callsign", "Channel", "Class", "Status", "City Served", "State", "Owner"}) {
        for (int c = 0; c < static_cast<int>(m_result.columns.size()); ++c) {
            if (m_result.columns[static_cast<std::size_t>(c)] != name) continue;
            QHeaderView* header = m_view->horizontalHeader();
            header->moveSection(header->visualIndex(c), place++);
        }
    }
    m_view->resizeColumnsToContents();
    m_status->setText(m_result.truncated ? tr("%1 records (search stopped early)").arg(m_result.rows.size())
                                         : tr("%1 records").arg(m_result.rows.size()));
}

void SearchResults::ShowFailure(const QString& reason) {
    m_model->clear();
    m_status->setText(tr("The search did not run: %1").arg(reason));
}

int SearchResults::ShownRows() const { return m_proxy->rowCount(); }

void SearchResults::SetFilter(const QString& text) {
    if (m_filter->text() != text) m_filter->setText(text);
    m_proxy->setFilterFixedString(text);
}

qint64 SearchResults::SelectedKey() const {
    const int keyColumn = static_cast<int>(m_result.columns.size()) - 1;
    if (keyColumn < 0 || m_result.columns.back() != "application_id") return 0;
    const QModelIndex current = m_view->currentIndex();
    if (!current.isValid()) return 0;
    return m_proxy->index(current.row(), keyColumn).data().toLongLong();
}

bool SearchResults::ExportCsv(const std::filesystem::path& file) const {
    std::string text = core::CsvRow(m_result.columns) + "\r\n";
    for (int r = 0; r < m_proxy->rowCount(); ++r) {
        std::vector<std::string> cells;
        for (int c = 0; c < m_proxy->columnCount(); ++c) cells.push_back(m_proxy->index(r, c).data().toString().toStdString());
        text += core::CsvRow(cells) + "\r\n";
    }
    const auto temp = stationdb::TempPathBeside(file);
    std::ofstream out(temp, std::ios::binary);
    out << text;
    out.close();
    std::error_code ec;
    if (!out || (std::filesystem::rename(temp, file, ec), ec)) {
        std::filesystem::remove(temp, ec);
        return false;
    }
    return true;
}

QString SearchResults::HtmlTable() const {
    QString html = QStringLiteral("<h3>%1</h3><table border='1' cellspacing='0' cellpadding='2'><tr>").arg(m_status->text().toHtmlEscaped());
    for (int c = 0; c < m_proxy->columnCount(); ++c)
        html += QStringLiteral("<th>%1</th>").arg(m_proxy->headerData(c, Qt::Horizontal).toString().toHtmlEscaped());
    html += QStringLiteral("</tr>");
    for (int r = 0; r < m_proxy->rowCount(); ++r) {
        html += QStringLiteral("<tr>");
        for (int c = 0; c < m_proxy->columnCount(); ++c)
            html += QStringLiteral("<td>%1</td>").arg(m_proxy->index(r, c).data().toString().toHtmlEscaped());
        html += QStringLiteral("</tr>");
    }
    return html + QStringLiteral("</table>");
}

bool SearchResults::ExportPdf(const std::filesystem::path& file) const {
    QPdfWriter writer(QString::fromStdString(file.string()));
    writer.setPageOrientation(QPageLayout::Landscape);
    writer.setTitle(windowTitle());
    QTextDocument document;
    document.setDefaultFont(QFont(QStringLiteral("Sans"), 6));
    document.setHtml(HtmlTable());
    document.print(&writer);
    return std::filesystem::exists(file);
}

}  // namespace qarvel::app
