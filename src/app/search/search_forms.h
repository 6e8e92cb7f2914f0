#pragma once
// The search forms: the basic search `frmSrchBasic` (call sign, owner, city,
// state, channel) and the advanced search `frmSrchAdvanced` (fields of the
// four tables, conditions from `frmSrchWhere`, the sort from `frmSrchORDER`,
// the manual query box `TManualQuery`, and query archives). Each ends in a
// query that it hands on with queryReady(); the results view runs it.

#include <QDialog>

#include <filesystem>
#include <string>

#include "search/query_builder.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QRadioButton;

namespace qarvel::app {

class BasicSearchForm : public QDialog {
    Q_OBJECT

public:
    // `master`: the unpacked master in use; empty when none is loaded.
    BasicSearchForm(std::filesystem::path master, QWidget* parent = nullptr);
    // IsDataPresent: checks the entries and emits the query; false (after
    // saying why) when there is no master or the channel is not valid.
    bool Search();

signals:
    void queryReady(const QString& query, const QString& label);

private:
    std::filesystem::path m_master;
    QLineEdit* m_call;
    QLineEdit* m_owner;
    QLineEdit* m_city;
    QLineEdit* m_state;
    QLineEdit* m_channel;
};

class AdvancedSearchForm : public QDialog {
    Q_OBJECT

public:
    AdvancedSearchForm(std::filesystem::path master, QWidget* parent = nullptr);

    // The chosen fields changed: select and from lists rebuilt, query shown.
    void FieldsChanged();
    // frmSrchWhere's result: one more condition.
    void AddCondition(const QString& field, const QString& op, const QString& value, const QString& second, bool orJoin);
    // frmSrchORDER's result: one more sort field.
    void AddOrder(const QString& field, bool descending);
    void ClearClauses();
    // Runs the manual query box's text (trimmed, a final ";" dropped).
    void RunQuery();
    bool OpenArchive(const std::filesystem::path& file);
    bool SaveArchive(const std::filesystem::path& file);
    QString ManualText() const;
    void SetManualText(const QString& text);
    const search::Clauses& CurrentClauses() const { return m_clauses; }

signals:
    void queryReady(const QString& query, const QString& label);

private:
    QListWidget* FieldList(const char* table);
    void WriteSql();
    void AskCondition();
    void AskOrder();
    QStringList AllFields() const;

    std::filesystem::path m_master;
    QListWidget* m_lists[4] = {};
    QPlainTextEdit* m_manual;
    search::Clauses m_clauses;
    std::vector<std::pair<std::string, bool>> m_order;
};

}  // namespace qarvel::app
