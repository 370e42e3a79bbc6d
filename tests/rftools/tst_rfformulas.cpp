#include "rftools/elapsed.h"
#include "rftools/rfscale.h"
#include "rftools/rftools.h"

#include <QtTest>

using namespace zun;

class TstRfFormulas : public QObject
{
    Q_OBJECT
private slots:
    void formatElapsed_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << 0.0 << "00:00:00:0";
        QTest::newRow("quarter: 2.5 tenths to even") << 0.25 << "00:00:00:2";
        QTest::newRow("h m s t") << 3723.4 << "01:02:03:4";
        QTest::newRow("tenths round on their own") << 59.96 << "00:00:59:0";
        QTest::newRow("hours wrap at 60") << 216000.0 << "00:00:00:0";
        QTest::newRow("a day is 24 h") << 86400.0 << "24:00:00:0";
    }
    void formatElapsed()
    {
        QFETCH(double, seconds);
        QTEST(FormatElapsed(seconds), "text");
    }

    void microvolts_data()
    {
        QTest::addColumn<int>("level");
        QTest::addColumn<int>("rfA");
        QTest::addColumn<QString>("cursor");
        QTest::addColumn<QString>("recorder");
        QTest::addColumn<QString>("dbm");
        // Top of the scale: the two read-outs differ by design.
        QTest::newRow("99") << 99 << 99 << "964uV" << QString("1000uV") << "-47.0dBm";
        QTest::newRow("0") << 0 << 0 << "1uV" << QString("1uV") << "-107.0dBm";
        QTest::newRow("decade 10") << 33 << 33 << "10uV" << QString("10uV") << "-87.0dBm";
        QTest::newRow("mid decade") << 50 << 50 << "53uV" << QString("50uV") << "-76.7dBm";
        // The cursor's mantissa is antenna A's, whatever level the cursor shows.
        QTest::newRow("cursor high, A low") << 99 << 40 << "100uV" << QString("1000uV") << "-47.0dBm";
        QTest::newRow("cursor low, A high") << 10 << 99 << "27uV" << QString("3uV") << "-100.9dBm";
    }
    void microvolts()
    {
        QFETCH(int, level);
        QFETCH(int, rfA);
        QTEST(formatMicrovolts(cursorMicrovolts(level, rfA)), "cursor");
        QTEST(formatMicrovolts(recorderMicrovolts(level)), "recorder");
        QTEST(formatDbm(levelDbm(level)), "dbm");
    }

    void levelRows_data()
    {
        QTest::addColumn<int>("level");
        QTest::addColumn<int>("row");
        QTest::newRow("level 0 on the base line") << 0 << 240;
        QTest::newRow("level 99 six rows from the top") << 99 << 6;
        QTest::newRow("decade exact") << 33 << 162;
        QTest::newRow("fractions round toward the base") << 1 << 238;
    }
    void levelRows()
    {
        QFETCH(int, level);
        QTEST(PlotGeometry::forScale(600, 241).levelY(level), "row");
    }
};

QTEST_GUILESS_MAIN(TstRfFormulas)
#include "tst_rfformulas.moc"
