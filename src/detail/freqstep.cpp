#include "detail/freqstep.h"

#include "receivers/frequency.h"

namespace zun {

namespace {
constexpr double kStepMHz = 0.025;

QString steppedText(const QString &freqText, double delta)
{
    // The box is read at single precision, as the receivers' old host did;
    // the raster snap after the step absorbs the difference.
    const float shown = static_cast<float>(leadingValue(freqText));
    return numberText(static_cast<double>(shown) + delta);
}

float kiloHertz(const QString &text)
{
    return static_cast<float>(leadingValue(text) * 1000.0);
}
} // namespace

QString stepFrequencyUp(const QString &freqText, int multiplier, const QString &bandStart,
                        const QString &bandStop)
{
    QString next = steppedText(freqText, multiplier * kStepMHz);
    if (next > bandStop)
        next = bandStart;
    if (next < bandStart)
        next = bandStart;
    return next;
}

QString stepFrequencyDown(const QString &freqText, int multiplier, const QString &bandStart,
                          const QString &bandStop)
{
    QString next = steppedText(freqText, -multiplier * kStepMHz);
    if (next > bandStop)
        next = bandStart;
    if (next < bandStart)
        next = bandStop;
    return next;
}

bool frequencyInBand(const QString &entered, const QString &bandStart, const QString &bandStop)
{
    const float value = kiloHertz(entered);
    return !(value < kiloHertz(bandStart)) && !(value > kiloHertz(bandStop));
}

} // namespace zun
