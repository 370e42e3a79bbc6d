#pragma once

#include "coordination/conflicts.h"
#include "coordination/guards.h"

#include <atomic>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace zun {

struct PlanReceiver
{
    int bandLowKHz = 0; // both ends inclusive; only 25 kHz raster points inside count
    int bandHighKHz = 0;
    std::optional<int> lockedKHz; // kept where it is, whatever its band
};

struct PlanExclusions
{
    std::vector<std::pair<int, int>> rangesKHz; // both ends inclusive
    int tvRegion = -1;                          // a TV region value; -1 with no channels in use
    std::vector<int> tvChannels;                // channels in use there
    // Measured signals. A carrier closer to one than the carrier guard would
    // sit on top of it, exactly as on top of another receiver.
    std::vector<int> signalsKHz;
};

struct PlanRequest
{
    std::vector<PlanReceiver> receivers;
    Guards guards;
    PlanExclusions exclusions;
};

struct PlanResult
{
    std::vector<int> frequencyKHz; // one per receiver; -1 where it could not be placed
    int placed = 0;                // locked ones included
    bool provenMaximum = false;    // an exhaustive search showed nothing places more
    // Conflicts among the locked receivers themselves, which no plan can
    // remove; indices are receiver indices.
    std::vector<Conflict> lockedConflicts;
};

// Incremental planning, so that a window can run it in slices from its event
// loop or hand it to a worker thread. Not shared between threads.
class Planner
{
public:
    // budgetMs is the total work time run() will be given; it shares that time
    // between exhaustive search and improving the best plan found.
    // exhaustiveOnly skips improvement and gives the search all the time it
    // needs: for small cases, and to check the search on its own.
    Planner(const PlanRequest &request, int budgetMs, unsigned seed = 1, bool exhaustiveOnly = false);
    ~Planner();
    Planner(const Planner &) = delete;
    Planner &operator=(const Planner &) = delete;

    // Works for about sliceMs (a few ms more at most). False once nothing is
    // left to gain: all placed, or the maximum proven.
    bool run(int sliceMs);
    [[nodiscard]] bool finished() const;
    PlanResult best() const;

private:
    struct State;
    std::unique_ptr<State> d;
};

struct PlanOptions
{
    int deadlineMs = 1000;
    const std::atomic<bool> *cancel = nullptr; // checked between slices
    unsigned seed = 1;
    bool exhaustiveOnly = false;
};

// Runs a Planner until it is finished, the deadline passes or cancel is set.
[[nodiscard]] PlanResult planFrequencies(const PlanRequest &request, const PlanOptions &options = {});

// Each receiver in turn on the lowest raster point that conflicts with
// nothing placed so far: the yardstick the planner is measured against.
[[nodiscard]] PlanResult firstFitPlan(const PlanRequest &request);

// The raster points (kHz) a receiver band offers; empty when none lies inside.
[[nodiscard]] std::vector<int> rasterPoints(int bandLowKHz, int bandHighKHz);

} // namespace zun
