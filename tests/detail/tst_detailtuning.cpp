// The detail window's load, live reading, close and tuning on the simulator.
#include "detail/detailrig.h"

#include "detail/detailmeters.h"
#include "detail/freqconvert.h"
#include "link/hex.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QToolButton>

using namespace zun;
using namespace zun::test;

Q_DECLARE_METATYPE(zun::Preset)

namespace {
QString freqOf(int code)
{
    return formatFreq(ComputeFreq(NumToHex(code, 4)));
}
} // namespace

class TstDetailTuning : public QObject
{
    Q_OBJECT
private slots:
    void load_data()
    {
        QTest::addColumn<QString>("groupTable");
        QTest::addColumn<Preset>("stored");
        QTest::addColumn<bool>("manual");
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<Preset>("repaired");
        const QString limit = "Wrong 'GROUP LIMIT' !";
        QTest::newRow("sound") << "38C400000000" << Preset{2, 5} << false << QStringList{} << Preset{2, 5};
        QTest::newRow("manual") << "38C400000000" << Preset{2, 5} << true << QStringList{} << Preset{2, 5};
        QTest::newRow("limit 0, group 0 becomes the limit")
            << "08C400000000" << Preset{0, 5} << false << QStringList{limit, "Wrong 'GROUP' !"}
            << Preset{11, 5};
        QTest::newRow("limit C, channel too high") << "C8C400000000" << Preset{1, 12} << false
                                                   << QStringList{limit, "Wrong 'CHANNEL' !"} << Preset{1, 8};
        QTest::newRow("channel 0 is 16 silently")
            << "30C000000000" << Preset{1, 0} << false << QStringList{} << Preset{1, 16};
    }
    void load()
    {
        QFETCH(QString, groupTable);
        QFETCH(Preset, stored);
        QFETCH(bool, manual);
        QFETCH(Preset, repaired);
        DetailRig rig;
        ReceiverRecord &r = rig.record();
        r.address = 5;
        r.name = "STAGE1";
        r.group = stored.group;
        r.channel = stored.channel;
        r.channelFreqCode = QStringLiteral("7A8A"); // 850.000
        r.manualFreqCode = QStringLiteral("7B52");  // 855.000
        r.groupTable = groupTable;
        r.bandStartCode = QStringLiteral("72BA");
        r.bandWidth = 4000;
        r.manualFreq = manual;
        r.mute = true;
        rig.ctx.state.TVtype = 2; // Europe
        rig.host.battery = QStringLiteral("80%");
        rig.open(0);
        SettingsTab &s = rig.tab();

        QTEST(rig.dialogs.messages(), "messages");
        QCOMPARE((Preset{r.group, r.channel}), repaired);
        QCOMPARE(rig.form->addressText() + s.txtAddr->text() + s.txtRName->text(), "055STAGE1");
        QCOMPARE(s.txtGroup->text() + '-' + s.txtChannel->text(),
                 manual ? QStringLiteral("**-**")
                        : QStringLiteral("%1-%2").arg(repaired.group).arg(repaired.channel));
        QCOMPARE(s.txtFreq->text(), manual ? "855.000" : "850.000");
        QCOMPARE(s.txtBandStart->text() + s.txtBandStop->text(), "800.000900.000");
        QCOMPARE(s.TV->text(), "62"); // the band start is converted last
        QCOMPARE(rig.form->tools().scanState().levels.size(), size_t(4001));
        QCOMPARE(s.BatV->text(), "80%");
        QCOMPARE(s.BatV->palette().color(QPalette::Window), QColor(0xFF, 0xFF, 0x00));
        QCOMPARE(s.Mute->property("image").toString(), "SpeakerOFF");
        QVERIFY(rig.frames().isEmpty());
    }

    void readOneAD()
    {
        DetailRig rig;
        rig.addReceiver(5, 0);
        QPointer<FrmMore> f = rig.open(0);
        QList<int> hook;
        f->setMeterHook([&](int a, int b, int sq) { hook = {a, b, sq}; });
        // RF A FD + 5 passes 255 and is capped; RF B 20 + 5 = 37.
        rig.bus.faults().scriptReplacement(5, QByteArray("$05C0FD2012\r"));
        QVERIFY(f->ReadOneAD());
        const LevelTable &table = rig.ctx.state.levelTable;
        QCOMPARE(hook, (QList<int>{table[255], table[37], f->squelchLevel()}));
        QCOMPARE(f->lastAudio() * 1000 + f->lastBattery(), 0xC0 * 1000 + 0x12);
        QCOMPARE(rig.tab().PB_RFA->level(), table[255]);
        QCOMPARE(rig.tab().PB_RFB->colour(), QColor(255, 0, 0)); // weak reads red
        QCOMPARE(rig.tab().PB_Dev->level(), deviationLevel(0xC0));

        // A silent receiver: one message, polling back on the main screen, window gone.
        rig.bus.scriptFaults(5, SimFault::NoReply, 3);
        QVERIFY(f->ReadOneAD());
        QCOMPARE(rig.dialogs.messages(), QStringList{QStringLiteral("RCV05  no response!, address=5\r\n")});
        QCOMPARE(rig.ctx.state.WorkMode, 1);
        QCOMPARE(rig.frames(), (QStringList{"%05N", "%05N", "%05N", "%05N", "#05NS"}));
        QCOMPARE(rig.host.refreshes, 1);
        DetailRig::flushDeletes();
        QVERIFY(f.isNull());
    }

    void closing()
    {
        DetailRig rig;
        rig.addReceiver(5, 0);
        QPointer<FrmMore> f = rig.open(0);
        rig.ctx.state.KobActive = true;
        QVERIFY(!f->close());
        QVERIFY(f->isVisible() && rig.frames().isEmpty() && rig.host.refreshes == 0);

        rig.ctx.state.KobActive = false;
        QTest::mouseClick(f->findChild<QPushButton *>(QStringLiteral("cmdExit")), Qt::LeftButton);
        QCOMPARE(rig.ctx.state.WorkMode, 1);
        QCOMPARE(rig.frames(), QStringList{QStringLiteral("#05NS")});
        QCOMPARE(rig.host.refreshes, 1);
        DetailRig::flushDeletes();
        QVERIFY(f.isNull());
    }

    void presetButtons_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<Preset>("from");
        QTest::addColumn<Preset>("to");
        QTest::addColumn<QString>("sent");
        // 3 groups of 8, 12 and 4 channels.
        QTest::newRow("channel up") << "cmdChanUp" << Preset{1, 3} << Preset{1, 4} << "#05D14";
        QTest::newRow("channel up wraps to 1") << "cmdChanUp" << Preset{1, 8} << Preset{1, 1} << "#05D11";
        QTest::newRow("channel down wraps to the count")
            << "cmdChanDown" << Preset{2, 1} << Preset{2, 12} << "#05D2C";
        QTest::newRow("group up wraps from the limit")
            << "cmdGroupUp" << Preset{3, 4} << Preset{1, 4} << "#05D14";
        QTest::newRow("group up clamps the channel")
            << "cmdGroupUp" << Preset{2, 12} << Preset{3, 4} << "#05D34";
        QTest::newRow("group down wraps and clamps")
            << "cmdGroupDown" << Preset{1, 8} << Preset{3, 4} << "#05D34";
    }
    void presetButtons()
    {
        QFETCH(QString, button);
        QFETCH(Preset, from);
        QFETCH(Preset, to);
        QFETCH(QString, sent);

        DetailRig rig;
        SimReceiver &sim = rig.addReceiver(5, 0, [&](SimReceiver &r) {
            r.groupTable = "38C400000000";
            r.group = from.group;
            r.channel = from.channel;
        });
        rig.open(0);
        const std::uint64_t start = rig.clock.nowMicros();
        QTest::mouseClick(rig.form->findChild<QToolButton *>(button), Qt::LeftButton);

        QCOMPARE(rig.frames(), QStringList{sent});
        QCOMPARE((Preset{rig.record().group, rig.record().channel}), to);
        QCOMPARE(rig.tab().txtGroup->text() + '-' + rig.tab().txtChannel->text(),
                 QStringLiteral("%1-%2").arg(to.group).arg(to.channel));
        QCOMPARE(rig.tab().txtFreq->text(), freqOf(sim.presetCode(to.group, to.channel)));
        QCOMPARE(rig.record().channelFreqCode, NumToHex(sim.presetCode(to.group, to.channel), 4));
        QVERIFY(rig.elapsedMs(start) >= 50);
        QVERIFY(rig.dialogs.messages().isEmpty());
    }

    void presetGuardAndFailure()
    {
        DetailRig rig;
        rig.addReceiver(5, 0, [](SimReceiver &r) {
            r.groupTable = "38C400000000";
            r.channel = 8;
        });
        rig.open(0);
        SettingsTab &s = rig.tab();
        const QString shown = s.txtFreq->text();

        // No answer: the record keeps the new channel (no roll-back), the box the old one.
        rig.bus.scriptFaults(5, SimFault::NoReply, 3);
        QTest::mouseClick(s.cmdChanUp, Qt::LeftButton);
        QCOMPARE(rig.dialogs.messages(), QStringList{QStringLiteral("No Response from receiver!")});
        QCOMPARE(rig.record().channel, 1);
        QCOMPARE(s.txtChannel->text() + ' ' + s.txtFreq->text(), QStringLiteral("8 ") + shown);

        // Off the presets the preset buttons send nothing.
        QTest::mouseClick(s.cmdFreqUp, Qt::LeftButton);
        rig.line.clearWritten();
        for (QToolButton *b : {s.cmdChanUp, s.cmdChanDown, s.cmdGroupUp, s.cmdGroupDown})
            QTest::mouseClick(b, Qt::LeftButton);
        QVERIFY(rig.frames().isEmpty());
        QCOMPARE(rig.record().channel, 1);
    }

    void frequencyStepping_data()
    {
        QTest::addColumn<int>("fromCode");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("option");
        QTest::addColumn<QString>("shown");
        // Band 800.000 (72BA) .. 900.000 (825A).
        QTest::newRow("up past the stop lands on the start") << 0x825A << "cmdFreqUp"
                                                             << "Option1"
                                                             << "800.000";
        QTest::newRow("125 kHz past the stop") << 0x8256 << "cmdFreqUp"
                                               << "Option4"
                                               << "800.000";
        QTest::newRow("up onto the stop") << 0x8259 << "cmdFreqUp"
                                          << "Option1"
                                          << "900.000";
        QTest::newRow("down past the start lands on the stop") << 0x72BA << "cmdFreqDown"
                                                               << "Option1"
                                                               << "900.000";
        QTest::newRow("down 100 kHz") << 0x7A8A << "cmdFreqDown"
                                      << "Option3"
                                      << "849.900";
        QTest::newRow("up 50 kHz") << 0x7A8A << "cmdFreqUp"
                                   << "Option2"
                                   << "850.050";
    }
    void frequencyStepping()
    {
        QFETCH(int, fromCode);
        QFETCH(QString, button);
        QFETCH(QString, option);
        QFETCH(QString, shown);

        DetailRig rig;
        rig.addReceiver(5, 0, [&](SimReceiver &r) {
            r.manual = true;
            r.manualCode = fromCode;
        });
        rig.open(0);
        rig.form->findChild<QRadioButton *>(option)->click();
        const std::uint64_t start = rig.clock.nowMicros();
        QTest::mouseClick(rig.form->findChild<QToolButton *>(button), Qt::LeftButton);

        const QString code = ComputeNA(shown.toDouble());
        QCOMPARE(rig.tab().txtFreq->text(), shown);
        QCOMPARE(rig.frames(), QStringList{QStringLiteral("#05K") + code});
        QCOMPARE(rig.tab().txtGroup->text() + rig.tab().txtChannel->text(), QStringLiteral("****"));
        QVERIFY(rig.record().manualFreq);
        QCOMPARE(rig.record().manualFreqCode, code);
        QCOMPARE(rig.bus.receiver(5)->manualCode, HexToNum(code));
        QVERIFY(rig.elapsedMs(start) >= 50);
    }

    void directEntry_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("sent");
        QTest::newRow("letters restore the preset") << "abc"
                                                    << "Please input numeric data!"
                                                    << "850.000"
                                                    << "";
        QTest::newRow("above the band") << "950"
                                        << "Frequency out of range!"
                                        << "850.000"
                                        << "";
        QTest::newRow("just below the band") << "799.999"
                                             << "Frequency out of range!"
                                             << "850.000"
                                             << "";
        QTest::newRow("empty does nothing") << ""
                                            << ""
                                            << ""
                                            << "";
        QTest::newRow("half a step snaps to even, down") << "850.0125"
                                                         << ""
                                                         << "850.000"
                                                         << "#05K7A8A";
        QTest::newRow("half a step snaps to even, up") << "850.0375"
                                                       << ""
                                                       << "850.050"
                                                       << "#05K7A8C";
        QTest::newRow("band stop is inside") << "900"
                                             << ""
                                             << "900.000"
                                             << "#05K825A";
    }
    void directEntry()
    {
        QFETCH(QString, typed);
        QFETCH(QString, sent);

        DetailRig rig;
        rig.addReceiver(5, 0);
        rig.record().channelFreqCode = QStringLiteral("7A8A");
        rig.open(0);
        rig.tab().txtFreq->setText(typed);
        QTest::keyClick(rig.tab().txtFreq, Qt::Key_Return);

        QTEST(rig.dialogs.messages().join(QString()), "message");
        QTEST(rig.tab().txtFreq->text(), "shown");
        QCOMPARE(rig.frames().join(QString()), sent);
        QCOMPARE(rig.record().manualFreq, !sent.isEmpty());
    }
};

QTEST_MAIN(TstDetailTuning)
#include "tst_detailtuning.moc"
