#include "receivers/levelreading.h"

#include <algorithm>
#include <cmath>

namespace zun {

double levelDbm(int level)
{
    // The receivers' own tools form level x 60 as a 16-bit product; 0..99 fits.
    return level * 60 / 99.0 - 107.0;
}

int detailLevel(const LevelTable &table, int raw)
{
    return table[static_cast<std::size_t>(std::clamp(raw + 5, 0, 255))];
}

int audioTaper(int audioRaw)
{
    int x = 0;
    if (audioRaw > 214)
        x = 214; // past full scale on purpose: a clipping signal fills the bar
    else if (audioRaw >= 86)
        x = audioRaw - 85;
    return static_cast<int>(std::floor(x * std::log(130.0) / std::log(x + 2.0)));
}

int batteryPercentFor(int x)
{
    if (x >= 17 && x <= 21)
        return 100;
    if (x >= 22 && x <= 26)
        return 80;
    if (x >= 27 && x <= 31)
        return 40;
    if (x >= 32 && x <= 35)
        return 10;
    return 0;
}

QString batteryText(int percent)
{
    return percent > 0 ? QString::number(percent) + QLatin1Char('%') : QStringLiteral("OFF");
}

int BatteryAverager::add(int reading)
{
    if (m_count < 32767)
        ++m_count;
    m_average = (float(m_count - 1) * m_average + float(reading)) / float(m_count);
    if (m_count <= 20)
        return -1;
    return batteryPercentFor(static_cast<int>(std::floor(m_average)) + 1);
}

LevelReading readLevels(const LevelReply &raw, int squelch, const LevelTable &table, BatteryAverager &battery)
{
    LevelReading r;
    r.raw = raw;
    r.rfA = table[static_cast<std::size_t>(std::clamp(raw.rfA, 0, 255))];
    r.rfB = table[static_cast<std::size_t>(std::clamp(raw.rfB, 0, 255))];
    // Settings beyond -7..94 already saturate the threshold; bounding them
    // keeps a corrupt record value from overflowing the conversion.
    r.squelchLevel = squelchLevel(table, std::clamp(squelch, -100, 200));
    r.onAir = std::max(r.rfA, r.rfB) > r.squelchLevel;
    if (r.onAir)
        r.batteryPercent = battery.add(raw.battery);
    r.audio = audioTaper(raw.audio);
    r.audioClip = r.audio > kAudioClipLevel;
    return r;
}

} // namespace zun
