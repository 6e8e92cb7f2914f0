#include "app/jobdisplay/map_options_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QSpinBox>
#include <QVBoxLayout>

#include "jobview/map_model.h"

namespace qarvel::app {

namespace {
constexpr int kMaxCityCount = 1000;
}

MapOptionsDialog::MapOptionsDialog(const shell::ProgramSettings& settings, QWidget* parent)
    : QDialog(parent), m_settings(settings) {
    setObjectName(QStringLiteral("frmOptionsMap"));
    setWindowTitle(tr("Map Options"));
    m_latLon = AddOption(QStringLiteral("chkLatLon"), tr("Latitude/longitude grid"), settings.gMapOptLatLon);
    m_state = AddOption(QStringLiteral("chkState"), tr("State borders"), settings.gMapOptState);
    m_county = AddOption(QStringLiteral("chkCounty"), tr("County borders"), settings.gMapOptCounty);
    m_cities = AddOption(QStringLiteral("chkCities"), tr("Cities"), settings.gMapOptCities);
    m_cityCount = new QSpinBox(this);
    m_cityCount->setObjectName(QStringLiteral("txtCityCount"));
    m_cityCount->setRange(0, kMaxCityCount);
    m_cityCount->setValue(settings.gMapCityCount);
    m_markers = AddOption(QStringLiteral("chkMarkers"), tr("Markers"), settings.gMapOptMarkers);
    m_crosshair = AddOption(QStringLiteral("chkCrosshair"), tr("Crosshair on the target"), settings.gMapOptCrosshair);
    m_scale = AddOption(QStringLiteral("chkScale"), tr("Scale bar"), settings.gMapOptScale);
    m_reduceRadii = AddOption(QStringLiteral("chkReduceRadii"), tr("Reduced radii (0.5 km inside the separation)"),
                              settings.gMapOptReduceRadii);
    m_printScale = new QComboBox(this);
    m_printScale->setObjectName(QStringLiteral("cboPrintScale"));
    m_printScale->setEditable(true);
    for (const std::int32_t n : jobview::kScaleTable) {
        m_printScale->addItem(QStringLiteral("1:") + QString::fromStdString(jobview::FormatScale(n)), n);
    }
    const int index = m_printScale->findData(settings.gMapPrintScale);
    if (index >= 0) m_printScale->setCurrentIndex(index);
    else m_printScale->setEditText(QStringLiteral("1:") + QString::fromStdString(jobview::FormatScale(settings.gMapPrintScale)));
    connect(m_cities, &QCheckBox::toggled, m_cityCount, &QSpinBox::setEnabled);
    m_cityCount->setEnabled(settings.gMapOptCities);

    auto* form = new QFormLayout;
    form->addRow(m_latLon);
    form->addRow(m_state);
    form->addRow(m_county);
    form->addRow(m_cities);
    form->addRow(tr("Cities labelled:"), m_cityCount);
    form->addRow(m_markers);
    form->addRow(m_crosshair);
    form->addRow(m_scale);
    form->addRow(m_reduceRadii);
    form->addRow(tr("Printed map scale:"), m_printScale);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
}

QCheckBox* MapOptionsDialog::AddOption(const QString& name, const QString& caption, bool checked) {
    auto* box = new QCheckBox(caption, this);
    box->setObjectName(name);
    box->setChecked(checked);
    return box;
}

void MapOptionsDialog::ApplyTo(shell::ProgramSettings& s) const {
    s.gMapOptLatLon = m_latLon->isChecked();
    s.gMapOptState = m_state->isChecked();
    s.gMapOptCounty = m_county->isChecked();
    s.gMapOptCities = m_cities->isChecked();
    s.gMapCityCount = static_cast<std::int16_t>(m_cityCount->value());
    s.gMapOptMarkers = m_markers->isChecked();
    s.gMapOptCrosshair = m_crosshair->isChecked();
    s.gMapOptScale = m_scale->isChecked();
    s.gMapOptReduceRadii = m_reduceRadii->isChecked();
    // A typed scale ("1:300,000" or "300000") is read by its digits; text
    // without any keeps the previous scale.
    QString digits = m_printScale->currentText();
    if (digits.startsWith(QStringLiteral("1:"))) digits = digits.mid(2);
    digits.remove(QLatin1Char(',')).remove(QLatin1Char(' '));
    bool ok = false;
    const long long typed = digits.toLongLong(&ok);
    if (ok && typed > 0 && typed <= 100000000) s.gMapPrintScale = static_cast<std::int32_t>(typed);
}

shell::ProgramSettings MapOptionsDialog::Result() const {
    shell::ProgramSettings copy = m_settings;
    ApplyTo(copy);
    return copy;
}

}  // namespace qarvel::app
