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
    void rfBars_data();
    void rfBars();
    void audioMeter_data();
    void audioMeter();
    void squelchThreshold_data();
    void squelchThreshold();
    void batteryCountsOnlyOnAir();
    void batteryTable_data();
    void batteryTable();
    void batteryIsARunningMean();
    void damagedReplies_data();
    void damagedReplies();

private:
    const LevelTable m_table = buildLevelTable();
};

void TestPanelReadout::rfBars_data()
{
    QTest::addColumn<int>("rawA");
    QTest::addColumn<int>("rawB");
    QTest::addColumn<int>("levelA");
    QTest::addColumn<int>("levelB");
    QTest::addColumn<quint32>("colourA");
    QTest::addColumn<quint32>("colourB");
    QTest::addColumn<QString>("rfSign");

    QTest::newRow("A 14 red, B 15 light blue") << 54 << 55 << 14 << 15 << bgr::Red << bgr::LightBlue
                                               << "RedBall";
    QTest::newRow("A 15 blue, B 14 red") << 55 << 54 << 15 << 14 << bgr::Blue << bgr::Red << "RedBall";
    QTest::newRow("B strongest above squelch") << 0 << kOnAir << 0 << 32 << bgr::Red << bgr::LightBlue
                                               << "GreenBall";
    QTest::newRow("exactly at squelch is off air") << 68 << 0 << 29 << 0 << bgr::Blue << bgr::Red
                                                   << "RedBall";
    QTest::newRow("full scale") << 255 << 255 << 99 << 99 << bgr::Blue << bgr::LightBlue
                                << "GreenBall";
}

void TestPanelReadout::rfBars()
{
    QFETCH(int, rawA);
    QFETCH(int, rawB);
    BatteryAverage battery;
    const PanelReadout r = readPanelReply(reply(0, rawA, rawB, 0), kSquelch, m_table, battery);
    QTEST(r.rfA, "levelA");
    QTEST(r.rfB, "levelB");
    QTEST(r.rfAColor, "colourA");
    QTEST(r.rfBColor, "colourB");
    QTEST(r.rfSignImage, "rfSign");
    QCOMPARE(r.strongest, std::max(r.rfA, r.rfB));
}

void TestPanelReadout::audioMeter_data()
{
    QTest::addColumn<int>("audio");
    QTest::addColumn<int>("x");
    QTest::addColumn<bool>("clip");
    QTest::addColumn<int>("topAt100"); // bar top in a 100 pixel meter

    QTest::newRow("silence") << 0 << 0 << false << 100;
    QTest::newRow("85 still empty") << 85 << 0 << false << 100;
    QTest::newRow("86 first step, lifted by the taper") << 86 << 4 << false << 97;
    QTest::newRow("100") << 100 << 25 << false << 81;
    QTest::newRow("199 just below the clip mark") << 199 << 116 << false << 11;
    QTest::newRow("200 first red") << 200 << 117 << true << 10;
    QTest::newRow("214 top of the linear range") << 214 << 128 << true << 1;
    QTest::newRow("215 clipping, beyond full scale") << 215 << 193 << true << -49;
    QTest::newRow("255 clipping") << 255 << 193 << true << -49;
}

void TestPanelReadout::audioMeter()
{
    QFETCH(int, audio);
    BatteryAverage battery;
    const PanelReadout r = readPanelReply(reply(audio, 0, 0, 0), kSquelch, m_table, battery);
    QTEST(r.audioX, "x");
    QTEST(r.audioClip, "clip");
    QTEST(audioBarTop(100, r.audioX), "topAt100");
}

void TestPanelReadout::squelchThreshold_data()
{
    QTest::addColumn<int>("squelch");
    QTest::addColumn<int>("threshold");
    QTest::newRow("0 -> raw 16") << 0 << 3;
    QTest::newRow("20 -> raw 67.52 rounds to 68") << 20 << 29;
    QTest::newRow("50 -> raw 144.8 rounds to 145") << 50 << 45;
    QTest::newRow("93 -> raw 255.5 rounds past 255, limited") << 93 << 99;
    QTest::newRow("99 -> past 255, limited") << 99 << 99;
    QTest::newRow("negative corrupt value") << -10 << 0;
    QTest::newRow("huge corrupt value") << 2000000000 << 99;
}

void TestPanelReadout::squelchThreshold()
{
    QFETCH(int, squelch);
    BatteryAverage battery;
    const PanelReadout r = readPanelReply(reply(0, 0, 0, 0), squelch, m_table, battery);
    QTEST(r.squelchThreshold, "threshold");
}

void TestPanelReadout::batteryCountsOnlyOnAir()
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

void TestPanelReadout::batteryTable_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("image");
    QTest::newRow("16") << 16 << "OFF" << "";
    QTest::newRow("17") << 17 << "100%" << "GreenBall";
    QTest::newRow("21") << 21 << "100%" << "GreenBall";
    QTest::newRow("22") << 22 << "80%" << "YellowBall";
    QTest::newRow("26") << 26 << "80%" << "YellowBall";
    QTest::newRow("27") << 27 << "40%" << "OrangeBall";
    QTest::newRow("31") << 31 << "40%" << "OrangeBall";
    QTest::newRow("32") << 32 << "10%" << "RedBall";
    QTest::newRow("35") << 35 << "10%" << "RedBall";
    QTest::newRow("36") << 36 << "OFF" << "";
    QTest::newRow("1") << 1 << "OFF" << "";
}

// A steady reading r averages to r, so x = r + 1.
void TestPanelReadout::batteryTable()
{
    QFETCH(int, x);
    BatteryAverage battery;
    PanelReadout r;
    for (int i = 0; i < 21; ++i)
        r = readPanelReply(reply(0, kOnAir, kOnAir, x - 1), kSquelch, m_table, battery);
    QVERIFY(r.batteryShown);
    QTEST(r.batteryCaption, "caption");
    QTEST(r.batteryImage, "image");
    QCOMPARE(batteryState(x).caption, r.batteryCaption);
}

void TestPanelReadout::batteryIsARunningMean()
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

void TestPanelReadout::damagedReplies_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("audio");
    QTest::addColumn<int>("rfARaw");
    QTest::addColumn<int>("rfBRaw");
    QTest::addColumn<int>("battery");

    QTest::newRow("empty") << "" << 0 << 0 << 0 << 0;
    QTest::newRow("address only") << "$01" << 0 << 0 << 0 << 0;
    QTest::newRow("cut inside the audio byte") << "$01F" << 15 << 0 << 0 << 0;
    QTest::newRow("cut after RF A") << "$01FF80" << 255 << 128 << 0 << 0;
    QTest::newRow("foreign characters count 0") << "$01G1Z2?? ~" << 1 << 2 << 0 << 0;
    QTest::newRow("lower case") << "$01ff8040ab" << 255 << 128 << 64 << 171;
    QTest::newRow("without carriage return") << "$01FF804020" << 255 << 128 << 64 << 32;
    QTest::newRow("longer than expected") << "$0101020304FFFF" << 1 << 2 << 3 << 4;
}

void TestPanelReadout::damagedReplies()
{
    QFETCH(QString, text);
    BatteryAverage battery;
    const PanelReadout r = readPanelReply(text, kSquelch, m_table, battery);
    QTEST(r.audioRaw, "audio");
    QTEST(r.rfARaw, "rfARaw");
    QTEST(r.rfBRaw, "rfBRaw");
    QTEST(r.batteryRaw, "battery");
    QCOMPARE(r.rfA, m_table[std::size_t(r.rfARaw)]);
}

QTEST_APPLESS_MAIN(TestPanelReadout)
#include "tst_panelreadout.moc"
