#pragma once
// The job display's deferred redraw (`Timer1`). Redraws are requested, not
// performed: UpdateMap asks for a repaint of the map, UpdateGrid for a
// rebuild of the study table and grid and then a repaint. Each request
// restarts one single-shot timer - 1 ms, or 1000 ms while the delay flag is
// set by a control that changes the station filter - so that many requests
// in a row give one redraw, a second after the last of several quick
// clicks. The tick does the pending work once and clears the three flags.
//
// A tick while the display is hidden leaves the work pending; Resume (when
// the display is shown) arms the timer again, so a hidden display never
// misses a rebuild.

#include <QObject>
#include <QTimer>

#include <functional>

namespace qarvel::app {

inline constexpr int kRedrawDelayMs = 1;
inline constexpr int kFilterDelayMs = 1000;

class RedrawScheduler : public QObject {
    Q_OBJECT

public:
    explicit RedrawScheduler(QObject* parent = nullptr);

    void UpdateMap();
    void UpdateGrid();
    // The next requests wait a second (a station filter control changed).
    void SetDelay(bool delay) { m_delay = delay; }
    bool Delay() const { return m_delay; }
    // Runs the pending work now if the display can take it (tests, and the
    // tick itself).
    void Tick();
    // Arms the timer again when work is pending (the display was shown).
    void Resume();
    // Drops pending work (the job was closed).
    void Cancel();

    bool MapPending() const { return m_mapPending; }
    bool GridPending() const { return m_gridPending; }
    const QTimer& Timer() const { return m_timer; }

    // Whether the display can draw now (it is visible); none: always.
    std::function<bool()> ready;

signals:
    // Rebuild `tempdisplay` and the grid (ChangeStationData, NewData).
    void rebuildGrid();
    // RepaintMap for the screen.
    void repaintMap();

private:
    void Arm();

    QTimer m_timer;
    bool m_mapPending = false;
    bool m_gridPending = false;
    bool m_delay = false;
};

}  // namespace qarvel::app
