#include "app/jobdisplay/job_grid.h"

#include <QHeaderView>
#include <QMenu>
#include <QSignalBlocker>

#include "app/jobdisplay/grid_model.h"

namespace qarvel::app {

JobGrid::JobGrid(stationdb::DisplayFieldCatalogue& catalogue, QWidget* parent)
    : QTableView(parent), m_catalogue(catalogue), m_model(new GridModel(this)) {
    setObjectName(QStringLiteral("DataGrid1"));
    setModel(m_model);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setAlternatingRowColors(true);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 4);
    QHeaderView* header = horizontalHeader();
    header->setSectionsMovable(true);
    header->setSectionsClickable(true);
    header->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(header, &QHeaderView::sectionClicked, this, [this](int logical) {
        emit sortRequested(m_model->headerData(logical, Qt::Horizontal).toString());
    });
    connect(header, &QHeaderView::sectionMoved, this, [this] { OnSectionMoved(); });
    connect(header, &QHeaderView::sectionResized, this, &JobGrid::OnSectionResized);
    connect(header, &QHeaderView::customContextMenuRequested, this, [this](const QPoint& at) {
        QMenu* menu = ColumnMenu(this);
        menu->exec(horizontalHeader()->mapToGlobal(at));
        menu->deleteLater();
    });
}

void JobGrid::SetTable(jobview::GridTable table) {
    m_applying = true;
    m_model->SetTable(std::move(table));
    // The model's columns come in the catalogue's order, so the heading's
    // sections go back to model order (a moved section would otherwise be
    // moved twice); the widths are set again from the catalogue.
    QHeaderView* header = horizontalHeader();
    {
        const QSignalBlocker block(header);
        for (int logical = 0; logical < header->count(); ++logical) {
            const int visual = header->visualIndex(logical);
            if (visual != logical) header->moveSection(visual, logical);
        }
    }
    for (int c = 0; c < m_model->columnCount(); ++c) {
        const stationdb::DisplayField* field = FieldOfCaption(m_model->headerData(c, Qt::Horizontal).toString());
        if (field != nullptr && field->width > 0) setColumnWidth(c, field->width);
    }
    m_applying = false;
}

stationdb::DisplayField* JobGrid::FieldOfCaption(const QString& caption) {
    const std::string text = caption.toStdString();
    for (stationdb::DisplayField& field : m_catalogue.fields) {
        if (field.caption == text) return &field;
    }
    return nullptr;
}

void JobGrid::OnSectionMoved() {
    const QHeaderView* header = horizontalHeader();
    for (int visual = 0; visual < header->count(); ++visual) {
        const int logical = header->logicalIndex(visual);
        if (stationdb::DisplayField* field = FieldOfCaption(m_model->headerData(logical, Qt::Horizontal).toString())) {
            field->position = static_cast<std::uint8_t>(visual);
        }
    }
    // Read again once the heading has finished its move.
    QMetaObject::invokeMethod(this, [this] { emit columnsChanged(); }, Qt::QueuedConnection);
}

void JobGrid::OnSectionResized(int logical, int, int newSize) {
    if (m_applying) return;
    if (stationdb::DisplayField* field = FieldOfCaption(m_model->headerData(logical, Qt::Horizontal).toString())) {
        field->width = static_cast<std::int16_t>(std::clamp(newSize, 0, 32767));
    }
}

bool JobGrid::SetColumnVisible(const QString& caption, bool visible) {
    stationdb::DisplayField* field = FieldOfCaption(caption);
    if (field == nullptr) return false;
    if (field->visible == visible) return true;
    if (!visible && stationdb::VisibleFieldsInOrder(m_catalogue).size() <= 1) return false;
    if (visible) {
        // A column shown again goes to the end of the grid.
        std::uint8_t last = 0;
        for (const auto& f : stationdb::VisibleFieldsInOrder(m_catalogue)) last = std::max(last, f.position);
        field->position = static_cast<std::uint8_t>(last + 1);
    }
    field->visible = visible;
    emit columnsChanged();
    return true;
}

QMenu* JobGrid::ColumnMenu(QWidget* parent) {
    auto* menu = new QMenu(parent);
    menu->setObjectName(QStringLiteral("mnuColumns"));
    for (const stationdb::DisplayField& field : m_catalogue.fields) {
        const QString caption = QString::fromStdString(field.caption);
        QAction* action = menu->addAction(caption);
        action->setCheckable(true);
        action->setChecked(field.visible);
        connect(action, &QAction::toggled, this, [this, action, caption](bool on) {
            if (!SetColumnVisible(caption, on)) {
                const QSignalBlocker block(action);
                action->setChecked(!on);
            }
        });
    }
    return menu;
}

QString JobGrid::CurrentCaption() const {
    const QModelIndex index = currentIndex();
    if (!index.isValid()) return {};
    return m_model->headerData(index.column(), Qt::Horizontal).toString();
}

void JobGrid::ShowSortIndicator(const QString& caption, bool descending) {
    const int column = m_model->ColumnOfCaption(caption);
    horizontalHeader()->setSortIndicatorShown(column >= 0);
    if (column >= 0) horizontalHeader()->setSortIndicator(column, descending ? Qt::DescendingOrder : Qt::AscendingOrder);
}

}  // namespace qarvel::app
