#include "app/search/search_forms.h"

#include <QComboBox>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "core/prompt.h"
#include "stationdb/database.h"

namespace qarvel::app {

namespace {

constexpr const char* kTables[] = {"fm_data", "party", "tv6_data", "am_data"};

QLineEdit* Entry(const QString& name, QWidget* parent) {
    auto* e = new QLineEdit(parent);
    e->setObjectName(name);
    return e;
}

QPushButton* Button(const QString& name, const QString& text, QWidget* parent) {
    auto* b = new QPushButton(text, parent);
    b->setObjectName(name);
    return b;
}

void Say(std::string_view text, core::PromptIcon icon = core::PromptIcon::Warning) {
    core::ShowPrompt(std::string(text), {}, core::PromptButtons::Ok, icon);
}

}  // namespace

BasicSearchForm::BasicSearchForm(std::filesystem::path master, QWidget* parent)
    : QDialog(parent), m_master(std::move(master)) {
    setObjectName(QStringLiteral("frmSrchBasic"));
    setWindowTitle(tr("Search Stations"));
    m_call = Entry(QStringLiteral("tbxCallSign"), this);
    m_owner = Entry(QStringLiteral("tbxOwner"), this);
    m_city = Entry(QStringLiteral("tbxCity"), this);
    m_state = Entry(QStringLiteral("tbxState"), this);
    m_channel = Entry(QStringLiteral("tbxChan"), this);
    m_channel->setPlaceholderText(tr("200 to 300"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    auto* search = buttons->addButton(tr("&Search"), QDialogButtonBox::AcceptRole);
    search->setObjectName(QStringLiteral("cmdSearch"));
    search->setDefault(true);
    auto* form = new QFormLayout(this);
    form->addRow(tr("Call sign contains:"), m_call);
    form->addRow(tr("Owner contains:"), m_owner);
    form->addRow(tr("City contains:"), m_city);
    form->addRow(tr("State:"), m_state);
    form->addRow(tr("Channel:"), m_channel);
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(search, &QPushButton::clicked, this, [this] {
        if (Search()) accept();
    });
}

bool BasicSearchForm::Search() {
    if (m_master.empty()) {
        Say(search::kNoCurrentDatabase);
        return false;
    }
    const search::BasicEntries entries{m_call->text().toStdString(), m_owner->text().toStdString(),
                                       m_city->text().toStdString(), m_state->text().toStdString(),
                                       m_channel->text().toStdString()};
    const auto query = search::BasicQuery(entries);
    if (const auto* problem = std::get_if<std::string_view>(&query)) {
        Say(*problem);
        return false;
    }
    QStringList what;
    for (QLineEdit* e : {m_call, m_owner, m_city, m_state, m_channel})
        if (!e->text().trimmed().isEmpty()) what << e->text().trimmed();
    emit queryReady(QString::fromStdString(std::get<std::string>(query)), what.join(QStringLiteral(", ")));
    return true;
}

AdvancedSearchForm::AdvancedSearchForm(std::filesystem::path master, QWidget* parent)
    : QDialog(parent), m_master(std::move(master)) {
    setObjectName(QStringLiteral("frmSrchAdvanced"));
    setWindowTitle(tr("Advanced Search"));
    auto* fields = new QGridLayout;
    for (int t = 0; t < 4; ++t) {
        fields->addWidget(new QLabel(QString::fromLatin1(kTables[t]), this), 0, t);
        m_lists[t] = FieldList(kTables[t]);
        fields->addWidget(m_lists[t], 1, t);
    }
    m_manual = new QPlainTextEdit(this);
    m_manual->setObjectName(QStringLiteral("TManualQuery"));
    m_manual->setPlaceholderText(tr("SELECT ... (the query built above, or one typed by hand)"));
    auto* row = new QHBoxLayout;
    auto* where = Button(QStringLiteral("cmdWhere"), tr("&Where..."), this);
    auto* order = Button(QStringLiteral("cmdOrder"), tr("&Order..."), this);
    auto* clear = Button(QStringLiteral("cmdClear"), tr("C&lear"), this);
    auto* open = Button(QStringLiteral("cmdOpen"), tr("&Open Archived Query..."), this);
    auto* save = Button(QStringLiteral("cmdArchive"), tr("&Archive Query..."), this);
    auto* run = Button(QStringLiteral("cmdRun"), tr("&Run"), this);
    run->setDefault(true);
    for (QPushButton* b : {where, order, clear, open, save}) row->addWidget(b);
    row->addStretch();
    row->addWidget(run);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fields, 2);
    layout->addWidget(m_manual, 1);
    layout->addLayout(row);
    resize(900, 560);
    connect(where, &QPushButton::clicked, this, &AdvancedSearchForm::AskCondition);
    connect(order, &QPushButton::clicked, this, &AdvancedSearchForm::AskOrder);
    connect(clear, &QPushButton::clicked, this, &AdvancedSearchForm::ClearClauses);
    connect(run, &QPushButton::clicked, this, &AdvancedSearchForm::RunQuery);
    connect(open, &QPushButton::clicked, this, [this] {
        const QString file = QFileDialog::getOpenFileName(this, tr("Open Archived Query"), {}, tr("Text File (*.txt)"));
        if (!file.isEmpty()) OpenArchive(file.toStdString());
    });
    connect(save, &QPushButton::clicked, this, [this] {
        const QString file = QFileDialog::getSaveFileName(this, tr("Archive Query"), {}, tr("Text File (*.txt)"));
        if (!file.isEmpty()) SaveArchive(file.toStdString());
    });
}

QListWidget* AdvancedSearchForm::FieldList(const char* table) {
    auto* list = new QListWidget(this);
    list->setObjectName(QStringLiteral("lst_%1").arg(QString::fromLatin1(table)));
    list->setSelectionMode(QAbstractItemView::MultiSelection);
    try {
        const stationdb::Database db(m_master, stationdb::OpenMode::ReadOnly);
        for (const std::string& column : db.ColumnNames(table))
            list->addItem(QString::fromLatin1(table) + QLatin1Char('.') + QString::fromStdString(column));
    } catch (const std::exception&) {
        // No master: empty lists; running a query says why.
    }
    connect(list, &QListWidget::itemSelectionChanged, this, &AdvancedSearchForm::FieldsChanged);
    return list;
}

QStringList AdvancedSearchForm::AllFields() const {
    QStringList all;
    for (QListWidget* list : m_lists)
        for (int i = 0; i < list->count(); ++i) all << list->item(i)->text();
    return all;
}

void AdvancedSearchForm::FieldsChanged() {
    search::FieldChoice choice;
    std::vector<std::string>* lists[] = {&choice.fmData, &choice.party, &choice.tv6Data, &choice.amData};
    for (int t = 0; t < 4; ++t) {
        for (int i = 0; i < m_lists[t]->count(); ++i)
            if (m_lists[t]->item(i)->isSelected()) lists[t]->push_back(m_lists[t]->item(i)->text().toStdString());
        if (lists[t]->empty()) lists[t]->push_back("NONE");
    }
    search::BuildSelectFrom(choice, m_clauses);
    WriteSql();
}

void AdvancedSearchForm::AddCondition(const QString& field, const QString& op, const QString& value,
                                      const QString& second, bool orJoin) {
    m_clauses.where = search::AppendCondition(m_clauses.where, orJoin ? " OR " : " AND ", field.toStdString(),
                                              op.toStdString(), search::QuotedValue(value.toStdString()),
                                              search::QuotedValue(second.toStdString()));
    WriteSql();
}

void AdvancedSearchForm::AddOrder(const QString& field, bool descending) {
    m_order.emplace_back(field.toStdString(), descending);
    m_clauses.order = search::BuildOrder(m_order);
    WriteSql();
}

void AdvancedSearchForm::ClearClauses() {
    m_clauses = {};
    m_order.clear();
    for (QListWidget* list : m_lists) list->clearSelection();
    m_manual->clear();
}

void AdvancedSearchForm::WriteSql() {
    if (const auto query = search::WriteSql(m_clauses)) m_manual->setPlainText(QString::fromStdString(*query) + ';');
}

QString AdvancedSearchForm::ManualText() const { return m_manual->toPlainText(); }
void AdvancedSearchForm::SetManualText(const QString& text) { m_manual->setPlainText(text); }

void AdvancedSearchForm::RunQuery() {
    if (m_master.empty()) {
        Say(search::kNoCurrentDatabase);
        return;
    }
    const std::string query = search::ManualQuery(ManualText().toStdString());
    if (!query.empty()) emit queryReady(QString::fromStdString(query), tr("query"));
}

bool AdvancedSearchForm::OpenArchive(const std::filesystem::path& file) {
    try {
        SetManualText(QString::fromStdString(search::ReadArchive(file)));
        return true;
    } catch (const std::exception&) {
        Say(search::kNotAnArchive);
        return false;
    }
}

bool AdvancedSearchForm::SaveArchive(const std::filesystem::path& file) {
    const auto name = search::ArchiveFileName(file.string());
    if (!name) {
        Say(std::string(search::kInvalidFileName) + "\n" + file.string());
        return false;
    }
    try {
        search::WriteArchive(*name, ManualText().toStdString());
        return true;
    } catch (const std::exception& e) {
        Say(e.what());
        return false;
    }
}

void AdvancedSearchForm::AskCondition() {
    QDialog dialog(this);
    dialog.setObjectName(QStringLiteral("frmSrchWhere"));
    dialog.setWindowTitle(tr("Condition"));
    auto* field = new QComboBox(&dialog);
    field->addItems(AllFields());
    auto* op = new QComboBox(&dialog);
    for (const auto& o : search::kOperators) op->addItem(QString::fromStdString(o).trimmed(), QString::fromStdString(o));
    auto* value = new QLineEdit(&dialog);
    auto* second = new QLineEdit(&dialog);
    second->setPlaceholderText(tr("second value (BETWEEN)"));
    auto* orJoin = new QRadioButton(tr("OR"), &dialog);
    auto* andJoin = new QRadioButton(tr("AND"), &dialog);
    andJoin->setChecked(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    auto* form = new QFormLayout(&dialog);
    form->addRow(tr("Field:"), field);
    form->addRow(tr("Operator:"), op);
    form->addRow(tr("Value:"), value);
    form->addRow(QString(), second);
    auto* joins = new QHBoxLayout;
    joins->addWidget(andJoin);
    joins->addWidget(orJoin);
    form->addRow(tr("Join with:"), joins);
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    if (dialog.exec() == QDialog::Accepted && !field->currentText().isEmpty())
        AddCondition(field->currentText(), op->currentData().toString(), value->text(), second->text(), orJoin->isChecked());
}

void AdvancedSearchForm::AskOrder() {
    QDialog dialog(this);
    dialog.setObjectName(QStringLiteral("frmSrchORDER"));
    dialog.setWindowTitle(tr("Sort"));
    auto* field = new QComboBox(&dialog);
    field->addItems(AllFields());
    auto* descending = new QCheckBox(tr("Descending"), &dialog);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    auto* form = new QFormLayout(&dialog);
    form->addRow(tr("Sort by:"), field);
    form->addRow(descending);
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    if (dialog.exec() == QDialog::Accepted && !field->currentText().isEmpty())
        AddOrder(field->currentText(), descending->isChecked());
}

}  // namespace qarvel::app
