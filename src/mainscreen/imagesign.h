#pragma once

#include "mainscreen/clickfilter.h"

#include <QPoint>
#include <QString>
#include <QWidget>

namespace zun {

// A small square indicator showing one of the named pictures, scaled to its
// size so it stays sharp at any display scale. An empty name shows nothing.
class ImageSign : public QWidget
{
    Q_OBJECT
public:
    explicit ImageSign(QWidget *parent = nullptr);

    // Repaints only when the picture actually changes.
    void setImageName(const QString &name);
    QString imageName() const { return m_name; }

    void setSide(int side);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void clicked(Qt::MouseButton button, QPoint globalPos);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    QString m_name;
    int m_side = 16;
    ClickFilter m_click;
};

} // namespace zun
