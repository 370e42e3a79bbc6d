#include "rftools/plotparts.h"

#include "rftools/rfnaming.h"

#include <QImage>
#include <QPainter>

namespace zun {

SquelchLine::SquelchLine(const QString &name, QWidget *parent) : QWidget(parent)
{
    tagRfControl(this, name);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    fitToParent();
}

void SquelchLine::setRow(int row)
{
    m_row = row;
    fitToParent();
}

void SquelchLine::fitToParent()
{
    setGeometry(0, m_row, parentWidget() ? parentWidget()->width() : 0, 1);
}

void SquelchLine::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.setPen(QPen(plotColors::kSquelch, 0, Qt::DashLine));
    p.drawLine(0, 0, width() - 1, 0);
}

LegendLine::LegendLine(const QString &name, const QColor &color, QWidget *parent)
    : QWidget(parent), m_color(color)
{
    tagRfControl(this, name);
    setFixedSize(26, 12);
}

void LegendLine::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.fillRect(QRect(0, height() / 2 - 1, width(), 3), m_color);
}

DiamondMarker::DiamondMarker(QWidget *parent) : QLabel(parent)
{
    tagRfControl(this, QStringLiteral("imgDiamond"));
    setAccessibleName(QStringLiteral("Marker"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    // Seven pixels wide so that "cursor x - 3" centres it; drawn pixel by
    // pixel to stay crisp at this size.
    QImage image(7, 7, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    for (int y = 0; y < 7; ++y) {
        const int half = 3 - std::abs(3 - y);
        for (int x = 3 - half; x <= 3 + half; ++x) {
            const bool edge = x == 3 - half || x == 3 + half;
            image.setPixelColor(x, y, edge ? QColor(255, 64, 64) : plotColors::kMarker);
        }
    }
    setPixmap(QPixmap::fromImage(image));
    setFixedSize(7, 7);
}

} // namespace zun

namespace zun {

QLabel *makeReadout(const QString &name, const QString &text, const QString &widest, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    tagRfControl(label, name);
    QFont font = label->font();
    font.setFamily(QStringLiteral("Monospace"));
    font.setStyleHint(QFont::TypeWriter);
    font.setBold(true);
    label->setFont(font);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    label->setAutoFillBackground(true);
    QPalette palette = label->palette();
    palette.setColor(QPalette::Window, plotColors::kBack);
    palette.setColor(QPalette::WindowText, QColor(150, 255, 150));
    label->setPalette(palette);
    label->setMargin(2);
    // A fixed size keeps a new reading from asking the window to lay itself
    // out again, which would repaint the whole window for every scan point.
    label->setFixedSize(QFontMetrics(font).horizontalAdvance(widest) + 12, label->sizeHint().height());
    return label;
}

} // namespace zun
