#include "rftools/recorderplot.h"

#include "rftools/lineraster.h"
#include "rftools/plotparts.h"

#include <algorithm>
#include <cstring>

namespace zun {

RecorderPlot::RecorderPlot(QWidget *parent)
    : PlotCanvas(QStringLiteral("PB_RFRec"), QSize(600, 241), 0, parent),
      m_squelchLine(new SquelchLine(QStringLiteral("SQ_Line2"), this))
{
}

void RecorderPlot::drawStep(const RecorderSegment &segment, const QColor &colorA, const QColor &colorB)
{
    ensureImages();
    // Whatever a step that is not shown draws is thrown away with its surface,
    // so there is nothing to do for it.
    if (!segment.present)
        return;

    if (segment.scroll > 0)
        scrollLeft(segment.scroll);
    rasterLine(m_shown, toDevice(segment.fromX, segment.fromYA), toDevice(segment.toX, segment.toYA),
               colorA.rgb());
    rasterLine(m_shown, toDevice(segment.fromX, segment.fromYB), toDevice(segment.toX, segment.toYB),
               colorB.rgb());
    update();
}

void RecorderPlot::scrollLeft(int columns)
{
    const int w = m_shown.width();
    const int h = m_shown.height();
    const int s = std::clamp(toDevice(columns), 0, w);
    if (s == 0)
        return;
    uchar *bits = m_shown.bits();
    const qsizetype line = m_shown.bytesPerLine();
    const qsizetype row = static_cast<qsizetype>(w) * 4;
    const qsizetype shift = static_cast<qsizetype>(s) * 4;
    // History moves left by s columns in one copy over the whole image (rows
    // are contiguous); what falls off the left edge is gone.
    if (line == row)
        std::memmove(bits, bits + shift, static_cast<std::size_t>(line * h - shift));
    else
        for (int y = 0; y < h; ++y)
            std::memmove(bits + y * line, bits + y * line + shift, static_cast<std::size_t>(row - shift));
    // The freed columns on the right get the bare background back.
    const uchar *clean = m_background.constBits();
    for (int y = 0; y < h; ++y)
        std::memcpy(bits + y * line + (row - shift), clean + y * line + (row - shift),
                    static_cast<std::size_t>(shift));
}

} // namespace zun
