#include "detail/battery.h"

#include <cmath>

namespace zun {

std::optional<QString> BatteryAverage::add(int reading)
{
    if (m_count < 32767)
        ++m_count;
    m_average = ((m_count - 1) * m_average + static_cast<float>(reading)) / m_count;
    if (m_count <= 20)
        return std::nullopt;
    return batteryText(m_average);
}

QString batteryText(float average)
{
    const int x = static_cast<int>(std::floor(average)) + 1;
    if (x >= 17 && x <= 21)
        return QStringLiteral("100%");
    if (x >= 22 && x <= 26)
        return QStringLiteral("80%");
    if (x >= 27 && x <= 31)
        return QStringLiteral("40%");
    if (x >= 32 && x <= 35)
        return QStringLiteral("10%");
    return QStringLiteral("OFF");
}

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

int deviationLevel(int audio)
{
    int x = 0;
    if (audio > 214)
        x = 214;
    else if (audio >= 86)
        x = audio - 85;
    if (x == 0)
        return 0;
    return static_cast<int>(std::floor(x * std::log(130.0) / std::log(x + 2.0)));
}

double levelToDbm(int level)
{
    return level * 60 / 99.0 - 107;
}

} // namespace zun
