// Frequency plans for 16, 32 and 64 receivers in one 36 MHz band (470-506 MHz)
// under each named guard set, with and without an 8 MHz exclusion, beside what
// first fit over the raster places in the same run.
//
//   bench_plan [--deadline MS]   time the planner may use per plan (900)

#include "coordination/conflicts.h"
#include "coordination/planner.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QStringList>

#include <cstdio>

using namespace zun;

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    int deadlineMs = 900;
    if (const qsizetype at = args.indexOf("--deadline"); at >= 0 && at + 1 < args.size())
        deadlineMs = args[at + 1].toInt();

    std::printf("%-9s %4s %-9s %9s %9s %8s %9s %s\n", "guards", "rx", "excluded", "firstfit", "planned",
                "proven", "time ms", "conflicts");
    int failures = 0;
    for (const char *name : {"standard", "tight", "robust"}) {
        for (int count : {16, 32, 64}) {
            for (bool exclude : {false, true}) {
                PlanRequest request;
                request.guards = *parseGuards(name);
                request.receivers.assign(static_cast<size_t>(count),
                                         PlanReceiver{470000, 506000, std::nullopt});
                if (exclude)
                    request.exclusions.rangesKHz = {{486000, 494000}};

                const PlanResult first = firstFitPlan(request);
                QElapsedTimer timer;
                timer.start();
                PlanOptions options;
                options.deadlineMs = deadlineMs;
                const PlanResult plan = planFrequencies(request, options);
                const double ms = timer.nsecsElapsed() / 1e6;

                std::vector<int> placed;
                for (int f : plan.frequencyKHz)
                    if (f >= 0)
                        placed.push_back(f);
                const size_t conflicts = findConflicts(placed, request.guards).size();
                failures += conflicts != 0;
                std::printf("%-9s %4d %-9s %9d %9d %8s %9.0f %zu\n", name, count, exclude ? "486-494" : "-",
                            first.placed, plan.placed, plan.provenMaximum ? "yes" : "no", ms, conflicts);
                std::fflush(stdout);
            }
        }
    }
    return failures == 0 ? 0 : 1;
}
