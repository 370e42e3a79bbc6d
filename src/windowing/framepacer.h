#pragma once

#include "platform/clock.h"

#include <QObject>
#include <QTimer>

#include <cstdint>
#include <optional>

class QWidget;

namespace zun {

// Lets a window reach the screen at most once per display refresh. Qt paints
// whenever its event loop turns and something changed, and here the loop
// turns after every exchange on the line, hundreds of times a second, while
// the screen shows some sixty pictures. Widgets still take every value at
// once; only the painting of the window waits, never longer than a refresh.
class FramePacer : public QObject
{
public:
    // Watches the window's own update requests; a child of the window. The
    // clock decides when a frame is due; the machine's unless one is given.
    explicit FramePacer(QWidget *window, const Clock *clock = nullptr);

    int framesPainted() const { return m_frames; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    int frameMillis() const;
    void paintNow();

    QWidget *m_window;
    SystemClock m_systemClock;
    const Clock &m_clock;
    std::optional<std::uint64_t> m_frameMicros; // when the last picture was painted
    QTimer m_late;
    bool m_painting = false;
    int m_frames = 0;
};

} // namespace zun
