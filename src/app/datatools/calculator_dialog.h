#pragma once
// The side calculators `frmCalc`, beside the study: range and bearing between
// two points (with the north and east legs), the point at a distance and
// bearing, and a position converter (decimal degrees, degrees-minutes-
// seconds, degrees and decimal minutes). Every coordinate field takes the
// common notations, and a pasted "lat, lon" pair fills both fields of its
// point. Longitudes are shown WEST positive, as in the station tables.

#include <QDialog>

class QLabel;
class QLineEdit;

namespace qarvel::app {

class CalculatorDialog : public QDialog {
    Q_OBJECT

public:
    // The first point of each calculator starts at (lat, lonWest), the job's
    // target when one is open.
    CalculatorDialog(double lat, double lonWest, QWidget* parent = nullptr);

    // Sets the second point of the range-and-bearing calculator (a point
    // picked on the map).
    void SetRangeTo(double lat, double lonWest);

private:
    QWidget* MakeRangePage(double lat, double lonWest);
    QWidget* MakePositionPage(double lat, double lonWest);
    QWidget* MakeConvertPage();
    void UpdateRange();
    void UpdatePosition();
    void UpdateConvert();

    QLineEdit* m_fromLat;
    QLineEdit* m_fromLon;
    QLineEdit* m_toLat;
    QLineEdit* m_toLon;
    QLabel* m_range;
    QLineEdit* m_posLat;
    QLineEdit* m_posLon;
    QLineEdit* m_posDistance;
    QLineEdit* m_posBearing;
    QLabel* m_position;
    QLineEdit* m_convertText;
    QLabel* m_converted;
};

}  // namespace qarvel::app
