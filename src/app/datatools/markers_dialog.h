#pragma once
// The markers window `frmMarkers`: the user's map markers in the working copy
// of the local database, listed with their positions and dates, added by a
// typed position, edited (label and position) and deleted. Each change is
// written at once into the working copy, which the program packs back into
// LocalData.fmd when it ends; jobs built afterwards within 350 km carry them.

#include <QDialog>

#include <filesystem>
#include <optional>

#include "editing/markers.h"

class QTableWidget;

namespace qarvel::app {

// Asks for a marker's label and position; the entered marker, or nullopt
// when cancelled. Problems are shown in the dialog, which stays open.
std::optional<editing::Marker> AskMarker(QWidget* parent, const editing::Marker& start);

class MarkersDialog : public QDialog {
    Q_OBJECT

public:
    MarkersDialog(std::filesystem::path localDatabase, QWidget* parent = nullptr);

    // A new marker at (lat, lonWest): asks for its label, then adds it.
    void AddAt(double lat, double lonWest);
    // The listed markers, as last read.
    const std::vector<editing::Marker>& Markers() const { return m_markers; }

signals:
    void markersChanged();

private:
    void Reload();
    void EditSelected();
    void DeleteSelected();
    // Runs one change on the local database; false (after saying why) on failure.
    bool Change(const std::function<void(stationdb::Database&)>& change);

    std::filesystem::path m_local;
    QTableWidget* m_table;
    std::vector<editing::Marker> m_markers;
};

}  // namespace qarvel::app
