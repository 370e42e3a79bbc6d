#include "detail/battery.h"

#include "mainscreen/panelreadout.h"

#include <cmath>

namespace zun {

std::optional<QString> BatteryMean::add(int reading)
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
    return batteryState(static_cast<int>(std::floor(average)) + 1).caption;
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
    return audioMeterValue(audio);
}

} // namespace zun
