#pragma once

#include <QString>
#include <QWidget>

namespace zun {

// Every named control carries its name twice: objectName for lookups, and
// the accessible description, which is what screen readers and UI robots see.
template <typename W> W *named(W *widget, const QString &name)
{
    widget->setObjectName(name);
    widget->setAccessibleDescription(name);
    return widget;
}

} // namespace zun
