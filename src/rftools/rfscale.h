#pragma once

#include "receivers/levelreading.h"

#include <QString>

namespace zun {

// Where levels land on a plot picture. Both RF pictures share one height, so
// the recorder draws with the numbers computed for the spectrum picture.
struct PlotGeometry
{
    int scaleWidth = 0;
    int scaleHeight = 0;
    int baseLine = 0;   // y of level 0
    int plotHeight = 0; // pixels from level 0 to level 99
    int xOrigin = 0;

    [[nodiscard]] static PlotGeometry forScale(int scaleWidth, int scaleHeight);

    // Level 0..99 to a pixel row; rounding down keeps the trace on the pixel
    // grid the receiver's own display uses.
    [[nodiscard]] int levelY(int level) const;
};

// The receivers' level scale (levelDbm) spans three decades of 1..1000 uV,
// 33 levels each.

// The scan cursor's read-out: the decade follows the cursor's level, the
// mantissa follows antenna A of the last reading (99 and 99 give 964 uV).
[[nodiscard]] double cursorMicrovolts(int cursorLevel, int rfA);

// The recorder's read-out: the mantissa is made whole before scaling, so the
// top of the scale reads 1000 uV here.
[[nodiscard]] double recorderMicrovolts(int level);

// "000.000" (MHz without unit), "0.0dBm", "0uV".
[[nodiscard]] QString formatMHz(double mhz);
[[nodiscard]] QString formatDbm(double dbm);
[[nodiscard]] QString formatMicrovolts(double microvolts);

// Frequency of scan point i: band start plus i raster steps of 25 kHz.
[[nodiscard]] inline double pointFrequency(double bandStart, int index)
{
    return bandStart + index * 0.025;
}

} // namespace zun
