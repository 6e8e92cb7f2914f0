#include "app/jobdisplay/map_widget.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QPainter>

#include "jobview/render/map_renderer.h"
#include "jobview/station_colors.h"

namespace qarvel::app {

MapWidget::MapWidget(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("Map1"));
    setMouseTracking(true);
    setMinimumSize(200, 150);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setCursor(Qt::CrossCursor);
}

void MapWidget::SetContent(jobview::MapScene scene, const jobview::MapSettings& settings) {
    m_scene = std::move(scene);
    m_settings = settings;
    m_hasContent = true;
    Render();
}

void MapWidget::Clear() {
    m_scene = {};
    m_hasContent = false;
    m_list = {};
    Render();
}

double MapWidget::Dpi() const { return logicalDpiX() > 0 ? logicalDpiX() : 96.0; }

void MapWidget::Render() {
    const qreal ratio = devicePixelRatioF();
    const QSize pixels(std::max(1, static_cast<int>(width() * ratio)), std::max(1, static_cast<int>(height() * ratio)));
    m_image = QImage(pixels, QImage::Format_RGB32);
    m_image.setDevicePixelRatio(ratio);
    QPainter painter(&m_image);
    const QRectF area(0, 0, width(), height());
    if (m_hasContent) {
        jobview::MapRenderer renderer;
        m_list = renderer.Draw(painter, area, Dpi(), m_scene, m_settings, &m_frame);
    } else {
        painter.fillRect(area, Qt::white);
        m_frame = jobview::Rescale(m_settings.scale, jobview::PixelsToTwips(width(), Dpi()),
                                   jobview::PixelsToTwips(height(), Dpi()));
    }
    ++m_renderCount;
    update();
}

QPointF MapWidget::KmAt(const QPointF& pixel) const {
    if (width() <= 0 || height() <= 0) return {};
    const double x = m_frame.widthKm / 2.0 - pixel.x() / width() * m_frame.widthKm;
    const double y = m_frame.heightKm / 2.0 - pixel.y() / height() * m_frame.heightKm;
    return {x, y};
}

QPointF MapWidget::PixelAt(const QPointF& km) const {
    if (m_frame.widthKm <= 0 || m_frame.heightKm <= 0) return {};
    const double px = (m_frame.widthKm / 2.0 - km.x()) / m_frame.widthKm * width();
    const double py = (m_frame.heightKm / 2.0 - km.y()) / m_frame.heightKm * height();
    return {px, py};
}

void MapWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (m_image.isNull()) {
        painter.fillRect(rect(), Qt::white);
        return;
    }
    painter.drawImage(QPointF(0, 0), m_image);
    if (m_dragging && m_dragStart) {
        // The rubber line of a measurement, drawn over the cached map.
        painter.setPen(QPen(Qt::black, 1, Qt::DashLine));
        painter.drawLine(*m_dragStart, m_dragEnd);
    }
}

void MapWidget::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    Render();
    emit resized();
}

void MapWidget::contextMenuEvent(QContextMenuEvent* event) {
    const QPointF km = KmAt(event->pos());
    emit contextRequested(km.x(), km.y(), event->globalPos());
}

void MapWidget::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    m_dragStart = event->position();
    m_dragEnd = event->position();
    m_dragging = false;
}

void MapWidget::mouseMoveEvent(QMouseEvent* event) {
    const QPointF km = KmAt(event->position());
    emit pointerMoved(km.x(), km.y());
    if (!m_dragStart || !(event->buttons() & Qt::LeftButton)) return;
    m_dragEnd = event->position();
    if ((m_dragEnd - *m_dragStart).manhattanLength() >= QApplication::startDragDistance()) m_dragging = true;
    if (m_dragging) update();
}

void MapWidget::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !m_dragStart) return;
    const QPointF start = *m_dragStart;
    const bool dragged = m_dragging;
    m_dragStart.reset();
    m_dragging = false;
    update();
    if (!dragged) return;
    const QPointF a = KmAt(start);
    const QPointF b = KmAt(event->position());
    emit measured(a.x(), a.y(), b.x(), b.y());
}

void MapWidget::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    m_dragStart.reset();
    m_dragging = false;
    const QPointF km = KmAt(event->position());
    emit recentreRequested(km.x(), km.y());
}

}  // namespace qarvel::app
