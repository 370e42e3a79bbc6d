#pragma once

#include <QColor>
#include <QWidget>

namespace zun {

// A vertical bar meter of a receiver panel. An RF meter shows a level 0..99
// in the colour it is given; the audio meter shows the tapered value 0..129
// in green, with a red box above the clip mark. The widget is repainted only
// when what it shows changes, since every poll pass sets all meters again.
class LevelMeter : public QWidget
{
    Q_OBJECT
public:
    enum class Kind { Rf, Audio };

    explicit LevelMeter(Kind kind, QWidget *parent = nullptr);

    Kind kind() const { return m_kind; }

    void setRfLevel(int level, const QColor &barColor);
    void setAudio(int x, bool clip);

    // Live: white scale with the bar. Otherwise a blank face and no bar; the
    // value is reset either way so a re-enabled meter starts empty.
    void setLive(bool live);
    [[nodiscard]] bool isLive() const { return m_live; }

    int value() const { return m_value; }
    QColor barColor() const { return m_barColor; }
    [[nodiscard]] bool clipShown() const { return m_clip; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void change(int value, const QColor &barColor, bool clip);
    void paintRf(class QPainter &p, const QRect &face) const;
    void paintAudio(class QPainter &p, const QRect &face) const;

    Kind m_kind;
    bool m_live = false;
    int m_value = 0;
    QColor m_barColor;
    bool m_clip = false;
};

} // namespace zun
