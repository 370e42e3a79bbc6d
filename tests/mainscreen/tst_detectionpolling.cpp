#include "core/options.h"
#include "link/detection.h"
#include "link/ports.h"
#include "mainscreen/colors.h"
#include "mainscreen/frmmain.h"
#include "mainscreen/polling.h"
#include "mainscreen/rcvpanel.h"
#include "support/testbed.h"

#include <QLabel>
#include <QTest>
#include <QToolButton>

using namespace zun;

namespace {
// Detection's progress view, with a SKIP click after a chosen address.
class ScriptedProgress final : public DetectionProgress
{
public:
    explicit ScriptedProgress(int skipAfter = 0) : m_skipAfter(skipAfter) {}
    void begin(const QString &message) override { this->message = message; }
    void setProgress(int address) override { last = address; }
    bool skipRequested() const override { return m_skipAfter > 0 && last >= m_skipAfter; }
    void end() override { ended = true; }

    QString message;
    int last = 0;
    bool ended = false;

private:
    int m_skipAfter;
};

void prepare(TestBed &bed, int port)
{
    bed.ctx.state.CommPort = port;
    bed.ctx.state.receivers.assign(64, ReceiverRecord{});
    FindCommPorts(bed.ctx);
    openLine(bed.ctx);
}
} // namespace

class TestDetectionPolling : public QObject
{
    Q_OBJECT
private slots:
    void receiversFillTheTableInAddressOrder_data()
    {
        QTest::addColumn<std::vector<int>>("addresses");
        QTest::addColumn<int>("skipAfter");
        QTest::addColumn<QList<int>>("found");
        QTest::newRow("3 and 64") << std::vector<int>{64, 3} << 0 << QList<int>{3, 64};
        QTest::newRow("skip after 10 keeps what was found")
            << std::vector<int>{2, 9, 15} << 10 << QList<int>{2, 9};
        QTest::newRow("skip before anybody answered") << std::vector<int>{20} << 10 << QList<int>{};
    }
    void receiversFillTheTableInAddressOrder()
    {
        QFETCH(std::vector<int>, addresses);
        QFETCH(int, skipAfter);
        QFETCH(QList<int>, found);
        TestBed bed;
        bed.attachReceivers(1, addresses);
        prepare(bed, 1);
        ScriptedProgress progress(skipAfter);

        QCOMPARE(CheckReceivers(bed.ctx, progress), !found.isEmpty());
        QCOMPARE(progress.message, "Checking Connected Receivers --> COM1");
        QVERIFY(progress.ended && progress.last == (skipAfter ? skipAfter : 64));
        QCOMPARE(bed.ctx.state.foundCount, found.size());
        for (int i = 0; i < found.size(); ++i)
            QVERIFY(bed.ctx.state.receivers[i].address == found[i] && bed.ctx.state.receivers[i].online);
        QCOMPARE(bed.framesSent("#00A1").size(), 3);
        QCOMPARE(bed.ctx.state.WorkMode, found.isEmpty() ? 0 : 1);
        QCOMPARE(bed.settings.get(kAppName, "MSComm", "CommPort"),
                 found.isEmpty() ? QString() : QString("1"));
    }

    void aSilentScanTakesEveryAttemptOfEveryAddress()
    {
        TestBed bed;
        bed.attachSilentPort(1);
        prepare(bed, 1);
        ScriptedProgress progress;
        const double before = bed.virtualSeconds();
        QVERIFY(!CheckReceivers(bed.ctx, progress));
        const double took = bed.virtualSeconds() - before;
        const double expected = 64 * (bed.ctx.state.Retry + 1) * 0.100 + 3 * 0.050;
        QVERIFY2(took >= expected && took < expected + 0.5, qPrintable(QString::number(took)));
        QCOMPARE(bed.framesSent("%").size(), 64 * 3);
    }

    void detectionFallsBackToThePortWithReceivers()
    {
        TestBed bed;
        bed.attachSilentPort(1);
        bed.attachReceivers(2, {5, 6});
        bed.ctx.state.CommPort = 1;
        bed.ctx.state.Retry = 0;
        FindCommPorts(bed.ctx);
        FrmMain main(bed.ctx);
        main.load();

        QVERIFY(bed.ctx.state.CommPort == 2 && bed.line.portNumber() == 2);
        QCOMPARE(bed.settings.get(kAppName, "MSComm", "CommPort"), "2");
        QCOMPARE(bed.ctx.state.foundCount, 2);
        QVERIFY(main.panel(0)->isEnabled() && main.panel(1)->isEnabled() && !main.panel(2)->isEnabled());
        QCOMPARE(bed.ctx.state.WorkMode, 1);
        // The load reads both text fields of every receiver found.
        QVERIFY(bed.framesSent("%05A").size() == 1 && bed.framesSent("%06B").size() == 1);
    }

    void aSilentReceiverGoesOfflineBlinksAndComesBackByItsName()
    {
        TestBed bed;
        SimBus &bus = bed.attachReceivers(1, {3, 7});
        bed.ctx.state.CommPort = 1;
        FindCommPorts(bed.ctx);
        FrmMain main(bed.ctx);
        main.load();
        QVERIFY(ReadAllAD(bed.ctx, main));
        // On air (RF full) with a battery reading of 0x16: past 20 samples the
        // battery shows, and it keeps its average through the recovery below.
        const QString onAir = QStringLiteral("$0700FFFF16\r");
        for (int k = 0; k < 21; ++k)
            main.UpdateRcvPanel(1, onAir);
        const QString battery = main.panel(1)->batteryLabel()->text();
        QVERIFY(battery != "OFF");

        bus.receiver(7)->powered = false;
        bed.line.clearWritten();
        ReadAllAD(bed.ctx, main);
        QVERIFY(!bed.ctx.state.receivers[1].online && bed.ctx.state.receivers[0].online);
        RcvPanel *offline = main.panel(1);
        QCOMPARE(offline->nameTextColor(), bgrColor(bgr::Red));
        QVERIFY(!offline->muteButton()->isEnabled() && !offline->moreButton()->isEnabled());

        bed.line.clearWritten();
        ReadAllAD(bed.ctx, main);
        ReadAllAD(bed.ctx, main);
        QVERIFY(bed.framesSent("%07N").isEmpty());
        QCOMPARE(bed.framesSent("%03N").size(), 2);

        // Blinking swaps red and button face on the offline name only.
        const QColor onlineColour = main.panel(0)->nameTextColor();
        main.Timer1Tick();
        main.Timer1Tick();
        const QColor first = offline->nameTextColor();
        main.Timer1Tick();
        const QColor second = offline->nameTextColor();
        QVERIFY(first != second && (first == bgrColor(bgr::Red) || second == bgrColor(bgr::Red)));
        QVERIFY(first == buttonFaceColor() || second == buttonFaceColor());
        QCOMPARE(main.panel(0)->nameTextColor(), onlineColour);

        bus.receiver(7)->powered = true;
        main.nameClicked(1);
        QCOMPARE(bed.ctx.state.selectedReceiver, 1);
        QVERIFY(bed.ctx.state.receivers[1].online && offline->moreButton()->isEnabled());
        main.UpdateRcvPanel(1, onAir);
        QCOMPARE(offline->batteryLabel()->text(), battery);
        bed.line.clearWritten();
        ReadAllAD(bed.ctx, main);
        QCOMPARE(bed.framesSent("%07N").size(), 1);
    }

    void everyReplyFromTheAddressIsAReceiver_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("groupTable");
        QTest::addColumn<int>("bandWidth");
        QTest::addColumn<bool>("mute");
        // group 3, channel 4, code 1234, squelch 1E, second level 80, ..., flags 2
        const QByteArray tail = "341234"
                                "1E80"
                                "B88880000000"
                                "1000"
                                "0FA0"
                                "2\r";
        QTest::newRow("accented name")
            << "$05CHOR\xC9 " + tail << QString::fromLatin1("CHOR\xC9 ") << "B88880000000" << 4000 << true;
        QTest::newRow("control byte in the name") << "$05MI\x01"
                                                     "C  " +
                                                         tail
                                                  << "MI\x01"
                                                     "C  "
                                                  << "B88880000000" << 4000 << true;
        QTest::newRow("blanks in the group table")
            << QByteArray("$05MIC 1 3412341E80B 8 8       10000FA02\r") << "MIC 1 "
            << "B 8 8       " << 4000 << true;
        QTest::newRow("three characters short") << ("$05MIC 1 " + tail).left(38) << "MIC 1 "
                                                << "B88880000000" << 0xFA << false;
        QTest::newRow("nothing after the address") << QByteArray("$05") << ""
                                                   << "" << 0 << false;
    }
    void everyReplyFromTheAddressIsAReceiver()
    {
        QFETCH(QByteArray, reply);
        TestBed bed;
        SimBus &bus = bed.attachReceivers(1, {5});
        bed.ctx.state.CommPort = 1;
        FindCommPorts(bed.ctx);
        FrmMain main(bed.ctx);
        const auto takenAsIs = [&] {
            const ReceiverRecord &record = bed.ctx.state.receivers[0];
            QVERIFY(record.online && main.panel(0)->moreButton()->isEnabled());
            QTEST(record.name, "name");
            QTEST(record.groupTable, "groupTable");
            QTEST(record.bandWidth, "bandWidth");
            QTEST(record.mute, "mute");
        };
        bus.faults().scriptReplacement(5, reply);
        main.load();
        QCOMPARE(bed.ctx.state.foundCount, 1);
        takenAsIs();
        bed.line.clearWritten();
        ReadAllAD(bed.ctx, main);
        QCOMPARE(bed.framesSent("%05N").size(), 1);

        // Back by a name click: the same reply brings the same record.
        main.DisableRcvPanel(0);
        bed.ctx.state.receivers[0] = ReceiverRecord();
        bed.ctx.state.receivers[0].address = 5;
        bus.faults().scriptReplacement(5, "$05\r"); // the "A1" acknowledgement
        bus.faults().scriptReplacement(5, reply);
        main.nameClicked(0);
        takenAsIs();
    }

    void anEmptyTableIsNotPolled()
    {
        TestBed bed;
        bed.attachReceivers(1, {3});
        prepare(bed, 1);
        FrmMain main(bed.ctx);
        QVERIFY(!ReadAllAD(bed.ctx, main)); // records exist, none online
        bed.ctx.state.receivers.clear();
        QVERIFY(!ReadAllAD(bed.ctx, main));
        QVERIFY(bed.framesSent("%").isEmpty());
    }

    void addressCheckTellsWhetherSomebodyAnswers()
    {
        TestBed bed;
        bed.attachReceivers(1, {9});
        prepare(bed, 1);
        QVERIFY(AddrCheck(bed.ctx, 9));
        const double before = bed.virtualSeconds();
        QVERIFY(!AddrCheck(bed.ctx, 10));
        QVERIFY(bed.virtualSeconds() - before >= 3 * 0.250);
    }
};

QTEST_MAIN(TestDetectionPolling)
#include "tst_detectionpolling.moc"
