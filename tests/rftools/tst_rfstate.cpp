// The RF tools' rules without the windows: formulas, the scan and
// recorder states, the drop counter.
#include "receivers/dropcounter.h"
#include "rftools/elapsed.h"
#include "rftools/recorderstate.h"
#include "rftools/rfscale.h"
#include "rftools/rftools.h"
#include "rftools/scanstate.h"

#include <QtTest>

using namespace zun;

namespace {
ScanState scanOf(int n, int step)
{
    ScanState s;
    s.setPointCount(n);
    s.setGeometry(600, 241);
    s.step = step;
    return s;
}

// One scan step without the line at level 50; returns the point measured.
int measureAndAdvance(ScanState &s)
{
    const int measured = s.scanIndex;
    s.rfA = s.rfB = 50;
    s.storeLevel();
    s.advance();
    return measured;
}
} // namespace

class TstRfState : public QObject
{
    Q_OBJECT
private slots:
    void formatElapsed_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("quarter: 2.5 tenths to even") << 0.25 << "00:00:00:2";
        QTest::newRow("h m s t") << 3723.4 << "01:02:03:4";
        QTest::newRow("tenths round on their own") << 59.96 << "00:00:59:0";
        QTest::newRow("hours wrap at 60") << 216000.0 << "00:00:00:0";
        QTest::newRow("a day is 24 h") << 86400.0 << "24:00:00:0";
    }
    void formatElapsed()
    {
        QFETCH(double, seconds);
        QTEST(zun::formatElapsed(seconds), "text");
    }

    // What a level reads as, and the picture row it is drawn on (0 on the
    // base line, 99 six rows from the top, rounded toward the base).
    void levelScale_data()
    {
        QTest::addColumn<int>("level");
        QTest::addColumn<int>("rfA");
        QTest::addColumn<QString>("cursor");
        QTest::addColumn<QString>("recorder");
        QTest::addColumn<QString>("dbm");
        QTest::addColumn<int>("row");
        // Top of the scale: the two read-outs differ by design.
        QTest::newRow("99") << 99 << 99 << "964uV" << QString("1000uV") << "-47.0dBm" << 6;
        QTest::newRow("0") << 0 << 0 << "1uV" << QString("1uV") << "-107.0dBm" << 240;
        QTest::newRow("1") << 1 << 1 << "1uV" << QString("1uV") << "-106.4dBm" << 238;
        QTest::newRow("decade 10") << 33 << 33 << "10uV" << QString("10uV") << "-87.0dBm" << 162;
        QTest::newRow("mid decade") << 50 << 50 << "53uV" << QString("50uV") << "-76.7dBm" << 122;
        // The cursor's mantissa is antenna A's, whatever level the cursor shows.
        QTest::newRow("cursor high, A low") << 99 << 40 << "100uV" << QString("1000uV") << "-47.0dBm" << 6;
        QTest::newRow("cursor low, A high") << 10 << 99 << "27uV" << QString("3uV") << "-100.9dBm" << 217;
    }
    void levelScale()
    {
        QFETCH(int, level);
        QFETCH(int, rfA);
        QTEST(formatMicrovolts(cursorMicrovolts(level, rfA)), "cursor");
        QTEST(formatMicrovolts(recorderMicrovolts(level)), "recorder");
        QTEST(formatDbm(levelDbm(level)), "dbm");
        QTEST(PlotGeometry::forScale(600, 241).levelY(level), "row");
    }

    void advance_data()
    {
        QTest::addColumn<int>("n");
        QTest::addColumn<int>("step");
        QTest::addColumn<QList<int>>("visited");
        QTest::newRow("step 5, N 12") << 12 << 5 << QList<int>{0, 5, 10, 0};
        QTest::newRow("step 2, odd N") << 7 << 2 << QList<int>{0, 2, 4, 6, 0};
        QTest::newRow("step 4, N 8 ends on N") << 8 << 4 << QList<int>{0, 4, 8, 0};
        QTest::newRow("one-point band") << 0 << 1 << QList<int>{0, 0};
    }
    void advance()
    {
        QFETCH(int, n);
        QFETCH(int, step);
        QFETCH(QList<int>, visited);
        ScanState s = scanOf(n, step);
        QList<int> seen;
        for (int k = 0; k + 1 < visited.size(); ++k)
            seen << measureAndAdvance(s);
        // One sweep done: every point it passed over sits on the floor, measured
        // ones keep their level, and the wrap left the cursor on point 0.
        for (int i = 0; i <= n; ++i)
            QCOMPARE(int(s.levels[i]), visited.contains(i) ? 50 : 1);
        QCOMPARE(s.cursorX, 0);
        seen << measureAndAdvance(s);
        QCOMPARE(seen, visited);
        QCOMPARE(s.cursorX, s.xOf(s.scanIndex));
    }

    // A single sweep stops only on the last point, which a step may jump over.
    void stopReached_data()
    {
        QTest::addColumn<SweepMode>("mode");
        QTest::addColumn<QList<int>>("state"); // index, level, squelch level
        QTest::addColumn<bool>("stops");
        using M = SweepMode;
        QTest::newRow("halt: floor, squelch 0") << M::Halt << QList<int>{0, 1, 0} << false;
        QTest::newRow("halt: above floor and squelch") << M::Halt << QList<int>{0, 2, 1} << true;
        QTest::newRow("halt: equal to squelch") << M::Halt << QList<int>{0, 40, 40} << false;
        QTest::newRow("halt: one above squelch") << M::Halt << QList<int>{0, 41, 40} << true;
        QTest::newRow("single: on the last point") << M::Single << QList<int>{10, 1, 0} << true;
        QTest::newRow("single: short of it") << M::Single << QList<int>{9, 99, 0} << false;
        QTest::newRow("continuous never") << M::Continuous << QList<int>{10, 99, 0} << false;
    }
    void stopReached()
    {
        QFETCH(SweepMode, mode);
        QFETCH(QList<int>, state);
        ScanState s = scanOf(10, 1);
        s.scanIndex = state[0];
        s.rfA = state[1];
        s.rfB = 0;
        s.squelchLevel = state[2];
        s.storeLevel();
        QTEST(s.stopReached(mode), "stops");
    }

    void peakWalkOnEqualLevels_data()
    {
        // Worked through by hand: the order among equal levels is the procedure's alone.
        QTest::addColumn<QList<int>>("levels");
        QTest::addColumn<QList<int>>("order");
        QTest::addColumn<QList<int>>("walk"); // Peak, then Next P until it wraps
        QTest::newRow("three 7s and two 3s") << QList<int>{3, 7, 7, 1, 7, 3} << QList<int>{3, 5, 0, 4, 1, 2}
                                             << QList<int>{2, 1, 4, 0, 5, 3, 2};
        // The partition ends with i = j = mid: the order of the overlapping halves shows.
        QTest::newRow("all equal") << QList<int>{4, 4, 4} << QList<int>{0, 2, 1} << QList<int>{1, 2, 0, 1};
        QTest::newRow("one point stays put") << QList<int>{4} << QList<int>{0} << QList<int>{0, 0};
    }
    void peakWalkOnEqualLevels()
    {
        QFETCH(QList<int>, levels);
        QFETCH(QList<int>, walk);
        const int n = static_cast<int>(levels.size()) - 1;
        ScanState s = scanOf(n, 1);
        s.levels.assign(levels.begin(), levels.end());
        QVERIFY(s.goToStrongest());
        QTEST(QList<int>(s.peakOrder.begin(), s.peakOrder.end()), "order");
        QList<int> visited{s.scanIndex};
        while (visited.size() < walk.size()) {
            QVERIFY(s.goToNextPeak());
            visited << s.scanIndex;
        }
        QCOMPARE(visited, walk);
        QCOMPARE(s.level, levels[walk.last()]);
        // A valid list is reused, not sorted again.
        s.levels[0] = 99;
        QVERIFY(!s.goToStrongest());
        QCOMPARE(s.scanIndex, walk.first());
    }

    // Slow, as Clear leaves it, five samples share a column; fast takes two
    // columns a sample and scrolls at the right edge by one, then two. The
    // first sample after Clear stays off-screen either way.
    void recorderColumns()
    {
        const PlotGeometry g = PlotGeometry::forScale(300, 241);
        RecorderState r;
        r.clear(g);
        QList<int> slowColumns; // -1: not shown
        for (int k = 0; k < 7; ++k) {
            const RecorderSegment seg = r.step(10, 20, 300, g);
            slowColumns << (seg.present ? seg.toX : -1);
        }
        QCOMPARE(slowColumns, (QList<int>{-1, -1, -1, -1, -1, 1, 1}));
        r.clear(g);
        r.speed = RecorderState::kFast;
        for (int k = 0; k < 160; ++k) {
            const RecorderSegment seg = r.step(k % 99, 50, 300, g);
            QCOMPARE(seg.present, k > 0);
            QCOMPARE(seg.scroll, k < 150 ? 0 : k == 150 ? 1 : 2);
            QCOMPARE(seg.toX, k < 150 ? 2 * k : 299);
            if (k >= 150)
                QCOMPARE(seg.fromX, 297);
            QCOMPARE(seg.toYA, g.levelY(k % 99));
            if (k > 0)
                QCOMPARE(seg.fromYA, g.levelY((k - 1) % 99));
        }
    }

    void dropCounter_data()
    {
        // "A/B" readings against squelch level 10; r DropRun, p DropPause, c DropClear.
        QTest::addColumn<QString>("script");
        QTest::addColumn<QString>("drops"); // A/B
        const auto row = [](const char *name, const char *script, const char *drops) {
            QTest::newRow(name) << QString(script) << QString(drops);
        };
        row("off counts nothing", "5/5 20/20 5/5", "0/0");
        row("one drop per passage", "r 20/20 5/20 4/20 20/20 9/20", "2/0");
        row("equality is above", "r 10/10 9/10 10/10 9/10 10/9", "2/1");
        row("starting below counts", "r 3/30", "1/0");
        row("pause keeps the below flag", "r 5/20 p 30/30 r 5/20", "1/0");
        row("clear keeps the below flag", "r 5/5 c r 5/5 20/20 5/5", "1/1");
        row("clear stops counting", "r 5/5 c 20/20 5/5", "0/0");
    }
    void dropCounter()
    {
        QFETCH(QString, script);
        DropCounter counter;
        for (const QString &word : script.split(QLatin1Char(' '))) {
            if (word == QLatin1String("r"))
                counter.run();
            else if (word == QLatin1String("p"))
                counter.pause();
            else if (word == QLatin1String("c"))
                counter.clear();
            else
                counter.count(word.section(QLatin1Char('/'), 0, 0).toInt(),
                              word.section(QLatin1Char('/'), 1).toInt(), 10);
        }
        QTEST(counter.textA() + '/' + counter.textB(), "drops");
    }
};

QTEST_GUILESS_MAIN(TstRfState)
#include "tst_rfstate.moc"
