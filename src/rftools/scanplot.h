#pragma once

#include "rftools/peaksort.h"
#include "rftools/plotcanvas.h"

#include <QPoint>

#include <vector>

namespace zun {

class DiamondMarker;
class SquelchLine;

// PB_Spec: the level-versus-frequency picture of the scan, with the marker
// imgDiamond and the squelch line SQ_Line1 on top.
class SpectrumPlot : public PlotCanvas
{
    Q_OBJECT
public:
    explicit SpectrumPlot(QWidget *parent = nullptr);

    // Composes the whole trace off-screen; present() shows it.
    void drawTrace(const LevelArray &levels, int pointCount, double xScale);
    void present() { update(); }

    DiamondMarker *diamond() const { return m_diamond; }
    SquelchLine *squelchLine() const { return m_squelchLine; }

signals:
    void pointerMoved(double x, Qt::MouseButtons buttons);
    void clicked();

protected:
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    DiamondMarker *m_diamond;
    SquelchLine *m_squelchLine;
    std::vector<QPoint> m_oddPoints; // kept between steps: no allocation per step
    std::vector<QPoint> m_evenPoints;
    bool m_leftPressed = false;
};

} // namespace zun
