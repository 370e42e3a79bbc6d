#pragma once

#include <QPoint>
#include <QWidget>

#include <array>

class QGridLayout;

namespace zun {

class RcvPanel;

// The 64 receiver panels and their arrangement. Normal view shows one screen
// of 32 strips (16 columns by 2 rows), page 0 holding panels 0-31 and page 1
// panels 32-63; full view shows all 64 in 4 rows of compact strips. This is
// the only place that decides where a panel sits.
class PanelGrid : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kPanelCount = 64;
    static constexpr int kPageSize = 32;
    static constexpr int kColumns = 16;

    explicit PanelGrid(QWidget *parent = nullptr);

    // Null for an index outside 0..63.
    RcvPanel *panel(int index) const;
    int panelCount() const { return kPanelCount; }

    void setPage(int page);
    int page() const { return m_page; }
    // Panels from receiverCount on are hidden while hide is on; they keep
    // their place so the others do not move.
    void setHideUnused(bool hide, int receiverCount);
    [[nodiscard]] bool hideUnused() const { return m_hideUnused; }
    void setFullView(bool full);
    [[nodiscard]] bool fullView() const { return m_fullView; }

    // Whether a panel is part of what the grid currently shows.
    [[nodiscard]] bool isPanelShown(int index) const;

signals:
    void nameClicked(int index);
    void contextMenuRequested(int index, QPoint globalPos);
    void pilotClicked(int index);
    void muteClicked(int index);
    void moreClicked(int index);
    // Right button on the grid itself, between the panels.
    void backgroundContextMenuRequested(QPoint globalPos);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void relayout();
    void updateVisibility();
    void rescalePanels();
    int rows() const;

    std::array<RcvPanel *, kPanelCount> m_panels{};
    QGridLayout *m_grid = nullptr;
    int m_page = 0;
    bool m_hideUnused = false;
    int m_receiverCount = kPanelCount;
    bool m_fullView = false;
};

} // namespace zun
