#include "mainscreen/panelreadout.h"

#include "link/hex.h"
#include "mainscreen/colors.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zun {

namespace {

// The reply is 1-based in the protocol; pos is the first of two characters.
int hexByteAt(QStringView reply, qsizetype pos)
{
    const qsizetype index = pos - 1;
    if (index >= reply.size())
        return 0;
    return HexToNum(reply.mid(index, 2));
}

// Below this many samples the average is still settling and is not shown.
constexpr int kBatterySettleCount = 20;
// Below this display level an RF bar turns red.
constexpr int kRfLowLevel = 15;

} // namespace

BatteryState batteryState(int x)
{
    if (x >= 17 && x <= 21)
        return {QStringLiteral("100%"), QStringLiteral("GreenBall")};
    if (x >= 22 && x <= 26)
        return {QStringLiteral("80%"), QStringLiteral("YellowBall")};
    if (x >= 27 && x <= 31)
        return {QStringLiteral("40%"), QStringLiteral("OrangeBall")};
    if (x >= 32 && x <= 35)
        return {QStringLiteral("10%"), QStringLiteral("RedBall")};
    return {QStringLiteral("OFF"), QString()};
}

int audioMeterValue(int audioRaw)
{
    int x = 0;
    if (audioRaw > 214)
        x = 214; // past full scale on purpose: a clipping signal fills the bar
    else if (audioRaw >= 86)
        x = audioRaw - 85;
    // Logarithmic-looking taper that lifts quiet signals.
    return static_cast<int>(std::floor(x * std::log(130.0) / std::log(x + 2.0)));
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
    return audioBarTop(height, kAudioClipMark);
}

int audioRedBoxFarEdge(int height)
{
    return audioBarTop(height, 230);
}

PanelReadout readPanelReply(QStringView reply, int squelch, const LevelTable &table, BatteryAverage &battery)
{
    PanelReadout r;
    r.audioRaw = hexByteAt(reply, 4);
    r.rfARaw = std::clamp(hexByteAt(reply, 6), 0, 255);
    r.rfBRaw = std::clamp(hexByteAt(reply, 8), 0, 255);
    r.batteryRaw = hexByteAt(reply, 10);

    r.rfA = table[std::size_t(r.rfARaw)];
    r.rfB = table[std::size_t(r.rfBRaw)];
    // Settings beyond -7..94 already saturate the threshold; bounding them here
    // keeps a corrupt record value from overflowing the conversion.
    r.squelchThreshold = squelchLevel(table, std::clamp(squelch, -100, 200));
    r.strongest = std::max(r.rfA, r.rfB);
    const bool onAir = r.strongest > r.squelchThreshold;

    // The battery reading means something only while the transmitter sends.
    if (onAir) {
        if (battery.count < std::numeric_limits<int>::max())
            ++battery.count;
        battery.average =
            (float(battery.count - 1) * battery.average + float(r.batteryRaw)) / float(battery.count);
        if (battery.count > kBatterySettleCount) {
            const BatteryState state = batteryState(static_cast<int>(std::floor(battery.average)) + 1);
            r.batteryShown = true;
            r.batteryCaption = state.caption;
            r.batteryImage = state.image;
        }
    }

    r.rfAColor = r.rfA < kRfLowLevel ? bgr::Red : bgr::Blue;
    r.rfBColor = r.rfB < kRfLowLevel ? bgr::Red : bgr::LightBlue;
    r.rfSignImage = onAir ? QStringLiteral("GreenBall") : QStringLiteral("RedBall");

    r.audioX = audioMeterValue(r.audioRaw);
    r.audioClip = r.audioX > kAudioClipMark;
    return r;
}

} // namespace zun
