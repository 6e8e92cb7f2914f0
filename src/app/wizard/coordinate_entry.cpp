#include "app/wizard/coordinate_entry.h"

#include <QButtonGroup>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <QStackedWidget>

#include <cmath>

namespace qarvel::app {

std::optional<double> ParseDecimalDegrees(const QString& text) {
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value)) return std::nullopt;
    return value;
}

std::optional<double> DmsToDegrees(int degrees, int minutes, double seconds) {
    if (degrees < 0 || minutes < 0 || minutes >= 60 || !(seconds >= 0.0) || seconds >= 60.0) {
        return std::nullopt;
    }
    return degrees + minutes / 60.0 + seconds / 3600.0;
}

CoordinateEntry::CoordinateEntry(CoordinateAxis axis, const QString& name, QWidget* parent)
    : QWidget(parent),
      m_axis(axis),
      m_pages(new QStackedWidget(this)),
      m_decimal(new QLineEdit(this)),
      m_degrees(new QSpinBox(this)),
      m_minutes(new QSpinBox(this)),
      m_seconds(new QDoubleSpinBox(this)),
      m_positive(new QRadioButton(axis == CoordinateAxis::Latitude ? tr("N") : tr("W"), this)),
      m_negative(new QRadioButton(axis == CoordinateAxis::Latitude ? tr("S") : tr("E"), this)) {
    setObjectName(QStringLiteral("coord") + name);
    m_decimal->setObjectName(QStringLiteral("txt%1Dec").arg(name));
    m_degrees->setObjectName(QStringLiteral("txt%1Deg").arg(name));
    m_minutes->setObjectName(QStringLiteral("txt%1Min").arg(name));
    m_seconds->setObjectName(QStringLiteral("txt%1Sec").arg(name));
    m_positive->setObjectName(QStringLiteral("opt%1%2").arg(name, m_positive->text()));
    m_negative->setObjectName(QStringLiteral("opt%1%2").arg(name, m_negative->text()));
    m_decimal->setPlaceholderText(tr("degrees"));
    m_degrees->setRange(0, static_cast<int>(Limit()));
    m_degrees->setSuffix(QStringLiteral("\u00b0"));
    m_minutes->setRange(0, 59);
    m_minutes->setSuffix(QStringLiteral("'"));
    m_seconds->setRange(0.0, 59.99);
    m_seconds->setDecimals(2);
    m_seconds->setSuffix(QStringLiteral("\""));

    auto* decimalPage = new QWidget(m_pages);
    auto* decimalLayout = new QHBoxLayout(decimalPage);
    decimalLayout->setContentsMargins(0, 0, 0, 0);
    decimalLayout->addWidget(m_decimal);
    auto* dmsPage = new QWidget(m_pages);
    auto* dmsLayout = new QHBoxLayout(dmsPage);
    dmsLayout->setContentsMargins(0, 0, 0, 0);
    dmsLayout->addWidget(m_degrees);
    dmsLayout->addWidget(m_minutes);
    dmsLayout->addWidget(m_seconds);
    m_pages->addWidget(decimalPage);
    m_pages->addWidget(dmsPage);

    auto* hemisphere = new QButtonGroup(this);
    hemisphere->addButton(m_positive);
    hemisphere->addButton(m_negative);
    m_positive->setChecked(true);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pages, 1);
    layout->addWidget(m_positive);
    layout->addWidget(m_negative);

    connect(m_decimal, &QLineEdit::textChanged, this, &CoordinateEntry::changed);
    connect(m_degrees, &QSpinBox::valueChanged, this, &CoordinateEntry::changed);
    connect(m_minutes, &QSpinBox::valueChanged, this, &CoordinateEntry::changed);
    connect(m_seconds, &QDoubleSpinBox::valueChanged, this, &CoordinateEntry::changed);
    connect(m_positive, &QRadioButton::toggled, this, &CoordinateEntry::changed);
}

double CoordinateEntry::Limit() const { return m_axis == CoordinateAxis::Latitude ? 90.0 : 180.0; }

bool CoordinateEntry::IsDecimal() const { return m_pages->currentIndex() == 0; }

void CoordinateEntry::SetDecimal(bool decimal) {
    if (decimal == IsDecimal()) return;
    const std::optional<double> value = Value();
    m_pages->setCurrentIndex(decimal ? 0 : 1);
    if (value) SetValue(*value);
}

std::optional<double> CoordinateEntry::Value() const {
    std::optional<double> magnitude;
    if (IsDecimal()) {
        magnitude = ParseDecimalDegrees(m_decimal->text());
        // A minus sign typed in decimal entry reverses the hemisphere
        // button ("-96" with W chosen is 96 degrees east).
    } else {
        magnitude = DmsToDegrees(m_degrees->value(), m_minutes->value(), m_seconds->value());
    }
    if (!magnitude) return std::nullopt;
    const double value = m_positive->isChecked() ? *magnitude : -*magnitude;
    if (std::fabs(value) > Limit()) return std::nullopt;
    return value;
}

void CoordinateEntry::SetValue(double degrees) {
    const double magnitude = std::fabs(degrees);
    (degrees < 0 ? m_negative : m_positive)->setChecked(true);
    m_decimal->setText(QString::number(magnitude, 'g', 10));
    double rest = magnitude;
    int whole = static_cast<int>(std::floor(rest));
    rest = (rest - whole) * 60.0;
    int minutes = static_cast<int>(std::floor(rest));
    double seconds = std::round((rest - minutes) * 6000.0) / 100.0;
    if (seconds >= 60.0) {
        seconds -= 60.0;
        ++minutes;
    }
    if (minutes >= 60) {
        minutes -= 60;
        ++whole;
    }
    m_degrees->setValue(whole);
    m_minutes->setValue(minutes);
    m_seconds->setValue(seconds);
}

}  // namespace qarvel::app
