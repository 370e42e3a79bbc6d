// The detail window's load, live reading, close and tuning on the simulator.
#include "detail/detailrig.h"

#include "detail/detailmeters.h"
#include "detail/freqconvert.h"
#include "detail/settingstab.h"
#include "link/hex.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>

using namespace zun;
using namespace zun::test;

class TstDetailTuning : public QObject
{
    Q_OBJECT
private slots:
    void loadRepairsAndFields_data();
    void loadRepairsAndFields();
    void loadBatteryColour_data();
    void loadBatteryColour();
    void readOneAD();
    void readOneADFailureCloses();
    void closeRefusedDuringKob();
    void presetButtons_data();
    void presetButtons();
    void presetGuardsAndFailure();
    void frequencyStepping_data();
    void frequencyStepping();
    void directEntry_data();
    void directEntry();
};

namespace {
QString freqOf(int code)
{
    return formatFreq(ComputeFreq(NumToHex(code, 4)));
}
} // namespace

void TstDetailTuning::loadRepairsAndFields_data()
{
    QTest::addColumn<QString>("groupTable");
    QTest::addColumn<int>("group");
    QTest::addColumn<int>("channel");
    QTest::addColumn<bool>("manual");
    QTest::addColumn<QStringList>("messages");
    QTest::addColumn<int>("repairedGroup");
    QTest::addColumn<int>("repairedChannel");
    QTest::addColumn<QString>("shownFreq");
    const QString limit = QStringLiteral("Wrong 'GROUP LIMIT' !");
    const QString group = QStringLiteral("Wrong 'GROUP' !");
    const QString channel = QStringLiteral("Wrong 'CHANNEL' !");
    // Preset code 7A8A = 850.000 MHz, manual code 7B52 = 855.000 MHz.
    QTest::newRow("sound record") << "38C400000000" << 2 << 5 << false << QStringList{} << 2 << 5 << "850.000";
    QTest::newRow("manual shows the manual frequency")
        << "38C400000000" << 2 << 5 << true << QStringList{} << 2 << 5 << "855.000";
    QTest::newRow("limit 0, group 0") << "08C400000000" << 0 << 5 << false << QStringList{limit, group} << 11
                                      << 5 << "850.000";
    QTest::newRow("limit C, channel too high")
        << "C8C400000000" << 1 << 12 << false << QStringList{limit, channel} << 1 << 8 << "850.000";
    QTest::newRow("group above the limit") << "38C400000000" << 7 << 2 << false << QStringList{group} << 3 << 2
                                           << "850.000";
    QTest::newRow("digit 0 gives 16 channels") << "30C000000000" << 1 << 16 << false << QStringList{} << 1 << 16
                                               << "850.000";
    QTest::newRow("channel 0 is 16, no message") << "30C000000000" << 1 << 0 << false << QStringList{} << 1 << 16
                                                 << "850.000";
}

void TstDetailTuning::loadRepairsAndFields()
{
    QFETCH(QString, groupTable);
    QFETCH(int, group);
    QFETCH(int, channel);
    QFETCH(bool, manual);
    QFETCH(QStringList, messages);
    QFETCH(int, repairedGroup);
    QFETCH(int, repairedChannel);
    QFETCH(QString, shownFreq);

    DetailRig rig;
    ReceiverRecord &r = rig.record();
    r.address = 5;
    r.name = QStringLiteral("STAGE1");
    r.groupTable = groupTable;
    r.group = group;
    r.channel = channel;
    r.channelFreqCode = QStringLiteral("7A8A");
    r.manualFreqCode = QStringLiteral("7B52");
    r.manualFreq = manual;
    r.bandStartCode = QStringLiteral("72BA"); // 800.000
    r.bandWidth = 4000;
    r.squelch = 20;
    rig.ctx.state.TVtype = 2; // Europe
    FrmMore *f = rig.open(0);
    SettingsTab &s = f->settings();

    QCOMPARE(rig.dialogs.messages(), messages);
    QCOMPARE(r.group, repairedGroup);
    QCOMPARE(r.channel, repairedChannel);
    QCOMPARE(f->addressText(), QStringLiteral("05"));
    QCOMPARE(s.txtAddr->text(), QStringLiteral("5"));
    QCOMPARE(s.txtRName->text(), QStringLiteral("STAGE1"));
    QCOMPARE(s.txtGroup->text(), manual ? QStringLiteral("**") : QString::number(repairedGroup));
    QCOMPARE(s.txtChannel->text(), manual ? QStringLiteral("**") : QString::number(repairedChannel));
    QCOMPARE(s.txtFreq->text(), shownFreq);
    QCOMPARE(s.txtBandStart->text(), QStringLiteral("800.000"));
    QCOMPARE(s.txtBandStop->text(), QStringLiteral("900.000"));
    // The band start is the last frequency converted at load.
    QCOMPARE(s.TV->text(), QStringLiteral("62"));
    QVERIFY(rig.frames().isEmpty());
}

void TstDetailTuning::loadBatteryColour_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("colour");
    QTest::newRow("full") << "100%" << QColor(0x00, 0xC0, 0x00);
    QTest::newRow("80") << "80%" << QColor(0xFF, 0xFF, 0x00);
    QTest::newRow("40") << "40%" << QColor(0xFF, 0x80, 0x00);
    QTest::newRow("10") << "10%" << QColor(0xFF, 0x00, 0x00);
    QTest::newRow("off is the button face") << "OFF" << QColor();
}

void TstDetailTuning::loadBatteryColour()
{
    QFETCH(QString, text);
    QFETCH(QColor, colour);
    DetailRig rig;
    rig.addReceiver(5, 0, [](SimReceiver &r) { r.muted = true; });
    rig.host.battery = text;
    FrmMore *f = rig.open(0);
    QLabel *batV = f->settings().BatV;
    QCOMPARE(batV->text(), text);
    const QColor expected = colour.isValid() ? colour : batV->palette().color(QPalette::Button);
    QCOMPARE(batV->palette().color(QPalette::Window), expected);
    QCOMPARE(f->settings().Mute->property("image").toString(), QStringLiteral("SpeakerOFF"));
}

void TstDetailTuning::readOneAD()
{
    DetailRig rig;
    rig.addReceiver(5, 0);
    FrmMore *f = rig.open(0);
    int hookCalls = 0;
    int hookA = -1, hookB = -1, hookSq = -1;
    f->setMeterHook([&](int a, int b, int sq) {
        ++hookCalls;
        hookA = a, hookB = b, hookSq = sq;
    });
    // RF A FD + 5 passes 255 and is capped; RF B 20 + 5 = 37.
    rig.bus.faults().scriptReplacement(5, QByteArray("$05") + "C0" + "FD" + "20" + "12" + "\r");
    QVERIFY(f->ReadOneAD());
    QCOMPARE(rig.frames(), QStringList{QStringLiteral("%05N")});
    const LevelTable &table = rig.ctx.state.levelTable;
    QCOMPARE(f->lastRfA(), table[255]);
    QCOMPARE(f->lastRfB(), table[37]);
    QCOMPARE(f->lastAudio(), 0xC0);
    QCOMPARE(f->lastBattery(), 0x12);
    QCOMPARE(hookCalls, 1);
    QCOMPARE(hookA, table[255]);
    QCOMPARE(hookB, table[37]);
    QCOMPARE(hookSq, f->squelchLevel());
    QCOMPARE(f->settings().PB_RFA->level(), table[255]);
    QCOMPARE(f->settings().PB_RFB->level(), table[37]);
    QCOMPARE(f->settings().PB_RFB->colour(), QColor(255, 0, 0)); // weak: red
    QCOMPARE(f->settings().PB_Dev->level(), deviationLevel(0xC0));

    // An ordinary reading from the simulated receiver goes through the same way.
    QVERIFY(f->ReadOneAD());
    QCOMPARE(hookCalls, 2);
    QVERIFY(rig.dialogs.messages().isEmpty());
    QCOMPARE(rig.ctx.state.WorkMode, 2);
}

void TstDetailTuning::readOneADFailureCloses()
{
    DetailRig rig;
    rig.addReceiver(5, 0);
    QPointer<FrmMore> f = rig.open(0);
    rig.bus.scriptFaults(5, SimFault::NoReply, 3); // every attempt of one transaction
    QVERIFY(f->ReadOneAD());
    QCOMPARE(rig.dialogs.messages(), QStringList{QStringLiteral("RCV05  no response!, address=5\r\n")});
    QCOMPARE(rig.ctx.state.WorkMode, 1);
    QCOMPARE(rig.frames(), (QStringList{"%05N", "%05N", "%05N", "#05NS"}));
    QCOMPARE(rig.host.refreshes, 1);
    QVERIFY(f.isNull() || !f->isVisible());
    DetailRig::flushDeletes();
    QVERIFY(f.isNull());
}

void TstDetailTuning::closeRefusedDuringKob()
{
    DetailRig rig;
    rig.addReceiver(5, 0);
    QPointer<FrmMore> f = rig.open(0);
    rig.ctx.state.KobActive = true;
    QVERIFY(!f->close());
    QVERIFY(f->isVisible());
    QCOMPARE(rig.ctx.state.WorkMode, 2);
    QVERIFY(rig.frames().isEmpty());
    QCOMPARE(rig.host.refreshes, 0);

    rig.ctx.state.KobActive = false;
    QTest::mouseClick(f->findChild<QPushButton *>(QStringLiteral("cmdExit")), Qt::LeftButton);
    QCOMPARE(rig.ctx.state.WorkMode, 1);
    QCOMPARE(rig.frames(), QStringList{QStringLiteral("#05NS")});
    QCOMPARE(rig.host.refreshes, 1);
    DetailRig::flushDeletes();
    QVERIFY(f.isNull());
}

void TstDetailTuning::presetButtons_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("group");
    QTest::addColumn<int>("channel");
    QTest::addColumn<int>("newGroup");
    QTest::addColumn<int>("newChannel");
    QTest::addColumn<QString>("sent");
    // 3 groups of 8, 12 and 4 channels.
    QTest::newRow("channel up") << "cmdChanUp" << 1 << 3 << 1 << 4 << "#05D14";
    QTest::newRow("channel up wraps to 1") << "cmdChanUp" << 1 << 8 << 1 << 1 << "#05D11";
    QTest::newRow("channel down wraps to the count") << "cmdChanDown" << 2 << 1 << 2 << 12 << "#05D2C";
    QTest::newRow("group up wraps from the limit") << "cmdGroupUp" << 3 << 4 << 1 << 4 << "#05D14";
    QTest::newRow("group up clamps the channel") << "cmdGroupUp" << 2 << 12 << 3 << 4 << "#05D34";
    QTest::newRow("group down wraps to the limit") << "cmdGroupDown" << 1 << 8 << 3 << 4 << "#05D34";
}

void TstDetailTuning::presetButtons()
{
    QFETCH(QString, button);
    QFETCH(int, group);
    QFETCH(int, channel);
    QFETCH(int, newGroup);
    QFETCH(int, newChannel);
    QFETCH(QString, sent);

    DetailRig rig;
    SimReceiver &sim = rig.addReceiver(5, 0, [&](SimReceiver &r) {
        r.groupTable = "38C400000000";
        r.group = group;
        r.channel = channel;
    });
    FrmMore *f = rig.open(0);
    SettingsTab &s = f->settings();
    const std::uint64_t start = rig.clock.nowMicros();
    QTest::mouseClick(f->findChild<QToolButton *>(button), Qt::LeftButton);

    QCOMPARE(rig.frames(), QStringList{sent});
    QCOMPARE(rig.record().group, newGroup);
    QCOMPARE(rig.record().channel, newChannel);
    QCOMPARE(s.txtGroup->text(), QString::number(newGroup));
    QCOMPARE(s.txtChannel->text(), QString::number(newChannel));
    const int code = sim.presetCode(newGroup, newChannel);
    QCOMPARE(rig.record().channelFreqCode, NumToHex(code, 4));
    QCOMPARE(s.txtFreq->text(), freqOf(code));
    QVERIFY(!rig.record().manualFreq);
    QVERIFY(rig.elapsedMs(start) >= 50);
    QVERIFY(rig.dialogs.messages().isEmpty());
}

void TstDetailTuning::presetGuardsAndFailure()
{
    DetailRig rig;
    rig.addReceiver(5, 0, [](SimReceiver &r) {
        r.groupTable = "38C400000000";
        r.group = 1;
        r.channel = 8;
    });
    FrmMore *f = rig.open(0);
    SettingsTab &s = f->settings();
    const QString shownFreq = s.txtFreq->text();

    // No answer: the record keeps the new channel, the box the old one.
    rig.bus.scriptFaults(5, SimFault::NoReply, 3);
    const std::uint64_t start = rig.clock.nowMicros();
    QTest::mouseClick(s.cmdChanUp, Qt::LeftButton);
    QCOMPARE(rig.dialogs.messages(), QStringList{QStringLiteral("No Response from receiver!")});
    QCOMPARE(rig.record().channel, 1);
    QCOMPARE(s.txtChannel->text(), QStringLiteral("8"));
    QCOMPARE(s.txtFreq->text(), shownFreq);
    QVERIFY(rig.elapsedMs(start) >= 3 * 250 + 50);

    // Off the presets, the preset buttons do nothing at all.
    rig.line.clearWritten();
    rig.dialogs.clear();
    QTest::mouseClick(s.cmdFreqUp, Qt::LeftButton);
    QCOMPARE(s.txtGroup->text(), QStringLiteral("**"));
    rig.line.clearWritten();
    for (QToolButton *b : {s.cmdChanUp, s.cmdChanDown, s.cmdGroupUp, s.cmdGroupDown})
        QTest::mouseClick(b, Qt::LeftButton);
    QVERIFY(rig.frames().isEmpty());
    QVERIFY(rig.dialogs.messages().isEmpty());
    QCOMPARE(rig.record().group, 1);
    QCOMPARE(rig.record().channel, 1);
}

void TstDetailTuning::frequencyStepping_data()
{
    QTest::addColumn<int>("fromCode");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("sent");
    // Band 800.000 (72BA) .. 900.000 (825A).
    QTest::newRow("up past the stop lands on the start") << 0x825A << "cmdFreqUp" << "Option1" << "800.000"
                                                         << "#05K72BA";
    QTest::newRow("125 kHz past the stop wraps too") << 0x8256 << "cmdFreqUp" << "Option4" << "800.000"
                                                     << "#05K72BA";
    QTest::newRow("up onto the stop stays") << 0x8259 << "cmdFreqUp" << "Option1" << "900.000" << "#05K825A";
    QTest::newRow("down past the start lands on the stop") << 0x72BA << "cmdFreqDown" << "Option1" << "900.000"
                                                           << "#05K825A";
    QTest::newRow("down by 100 kHz") << 0x7A8A << "cmdFreqDown" << "Option3" << "849.900" << "#05K7A86";
    QTest::newRow("up by 50 kHz") << 0x7A8A << "cmdFreqUp" << "Option2" << "850.050" << "#05K7A8C";
}

void TstDetailTuning::frequencyStepping()
{
    QFETCH(int, fromCode);
    QFETCH(QString, button);
    QFETCH(QString, option);
    QFETCH(QString, shown);
    QFETCH(QString, sent);

    DetailRig rig;
    rig.addReceiver(5, 0, [&](SimReceiver &r) {
        r.manual = true;
        r.manualCode = fromCode;
    });
    FrmMore *f = rig.open(0);
    SettingsTab &s = f->settings();
    QCOMPARE(s.txtFreq->text(), freqOf(fromCode));
    f->findChild<QRadioButton *>(option)->click();
    const std::uint64_t start = rig.clock.nowMicros();
    QTest::mouseClick(f->findChild<QToolButton *>(button), Qt::LeftButton);

    QCOMPARE(s.txtFreq->text(), shown);
    QCOMPARE(rig.frames(), QStringList{sent});
    QCOMPARE(s.txtGroup->text(), QStringLiteral("**"));
    QCOMPARE(s.txtChannel->text(), QStringLiteral("**"));
    QVERIFY(rig.record().manualFreq);
    QCOMPARE(rig.record().manualFreqCode, sent.mid(4));
    QCOMPARE(rig.bus.receiver(5)->manualCode, HexToNum(sent.mid(4)));
    QVERIFY(rig.elapsedMs(start) >= 50);
}

void TstDetailTuning::directEntry_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("messages");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QStringList>("sent");
    const QStringList none;
    const QString preset = freqOf(0x7A8A); // the record's preset, 850.000
    QTest::newRow("letters restore the preset") << "abc" << QStringList{"Please input numeric data!"} << preset
                                                << none;
    QTest::newRow("above the band") << "950" << QStringList{"Frequency out of range!"} << preset << none;
    QTest::newRow("just below the band") << "799.999" << QStringList{"Frequency out of range!"} << preset << none;
    QTest::newRow("empty does nothing") << "" << none << "" << none;
    QTest::newRow("on the raster") << "812.5" << none << "812.500" << QStringList{"#05K74AE"};
    QTest::newRow("half a step snaps to even, down") << "850.0125" << none << "850.000" << QStringList{"#05K7A8A"};
    QTest::newRow("half a step snaps to even, up") << "850.0375" << none << "850.050" << QStringList{"#05K7A8C"};
    QTest::newRow("band stop is in") << "900" << none << "900.000" << QStringList{"#05K825A"};
}

void TstDetailTuning::directEntry()
{
    QFETCH(QString, typed);
    QFETCH(QStringList, messages);
    QFETCH(QString, shown);
    QFETCH(QStringList, sent);

    DetailRig rig;
    SimReceiver &sim = rig.addReceiver(5, 0);
    rig.record().channelFreqCode = QStringLiteral("7A8A");
    Q_UNUSED(sim);
    FrmMore *f = rig.open(0);
    SettingsTab &s = f->settings();
    s.txtFreq->setText(typed);
    QTest::keyClick(s.txtFreq, Qt::Key_Return);

    QCOMPARE(rig.dialogs.messages(), messages);
    QCOMPARE(s.txtFreq->text(), shown);
    QCOMPARE(rig.frames(), sent);
    QCOMPARE(rig.record().manualFreq, !sent.isEmpty());
    if (!sent.isEmpty())
        QCOMPARE(s.txtChannel->text(), QStringLiteral("**"));
}

QTEST_MAIN(TstDetailTuning)
#include "tst_detailtuning.moc"
