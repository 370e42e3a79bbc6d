#include "mainscreen/panelgrid.h"

#include "mainscreen/rcvpanel.h"

#include <QGridLayout>
#include <QMouseEvent>

#include <algorithm>

namespace zun {

namespace {

// Strip size the panel's type sizes were designed for; larger strips (big
// screens without desktop scaling) get proportionally larger type.
constexpr qreal kDesignStripWidth = 80.0;
constexpr qreal kDesignStripHeight = 330.0;
constexpr qreal kDesignCompactHeight = 190.0;

} // namespace

PanelGrid::PanelGrid(QWidget *parent) : QWidget(parent)
{
    // The panels' container; the name is what the page switch re-orders.
    setObjectName(QStringLiteral("Frame1"));
    setAccessibleDescription(QStringLiteral("Frame1"));

    m_grid = new QGridLayout(this);
    m_grid->setContentsMargins(6, 6, 6, 6);
    m_grid->setSpacing(4);

    for (int i = 0; i < kPanelCount; ++i) {
        auto *p = new RcvPanel(i, this);
        // Hidden panels keep their cell so a half-empty screen keeps its order.
        QSizePolicy policy = p->sizePolicy();
        policy.setRetainSizeWhenHidden(true);
        p->setSizePolicy(policy);
        m_panels[std::size_t(i)] = p;
        connect(p, &RcvPanel::nameClicked, this, &PanelGrid::nameClicked);
        connect(p, &RcvPanel::contextMenuRequested, this, &PanelGrid::contextMenuRequested);
        connect(p, &RcvPanel::pilotClicked, this, &PanelGrid::pilotClicked);
        connect(p, &RcvPanel::muteClicked, this, &PanelGrid::muteClicked);
        connect(p, &RcvPanel::moreClicked, this, &PanelGrid::moreClicked);
    }
    relayout();
}

RcvPanel *PanelGrid::panel(int index) const
{
    if (index < 0 || index >= kPanelCount)
        return nullptr;
    return m_panels[std::size_t(index)];
}

void PanelGrid::setPage(int page)
{
    page = std::clamp(page, 0, kPanelCount / kPageSize - 1);
    if (page == m_page)
        return;
    m_page = page;
    if (!m_fullView)
        relayout();
}

void PanelGrid::setHideUnused(bool hide, int receiverCount)
{
    m_hideUnused = hide;
    m_receiverCount = std::clamp(receiverCount, 0, kPanelCount);
    updateVisibility();
}

void PanelGrid::setFullView(bool full)
{
    if (full == m_fullView)
        return;
    m_fullView = full;
    relayout();
}

int PanelGrid::rows() const
{
    return m_fullView ? kPanelCount / kColumns : kPageSize / kColumns;
}

bool PanelGrid::isPanelShown(int index) const
{
    if (index < 0 || index >= kPanelCount)
        return false;
    const bool inView = m_fullView || index / kPageSize == m_page;
    return inView && !(m_hideUnused && index >= m_receiverCount);
}

void PanelGrid::relayout()
{
    setUpdatesEnabled(false);
    for (RcvPanel *p : m_panels)
        m_grid->removeWidget(p);

    const int first = m_fullView ? 0 : m_page * kPageSize;
    const int count = m_fullView ? kPanelCount : kPageSize;
    for (int k = 0; k < count; ++k) {
        RcvPanel *p = m_panels[std::size_t(first + k)];
        p->setCompact(m_fullView);
        m_grid->addWidget(p, k / kColumns, k % kColumns);
    }
    for (int r = 0; r < kPanelCount / kColumns; ++r)
        m_grid->setRowStretch(r, r < rows() ? 1 : 0);
    for (int c = 0; c < kColumns; ++c)
        m_grid->setColumnStretch(c, 1);
    m_grid->setSpacing(m_fullView ? 3 : 4);

    updateVisibility();
    rescalePanels();
    setUpdatesEnabled(true);
}

void PanelGrid::updateVisibility()
{
    for (int i = 0; i < kPanelCount; ++i) {
        RcvPanel *p = m_panels[std::size_t(i)];
        const bool inView = m_fullView || i / kPageSize == m_page;
        // Panels of the other page leave the layout entirely; unused ones of
        // this page are merely hidden.
        QSizePolicy policy = p->sizePolicy();
        policy.setRetainSizeWhenHidden(inView);
        p->setSizePolicy(policy);
        p->setVisible(isPanelShown(i));
    }
}

void PanelGrid::rescalePanels()
{
    const QMargins m = m_grid->contentsMargins();
    const int usable = width() - m.left() - m.right() - (kColumns - 1) * m_grid->horizontalSpacing();
    const int usableHeight = height() - m.top() - m.bottom() - (rows() - 1) * m_grid->verticalSpacing();
    const qreal stripWidth = std::max(1, usable) / qreal(kColumns);
    const qreal stripHeight = std::max(1, usableHeight) / qreal(rows());
    const qreal designHeight = m_fullView ? kDesignCompactHeight : kDesignStripHeight;
    // Never shrink type below the desktop's own size; grow with large strips.
    const qreal scale =
        std::clamp(std::min(stripWidth / kDesignStripWidth, stripHeight / designHeight), 1.0, 2.5);
    for (RcvPanel *p : m_panels)
        p->setScale(scale);
}

void PanelGrid::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    rescalePanels();
}

void PanelGrid::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::RightButton)
        emit backgroundContextMenuRequested(event->globalPosition().toPoint());
    QWidget::mouseReleaseEvent(event);
}

} // namespace zun
