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

    void clearPicture() override;

private:
    void scrollLeft(int columns);
    // The picture shown: the background with the traces laid over it.
    void compose();

    SquelchLine *m_squelchLine;
    // The traces alone, on a transparent layer of the picture's size. Only
    // this layer scrolls: the grid stays where it is and stays whole, where
    // scrolling it with the traces would leave the dotted lines' pattern out
    // of step with the columns filled in at the right edge.
    QImage m_traces;
};

} // namespace zun
