#pragma once

#include "windowing/widgetname.h"

namespace zun {

inline void tagRfControl(QWidget *widget, const QString &name)
{
    named(widget, name);
}

} // namespace zun
