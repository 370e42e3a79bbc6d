// What the "Frequency Plan" window spends each time a receiver's record
// changes: every conflict of the line found and turned into one state per
// receiver. Two lines: the demonstration line (64 receivers bunched on a few
// presets in 800-900 MHz, the worst case a user meets) cut to 16, 32 and 64
// receivers, and a clean plan of as many receivers in the same band.

#include "coordination/linecheck.h"
#include "coordination/planner.h"
#include "receivers/frequency.h"
#include "sim/demobus.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>

using namespace zun;

namespace {
constexpr int kRounds = 5;

// Milliseconds of the best of a few rounds, with the number of conflicts.
std::pair<double, std::size_t> checkTime(const std::vector<int> &carriers, const Guards &guards)
{
    QStringList labels;
    for (std::size_t i = 0; i < carriers.size(); ++i)
        labels << QString::number(i + 1);
    double best = 1e9;
    std::size_t conflicts = 0;
    for (int round = 0; round < kRounds; ++round) {
        QElapsedTimer timer;
        timer.start();
        const std::vector<Conflict> found = findConflicts(carriers, guards);
        const QStringList states = carrierStates(found, carriers, static_cast<int>(carriers.size()), labels);
        best = std::min(best, timer.nsecsElapsed() / 1e6);
        if (states.size() != labels.size())
            return {-1, 0};
        conflicts = found.size();
    }
    return {best, conflicts};
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const Guards guards = *parseGuards(QStringLiteral("standard"));
    std::vector<int> demo;
    for (const SimReceiver *r : makeDemoBus()->receivers())
        demo.push_back(toKHz(mhzFromCode(QStringLiteral("%1").arg(r->tunedCode(), 4, 16, QLatin1Char('0')))));
    std::printf("%-7s %4s %10s %9s\n", "line", "rx", "conflicts", "check ms");
    for (const int count : {16, 32, 64}) {
        const std::vector<int> crowded(demo.begin(), demo.begin() + count);
        const auto [crowdedMs, crowdedConflicts] = checkTime(crowded, guards);
        std::printf("%-7s %4d %10zu %9.2f\n", "demo", count, crowdedConflicts, crowdedMs);
        PlanRequest request;
        request.guards = guards;
        request.receivers.assign(static_cast<std::size_t>(count), PlanReceiver{800000, 900000, std::nullopt});
        std::vector<int> clean;
        for (const int f : planFrequencies(request, {.deadlineMs = 300}).frequencyKHz)
            if (f >= 0)
                clean.push_back(f);
        const auto [cleanMs, cleanConflicts] = checkTime(clean, guards);
        std::printf("%-7s %4zu %10zu %9.2f\n", "planned", clean.size(), cleanConflicts, cleanMs);
    }
    return 0;
}
