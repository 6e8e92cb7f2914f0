#include "app/datatools/record_editor.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

#include "core/prompt.h"
#include "editing/station_record.h"

namespace qarvel::app {

namespace {

QString CellText(const stationdb::Statement& row, int column) {
    switch (row.Type(column)) {
        case stationdb::ColumnType::Null: return {};
        case stationdb::ColumnType::Integer: return QString::number(row.GetInt64(column));
        case stationdb::ColumnType::Real: return QString::number(row.GetDouble(column), 'g', 12);
        default: return QString::fromStdString(row.GetText(column));
    }
}

QPushButton* Button(const QString& name, const QString& text, QWidget* parent) {
    auto* button = new QPushButton(text, parent);
    button->setObjectName(name);
    return button;
}

}  // namespace

RecordEditor::RecordEditor(const std::filesystem::path& file, QWidget* parent)
    : QDialog(parent), m_session(std::make_unique<editing::EditSession>(file)), m_file(file) {
    setObjectName(QStringLiteral("frmEditRecord"));
    setWindowTitle(tr("Edit Records - %1").arg(QString::fromStdString(file.filename().string())));
    m_table = new QComboBox(this);
    m_table->setObjectName(QStringLiteral("cboTable"));
    m_table->addItems({QStringLiteral("fm_data"), QStringLiteral("am_data"), QStringLiteral("tv6_data")});
    m_findColumn = new QComboBox(this);
    m_findColumn->setObjectName(QStringLiteral("cboFindColumn"));
    m_pattern = new QLineEdit(this);
    m_pattern->setObjectName(QStringLiteral("txtFind"));
    m_pattern->setPlaceholderText(tr("K* or 25? (empty: all)"));
    m_sortColumn = new QComboBox(this);
    m_sortColumn->setObjectName(QStringLiteral("cboSortColumn"));
    m_sortOrder = new QComboBox(this);
    m_sortOrder->addItems({tr("Ascending"), tr("Descending")});
    auto* find = Button(QStringLiteral("cmdFind"), tr("&Find"), this);
    m_grid = new QTableWidget(this);
    m_grid->setObjectName(QStringLiteral("grdRecords"));
    m_grid->verticalHeader()->hide();
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("lblStatus"));
    m_undoButton = Button(QStringLiteral("cmdUndo"), tr("&Undo"), this);
    auto* save = Button(QStringLiteral("cmdSave"), tr("&Save"), this);
    auto* discard = Button(QStringLiteral("cmdDiscard"), tr("&Discard"), this);
    auto* close = new QDialogButtonBox(QDialogButtonBox::Close, this);

    auto* top = new QHBoxLayout;
    for (QWidget* w : std::initializer_list<QWidget*>{new QLabel(tr("Table:"), this), m_table, new QLabel(tr("Find:"), this),
                                                       m_findColumn, m_pattern, new QLabel(tr("Sort:"), this), m_sortColumn,
                                                       m_sortOrder, find})
        top->addWidget(w);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(m_status, 1);
    for (QWidget* w : std::initializer_list<QWidget*>{m_undoButton, discard, save, close}) bottom->addWidget(w);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_grid, 1);
    layout->addLayout(bottom);
    resize(1000, 560);

    connect(m_table, &QComboBox::currentTextChanged, this, &RecordEditor::ChooseTable);
    connect(find, &QPushButton::clicked, this, &RecordEditor::Refill);
    connect(m_pattern, &QLineEdit::returnPressed, this, &RecordEditor::Refill);
    connect(m_grid, &QTableWidget::cellChanged, this, &RecordEditor::CellEdited);
    connect(m_undoButton, &QPushButton::clicked, this, &RecordEditor::Undo);
    connect(save, &QPushButton::clicked, this, &RecordEditor::Save);
    connect(discard, &QPushButton::clicked, this, &RecordEditor::Discard);
    connect(close, &QDialogButtonBox::rejected, this, &QDialog::reject);
    ChooseTable();
}

RecordEditor::~RecordEditor() = default;

void RecordEditor::ChooseTable() {
    m_columns.clear();
    // The columns an engineer looks for first lead; the rest follow in table order.
    static const std::vector<std::string> kLeading = {"application_id", "fac_callsign", "station_channel",
                                                      "station_class", "fm_dom_status", "comm_city", "comm_state",
                                                      "lat", "lon"};
    std::vector<std::string> all;
    for (const auto& spec : editing::TableColumns(m_session->Db(), m_table->currentText().toStdString()))
        all.push_back(spec.name);
    for (const auto& name : kLeading)
        if (std::find(all.begin(), all.end(), name) != all.end()) m_columns.push_back(name);
    for (const auto& name : all)
        if (std::find(m_columns.begin(), m_columns.end(), name) == m_columns.end()) m_columns.push_back(name);
    QStringList names;
    for (const auto& c : m_columns) names << QString::fromStdString(c);
    for (QComboBox* box : {m_findColumn, m_sortColumn}) {
        box->clear();
        box->addItems(names);
    }
    m_findColumn->setCurrentText(QStringLiteral("fac_callsign"));
    m_sortColumn->setCurrentText(QStringLiteral("fac_callsign"));
    Refill();
}

void RecordEditor::Find(const QString& column, const QString& pattern, const QString& sortColumn, bool descending) {
    m_findColumn->setCurrentText(column);
    m_pattern->setText(pattern);
    m_sortColumn->setCurrentText(sortColumn);
    m_sortOrder->setCurrentIndex(descending ? 1 : 0);
    Refill();
}

void RecordEditor::Refill() {
    const std::string table = m_table->currentText().toStdString();
    std::string list;
    for (const auto& c : m_columns) list += (list.empty() ? "" : ", ") + stationdb::QuoteIdentifier(c);
    std::string sql = "SELECT " + list + " FROM " + table;
    const std::string pattern = m_pattern->text().toStdString();
    if (!pattern.empty()) sql += " WHERE " + stationdb::QuoteIdentifier(m_findColumn->currentText().toStdString()) + " LIKE ?1";
    sql += " ORDER BY " + stationdb::QuoteIdentifier(m_sortColumn->currentText().toStdString()) +
           (m_sortOrder->currentIndex() == 1 ? " DESC" : " ASC") + " LIMIT " + std::to_string(kMaxRows + 1);
    m_filling = true;
    m_grid->clear();
    m_grid->setColumnCount(static_cast<int>(m_columns.size()));
    QStringList headings;
    for (const auto& c : m_columns) headings << QString::fromStdString(c);
    m_grid->setHorizontalHeaderLabels(headings);
    stationdb::Statement rows = m_session->Db().Prepare(sql);
    if (!pattern.empty()) rows.Bind(1, pattern);
    int count = 0;
    bool more = false;
    m_grid->setRowCount(0);
    while ((more = rows.Step()) && count < kMaxRows) {
        m_grid->insertRow(count);
        for (int c = 0; c < rows.ColumnCount(); ++c) {
            auto* item = new QTableWidgetItem(CellText(rows, c));
            if (m_columns[static_cast<std::size_t>(c)] == "application_id") item->setFlags(item->flags() & ~Qt::ItemIsEditable);
            m_grid->setItem(count, c, item);
        }
        ++count;
    }
    m_filling = false;
    m_status->setText(more ? tr("The first %1 records; narrow the search to see others.").arg(kMaxRows)
                           : tr("%n record(s)", nullptr, count));
    m_undoButton->setEnabled(HasChanges());
}

int RecordEditor::ColumnOf(const QString& name) const {
    for (std::size_t c = 0; c < m_columns.size(); ++c)
        if (QString::fromStdString(m_columns[c]) == name) return static_cast<int>(c);
    return -1;
}

bool RecordEditor::Edit(int row, const QString& column, const QString& text) {
    const int c = ColumnOf(column);
    if (c < 0 || row < 0 || row >= m_grid->rowCount()) return false;
    m_grid->item(row, c)->setText(text);  // runs CellEdited, as typing does
    return m_grid->item(row, c)->text() == text && m_status->property("refused").toBool() == false;
}

void RecordEditor::CellEdited(int row, int column) {
    if (m_filling) return;
    const int idColumn = ColumnOf(QStringLiteral("application_id"));
    const std::int64_t id = m_grid->item(row, idColumn)->text().toLongLong();
    const std::string name = m_columns[static_cast<std::size_t>(column)];
    const auto before = editing::GetStation(m_session->Db(), id);
    std::string old;
    if (before) {
        for (const auto& [spec, value] : before->fields) {
            if (spec.name != name) continue;
            if (const auto* i = std::get_if<std::int64_t>(&value)) old = std::to_string(*i);
            else if (const auto* d = std::get_if<double>(&value)) old = QString::number(*d, 'g', 12).toStdString();
            else if (const auto* s = std::get_if<std::string>(&value)) old = *s;
        }
    }
    try {
        editing::SetStationFields(m_session->Db(), id, {{name, m_grid->item(row, column)->text().trimmed().toStdString()}});
        m_undo.push_back({id, name, old});
        m_status->setProperty("refused", false);
        m_status->setText(tr("Changed %1 of %2; Save writes it to the file.").arg(QString::fromStdString(name)).arg(id));
    } catch (const std::exception& e) {
        m_status->setProperty("refused", true);
        m_status->setText(tr("Not taken: %1").arg(QString::fromUtf8(e.what())));
        m_filling = true;
        m_grid->item(row, column)->setText(QString::fromStdString(old));
        m_filling = false;
    }
    m_undoButton->setEnabled(HasChanges());
}

void RecordEditor::Undo() {
    if (m_undo.empty()) return;
    const Change last = m_undo.back();
    m_undo.pop_back();
    editing::SetStationFields(m_session->Db(), last.applicationId, {{last.column, last.before}});
    Refill();
}

void RecordEditor::Save() {
    try {
        m_session->Save();
        m_undo.clear();
        m_status->setText(tr("Saved."));
    } catch (const std::exception& e) {
        core::ShowPrompt(e.what(), windowTitle().toStdString(), core::PromptButtons::Ok, core::PromptIcon::Warning);
    }
    m_undoButton->setEnabled(HasChanges());
}

void RecordEditor::Discard() {
    m_session.reset();  // rolls the changes back before the file is opened again
    m_session = std::make_unique<editing::EditSession>(m_file);
    m_undo.clear();
    Refill();
}

void RecordEditor::done(int result) {
    if (HasChanges()) {
        // Yes saves, No discards, Cancel (and Escape) keeps the editor open.
        const core::PromptAnswer answer = core::ShowPrompt("Save the changes to the records?", windowTitle().toStdString(),
                                                           core::PromptButtons::YesNoCancel, core::PromptIcon::Question);
        if (answer == core::PromptAnswer::Cancel) return;
        if (answer == core::PromptAnswer::Yes) {
            Save();
            if (HasChanges()) return;  // the save failed: stay open
        }
    }
    QDialog::done(result);
}

}  // namespace qarvel::app
