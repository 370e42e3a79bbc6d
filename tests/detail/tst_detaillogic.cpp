// The detail window's widget-free rules: frequency codes, the "000.000"
// form and the TV channel plans.
#include "mainscreen/tvregion.h"
#include "receivers/frequency.h"

#include <QTest>

#include <limits>

using namespace zun;

class TstDetailLogic : public QObject
{
    Q_OBJECT
private slots:
    void conversions_data()
    {
        // Either direction: code -> MHz (and its "000.000" text) or MHz -> code.
        QTest::addColumn<QString>("code");
        QTest::addColumn<double>("mhz");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<bool>("toCode");
        const double nan = std::numeric_limits<double>::quiet_NaN();
        QTest::newRow("worked example") << "1234" << 182.25 << "182.250" << false;
        QTest::newRow("leading zeros kept") << "0000" << 65.75 << "065.750" << false;
        QTest::newRow("empty code") << "" << 0.0 << "000.000" << false;
        QTest::newRow("32-bit overflow") << "7FFFFFFF" << 0.0 << "000.000" << false;
        QTest::newRow("back to code") << "1234" << 182.25 << "" << true;
        QTest::newRow("half step to even, down") << "1234" << 182.2625 << "" << true; // 4660.5
        QTest::newRow("half step to even, up") << "1236" << 182.2875 << "" << true;   // 4661.5
        QTest::newRow("over half") << "1235" << 182.263 << "" << true;
        QTest::newRow("below the raster origin") << "FFFF" << 65.725 << "" << true;
        QTest::newRow("not a number") << "0000" << nan << "" << true;
        QTest::newRow("beyond any code") << "0000" << 1e12 << "" << true;
    }
    void conversions()
    {
        QFETCH(QString, code);
        QFETCH(double, mhz);
        QFETCH(bool, toCode);
        if (toCode) {
            QCOMPARE(ComputeNA(mhz), code);
        } else {
            QCOMPARE(ComputeFreq(code), mhz);
            QTEST(formatFreq(ComputeFreq(code)), "shown");
        }
    }

    void roundTripOverTheBand()
    {
        for (int code = 0x3FBC; code <= 0x5A00; ++code) {
            const QString text = QString::number(code, 16).toUpper();
            if (ComputeNA(ComputeFreq(text)) != text)
                QFAIL(qPrintable(text));
        }
        // The form rounds what it shows half away from zero, as a user reads it.
        QCOMPARE(formatFreq(182.2755), QStringLiteral("182.276"));
        QCOMPARE(formatFreq(double(565.975f)), QStringLiteral("565.975"));
    }

    void tvChannel_data()
    {
        QTest::addColumn<int>("region");
        QTest::addColumn<double>("mhz");
        QTest::addColumn<QString>("channel");
        QTest::newRow("Europe low edge") << 2 << 470.000 << "21";
        QTest::newRow("Europe just under the next") << 2 << 477.999 << "21";
        QTest::newRow("Europe next channel") << 2 << 478.000 << "22";
        QTest::newRow("Europe top is outside") << 2 << 862.000 << "";
        QTest::newRow("China gap") << 1 << 580.0 << "";
        QTest::newRow("China lower band top") << 1 << 565.9 << "24";
        QTest::newRow("China upper band") << 1 << 606.0 << "25";
        QTest::newRow("Australia below its band") << 0 << 525.9 << "";
        QTest::newRow("Australia 7 MHz channels") << 0 << 533.0 << "29";
        QTest::newRow("Japan") << 3 << 769.9 << "62";
        QTest::newRow("USA") << 5 << 476.0 << "15";
        QTest::newRow("unknown region uses Taiwan") << 9 << 889.99 << "83";
        QTest::newRow("no frequency") << 4 << 0.0 << "";
    }
    void tvChannel()
    {
        QFETCH(int, region);
        QFETCH(double, mhz);
        QTEST(TvChannel(region, mhz), "channel");
    }
};

QTEST_GUILESS_MAIN(TstDetailLogic)
#include "tst_detaillogic.moc"
