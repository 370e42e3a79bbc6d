#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

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
    // Watches the window's own update requests; a child of the window.
    explicit FramePacer(QWidget *window);

    int framesPainted() const { return m_frames; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    int frameMillis() const;
    void paintNow();

    QWidget *m_window;
    QElapsedTimer m_sinceFrame;
    QTimer m_late;
    bool m_painting = false;
    int m_frames = 0;
};

} // namespace zun
