#include "coordination/planner.h"

#include "core/tvchannels.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>

namespace zun {

namespace {

int floorDiv(long long a, long long b)
{
    long long q = a / b;
    if ((a % b != 0) && ((a < 0) != (b < 0)))
        --q;
    return static_cast<int>(q);
}

int ceilDiv(long long a, long long b)
{
    return -floorDiv(-a, b);
}

// Counts, for every raster point of the planning range, how many pairs and
// triples of the carriers present forbid a new carrier there. Adding a carrier
// only touches combinations it takes part in, so a candidate is checked in
// constant time and a carrier placed or taken away in O(n^2).
class Occupancy
{
public:
    Occupancy(int baseKHz, int points, const Guards &guards)
        : m_base(baseKHz), m_block(static_cast<size_t>(points), 0), m_g(guards)
    {
    }

    int points() const { return static_cast<int>(m_block.size()); }
    int kHzAt(int index) const { return m_base + index * kRasterKHz; }
    bool free(int index) const { return m_block[static_cast<size_t>(index)] == 0; }
    const std::vector<int> &carriers() const { return m_carriers; }

    void add(int kHz)
    {
        apply(kHz, +1);
        m_carriers.push_back(kHz);
    }

    void remove(int kHz)
    {
        auto it = std::find(m_carriers.begin(), m_carriers.end(), kHz);
        *it = m_carriers.back();
        m_carriers.pop_back();
        apply(kHz, -1);
    }

private:
    // Points y with |scale * y - value| < guard.
    void mark(long long value, int scale, int guard, int delta)
    {
        if (guard <= 0)
            return;
        const int lowKHz = ceilDiv(value - guard + 1, scale);
        const int highKHz = floorDiv(value + guard - 1, scale);
        const int lo = std::max(0, ceilDiv(lowKHz - m_base, kRasterKHz));
        const int hi = std::min(points() - 1, floorDiv(highKHz - m_base, kRasterKHz));
        for (int i = lo; i <= hi; ++i)
            m_block[static_cast<size_t>(i)] += delta;
    }

    // Every product relation is symmetric in which carrier is "new", so a
    // candidate y conflicts exactly when one of these windows covers it.
    void apply(int x, int delta)
    {
        const long long xl = x;
        mark(xl, 1, m_g.carrier, delta);
        const size_t n = m_carriers.size();
        for (size_t i = 0; i < n; ++i) {
            const long long s = m_carriers[i];
            if (m_g.twoTone3 > 0) {
                mark(2 * xl - s, 1, m_g.twoTone3, delta);
                mark(2 * s - xl, 1, m_g.twoTone3, delta);
                mark(xl + s, 2, m_g.twoTone3, delta);
            }
            if (m_g.twoTone5 > 0) {
                mark(3 * xl - 2 * s, 1, m_g.twoTone5, delta);
                mark(3 * s - 2 * xl, 1, m_g.twoTone5, delta);
                mark(3 * xl - s, 2, m_g.twoTone5, delta);
                mark(3 * s - xl, 2, m_g.twoTone5, delta);
                mark(2 * xl + s, 3, m_g.twoTone5, delta);
                mark(2 * s + xl, 3, m_g.twoTone5, delta);
            }
            if (m_g.threeTone3 > 0) {
                for (size_t j = 0; j < n; ++j) {
                    if (j == i)
                        continue;
                    const long long t = m_carriers[j];
                    mark(xl + s - t, 1, m_g.threeTone3, delta);
                    if (j > i)
                        mark(s + t - xl, 1, m_g.threeTone3, delta);
                }
            }
        }
    }

    int m_base;
    std::vector<int32_t> m_block;
    std::vector<int> m_carriers;
    Guards m_g;
};

// Candidates weighed per refill: more weigh better but refill less often;
// four did best on the 36 MHz benchmark.
constexpr int kHarmSamples = 4;

// Receivers with the same band are interchangeable; searching them as one
// class with ascending frequencies drops the permutations.
struct BandClass
{
    int lo = 0; // point indices, inclusive; lo > hi when the band holds none
    int hi = -1;
    std::vector<int> members;
};

struct Frame
{
    int cls = 0;
    int slot = 0;
    int next = 0;
    int chosen = -1;
    bool closeTried = false;
};

} // namespace

struct Planner::State
{
    PlanRequest request;
    int budgetMs = 0;
    qint64 usedMs = 0;
    std::mt19937 rng;

    int base = 0;
    int points = 0;
    std::vector<char> excluded;
    std::vector<BandClass> classes;
    std::vector<int> lockedKHz;
    int freeCount = 0;

    std::vector<int> bestAssign; // point index per receiver, -1 unplaced or locked
    int bestPlaced = -1;         // free receivers placed
    bool proven = false;
    std::vector<Conflict> lockedConflicts;

    // Improvement by ruin and refill.
    std::unique_ptr<Occupancy> walk;
    std::vector<int> walkAssign;
    int walkPlaced = 0;
    int walkSteps = 0;

    // Exhaustive search, explicit stack so that it can pause between slices.
    std::unique_ptr<Occupancy> tree;
    std::vector<Frame> frames;
    std::vector<int> treeAssign;
    int treePlaced = 0;
    bool exhaustiveOnly = false;

    enum class Phase { Walk1, Tree, Walk2, Done } phase = Phase::Walk1;

    bool feasible(const Occupancy &occ, int i) const
    {
        return !excluded[static_cast<size_t>(i)] && occ.free(i);
    }

    void setup()
    {
        const auto &rx = request.receivers;
        int lo = INT32_MAX, hi = INT32_MIN;
        // Only free receivers' bands need counts: a locked carrier far away
        // still makes products, its windows are just clipped to this range.
        for (const PlanReceiver &r : rx) {
            if (!r.lockedKHz && r.bandLowKHz <= r.bandHighKHz) {
                lo = std::min(lo, r.bandLowKHz);
                hi = std::max(hi, r.bandHighKHz);
            }
        }
        if (lo > hi) {
            lo = 0;
            hi = 0;
        }
        base = floorDiv(lo, kRasterKHz) * kRasterKHz;
        points = floorDiv(hi - base, kRasterKHz) + 1;
        excluded.assign(static_cast<size_t>(points), 0);
        buildExclusions();

        std::map<std::pair<int, int>, int> byBand;
        for (int r = 0; r < static_cast<int>(rx.size()); ++r) {
            const PlanReceiver &pr = rx[static_cast<size_t>(r)];
            if (pr.lockedKHz) {
                lockedKHz.push_back(*pr.lockedKHz);
                continue;
            }
            ++freeCount;
            auto [it, fresh] = byBand.try_emplace({pr.bandLowKHz, pr.bandHighKHz}, int(classes.size()));
            if (fresh) {
                BandClass c;
                c.lo = std::max(0, ceilDiv(pr.bandLowKHz - base, kRasterKHz));
                c.hi = std::min(points - 1, floorDiv(pr.bandHighKHz - base, kRasterKHz));
                classes.push_back(c);
            }
            classes[static_cast<size_t>(it->second)].members.push_back(r);
        }
        // Narrow bands first: they have the fewest choices, so the search
        // fails early there.
        std::stable_sort(classes.begin(), classes.end(),
                         [](const BandClass &a, const BandClass &b) { return a.hi - a.lo < b.hi - b.lo; });

        std::vector<int> lockedIdx;
        for (int r = 0; r < static_cast<int>(rx.size()); ++r)
            if (rx[static_cast<size_t>(r)].lockedKHz)
                lockedIdx.push_back(r);
        for (Conflict k : findConflicts(lockedKHz, request.guards)) {
            const auto map = [&](int i) { return i < 0 ? -1 : lockedIdx[static_cast<size_t>(i)]; };
            k.a = map(k.a);
            k.b = map(k.b);
            k.c = map(k.c);
            k.victim = map(k.victim);
            lockedConflicts.push_back(k);
        }

        walk = makeOccupancy();
        walkAssign.assign(rx.size(), -1);
        tree = makeOccupancy();
        treeAssign.assign(rx.size(), -1);
        frames.push_back(Frame{0, 0, classes.empty() ? 0 : classes[0].lo, -1, false});

        // First fit as the starting point, so there is a plan from the start.
        for (const BandClass &c : classes)
            for (int r : c.members)
                for (int i = c.lo; i <= c.hi; ++i)
                    if (feasible(*walk, i)) {
                        place(*walk, walkAssign, r, i);
                        ++walkPlaced;
                        break;
                    }
        saveBest(walkAssign, walkPlaced);
    }

    std::unique_ptr<Occupancy> makeOccupancy() const
    {
        auto occ = std::make_unique<Occupancy>(base, points, request.guards);
        for (int f : lockedKHz)
            occ->add(f);
        return occ;
    }

    void buildExclusions()
    {
        const PlanExclusions &ex = request.exclusions;
        const auto block = [&](long long lowKHz, long long highKHz) {
            const int lo = std::max(0, ceilDiv(lowKHz - base, kRasterKHz));
            const int hi = std::min(points - 1, floorDiv(highKHz - base, kRasterKHz));
            for (int i = lo; i <= hi; ++i)
                excluded[static_cast<size_t>(i)] = 1;
        };
        for (const auto &[lo, hi] : ex.rangesKHz)
            block(lo, hi);
        for (int s : ex.signalsKHz)
            block(static_cast<long long>(s) - request.guards.carrier + 1,
                  static_cast<long long>(s) + request.guards.carrier - 1);
        if (!ex.tvChannels.empty()) {
            // The region's own lookup decides, so the channel edges match what
            // the detail window shows for the same frequency.
            for (int i = 0; i < points; ++i) {
                const QString ch = tvChannelName(ex.tvRegion, (base + i * kRasterKHz) / 1000.0);
                if (!ch.isEmpty() &&
                    std::find(ex.tvChannels.begin(), ex.tvChannels.end(), ch.toInt()) != ex.tvChannels.end())
                    excluded[static_cast<size_t>(i)] = 1;
            }
        }
    }

    void place(Occupancy &occ, std::vector<int> &assign, int receiver, int index)
    {
        occ.add(occ.kHzAt(index));
        assign[static_cast<size_t>(receiver)] = index;
    }

    void unplace(Occupancy &occ, std::vector<int> &assign, int receiver)
    {
        int &index = assign[static_cast<size_t>(receiver)];
        occ.remove(occ.kHzAt(index));
        index = -1;
    }

    void saveBest(const std::vector<int> &assign, int placed)
    {
        if (placed <= bestPlaced)
            return;
        bestPlaced = placed;
        bestAssign = assign;
        if (bestPlaced == freeCount)
            proven = true;
    }

    // Of a few random candidates, the one that leaves the most free points in
    // the band: a carrier whose products fall on used or excluded points costs
    // the receivers still to come nothing.
    int leastHarm(const BandClass &c, const std::vector<int> &candidates)
    {
        const int tries = std::min<int>(kHarmSamples, static_cast<int>(candidates.size()));
        int best = -1;
        int bestFree = -1;
        for (int k = 0; k < tries; ++k) {
            const int index = candidates[rng() % candidates.size()];
            walk->add(walk->kHzAt(index));
            int freePoints = 0;
            for (int i = c.lo; i <= c.hi; ++i)
                freePoints += feasible(*walk, i);
            walk->remove(walk->kHzAt(index));
            if (freePoints > bestFree) {
                bestFree = freePoints;
                best = index;
            }
        }
        return best;
    }

    // One ruin-and-refill move: take one to three carriers away, then fill
    // unplaced receivers, in random order, on random free points. Kept unless
    // fewer are placed, so the walk drifts along plateaus.
    void walkStep()
    {
        std::vector<int> placedRx;
        for (const BandClass &c : classes)
            for (int r : c.members)
                if (walkAssign[static_cast<size_t>(r)] >= 0)
                    placedRx.push_back(r);
        std::vector<std::pair<int, int>> removed;
        const auto take = [&](size_t pick) {
            const int r = placedRx[pick];
            placedRx[pick] = placedRx.back();
            placedRx.pop_back();
            removed.emplace_back(r, walkAssign[static_cast<size_t>(r)]);
            unplace(*walk, walkAssign, r);
        };
        const int ruinCount = std::min<int>(static_cast<int>(placedRx.size()), 1 + int(rng() % 3));
        for (int k = 0; k < ruinCount; ++k)
            take(rng() % placedRx.size());
        const int ruin = static_cast<int>(removed.size());
        std::vector<int> added;
        std::vector<int> candidates;
        std::vector<int> order(classes.size());
        for (size_t i = 0; i < order.size(); ++i)
            order[i] = static_cast<int>(i);
        std::shuffle(order.begin(), order.end(), rng);
        const bool lowest = rng() % 4 == 0;
        for (int ci : order) {
            const BandClass &c = classes[static_cast<size_t>(ci)];
            for (int r : c.members) {
                if (walkAssign[static_cast<size_t>(r)] >= 0)
                    continue;
                candidates.clear();
                for (int i = c.lo; i <= c.hi; ++i)
                    if (feasible(*walk, i))
                        candidates.push_back(i);
                if (candidates.empty())
                    break;
                const int index = lowest ? candidates.front() : leastHarm(c, candidates);
                place(*walk, walkAssign, r, index);
                added.push_back(r);
            }
        }
        const int placed = walkPlaced - ruin + static_cast<int>(added.size());
        if (placed < walkPlaced) {
            for (int r : added)
                unplace(*walk, walkAssign, r);
            for (const auto &[r, index] : removed)
                place(*walk, walkAssign, r, index);
            return;
        }
        walkPlaced = placed;
        saveBest(walkAssign, walkPlaced);
    }

    // How many of the receivers not yet decided could still be placed, at
    // most: no two carriers closer than the carrier guard fit on the free
    // points, and greedy spacing from the left counts that exactly.
    int upperBound(const Frame &f) const
    {
        const int step = std::max(1, ceilDiv(request.guards.carrier, kRasterKHz));
        const auto spaced = [&](int from, int to) {
            int count = 0;
            for (int i = from; i <= to; ++i)
                if (feasible(*tree, i)) {
                    ++count;
                    i += step - 1;
                }
            return count;
        };
        int total = 0;
        int unionLo = INT32_MAX, unionHi = INT32_MIN;
        for (size_t c = static_cast<size_t>(f.cls); c < classes.size(); ++c) {
            const BandClass &bc = classes[c];
            const bool current = static_cast<int>(c) == f.cls;
            const int left = static_cast<int>(bc.members.size()) - (current ? f.slot : 0);
            const int from = current ? f.next : bc.lo;
            total += std::min(left, spaced(from, bc.hi));
            unionLo = std::min(unionLo, bc.lo);
            unionHi = std::max(unionHi, bc.hi);
        }
        return unionLo <= unionHi ? std::min(total, spaced(unionLo, unionHi)) : total;
    }

    Frame childAfter(const Frame &f) const
    {
        const BandClass &c = classes[static_cast<size_t>(f.cls)];
        if (f.slot + 1 < static_cast<int>(c.members.size()))
            return Frame{f.cls, f.slot + 1, f.chosen + 1, -1, false};
        return nextClass(f.cls);
    }

    Frame nextClass(int cls) const
    {
        const int n = cls + 1;
        return Frame{n, 0, n < static_cast<int>(classes.size()) ? classes[static_cast<size_t>(n)].lo : 0, -1,
                     false};
    }

    // One node of the exhaustive search. False once the tree is exhausted.
    bool treeStep()
    {
        if (frames.empty())
            return false;
        Frame &f = frames.back();
        if (f.chosen >= 0) {
            const int r = classes[static_cast<size_t>(f.cls)].members[static_cast<size_t>(f.slot)];
            unplace(*tree, treeAssign, r);
            --treePlaced;
            f.chosen = -1;
        }
        if (f.cls == static_cast<int>(classes.size())) {
            saveBest(treeAssign, treePlaced);
            frames.pop_back();
            return true;
        }
        if (treePlaced + upperBound(f) <= bestPlaced) {
            frames.pop_back();
            return true;
        }
        const BandClass &c = classes[static_cast<size_t>(f.cls)];
        for (int i = f.next; i <= c.hi; ++i) {
            if (!feasible(*tree, i))
                continue;
            f.chosen = i;
            f.next = i + 1;
            place(*tree, treeAssign, c.members[static_cast<size_t>(f.slot)], i);
            ++treePlaced;
            const Frame child = childAfter(f);
            frames.push_back(child);
            return true;
        }
        if (!f.closeTried) {
            // The rest of this class stays unplaced.
            f.closeTried = true;
            f.next = c.hi + 1;
            const Frame child = nextClass(f.cls);
            frames.push_back(child);
            return true;
        }
        frames.pop_back();
        return true;
    }
};

Planner::Planner(const PlanRequest &request, int budgetMs, unsigned seed, bool exhaustiveOnly)
    : d(std::make_unique<State>())
{
    d->request = request;
    d->exhaustiveOnly = exhaustiveOnly;
    d->budgetMs = std::max(1, budgetMs);
    d->rng.seed(seed);
    d->setup();
    if (d->proven)
        d->phase = State::Phase::Done;
    else if (exhaustiveOnly)
        d->phase = State::Phase::Tree;
}

Planner::~Planner() = default;

bool Planner::finished() const
{
    return d->phase == State::Phase::Done;
}

bool Planner::run(int sliceMs)
{
    QElapsedTimer timer;
    timer.start();
    using Phase = State::Phase;
    // A quarter of the budget walks first, so the search starts with a good
    // plan to prune against; a quarter goes to the search; the rest walks on.
    while (d->phase != Phase::Done && timer.elapsed() < sliceMs) {
        const qint64 used = d->usedMs + timer.elapsed();
        switch (d->phase) {
        case Phase::Walk1:
            d->walkStep();
            // Capped in steps too: a small case is proven long before a
            // quarter of a generous budget has gone.
            if (used >= d->budgetMs / 4 || ++d->walkSteps >= 5000)
                d->phase = Phase::Tree;
            break;
        case Phase::Tree:
            if (!d->treeStep()) {
                d->proven = true;
                d->phase = Phase::Done;
            } else if (!d->exhaustiveOnly && used >= d->budgetMs / 2) {
                d->phase = Phase::Walk2;
            }
            break;
        case Phase::Walk2:
            d->walkStep();
            break;
        case Phase::Done:
            break;
        }
        if (d->proven)
            d->phase = Phase::Done;
    }
    d->usedMs += timer.elapsed();
    return d->phase != Phase::Done;
}

PlanResult Planner::best() const
{
    PlanResult result;
    const auto &rx = d->request.receivers;
    result.frequencyKHz.assign(rx.size(), -1);
    for (size_t r = 0; r < rx.size(); ++r) {
        if (rx[r].lockedKHz) {
            result.frequencyKHz[r] = *rx[r].lockedKHz;
            ++result.placed;
        } else if (d->bestAssign[r] >= 0) {
            result.frequencyKHz[r] = d->base + d->bestAssign[r] * kRasterKHz;
            ++result.placed;
        }
    }
    result.provenMaximum = d->proven;
    result.lockedConflicts = d->lockedConflicts;
    return result;
}

PlanResult planFrequencies(const PlanRequest &request, const PlanOptions &options)
{
    QElapsedTimer timer;
    timer.start();
    Planner planner(request, options.deadlineMs, options.seed, options.exhaustiveOnly);
    while (!planner.finished()) {
        const qint64 left = options.deadlineMs - timer.elapsed();
        if (left <= 0 || (options.cancel && options.cancel->load()))
            break;
        planner.run(static_cast<int>(std::min<qint64>(left, 20)));
    }
    return planner.best();
}

PlanResult firstFitPlan(const PlanRequest &request)
{
    // A zero budget leaves the planner at its own first-fit start.
    Planner planner(request, 0);
    return planner.best();
}

std::vector<int> rasterPoints(int bandLowKHz, int bandHighKHz)
{
    std::vector<int> out;
    for (int f = ceilDiv(bandLowKHz, kRasterKHz) * kRasterKHz; f <= bandHighKHz; f += kRasterKHz)
        out.push_back(f);
    return out;
}

} // namespace zun
