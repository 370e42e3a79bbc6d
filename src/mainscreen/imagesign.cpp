#include "mainscreen/imagesign.h"

#include "mainscreen/imageresources.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace zun {

ImageSign::ImageSign(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void ImageSign::setImageName(const QString &name)
{
    if (name == m_name)
        return;
    m_name = name;
    setProperty("imageName", name);
    update();
}

void ImageSign::setSide(int side)
{
    side = std::max(side, 4);
    if (side == m_side)
        return;
    m_side = side;
    updateGeometry();
    update();
}

QSize ImageSign::sizeHint() const
{
    return QSize(m_side, m_side);
}

QSize ImageSign::minimumSizeHint() const
{
    return sizeHint();
}

void ImageSign::paintEvent(QPaintEvent *)
{
    const QPixmap pixmap = namedImage(m_name);
    if (pixmap.isNull())
        return;
    QPainter p(this);
    p.setRenderHint(QPainter::SmoothPixmapTransform);
    const int side = std::min(width(), height());
    const QRect target((width() - side) / 2, (height() - side) / 2, side, side);
    if (!isEnabled())
        p.setOpacity(0.45);
    p.drawPixmap(target, pixmap);
}

void ImageSign::mousePressEvent(QMouseEvent *event)
{
    m_click.press(event);
}

void ImageSign::mouseReleaseEvent(QMouseEvent *event)
{
    if (const auto button = m_click.release(event, rect()))
        emit clicked(*button, event->globalPosition().toPoint());
}

} // namespace zun
