#include "rftools/scanstate.h"

#include <algorithm>
#include <cmath>

namespace zun {

void ScanState::setPointCount(int n)
{
    pointCount = std::clamp(n, 0, kMaxPointCount);
    levels.assign(static_cast<std::size_t>(pointCount) + 1, 0);
    peakOrder.assign(static_cast<std::size_t>(pointCount) + 1, 0);
    holds.resize(pointCount);
    measured.assign(static_cast<std::size_t>(pointCount) + 1, 0);
    scanIndex = std::min(scanIndex, pointCount);
    peakCursor = std::min(peakCursor, pointCount);
    peakListValid = false;
    if (geometry.scaleWidth > 0)
        setGeometry(geometry.scaleWidth, geometry.scaleHeight);
}

void ScanState::setGeometry(int scaleWidth, int scaleHeight)
{
    geometry = PlotGeometry::forScale(scaleWidth, scaleHeight);
    // A band of one point (N = 0) still needs a finite scale.
    xScale = static_cast<double>(scaleWidth) / std::max(pointCount, 1);
    cursorX = xOf(scanIndex);
}

int ScanState::xOf(int index) const
{
    return static_cast<int>(std::floor(index * xScale));
}

void ScanState::storeLevel()
{
    level = std::max(rfA, rfB);
    if (scanIndex >= 0 && scanIndex <= pointCount) {
        levels[scanIndex] = static_cast<std::int16_t>(level < 1 ? 1 : level);
        measured[static_cast<std::size_t>(scanIndex)] = 1;
        holds.record(scanIndex, levels[scanIndex]);
    }
}

bool ScanState::stopReached(SweepMode mode) const
{
    if (mode == SweepMode::Single && scanIndex == pointCount)
        return true;
    return mode == SweepMode::Halt && level > 1 && level > squelchLevel;
}

void ScanState::advance()
{
    const int stride = std::max(step, 1);
    do {
        ++scanIndex;
        cursorX = xOf(scanIndex);
        if (scanIndex > pointCount)
            break;
        levels[scanIndex] = 1;
    } while (scanIndex % stride != 0);
    if (scanIndex > pointCount) {
        scanIndex = 0;
        cursorX = 0;
    }
}

void ScanState::clear()
{
    std::fill(levels.begin(), levels.end(), 0);
    std::fill(peakOrder.begin(), peakOrder.end(), 0);
    peakListValid = true;
    cursorX = geometry.xOrigin;
    cursorY = geometry.baseLine;
    scanIndex = 0;
    timer.clear();
    holds.clear();
    std::fill(measured.begin(), measured.end(), 0);
}

void ScanState::moveCursorTo(int index)
{
    scanIndex = std::clamp(index, 0, pointCount);
    cursorX = xOf(scanIndex);
    level = levels[scanIndex];
}

void ScanState::notePointer(double x, int pictureWidth)
{
    if (!std::isfinite(x) || x < 0)
        x = 0;
    pointerX = static_cast<int>(std::nearbyint(std::min<double>(x, pictureWidth)));
}

int ScanState::pointUnderPointer() const
{
    if (xScale <= 0)
        return 0;
    const int index = static_cast<int>(std::floor(pointerX / xScale));
    return std::clamp(index, 0, pointCount);
}

bool ScanState::goToStrongest()
{
    const bool sorted = !peakListValid;
    if (sorted) {
        for (int i = 0; i <= pointCount; ++i)
            peakOrder[i] = static_cast<std::int16_t>(i);
        sortByLevel(peakOrder, 0, pointCount, levels);
    }
    peakCursor = pointCount;
    peakListValid = true;
    moveCursorTo(peakOrder[peakCursor]);
    return sorted;
}

bool ScanState::goToNextPeak()
{
    if (!peakListValid)
        return false;
    if (--peakCursor < 0)
        peakCursor = pointCount;
    moveCursorTo(peakOrder[peakCursor]);
    return true;
}

void ScanState::markerNext()
{
    moveCursorTo(scanIndex >= pointCount ? 0 : scanIndex + 1);
}

void ScanState::markerPrevious()
{
    moveCursorTo(scanIndex > 0 ? scanIndex - 1 : 0);
}

} // namespace zun
