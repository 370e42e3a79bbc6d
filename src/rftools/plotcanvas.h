#pragma once

#include "rftools/rfscale.h"

#include <QColor>
#include <QImage>
#include <QWidget>

namespace zun {

// A plot picture drawn the way a strip-chart or analyser display wants it:
// the background (back colour and grid) lives in its own image, rebuilt only
// when the size or pixel ratio changes; the picture shown is a second image
// that drawing steps compose off-screen; painting only copies it out.
class PlotCanvas : public QWidget
{
    Q_OBJECT
public:
    PlotCanvas(const QString &name, const QSize &size, int verticalDivisions, QWidget *parent = nullptr);

    QColor backColor() const { return m_backColor; }
    [[nodiscard]] PlotGeometry plotGeometry() const { return PlotGeometry::forScale(width(), height()); }

    // The picture back to its empty background.
    virtual void clearPicture();
    // What the picture shows now, in device pixels.
    [[nodiscard]] QImage pictureImage();

signals:
    // The images were rebuilt; whatever was drawn must be drawn again.
    void pictureRebuilt();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

    // Makes sure the images match the widget; true when they were rebuilt.
    bool ensureImages();
    // Brings the picture up to date with drawing that was put off until it
    // is shown or handed out.
    virtual void composePending() {}
    // Widget pixels to image pixels.
    [[nodiscard]] QPoint toDevice(int x, int y) const;
    [[nodiscard]] int toDevice(int length) const;

    QImage m_background;
    QImage m_shown;

private:
    void paintBackground();

    QColor m_backColor;
    int m_verticalDivisions;
    qreal m_pixelRatio = 0;
};

} // namespace zun
