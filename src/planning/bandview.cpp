#include "planning/bandview.h"

#include "coordination/guards.h"

#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace zun {

namespace {
constexpr int kScaleHeight = 18;
constexpr int kMinimumSpanKHz = 100;

// The products' density per pixel column of a lane.
std::vector<int> productCounts(const std::vector<int> &f, int width, int low, int high)
{
    std::vector<int> bins(static_cast<std::size_t>(std::max(width, 1)), 0);
    const double span = std::max(high - low, 1);
    const auto add = [&](long long p) {
        if (p < low || p > high)
            return;
        const auto x = static_cast<std::size_t>((p - low) / span * (width - 1));
        ++bins[std::min(x, bins.size() - 1)];
    };
    const std::size_t n = f.size();
    for (std::size_t a = 0; a < n; ++a)
        for (std::size_t b = 0; b < n; ++b) {
            if (a == b)
                continue;
            add(2LL * f[a] - f[b]);
            add(3LL * f[a] - 2LL * f[b]);
            for (std::size_t c = 0; c < n && b > a; ++c)
                if (c != a && c != b)
                    add(static_cast<long long>(f[a]) + f[b] - f[c]);
        }
    return bins;
}
} // namespace

BandView::BandView(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("picBand"));
    setAccessibleDescription(QStringLiteral("picBand"));
    setMinimumHeight(140);
    setToolTip(QStringLiteral("Wheel: zoom. Double click: the whole band."));
}

void BandView::setPicture(const BandPicture &picture)
{
    const bool sameBand = picture.lowKHz == m_picture.lowKHz && picture.highKHz == m_picture.highKHz;
    m_picture = picture;
    if (!sameBand) {
        m_viewLow = picture.lowKHz;
        m_viewHigh = picture.highKHz;
    }
    render();
}

void BandView::zoomTo(int lowKHz, int highKHz)
{
    if (m_picture.highKHz <= m_picture.lowKHz)
        return;
    const int span = std::clamp(highKHz - lowKHz, kMinimumSpanKHz, m_picture.highKHz - m_picture.lowKHz);
    lowKHz = std::clamp(lowKHz, m_picture.lowKHz, m_picture.highKHz - span);
    m_viewLow = lowKHz;
    m_viewHigh = lowKHz + span;
    render();
}

double BandView::xOf(int kHz) const
{
    const double span = std::max(m_viewHigh - m_viewLow, 1);
    return (kHz - m_viewLow) / span * (width() - 1);
}

QRect BandView::lane(int which) const
{
    const int h = (height() - kScaleHeight) / 2;
    return {0, kScaleHeight + which * h, width(), h};
}

void BandView::render()
{
    if (width() <= 0 || height() <= 0)
        return;
    m_background = renderBackground();
    m_products = renderProducts();
    m_carriers = renderCarriers();
    update();
}

QPixmap BandView::renderBackground() const
{
    QPixmap pix(size());
    pix.fill(Qt::white);
    QPainter p(&pix);
    for (const auto &[lo, hi] : m_picture.excludedKHz) {
        const QRectF r(QPointF(xOf(lo), kScaleHeight), QPointF(std::max(xOf(hi), xOf(lo) + 1), height()));
        p.fillRect(r, QColor(255, 220, 200));
    }
    p.setPen(QColor(200, 120, 0));
    for (const int s : m_picture.signalsKHz)
        p.drawLine(QPointF(xOf(s), kScaleHeight), QPointF(xOf(s), height()));
    // A tick every round step that gives about ten labels.
    const int span = std::max(m_viewHigh - m_viewLow, 1);
    int step = 25;
    for (const int s : {25, 50, 100, 250, 500, 1000, 2000, 5000, 10000, 20000, 50000, 100000})
        if (span / s >= 4)
            step = s;
    p.setPen(Qt::black);
    for (int f = (m_viewLow + step - 1) / step * step; f <= m_viewHigh; f += step) {
        const double x = xOf(f);
        p.drawLine(QPointF(x, kScaleHeight - 4), QPointF(x, kScaleHeight));
        p.drawText(QPointF(x + 2, kScaleHeight - 5), mhzText(f));
    }
    p.setPen(Qt::gray);
    for (int i = 0; i < 2; ++i) {
        const QRect r = lane(i);
        p.drawLine(r.bottomLeft(), r.bottomRight());
        p.drawText(r.adjusted(4, 2, 0, 0), Qt::AlignLeft | Qt::AlignTop,
                   i == 0 ? QStringLiteral("now") : QStringLiteral("plan"));
    }
    return pix;
}

QPixmap BandView::renderProducts() const
{
    QPixmap pix(size());
    pix.fill(Qt::transparent);
    QPainter p(&pix);
    for (int i = 0; i < 2; ++i) {
        const std::vector<int> &f = i == 0 ? m_picture.currentKHz : m_picture.proposedKHz;
        const QRect r = lane(i);
        const std::vector<int> bins = productCounts(f, width(), m_viewLow, m_viewHigh);
        const int most = std::max(1, *std::max_element(bins.begin(), bins.end()));
        p.setPen(QColor(120, 120, 200));
        for (std::size_t x = 0; x < bins.size(); ++x) {
            if (bins[x] == 0)
                continue;
            // Square root so that a few products still show beside many.
            const double h = std::sqrt(double(bins[x]) / most) * (r.height() / 2.0);
            p.drawLine(QPointF(double(x), r.bottom()), QPointF(double(x), r.bottom() - std::max(h, 1.0)));
        }
    }
    return pix;
}

QPixmap BandView::renderCarriers() const
{
    QPixmap pix(size());
    pix.fill(Qt::transparent);
    QPainter p(&pix);
    for (int i = 0; i < 2; ++i) {
        const std::vector<int> &f = i == 0 ? m_picture.currentKHz : m_picture.proposedKHz;
        const std::vector<bool> &bad = i == 0 ? m_picture.currentConflicted : m_picture.proposedConflicted;
        const QRect r = lane(i);
        for (std::size_t k = 0; k < f.size(); ++k) {
            const bool conflicted = k < bad.size() && bad[k];
            p.setPen(QPen(conflicted ? Qt::red : QColor(0, 130, 0), conflicted ? 3 : 2));
            const double x = xOf(f[k]);
            p.drawLine(QPointF(x, r.top() + r.height() / 4.0), QPointF(x, r.bottom()));
            if (conflicted)
                p.drawEllipse(QPointF(x, r.top() + r.height() / 4.0), 3, 3);
        }
    }
    return pix;
}

void BandView::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.drawPixmap(0, 0, m_background);
    p.drawPixmap(0, 0, m_products);
    p.drawPixmap(0, 0, m_carriers);
}

void BandView::resizeEvent(QResizeEvent *)
{
    render();
}

void BandView::wheelEvent(QWheelEvent *event)
{
    const int span = m_viewHigh - m_viewLow;
    const double at = m_viewLow + event->position().x() / std::max(width() - 1, 1) * span;
    const double factor = event->angleDelta().y() > 0 ? 0.5 : 2.0;
    const int newSpan = static_cast<int>(span * factor);
    const int low = static_cast<int>(at - (at - m_viewLow) * factor);
    zoomTo(low, low + newSpan);
    event->accept();
}

void BandView::mouseDoubleClickEvent(QMouseEvent *)
{
    zoomTo(m_picture.lowKHz, m_picture.highKHz);
}

} // namespace zun
