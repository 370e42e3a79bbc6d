#include "link/transaction.h"
#include "platform/clock.h"
#include "platform/portmap.h"
#include "platform/qtserialline.h"
#include "platform/settingsstore.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <chrono>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

using namespace zun;
using std::chrono::milliseconds;

namespace {

// Everything that arrives on fd until it stays quiet for millis.
QByteArray receive(int fd, int millis)
{
    QByteArray got;
    pollfd pfd{fd, POLLIN, 0};
    char buf[256];
    for (ssize_t n = 0; ::poll(&pfd, 1, millis) > 0 && (n = ::read(fd, buf, sizeof buf)) > 0;)
        got.append(buf, n);
    return got;
}

// Plays one receiver: waits for a command, then answers in chunks gapMillis apart.
std::thread answerOnce(int master, QList<QByteArray> chunks, int gapMillis)
{
    return std::thread([=] {
        pollfd pfd{master, POLLIN, 0};
        char buf[64];
        if (::poll(&pfd, 1, 1000) <= 0 || ::read(master, buf, sizeof buf) <= 0)
            return;
        for (const QByteArray &chunk : chunks) {
            if (&chunk != &chunks.first())
                std::this_thread::sleep_for(milliseconds(gapMillis));
            (void)!::write(master, chunk.data(), chunk.size());
        }
    });
}

} // namespace

class TestQtSerialLine : public QObject
{
    Q_OBJECT

private slots:
    // The line opens the slave of a fresh pseudo-terminal as COM3; the test plays the receivers on the
    // master.
    void init()
    {
        m_master = ::posix_openpt(O_RDWR | O_NOCTTY);
        QVERIFY(m_master >= 0);
        QCOMPARE(::grantpt(m_master), 0);
        QCOMPARE(::unlockpt(m_master), 0);
        m_slave = QString::fromLocal8Bit(::ptsname(m_master));
        // No real port is ever enumerated: the machine's ttyS0 is its console.
        m_map = std::make_unique<PortMap>(
            m_store, [] { return QStringList(); }, QString());
        QVERIFY(m_map->addOverride("COM3=" + m_slave));
        m_line = std::make_unique<QtSerialLine>(*m_map);
        m_line->selectPort(3);
        m_link = std::make_unique<Link>(*m_line, m_clock, m_retry);
        m_retry = 0;
    }

    void cleanup()
    {
        m_link.reset();
        m_line.reset();
        if (m_master >= 0)
            ::close(m_master);
    }

    // Settings take effect at open and at once on the open port, input left from before is discarded,
    // and the pty opens though it refuses RTS.
    void openLine()
    {
        QVERIFY(m_line->applySettings("9600,E,7,2"));
        QVERIFY(!m_line->applySettings("9600,N,9,1")); // a bad text leaves the last good one
        QCOMPARE(::write(m_master, "$01 left over from before\n", 26), 26);
        m_line->setTextMode();
        m_line->setRequestToSend(true);
        QVERIFY(m_line->open());
        QVERIFY(m_line->isOpen());
        // The master reports its slave's settings; a pty forces 8 data bits and no parity.
        termios tio{};
        QCOMPARE(::tcgetattr(m_master, &tio), 0);
        QCOMPARE(::cfgetospeed(&tio), speed_t(B9600));
        QVERIFY(tio.c_cflag & CSTOPB);
        QVERIFY(m_line->applySettings("115200,N,8,1"));
        QCOMPARE(::tcgetattr(m_master, &tio), 0);
        QCOMPARE(::cfgetospeed(&tio), speed_t(B115200));
        QVERIFY(!(tio.c_cflag & CSTOPB));

        receive(m_master, 50); // echo of the canonical-mode terminal before it went raw
        QCOMPARE(m_line->bytesWaiting(), 0);
        QCOMPARE(::write(m_master, "$01", 3), 3);
        QTRY_COMPARE(m_line->bytesWaiting(), 3);
        QCOMPARE(m_line->readAll(), QByteArray("$01"));

        m_line->selectPort(5); // the open port keeps its number
        QCOMPARE(m_line->portNumber(), 3);
        m_line->setRequestToSend(true);
        QVERIFY(m_line->isOpen());
        // write() returns only once the bytes left the program: no event loop runs here.
        const QByteArray frame = "#05C" + QByteArray(200, 'N') + "\r";
        QVERIFY(m_line->write(frame));
        QCOMPARE(receive(m_master, 200), frame);
        m_line->close();
        QVERIFY(!m_line->isOpen());
        QVERIFY(!m_line->write("x"));
    }

    // A device that sends without end holds no more than the longest reply;
    // the rest is counted, and the next transaction is answered as ever.
    void endlessJunkIsBounded()
    {
        QVERIFY(m_line->open());
        receive(m_master, 50);
        ::fcntl(m_master, F_SETFL, ::fcntl(m_master, F_GETFL) | O_NONBLOCK);
        const QByteArray junk(1000, 'x');
        qint64 sent = 0;
        for (int round = 0; round < 200; ++round) {
            sent += std::max<ssize_t>(::write(m_master, junk.data(), junk.size()), 0);
            QVERIFY(m_line->bytesWaiting() <= 41);
        }
        QTRY_COMPARE(qint64(m_line->discardedInput()), sent - 41);
        QVERIFY(sent > 100'000);
        ::fcntl(m_master, F_SETFL, ::fcntl(m_master, F_GETFL) & ~O_NONBLOCK);
        std::thread receiver = answerOnce(m_master, {"$01N80A0B0C9"}, 0);
        QString reply;
        const bool ok = m_link->sendCommand("%01N\r", 12, reply, 250);
        receiver.join();
        QVERIFY(ok);
        QCOMPARE(reply, "$01N80A0B0C9");
    }

    // Reply length 0: nobody waits on the port, yet what arrived meanwhile is read.
    // Only the least time is checked: no reply ends the wait early. How soon a
    // whole reply ends it depends on the machine; bench_pty prints it.
    void replyIsRead_data()
    {
        QTest::addColumn<QList<QByteArray>>("chunks");
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("minMillis");
        QTest::newRow("two chunks") << QList<QByteArray>{"$01N8", "0A0B0C9"} << 12 << 80;
        QTest::newRow("quiet reply after the full wait") << QList<QByteArray>{"$01"} << 0 << 100;
        QTest::newRow("short reply read at the time limit") << QList<QByteArray>{"$01N8"} << 12 << 250;
    }
    void replyIsRead()
    {
        QFETCH(QList<QByteArray>, chunks);
        QFETCH(int, length);
        QFETCH(int, minMillis);
        QVERIFY(m_line->open());
        std::thread receiver = answerOnce(m_master, chunks, 80);
        QString reply;
        QElapsedTimer timer;
        timer.start();
        const bool ok = m_link->sendCommand("%01N\r", length, reply, length ? 250 : 100);
        const qint64 elapsed = timer.elapsed();
        receiver.join();
        QVERIFY(ok);
        QCOMPARE(reply.toLatin1(), chunks.join());
        QVERIFY2(elapsed >= minMillis, qPrintable(QString::number(elapsed)));
    }

    // The device goes while sendCommand blocks on it: no event loop runs, so the line must notice by
    // itself, close, and end the retries; one that did not would spin on the hung-up device through
    // every attempt. (Losing it while idle is covered end to end with the simulator; the CPU the wait
    // takes is printed by bench_pty.)
    void lostDeviceDuringTransaction()
    {
        QVERIFY(m_line->open());
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("lost the serial device COM3"));
        m_retry = 2;
        std::thread unplug([master = std::exchange(m_master, -1)] {
            pollfd pfd{master, POLLIN, 0};
            ::poll(&pfd, 1, 1000);
            std::this_thread::sleep_for(milliseconds(30));
            ::close(master);
        });
        QString reply;
        const bool ok = m_link->sendCommand("%01N\r", 12, reply, 250);
        unplug.join();
        QVERIFY(!ok);
        QVERIFY(!m_line->isOpen());
        QVERIFY(reply.isEmpty());
        QCOMPARE(m_link->lastAttempts(), 1);
    }

    void portExists()
    {
        QTemporaryDir dir;
        QFile plain(dir.filePath("not-a-tty"));
        QVERIFY(plain.open(QIODevice::WriteOnly));
        plain.close();
        QVERIFY(m_map->addOverride("COM1=" + dir.filePath("missing")));
        QVERIFY(m_map->addOverride("COM2=" + plain.fileName()));
        QVERIFY(m_line->portExists(3));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("COM1 .*missing.* does not exist"));
        QVERIFY(!m_line->portExists(1));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("COM2 .* is not a serial device"));
        QVERIFY(!m_line->portExists(2));
        for (int quiet : {4, 0, 9}) // nothing said
            QVERIFY2(!m_line->portExists(quiet), qPrintable(QString::number(quiet)));

        // The probe leaves the device closed and free for the real open; our own open line still counts.
        QVERIFY(m_line->open());
        QVERIFY(m_line->portExists(3));
        QVERIFY(m_line->isOpen());
    }

    void deviceRefusedToTheUser()
    {
        if (::geteuid() == 0) {
            // Root opens any device whatever its mode, so the case runs again
            // in a child as an ordinary user without supplementary groups.
            QProcess child;
            child.setProcessChannelMode(QProcess::MergedChannels);
            child.start("setpriv", {"--reuid=nobody", "--regid=nogroup", "--clear-groups",
                                    QCoreApplication::applicationFilePath(), "deviceRefusedToTheUser"});
            QVERIFY(child.waitForFinished(20000));
            const QByteArray output = child.readAll();
            QCOMPARE(child.exitStatus(), QProcess::NormalExit);
            QVERIFY2(child.exitCode() == 0, output.constData());
            QVERIFY2(output.contains("PASS   : TestQtSerialLine::deviceRefusedToTheUser()"),
                     output.constData());
            return;
        }
        QCOMPARE(::chmod(QFile::encodeName(m_slave).constData(), 0), 0);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("COM3 .*permission denied.*dialout"));
        QVERIFY(!m_line->portExists(3));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("cannot open COM3 "));
        QVERIFY(!m_line->open());
        QVERIFY(!m_line->isOpen());
    }

private:
    int m_master = -1;
    QString m_slave;
    MemorySettingsStore m_store;
    std::unique_ptr<PortMap> m_map;
    std::unique_ptr<QtSerialLine> m_line;
    SystemClock m_clock;
    int m_retry = 0;
    std::unique_ptr<Link> m_link;
};

QTEST_GUILESS_MAIN(TestQtSerialLine)
#include "tst_qtserialline.moc"
