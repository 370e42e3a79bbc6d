#pragma once

#include <QMouseEvent>
#include <QRect>

#include <optional>

namespace zun {

// A press and a release of the same button inside the widget make a click;
// dragging off before letting go cancels it, as with a button.
class ClickFilter
{
public:
    void press(QMouseEvent *event)
    {
        m_pressed = event->button();
        event->accept();
    }

    // The button clicked, or nothing when the release does not finish a click.
    [[nodiscard]] std::optional<Qt::MouseButton> release(QMouseEvent *event, const QRect &inside)
    {
        const Qt::MouseButton button = event->button();
        const bool same = button == m_pressed;
        m_pressed = Qt::NoButton;
        event->accept();
        if (same && inside.contains(event->position().toPoint()))
            return button;
        return std::nullopt;
    }

private:
    Qt::MouseButton m_pressed = Qt::NoButton;
};

} // namespace zun
