#pragma once

#include <QString>

namespace zun {

// The receiver's tuning range, each edge in MHz as the band boxes show it:
// rounded to the kHz.
struct Band
{
    double startMhz = 0;
    double stopMhz = 0;
};

// The band from its start and its width in 25 kHz steps.
[[nodiscard]] Band bandFrom(double startMhz, int bandWidth);

// What the frequency box stands for.
struct FrequencyEntry
{
    bool empty = true;
    // Only a fully numeric text may be tuned to with Enter; the step buttons
    // take whatever number the text starts with.
    bool numeric = false;
    double mhz = 0;
};

// Text the user put into the frequency box, read as the receivers' old host
// read it: the number it starts with, 0 when none.
[[nodiscard]] FrequencyEntry typedFrequency(const QString &text);
// A frequency the window itself shows there.
[[nodiscard]] FrequencyEntry shownFrequency(double mhz);

// One press of the frequency step buttons from mhz; the result is the
// frequency to tune to, a band edge where the step left the band.
[[nodiscard]] double stepFrequencyUp(double mhz, int multiplier, const Band &band);
[[nodiscard]] double stepFrequencyDown(double mhz, int multiplier, const Band &band);

// A typed frequency is taken when it is neither below the band start nor
// above the band stop, compared in kHz at single precision.
[[nodiscard]] bool frequencyInBand(double mhz, const Band &band);

} // namespace zun
