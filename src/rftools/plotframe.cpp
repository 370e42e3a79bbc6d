#include "rftools/plotframe.h"

#include "rftools/plotcanvas.h"

#include <QLabel>

namespace zun {

namespace {
constexpr int kLeftMargin = 40;
constexpr int kTopMargin = 18;
constexpr int kBottomMargin = 22;
constexpr int kRightMargin = 8;

QLabel *scaleLabel(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setObjectName(QStringLiteral("scale") + text);
    return label;
}
} // namespace

PlotFrame::PlotFrame(PlotCanvas *canvas, QLabel *bottomLeft, QLabel *bottomCentre, QLabel *bottomRight,
                     QWidget *parent)
    : QWidget(parent), m_canvas(canvas), m_bottomLeft(bottomLeft), m_bottomCentre(bottomCentre),
      m_bottomRight(bottomRight)
{
    m_canvas->setParent(this);
    for (QLabel *label : {m_bottomLeft, m_bottomCentre, m_bottomRight})
        if (label)
            label->setParent(this);
    m_unit = scaleLabel(QStringLiteral("uV"), this);
    const char *texts[4] = {"1", "10", "100", "1000"};
    for (int d = 0; d < 4; ++d) {
        m_decades[d] = scaleLabel(QString::fromLatin1(texts[d]), this);
        m_decades[d]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }
    setFixedSize(kLeftMargin + canvas->width() + kRightMargin, kTopMargin + canvas->height() + kBottomMargin);
    placeChildren();
}

void PlotFrame::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placeChildren();
}

void PlotFrame::placeChildren()
{
    m_canvas->move(kLeftMargin, kTopMargin);
    const auto g = m_canvas->plotGeometry();
    const int rowHeight = fontMetrics().height();
    for (int d = 0; d < 4; ++d) {
        const int y = kTopMargin + g.levelY(33 * d);
        m_decades[d]->setGeometry(0, y - rowHeight / 2, kLeftMargin - 5, rowHeight);
    }
    m_unit->setGeometry(kLeftMargin - 24, 0, 40, kTopMargin - 2);

    const int below = kTopMargin + m_canvas->height() + 3;
    const int w = m_canvas->width();
    if (m_bottomLeft) {
        m_bottomLeft->setAlignment(Qt::AlignLeft | Qt::AlignTop);
        m_bottomLeft->setGeometry(kLeftMargin, below, w / 3, rowHeight);
    }
    if (m_bottomCentre) {
        m_bottomCentre->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
        m_bottomCentre->setGeometry(kLeftMargin + w / 3, below, w - 2 * (w / 3), rowHeight);
    }
    if (m_bottomRight) {
        m_bottomRight->setAlignment(Qt::AlignRight | Qt::AlignTop);
        m_bottomRight->setGeometry(kLeftMargin + w - w / 3, below, w / 3, rowHeight);
    }
}

} // namespace zun
