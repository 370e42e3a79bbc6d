#include "windowing/framepacer.h"

#include <QCoreApplication>
#include <QEvent>
#include <QScreen>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace zun {

FramePacer::FramePacer(QWidget *window, const Clock *clock)
    : QObject(window), m_window(window), m_clock(clock ? *clock : m_systemClock)
{
    m_late.setSingleShot(true);
    m_late.setTimerType(Qt::PreciseTimer);
    connect(&m_late, &QTimer::timeout, this, &FramePacer::paintNow);
    window->installEventFilter(this);
}

int FramePacer::frameMillis() const
{
    const QScreen *screen = m_window->screen();
    const qreal hz = screen ? screen->refreshRate() : 60.0;
    return static_cast<int>(std::lround(1000.0 / std::clamp<qreal>(hz, 24.0, 240.0)));
}

bool FramePacer::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_window || event->type() != QEvent::UpdateRequest || m_painting)
        return false;
    const std::int64_t frame = frameMillis();
    const std::uint64_t now = m_clock.nowMicros();
    const std::int64_t since =
        m_frameMicros ? static_cast<std::int64_t>((now - *m_frameMicros) / 1000) : frame;
    if (since >= frame) {
        m_frameMicros = now;
        ++m_frames;
        return false;
    }
    // Too soon after the last picture: Qt keeps the dirty region and sends no
    // second request until this one is served, so serve it when the frame is due.
    if (!m_late.isActive())
        m_late.start(static_cast<int>(frame - since));
    return true;
}

void FramePacer::paintNow()
{
    m_frameMicros = m_clock.nowMicros();
    ++m_frames;
    m_painting = true;
    QEvent request(QEvent::UpdateRequest);
    QCoreApplication::sendEvent(m_window, &request);
    m_painting = false;
}

} // namespace zun
