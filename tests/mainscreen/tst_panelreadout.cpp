#include "core/leveltable.h"
#include "mainscreen/colors.h"
#include "mainscreen/panelreadout.h"

#include <QTest>

using namespace zun;

namespace {

QString reply(int audio, int rfA, int rfB, int battery)
{
    return QStringLiteral("$01%1%2%3%4\r")
        .arg(audio, 2, 16, QLatin1Char('0'))
        .arg(rfA, 2, 16, QLatin1Char('0'))
        .arg(rfB, 2, 16, QLatin1Char('0'))
        .arg(battery, 2, 16, QLatin1Char('0'))
        .toUpper();
}

// Squelch 20 gives the threshold LevelTable[68] = 29; raw 70 reads 32 (a
// transmitter on the air), raw 60 reads 20 (nothing heard).
constexpr int kSquelch = 20;
constexpr int kOnAir = 70;
constexpr int kQuiet = 60;

} // namespace

class TestPanelReadout : public QObject
{
    Q_OBJECT

private slots:
    void rfBars_data()
    {
        QTest::addColumn<int>("rawA");
        QTest::addColumn<int>("rawB");
        QTest::addColumn<QList<int>>("levels");
        QTest::addColumn<QList<quint32>>("colours");
        QTest::addColumn<QString>("rfSign");
        using C = QList<quint32>;
        QTest::newRow("A 14 red, B 15 light blue")
            << 54 << 55 << QList<int>{14, 15} << C{bgr::Red, bgr::LightBlue} << "RedBall";
        QTest::newRow("A 15 blue, B 14 red")
            << 55 << 54 << QList<int>{15, 14} << C{bgr::Blue, bgr::Red} << "RedBall";
        QTest::newRow("B strongest above squelch")
            << 0 << kOnAir << QList<int>{0, 32} << C{bgr::Red, bgr::LightBlue} << "GreenBall";
        QTest::newRow("exactly at squelch is off air")
            << 68 << 0 << QList<int>{29, 0} << C{bgr::Blue, bgr::Red} << "RedBall";
        QTest::newRow("full scale") << 255 << 255 << QList<int>{99, 99} << C{bgr::Blue, bgr::LightBlue}
                                    << "GreenBall";
    }
    void rfBars()
    {
        QFETCH(int, rawA);
        QFETCH(int, rawB);
        BatteryAverage battery;
        const PanelReadout r = readPanelReply(reply(0, rawA, rawB, 0), kSquelch, m_table, battery);
        QTEST((QList<int>{r.rfA, r.rfB}), "levels");
        QTEST((QList<quint32>{r.rfAColor, r.rfBColor}), "colours");
        QTEST(r.rfSignImage, "rfSign");
        QCOMPARE(r.strongest, std::max(r.rfA, r.rfB));
    }

    void audioMeter_data()
    {
        QTest::addColumn<int>("audio");
        QTest::addColumn<int>("x");
        QTest::addColumn<bool>("clip");
        QTest::addColumn<int>("topAt100"); // bar top in a 100 pixel meter

        QTest::newRow("85 still empty") << 85 << 0 << false << 100;
        QTest::newRow("86 first step, lifted by the taper") << 86 << 4 << false << 97;
        QTest::newRow("100") << 100 << 25 << false << 81;
        QTest::newRow("199 just below the clip mark") << 199 << 116 << false << 11;
        QTest::newRow("200 first red") << 200 << 117 << true << 10;
        QTest::newRow("214 top of the linear range") << 214 << 128 << true << 1;
        QTest::newRow("215 clipping, beyond full scale") << 215 << 193 << true << -49;
        QTest::newRow("255 clipping") << 255 << 193 << true << -49;
    }
    void audioMeter()
    {
        QFETCH(int, audio);
        BatteryAverage battery;
        const PanelReadout r = readPanelReply(reply(audio, 0, 0, 0), kSquelch, m_table, battery);
        QTEST(r.audioX, "x");
        QTEST(r.audioClip, "clip");
        QTEST(audioBarTop(100, r.audioX), "topAt100");
    }

    void squelchThreshold_data()
    {
        QTest::addColumn<int>("squelch");
        QTest::addColumn<int>("threshold");
        QTest::newRow("0 -> raw 16") << 0 << 3;
        QTest::newRow("20 -> raw 67.52 rounds to 68") << 20 << 29;
        QTest::newRow("50 -> raw 144.8 rounds to 145") << 50 << 45;
        QTest::newRow("93 -> raw 255.5 rounds past 255, limited") << 93 << 99;
        QTest::newRow("negative corrupt value") << -10 << 0;
        QTest::newRow("huge corrupt value") << 2000000000 << 99;
    }
    void squelchThreshold()
    {
        QFETCH(int, squelch);
        BatteryAverage battery;
        const PanelReadout r = readPanelReply(reply(0, 0, 0, 0), squelch, m_table, battery);
        QTEST(r.squelchThreshold, "threshold");
    }

    void batteryCountsOnlyOnAir()
    {
        BatteryAverage battery;
        for (int i = 0; i < 30; ++i) {
            const PanelReadout r = readPanelReply(reply(0, kQuiet, 68, 20), kSquelch, m_table, battery);
            QVERIFY(!r.batteryShown);
        }
        QCOMPARE(battery.count, 0);

        for (int i = 1; i <= 20; ++i) {
            const PanelReadout r = readPanelReply(reply(0, kOnAir, 0, 20), kSquelch, m_table, battery);
            QCOMPARE(battery.count, i);
            QVERIFY2(!r.batteryShown, qPrintable(QStringLiteral("sample %1").arg(i)));
        }
        // Interruptions by silence neither count nor show.
        PanelReadout r = readPanelReply(reply(0, kQuiet, kQuiet, 40), kSquelch, m_table, battery);
        QVERIFY(!r.batteryShown);
        QCOMPARE(battery.count, 20);

        r = readPanelReply(reply(0, 0, kOnAir, 20), kSquelch, m_table, battery);
        QCOMPARE(battery.count, 21);
        QVERIFY(r.batteryShown);
        QCOMPARE(r.batteryCaption, QStringLiteral("100%"));
        QCOMPARE(r.batteryImage, QStringLiteral("GreenBall"));
    }

    void batteryTable_data()
    {
        QTest::addColumn<int>("x");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("image");
        QTest::newRow("16") << 16 << "OFF"
                            << "";
        QTest::newRow("17") << 17 << "100%"
                            << "GreenBall";
        QTest::newRow("21") << 21 << "100%"
                            << "GreenBall";
        QTest::newRow("22") << 22 << "80%"
                            << "YellowBall";
        QTest::newRow("26") << 26 << "80%"
                            << "YellowBall";
        QTest::newRow("27") << 27 << "40%"
                            << "OrangeBall";
        QTest::newRow("31") << 31 << "40%"
                            << "OrangeBall";
        QTest::newRow("32") << 32 << "10%"
                            << "RedBall";
        QTest::newRow("35") << 35 << "10%"
                            << "RedBall";
        QTest::newRow("36") << 36 << "OFF"
                            << "";
    }
    // A steady reading r averages to r, so x = r + 1.
    void batteryTable()
    {
        QFETCH(int, x);
        BatteryAverage battery;
        PanelReadout r;
        for (int i = 0; i < 21; ++i)
            r = readPanelReply(reply(0, kOnAir, kOnAir, x - 1), kSquelch, m_table, battery);
        QVERIFY(r.batteryShown);
        QTEST(r.batteryCaption, "caption");
        QTEST(r.batteryImage, "image");
    }

    void batteryIsARunningMean()
    {
        // Ten readings of 40 and eleven of 0 average to 19.05: x = 20 ("100%").
        // The last reading alone would give 1 ("OFF"), the first alone "OFF".
        BatteryAverage battery;
        PanelReadout r;
        for (int i = 0; i < 10; ++i)
            r = readPanelReply(reply(0, kOnAir, 0, 40), kSquelch, m_table, battery);
        for (int i = 0; i < 11; ++i)
            r = readPanelReply(reply(0, kOnAir, 0, 0), kSquelch, m_table, battery);
        QCOMPARE(battery.count, 21);
        QVERIFY(qAbs(battery.average - 400.0f / 21.0f) < 1e-4f);
        QCOMPARE(r.batteryCaption, QStringLiteral("100%"));

        // A weakening battery moves the mean slowly: one reading of 255 after 21
        // of about 19 gives (21 * 19.05 + 255) / 22 = 29.8, x = 30: "40%".
        r = readPanelReply(reply(0, kOnAir, 0, 255), kSquelch, m_table, battery);
        QCOMPARE(r.batteryCaption, QStringLiteral("40%"));
        QCOMPARE(r.batteryImage, QStringLiteral("OrangeBall"));
    }

    void damagedReplies_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QList<int>>("raw"); // audio, RF A, RF B, battery

        QTest::newRow("empty") << "" << QList<int>{0, 0, 0, 0};
        QTest::newRow("cut inside the audio byte") << "$01F" << QList<int>{15, 0, 0, 0};
        QTest::newRow("cut after RF A") << "$01FF80" << QList<int>{255, 128, 0, 0};
        QTest::newRow("foreign characters count 0") << "$01G1Z2?? ~" << QList<int>{1, 2, 0, 0};
        QTest::newRow("lower case") << "$01ff8040ab" << QList<int>{255, 128, 64, 171};
        QTest::newRow("longer than expected") << "$0101020304FFFF" << QList<int>{1, 2, 3, 4};
    }
    void damagedReplies()
    {
        QFETCH(QString, text);
        BatteryAverage battery;
        const PanelReadout r = readPanelReply(text, kSquelch, m_table, battery);
        QTEST((QList<int>{r.audioRaw, r.rfARaw, r.rfBRaw, r.batteryRaw}), "raw");
        QCOMPARE(r.rfA, m_table[std::size_t(r.rfARaw)]);
    }

private:
    const LevelTable m_table = buildLevelTable();
};

QTEST_APPLESS_MAIN(TestPanelReadout)
#include "tst_panelreadout.moc"
