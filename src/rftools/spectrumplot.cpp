#include "rftools/spectrumplot.h"

#include "rftools/plotparts.h"

#include <QMouseEvent>
#include <QPainter>

#include <array>
#include <cmath>

namespace zun {

SpectrumPlot::SpectrumPlot(QWidget *parent)
    : PlotCanvas(QStringLiteral("PB_Spec"), QSize(600, 241), 10, parent),
      m_diamond(new DiamondMarker(this)), m_squelchLine(new SquelchLine(QStringLiteral("SQ_Line1"), this))
{
    setMouseTracking(true);
    setCursor(Qt::CrossCursor);
    setToolTip(QStringLiteral("Drag to read a point, click to tune the receiver there"));
}

void SpectrumPlot::drawTrace(const LevelArray &levels, int pointCount, double xScale)
{
    ensurePixmaps();
    const PlotGeometry g = plotGeometry();
    const int last = std::min<int>(pointCount, static_cast<int>(levels.size()) - 1);

    std::array<int, 100> rows{};
    for (int v = 0; v < 100; ++v)
        rows[v] = g.levelY(v);
    auto pointAt = [&](int i) {
        const int v = levels[i];
        const int y = v >= 0 && v < 100 ? rows[v] : g.levelY(v);
        return QPoint(static_cast<int>(std::floor(i * xScale)), y);
    };

    // Two interleaved polylines, each segment spanning two points: the odd
    // points hang from the origin on the base line, the even ones from point 0.
    // This is the trace's intended look, not a shortcut.
    m_oddPoints.clear();
    m_evenPoints.clear();
    m_oddPoints.emplace_back(0, g.baseLine);
    for (int i = 0; i <= last; ++i)
        (i % 2 ? m_oddPoints : m_evenPoints).push_back(pointAt(i));

    QPainter p(&m_shown);
    p.drawPixmap(0, 0, m_background);
    p.setPen(QPen(plotColors::kTrace, 0));
    p.drawPolyline(m_oddPoints.data(), static_cast<int>(m_oddPoints.size()));
    if (m_evenPoints.size() > 1)
        p.drawPolyline(m_evenPoints.data(), static_cast<int>(m_evenPoints.size()));
}

void SpectrumPlot::mouseMoveEvent(QMouseEvent *event)
{
    emit pointerMoved(event->position().x(), event->buttons());
}

void SpectrumPlot::mousePressEvent(QMouseEvent *event)
{
    m_leftPressed = event->button() == Qt::LeftButton;
}

void SpectrumPlot::mouseReleaseEvent(QMouseEvent *event)
{
    const bool click = m_leftPressed && event->button() == Qt::LeftButton && rect().contains(event->position().toPoint());
    m_leftPressed = false;
    if (click)
        emit clicked();
}

} // namespace zun
