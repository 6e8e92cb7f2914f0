#include "app/datatools/markers_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "core/prompt.h"
#include "geodesy/coordinate_text.h"
#include "geodesy/geodesy.h"

namespace qarvel::app {

namespace {

QString Text(double degrees) { return QString::number(degrees, 'f', 6); }

}  // namespace

std::optional<editing::Marker> AskMarker(QWidget* parent, const editing::Marker& start) {
    QDialog dialog(parent);
    dialog.setObjectName(QStringLiteral("frmMarkerEdit"));
    dialog.setWindowTitle(start.id == 0 ? QObject::tr("Add Marker") : QObject::tr("Edit Marker"));
    auto* label = new QLineEdit(QString::fromStdString(start.label), &dialog);
    label->setObjectName(QStringLiteral("txtLabel"));
    label->setMaxLength(static_cast<int>(editing::kMarkerLabelChars));
    auto* lat = new QLineEdit(Text(start.lat), &dialog);
    lat->setObjectName(QStringLiteral("txtLat"));
    auto* lon = new QLineEdit(Text(start.lon), &dialog);
    lon->setObjectName(QStringLiteral("txtLon"));
    lon->setToolTip(QObject::tr("A bare number is west longitude; 2.35E for east"));
    auto* problem = new QLabel(&dialog);
    problem->setObjectName(QStringLiteral("lblProblem"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    auto* form = new QFormLayout(&dialog);
    form->addRow(QObject::tr("Label:"), label);
    form->addRow(QObject::tr("Latitude:"), lat);
    form->addRow(QObject::tr("Longitude:"), lon);
    form->addRow(problem);
    form->addRow(buttons);
    editing::Marker result = start;
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, [&] {
        const auto la = geodesy::ParseCoordinateText(lat->text().toStdString(), geodesy::CoordinateAxis::Latitude);
        const auto lo = geodesy::ParseCoordinateText(lon->text().toStdString(), geodesy::CoordinateAxis::Longitude);
        if (!la || !lo) {
            problem->setText(QObject::tr("The %1 is not a position: use 40.75, 40:45:00N or 40 45.0 N.")
                                 .arg(!la ? QObject::tr("latitude") : QObject::tr("longitude")));
            return;
        }
        result.label = label->text().trimmed().toStdString();
        result.lat = la.degrees;
        result.lon = lo.degrees;
        if (auto why = editing::MarkerProblem(result.label, result.lat, result.lon)) {
            problem->setText(QString::fromStdString("The marker cannot be kept: " + *why + "."));
            return;
        }
        dialog.accept();
    });
    if (dialog.exec() != QDialog::Accepted) return std::nullopt;
    return result;
}

MarkersDialog::MarkersDialog(std::filesystem::path localDatabase, QWidget* parent)
    : QDialog(parent), m_local(std::move(localDatabase)) {
    setObjectName(QStringLiteral("frmMarkers"));
    setWindowTitle(tr("Markers"));
    m_table = new QTableWidget(0, 4, this);
    m_table->setObjectName(QStringLiteral("grdMarkers"));
    m_table->setHorizontalHeaderLabels({tr("Label"), tr("Latitude (\xC2\xB0N)"), tr("Longitude (\xC2\xB0W)"), tr("Set")});
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_table->verticalHeader()->hide();
    auto* add = new QPushButton(tr("&Add..."), this);
    add->setObjectName(QStringLiteral("cmdAdd"));
    auto* edit = new QPushButton(tr("&Edit..."), this);
    edit->setObjectName(QStringLiteral("cmdEdit"));
    auto* remove = new QPushButton(tr("&Delete"), this);
    remove->setObjectName(QStringLiteral("cmdDelete"));
    auto* close = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(add, &QPushButton::clicked, this, [this] { AddAt(0, 0); });
    connect(edit, &QPushButton::clicked, this, &MarkersDialog::EditSelected);
    connect(m_table, &QTableWidget::cellDoubleClicked, this, &MarkersDialog::EditSelected);
    connect(remove, &QPushButton::clicked, this, &MarkersDialog::DeleteSelected);
    connect(close, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* row = new QHBoxLayout;
    row->addWidget(add);
    row->addWidget(edit);
    row->addWidget(remove);
    row->addStretch();
    row->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_table);
    layout->addLayout(row);
    resize(560, 320);
    Reload();
}

bool MarkersDialog::Change(const std::function<void(stationdb::Database&)>& change) {
    try {
        stationdb::Database db(m_local, stationdb::OpenMode::ReadWrite);
        change(db);
    } catch (const std::exception& e) {
        core::ShowPrompt(std::string("The local database could not be changed: ") + e.what(), windowTitle().toStdString(),
                         core::PromptButtons::Ok, core::PromptIcon::Warning);
        return false;
    }
    Reload();
    emit markersChanged();
    return true;
}

void MarkersDialog::Reload() {
    m_markers.clear();
    try {
        const stationdb::Database db(m_local, stationdb::OpenMode::ReadOnly);
        m_markers = editing::ListMarkers(db);
    } catch (const std::exception&) {
        // No local database: an empty list, and Add says why it cannot add.
    }
    m_table->setRowCount(static_cast<int>(m_markers.size()));
    for (int r = 0; r < m_table->rowCount(); ++r) {
        const editing::Marker& m = m_markers[static_cast<std::size_t>(r)];
        const QStringList cells = {QString::fromStdString(m.label), Text(m.lat), Text(m.lon),
                                   QString::fromStdString(m.jdate)};
        for (int c = 0; c < cells.size(); ++c) {
            auto* item = new QTableWidgetItem(cells[c]);
            if (c == 1 || c == 2) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            m_table->setItem(r, c, item);
        }
    }
}

void MarkersDialog::AddAt(double lat, double lonWest) {
    editing::Marker start;
    start.lat = lat;
    start.lon = lonWest;
    if (const auto marker = AskMarker(this, start)) {
        Change([&](stationdb::Database& db) { editing::AddMarker(db, marker->label, marker->lat, marker->lon); });
    }
}

void MarkersDialog::EditSelected() {
    const int row = m_table->currentRow();
    if (row < 0) return;
    if (const auto marker = AskMarker(this, m_markers[static_cast<std::size_t>(row)])) {
        Change([&](stationdb::Database& db) { editing::UpdateMarker(db, *marker); });
    }
}

void MarkersDialog::DeleteSelected() {
    const int row = m_table->currentRow();
    if (row < 0) return;
    const std::int64_t id = m_markers[static_cast<std::size_t>(row)].id;
    Change([id](stationdb::Database& db) { editing::DeleteMarker(db, id); });
}

}  // namespace qarvel::app
