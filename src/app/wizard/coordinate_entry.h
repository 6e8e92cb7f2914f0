#pragma once
// Entry of one coordinate of a target, in decimal degrees or in degrees,
// minutes and seconds, with hemisphere buttons (N/S for a latitude, E/W for
// a longitude). The value is given and read in the station tables'
// convention: latitude positive NORTH, longitude positive WEST.

#include <QWidget>

#include <optional>

class QDoubleSpinBox;
class QLineEdit;
class QRadioButton;
class QSpinBox;
class QStackedWidget;

namespace qarvel::app {

enum class CoordinateAxis { Latitude, Longitude };

// Parses decimal degrees text as the entry takes it ("40.75", " 96.5 ");
// nullopt for text that is not one finite number.
std::optional<double> ParseDecimalDegrees(const QString& text);

// Degrees from degrees, minutes and seconds: nullopt when minutes or
// seconds are not below 60 or a part is negative.
std::optional<double> DmsToDegrees(int degrees, int minutes, double seconds);

class CoordinateEntry : public QWidget {
    Q_OBJECT

public:
    // `name` prefixes the object names of the parts ("Lat": txtLatDec,
    // optLatN, ...).
    CoordinateEntry(CoordinateAxis axis, const QString& name, QWidget* parent = nullptr);

    // Decimal (true) or degree-minute-second (false) entry; the shown value
    // is carried over when switching.
    void SetDecimal(bool decimal);
    bool IsDecimal() const;

    // The value (latitude north-positive, longitude west-positive), nullopt
    // while the entry does not read as a number within the axis's range
    // (90 degrees of latitude, 180 of longitude).
    std::optional<double> Value() const;
    void SetValue(double degrees);

signals:
    void changed();

private:
    double Limit() const;

    CoordinateAxis m_axis;
    QStackedWidget* m_pages;
    QLineEdit* m_decimal;
    QSpinBox* m_degrees;
    QSpinBox* m_minutes;
    QDoubleSpinBox* m_seconds;
    QRadioButton* m_positive;  // N or W
    QRadioButton* m_negative;  // S or E
};

}  // namespace qarvel::app
