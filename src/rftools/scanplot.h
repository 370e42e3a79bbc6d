#pragma once

#include "rftools/peaksort.h"
#include "rftools/plotcanvas.h"
#include "rftools/scanstate.h"

#include <QPoint>

#include <vector>

namespace zun {

class DiamondMarker;
class SquelchLine;

// The comparison traces, each in a colour of its own against the live green.
namespace traceColors {
inline constexpr QColor kMaxHold{255, 170, 0};
inline constexpr QColor kMinHold{0, 200, 255};
inline constexpr QColor kReference{230, 110, 255};
} // namespace traceColors

// PB_Spec: the level-versus-frequency picture of the scan, with the marker
// imgDiamond and the squelch line SQ_Line1 on top.
class SpectrumPlot : public PlotCanvas
{
    Q_OBJECT
public:
    explicit SpectrumPlot(QWidget *parent = nullptr);

    // The whole trace as it now stands; present() shows it. A sweep reads
    // points faster than the screen refreshes, so the picture is composed
    // once, when it is painted or handed out, not for every point.
    void drawTrace(const LevelArray &levels, int pointCount, double xScale);
    // Only the reference and hold traces, as after Clear.
    void drawComparisonOnly(double xScale);
    // The reference goes under the live trace, the hold traces over it. The
    // owner keeps both alive as long as the plot.
    void setComparisonTraces(const HoldTraces *holds, const ReferenceTrace *reference);
    // The reference's points were replaced; it is reduced again when drawn.
    void referenceChanged() { m_referenceKey = {}; }
    // Corners of the reference as last drawn: at most four per pixel column.
    std::size_t referenceVertices() const { return m_referencePoints.size(); }
    void present() { update(); }
    void clearPicture() override
    {
        m_tracePending = false;
        PlotCanvas::clearPicture();
    }

    DiamondMarker *diamond() const { return m_diamond; }
    SquelchLine *squelchLine() const { return m_squelchLine; }

signals:
    void pointerMoved(double x, Qt::MouseButtons buttons);
    void clicked();

protected:
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

protected:
    void composePending() override;

private:
    void composeTrace();
    void startFromBackground();
    void drawReference(double xScale);
    void drawHolds(int last, double xScale);

    DiamondMarker *m_diamond;
    SquelchLine *m_squelchLine;
    std::vector<QPoint> m_oddPoints; // kept between steps: no allocation per step
    std::vector<QPoint> m_evenPoints;
    std::vector<QPoint> m_runPoints;
    const HoldTraces *m_holds = nullptr;
    const ReferenceTrace *m_reference = nullptr;
    // The reference reduced to the picture's columns, and what it was reduced for.
    struct ReferenceKey
    {
        const QPointF *data = nullptr;
        std::size_t size = 0;
        double xScale = 0;
        QSize picture;
        bool operator==(const ReferenceKey &) const = default;
    };
    ReferenceKey m_referenceKey;
    std::vector<QPoint> m_referencePoints;
    bool m_leftPressed = false;
    // The trace waiting to be composed.
    LevelArray m_levels;
    int m_pointCount = 0;
    double m_xScale = 1.0;
    bool m_tracePending = false;
};

} // namespace zun
