#pragma once

#include "rftools/plotcanvas.h"
#include "rftools/recorderstate.h"

namespace zun {

class SquelchLine;

// PB_RFRec: the strip chart of both antennas, with the squelch line SQ_Line2.
class RecorderPlot : public PlotCanvas
{
    Q_OBJECT
public:
    explicit RecorderPlot(QWidget *parent = nullptr);

    // One step: scroll by one block copy when asked, draw both segments, show.
    // The pens take the legend colours.
    // A step that is not to be presented leaves the picture as it is.
    void drawStep(const RecorderSegment &segment, const QColor &colorA, const QColor &colorB);

    SquelchLine *squelchLine() const { return m_squelchLine; }

private:
    void scrollLeft(int columns);

    SquelchLine *m_squelchLine;
};

} // namespace zun
