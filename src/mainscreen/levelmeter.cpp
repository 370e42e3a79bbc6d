#include "mainscreen/levelmeter.h"

#include "mainscreen/colors.h"
#include "mainscreen/panelreadout.h"

#include <QPainter>

namespace zun {

namespace {

// The face sits inside a one-pixel sunken border.
constexpr int kBorder = 1;

} // namespace

LevelMeter::LevelMeter(Kind kind, QWidget *parent)
    : QWidget(parent), m_kind(kind),
      m_barColor(kind == Kind::Audio ? bgrColor(bgr::Green) : bgrColor(bgr::Blue))
{
    // Every pixel is painted each time, so Qt need not clear underneath.
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
}

void LevelMeter::setRfLevel(int level, const QColor &barColor)
{
    change(level, barColor, false);
}

void LevelMeter::setAudio(int x, bool clip)
{
    change(x, bgrColor(bgr::Green), clip);
}

void LevelMeter::setLive(bool live)
{
    const bool changed = live != m_live || m_value != 0 || m_clip;
    m_live = live;
    m_value = 0;
    m_clip = false;
    if (changed)
        update();
}

void LevelMeter::change(int value, const QColor &barColor, bool clip)
{
    if (value == m_value && barColor == m_barColor && clip == m_clip)
        return;
    m_value = value;
    m_barColor = barColor;
    m_clip = clip;
    update();
}

QSize LevelMeter::sizeHint() const
{
    const int em = fontMetrics().height();
    return QSize(std::max(8, em * 3 / 4), em * 8);
}

QSize LevelMeter::minimumSizeHint() const
{
    return QSize(std::max(6, fontMetrics().height() / 2), fontMetrics().height() * 2);
}

void LevelMeter::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    const QRect all = rect();
    const QPalette &pal = palette();

    // Sunken border: dark on top and left, light on bottom and right.
    p.fillRect(all, pal.color(QPalette::Light));
    p.fillRect(QRect(all.left(), all.top(), all.width(), kBorder), pal.color(QPalette::Mid));
    p.fillRect(QRect(all.left(), all.top(), kBorder, all.height()), pal.color(QPalette::Mid));

    const QRect face = all.adjusted(kBorder, kBorder, -kBorder, -kBorder);
    if (face.isEmpty())
        return;
    if (!m_live) {
        p.fillRect(face, pal.color(QPalette::Window).darker(104));
        return;
    }
    if (m_kind == Kind::Rf)
        paintRf(p, face);
    else
        paintAudio(p, face);
}

void LevelMeter::paintRf(QPainter &p, const QRect &face) const
{
    const int h = face.height();
    const int y = rfBarTop(h, m_value);
    // A bar from y to the bottom, white above it.
    const int top = std::clamp(y, 0, h);
    p.fillRect(QRect(face.left(), face.top() + top, face.width(), h - top), m_barColor);
    if (y > 0)
        p.fillRect(QRect(face.left(), face.top(), face.width(), top), bgrColor(bgr::White));
}

void LevelMeter::paintAudio(QPainter &p, const QRect &face) const
{
    const int h = face.height();
    const int y = audioBarTop(h, m_value);
    const int top = std::clamp(y, 0, h);
    p.fillRect(QRect(face.left(), face.top() + top, face.width(), h - top), bgrColor(bgr::Green));
    if (m_clip) {
        // From the clip mark to the far edge, which lies past the top; the
        // white fill below trims it to the bar's own height.
        const int nearEdge = std::clamp(audioRedBoxNearEdge(h), 0, h);
        const int farEdge = std::clamp(audioRedBoxFarEdge(h), 0, h);
        p.fillRect(QRect(face.left(), face.top() + farEdge, face.width(), nearEdge - farEdge),
                   bgrColor(bgr::Red));
    }
    if (y > 0)
        p.fillRect(QRect(face.left(), face.top(), face.width(), top), bgrColor(bgr::White));
}

} // namespace zun
