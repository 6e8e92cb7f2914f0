#pragma once
// The record editor `frmEditRecord`: the station tables of a master or local
// database in a grid, found by any column (Jet wildcards "*" and "?") and
// sorted by any column. Each edited cell is checked against its column before
// it is taken; taken changes stay inside the editing session, can be undone
// one by one, and reach the file only on Save (written atomically); Discard
// drops them. Edited records are marked as the user's.

#include <QDialog>

#include <filesystem>
#include <memory>
#include <vector>

#include "editing/edit_session.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace qarvel::app {

class RecordEditor : public QDialog {
    Q_OBJECT

public:
    // Throws std::runtime_error (one line) when `file` is no station database.
    explicit RecordEditor(const std::filesystem::path& file, QWidget* parent = nullptr);
    ~RecordEditor() override;

    // Finds the records whose `column` matches `pattern` (Jet wildcards;
    // empty: all), sorted by `sortColumn`; at most kMaxRows are shown.
    void Find(const QString& column, const QString& pattern, const QString& sortColumn, bool descending);
    // Sets one cell as the user would; false (with the reason shown) when
    // the value does not fit the column.
    bool Edit(int row, const QString& column, const QString& text);
    void Undo();
    void Save();
    void Discard();
    bool HasChanges() const { return !m_undo.empty(); }

    static constexpr int kMaxRows = 2000;

protected:
    void done(int result) override;

private:
    struct Change {
        std::int64_t applicationId;
        std::string column;
        std::string before;
    };
    void ChooseTable();
    void Refill();
    void CellEdited(int row, int column);
    int ColumnOf(const QString& name) const;

    std::unique_ptr<editing::EditSession> m_session;
    std::filesystem::path m_file;
    QComboBox* m_table;
    QComboBox* m_findColumn;
    QLineEdit* m_pattern;
    QComboBox* m_sortColumn;
    QComboBox* m_sortOrder;
    QTableWidget* m_grid;
    QLabel* m_status;
    QPushButton* m_undoButton;
    std::vector<std::string> m_columns;
    std::vector<Change> m_undo;
    bool m_filling = false;
};

}  // namespace qarvel::app
