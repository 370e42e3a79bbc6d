#pragma once

#include <algorithm>
#include <vector>

namespace zun {

// The spectrum data of the open detail window: one point per 25 kHz step of
// the receiver's band, points 0..N. The window sizes it when it loads; the
// spectrum and recorder tabs fill and read it.
struct ScanState
{
    // Bands are at most 4 hex digits of steps wide; a corrupt record cannot ask for more.
    static constexpr int kMaxPoints = 0xFFFF;

    int pointCount = 0;         // N
    std::vector<int> levels;    // 0..N, level 0..99; 0 = never measured
    std::vector<int> peakOrder; // 0..N, point indices
    int scanIndex = 0;
    int step = 1;               // points per step: 1, 2, 4 or 5

    void resize(int bandWidth)
    {
        pointCount = std::clamp(bandWidth, 0, kMaxPoints);
        levels.assign(pointCount + 1, 0);
        peakOrder.assign(pointCount + 1, 0);
        scanIndex = 0;
    }
};

} // namespace zun
