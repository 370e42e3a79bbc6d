#include "rftools/recorderplot.h"

#include "rftools/lineraster.h"
#include "rftools/plotparts.h"

#include <QPainter>

#include <algorithm>
#include <cstring>

namespace zun {

RecorderPlot::RecorderPlot(QWidget *parent)
    : PlotCanvas(QStringLiteral("PB_RFRec"), QSize(600, 241), 0, parent),
      m_squelchLine(new SquelchLine(QStringLiteral("SQ_Line2"), this))
{
}

void RecorderPlot::clearPicture()
{
    PlotCanvas::clearPicture();
    m_traces = QImage();
}

void RecorderPlot::drawStep(const RecorderSegment &segment, const QColor &colorA, const QColor &colorB)
{
    if (ensureImages() || m_traces.size() != m_shown.size()) {
        m_traces = QImage(m_shown.size(), QImage::Format_ARGB32_Premultiplied);
        m_traces.setDevicePixelRatio(m_shown.devicePixelRatio());
        m_traces.fill(Qt::transparent);
    }
    // Whatever a step that is not shown draws is thrown away with its surface,
    // so there is nothing to do for it.
    if (!segment.present)
        return;

    if (segment.scroll > 0)
        scrollLeft(segment.scroll);
    rasterLine(m_traces, toDevice(segment.fromX, segment.fromYA), toDevice(segment.toX, segment.toYA),
               colorA.rgb());
    rasterLine(m_traces, toDevice(segment.fromX, segment.fromYB), toDevice(segment.toX, segment.toYB),
               colorB.rgb());
    compose();
    update();
}

void RecorderPlot::compose()
{
    m_shown = m_background.copy();
    QPainter p(&m_shown);
    p.drawImage(QPointF(0, 0), m_traces);
}

void RecorderPlot::scrollLeft(int columns)
{
    const int w = m_traces.width();
    const int h = m_traces.height();
    const int s = std::clamp(toDevice(columns), 0, w);
    if (s == 0)
        return;
    uchar *bits = m_traces.bits();
    const qsizetype line = m_traces.bytesPerLine();
    const qsizetype row = static_cast<qsizetype>(w) * 4;
    const qsizetype shift = static_cast<qsizetype>(s) * 4;
    // History moves left by s columns in one copy over the whole layer (rows
    // are contiguous); what falls off the left edge is gone.
    if (line == row)
        std::memmove(bits, bits + shift, static_cast<std::size_t>(line * h - shift));
    else
        for (int y = 0; y < h; ++y)
            std::memmove(bits + y * line, bits + y * line + shift, static_cast<std::size_t>(row - shift));
    // The freed columns on the right are empty again.
    for (int y = 0; y < h; ++y)
        std::memset(bits + y * line + (row - shift), 0, static_cast<std::size_t>(shift));
}

} // namespace zun
