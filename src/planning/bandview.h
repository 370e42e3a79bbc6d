#pragma once

#include <QPixmap>
#include <QWidget>

#include <utility>
#include <vector>

namespace zun {

// What the band picture shows, all in kHz.
struct BandPicture
{
    int lowKHz = 0;
    int highKHz = 0;
    std::vector<std::pair<int, int>> excludedKHz; // ranges, both ends inclusive
    std::vector<int> signalsKHz;                  // measured or another user's carriers
    // Two lanes: the line as it runs and the proposed plan (may be empty).
    std::vector<int> currentKHz;
    std::vector<bool> currentConflicted;
    std::vector<int> proposedKHz;
    std::vector<bool> proposedConflicted;
};

// The band with its carriers, their third- and fifth-order products and the
// exclusions. The wheel zooms about the pointer, a double click shows the
// whole band again. Each layer is drawn into its own pixmap when its data or
// the view changes; painting only puts the pixmaps together.
class BandView : public QWidget
{
    Q_OBJECT
public:
    explicit BandView(QWidget *parent = nullptr);

    void setPicture(const BandPicture &picture);
    // The shown part of the band; clamped to it, at least 100 kHz wide.
    void zoomTo(int lowKHz, int highKHz);
    std::pair<int, int> shownKHz() const { return {m_viewLow, m_viewHigh}; }

    QSize sizeHint() const override { return {800, 180}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    void render();
    QPixmap renderBackground() const;
    QPixmap renderProducts() const;
    QPixmap renderCarriers() const;
    double xOf(int kHz) const;
    QRect lane(int which) const;

    BandPicture m_picture;
    int m_viewLow = 0;
    int m_viewHigh = 0;
    QPixmap m_background; // scale, lanes, exclusions, signals
    QPixmap m_products;
    QPixmap m_carriers;
};

} // namespace zun
