#include "rftools/recorderplot.h"

#include "rftools/plotparts.h"

#include <QPainter>

#include <algorithm>
#include <utility>

namespace zun {

RecorderPlot::RecorderPlot(QWidget *parent)
    : PlotCanvas(QStringLiteral("PB_RFRec"), QSize(600, 241), 0, parent),
      m_squelchLine(new SquelchLine(QStringLiteral("SQ_Line2"), this))
{
}

void RecorderPlot::drawStep(const RecorderSegment &segment, const QColor &colorA, const QColor &colorB)
{
    ensurePixmaps();
    // Whatever a step that is not shown draws is thrown away with its surface,
    // so there is nothing to do for it.
    if (!segment.present)
        return;

    auto drawSegments = [&](QPainter &p) {
        p.setPen(QPen(colorA, 0));
        p.drawLine(segment.fromX, segment.fromYA, segment.toX, segment.toYA);
        p.setPen(QPen(colorB, 0));
        p.drawLine(segment.fromX, segment.fromYB, segment.toX, segment.toYB);
    };

    if (segment.scroll <= 0) {
        QPainter p(&m_shown);
        drawSegments(p);
    } else {
        const qreal ratio = pixelRatio();
        const int w = width();
        const int h = height();
        const int s = std::min(segment.scroll, w);
        if (m_composed.size() != m_shown.size() || m_composed.devicePixelRatio() != ratio) {
            m_composed = QPixmap(m_shown.size());
            m_composed.setDevicePixelRatio(ratio);
        }
        QPainter p(&m_composed);
        // History moves left by s columns in one copy; what falls off the left
        // edge is gone. The freed columns on the right get the bare background.
        p.drawPixmap(QPointF(0, 0), m_shown, QRectF(s * ratio, 0, (w - s) * ratio, h * ratio));
        p.drawPixmap(QPointF(w - s, 0), m_background, QRectF((w - s) * ratio, 0, s * ratio, h * ratio));
        drawSegments(p);
        p.end();
        std::swap(m_composed, m_shown);
    }
    update();
}

} // namespace zun
