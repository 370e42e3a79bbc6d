#pragma once

#include "rftools/rfscale.h"

#include <QColor>
#include <QPixmap>
#include <QWidget>

namespace zun {

// A plot picture drawn the way a strip-chart or analyser display wants it:
// the background (back colour and grid) lives in its own pixmap, rebuilt only
// when the size or pixel ratio changes; the picture shown is a second pixmap
// that drawing steps compose off-screen; painting only copies it out.
class PlotCanvas : public QWidget
{
    Q_OBJECT
public:
    PlotCanvas(const QString &name, const QSize &size, int verticalDivisions, QWidget *parent = nullptr);

    QColor backColor() const { return m_backColor; }
    PlotGeometry plotGeometry() const { return PlotGeometry::forScale(width(), height()); }

    // The picture back to its empty background.
    void clearPicture();
    // What the picture shows now (for checks and snapshots).
    QImage pictureImage();

signals:
    // The pixmaps were rebuilt; whatever was drawn must be drawn again.
    void pictureRebuilt();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

    // Makes sure the pixmaps match the widget; true when they were rebuilt.
    bool ensurePixmaps();
    QPixmap blankPixmap() const;
    qreal pixelRatio() const { return m_pixelRatio; }

    QPixmap m_background;
    QPixmap m_shown;

private:
    void paintBackground();

    QColor m_backColor;
    int m_verticalDivisions;
    qreal m_pixelRatio = 0;
};

} // namespace zun
