#pragma once
// The job display's map (`Map1`): paints a cached image of the map drawn by
// the one MapRenderer, so that repaints of the window (an overlapping
// dialog, the rubber line of a measurement) never redraw the map itself.
// The image is redrawn only when the content changes (Render) or the widget
// is resized.
//
// Map coordinates: x km WEST of the map centre, y km NORTH of it; the
// centre of the widget is (0, 0).
//
// Mouse: pressing starts a range-and-bearing measurement, dragging shows a
// rubber line from the start, releasing after a drag reports the two ends
// (a click without a drag measures nothing, so a double-click does not
// first pop up a zero-length measurement); a double-click reports the
// point to recentre on; every move reports the pointer's point.

#include <QImage>
#include <QPointF>
#include <QWidget>

#include <optional>

#include "jobview/display_list.h"
#include "jobview/map_model.h"

namespace qarvel::app {

class MapWidget : public QWidget {
    Q_OBJECT

public:
    explicit MapWidget(QWidget* parent = nullptr);

    // The scene and settings to draw; redraws the cached image at once.
    // The scene's arrays pointer must stay valid until the next call.
    void SetContent(jobview::MapScene scene, const jobview::MapSettings& settings);
    // Redraws the cached image with the current content and size.
    void Render();
    // Drops the content (no job): the widget shows an empty ground.
    void Clear();

    // The frame of the last drawing (scale, width and height in km).
    const jobview::MapFrame& Frame() const { return m_frame; }
    // The display list of the last drawing (its legend counts).
    const jobview::DisplayList& List() const { return m_list; }
    const QImage& Image() const { return m_image; }
    int RenderCount() const { return m_renderCount; }

    // Widget pixel -> map km (x west, y north) and back, by the last frame.
    QPointF KmAt(const QPointF& pixel) const;
    QPointF PixelAt(const QPointF& km) const;

    // Pixels per inch used to draw at true scale (567 twips to the cm).
    double Dpi() const;

signals:
    void pointerMoved(double xKm, double yKm);
    void measured(double x1Km, double y1Km, double x2Km, double y2Km);
    void recentreRequested(double xKm, double yKm);
    void resized();
    // The context menu was asked for at a point of the map (km east and north
    // of the map centre; global: screen position for the menu).
    void contextRequested(double xKm, double yKm, QPoint global);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    jobview::MapScene m_scene;
    jobview::MapSettings m_settings;
    bool m_hasContent = false;
    QImage m_image;
    jobview::MapFrame m_frame;
    jobview::DisplayList m_list;
    int m_renderCount = 0;
    std::optional<QPointF> m_dragStart;  // pixels
    QPointF m_dragEnd;
    bool m_dragging = false;
};

}  // namespace qarvel::app
