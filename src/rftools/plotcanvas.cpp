#include "rftools/plotcanvas.h"

#include "rftools/plotparts.h"
#include "rftools/rfnaming.h"

#include <QPaintEvent>
#include <QPainter>

#include <cmath>

namespace zun {

PlotCanvas::PlotCanvas(const QString &name, const QSize &size, int verticalDivisions, QWidget *parent)
    : QWidget(parent), m_backColor(plotColors::kBack), m_verticalDivisions(verticalDivisions)
{
    tagRfControl(this, name);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFixedSize(size);
}

QPoint PlotCanvas::toDevice(int x, int y) const
{
    if (m_pixelRatio == 1.0)
        return {x, y};
    return {static_cast<int>(std::lround(x * m_pixelRatio)), static_cast<int>(std::lround(y * m_pixelRatio))};
}

int PlotCanvas::toDevice(int length) const
{
    return static_cast<int>(std::lround(length * m_pixelRatio));
}

bool PlotCanvas::ensureImages()
{
    const qreal ratio = devicePixelRatioF();
    const QSize pixels(static_cast<int>(std::lround(width() * ratio)),
                       static_cast<int>(std::lround(height() * ratio)));
    if (ratio == m_pixelRatio && m_background.size() == pixels)
        return false;
    m_pixelRatio = ratio;
    // RGB32 is the raster backing store's own format: painting is a plain copy.
    m_background = QImage(pixels.expandedTo(QSize(1, 1)), QImage::Format_RGB32);
    m_background.setDevicePixelRatio(ratio);
    m_background.fill(m_backColor);
    paintBackground();
    m_shown = m_background.copy();
    return true;
}

void PlotCanvas::paintBackground()
{
    QPainter p(&m_background);
    const PlotGeometry g = plotGeometry();
    const int w = width();

    // Dotted lines halfway through each decade and at the divisions of the
    // horizontal axis, solid lines at the decades.
    p.setPen(QPen(plotColors::kGridMinor, 0, Qt::DotLine));
    for (int half = 16; half < 99; half += 33)
        p.drawLine(0, g.levelY(half), w - 1, g.levelY(half));
    for (int k = 1; k < m_verticalDivisions; ++k) {
        const int x = k * w / m_verticalDivisions;
        p.drawLine(x, g.levelY(99), x, g.baseLine);
    }
    p.setPen(QPen(plotColors::kGrid, 0));
    for (int decade = 0; decade <= 99; decade += 33)
        p.drawLine(0, g.levelY(decade), w - 1, g.levelY(decade));
}

void PlotCanvas::clearPicture()
{
    ensureImages();
    m_shown = m_background.copy();
    update();
}

QImage PlotCanvas::pictureImage()
{
    if (ensureImages())
        emit pictureRebuilt();
    composePending();
    return m_shown;
}

void PlotCanvas::paintEvent(QPaintEvent *event)
{
    if (ensureImages())
        emit pictureRebuilt();
    composePending();
    QPainter p(this);
    const QRect r = event->rect();
    p.drawImage(r, m_shown, QRectF(QPointF(r.topLeft()) * m_pixelRatio, QSizeF(r.size()) * m_pixelRatio));
}

void PlotCanvas::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    for (SquelchLine *line : findChildren<SquelchLine *>(Qt::FindDirectChildrenOnly))
        line->fitToParent();
    if (ensureImages())
        emit pictureRebuilt();
}

} // namespace zun
