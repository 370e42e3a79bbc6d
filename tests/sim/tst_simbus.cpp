#include "platform/clock.h"
#include "sim/simbus.h"
#include "sim/simconsole.h"
#include "sim/simserialline.h"

#include <QtTest>

#include <algorithm>
#include <cctype>

using namespace zun;

namespace {
constexpr int kFast = 115200;

QByteArray bytesOf(const std::vector<SimTimedByte> &timed)
{
    QByteArray bytes;
    for (const SimTimedByte &b : timed)
        bytes.append(b.byte);
    return bytes;
}

// Sends one frame at the given time and returns everything that comes back.
QByteArray ask(SimBus &bus, const QByteArray &frame, std::uint64_t atMicros = 0, int baud = kFast)
{
    return bytesOf(bus.hostTransmit(frame + '\r', atMicros, baud));
}

bool allHex(QByteArrayView text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); });
}
} // namespace

class TstSimBus : public QObject
{
    Q_OBJECT

private slots:
    void scriptedFaults_data()
    {
        QTest::addColumn<int>("fault");
        for (SimFault f : {SimFault::NoReply, SimFault::Garbled, SimFault::CorruptData,
                           SimFault::WrongAddress, SimFault::Partial, SimFault::Late, SimFault::Noise})
            QTest::addRow("fault %d", int(f)) << int(f);
    }
    void scriptedFaults()
    {
        QFETCH(int, fault);
        SimBus bus;
        bus.addReceiver(5);
        bus.addReceiver(6);
        bus.faults().setLateDelayMicros(300000);
        bus.scriptFaults(5, SimFault(fault), 2);
        QCOMPARE(ask(bus, "%06N").size(), 12); // another address is not touched
        for (int i = 0; i < 2; ++i) {
            const std::vector<SimTimedByte> timed = bus.hostTransmit("%05N\r", 0, kFast);
            const QByteArray r = bytesOf(timed);
            const bool asExpected = [&] {
                switch (SimFault(fault)) {
                case SimFault::NoReply:
                    return r.isEmpty();
                case SimFault::Garbled:
                    return !r.startsWith('$');
                case SimFault::CorruptData:
                    return r.startsWith("$05") && r.size() == 12 && !allHex(r.mid(3, 8));
                case SimFault::WrongAddress:
                    return r.startsWith("$06");
                case SimFault::Partial:
                    return !r.isEmpty() && r.size() < 12;
                case SimFault::Late:
                    return r.size() == 12 && timed.front().micros > 300000;
                default:
                    return r.size() > 12 && !r.startsWith('$') && r.right(12).startsWith("$05");
                }
            }();
            QVERIFY2(asExpected, r.constData());
        }
        const std::vector<SimTimedByte> clean = bus.hostTransmit("%05N\r", 0, kFast);
        QVERIFY(bytesOf(clean).startsWith("$05") && bytesOf(clean).size() == 12);
        QVERIFY(clean.back().micros < 5000);
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
        QVERIFY2(a.count('x') > 140 && a.count('x') < 215, qPrintable(QString::number(a.count('x'))));
    }

    void lineDeliversBytesAtTheirArrival()
    {
        VirtualClock clock;
        SimBus bus;
        bus.addReceiver(5);
        SimSerialLine line(clock);
        line.attachBus(1, &bus);
        line.attachBus(3, nullptr);
        QVERIFY(line.portExists(3) && !line.portExists(2));
        QVERIFY(!line.applySettings("fast,N,8,1"));
        QVERIFY(line.applySettings("115200,N,8,1"));
        QVERIFY(!line.write("%05L\r")); // not open yet
        line.selectPort(2);
        QVERIFY(!line.open());
        line.selectPort(1);
        QVERIFY(line.open());
        QVERIFY(!line.portExists(1)); // held exclusively
        QVERIFY(line.write("%05L\r"));
        QCOMPARE(line.bytesWaiting(), 0);
        const std::uint64_t first = simWireMicros(5, kFast) + 1500 + simWireMicros(1, kFast);
        line.waitForInput(250);
        QCOMPARE(clock.nowMicros(), first);
        QCOMPARE(line.bytesWaiting(), 1);
        line.waitForInput(250);
        QCOMPARE(line.bytesWaiting(), 2);
        clock.advanceMillis(1);
        QCOMPARE(line.readAll(), QByteArray("$05\r"));
        // Nothing more on the way: the wait runs to its end.
        const std::uint64_t before = clock.nowMicros();
        line.waitForInput(100);
        QCOMPARE(clock.nowMicros(), before + 100000);
        QCOMPARE(line.written().front().baud, kFast);
        line.close();
        QVERIFY(!line.write("%05L\r"));
    }

    void consoleCommands()
    {
        SimBus bus;
        bus.addReceiver(5);
        bool quit = false;
        simConsoleCommand(bus, "stop 5", quit);
        QCOMPARE(ask(bus, "%05L"), QByteArray());
        simConsoleCommand(bus, "start 5\n", quit);
        simConsoleCommand(bus, "fault 5 noreply 1", quit);
        QCOMPARE(ask(bus, "%05L"), QByteArray());
        QCOMPARE(ask(bus, "%05L"), QByteArray("$05\r"));
        QVERIFY(simConsoleCommand(bus, "stop 9", quit).startsWith("no receiver"));
        QVERIFY(!quit);
        simConsoleCommand(bus, "quit", quit);
        QVERIFY(quit);
        QCOMPARE(simPrintable("#00A0\r"), QByteArray("#00A0"));
        QCOMPARE(simPrintable(QByteArray("$\x01\xFF", 3)), QByteArray("$\\x01\\xFF"));
    }
};

QTEST_GUILESS_MAIN(TstSimBus)
#include "tst_simbus.moc"
