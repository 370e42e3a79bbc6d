#include "receivers/receiver.h"

#include "receivers/frequency.h"

#include <algorithm>

namespace zun {

QString Receiver::shownName() const
{
    QString shown = name;
    while (shown.endsWith(QLatin1Char(' ')))
        shown.chop(1);
    return shown;
}

double Receiver::frequencyMHz() const
{
    return mhzFromCode(manualFreq ? manualFreqCode : channelFreqCode);
}

int Receiver::audioPercent() const
{
    return std::min(99, levels.audio * 99 / kAudioClipLevel);
}

int audioMeterFromPercent(int percent)
{
    // Rounded up, so that the percentage rounded down comes back as it was.
    return (std::clamp(percent, 0, 99) * kAudioClipLevel + 98) / 99;
}

} // namespace zun
