// The coordination engine against definitions written out again here, naively:
// conflicts found one by one, and the largest plan found by trying everything.

#include "coordination/conflicts.h"
#include "coordination/planfiles.h"
#include "coordination/planner.h"
#include "core/tvchannels.h"

#include <QtTest>

#include <algorithm>
#include <random>
#include <set>
#include <tuple>

using namespace zun;

namespace {

using Hit = std::tuple<int, int, int, int, int>; // kind, makers (normalised), victim

// Straight from the definitions, over every choice of distinct carriers.
std::set<Hit> naiveConflicts(const std::vector<int> &f, const Guards &g)
{
    std::set<Hit> hits;
    const int n = static_cast<int>(f.size());
    const auto close = [](long long p, int v, int guard) { return guard > 0 && std::llabs(p - v) < guard; };
    for (int a = 0; a < n; ++a)
        for (int b = 0; b < n; ++b) {
            if (a == b)
                continue;
            if (a < b && close(f[a], f[b], g.carrier))
                hits.insert({0, a, b, -1, b});
            for (int c = 0; c < n; ++c) {
                if (c == a || c == b)
                    continue;
                if (close(2LL * f[a] - f[b], f[c], g.twoTone3))
                    hits.insert({1, a, b, -1, c});
                if (close(3LL * f[a] - 2LL * f[b], f[c], g.twoTone5))
                    hits.insert({3, a, b, -1, c});
                for (int v = 0; v < n; ++v)
                    if (v != a && v != b && v != c && close(1LL * f[a] + f[b] - f[c], f[v], g.threeTone3))
                        hits.insert({2, std::min(a, b), std::max(a, b), c, v});
            }
        }
    return hits;
}

std::set<Hit> engineConflicts(const std::vector<int> &f, const Guards &g)
{
    std::set<Hit> hits;
    for (const Conflict &k : findConflicts(f, g))
        hits.insert({static_cast<int>(k.kind), k.a, k.b, k.c, k.victim});
    return hits;
}

struct Case
{
    std::vector<PlanReceiver> receivers;
    Guards guards;
    PlanExclusions exclusions;
};

bool allowed(const Case &c, int f)
{
    for (const auto &[lo, hi] : c.exclusions.rangesKHz)
        if (f >= lo && f <= hi)
            return false;
    for (int s : c.exclusions.signalsKHz)
        if (std::abs(f - s) < c.guards.carrier)
            return false;
    if (!c.exclusions.tvChannels.empty()) {
        const QString ch = tvChannelName(c.exclusions.tvRegion, f / 1000.0);
        for (int used : c.exclusions.tvChannels)
            if (ch == QString::number(used))
                return false;
    }
    return true;
}

// Every receiver in turn: each allowed raster point of its band, or none.
// A receiver with the same band as the one before only takes a higher point,
// and none once that one took none: the same plans, without their reorderings.
void bruteForce(const Case &c, size_t r, std::vector<int> &plan, std::vector<int> &chosen, int placed,
                int &best)
{
    const size_t left = c.receivers.size() - r;
    if (placed + static_cast<int>(left) <= best)
        return;
    if (r == c.receivers.size()) {
        best = placed;
        return;
    }
    const PlanReceiver &rx = c.receivers[r];
    if (rx.lockedKHz) {
        plan.push_back(*rx.lockedKHz);
        chosen[r] = *rx.lockedKHz;
        bruteForce(c, r + 1, plan, chosen, placed + 1, best);
        plan.pop_back();
        return;
    }
    int from = (rx.bandLowKHz + 24) / 25 * 25;
    const bool twin = r > 0 && !c.receivers[r - 1].lockedKHz &&
                      c.receivers[r - 1].bandLowKHz == rx.bandLowKHz &&
                      c.receivers[r - 1].bandHighKHz == rx.bandHighKHz;
    if (twin)
        from = chosen[r - 1] < 0 ? rx.bandHighKHz + 1 : chosen[r - 1] + 25;
    for (int f = from; f <= rx.bandHighKHz; f += 25) {
        if (!allowed(c, f))
            continue;
        plan.push_back(f);
        chosen[r] = f;
        if (naiveConflicts(plan, c.guards).empty())
            bruteForce(c, r + 1, plan, chosen, placed + 1, best);
        plan.pop_back();
    }
    chosen[r] = -1;
    bruteForce(c, r + 1, plan, chosen, placed, best);
}

int bruteMaximum(const Case &c)
{
    std::vector<int> plan;
    std::vector<int> chosen(c.receivers.size(), -1);
    int best = -1;
    bruteForce(c, 0, plan, chosen, 0, best);
    return best;
}

void verifyPlan(const Case &c, const PlanResult &result)
{
    QCOMPARE(result.frequencyKHz.size(), c.receivers.size());
    std::vector<int> plan;
    for (size_t r = 0; r < c.receivers.size(); ++r) {
        const int f = result.frequencyKHz[r];
        const PlanReceiver &rx = c.receivers[r];
        if (rx.lockedKHz) {
            QCOMPARE(f, *rx.lockedKHz);
        } else if (f >= 0) {
            QVERIFY2(f >= rx.bandLowKHz, qPrintable(mhzText(f)));
            QVERIFY2(f <= rx.bandHighKHz, qPrintable(mhzText(f)));
            QVERIFY2(f % 25 == 0, qPrintable(mhzText(f)));
            QVERIFY2(allowed(c, f), qPrintable(mhzText(f)));
        }
        if (f >= 0)
            plan.push_back(f);
    }
    QCOMPARE(static_cast<int>(plan.size()), result.placed);
    QCOMPARE(naiveConflicts(plan, c.guards).size(), size_t(0));
}

PlanRequest requestOf(const Case &c)
{
    return PlanRequest{c.receivers, c.guards, c.exclusions};
}

Case sameBand(int count, int lo, int hi, const QString &guards)
{
    Case c;
    c.guards = *parseGuards(guards);
    c.receivers.assign(static_cast<size_t>(count), PlanReceiver{lo, hi, std::nullopt});
    return c;
}

} // namespace

Q_DECLARE_METATYPE(std::vector<int>)
Q_DECLARE_METATYPE(Case)

class TstCoordination : public QObject
{
    Q_OBJECT

private slots:
    void guardsAndNumbers_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected"); // "C,T3,X3,T5" or "" when refused
        for (const auto &[text, expected] : {std::pair{"standard", "350,100,50,50"},
                                             {"Tight", "250,50,25,0"},
                                             {"robust", "400,150,75,75"},
                                             {"300, 1,1,0", "300,1,1,0"},
                                             {"0,1,1,1", ""}, // no carrier guard
                                             {"300,1,1", ""},
                                             {"300,-1,1,1", ""},
                                             {"loose", ""}})
            QTest::newRow(text) << QString(text) << QString(expected);
    }
    void guardsAndNumbers()
    {
        QFETCH(QString, text);
        const std::optional<Guards> g = parseGuards(text);
        const auto values = [](const Guards &g) {
            return QStringLiteral("%1,%2,%3,%4")
                .arg(g.carrier)
                .arg(g.twoTone3)
                .arg(g.threeTone3)
                .arg(g.twoTone5);
        };
        QTEST(g ? values(*g) : QString(), "expected");
    }

    void mhz_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("kHz"); // -1: refused
        QTest::newRow("integer") << "470" << 470000;
        QTest::newRow("three decimals") << "470.125" << 470125;
        QTest::newRow("one decimal") << "506.5" << 506500;
        QTest::newRow("four decimals") << "470.1255" << -1;
        QTest::newRow("letters") << "47x" << -1;
        QTest::newRow("empty") << "" << -1;
        QTest::newRow("negative") << "-470" << -1;
    }
    void mhz()
    {
        QFETCH(QString, text);
        QFETCH(int, kHz);
        QCOMPARE(parseMHz(text).value_or(-1), kHz);
        if (kHz >= 0)
            QCOMPARE(parseMHz(mhzText(kHz)).value_or(-1), kHz);
    }

    void conflicts_data()
    {
        QTest::addColumn<std::vector<int>>("carriers");
        QTest::addColumn<QString>("guards");
        QTest::addColumn<QString>("kinds"); // count per kind: carriers, 2fa-fb, fa+fb-fc, 3fa-2fb
        const auto row = [](const char *tag, const std::vector<int> &carriers, const char *guards,
                            const char *kinds) {
            QTest::newRow(tag) << carriers << QString(guards) << QString(kinds);
        };
        // 470.5 is the midpoint: 2x470.5-470 lands on 471, 2x470.5-471 on 470.
        row("evenly spaced", {470000, 470500, 471000}, "standard", "0,2,0,0");
        row("25 kHz off, 1 kHz guards", {470000, 470500, 471025}, "350,1,1,1", "0,0,0,0");
        row("25 kHz off, 26 kHz guard", {470000, 470500, 471025}, "350,26,1,1", "0,2,0,0");
        row("too close", {470000, 470300}, "standard", "1,0,0,0");
        row("apart by the guard", {470000, 470350}, "standard", "0,0,0,0");
        // 470 + 472 - 470.6 = 471.4: each of the four makes the fourth with the others.
        row("sum pair", {470000, 472000, 470600, 471400}, "standard", "0,0,4,0");
        // 3x471 - 2x470 = 473, and 3x471-473 = 2x470 lands the 3rd order nowhere near.
        row("fifth order", {470000, 471000, 473000}, "standard", "0,0,0,1");
        row("fifth order off", {470000, 471000, 473000}, "tight", "0,0,0,0");
    }
    void conflicts()
    {
        QFETCH(std::vector<int>, carriers);
        QFETCH(QString, guards);
        int count[4] = {};
        const std::vector<Conflict> found = findConflicts(carriers, *parseGuards(guards));
        for (const Conflict &k : found)
            ++count[static_cast<int>(k.kind)];
        QTEST(QStringLiteral("%1,%2,%3,%4").arg(count[0]).arg(count[1]).arg(count[2]).arg(count[3]), "kinds");
        for (const Conflict &k : found)
            QVERIFY(!describeConflict(k, carriers).isEmpty());
    }

    void conflictsMatchDefinition_data()
    {
        QTest::addColumn<QString>("guards");
        QTest::addColumn<int>("seed");
        for (const char *g : {"standard", "tight", "robust", "100,60,40,30"})
            for (int seed = 1; seed <= 3; ++seed)
                QTest::newRow(qPrintable(QStringLiteral("%1 #%2").arg(g).arg(seed))) << QString(g) << seed;
    }
    void conflictsMatchDefinition()
    {
        QFETCH(QString, guards);
        QFETCH(int, seed);
        const Guards g = *parseGuards(guards);
        std::mt19937 rng(static_cast<unsigned>(seed));
        for (int round = 0; round < 200; ++round) {
            std::vector<int> f(3 + rng() % 5);
            for (int &x : f)
                x = 470000 + 25 * static_cast<int>(rng() % 120);
            QCOMPARE(engineConflicts(f, g), naiveConflicts(f, g));
        }
    }

    void maximumMatchesBruteForce_data()
    {
        QTest::addColumn<Case>("c");
        const auto row = [](const char *tag, Case c, const std::function<void(Case &)> &change = {}) {
            if (change)
                change(c);
            QTest::newRow(tag) << c;
        };
        row("3 in 1 MHz, standard", sameBand(3, 470000, 471000, "standard"));
        row("6 in 1.5 MHz, standard", sameBand(6, 470000, 471500, "standard"));
        row("6 in 1.2 MHz, tight", sameBand(6, 470000, 471200, "tight"));
        row("5 in 1.5 MHz, robust", sameBand(5, 470000, 471500, "robust"));
        row("5 in 1.5 MHz, 1 kHz", sameBand(5, 470000, 471500, "300,1,1,1"));
        row("locked one", sameBand(5, 470000, 471500, "standard"),
            [](Case &c) { c.receivers[2].lockedKHz = 470725; });
        row("two bands", sameBand(3, 470000, 471000, "standard"), [](Case &c) {
            c.receivers.push_back(PlanReceiver{470800, 471800, std::nullopt});
            c.receivers.push_back(PlanReceiver{470800, 471800, std::nullopt});
        });
        row("range excluded", sameBand(5, 470000, 472000, "standard"), [](Case &c) {
            c.exclusions.rangesKHz = {{470400, 471100}};
        });
        row("scan signal", sameBand(5, 470000, 471500, "standard"),
            [](Case &c) { c.exclusions.signalsKHz = {470700}; });
        row("TV channel in use", sameBand(4, 477000, 479000, "standard"), [](Case &c) {
            c.exclusions.tvRegion = TvEurope;
            c.exclusions.tvChannels = {21};
        });
        row("band without room", sameBand(2, 470005, 470020, "standard"));
    }
    void maximumMatchesBruteForce()
    {
        QFETCH(Case, c);
        const int best = bruteMaximum(c);

        // Once as used, once by the exhaustive search alone, so that the
        // improvement phase cannot hide a search that prunes too much.
        for (bool exhaustiveOnly : {false, true}) {
            const PlanResult result =
                planFrequencies(requestOf(c), PlanOptions{60000, nullptr, 7, exhaustiveOnly});
            verifyPlan(c, result);
            QVERIFY(result.provenMaximum);
            QCOMPARE(result.placed, best);
        }
    }

    // Larger cases than brute force can settle: still never a conflict, never
    // outside a band or exclusion, and never worse than first fit.
    void plansHaveNoConflict_data()
    {
        QTest::addColumn<QString>("guards");
        QTest::addColumn<int>("count");
        QTest::addColumn<bool>("exclude");
        for (const char *g : {"standard", "tight", "robust", "200,1,1,1"})
            for (int count : {8, 24})
                for (bool exclude : {false, true})
                    QTest::newRow(
                        qPrintable(QStringLiteral("%1, %2%3").arg(g).arg(count).arg(exclude ? ", excl" : "")))
                        << QString(g) << count << exclude;
    }
    void plansHaveNoConflict()
    {
        QFETCH(QString, guards);
        QFETCH(int, count);
        QFETCH(bool, exclude);
        Case c = sameBand(count, 470000, 482000, guards);
        // A narrower second band and a locked carrier, so classes meet.
        c.receivers[1] = PlanReceiver{474000, 476000, std::nullopt};
        c.receivers[2] = PlanReceiver{470000, 482000, 478500};
        if (exclude) {
            c.exclusions.rangesKHz = {{471000, 473000}};
            c.exclusions.signalsKHz = {480000, 480025};
            c.exclusions.tvRegion = TvUsa;
            c.exclusions.tvChannels = {15}; // 476-482 MHz
        }
        const PlanResult first = firstFitPlan(requestOf(c));
        verifyPlan(c, first);
        const PlanResult result = planFrequencies(requestOf(c), PlanOptions{150, nullptr, 3});
        verifyPlan(c, result);
        QVERIFY(result.placed >= first.placed);
    }

    // Slices and cancellation: a set flag stops before any improvement, so the
    // first-fit start comes back; a planner driven in 1 ms slices proves the
    // same maximum as one run whole.
    void slicesAndCancel()
    {
        // First fit places 3 here; 4 fit.
        Case c = sameBand(5, 470000, 471300, "standard");
        const int best = bruteMaximum(c);
        const PlanResult first = firstFitPlan(requestOf(c));
        QVERIFY2(first.placed < best, "the case must leave first fit room to improve");

        const std::atomic<bool> cancelled{true};
        const PlanResult stopped = planFrequencies(requestOf(c), PlanOptions{60000, &cancelled, 1});
        QCOMPARE(stopped.frequencyKHz, first.frequencyKHz);

        Planner planner(requestOf(c), 60000);
        int slices = 0;
        while (planner.run(1))
            ++slices;
        QVERIFY(planner.finished());
        QCOMPARE(planner.best().placed, best);
        QVERIFY(planner.best().provenMaximum);
    }

    void lockedConflictsReported()
    {
        Case c = sameBand(3, 470000, 472000, "standard");
        c.receivers[0].lockedKHz = 470000;
        c.receivers[2].lockedKHz = 470100;
        const PlanResult result = planFrequencies(requestOf(c), PlanOptions{2000, nullptr, 1});
        QCOMPARE(result.lockedConflicts.size(), size_t(1));
        QCOMPARE(result.lockedConflicts[0].kind, ConflictKind::Carriers);
        QCOMPARE(std::set<int>({result.lockedConflicts[0].a, result.lockedConflicts[0].b}),
                 std::set<int>({0, 2}));
        QCOMPARE(result.frequencyKHz[0], 470000);
        QCOMPARE(result.frequencyKHz[2], 470100);
    }

    void files_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<std::vector<int>>("expected");
        QTest::addColumn<int>("errorLine"); // 0: read whole
        QTest::newRow("plain") << "470.125\n\n471.000\n" << std::vector<int>{470125, 471000} << 0;
        QTest::newRow("plan csv") << "address,name,frequency_mhz\n1,\"VOX, 1\",470.125\n2,GTR,471\n"
                                  << std::vector<int>{470125, 471000} << 0;
        QTest::newRow("other order") << "frequency_mhz,name\n470.500,A\n" << std::vector<int>{470500} << 0;
        QTest::newRow("off raster") << "470.125\n470.130\n" << std::vector<int>{} << 2;
        QTest::newRow("not a number") << "470.125\nabc\n" << std::vector<int>{} << 2;
        QTest::newRow("missing column") << "address,name,frequency_mhz\n1,A\n" << std::vector<int>{} << 2;
    }
    void files()
    {
        QFETCH(QString, text);
        QFETCH(int, errorLine);
        const FrequencyListResult read = importFrequencyList(text);
        QTEST(read.frequenciesKHz, "expected");
        QCOMPARE(read.ok(), errorLine == 0);
        if (errorLine)
            QVERIFY2(read.error.startsWith(QStringLiteral("Line %1:").arg(errorLine)),
                     qPrintable(read.error));
    }

    void exportsReadBack()
    {
        const std::vector<PlanEntry> entries{{1, "VOX, 1", 470125}, {12, "Say \"hi\"", 506000}};
        const QString csv = exportPlanCsv(entries);
        QCOMPARE(csv.section(QLatin1Char('\n'), 0, 0), QStringLiteral("address,name,frequency_mhz"));
        QCOMPARE(csv.section(QLatin1Char('\n'), 2, 2), QStringLiteral("12,\"Say \"\"hi\"\"\",506.000"));
        QCOMPARE(importFrequencyList(csv).frequenciesKHz, (std::vector<int>{470125, 506000}));
        QCOMPARE(exportFrequencyList({470125, 506000}), QStringLiteral("470.125\n506.000\n"));
        QCOMPARE(importFrequencyList(exportFrequencyList({470125, 506000})).frequenciesKHz,
                 (std::vector<int>{470125, 506000}));
        const std::vector<ScanPoint> scan{{470.0, -90}, {470.025, -60.5}, {470.05, -70}};
        QCOMPARE(signalsAbove(scan, -70), std::vector<int>{470025});
    }
};

QTEST_GUILESS_MAIN(TstCoordination)
#include "tst_coordination.moc"
