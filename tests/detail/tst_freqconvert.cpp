#include "detail/freqconvert.h"
#include "detail/freqstep.h"
#include "detail/tvregion.h"

#include <QTest>

#include <limits>

using namespace zun;

class TstFreqConvert : public QObject
{
    Q_OBJECT
private slots:
    void computeFreq_data();
    void computeFreq();
    void computeNA_data();
    void computeNA();
    void roundTripOverTheBand();
    void formatFreq_data();
    void formatFreq();
    void stepping_data();
    void stepping();
    void inBand_data();
    void inBand();
    void tvChannel_data();
    void tvChannel();
};

void TstFreqConvert::computeFreq_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<double>("mhz");
    QTest::newRow("worked example") << "1234" << 182.25;
    QTest::newRow("lower case") << "72ba" << 800.0;
    QTest::newRow("code zero") << "0000" << 65.75;
    QTest::newRow("empty") << "" << 0.0;
    QTest::newRow("three digits") << "123" << 0.0;
    QTest::newRow("top of 4 digits") << "FFFF" << (25.0 * 65535 + 65750) / 1000;
    // 25 x code leaves the 32-bit range: no fault, no frequency.
    QTest::newRow("overflow") << "7FFFFFFF" << 0.0;
    QTest::newRow("negative fits") << "FFFFFFFF" << 65.725;
}

void TstFreqConvert::computeFreq()
{
    QFETCH(QString, code);
    QFETCH(double, mhz);
    QCOMPARE(ComputeFreq(code), mhz);
}

void TstFreqConvert::computeNA_data()
{
    QTest::addColumn<double>("mhz");
    QTest::addColumn<QString>("code");
    QTest::newRow("worked example") << 182.25 << "1234";
    QTest::newRow("band start") << 800.0 << "72BA";
    // Halfway between two raster points: the even code wins.
    QTest::newRow("half to even, down") << 182.2625 << "1234"; // 4660.5 -> 4660
    QTest::newRow("half to even, up") << 182.2875 << "1236";   // 4661.5 -> 4662
    QTest::newRow("just above half") << 182.263 << "1235";
    QTest::newRow("below the raster origin") << 65.725 << "FFFF";
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << "0000";
    QTest::newRow("far beyond") << 1e12 << "0000";
}

void TstFreqConvert::computeNA()
{
    QFETCH(double, mhz);
    QFETCH(QString, code);
    QCOMPARE(ComputeNA(mhz), code);
}

void TstFreqConvert::roundTripOverTheBand()
{
    // Every raster point of a 470..910 MHz receiver survives code -> MHz -> code.
    for (int code = 0x3FBC; code <= 0x5A00; ++code) {
        const QString text = QString::number(code, 16).toUpper();
        const QString back = ComputeNA(ComputeFreq(text));
        if (back != text)
            QFAIL(qPrintable(QStringLiteral("%1 came back as %2").arg(text, back)));
    }
}

void TstFreqConvert::formatFreq_data()
{
    QTest::addColumn<double>("mhz");
    QTest::addColumn<QString>("text");
    QTest::newRow("plain") << 182.25 << "182.250";
    QTest::newRow("leading zeros") << 65.75 << "065.750";
    QTest::newRow("zero") << 0.0 << "000.000";
    QTest::newRow("half away from zero") << 182.2755 << "182.276";
    QTest::newRow("single precision noise") << double(565.975f) << "565.975";
    QTest::newRow("four integer digits") << 1234.5 << "1234.500";
}

void TstFreqConvert::formatFreq()
{
    QFETCH(double, mhz);
    QFETCH(QString, text);
    QCOMPARE(zun::formatFreq(mhz), text);
}

void TstFreqConvert::stepping_data()
{
    QTest::addColumn<QString>("freq");
    QTest::addColumn<int>("multiplier");
    QTest::addColumn<bool>("up");
    QTest::addColumn<QString>("next");
    // Band 470.000 .. 566.000 throughout.
    QTest::newRow("up inside") << "500.000" << 4 << true << "500.1";
    QTest::newRow("up to the stop exactly") << "565.875" << 5 << true << "566";
    QTest::newRow("up past the stop wraps to the start") << "566.000" << 1 << true << "470.000";
    QTest::newRow("down inside") << "500.000" << 2 << false << "499.95";
    QTest::newRow("down past the start wraps to the stop") << "470.000" << 1 << false << "566.000";
    QTest::newRow("single precision shows") << "565.975" << 1 << true << "565.999975585937";
}

void TstFreqConvert::stepping()
{
    QFETCH(QString, freq);
    QFETCH(int, multiplier);
    QFETCH(bool, up);
    QFETCH(QString, next);
    const QString start = QStringLiteral("470.000");
    const QString stop = QStringLiteral("566.000");
    QCOMPARE(up ? stepFrequencyUp(freq, multiplier, start, stop) : stepFrequencyDown(freq, multiplier, start, stop),
             next);
}

void TstFreqConvert::inBand_data()
{
    QTest::addColumn<QString>("entered");
    QTest::addColumn<bool>("taken");
    QTest::newRow("band start") << "470" << true;
    QTest::newRow("band stop") << "566.000" << true;
    QTest::newRow("just below") << "469.999" << false;
    QTest::newRow("just above") << "566.001" << false;
    QTest::newRow("blanks around") << " 500 " << true;
}

void TstFreqConvert::inBand()
{
    QFETCH(QString, entered);
    QFETCH(bool, taken);
    QCOMPARE(frequencyInBand(entered, QStringLiteral("470.000"), QStringLiteral("566.000")), taken);
}

void TstFreqConvert::tvChannel_data()
{
    QTest::addColumn<int>("region");
    QTest::addColumn<double>("mhz");
    QTest::addColumn<QString>("channel");
    QTest::newRow("Europe low edge") << 2 << 470.000 << "21";
    QTest::newRow("Europe just under the next") << 2 << 477.999 << "21";
    QTest::newRow("Europe next channel") << 2 << 478.000 << "22";
    QTest::newRow("Europe top is outside") << 2 << 862.000 << "";
    QTest::newRow("China gap") << 1 << 580.0 << "";
    QTest::newRow("China upper band") << 1 << 606.0 << "25";
    QTest::newRow("China lower band") << 1 << 565.9 << "24";
    QTest::newRow("Australia below") << 0 << 525.9 << "";
    QTest::newRow("Australia") << 0 << 533.0 << "29";
    QTest::newRow("Japan") << 3 << 769.9 << "62";
    QTest::newRow("USA") << 5 << 476.0 << "15";
    QTest::newRow("Taiwan") << 4 << 889.99 << "83";
    QTest::newRow("unknown region uses Taiwan") << 9 << 476.0 << "15";
    QTest::newRow("negative region uses Taiwan") << -1 << 470.0 << "14";
    QTest::newRow("no frequency") << 2 << 0.0 << "";
}

void TstFreqConvert::tvChannel()
{
    QFETCH(int, region);
    QFETCH(double, mhz);
    QFETCH(QString, channel);
    QCOMPARE(TvChannel(region, mhz), channel);
}

QTEST_GUILESS_MAIN(TstFreqConvert)
#include "tst_freqconvert.moc"
