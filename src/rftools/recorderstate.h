#pragma once

#include "rftools/elapsed.h"
#include "rftools/rfscale.h"

namespace zun {

// What one recorder step asks the picture to do.
struct RecorderSegment
{
    int scroll = 0; // columns the chart moves left before drawing (0: none)
    int fromX = 0;  // previous sample's column, after the scroll
    int toX = 0;    // this sample's column
    int fromYA = 0;
    int toYA = 0;
    int fromYB = 0;
    int toYB = 0;
    bool present = false; // false: composed off-screen only, never shown
};

// The strip chart's pen position, without widgets: columns advance by the
// speed per sample; once the pen reaches the right edge the chart scrolls so
// that the newest sample sits in the last column.
struct RecorderState
{
    static constexpr double kSlow = 0.2;
    static constexpr double kFast = 2.0;

    int x = 0;
    int previousX = 0;
    double xAccumulator = 0;
    double speed = kSlow;
    int previousYA = 0;
    int previousYB = 0;
    RunTimer timer;

    // One sample of both antennas on a picture width columns wide.
    [[nodiscard]] RecorderSegment step(int rfA, int rfB, int width, const PlotGeometry &geometry);
    // Clear: pen home at the base line, time reset.
    void clear(const PlotGeometry &geometry);
};

} // namespace zun
