#include "link/transaction.h"
#include "platform/clock.h"
#include "sim/simbus.h"
#include "sim/simserialline.h"

#include <QtTest>

#include <memory>

using namespace zun;

namespace {
// One receiver at address 5 on COM1, the host at 115200 on a virtual clock.
struct Rig
{
    explicit Rig(std::uint32_t tickOrigin = 0, bool connected = true) : clock(tickOrigin)
    {
        bus.addReceiver(5);
        line.attachBus(1, connected ? &bus : nullptr);
        line.applySettings("115200,N,8,1");
        line.open();
    }
    double elapsedMs(std::uint64_t since) const { return (clock.nowMicros() - since) / 1000.0; }
    int framesWritten() const { return static_cast<int>(line.written().size()); }

    VirtualClock clock;
    SimBus bus{7};
    SimSerialLine line{clock};
    int retry = 2;
    Link link{line, clock, retry};
};
} // namespace

class TstSendCommand : public QObject
{
    Q_OBJECT

private slots:
    void validReply_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("replyLength");
        QTest::addColumn<int>("timeout");
        QTest::addColumn<int>("received");
        QTest::addColumn<double>("minMs");
        QTest::addColumn<double>("maxMs");
        // Reaching the reply length ends the wait at once.
        QTest::newRow("levels") << "%05N\r" << 12 << 250 << 12 << 0.0 << 5.0;
        QTest::newRow("identification") << "%05M\r" << 41 << 100 << 41 << 0.0 << 8.0;
        // Fewer characters than expected: the whole time-out, then what came.
        QTest::newRow("short of the length") << "%05L\r" << 12 << 250 << 4 << 250.0 << 252.0;
        QTest::newRow("zero length waits") << "%05L\r" << 0 << 100 << 4 << 100.0 << 101.0;
    }
    void validReply()
    {
        QFETCH(QString, command);
        QFETCH(int, replyLength);
        QFETCH(int, timeout);
        QFETCH(double, minMs);
        QFETCH(double, maxMs);
        Rig rig;
        const std::uint64_t start = rig.clock.nowMicros();
        QString reply;
        QVERIFY(rig.link.SendCommand(command, replyLength, reply, timeout));
        QTEST(int(reply.size()), "received");
        QVERIFY(reply.startsWith("$05") && reply.endsWith('\r'));
        QCOMPARE(rig.framesWritten(), 1);
        QVERIFY2(rig.elapsedMs(start) >= minMs && rig.elapsedMs(start) <= maxMs,
                 qPrintable(QString::number(rig.elapsedMs(start))));
    }

    void attemptsWithoutReply()
    {
        for (int retry : {0, 2, 4}) {
            Rig rig;
            rig.retry = retry;
            QString reply = "stale";
            QVERIFY(!rig.link.SendCommand("%09N\r", 12, reply, 250));
            QVERIFY(reply.isEmpty());
            QCOMPARE(rig.framesWritten(), retry + 1);
            // Never early; each attempt may overrun by the tick resolution only.
            QVERIFY(rig.elapsedMs(0) >= (retry + 1) * 250.0 && rig.elapsedMs(0) <= (retry + 1) * 252.0);
        }
    }

    void missingRepliesAreRetried_data()
    {
        QTest::addColumn<int>("missing");
        QTest::addColumn<int>("retry");
        QTest::addColumn<bool>("ok");
        QTest::newRow("two lost, two retries") << 2 << 2 << true;
        QTest::newRow("two lost, one retry") << 2 << 1 << false;
    }
    void missingRepliesAreRetried()
    {
        QFETCH(int, missing);
        QFETCH(int, retry);
        QFETCH(bool, ok);
        Rig rig;
        rig.retry = retry;
        rig.bus.scriptFaults(5, SimFault::NoReply, missing);
        QString reply;
        QCOMPARE(rig.link.SendCommand("%05N\r", 12, reply, 250), ok);
        QCOMPARE(rig.framesWritten(), std::min(missing, retry) + 1);
        QCOMPARE(reply.size(), ok ? 12 : 0);
    }

    void invalidReplyIsNotRetried_data()
    {
        QTest::addColumn<int>("fault");
        QTest::addColumn<QByteArray>("replacement");
        QTest::newRow("wrong address") << int(SimFault::WrongAddress) << QByteArray();
        QTest::newRow("hash instead of dollar") << int(SimFault::Replace) << QByteArray("#05\r");
        QTest::newRow("cut after two characters") << int(SimFault::Replace) << QByteArray("$0");
        QTest::newRow("noise before the reply") << int(SimFault::Noise) << QByteArray();
        QTest::newRow("garbled") << int(SimFault::Garbled) << QByteArray();
    }
    void invalidReplyIsNotRetried()
    {
        QFETCH(int, fault);
        QFETCH(QByteArray, replacement);
        Rig rig;
        rig.retry = 4;
        if (fault == int(SimFault::Replace))
            rig.bus.faults().scriptReplacement(5, replacement);
        else
            rig.bus.scriptFaults(5, SimFault(fault));
        QString reply;
        QVERIFY(!rig.link.SendCommand("%05L\r", 4, reply, 250));
        QVERIFY(!reply.isEmpty());
        QCOMPARE(rig.framesWritten(), 1);
    }

    void waitingInputBeforeCommand_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<int>("leftWaiting");
        QTest::newRow("broadcast leaves it") << "#00A1\r" << true << 3;
        QTest::newRow("addressed discards it") << "%05N\r" << false << 0;
    }
    void waitingInputBeforeCommand()
    {
        QFETCH(QString, command);
        Rig rig(0, false); // nothing connected
        rig.retry = 0;
        rig.line.injectInput("XYZ");
        QString reply = "stale";
        QTEST(rig.link.SendCommand(command, 12, reply, 50), "ok");
        QVERIFY(reply.isEmpty());
        QTEST(rig.line.bytesWaiting(), "leftWaiting");
        QVERIFY(rig.elapsedMs(0) >= 50.0 && rig.elapsedMs(0) <= 52.0);
    }

    void tickWrapDuringWait_data()
    {
        QTest::addColumn<quint32>("ticksBeforeWrap");
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("timeout");
        QTest::newRow("addressed, wrap mid-wait") << 100u << "%09N\r" << 250;
        QTest::newRow("addressed, wrap at the end") << 249u << "%09N\r" << 250;
        QTest::newRow("broadcast delay") << 10u << "#00A1\r" << 50;
    }
    void tickWrapDuringWait()
    {
        QFETCH(quint32, ticksBeforeWrap);
        QFETCH(QString, command);
        QFETCH(int, timeout);
        Rig rig(0u - ticksBeforeWrap);
        rig.retry = 0;
        QString reply;
        rig.link.SendCommand(command, 12, reply, timeout);
        // The count restarts from 0 at the wrap: a full time-out after it,
        // never more.
        const double elapsed = rig.elapsedMs(0);
        QVERIFY2(elapsed >= ticksBeforeWrap + timeout && elapsed <= ticksBeforeWrap + timeout + 1.0,
                 qPrintable(QString::number(elapsed)));
    }

    void closedPortFails()
    {
        Rig rig;
        rig.line.close();
        QString reply;
        QVERIFY(!rig.link.SendCommand("%05N\r", 12, reply, 250));
        QVERIFY(!rig.link.SendCommand("#00A0\r", 12, reply, 250));
        QCOMPARE(rig.framesWritten(), 0);
    }

    void lateReplyIsDiscardedByTheNextExchange_data()
    {
        QTest::addColumn<int>("gapMs");
        QTest::newRow("landed before the next command") << 100;
        QTest::newRow("lands after the next reply") << 0;
    }
    void lateReplyIsDiscardedByTheNextExchange()
    {
        QFETCH(int, gapMs);
        Rig rig;
        rig.retry = 0;
        rig.bus.faults().setLateDelayMicros(300000);
        rig.bus.scriptFaults(5, SimFault::Late);
        QString reply;
        QVERIFY(!rig.link.SendCommand("%05N\r", 12, reply, 250));
        QVERIFY(reply.isEmpty());
        rig.clock.advanceMillis(gapMs);
        QVERIFY(rig.link.SendCommand("%05N\r", 12, reply, 250));
        QCOMPARE(reply.size(), 12);
        rig.clock.advanceMillis(100);
        QCOMPARE(rig.line.bytesWaiting(), gapMs > 0 ? 0 : 12);
        QVERIFY(rig.link.SendCommand("%05L\r", 4, reply, 250));
        QCOMPARE(reply, QString("$05\r"));
    }
};

QTEST_GUILESS_MAIN(TstSendCommand)
#include "tst_sendcommand.moc"
