#include "alarms/alarmengine.h"
#include "alarms/alarmsettings.h"
#include "platform/clock.h"
#include "platform/settingsstore.h"

#include <QtTest>

using namespace zun;

namespace {
Receiver receiver(int address = 3)
{
    Receiver s;
    s.address = address;
    s.name = "LEAD";
    s.squelch = 20;
    s.levels.rfA = s.levels.rfB = 80;
    s.batteryPercent = 100;
    s.online = true;
    return s;
}

// "Key=value ..." stored in the alarms section.
MemorySettingsStore storeOf(const QString &stored)
{
    MemorySettingsStore store;
    for (const QString &entry : stored.split(' ', Qt::SkipEmptyParts))
        store.save("KESTA_ZUN", "Alarms", entry.section('=', 0, 0), entry.section('=', 1));
    return store;
}

// Runs "ms event" steps on the virtual clock. Events: "ok" (a good reading),
// "rfA10" / "rfB10" (that antenna alone), "clip", "bat10", "off", "back", "ack".
// Each alarm reads "condition @raised ack@ms cleared@ms".
QStringList run(const QString &script, const QString &stored = {})
{
    VirtualClock clock;
    AlarmEngine engine(clock);
    engine.setSettings(AlarmSettings::load(storeOf(stored)));
    for (const QString &step : script.split(';', Qt::SkipEmptyParts)) {
        const QStringList parts = step.trimmed().split(' ');
        clock.advanceMicros(parts.at(0).toULongLong() * 1000 - clock.nowMicros());
        const QString event = parts.value(1);
        Receiver reading = receiver();
        if (event == "off") {
            engine.onWentOffline(reading);
        } else if (event == "back") {
            engine.onCameBack(reading);
        } else if (event == "ack") {
            engine.acknowledge(reading.address);
        } else {
            const int value = event.mid(3).toInt();
            if (event.startsWith("rf"))
                reading.levels.rfA = reading.levels.rfB = 0;
            if (event.startsWith("rfA"))
                reading.levels.rfA = value;
            if (event.startsWith("rfB"))
                reading.levels.rfB = value;
            if (event.startsWith("bat"))
                reading.batteryPercent = value;
            reading.levels.audioClip = event == "clip";
            engine.onLevelsRead(reading);
        }
    }
    QStringList out;
    for (const Alarm &a : engine.alarms()) {
        QString text = conditionText(a.condition) + QStringLiteral(" @%1").arg(a.raisedMicros / 1000);
        if (a.acknowledgedMicros)
            text += QStringLiteral(" ack@%1").arg(*a.acknowledgedMicros / 1000);
        if (a.clearedMicros)
            text += QStringLiteral(" cleared@%1").arg(*a.clearedMicros / 1000);
        out << text;
    }
    return out;
}
} // namespace

class TstAlarms : public QObject
{
    Q_OBJECT
private slots:
    void conditions_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QStringList>("alarms");
        QTest::addColumn<QString>("stored");
        // Squelch setting 20 is level 29 on the meters' scale.
        const auto row = [](const char *name, const char *script, const QStringList &alarms,
                            const char *stored = "") {
            QTest::newRow(name) << QString(script) << alarms << QString(stored);
        };
        row("RF low: 2 s is not longer than 2 s", "0 rfA0; 1000 rfA0; 2000 rfA0; 2050 ok", {});
        row("RF low raised after 2 s, cleared by a good reading",
            "0 rfA0; 2000 rfA0; 2100 rfB10; 2600 ack; 3000 ok",
            {"RF below squelch @2100 ack@2600 cleared@3000"});
        row("RF at the squelch level is not below it", "0 rfA29; 3000 rfB29; 6000 rfA29", {});
        row("one antenna above keeps RF fine", "0 rfA99; 3000 rfA99", {});
        row("a good reading restarts the RF timer", "0 rfA0; 1500 ok; 1600 rfA0; 3500 rfA0; 3700 rfA0",
            {"RF below squelch @3700"});
        row("battery at 10 %, then fresh", "100 bat10; 200 bat10; 900 bat100",
            {"Battery low @100 cleared@900"});
        row("battery OFF", "100 bat0", {"Battery low @100"});
        row("battery 40 % is fine", "100 bat40", {});
        row("offline until back", "0 ok; 500 off; 700 off; 1200 ack; 4000 back",
            {"Offline @500 ack@1200 cleared@4000"});
        row("offline ends RF low; a reading ends offline", "0 rfA0; 2500 rfA0; 3000 off; 5000 ok",
            {"RF below squelch @2500 cleared@3000", "Offline @3000 cleared@5000"});
        row("clipping longer than 0.5 s", "0 clip; 500 clip; 600 clip; 800 ok",
            {"Audio clipping @600 cleared@800"});
        row("short clipping is no alarm", "0 clip; 400 clip; 450 ok; 900 clip", {});
        row("raised again after clearing", "0 bat10; 100 bat100; 200 bat0",
            {"Battery low @0 cleared@100", "Battery low @200"});
        row("battery alarm off", "0 bat0", {}, "Battery=0");
        row("RF alarm off", "0 rfA0; 3000 rfA0", {}, "RFLow=0");
        row("offline alarm off", "0 off", {}, "Offline=0");
        row("clipping alarm off", "0 clip; 900 clip", {}, "Clipping=0");
        row("RF low time from the store", "0 rfA0; 5000 rfA0; 5600 rfA0", {"RF below squelch @5600"},
            "RFLowSeconds=5.5");
        row("clipping time out of range: the default", "0 clip; 600 clip", {"Audio clipping @600"},
            "ClippingSeconds=-1");
    }
    void conditions()
    {
        QFETCH(QString, script);
        QFETCH(QString, stored);
        QTEST(run(script, stored), "alarms");
    }

    void settingsSurviveASave()
    {
        const AlarmSettings s = AlarmSettings::load(storeOf("RFLowSeconds=5.5 Sound=yes"));
        QVERIFY(!s.soundOn); // only a stored 1 turns the sound on
        MemorySettingsStore saved;
        s.save(saved);
        QCOMPARE(AlarmSettings::load(saved).rfLowSeconds, 5.5);
    }

    void acknowledgeStopsTheFlashOfOneReceiverOnly()
    {
        VirtualClock clock;
        AlarmEngine engine(clock);
        engine.onWentOffline(receiver(3));
        engine.onWentOffline(receiver(9));
        clock.advanceMillis(300);
        engine.acknowledge(3);
        QVERIFY(!engine.hasUnacknowledged(3));
        QVERIFY(engine.hasUnacknowledged(9));
        engine.onCameBack(receiver(3));
        engine.onWentOffline(receiver(3));
        QVERIFY(engine.hasUnacknowledged(3));
    }
};

QTEST_GUILESS_MAIN(TstAlarms)
#include "tst_alarms.moc"
