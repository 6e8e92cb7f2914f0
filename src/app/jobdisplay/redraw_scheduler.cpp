#include "app/jobdisplay/redraw_scheduler.h"

namespace qarvel::app {

RedrawScheduler::RedrawScheduler(QObject* parent) : QObject(parent) {
    m_timer.setObjectName(QStringLiteral("Timer1"));
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &RedrawScheduler::Tick);
}

void RedrawScheduler::Arm() {
    m_timer.stop();
    m_timer.start(m_delay ? kFilterDelayMs : kRedrawDelayMs);
}

void RedrawScheduler::UpdateMap() {
    m_mapPending = true;
    Arm();
}

void RedrawScheduler::UpdateGrid() {
    m_gridPending = true;
    Arm();
}

void RedrawScheduler::Tick() {
    m_timer.stop();
    if (!m_mapPending && !m_gridPending) return;
    if (ready && !ready()) return;  // kept pending until Resume
    const bool grid = m_gridPending;
    // Cleared before the work, so that a request made by the work itself
    // schedules a fresh tick instead of being lost.
    m_mapPending = false;
    m_gridPending = false;
    m_delay = false;
    if (grid) emit rebuildGrid();
    emit repaintMap();
}

void RedrawScheduler::Resume() {
    if (m_mapPending || m_gridPending) Arm();
}

void RedrawScheduler::Cancel() {
    m_timer.stop();
    m_mapPending = false;
    m_gridPending = false;
    m_delay = false;
}

}  // namespace qarvel::app
