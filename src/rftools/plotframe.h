#pragma once

#include <QWidget>

class QLabel;

namespace zun {

class PlotCanvas;

// A plot picture with its scale around it: the microvolt decades on the left
// ("1" at level 0 up to "1000" at level 99, unit "uV" on top) and up to three
// labels under the picture (left edge, centre, right edge).
class PlotFrame : public QWidget
{
    Q_OBJECT
public:
    PlotFrame(PlotCanvas *canvas, QLabel *bottomLeft, QLabel *bottomCentre, QLabel *bottomRight,
              QWidget *parent = nullptr);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void placeChildren();

    PlotCanvas *m_canvas;
    QLabel *m_bottomLeft;
    QLabel *m_bottomCentre;
    QLabel *m_bottomRight;
    QLabel *m_unit;
    QLabel *m_decades[4];
};

} // namespace zun
