#pragma once

#include <QColor>
#include <QFrame>
#include <QString>

namespace zun {

// A horizontal bar meter: a sunken white trough, a filled bar from the left
// and a light scale of tenths, so two meters side by side read alike.
class DetailMeter : public QFrame
{
    Q_OBJECT
public:
    explicit DetailMeter(const QString &name, int fullScale, QWidget *parent = nullptr);

    // Values above full scale fill the trough; the colour may follow the level.
    void setLevel(int level, const QColor &colour);
    int level() const { return m_level; }
    QColor colour() const { return m_colour; }
    // From this value on the trough's end is tinted as a warning zone.
    void setWarningFrom(int value) { m_warningFrom = value; }

    QSize sizeHint() const override { return {220, 20}; }
    QSize minimumSizeHint() const override { return {120, 16}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int m_fullScale;
    int m_level = 0;
    int m_warningFrom = -1;
    QColor m_colour;
};

// The squelch indicator: a short bar placed at the squelch level on a 0..99
// trough, fourteen hundredths of the width wide.
class SquelchBar : public QFrame
{
    Q_OBJECT
public:
    explicit SquelchBar(QWidget *parent = nullptr);

    void setSquelchLevel(int level);
    int squelchLevel() const { return m_level; }
    // The drawn bar in hundredths of the width, after pushing it inside 0..99.
    [[nodiscard]] int barStart() const;
    [[nodiscard]] int barEnd() const;

    QSize sizeHint() const override { return {220, 20}; }
    QSize minimumSizeHint() const override { return {120, 16}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int m_level = 0;
};

} // namespace zun
