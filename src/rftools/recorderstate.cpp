#include "rftools/recorderstate.h"

#include <cmath>

namespace zun {

RecorderSegment RecorderState::step(int rfA, int rfB, int width, const PlotGeometry &geometry)
{
    RecorderSegment segment;
    const int xAtStart = x;
    const int yA = geometry.levelY(rfA);
    const int yB = geometry.levelY(rfB);

    if (x >= width && width > 0) {
        const int s = x - (width - 1);
        previousX -= s;
        x -= s;
        xAccumulator -= s;
        segment.scroll = s;
    }
    segment.fromX = previousX;
    segment.toX = x;
    segment.fromYA = previousYA;
    segment.toYA = yA;
    segment.fromYB = previousYB;
    segment.toYB = yB;
    segment.present = xAtStart > 0 && width > 0;

    previousYA = yA;
    previousYB = yB;
    previousX = x;
    xAccumulator += speed;
    x = static_cast<int>(std::floor(xAccumulator));
    return segment;
}

void RecorderState::clear(const PlotGeometry &geometry)
{
    x = geometry.xOrigin;
    previousX = geometry.xOrigin;
    xAccumulator = geometry.xOrigin;
    previousYA = geometry.baseLine;
    previousYB = geometry.baseLine;
    timer.clear();
}

} // namespace zun
