#pragma once

#include <QColor>
#include <QLabel>
#include <QWidget>

namespace zun {

namespace plotColors {
inline constexpr QColor kBack{12, 18, 16};
inline constexpr QColor kGrid{66, 106, 86};
inline constexpr QColor kGridMinor{56, 90, 74};
inline constexpr QColor kTrace{0, 255, 0};
inline constexpr QColor kSquelch{255, 72, 72};
inline constexpr QColor kAntennaA{255, 206, 0};
inline constexpr QColor kAntennaB{0, 190, 255};
inline constexpr QColor kMarker{255, 255, 255};
} // namespace plotColors

// A horizontal threshold line across its parent picture, one pixel high.
class SquelchLine : public QWidget
{
    Q_OBJECT
public:
    SquelchLine(const QString &name, QWidget *parent);
    // Both ends on this row of the parent.
    void setRow(int row);
    int row() const { return m_row; }
    void fitToParent();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int m_row = 0;
};

// A short legend stroke whose colour the matching trace is drawn in.
class LegendLine : public QWidget
{
    Q_OBJECT
public:
    LegendLine(const QString &name, const QColor &color, QWidget *parent = nullptr);
    QColor borderColor() const { return m_color; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_color;
};

// The scan marker: a small diamond whose lower tip sits on the cursor point.
class DiamondMarker : public QLabel
{
    Q_OBJECT
public:
    explicit DiamondMarker(QWidget *parent);
    // Top-left corner, in the parent picture's pixels.
    void placeAt(int left, int top) { move(left, top); }
};

} // namespace zun

namespace zun {

// A numeric read-out in instrument style: light digits on the plot's dark
// back colour, wide enough for its longest text.
QLabel *makeReadout(const QString &name, const QString &text, const QString &widest,
                    QWidget *parent = nullptr);

} // namespace zun
