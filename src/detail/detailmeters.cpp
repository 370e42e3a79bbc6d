#include "detail/detailmeters.h"

#include <QPainter>

#include <algorithm>

namespace zun {

namespace {
void prepareTrough(QFrame *frame, const QString &name)
{
    frame->setObjectName(name);
    frame->setAccessibleDescription(name);
    frame->setFrameShape(QFrame::Panel);
    frame->setFrameShadow(QFrame::Sunken);
    frame->setLineWidth(1);
    frame->setAutoFillBackground(true);
    QPalette palette = frame->palette();
    palette.setColor(QPalette::Window, Qt::white);
    frame->setPalette(palette);
    frame->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void drawTicks(QPainter &painter, const QRect &area)
{
    painter.setPen(QColor(0, 0, 0, 40));
    for (int i = 1; i < 10; ++i) {
        const int x = area.left() + area.width() * i / 10;
        const int length = i == 5 ? area.height() / 2 : area.height() / 4;
        painter.drawLine(x, area.bottom() - length + 1, x, area.bottom());
    }
}
} // namespace

DetailMeter::DetailMeter(const QString &name, int fullScale, QWidget *parent)
    : QFrame(parent), m_fullScale(std::max(1, fullScale))
{
    prepareTrough(this, name);
}

void DetailMeter::setLevel(int level, const QColor &colour)
{
    if (level == m_level && colour == m_colour)
        return;
    m_level = level;
    m_colour = colour;
    update();
}

void DetailMeter::paintEvent(QPaintEvent *event)
{
    QFrame::paintEvent(event);
    QPainter painter(this);
    const QRect area = contentsRect().adjusted(1, 1, -1, -1);
    if (m_warningFrom >= 0) {
        const int x = area.left() + area.width() * m_warningFrom / m_fullScale;
        painter.fillRect(QRect(QPoint(x, area.top()), area.bottomRight()), QColor(255, 0, 0, 28));
    }
    const int shown = std::clamp(m_level, 0, m_fullScale);
    const int width = area.width() * shown / m_fullScale;
    if (width > 0)
        painter.fillRect(QRect(area.left(), area.top(), width, area.height()), m_colour);
    drawTicks(painter, area);
}

SquelchBar::SquelchBar(QWidget *parent) : QFrame(parent)
{
    prepareTrough(this, QStringLiteral("PB_SQ"));
}

void SquelchBar::setSquelchLevel(int level)
{
    if (level == m_level)
        return;
    m_level = level;
    update();
}

int SquelchBar::barStart() const
{
    const int start = m_level - 7;
    if (start < 0)
        return 0;
    return m_level + 7 > 99 ? 85 : start;
}

int SquelchBar::barEnd() const
{
    return barStart() + 14;
}

void SquelchBar::paintEvent(QPaintEvent *event)
{
    QFrame::paintEvent(event);
    QPainter painter(this);
    const QRect area = contentsRect().adjusted(1, 1, -1, -1);
    const double unit = area.width() / 100.0;
    const int left = area.left() + static_cast<int>(barStart() * unit);
    const int right = area.left() + static_cast<int>(barEnd() * unit);
    painter.fillRect(QRect(QPoint(left, area.top()), QPoint(right, area.bottom())), QColor(255, 128, 255));
    drawTicks(painter, area);
}

} // namespace zun
