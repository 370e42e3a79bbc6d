#include "receivers/detailsession.h"
#include "receivers/receiverbus.h"
#include "support/testbed.h"

#include <QSignalSpy>
#include <QTest>

using namespace zun;

namespace {
// The layer alone on the simulated line: no window, the virtual clock.
struct Rig
{
    explicit Rig(const std::vector<int> &addresses, int port = 1)
    {
        if (!addresses.empty())
            sim = &bed.attachReceivers(port, addresses);
        bus.options().port = port;
        for (int n = 1; n <= 8; ++n)
            bus.options().portAvailable[std::size_t(n)] = bed.line.portExists(n);
        bus.table().resize(64);
        QObject::connect(&bus, &ReceiverBus::exchanged, [this](const ExchangeRecord &r) { log << r; });
    }
    // Detects, then forgets the frames so far.
    void detect()
    {
        bus.detectReceivers(PortSearch::EveryPort);
        bed.line.clearWritten();
        log.clear();
    }

    TestBed bed;
    SimBus *sim = nullptr;
    ReceiverBus bus{bed.clock, bed.line, bed.settings, bed.desktop};
    DetailSession detail{bus};
    QList<ExchangeRecord> log;
};
} // namespace

class TestReceiverBus : public QObject
{
    Q_OBJECT
private slots:
    void detectionFillsTheTableInAddressOrder_data()
    {
        QTest::addColumn<std::vector<int>>("addresses");
        QTest::addColumn<int>("skipAfter");
        QTest::addColumn<QList<int>>("found");
        QTest::newRow("3 and 64") << std::vector<int>{64, 3} << 0 << QList<int>{3, 64};
        QTest::newRow("skip after 10 keeps what was found")
            << std::vector<int>{2, 9, 15} << 10 << QList<int>{2, 9};
        QTest::newRow("nobody before the skip") << std::vector<int>{20} << 10 << QList<int>{};
    }
    void detectionFillsTheTableInAddressOrder()
    {
        QFETCH(std::vector<int>, addresses);
        QFETCH(int, skipAfter);
        QFETCH(QList<int>, found);
        Rig rig(addresses);
        int last = 0;
        QObject::connect(&rig.bus, &ReceiverBus::detectionProgress, [&](int address) { last = address; });
        rig.bus.setSkipCheck([&] { return skipAfter > 0 && last >= skipAfter; });
        QSignalSpy started(&rig.bus, &ReceiverBus::detectionStarted);
        QSignalSpy ended(&rig.bus, &ReceiverBus::detectionEnded);
        QSignalSpy foundSpy(&rig.bus, &ReceiverBus::receiverFound);
        QVERIFY(rig.bus.openLine());

        QCOMPARE(rig.bus.detectReceivers(PortSearch::CurrentPort), !found.isEmpty());
        QCOMPARE(started.size(), 1);
        QCOMPARE(started.at(0).at(0).toInt(), 1);
        QCOMPARE(ended.size(), 1);
        QCOMPARE(ended.at(0).at(0).toInt(), found.size());
        QCOMPARE(foundSpy.size(), found.size());
        QCOMPARE(rig.bus.table().foundCount(), found.size());
        for (int i = 0; i < found.size(); ++i) {
            QCOMPARE(rig.bus.table().at(i).address, found[i]);
            QVERIFY(rig.bus.table().at(i).online);
            QCOMPARE(foundSpy.at(i).at(0).value<Receiver>().address, found[i]);
        }
        QCOMPARE(rig.bed.framesSent("#00A1").size(), 3);
        QCOMPARE(rig.log.size(), 3 + (skipAfter ? skipAfter : 64));
        QCOMPARE(rig.bus.workMode(), found.isEmpty() ? WorkMode::Idle : WorkMode::Polling);
        QCOMPARE(rig.bed.settings.get("KESTA_ZUN", "MSComm", "CommPort"),
                 found.isEmpty() ? QString() : QString("1"));
    }

    void everyExchangeIsReportedWithItsOutcome_data()
    {
        QTest::addColumn<int>("fault"); // SimFault
        QTest::addColumn<int>("result");
        QTest::addColumn<int>("attempts");
        QTest::newRow("answered") << int(SimFault::None) << int(ExchangeRecord::Result::Ok) << 1;
        QTest::newRow("silent") << int(SimFault::NoReply) << int(ExchangeRecord::Result::NoReply) << 3;
        QTest::newRow("another answers")
            << int(SimFault::WrongAddress) << int(ExchangeRecord::Result::Garbled) << 1;
    }
    void everyExchangeIsReportedWithItsOutcome()
    {
        QFETCH(int, fault);
        QFETCH(int, result);
        QFETCH(int, attempts);
        Rig rig({7});
        rig.detect();
        if (fault != int(SimFault::None))
            rig.sim->scriptFaults(7, SimFault(fault), 3);
        const auto start = rig.bed.clock.nowMicros();
        QCOMPARE(rig.bus.addressAnswers(7), result == int(ExchangeRecord::Result::Ok));
        QCOMPARE(rig.log.size(), 1);
        const ExchangeRecord &r = rig.log.first();
        QCOMPARE(r.address, 7);
        QCOMPARE(r.command, 'L');
        QCOMPARE(int(r.result), result);
        QCOMPARE(r.attempts, attempts);
        QCOMPARE(r.startMicros, qint64(start));
        QCOMPARE(r.roundTripMicros, qint64(rig.bed.clock.nowMicros() - start));
        QVERIFY(r.roundTripMicros > 0);
        QCOMPARE(r.commandChars, 5);
        rig.bus.showDisplayMode(2);
        QCOMPARE(rig.log.last().result, ExchangeRecord::Result::Broadcast);
        QCOMPARE(rig.log.last().address, 0);
    }

    // The polling transcript pins the frames; these are the signals the screens and feeds follow.
    void aSilentReceiverLeavesThePollUntilItsNameBringsItBack()
    {
        Rig rig({3, 7});
        rig.detect();
        QSignalSpy offline(&rig.bus, &ReceiverBus::wentOffline), back(&rig.bus, &ReceiverBus::cameBack);
        rig.sim->receiver(7)->powered = false;
        QVERIFY(rig.bus.pollAllLevels());
        QCOMPARE(offline.size(), 1);
        QVERIFY(!rig.bus.bringBack(1));
        rig.sim->receiver(7)->powered = true;
        QVERIFY(rig.bus.bringBack(1));
        QCOMPARE(back.size(), 1);
        QVERIFY(rig.bus.table().at(1).online);
        QVERIFY(!rig.bus.bringBack(1));
    }

    void kobWaitsForTheReceiverOrTheUser_data()
    {
        QTest::addColumn<bool>("userStops");
        QTest::addColumn<int>("outcome");
        QTest::newRow("receiver comes back") << false << int(KobPhase::Complete);
        QTest::newRow("user stops waiting") << true << int(KobPhase::UserAborted);
    }
    void kobWaitsForTheReceiverOrTheUser()
    {
        QFETCH(bool, userStops);
        Rig rig({5});
        rig.sim->receiver(5)->kobMicros = 1000000;
        rig.detect();
        rig.detail.open(0);
        QList<KobPhase> phases;
        QObject::connect(&rig.detail, &DetailSession::kobPhase, [&](KobPhase p) {
            phases << p;
            if (userStops && p == KobPhase::Waiting && rig.detail.kobActive())
                rig.detail.stopKob();
        });
        rig.detail.runKob();
        QVERIFY(!rig.detail.kobActive());
        QCOMPARE(phases.first(), KobPhase::Started);
        QTEST(int(phases.at(phases.size() - 2)), "outcome");
        QCOMPARE(phases.last(), KobPhase::Ended);
        QCOMPARE(rig.bed.framesSent().first(), "%05O\r");
        QCOMPARE(rig.bed.framesSent("#05A1").isEmpty(), userStops);
        QVERIFY(rig.bed.virtualSeconds() > (userStops ? 1.8 : 2.5));
    }

    void detailReadsCountDropsAndScanStepsTune_data()
    {
        QTest::addColumn<QStringList>("replies"); // audio, RF A, RF B, battery
        QTest::addColumn<QString>("drops");       // A and B counts after them
        QTest::newRow("A falls once, stays below")
            << QStringList{"$0599C8F0C1", "$059900F0C1", "$059900F0C1"} << "1 0";
        QTest::newRow("both fall twice") << QStringList{"$0500000000", "$0500F0F000", "$0500000000"} << "2 2";
        QTest::newRow("at the squelch is above, under it a drop") << QStringList{"$05060600C1"} << "0 1";
    }
    void detailReadsCountDropsAndScanStepsTune()
    {
        QFETCH(QStringList, replies);
        QFETCH(QString, drops);
        Rig rig({5});
        rig.sim->receiver(5)->squelch = 0;
        rig.detect();
        rig.detail.open(0);
        rig.detail.drops().run();
        QSignalSpy dropped(&rig.bus, &ReceiverBus::signalDropped);
        QSignalSpy sampled(&rig.bus, &ReceiverBus::recorderSampled);
        for (const QString &reply : replies) {
            rig.sim->faults().scriptReplacement(5, reply.toLatin1() + '\r');
            QVERIFY(rig.detail.recorderStep());
        }
        QCOMPARE(rig.detail.drops().textA() + ' ' + rig.detail.drops().textB(), drops);
        QCOMPARE(dropped.size(), drops.split(' ')[0].toInt() + drops.split(' ')[1].toInt());
        QCOMPARE(sampled.size(), replies.size());

        QSignalSpy points(&rig.bus, &ReceiverBus::scanPointRead);
        rig.bed.line.clearWritten();
        const auto point = rig.detail.scanStep(4, 800.1);
        QVERIFY(point);
        QVERIFY(point->code == "72BE");
        QCOMPARE(rig.bed.framesSent(), QStringList{"#05E72BE\r"});
        QVERIFY(rig.bus.table().at(0).manualFreq);
        QCOMPARE(rig.bus.table().at(0).manualFreqCode, "72BE");
        QCOMPARE(points.size(), 1);
        QCOMPARE(points.at(0).at(1).toInt(), 4);

        rig.sim->receiver(5)->powered = false;
        rig.bus.setWorkMode(WorkMode::Scan);
        QVERIFY(!rig.detail.scanStep(5, 800.125));
        QCOMPARE(rig.bus.workMode(), WorkMode::Polling);
    }
};

QTEST_GUILESS_MAIN(TestReceiverBus)
#include "tst_receiverbus.moc"
