#pragma once

#include <QWidget>

namespace zun {

class ClickLabel;

// What the program is. It goes away on a click on its text or icon, or as
// soon as the user turns to another window.
class AboutWindow : public QWidget
{
    Q_OBJECT
public:
    explicit AboutWindow(QWidget *parent = nullptr);

    ClickLabel *iconLabel() const { return m_icon; }
    ClickLabel *textLabel() const { return m_text; }

protected:
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    ClickLabel *m_icon = nullptr;
    ClickLabel *m_text = nullptr;
    bool m_wasActive = false;
};

} // namespace zun
