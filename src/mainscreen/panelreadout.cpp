#include "mainscreen/panelreadout.h"

#include "mainscreen/colors.h"

#include <cmath>

namespace zun {

namespace {
// Below this display level an RF bar turns red.
constexpr int kRfLowLevel = 15;
} // namespace

BatteryState batteryState(int percent)
{
    switch (percent) {
    case 100:
        return {batteryText(percent), QStringLiteral("GreenBall")};
    case 80:
        return {batteryText(percent), QStringLiteral("YellowBall")};
    case 40:
        return {batteryText(percent), QStringLiteral("OrangeBall")};
    case 10:
        return {batteryText(percent), QStringLiteral("RedBall")};
    default:
        return {batteryText(0), QString()};
    }
}

int rfBarTop(int height, int level)
{
    return height - static_cast<int>(std::floor(height / 99.0 * level));
}

int audioBarTop(int height, int x)
{
    return height - static_cast<int>(std::floor(height / 129.0 * x));
}

int audioRedBoxNearEdge(int height)
{
    return audioBarTop(height, kAudioClipLevel);
}

int audioRedBoxFarEdge(int height)
{
    return audioBarTop(height, 230);
}

PanelReadout panelReadout(const LevelReading &reading)
{
    PanelReadout r;
    r.rfA = reading.rfA;
    r.rfB = reading.rfB;
    r.rfAColor = r.rfA < kRfLowLevel ? bgr::Red : bgr::Blue;
    r.rfBColor = r.rfB < kRfLowLevel ? bgr::Red : bgr::LightBlue;
    r.rfSignImage = reading.onAir ? QStringLiteral("GreenBall") : QStringLiteral("RedBall");
    if (reading.batteryPercent >= 0) {
        const BatteryState state = batteryState(reading.batteryPercent);
        r.batteryShown = true;
        r.batteryCaption = state.caption;
        r.batteryImage = state.image;
    }
    r.audioX = reading.audio;
    r.audioClip = reading.audioClip;
    return r;
}

} // namespace zun
