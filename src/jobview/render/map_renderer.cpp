#include "jobview/render/map_renderer.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPen>
#include <QPolygonF>
#include <QString>

#include <algorithm>

namespace qarvel::jobview {

namespace {

// Maps map user coordinates (km west, km north of the centre) to device
// pixels of the area.
class Projection {
public:
    Projection(const QRectF& area, const MapFrame& frame)
        : m_area(area),
          m_halfW(frame.widthKm / 2),
          m_halfH(frame.heightKm / 2),
          m_pxPerKmX(frame.widthKm > 0 ? area.width() / frame.widthKm : 0),
          m_pxPerKmY(frame.heightKm > 0 ? area.height() / frame.heightKm : 0) {}

    QPointF ToDevice(const KmPoint& p) const {
        return {m_area.left() + (m_halfW - p.x) * m_pxPerKmX, m_area.top() + (m_halfH - p.y) * m_pxPerKmY};
    }
    double RadiusX(double km) const { return km * m_pxPerKmX; }
    double RadiusY(double km) const { return km * m_pxPerKmY; }

private:
    QRectF m_area;
    double m_halfW, m_halfH, m_pxPerKmX, m_pxPerKmY;
};

QPen CosmeticPen(std::int32_t color, int width) {
    QPen pen(ToQColor(color));
    pen.setWidth(width);
    pen.setCosmetic(true);
    return pen;
}

void PaintText(QPainter& painter, const Projection& projection, const Primitive& p) {
    QFont font = painter.font();
    font.setPixelSize(std::max(6, static_cast<int>(projection.RadiusY(p.textHeightKm) + 0.5)));
    painter.setFont(font);
    painter.setPen(ToQColor(p.color));
    const QString text = QString::fromStdString(p.text);
    const QFontMetricsF metrics(font, painter.device());
    QPointF at = projection.ToDevice(p.points[0]);
    if (p.centred) at.rx() -= metrics.horizontalAdvance(text) / 2;
    at.ry() += (metrics.ascent() - metrics.descent()) / 2;
    painter.drawText(at, text);
}

void PaintPrimitive(QPainter& painter, const Projection& projection, const Primitive& p) {
    switch (p.shape) {
        case Shape::Polyline: {
            QPolygonF line;
            line.reserve(static_cast<qsizetype>(p.points.size()));
            for (const KmPoint& point : p.points) line << projection.ToDevice(point);
            painter.setPen(CosmeticPen(p.color, p.penWidth));
            painter.drawPolyline(line);
            break;
        }
        case Shape::Circle:
            painter.setPen(CosmeticPen(p.color, p.penWidth));
            painter.setBrush(Qt::NoBrush);
            painter.drawEllipse(projection.ToDevice(p.points[0]), projection.RadiusX(p.radiusKm),
                                projection.RadiusY(p.radiusKm));
            break;
        case Shape::Disc:
            painter.setPen(Qt::NoPen);
            painter.setBrush(ToQColor(p.color));
            painter.drawEllipse(projection.ToDevice(p.points[0]), projection.RadiusX(p.radiusKm),
                                projection.RadiusY(p.radiusKm));
            break;
        case Shape::FilledRect:
            painter.fillRect(QRectF(projection.ToDevice(p.points[0]), projection.ToDevice(p.points[1])).normalized(),
                             ToQColor(p.color));
            break;
        case Shape::Text:
            PaintText(painter, projection, p);
            break;
    }
}

}  // namespace

QColor ToQColor(std::int32_t windowsColor) {
    return QColor(RedOf(windowsColor), GreenOf(windowsColor), BlueOf(windowsColor));
}

void MapRenderer::Paint(QPainter& painter, const QRectF& area, const DisplayList& list, const MapFrame& frame) const {
    painter.save();
    painter.setClipRect(area);
    painter.fillRect(area, ToQColor(list.background));
    const Projection projection(area, frame);
    for (const Primitive& p : list.items) PaintPrimitive(painter, projection, p);
    painter.restore();
}

DisplayList MapRenderer::Draw(QPainter& painter, const QRectF& area, double dpi, const MapScene& scene,
                              const MapSettings& settings, MapFrame* frame) const {
    const MapFrame used =
        Rescale(settings.scale, PixelsToTwips(area.width(), dpi), PixelsToTwips(area.height(), dpi));
    DisplayList list = BuildDisplayList(scene, settings, used);
    Paint(painter, area, list, used);
    if (frame != nullptr) *frame = used;
    return list;
}

}  // namespace qarvel::jobview
