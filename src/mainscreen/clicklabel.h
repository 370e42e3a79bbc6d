#pragma once

#include "mainscreen/clickfilter.h"

#include <QLabel>
#include <QPoint>

namespace zun {

// A label that reports clicks, with an option to shrink its font so the whole
// caption stays readable in a narrow panel instead of being cut off.
class ClickLabel : public QLabel
{
    Q_OBJECT
public:
    explicit ClickLabel(QWidget *parent = nullptr);

    void setShrinkToFit(bool on);
    [[nodiscard]] bool shrinkToFit() const { return m_shrinkToFit; }

signals:
    // A press and release inside the label; globalPos is where it was released.
    void clicked(Qt::MouseButton button, QPoint globalPos);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    ClickFilter m_click;
    bool m_shrinkToFit = false;
};

} // namespace zun
