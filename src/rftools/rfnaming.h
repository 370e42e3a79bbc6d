#pragma once

#include <QWidget>

namespace zun {

// Every named control carries its name twice: for lookups and for screen
// readers and UI automation.
inline void tagRfControl(QWidget *widget, const QString &name)
{
    widget->setObjectName(name);
    widget->setAccessibleDescription(name);
}

} // namespace zun
