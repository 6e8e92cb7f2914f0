#include "app/datatools/calculator_dialog.h"

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include <cmath>
#include <optional>

#include "geodesy/coordinate_text.h"
#include "geodesy/geodesy.h"

namespace qarvel::app {

namespace {

using geodesy::CoordinateAxis;

std::optional<double> Coordinate(const QLineEdit* edit, CoordinateAxis axis) {
    const auto parsed = geodesy::ParseCoordinateText(edit->text().toStdString(), axis);
    return parsed ? std::optional<double>(parsed.degrees) : std::nullopt;
}

std::optional<double> Number(const QLineEdit* edit) {
    bool ok = false;
    const double value = edit->text().trimmed().toDouble(&ok);
    return ok && std::isfinite(value) ? std::optional<double>(value) : std::nullopt;
}

QString Degrees(double value) { return QString::number(value, 'f', 6); }

QString Dms(double value) { return QString::fromStdString(geodesy::DegToDMS(value)); }

QLineEdit* Field(const QString& name, const QString& text, QWidget* parent) {
    auto* edit = new QLineEdit(text, parent);
    edit->setObjectName(name);
    edit->setClearButtonEnabled(true);
    return edit;
}

QLabel* Result(const QString& name, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setMinimumHeight(label->fontMetrics().height() * 5);
    label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    return label;
}

// A pasted "lat, lon" pair in the latitude field fills both fields.
void SplitPastedPairs(QLineEdit* lat, QLineEdit* lon) {
    QObject::connect(lat, &QLineEdit::textEdited, lat, [lat, lon](const QString& text) {
        if (const auto pair = geodesy::ParseCoordinatePair(text.toStdString())) {
            lat->setText(Degrees(pair->first));
            lon->setText(Degrees(pair->second));
        }
    });
}

QPushButton* CopyButton(QLabel* result, QWidget* parent) {
    auto* copy = new QPushButton(QObject::tr("&Copy"), parent);
    QObject::connect(copy, &QPushButton::clicked, result,
                     [result] { QApplication::clipboard()->setText(result->text()); });
    return copy;
}

}  // namespace

CalculatorDialog::CalculatorDialog(double lat, double lonWest, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmCalc"));
    setWindowTitle(tr("Calculators"));
    auto* tabs = new QTabWidget(this);
    tabs->setObjectName(QStringLiteral("tabCalc"));
    tabs->addTab(MakeRangePage(lat, lonWest), tr("Range and Bearing"));
    tabs->addTab(MakePositionPage(lat, lonWest), tr("Position"));
    tabs->addTab(MakeConvertPage(), tr("Convert"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs);
    layout->addWidget(buttons);
    UpdateRange();
    UpdatePosition();
    UpdateConvert();
}

QWidget* CalculatorDialog::MakeRangePage(double lat, double lonWest) {
    auto* page = new QWidget(this);
    auto* form = new QFormLayout(page);
    m_fromLat = Field(QStringLiteral("txtFromLat"), Degrees(lat), page);
    m_fromLon = Field(QStringLiteral("txtFromLon"), Degrees(lonWest), page);
    m_toLat = Field(QStringLiteral("txtToLat"), QString(), page);
    m_toLon = Field(QStringLiteral("txtToLon"), QString(), page);
    m_toLat->setPlaceholderText(tr("40.75, 40:45:00N or a pasted \"lat, lon\""));
    m_range = Result(QStringLiteral("lblRange"), page);
    form->addRow(tr("From latitude:"), m_fromLat);
    form->addRow(tr("From longitude:"), m_fromLon);
    form->addRow(tr("To latitude:"), m_toLat);
    form->addRow(tr("To longitude:"), m_toLon);
    form->addRow(m_range);
    form->addRow(CopyButton(m_range, page));
    for (QLineEdit* edit : {m_fromLat, m_fromLon, m_toLat, m_toLon})
        connect(edit, &QLineEdit::textChanged, this, &CalculatorDialog::UpdateRange);
    SplitPastedPairs(m_fromLat, m_fromLon);
    SplitPastedPairs(m_toLat, m_toLon);
    return page;
}

QWidget* CalculatorDialog::MakePositionPage(double lat, double lonWest) {
    auto* page = new QWidget(this);
    auto* form = new QFormLayout(page);
    m_posLat = Field(QStringLiteral("txtPosLat"), Degrees(lat), page);
    m_posLon = Field(QStringLiteral("txtPosLon"), Degrees(lonWest), page);
    m_posDistance = Field(QStringLiteral("txtPosDistance"), QStringLiteral("10"), page);
    m_posBearing = Field(QStringLiteral("txtPosBearing"), QStringLiteral("0"), page);
    m_position = Result(QStringLiteral("lblPosition"), page);
    form->addRow(tr("From latitude:"), m_posLat);
    form->addRow(tr("From longitude:"), m_posLon);
    form->addRow(tr("Distance (km):"), m_posDistance);
    form->addRow(tr("Bearing (degrees true):"), m_posBearing);
    form->addRow(m_position);
    form->addRow(CopyButton(m_position, page));
    for (QLineEdit* edit : {m_posLat, m_posLon, m_posDistance, m_posBearing})
        connect(edit, &QLineEdit::textChanged, this, &CalculatorDialog::UpdatePosition);
    SplitPastedPairs(m_posLat, m_posLon);
    return page;
}

QWidget* CalculatorDialog::MakeConvertPage() {
    auto* page = new QWidget(this);
    auto* form = new QFormLayout(page);
    m_convertText = Field(QStringLiteral("txtConvert"), QStringLiteral("40:45:30N"), page);
    m_converted = Result(QStringLiteral("lblConverted"), page);
    form->addRow(tr("Latitude or longitude:"), m_convertText);
    form->addRow(m_converted);
    form->addRow(CopyButton(m_converted, page));
    connect(m_convertText, &QLineEdit::textChanged, this, &CalculatorDialog::UpdateConvert);
    return page;
}

void CalculatorDialog::SetRangeTo(double lat, double lonWest) {
    m_toLat->setText(Degrees(lat));
    m_toLon->setText(Degrees(lonWest));
}

void CalculatorDialog::UpdateRange() {
    const auto lat1 = Coordinate(m_fromLat, CoordinateAxis::Latitude);
    const auto lon1 = Coordinate(m_fromLon, CoordinateAxis::Longitude);
    const auto lat2 = Coordinate(m_toLat, CoordinateAxis::Latitude);
    const auto lon2 = Coordinate(m_toLon, CoordinateAxis::Longitude);
    if (!lat1 || !lon1 || !lat2 || !lon2) {
        m_range->setText(tr("Enter both points."));
        return;
    }
    double north = 0, east = 0, distance = 0, bearing = 0;
    geodesy::FlatDistance(*lat1, *lon1, *lat2, *lon2, north, east);
    geodesy::DistBearing(*lat1, *lon1, *lat2, *lon2, distance, bearing);
    m_range->setText(tr("Distance: %1 km\nBearing: %2\xC2\xB0  Back bearing: %3\xC2\xB0\n"
                        "North leg: %4 km  East leg: %5 km")
                         .arg(distance, 0, 'f', 2)
                         .arg(bearing, 0, 'f', 2)
                         .arg(static_cast<double>(geodesy::BackBearing(bearing)), 0, 'f', 2)
                         .arg(north, 0, 'f', 2)
                         .arg(east, 0, 'f', 2));
}

void CalculatorDialog::UpdatePosition() {
    const auto lat = Coordinate(m_posLat, CoordinateAxis::Latitude);
    const auto lon = Coordinate(m_posLon, CoordinateAxis::Longitude);
    const auto distance = Number(m_posDistance);
    const auto bearing = Number(m_posBearing);
    if (!lat || !lon || !distance || !bearing || *distance < 0 || *distance > 5000 || *bearing < 0 || *bearing > 360) {
        m_position->setText(tr("Enter a point, a distance of 0 to 5000 km and a bearing of 0 to 360 degrees."));
        return;
    }
    // GetPosn adds its east leg to the longitude: it works east positive.
    double lat2 = 0, lonEast2 = 0;
    geodesy::GetPosn(*lat, -*lon, lat2, lonEast2, *distance, *bearing);
    const double lon2 = -lonEast2;
    m_position->setText(tr("Latitude: %1  (%2)\nLongitude: %3  (%4)\n(longitude west positive)")
                            .arg(Degrees(lat2), Dms(lat2), Degrees(lon2), Dms(lon2)));
}

void CalculatorDialog::UpdateConvert() {
    const std::string text = m_convertText->text().toStdString();
    const bool looksLongitude = text.find_first_of("EWew") != std::string::npos;
    const CoordinateAxis axis = looksLongitude ? CoordinateAxis::Longitude : CoordinateAxis::Latitude;
    const auto parsed = geodesy::ParseCoordinateText(text, axis);
    if (!parsed) {
        m_converted->setText(tr("Not a coordinate: use 40.75, 40:45:00N, 40\xC2\xB0" "45'00\"N or 40 45.0 N."));
        return;
    }
    m_converted->setText(tr("Decimal: %1\nDegrees, minutes, seconds: %2\nDegrees, decimal minutes: %3")
                             .arg(Degrees(parsed.degrees), Dms(parsed.degrees),
                                  QString::fromStdString(geodesy::DegreesDecimalMinutes(parsed.degrees, axis))));
}

}  // namespace qarvel::app
