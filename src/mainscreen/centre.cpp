#include "mainscreen/centre.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace zun {

void centreOnScreen(QWidget *window)
{
    QScreen *screen = window->screen();
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (!screen)
        return;
    QRect frame = window->frameGeometry();
    frame.moveCenter(screen->availableGeometry().center());
    window->move(frame.topLeft());
}

} // namespace zun
