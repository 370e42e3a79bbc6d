#include "rftools/plotcanvas.h"

#include "rftools/plotparts.h"
#include "rftools/rfnaming.h"

#include <QPaintEvent>
#include <QPainter>

namespace zun {

PlotCanvas::PlotCanvas(const QString &name, const QSize &size, int verticalDivisions, QWidget *parent)
    : QWidget(parent), m_backColor(plotColors::kBack), m_verticalDivisions(verticalDivisions)
{
    tagRfControl(this, name);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFixedSize(size);
}

QPixmap PlotCanvas::blankPixmap() const
{
    QPixmap pixmap(size() * m_pixelRatio);
    pixmap.setDevicePixelRatio(m_pixelRatio);
    pixmap.fill(m_backColor);
    return pixmap;
}

bool PlotCanvas::ensurePixmaps()
{
    const qreal ratio = devicePixelRatioF();
    if (ratio == m_pixelRatio && m_background.deviceIndependentSize().toSize() == size())
        return false;
    m_pixelRatio = ratio;
    m_background = blankPixmap();
    paintBackground();
    m_shown = m_background.copy();
    m_shown.setDevicePixelRatio(m_pixelRatio);
    return true;
}

void PlotCanvas::paintBackground()
{
    QPainter p(&m_background);
    const PlotGeometry g = plotGeometry();
    const int w = width();

    // Dotted lines halfway through each decade, solid lines at the decades.
    QPen minor(plotColors::kGridMinor, 0, Qt::DotLine);
    p.setPen(minor);
    for (int half = 16; half < 99; half += 33)
        p.drawLine(0, g.levelY(half), w - 1, g.levelY(half));
    if (m_verticalDivisions > 1) {
        for (int k = 1; k < m_verticalDivisions; ++k) {
            const int x = k * w / m_verticalDivisions;
            p.drawLine(x, g.levelY(99), x, g.baseLine);
        }
    }
    p.setPen(QPen(plotColors::kGrid, 0));
    for (int decade = 0; decade <= 99; decade += 33)
        p.drawLine(0, g.levelY(decade), w - 1, g.levelY(decade));
}

void PlotCanvas::clearPicture()
{
    ensurePixmaps();
    m_shown = m_background.copy();
    m_shown.setDevicePixelRatio(m_pixelRatio);
    update();
}

QImage PlotCanvas::pictureImage()
{
    ensurePixmaps();
    return m_shown.toImage();
}

void PlotCanvas::paintEvent(QPaintEvent *event)
{
    if (ensurePixmaps())
        emit pictureRebuilt();
    QPainter p(this);
    const QRect r = event->rect();
    p.drawPixmap(r, m_shown, QRectF(QPointF(r.topLeft()) * m_pixelRatio, QSizeF(r.size()) * m_pixelRatio));
}

void PlotCanvas::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    for (SquelchLine *line : findChildren<SquelchLine *>(Qt::FindDirectChildrenOnly))
        line->fitToParent();
    if (ensurePixmaps())
        emit pictureRebuilt();
}

} // namespace zun
