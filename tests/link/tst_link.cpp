#include "link/transaction.h"
#include "platform/clock.h"
#include "sim/simbus.h"
#include "sim/simserialline.h"

#include <QtTest>

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
    double elapsedMs() const { return clock.nowMicros() / 1000.0; }
    int framesWritten() const { return static_cast<int>(line.written().size()); }

    VirtualClock clock;
    SimBus bus{7};
    SimSerialLine line{clock};
    int retry = 2;
    Link link{line, clock, retry};
};
} // namespace

class TestLink : public QObject
{
    Q_OBJECT

private slots:
    // One sendCommand with a 250 ms time-out against receiver 5, faults scripted twice.
    void exchange_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("replyLength");
        QTest::addColumn<int>("retry");
        QTest::addColumn<int>("fault");
        QTest::addColumn<QByteArray>("replacement");
        QTest::addColumn<int>("received"); // -1: refused, whatever came is returned
        QTest::addColumn<int>("frames");
        QTest::addColumn<double>("minMs");
        const int none = int(SimFault::None), lost = int(SimFault::NoReply), replace = int(SimFault::Replace);
        const QByteArray no;
        // A full reply, a garbled one and two retries of a silent receiver are pinned by the wire
        // transcripts. Short of the reply length the wait runs the whole time-out.
        QTest::newRow("short of the length") << "%05L\r" << 12 << 2 << none << no << 4 << 1 << 250.0;
        QTest::newRow("zero length waits") << "%05L\r" << 0 << 2 << none << no << 4 << 1 << 250.0;
        QTest::newRow("nobody, no retry") << "%09N\r" << 12 << 0 << none << no << 0 << 1 << 250.0;
        QTest::newRow("nobody, four retries") << "%09N\r" << 12 << 4 << none << no << 0 << 5 << 1250.0;
        QTest::newRow("two lost, two retries") << "%05N\r" << 12 << 2 << lost << no << 12 << 3 << 500.0;
        QTest::newRow("two lost, one retry") << "%05N\r" << 12 << 1 << lost << no << 0 << 2 << 500.0;
        // A wrong answer is an answer: never retried.
        QTest::newRow("wrong address")
            << "%05L\r" << 4 << 4 << int(SimFault::WrongAddress) << no << -1 << 1 << 0.0;
        QTest::newRow("hash instead of dollar")
            << "%05L\r" << 4 << 4 << replace << QByteArray("#05\r") << -1 << 1 << 0.0;
        QTest::newRow("cut after two characters")
            << "%05L\r" << 4 << 4 << replace << QByteArray("$0") << -1 << 1 << 250.0;
        QTest::newRow("noise before") << "%05L\r" << 4 << 4 << int(SimFault::Noise) << no << -1 << 1 << 0.0;
    }
    void exchange()
    {
        QFETCH(QString, command);
        QFETCH(int, replyLength);
        QFETCH(int, fault);
        QFETCH(QByteArray, replacement);
        QFETCH(int, received);
        QFETCH(int, frames);
        QFETCH(double, minMs);
        Rig rig;
        QFETCH(int, retry);
        rig.retry = retry;
        if (fault == int(SimFault::Replace))
            rig.bus.faults().scriptReplacement(5, replacement);
        else if (fault != int(SimFault::None))
            rig.bus.scriptFaults(5, SimFault(fault), 2);
        QString reply = "stale";
        QCOMPARE(rig.link.sendCommand(command, replyLength, reply, 250), received > 0);
        if (received >= 0)
            QCOMPARE(reply.size(), received);
        else
            QVERIFY(!reply.isEmpty());
        if (received > 0) {
            QVERIFY(reply.startsWith("$05"));
            QVERIFY(reply.endsWith('\r'));
        }
        QCOMPARE(rig.framesWritten(), frames);
        // Never early; each attempt may overrun by the tick resolution only.
        QVERIFY2(rig.elapsedMs() >= minMs, qPrintable(QString::number(rig.elapsedMs())));
        QVERIFY2(rig.elapsedMs() <= minMs + 2 * frames + 3, qPrintable(QString::number(rig.elapsedMs())));
    }

    // Nobody answers: the whole time-out, never more, also when the millisecond
    // tick count wraps (after 49.7 days) during the wait. A broadcast expects
    // no reply and succeeds once its delay is over. Input waiting before a
    // command is discarded only for an addressed one.
    void silentWait_data()
    {
        QTest::addColumn<quint32>("ticksBeforeWrap"); // 0: no wrap
        QTest::addColumn<QByteArray>("waiting");      // on the line beforehand, nothing connected
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("timeout");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<int>("leftWaiting");
        QTest::newRow("addressed, wrap mid-wait") << 100u << QByteArray() << "%09N\r" << 250 << false << 0;
        QTest::newRow("addressed, wrap at the end") << 249u << QByteArray() << "%09N\r" << 250 << false << 0;
        QTest::newRow("broadcast delay over a wrap") << 10u << QByteArray() << "#00A1\r" << 50 << true << 0;
        QTest::newRow("broadcast leaves input") << 0u << QByteArray("XYZ") << "#00A1\r" << 50 << true << 3;
        QTest::newRow("addressed discards input") << 0u << QByteArray("XYZ") << "%05N\r" << 50 << false << 0;
    }
    void silentWait()
    {
        QFETCH(quint32, ticksBeforeWrap);
        QFETCH(QByteArray, waiting);
        QFETCH(QString, command);
        QFETCH(int, timeout);
        Rig rig(0u - ticksBeforeWrap, waiting.isEmpty());
        rig.retry = 0;
        if (!waiting.isEmpty())
            rig.line.injectInput(waiting);
        QString reply = "stale";
        QTEST(rig.link.sendCommand(command, 12, reply, timeout), "ok");
        QVERIFY(reply.isEmpty());
        QTEST(rig.line.bytesWaiting(), "leftWaiting");
        const double elapsed = rig.elapsedMs(), least = ticksBeforeWrap + timeout;
        QVERIFY2(elapsed >= least, qPrintable(QString::number(elapsed)));
        QVERIFY2(elapsed <= least + (waiting.isEmpty() ? 1 : 2), qPrintable(QString::number(elapsed)));
    }

    // A lost adapter must not cost a time-out per receiver on every pass.
    void aClosedPortFailsAtOnce()
    {
        Rig rig;
        rig.line.close();
        QString reply;
        QVERIFY(!rig.link.sendCommand("%05N\r", 12, reply, 250));
        QVERIFY(!rig.link.sendCommand("#00A0\r", 12, reply, 250));
        QCOMPARE(rig.elapsedMs(), 0.0);
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
        QVERIFY(!rig.link.sendCommand("%05N\r", 12, reply, 250));
        QVERIFY(reply.isEmpty());
        rig.clock.advanceMillis(gapMs);
        QVERIFY(rig.link.sendCommand("%05N\r", 12, reply, 250));
        QCOMPARE(reply.size(), 12);
        rig.clock.advanceMillis(100);
        QCOMPARE(rig.line.bytesWaiting(), gapMs > 0 ? 0 : 12);
        QVERIFY(rig.link.sendCommand("%05L\r", 4, reply, 250));
        QCOMPARE(reply, QString("$05\r"));
    }

    // What is left of a disturbed reply on the wire must not spoil the next
    // receiver's exchange: that one first waits for a quiet line. A whole
    // frame that is merely refused leaves the line quiet and costs no wait.
    void aDisturbedReplyCostsOneExchange_data()
    {
        QTest::addColumn<int>("fault");
        QTest::addColumn<QByteArray>("replacement");
        QTest::addColumn<bool>("firstAccepted");
        QTest::addColumn<bool>("waits");
        const QByteArray no;
        QTest::newRow("noise before the reply") << int(SimFault::Noise) << no << false << true;
        QTest::newRow("longer than asked")
            << int(SimFault::Replace) << "$05" + QByteArray(30, '0') + "\r" << true << true;
        QTest::newRow("no end of frame")
            << int(SimFault::Replace) << QByteArray("\xc1\xf3$05AB12CD3456") << false << true;
        QTest::newRow("a whole garbled frame")
            << int(SimFault::Replace) << QByteArray("*0588LBD312\r") << false << false;
        QTest::newRow("sound reply") << int(SimFault::None) << no << true << false;
    }
    void aDisturbedReplyCostsOneExchange()
    {
        QFETCH(int, fault);
        QFETCH(QByteArray, replacement);
        Rig rig;
        rig.bus.addReceiver(6);
        if (fault == int(SimFault::Replace))
            rig.bus.faults().scriptReplacement(5, replacement);
        else if (fault != int(SimFault::None))
            rig.bus.scriptFaults(5, SimFault(fault));
        QString reply;
        QTEST(rig.link.sendCommand("%05N\r", 12, reply, 250), "firstAccepted");
        const std::uint64_t firstEnded = rig.clock.nowMicros();
        QVERIFY(rig.link.sendCommand("%06N\r", 12, reply, 250));
        QCOMPARE(reply.size(), 12);
        QVERIFY2(reply.startsWith("$06"), qPrintable(reply));
        QVERIFY2(reply.endsWith('\r'), qPrintable(reply));
        QCOMPARE(rig.link.lastAttempts(), 1);
        const std::uint64_t secondSent = rig.line.written().back().micros;
        QTEST(secondSent > firstEnded, "waits");
        // Never longer than the longest reply's wire time: 41 characters of 10 bits at 115200.
        QVERIFY(secondSent - firstEnded <= 41 * 87);
    }
};

QTEST_GUILESS_MAIN(TestLink)
#include "tst_link.moc"
