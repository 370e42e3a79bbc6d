#include "detail/freqstep.h"

#include "core/options.h"
#include "receivers/frequency.h"

namespace zun {

namespace {
constexpr double kStepMHz = 0.025;

// Rounded exactly as the boxes print it, so that a step wraps to the edge the
// user reads and the in-band test agrees with it to the last bit.
double asShown(double mhz)
{
    return leadingValue(formatFreq(mhz));
}

// The receivers' old host stepped the box at single precision and kept the
// result as text; the raster snap after the step absorbs the difference.
QString steppedText(double mhz, double delta)
{
    const float shown = static_cast<float>(mhz);
    return numberText(static_cast<double>(shown) + delta);
}

// The band edges are compared with the stepped number as texts, which the old
// host did on purpose: both edges carry the fixed "000.000" form, so inside
// three-digit bands this is the numeric order. A number of another width
// (typed "99", "1000") sorts by its characters, and that is kept.
struct BandTexts
{
    QString start;
    QString stop;
};

BandTexts texts(const Band &band)
{
    return {formatFreq(band.startMhz), formatFreq(band.stopMhz)};
}

float kiloHertz(double mhz)
{
    return static_cast<float>(mhz * 1000.0);
}
} // namespace

Band bandFrom(double startMhz, int bandWidth)
{
    const double start = asShown(startMhz);
    return {start, asShown(start + bandWidth * kStepMHz)};
}

FrequencyEntry typedFrequency(const QString &text)
{
    return {text.isEmpty(), isNumericText(text), leadingValue(text)};
}

FrequencyEntry shownFrequency(double mhz)
{
    return {false, true, asShown(mhz)};
}

double stepFrequencyUp(double mhz, int multiplier, const Band &band)
{
    const BandTexts edges = texts(band);
    QString next = steppedText(mhz, multiplier * kStepMHz);
    if (next > edges.stop)
        next = edges.start;
    if (next < edges.start)
        next = edges.start;
    return leadingValue(next);
}

double stepFrequencyDown(double mhz, int multiplier, const Band &band)
{
    const BandTexts edges = texts(band);
    QString next = steppedText(mhz, -multiplier * kStepMHz);
    if (next > edges.stop)
        next = edges.start;
    if (next < edges.start)
        next = edges.stop;
    return leadingValue(next);
}

bool frequencyInBand(double mhz, const Band &band)
{
    const float value = kiloHertz(mhz);
    return !(value < kiloHertz(band.startMhz)) && !(value > kiloHertz(band.stopMhz));
}

} // namespace zun
