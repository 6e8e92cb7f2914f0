#pragma once
// clsLatLon: a position with one value attached to it (a station index, a
// label, a measured figure...), as map code passes points around.

#include <cstdint>
#include <string>
#include <variant>

namespace qarvel::geodesy {

// The value a position carries: nothing yet (monostate), a flag, a whole
// number, a real number or text.
using LatLonValue = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

class clsLatLon {
  public:
    clsLatLon() = default;
    clsLatLon(double latDeg, double lonDeg, LatLonValue value = {})
        : m_lat(latDeg), m_lon(lonDeg), m_value(std::move(value)) {}

    // Latitude in degrees, positive north.
    double Lat() const { return m_lat; }
    void SetLat(double latDeg) { m_lat = latDeg; }

    // Longitude in degrees; the sign follows whatever table the point came
    // from (the station tables count positive WEST). Not converted here.
    double Lon() const { return m_lon; }
    void SetLon(double lonDeg) { m_lon = lonDeg; }

    const LatLonValue& Value() const { return m_value; }
    void SetValue(LatLonValue value) { m_value = std::move(value); }

    bool operator==(const clsLatLon&) const = default;

  private:
    double m_lat = 0.0;
    double m_lon = 0.0;
    LatLonValue m_value;
};

}  // namespace qarvel::geodesy
