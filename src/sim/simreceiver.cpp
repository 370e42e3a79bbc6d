#include "sim/simreceiver.h"

namespace zun {

namespace {
int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

// Preset raster inside the band: groups 8 MHz apart, channels 400 kHz apart.
constexpr int kPresetOffset = 40;
constexpr int kGroupSpacing = 320;
constexpr int kChannelSpacing = 16;
} // namespace

QByteArray simHex(int value, int width)
{
    static const char digits[] = "0123456789ABCDEF";
    QByteArray text(width, '0');
    auto v = static_cast<std::uint32_t>(value);
    for (int i = width - 1; i >= 0; --i, v /= 16u)
        text[i] = digits[v % 16u];
    return text;
}

bool simParseHex(QByteArrayView text, int &value)
{
    if (text.isEmpty() || text.size() > 7)
        return false;
    int v = 0;
    for (char c : text) {
        const int d = hexDigit(c);
        if (d < 0)
            return false;
        v = v * 16 + d;
    }
    value = v;
    return true;
}

int SimReceiver::groupLimit() const
{
    const int limit = groupTable.isEmpty() ? -1 : hexDigit(groupTable[0]);
    return limit < 1 || limit > 11 ? 11 : limit;
}

int SimReceiver::channelCount(int g) const
{
    if (g < 1 || g >= groupTable.size())
        return 16;
    const int count = hexDigit(groupTable[g]);
    return count <= 0 ? 16 : count;
}

bool SimReceiver::validPreset(int g, int c) const
{
    return g >= 1 && g <= groupLimit() && c >= 1 && c <= channelCount(g);
}

int SimReceiver::presetCode(int g, int c) const
{
    const int offset = kPresetOffset + (g - 1) * kGroupSpacing + (c - 1) * kChannelSpacing;
    return bandStartCode + (bandWidth > 0 ? offset % (bandWidth + 1) : 0);
}

int SimReceiver::tunedCode() const
{
    return manual ? manualCode : presetCode(group, channel);
}

bool SimReceiver::inBand(int code) const
{
    return code >= bandStartCode && code <= bandStartCode + bandWidth;
}

QByteArray SimReceiver::statusText() const
{
    QByteArray text = name.left(6).leftJustified(6, ' ');
    text += simHex(group, 1);
    text += simHex(channel, 1); // 16 goes out as "0"
    text += simHex(tunedCode(), 4);
    text += simHex(squelch, 2);
    text += simHex(secondLevel, 2);
    text += groupTable.left(12).leftJustified(12, '0');
    text += simHex(bandStartCode, 4);
    text += simHex(bandWidth, 4);
    text += simHex(modeDigit(), 1);
    return text;
}

} // namespace zun
