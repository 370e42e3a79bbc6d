#include "platform/clock.h"
#include "sim/simbus.h"
#include "sim/simconsole.h"
#include "sim/simserialline.h"

#include <QtTest>

using namespace zun;

namespace {
QByteArray bytesOf(const std::vector<SimTimedByte> &timed)
{
    QByteArray bytes;
    for (const SimTimedByte &b : timed)
        bytes.append(b.byte);
    return bytes;
}

// Sends one frame at the given time and returns everything that comes back.
QByteArray ask(SimBus &bus, const QByteArray &frame, std::uint64_t atMicros = 0)
{
    return bytesOf(bus.hostTransmit(frame + '\r', atMicros, 115200));
}
} // namespace

class TstSimBus : public QObject
{
    Q_OBJECT

private slots:
    // Each fault twice on receiver 5's level reply, then a clean reply; receiver 6 is not touched.
    void scriptedFaults_data()
    {
        QTest::addColumn<int>("fault");
        QTest::addColumn<QString>("reply"); // a pattern over the whole reply
        QTest::newRow("no reply") << int(SimFault::NoReply) << "";
        QTest::newRow("garbled") << int(SimFault::Garbled) << "[^$].*|";
        QTest::newRow("corrupt data") << int(SimFault::CorruptData) << "\\$05(?![0-9A-F]{8}).{8}\r";
        QTest::newRow("wrong address") << int(SimFault::WrongAddress) << "\\$06.*";
        QTest::newRow("partial") << int(SimFault::Partial) << ".{1,11}";
        QTest::newRow("late") << int(SimFault::Late) << "\\$05[0-9A-F]{8}\r";
        QTest::newRow("noise") << int(SimFault::Noise) << "[^$].*\\$05[0-9A-F]{8}\r";
    }
    void scriptedFaults()
    {
        QFETCH(int, fault);
        QFETCH(QString, reply);
        SimBus bus;
        bus.addReceiver(5);
        bus.addReceiver(6);
        bus.faults().setLateDelayMicros(300000);
        bus.scriptFaults(5, SimFault(fault), 2);
        QCOMPARE(ask(bus, "%06N").size(), 12);
        for (int i = 0; i < 3; ++i) {
            const std::vector<SimTimedByte> timed = bus.hostTransmit("%05N\r", 0, 115200);
            const QByteArray r = bytesOf(timed);
            const QRegularExpression whole(
                QRegularExpression::anchoredPattern(i < 2 ? reply : "\\$05[0-9A-F]{8}\r"),
                QRegularExpression::DotMatchesEverythingOption);
            QVERIFY2(whole.match(QString::fromLatin1(r)).hasMatch(), r.constData());
            if (i == 2)
                QVERIFY(timed.back().micros < 5000);
            else if (fault == int(SimFault::Late))
                QVERIFY(timed.front().micros > 300000);
        }
    }

    // Random faults and levels repeat exactly for a seed, so a failing run can be replayed.
    void runsRepeatForASeed()
    {
        auto run = [](std::uint64_t seed) {
            SimBus bus(seed);
            bus.addReceiver(5).faults.noReply = 0.3;
            SimFaultRates busWide;
            busWide.noReply = 0.2;
            bus.setFaultRates(busWide);
            QByteArray pattern;
            for (int i = 0; i < 400; ++i) {
                const QByteArray reply = ask(bus, "%05N", i * 1000);
                pattern.append(reply.isEmpty() ? QByteArray("x") : reply.mid(3, 8));
            }
            return pattern;
        };
        const QByteArray a = run(3);
        QCOMPARE(run(3), a);
        QVERIFY(run(4) != a);
        // 1 - 0.7 * 0.8 = 44 % lost.
        QVERIFY2(a.count('x') > 140, qPrintable(QString::number(a.count('x'))));
        QVERIFY2(a.count('x') < 215, qPrintable(QString::number(a.count('x'))));
    }

    // The reply's timing on the line is pinned by the wire transcripts; these are the port's states,
    // and the written history a demo running for hours keeps: only the latest frames.
    void linePortsOpenOnlyWhereABusIs()
    {
        VirtualClock clock;
        SimBus bus;
        bus.addReceiver(5);
        SimSerialLine line(clock);
        line.attachBus(1, &bus);
        line.attachBus(3, nullptr);
        QVERIFY(line.portExists(3));
        QVERIFY(!line.portExists(2));
        QVERIFY(!line.applySettings("fast,N,8,1"));
        QVERIFY(line.applySettings("115200,N,8,1"));
        QVERIFY(!line.write("%05L\r")); // not open yet
        line.selectPort(2);
        QVERIFY(!line.open());
        line.selectPort(1);
        QVERIFY(line.open());
        QVERIFY(!line.portExists(1)); // held exclusively
        QVERIFY(line.write("%05L\r"));
        line.waitForInput(250);
        clock.advanceMillis(1);
        QCOMPARE(line.readAll(), QByteArray("$05\r"));
        line.close();
        QVERIFY(!line.write("%05L\r"));

        line.attachBus(1, nullptr);
        QVERIFY(line.open());
        line.setWrittenLimit(10);
        for (int i = 0; i < 1000; ++i)
            line.write(QByteArray::number(i));
        QVERIFY(line.written().size() >= 10);
        QVERIFY(line.written().size() < 20);
        QCOMPARE(line.written().back().bytes, "999");
        QCOMPARE(line.written().front().bytes, QByteArray::number(1000 - qsizetype(line.written().size())));
    }

    void consoleCommands()
    {
        SimBus bus;
        bus.addReceiver(5);
        bool quit = false;
        QCOMPARE(simConsoleCommand(bus, "stop 5", quit), QByteArray("receiver 5 stopped"));
        QCOMPARE(ask(bus, "%05L"), QByteArray());
        QCOMPARE(simConsoleCommand(bus, "start 5\n", quit), QByteArray("receiver 5 started"));
        QCOMPARE(simConsoleCommand(bus, "fault 5 noreply 1", quit), QByteArray("receiver 5: noreply x1"));
        QCOMPARE(ask(bus, "%05L"), QByteArray());
        QCOMPARE(ask(bus, "%05L"), QByteArray("$05\r"));
        QVERIFY(simConsoleCommand(bus, "stop 9", quit).startsWith("no receiver"));
        QVERIFY(!quit);
        QCOMPARE(simConsoleCommand(bus, "quit", quit), QByteArray("bye"));
        QVERIFY(quit);
        QCOMPARE(simPrintable(QByteArray("$\x01\xFF", 3)), QByteArray("$\\x01\\xFF"));
    }
};

QTEST_GUILESS_MAIN(TstSimBus)
#include "tst_simbus.moc"
