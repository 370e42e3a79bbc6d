#include "mainscreen/clicklabel.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace zun {

ClickLabel::ClickLabel(QWidget *parent) : QLabel(parent) {}

void ClickLabel::setShrinkToFit(bool on)
{
    if (m_shrinkToFit == on)
        return;
    m_shrinkToFit = on;
    update();
}

void ClickLabel::mousePressEvent(QMouseEvent *event)
{
    m_click.press(event);
}

void ClickLabel::mouseReleaseEvent(QMouseEvent *event)
{
    if (const auto button = m_click.release(event, rect()))
        emit clicked(*button, event->globalPosition().toPoint());
}

void ClickLabel::paintEvent(QPaintEvent *event)
{
    if (!m_shrinkToFit || !pixmap().isNull()) {
        QLabel::paintEvent(event);
        return;
    }
    // The background is already filled (autoFillBackground); only the text
    // needs drawing, scaled down when the caption is wider than the label.
    const QRect area = contentsRect().adjusted(margin() + 1, margin(), -margin() - 1, -margin());
    const QString caption = text();
    if (caption.isEmpty() || area.width() <= 0)
        return;
    QFont f = font();
    const int wanted = QFontMetrics(f).horizontalAdvance(caption);
    if (wanted > area.width()) {
        const qreal size = f.pointSizeF() > 0 ? f.pointSizeF() : f.pixelSize();
        const qreal scaled = std::max(size * area.width() / wanted, size * 0.55);
        if (f.pointSizeF() > 0)
            f.setPointSizeF(scaled);
        else
            f.setPixelSize(std::max(1, int(scaled)));
    }
    QPainter p(this);
    p.setFont(f);
    p.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, foregroundRole()));
    p.drawText(area, int(alignment()) | Qt::TextSingleLine, caption);
}

} // namespace zun
