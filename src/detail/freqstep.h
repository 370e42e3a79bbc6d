#pragma once

#include <QString>

namespace zun {

// One press of the frequency step buttons on the shown texts. The result is
// the new frequency as numberText() writes it, or a band box's text where it
// wrapped. The band edges are compared as texts, which works because both
// band boxes carry the fixed "000.000" form.
QString stepFrequencyUp(const QString &freqText, int multiplier, const QString &bandStart,
                        const QString &bandStop);
QString stepFrequencyDown(const QString &freqText, int multiplier, const QString &bandStart,
                          const QString &bandStop);

// A typed frequency is taken when it is neither below the band start nor
// above the band stop, compared in kHz at single precision.
bool frequencyInBand(const QString &entered, const QString &bandStart, const QString &bandStop);

} // namespace zun
