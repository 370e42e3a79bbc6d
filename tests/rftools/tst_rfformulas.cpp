#include "rftools/elapsed.h"
#include "rftools/rfscale.h"
#include "rftools/rftools.h"

#include <QtTest>

using namespace zun;

class TstRfFormulas : public QObject
{
    Q_OBJECT
private slots:
    void formatElapsed_data();
    void formatElapsed();
    void microvolts_data();
    void microvolts();
    void levelRows_data();
    void levelRows();
    void squelchBar_data();
    void squelchBar();
    void runTimer();
};

void TstRfFormulas::formatElapsed_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0.0 << "00:00:00:0";
    QTest::newRow("quarter: 2.5 tenths to even") << 0.25 << "00:00:00:2";
    QTest::newRow("4.5 tenths to even") << 0.45 << "00:00:00:4";
    QTest::newRow("h m s t") << 3723.4 << "01:02:03:4";
    QTest::newRow("tenths round on their own") << 59.96 << "00:00:59:0";
    QTest::newRow("last before wrap") << 215999.9 << "59:59:59:9";
    QTest::newRow("hours wrap at 60") << 216000.0 << "00:00:00:0";
    QTest::newRow("a day is 24 h") << 86400.0 << "24:00:00:0";
}

void TstRfFormulas::formatElapsed()
{
    QFETCH(double, seconds);
    QFETCH(QString, text);
    QCOMPARE(FormatElapsed(seconds), text);
}

void TstRfFormulas::microvolts_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("rfA");
    QTest::addColumn<QString>("cursor");
    QTest::addColumn<QString>("recorder");
    QTest::addColumn<QString>("dbm");
    // Top of the scale: the two read-outs differ by design.
    QTest::newRow("99") << 99 << 99 << "964uV" << "1000uV" << "-47.0dBm";
    QTest::newRow("0") << 0 << 0 << "1uV" << "1uV" << "-107.0dBm";
    QTest::newRow("decade 10") << 33 << 33 << "10uV" << "10uV" << "-87.0dBm";
    QTest::newRow("decade 100") << 66 << 66 << "100uV" << "100uV" << "-67.0dBm";
    QTest::newRow("mid decade") << 50 << 50 << "53uV" << "50uV" << "-76.7dBm";
    QTest::newRow("98") << 98 << 98 << "937uV" << "900uV" << "-47.6dBm";
    // The cursor's mantissa is antenna A's, whatever level the cursor shows.
    QTest::newRow("cursor high, A low") << 99 << 40 << "100uV" << "1000uV" << "-47.0dBm";
    QTest::newRow("cursor low, A high") << 10 << 99 << "27uV" << "3uV" << "-100.9dBm";
}

void TstRfFormulas::microvolts()
{
    QFETCH(int, level);
    QFETCH(int, rfA);
    QFETCH(QString, cursor);
    QFETCH(QString, recorder);
    QFETCH(QString, dbm);
    QCOMPARE(formatMicrovolts(cursorMicrovolts(level, rfA)), cursor);
    QCOMPARE(formatMicrovolts(recorderMicrovolts(level)), recorder);
    QCOMPARE(formatDbm(levelToDbm(level)), dbm);
}

void TstRfFormulas::levelRows_data()
{
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("row");
    QTest::newRow("level 0 on the base line") << 241 << 0 << 240;
    QTest::newRow("level 99 six rows from the top") << 241 << 99 << 6;
    QTest::newRow("decade exact") << 241 << 33 << 162;
    QTest::newRow("fractions round toward the base") << 241 << 1 << 238;
    QTest::newRow("small picture") << 100 << 50 << 99 - 46;
}

void TstRfFormulas::levelRows()
{
    QFETCH(int, height);
    QFETCH(int, level);
    QFETCH(int, row);
    QCOMPARE(PlotGeometry::forScale(600, height).levelY(level), row);
}

void TstRfFormulas::squelchBar_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::newRow("middle") << 40 << 33 << 47;
    QTest::newRow("low end pushed in") << 3 << 0 << 14;
    QTest::newRow("exactly at 0") << 7 << 0 << 14;
    QTest::newRow("high end pushed in") << 95 << 85 << 99;
    QTest::newRow("exactly at 99") << 92 << 85 << 99;
}

void TstRfFormulas::squelchBar()
{
    QFETCH(int, level);
    QFETCH(int, from);
    QFETCH(int, to);
    const SquelchBarSpan span = squelchBarSpan(level);
    QCOMPARE(span.from, from);
    QCOMPARE(span.to, to);
}

void TstRfFormulas::runTimer()
{
    RunTimer timer;
    timer.start(86399.05); // cut to 86399.0
    timer.update(0.74);    // 0.7 after midnight
    QCOMPARE(FormatElapsed(timer.elapsedSeconds()), QStringLiteral("00:00:01:7"));
    timer.stop();
    timer.start(100.0);
    timer.update(102.5);
    QCOMPARE(FormatElapsed(timer.elapsedSeconds()), QStringLiteral("00:00:04:2"));
    timer.clear();
    timer.start(5.0);
    timer.update(5.0);
    QCOMPARE(timer.elapsedSeconds(), 0.0);
}

QTEST_GUILESS_MAIN(TstRfFormulas)
#include "tst_rfformulas.moc"
