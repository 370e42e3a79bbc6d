#include "feeds/feedhub.h"
#include "support/fakereceiverbus.h"
#include "support/netsupport.h"

#include <QElapsedTimer>
#include <QTest>

#include <cstdint>
#include <cstring>

#include <lo/lo.h>

using namespace zun;

namespace {

// A real OSC receiver; every message as "path types args…".
struct OscReceiver
{
    OscReceiver() { lo_server_add_method(server, nullptr, nullptr, &OscReceiver::onMessage, this); }
    ~OscReceiver() { lo_server_free(server); }
    quint16 port() const { return static_cast<quint16>(lo_server_get_port(server)); }

    // Lets the program run while draining the socket, for ms.
    void pump(int ms)
    {
        QElapsedTimer t;
        t.start();
        while (t.elapsed() < ms) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
            while (lo_server_recv_noblock(server, 5) > 0) {
            }
        }
    }

    static int onMessage(const char *path, const char *types, lo_arg **argv, int argc, lo_message, void *self)
    {
        QString line = QString::fromUtf8(path) + QLatin1Char(' ') + QString::fromLatin1(types);
        for (int i = 0; i < argc; ++i) {
            // liblo aligns arguments to 4 bytes only, less than lo_arg asks for:
            // copy the bytes out rather than reading through the union.
            const char *bytes = reinterpret_cast<const char *>(argv[i]);
            if (types[i] == 's') {
                line += QLatin1Char(' ') + QString::fromUtf8(bytes);
            } else if (types[i] == 'i') {
                std::int32_t value = 0;
                std::memcpy(&value, bytes, sizeof value);
                line += QStringLiteral(" %1").arg(value);
            } else if (types[i] == 'f') {
                float value = 0;
                std::memcpy(&value, bytes, sizeof value);
                line += QStringLiteral(" %1").arg(double(value), 0, 'f', 3);
            }
        }
        static_cast<OscReceiver *>(self)->messages << line;
        return 0;
    }

    lo_server server = lo_server_new_with_proto(nullptr, LO_UDP, nullptr);
    QStringList messages;
};

} // namespace

class TestOscFeed : public QObject
{
    Q_OBJECT
private slots:
    void liveStateReachesAReceiver();
};

void TestOscFeed::liveStateReachesAReceiver()
{
    OscReceiver rx;
    FeedOptions options;
    // Two targets that never answer sit in front of the real one.
    options.oscTargets = {{QStringLiteral("no-such-host.invalid"), 9000},
                          {QStringLiteral("127.0.0.1"), freeLoopbackPort()},
                          {QStringLiteral("127.0.0.1"), rx.port()}};
    FakeReceiverBus bus;
    FeedHub *hub = attachFeeds(options, &bus);
    QCOMPARE(hub->statusText(), QStringLiteral("OSC: 3 targets"));

    ReceiverStatus quoted = FakeReceiverBus::receiver(3, QStringLiteral("Vox \"1\" ü"));
    quoted.mute = true;
    bus.replayDetection({FakeReceiverBus::receiver(1, QStringLiteral("Gtr")), quoted});
    rx.pump(300);
    for (const char *expected :
         {"/zunoria/rx/03/name s Vox \"1\" ü", "/zunoria/rx/03/freq f 500.375",
          "/zunoria/rx/03/rfa if 43 -68.500", "/zunoria/rx/03/rfb if 33 -73.500", "/zunoria/rx/03/af i 20",
          "/zunoria/rx/03/battery i 80", "/zunoria/rx/03/mute T", "/zunoria/rx/03/online T",
          "/zunoria/rx/01/name s Gtr"})
        QVERIFY2(rx.messages.contains(QString::fromUtf8(expected)), expected);

    // Going offline is said at once, and an offline receiver is not sent.
    rx.messages.clear();
    quoted.online = false;
    emit bus.wentOffline(quoted);
    rx.pump(200);
    QVERIFY(rx.messages.contains(QStringLiteral("/zunoria/rx/03/online F")));
    QVERIFY(!rx.messages.contains(QStringLiteral("/zunoria/rx/03/name s Vox \"1\" ü")));
    QTRY_VERIFY_WITH_TIMEOUT(
        hub->statusText().contains(QStringLiteral("cannot find host no-such-host.invalid")), 30000);

    // A pass every millisecond for half a second: far more bundles than the limit lets through.
    rx.messages.clear();
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < 500) {
        emit bus.passEnded(1);
        rx.pump(1);
    }
    rx.pump(OscFeed::kMinBundleIntervalMs * 2);
    const qint64 bundles = rx.messages.count(QStringLiteral("/zunoria/rx/01/online T"));
    QVERIFY2(bundles >= 2 && bundles <= t.elapsed() / OscFeed::kMinBundleIntervalMs + 1,
             qPrintable(QStringLiteral("%1 bundles in %2 ms").arg(bundles).arg(t.elapsed())));
}

QTEST_GUILESS_MAIN(TestOscFeed)
#include "tst_oscfeed.moc"
