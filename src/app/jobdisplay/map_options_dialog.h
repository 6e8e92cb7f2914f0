#pragma once
// The map options dialog `frmOptionsMap`: the gMapOpt... settings (grid,
// states, counties, cities and how many, markers, crosshair, scale bar,
// reduced radii) and the scale of the printed map. It edits a copy; OK
// hands the copy back, Cancel drops it.

#include <QDialog>

#include "shell/settings.h"

class QCheckBox;
class QComboBox;
class QSpinBox;

namespace qarvel::app {

class MapOptionsDialog : public QDialog {
    Q_OBJECT

public:
    explicit MapOptionsDialog(const shell::ProgramSettings& settings, QWidget* parent = nullptr);

    // The settings with the dialog's choices in place of the map options.
    shell::ProgramSettings Result() const;
    // Copies the dialog's choices into the map options of `settings`.
    void ApplyTo(shell::ProgramSettings& settings) const;

private:
    QCheckBox* AddOption(const QString& name, const QString& caption, bool checked);

    shell::ProgramSettings m_settings;
    QCheckBox* m_latLon;
    QCheckBox* m_state;
    QCheckBox* m_county;
    QCheckBox* m_cities;
    QSpinBox* m_cityCount;
    QCheckBox* m_markers;
    QCheckBox* m_crosshair;
    QCheckBox* m_scale;
    QCheckBox* m_reduceRadii;
    QComboBox* m_printScale;
};

}  // namespace qarvel::app
