#pragma once

#include "rftools/elapsed.h"
#include "rftools/holdtraces.h"
#include "rftools/peaksort.h"
#include "rftools/rfscale.h"

#include <QPointF>

#include <cstdint>
#include <vector>

namespace zun {

enum class SweepMode { Single, Continuous, Halt };

// An imported scan to compare with: x is the fractional point number in the
// current band, y the level on the 0..99 scale.
using ReferenceTrace = std::vector<QPointF>;

// Everything the spectrum scan knows, without widgets or the line: the band
// as points 0..N, what was measured there, the cursor and the peak walk.
// The last reading of the detail form (antenna levels, status bytes) and the
// squelch level live here too; the recorder and the drop counters use them.
struct ScanState
{
    // Arrays are indexed with 16-bit point numbers.
    static constexpr int kMaxPointCount = 32766;

    int pointCount = 0;                      // N: the band has points 0..N
    LevelArray levels = LevelArray(1, 0);    // 0 never measured (after Clear), 1 the floor
    IndexArray peakOrder = IndexArray(1, 0); // after a peak search: points by ascending level
    int scanIndex = 0;                       // point the next step measures and the cursor shows
    int step = 1;                            // 1, 2, 4 or 5 points per advance
    double xScale = 0;                       // pixels per point
    PlotGeometry geometry;
    int cursorX = 0;
    int cursorY = 0;
    int pointerX = 0;

    int rfA = 0;
    int rfB = 0;
    int level = 0; // larger antenna level; also the level shown at the cursor
    int squelchLevel = 0;

    int peakCursor = 0;
    bool peakListValid = false;
    RunTimer timer;

    std::vector<std::uint8_t> measured; // 1 where a reading was stored since Clear, not a floor fill
    HoldTraces holds;                   // kept from every measured point, emptied by Clear
    ReferenceTrace reference;           // survives Clear: it is not this scan's data

    // Form load: N from the receiver's band (out-of-range widths are cut to
    // what the arrays can hold), all points unmeasured.
    void setPointCount(int n);
    // Picture size in pixels; x scale follows N.
    void setGeometry(int scaleWidth, int scaleHeight);

    [[nodiscard]] int xOf(int index) const;
    [[nodiscard]] int yOf(int lvl) const { return geometry.levelY(lvl); }

    // Level of the reading just taken, kept at the scan index (floor 1).
    void storeLevel();
    // The two reasons a sweep stops by itself, tested in this order.
    [[nodiscard]] bool stopReached(SweepMode mode) const;
    // To the next multiple of the step, setting every point passed (and the
    // next one to measure) to the floor; past N back to point 0.
    void advance();
    // Clear: nothing measured, cursor home, a peak list of zeros that is
    // taken as valid (so Peak then goes to point 0).
    void clear();

    // The cursor on a point: its column and stored level.
    void moveCursorTo(int index);
    void notePointer(double x, int pictureWidth);
    [[nodiscard]] int pointUnderPointer() const;

    // Peak: sorts when the list is stale, then goes to the strongest point.
    // Returns true when it had to sort.
    bool goToStrongest();
    // Next P: the next weaker point, wrapping to the strongest. False when
    // there is no valid list.
    bool goToNextPeak();

    // The settings tab's marker buttons: forward wraps to 0, back stops at 0.
    void markerNext();
    void markerPrevious();

    // The cursor's row for the current level.
    void placeCursorY() { cursorY = yOf(level); }
};

} // namespace zun
