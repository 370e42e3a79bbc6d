#include "rftools/scanplot.h"

#include "rftools/lineraster.h"
#include "rftools/plotparts.h"

#include <QMouseEvent>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace zun {

SpectrumPlot::SpectrumPlot(QWidget *parent)
    : PlotCanvas(QStringLiteral("PB_Spec"), QSize(600, 241), 10, parent), m_diamond(new DiamondMarker(this)),
      m_squelchLine(new SquelchLine(QStringLiteral("SQ_Line1"), this))
{
    setMouseTracking(true);
    setCursor(Qt::CrossCursor);
}

void SpectrumPlot::drawTrace(const LevelArray &levels, int pointCount, double xScale)
{
    m_levels.assign(levels.begin(), levels.end()); // reuses the capacity: no allocation per point
    m_pointCount = pointCount;
    m_xScale = xScale;
    m_tracePending = true;
}

void SpectrumPlot::composePending()
{
    if (m_tracePending)
        composeTrace();
}

void SpectrumPlot::composeTrace()
{
    m_tracePending = false;
    ensureImages();
    const PlotGeometry g = plotGeometry();
    const LevelArray &levels = m_levels;
    const double xScale = m_xScale;
    const int last = std::min<int>(m_pointCount, static_cast<int>(levels.size()) - 1);

    std::array<int, 100> rows{};
    for (int v = 0; v < 100; ++v)
        rows[v] = g.levelY(v);
    auto pointAt = [&](int i) {
        const int v = levels[i];
        const int y = v >= 0 && v < 100 ? rows[v] : g.levelY(v);
        return toDevice(static_cast<int>(std::floor(i * xScale)), y);
    };

    // Two interleaved polylines, each segment spanning two points: the odd
    // points hang from the origin on the base line, the even ones from point 0.
    // This is the trace's intended look, not a shortcut.
    m_oddPoints.clear();
    m_evenPoints.clear();
    m_oddPoints.push_back(toDevice(0, g.baseLine));
    for (int i = 0; i <= last; ++i)
        (i % 2 ? m_oddPoints : m_evenPoints).push_back(pointAt(i));

    // The whole picture is redone: background first, then the traces.
    startFromBackground();
    drawReference(xScale);
    const QRgb green = plotColors::kTrace.rgb();
    rasterPolyline(m_shown, m_oddPoints.data(), static_cast<int>(m_oddPoints.size()), green);
    rasterPolyline(m_shown, m_evenPoints.data(), static_cast<int>(m_evenPoints.size()), green);
    drawHolds(last, xScale);
}

void SpectrumPlot::drawComparisonOnly(double xScale)
{
    m_tracePending = false;
    ensureImages();
    startFromBackground();
    drawReference(xScale);
    if (m_holds)
        drawHolds(static_cast<int>(m_holds->trace(HoldTraces::Max).size()) - 1, xScale);
    update();
}

void SpectrumPlot::setComparisonTraces(const HoldTraces *holds, const ReferenceTrace *reference)
{
    m_holds = holds;
    m_reference = reference;
}

void SpectrumPlot::startFromBackground()
{
    if (m_shown.size() == m_background.size() && m_shown.bytesPerLine() == m_background.bytesPerLine())
        std::memcpy(m_shown.bits(), m_background.constBits(),
                    static_cast<std::size_t>(m_background.sizeInBytes()));
    else
        m_shown = m_background.copy();
}

void SpectrumPlot::drawReference(double xScale)
{
    if (!m_reference || m_reference->empty())
        return;
    const ReferenceKey key{m_reference->data(), m_reference->size(), xScale, m_shown.size()};
    if (!(key == m_referenceKey)) {
        // A reference may hold far more points than the picture has columns;
        // drawing each on every sweep step would stall the sweep. Within a
        // column, its first, lowest, highest and last point set the same pixels.
        m_referenceKey = key;
        m_referencePoints.clear();
        const PlotGeometry g = plotGeometry();
        const auto at = [&](const QPointF &p) {
            const int level = std::clamp(static_cast<int>(std::lround(p.y())), 0, 99);
            return toDevice(static_cast<int>(std::floor(p.x() * xScale)), g.levelY(level));
        };
        const auto add = [this](QPoint p) {
            if (m_referencePoints.empty() || m_referencePoints.back() != p)
                m_referencePoints.push_back(p);
        };
        const ReferenceTrace &reference = *m_reference;
        for (std::size_t i = 0; i < reference.size();) {
            const QPoint first = at(reference[i]);
            QPoint low = first;
            QPoint high = first;
            QPoint last = first;
            bool lowFirst = true;
            for (++i; i < reference.size(); ++i) {
                const QPoint p = at(reference[i]);
                if (p.x() != first.x())
                    break;
                if (p.y() < low.y()) {
                    low = p;
                    lowFirst = false;
                }
                if (p.y() > high.y()) {
                    high = p;
                    lowFirst = true;
                }
                last = p;
            }
            add(first);
            add(lowFirst ? low : high);
            add(lowFirst ? high : low);
            add(last);
        }
    }
    const QRgb color = traceColors::kReference.rgb();
    rasterPolyline(m_shown, m_referencePoints.data(), static_cast<int>(m_referencePoints.size()), color);
    // A single point would set no pixel as a polyline.
    if (m_referencePoints.size() == 1)
        rasterLine(m_shown, m_referencePoints.front(), m_referencePoints.front() + QPoint(1, 0), color);
}

void SpectrumPlot::drawHolds(int last, double xScale)
{
    if (!m_holds)
        return;
    const PlotGeometry g = plotGeometry();
    for (auto kind : {HoldTraces::Min, HoldTraces::Max}) {
        if (!m_holds->enabled(kind))
            continue;
        const auto &trace = m_holds->trace(kind);
        const QRgb color = (kind == HoldTraces::Max ? traceColors::kMaxHold : traceColors::kMinHold).rgb();
        const int end = std::min(last, static_cast<int>(trace.size()) - 1);
        // Held points are joined across the points a coarser step skipped.
        m_runPoints.clear();
        for (int i = 0; i <= end; ++i) {
            const int v = trace[static_cast<std::size_t>(i)];
            if (v != HoldTraces::kNone)
                m_runPoints.push_back(toDevice(static_cast<int>(std::floor(i * xScale)), g.levelY(v)));
        }
        if (m_runPoints.size() == 1)
            rasterLine(m_shown, m_runPoints.front(), m_runPoints.front() + QPoint(1, 0), color);
        else
            rasterPolyline(m_shown, m_runPoints.data(), static_cast<int>(m_runPoints.size()), color);
    }
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
    const bool click =
        m_leftPressed && event->button() == Qt::LeftButton && rect().contains(event->position().toPoint());
    m_leftPressed = false;
    if (click)
        emit clicked();
}

} // namespace zun
