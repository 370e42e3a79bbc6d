#include "mainscreen/colors.h"

#include <QGuiApplication>
#include <QPalette>

namespace zun {

QColor bgrColor(quint32 bgr)
{
    return QColor(int(bgr & 0xFF), int((bgr >> 8) & 0xFF), int((bgr >> 16) & 0xFF));
}

QColor buttonFaceColor()
{
    return QGuiApplication::palette().color(QPalette::Active, QPalette::Button);
}

} // namespace zun
