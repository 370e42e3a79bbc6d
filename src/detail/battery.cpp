#include "detail/battery.h"

namespace zun {

std::optional<QColor> batteryColour(const QString &text)
{
    if (text == QLatin1String("100%"))
        return QColor(0x00, 0xC0, 0x00);
    if (text == QLatin1String("80%"))
        return QColor(0xFF, 0xFF, 0x00);
    if (text == QLatin1String("40%"))
        return QColor(0xFF, 0x80, 0x00);
    if (text == QLatin1String("10%"))
        return QColor(0xFF, 0x00, 0x00);
    return std::nullopt;
}

} // namespace zun
