// Each feed against a real counterpart: a liblo OSC server, a mosquitto
// broker, raw HTTP clients and headless Chromium.
#include "feeds/feedhub.h"
#include "feeds/mqttconnection.h"
#include "support/browser.h"
#include "support/fakereceiverbus.h"
#include "support/netsupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTcpSocket>
#include <QTest>
#include <QWebSocket>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include <arpa/inet.h>
#include <lo/lo.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

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

    bool received(const QString &message)
    {
        pump(5);
        return messages.contains(message);
    }

    static int onMessage(const char *path, const char *types, lo_arg **argv, int argc, lo_message, void *self)
    {
        QString line = QString::fromUtf8(path) + QLatin1Char(' ') + QString::fromLatin1(types);
        for (int i = 0; i < argc; ++i) {
            // liblo aligns arguments to 4 bytes only, less than lo_arg asks for:
            // copy the bytes out rather than reading through the union.
            const char *bytes = reinterpret_cast<const char *>(argv[i]);
            std::int32_t integer = 0;
            float real = 0;
            if (types[i] == 's') {
                line += QLatin1Char(' ') + QString::fromUtf8(bytes);
            } else if (types[i] == 'i') {
                std::memcpy(&integer, bytes, sizeof integer);
                line += QStringLiteral(" %1").arg(integer);
            } else if (types[i] == 'f') {
                std::memcpy(&real, bytes, sizeof real);
                line += QStringLiteral(" %1").arg(double(real), 0, 'f', 3);
            }
        }
        static_cast<OscReceiver *>(self)->messages << line;
        return 0;
    }

    lo_server server = lo_server_new_with_proto(nullptr, LO_UDP, nullptr);
    QStringList messages;
};

const QString kToken = QStringLiteral("tok-42-0123456789");

// From the dashboard's own page unless told otherwise.
QByteArray upgradeRequest(const QByteArray &target, quint16 port, QByteArray host = {},
                          QByteArray origin = {})
{
    host = host.isEmpty() ? "127.0.0.1:" + QByteArray::number(port) : host;
    origin = origin.isEmpty() ? "http://" + host : origin;
    return "GET " + target + " HTTP/1.1\r\nHost: " + host + "\r\nOrigin: " + origin +
           "\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
           "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n";
}

} // namespace

class TestFeeds : public QObject
{
    Q_OBJECT

    // A dashboard with its token, two receivers detected.
    void startDashboard()
    {
        m_bus = std::make_unique<FakeReceiverBus>();
        FeedOptions options;
        options.webPort = m_port = freeLoopbackPort();
        options.webToken = kToken;
        m_hub = attachFeeds(options, m_bus.get(), m_bus.get(), QStringLiteral("COM1"));
        m_bus->replayDetection({FakeReceiverBus::receiver(1, QStringLiteral("Gtr")), m_vox});
    }

    std::unique_ptr<FakeReceiverBus> m_bus;
    FeedHub *m_hub = nullptr;
    quint16 m_port = 0;
    const Receiver m_vox = FakeReceiverBus::receiver(3, QStringLiteral("Vox \"1\" ü <b>"));

private slots:
    // Who owns a line name, from what the broker keeps: only a live program
    // other than this one does; a dead run of ours on this host does not.
    void aLineNameIsTakenOnlyByAnotherLiveProgram_data()
    {
        QTest::addColumn<QByteArray>("status");
        QTest::addColumn<QByteArray>("info");
        QTest::addColumn<QString>("owner");
        const QByteArray self = QByteArray(R"({"host":"rack1","pid":)") +
                                QByteArray::number(QCoreApplication::applicationPid()) + '}';
        QTest::newRow("nobody") << QByteArray() << QByteArray() << "";
        QTest::newRow("gone offline")
            << QByteArray("offline") << QByteArray(R"({"host":"rack2","pid":7})") << "";
        QTest::newRow("this program") << QByteArray("online") << self << "";
        QTest::newRow("a dead run here")
            << QByteArray("online") << QByteArray(R"({"host":"rack1","pid":999999999})") << "";
        QTest::newRow("another host")
            << QByteArray("online") << QByteArray(R"({"host":"rack2","pid":7})") << "rack2 (process 7)";
        QTest::newRow("paused on another host")
            << QByteArray("paused") << QByteArray(R"({"host":"rack2","pid":7})") << "rack2 (process 7)";
        QTest::newRow("unknown owner") << QByteArray("online") << QByteArray("garbage") << "another program";
    }
    void aLineNameIsTakenOnlyByAnotherLiveProgram()
    {
        QFETCH(QByteArray, status);
        QFETCH(QByteArray, info);
        QTEST(lineOwner(status, info, "rack1", QCoreApplication::applicationPid()), "owner");
    }

    void oscReachesAReceiver()
    {
        OscReceiver rx;
        FeedOptions options;
        // Two targets that never answer sit in front of the real one.
        options.oscTargets = {
            {"no-such-host.invalid", 9000}, {"127.0.0.1", freeLoopbackPort()}, {"127.0.0.1", rx.port()}};
        FakeReceiverBus bus;
        FeedHub *hub = attachFeeds(options, &bus, &bus, QStringLiteral("COM1"));
        QCOMPARE(hub->statusText(), "OSC: 3 targets");

        Receiver quoted = FakeReceiverBus::receiver(3, QStringLiteral("Vox \"1\" ü"));
        quoted.mute = true;
        bus.replayDetection({FakeReceiverBus::receiver(1, QStringLiteral("Gtr")), quoted});
        // The last message of the first bundle; the rest came with it.
        QTRY_VERIFY(rx.received("/zunoria/COM1/rx/01/name s Gtr"));
        for (const char *expected :
             {"/zunoria/COM1/rx/03/name s Vox \"1\" ü", "/zunoria/COM1/rx/03/freq f 500.375",
              "/zunoria/COM1/rx/03/rfa if 43 -80.939", "/zunoria/COM1/rx/03/rfb if 33 -87.000",
              "/zunoria/COM1/rx/03/af i 20", "/zunoria/COM1/rx/03/battery i 80", "/zunoria/COM1/rx/03/mute T",
              "/zunoria/COM1/rx/03/online T"})
            QVERIFY2(rx.messages.contains(QString::fromUtf8(expected)), expected);

        // Going offline is said in the next bundle, and an offline receiver is not sent.
        rx.messages.clear();
        quoted.online = false;
        emit bus.wentOffline(quoted);
        QTRY_VERIFY(rx.received("/zunoria/COM1/rx/03/online F"));
        QVERIFY(!rx.messages.contains("/zunoria/COM1/rx/03/name s Vox \"1\" ü"));
        QTRY_VERIFY_WITH_TIMEOUT(hub->statusText().contains("cannot find host no-such-host.invalid"), 30000);

        // A pass every millisecond for half a second: far more bundles than the limit lets through.
        rx.messages.clear();
        QElapsedTimer t;
        t.start();
        while (t.elapsed() < 500) {
            emit bus.passEnded(1);
            rx.pump(1);
        }
        rx.pump(OscFeed::kMinBundleIntervalMs * 2);
        const qint64 bundles = rx.messages.count("/zunoria/COM1/rx/01/online T");
        QVERIFY2(bundles >= 2,
                 qPrintable(QStringLiteral("%1 bundles in %2 ms").arg(bundles).arg(t.elapsed())));
        QVERIFY2(bundles <= t.elapsed() / OscFeed::kMinBundleIntervalMs + 1,
                 qPrintable(QStringLiteral("%1 bundles in %2 ms").arg(bundles).arg(t.elapsed())));
    }

    void mqttPublishesToARealBroker()
    {
        const quint16 port = freeLoopbackPort();
        FeedOptions options;
        options.mqttHost = QStringLiteral("127.0.0.1");
        options.mqttPort = port;
        FakeReceiverBus bus;
        auto hub = std::unique_ptr<FeedHub>(attachFeeds(options, &bus, &bus, QStringLiteral("COM1")));

        // The broker is not there yet: the feed says so and keeps trying.
        const Receiver quoted = FakeReceiverBus::receiver(3, QStringLiteral("Vox \"1\" ü\\"));
        emit bus.levelsRead(quoted);
        QTRY_VERIFY(hub->statusText().startsWith("MQTT: disconnected · MQTT: 127.0.0.1:"));

        Child broker;
        QVERIFY(startServer(broker, "mosquitto", {"-p", QString::number(port)}, port));
        Subscriber sub(port);
        bus.replayDetection({FakeReceiverBus::receiver(1, QStringLiteral("Gtr")), quoted});
        // The feed finds the broker on its own, with back-off.
        QTRY_COMPARE_WITH_TIMEOUT(hub->statusText(), "MQTT: connected", 15000);
        QTRY_COMPARE(sub.latest.value("zunoria/COM1/status"), "online");
        const QString state3 = QStringLiteral("zunoria/COM1/rx/03/state");
        QTRY_COMPARE(sub.field(state3, "name"), quoted.name);
        QVERIFY(sub.latest.value(state3).contains(R"(\"1\")"));
        QCOMPARE(sub.field(state3, "freq"), "500.375");
        QTRY_COMPARE(sub.field("zunoria/COM1/rx/01/state", "name"), "Gtr");

        // Ten level changes in quick succession: the last one arrives, at most
        // one publish per 500 ms carries the ones in between. The limit holds
        // against the time that passed, however slowly the machine ran.
        const int before = sub.counts.value(state3);
        QElapsedTimer changing;
        changing.start();
        Receiver moving = quoted;
        for (moving.levels.rfA = 60; moving.levels.rfA < 70; ++moving.levels.rfA) {
            emit bus.levelsRead(moving);
            QTest::qWait(20);
        }
        QTRY_COMPARE(sub.field(state3, "rfa"), "69");
        const qint64 publishes = sub.counts.value(state3) - before;
        QVERIFY2(publishes <= changing.elapsed() / MqttFeed::kMinPublishIntervalMs + 1,
                 qPrintable(QStringLiteral("%1 in %2 ms").arg(publishes).arg(changing.elapsed())));

        // A new line name moves the topics; the old line says goodbye.
        hub->setLineName(QStringLiteral("COM2"));
        QTRY_COMPARE(sub.latest.value("zunoria/COM1/status"), "offline");
        QTRY_COMPARE_WITH_TIMEOUT(sub.field("zunoria/COM2/rx/03/state", "rfa"), "69", 10000);
        hub.reset();
        QTRY_COMPARE(sub.latest.value("zunoria/COM2/status"), "offline");
    }

    void dashboardHttp_data()
    {
        QTest::addColumn<QByteArray>("request"); // "ws:target", "ws:target host origin", or whole
        QTest::addColumn<QByteArray>("status");  // empty: any answer or none
        const QByteArray token = "?token=" + kToken.toLatin1();
        const QByteArray pad = "X-Pad: " + QByteArray(17 * 1024, 'p') + "\r\n";
        QTest::newRow("no token") << get("/") << QByteArray("403");
        QTest::newRow("wrong token") << get("/?token=tok-43-0123456789") << QByteArray("403");
        QTest::newRow("token prefix") << get("/?token=tok") << QByteArray("403");
        QTest::newRow("page") << get("/" + token) << QByteArray("200");
        QTest::newRow("page, HEAD") << "HEAD /" + token + " HTTP/1.1\r\nHost: x\r\n\r\n" << QByteArray("200");
        QTest::newRow("other path") << get("/etc/passwd" + token) << QByteArray("404");
        QTest::newRow("websocket without token") << QByteArray("ws:/ws") << QByteArray("403");
        QTest::newRow("websocket, wrong token") << QByteArray("ws:/ws?token=x") << QByteArray("403");
        QTest::newRow("websocket") << "ws:/ws" + token << QByteArray("101");
        QTest::newRow("websocket from another page")
            << "ws:/ws" + token + " - http://evil.example" << QByteArray("403");
        QTest::newRow("websocket by another name")
            << "ws:/ws" + token + " evil.example:PORT -" << QByteArray("403");
        QTest::newRow("websocket without origin")
            << "GET /ws" + token +
                   " HTTP/1.1\r\nHost: 127.0.0.1:PORT\r\nUpgrade: websocket\r\n"
                   "Connection: Upgrade\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n"
                   "Sec-WebSocket-Version: 13\r\n\r\n"
            << QByteArray("403");
        QTest::newRow("headers beyond 16 KB") << "GET /" + token + " HTTP/1.1\r\n" + pad + "\r\n"
                                              << QByteArray("431");
        QTest::newRow("headers beyond 16 KB, no token") << "GET / HTTP/1.1\r\n" + pad + "\r\n"
                                                        << QByteArray("403");
        QTest::newRow("a body") << "POST /" + token + " HTTP/1.1\r\nContent-Length: 5\r\n\r\nhello"
                                << QByteArray("413");
        QTest::newRow("malformed") << QByteArray("\x01\x02 GARBAGE\r\n\r\n") << QByteArray();
    }
    void dashboardHttp()
    {
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, status);
        startDashboard();
        QCOMPARE(m_hub->statusText(),
                 QStringLiteral("Web: http://127.0.0.1:%1/?token=%2").arg(m_port).arg(kToken));
        const QByteArray port = QByteArray::number(m_port);
        request.replace("PORT", port);
        if (request.startsWith("ws:")) {
            const QList<QByteArray> words = request.mid(3).split(' ');
            request = upgradeRequest(words[0], m_port, words.value(1).replace("-", ""),
                                     words.value(2).replace("-", ""));
        }
        const QByteArray answer = exchange(m_port, request);
        QVERIFY2(answer.startsWith(status.isEmpty() ? QByteArray() : "HTTP/1.1 " + status),
                 answer.left(200).constData());
        // Refusals carry nothing but their status line and headers.
        const QByteArray body = answer.mid(answer.indexOf("\r\n\r\n") + 4);
        if (status == "200" && request.startsWith("GET")) {
            QVERIFY(body.contains("new WebSocket("));
            QVERIFY(body.contains("<style>*"));
        } else if (status != "101" && !status.isEmpty()) {
            QVERIFY2(body.isEmpty(), body.left(200).constData());
        }
        if (request.startsWith("HEAD")) {
            QVERIFY(answer.contains("Content-Length: "));
            QVERIFY(!answer.contains("Content-Length: 0"));
        }
        // Whatever came before, the server still serves.
        QVERIFY(exchange(m_port, get("/?token=" + kToken.toLatin1())).startsWith("HTTP/1.1 200"));
    }

    // A client must mask every frame it sends; one that does not is closed
    // with 1002 (protocol error), whatever the frame.
    void dashboardClosesAClientThatDoesNotMask_data()
    {
        QTest::addColumn<QByteArray>("frames");
        QTest::addColumn<QByteArray>("answer"); // what the server sends back first
        const auto frame = [](quint8 opcode, const QByteArray &payload, bool masked) {
            QByteArray bytes;
            bytes.append(char(0x80 | opcode));
            bytes.append(char((masked ? 0x80 : 0) | payload.size()));
            const QByteArray key("\x12\x34\x56\x78", 4);
            if (masked)
                bytes.append(key);
            for (int i = 0; i < payload.size(); ++i)
                bytes.append(masked ? char(payload[i] ^ key[i % 4]) : payload[i]);
            return bytes;
        };
        const QByteArray pong = "\x8a\x04ping";
        const QByteArray protocolError("\x88\x02\x03\xea", 4);
        QTest::newRow("masked ping") << frame(0x9, "ping", true) << pong;
        QTest::newRow("masked text, then ping")
            << frame(0x1, "hello", true) + frame(0x9, "ping", true) << pong;
        QTest::newRow("unmasked text") << frame(0x1, "hello", false) << protocolError;
        QTest::newRow("unmasked ping") << frame(0x9, "ping", false) << protocolError;
        QTest::newRow("unmasked after masked")
            << frame(0x1, "hello", true) + frame(0x1, "bye", false) << protocolError;
    }
    void dashboardClosesAClientThatDoesNotMask()
    {
        QFETCH(QByteArray, frames);
        QFETCH(QByteArray, answer);
        startDashboard();
        QTcpSocket raw;
        raw.connectToHost(QHostAddress::LocalHost, m_port);
        QVERIFY(raw.waitForConnected(3000));
        raw.write(upgradeRequest("/ws?token=" + kToken.toLatin1(), m_port));
        QByteArray head;
        QTRY_VERIFY((head += raw.readAll()).contains("\r\n\r\n"));
        QVERIFY(head.startsWith("HTTP/1.1 101"));
        // The first message, the receivers as they are, is framed without a mask.
        QByteArray received = head.mid(head.indexOf("\r\n\r\n") + 4);
        QTRY_VERIFY((received += raw.readAll()).size() >= 4);
        const bool extended = quint8(received[1]) == 126; // two receivers take more than 125 bytes
        const qsizetype firstLength =
            extended ? 4 + (quint8(received[2]) << 8 | quint8(received[3])) : 2 + quint8(received[1]);
        QTRY_VERIFY((received += raw.readAll()).size() >= firstLength);
        received.remove(0, firstLength);
        raw.write(frames);
        QTRY_VERIFY((received += raw.readAll()).size() >= answer.size());
        QCOMPARE(received.left(answer.size()), answer);
        if (answer.startsWith("\x88")) {
            QTRY_COMPARE(raw.state(), QAbstractSocket::UnconnectedState);
            QTRY_COMPARE(m_hub->dashboard()->clientCount(), 0);
        } else {
            QCOMPARE(raw.state(), QAbstractSocket::ConnectedState);
            QCOMPARE(m_hub->dashboard()->clientCount(), 1);
        }
    }

    // Connections are limited per client address (64) and in all (256). At a
    // cap the oldest connection that has not sent a whole request makes room
    // for the newcomer; only when every one held is a real client does the
    // newcomer get 503.
    void dashboardMakesRoomForANewcomer_data()
    {
        QTest::addColumn<int>("addresses"); // 127.0.0.2 onwards, 64 connections each
        QTest::addColumn<bool>("served");   // each held one had a request answered
        QTest::addColumn<QByteArray>("newcomerFrom");
        QTest::addColumn<QByteArray>("newcomerGets");
        QTest::newRow("an address full of idle ones")
            << 1 << false << QByteArray("127.0.0.2") << QByteArray("HTTP/1.1 200");
        QTest::newRow("every slot idle")
            << 4 << false << QByteArray("127.0.0.1") << QByteArray("HTTP/1.1 200");
        QTest::newRow("an address full of real clients")
            << 1 << true << QByteArray("127.0.0.2") << QByteArray("HTTP/1.1 503");
        QTest::newRow("every slot a real client")
            << 4 << true << QByteArray("127.0.0.1") << QByteArray("HTTP/1.1 503");
    }
    void dashboardMakesRoomForANewcomer()
    {
        QFETCH(int, addresses);
        QFETCH(bool, served);
        QFETCH(QByteArray, newcomerFrom);
        startDashboard();
        std::vector<int> held; // plain descriptors: each bound to its own client address
        const auto connectFrom = [&](const QByteArray &address) {
            const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
            sockaddr_in local{};
            local.sin_family = AF_INET;
            ::inet_pton(AF_INET, address.constData(), &local.sin_addr);
            sockaddr_in server = local;
            ::inet_pton(AF_INET, "127.0.0.1", &server.sin_addr);
            server.sin_port = htons(m_port);
            const bool ok = ::bind(fd, reinterpret_cast<sockaddr *>(&local), sizeof local) == 0 &&
                            ::connect(fd, reinterpret_cast<sockaddr *>(&server), sizeof server) == 0;
            held.push_back(fd);
            QCoreApplication::processEvents(); // the server accepts: the listen queue stays short
            return ok;
        };
        // What the server sent first, "closed" when it closed the connection
        // unasked, empty when it sent nothing within three seconds.
        const auto answerOf = [](int fd) {
            char buffer[64] = {};
            pollfd wait{fd, POLLIN, 0};
            for (int i = 0; i < 300 && ::poll(&wait, 1, 0) == 0; ++i)
                QTest::qWait(10);
            const ssize_t n = ::recv(fd, buffer, sizeof buffer, MSG_DONTWAIT);
            if (n == 0 || (n < 0 && errno == ECONNRESET))
                return QByteArray("closed");
            return QByteArray(buffer, std::max<ssize_t>(n, 0));
        };
        const QByteArray request = get("/?token=" + kToken.toLatin1());
        for (int a = 0; a < addresses; ++a) {
            for (int i = 0; i < 64; ++i) {
                QVERIFY(connectFrom("127.0.0." + QByteArray::number(2 + a)));
                if (served) {
                    QCOMPARE(::write(held.back(), request.constData(), size_t(request.size())),
                             ssize_t(request.size()));
                    QVERIFY(answerOf(held.back()).startsWith("HTTP/1.1 200"));
                }
            }
        }
        QTRY_COMPARE(m_hub->dashboard()->connectionCount(), 64 * addresses);
        QVERIFY(connectFrom(newcomerFrom));
        QCOMPARE(::write(held.back(), request.constData(), size_t(request.size())), ssize_t(request.size()));
        QTEST(answerOf(held.back()).left(12), "newcomerGets");
        if (!served) { // the oldest went, the next oldest is still there
            QCOMPARE(answerOf(held.front()), QByteArray("closed"));
            pollfd next{held.at(1), POLLIN, 0};
            QCOMPARE(::poll(&next, 1, 0), 0);
        }
        QCOMPARE(m_hub->dashboard()->connectionCount(), 64 * addresses);
        for (int fd : held)
            ::close(fd);
        QTRY_COMPARE(m_hub->dashboard()->connectionCount(), 0);
    }

    // One that sends no whole request is closed; a short token is refused at start.
    void dashboardLimitsWhatAClientHolds()
    {
        startDashboard();
        m_hub->dashboard()->setRequestTimeout(200);
        QTcpSocket idle;
        idle.connectToHost(QHostAddress::LocalHost, m_port);
        QVERIFY(idle.waitForConnected(3000));
        idle.write("GET /?token=" + kToken.toLatin1() + " HTTP/1.1\r\n"); // and then nothing
        QTRY_VERIFY(idle.state() == QAbstractSocket::UnconnectedState);
        QCOMPARE(m_hub->dashboard()->connectionCount(), 0);

        FeedOptions options;
        options.webPort = freeLoopbackPort();
        options.webToken = QStringLiteral("0123456789abcde"); // 15
        const std::unique_ptr<FeedHub> hub(
            attachFeeds(options, m_bus.get(), m_bus.get(), QStringLiteral("COM1")));
        QVERIFY2(hub->statusText().contains("at least 16 characters"), qPrintable(hub->statusText()));
    }

    // With no descriptor left the server cannot accept; once some are free
    // again it serves as before.
    void dashboardOutlivesRunningOutOfDescriptors()
    {
        startDashboard();
        rlimit old{};
        QCOMPARE(::getrlimit(RLIMIT_NOFILE, &old), 0);
        rlimit tight = old;
        tight.rlim_cur =
            QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System).size() + 8;
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &tight), 0);
        std::vector<std::unique_ptr<QTcpSocket>> clients;
        for (int i = 0; i < 20; ++i) {
            clients.push_back(std::make_unique<QTcpSocket>());
            clients.back()->connectToHost(QHostAddress::LocalHost, m_port);
        }
        QTest::qWait(300);
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &old), 0);
        clients.clear();
        QTRY_VERIFY_WITH_TIMEOUT(
            exchange(m_port, get("/?token=" + kToken.toLatin1())).startsWith("HTTP/1.1 200"), 10000);
    }

    void dashboardDropsAClientThatNeverReads()
    {
        startDashboard();
        QTcpSocket stuck;
        stuck.setReadBufferSize(1);
        stuck.connectToHost(QHostAddress::LocalHost, m_port);
        QVERIFY(stuck.waitForConnected(3000));
        stuck.write(upgradeRequest("/ws?token=" + kToken.toLatin1(), m_port));
        QWebSocket reader(QStringLiteral("http://127.0.0.1:%1").arg(m_port));
        int readerGot = 0;
        connect(&reader, &QWebSocket::textMessageReceived, this, [&] { ++readerGot; });
        reader.open(QUrl(QStringLiteral("ws://127.0.0.1:%1/ws?token=%2").arg(m_port).arg(kToken)));
        QTRY_COMPARE(m_hub->dashboard()->clientCount(), 2);

        // Long names make every flush large; the stuck client's queue fills.
        QList<Receiver> all;
        for (int a = 1; a <= 64; ++a)
            all << FakeReceiverBus::receiver(a, QString(200, QChar(0x263A)));
        QElapsedTimer t;
        t.start();
        for (int step = 0; m_hub->dashboard()->droppedClients() == 0 && t.elapsed() < 60000; ++step) {
            for (Receiver s : all) {
                s.levels.rfA = step % 99;
                emit m_bus->levelsRead(s);
            }
            m_hub->dashboard()->flush();
            QTest::qWait(2);
        }
        QCOMPARE(m_hub->dashboard()->droppedClients(), 1);
        QCOMPARE(m_hub->dashboard()->clientCount(), 1);
        QCOMPARE(reader.state(), QAbstractSocket::ConnectedState);
        QVERIFY(readerGot > 1);
    }

    void dashboardInABrowserShowsLiveState()
    {
        startDashboard();
        // What the page shows: address:name:RF A level:online per panel.
        const QString panels = QStringLiteral(
            "Array.from(document.querySelectorAll('.panel')).map(p => p.dataset.address + ':' + "
            "p.querySelector('.name').textContent + ':' + p.querySelector('.rfa').dataset.level + ':' + "
            "p.querySelector('.state').textContent).join('|')");
        Browser browser;
        QVERIFY(browser.open(QStringLiteral("http://127.0.0.1:%1/?token=%2").arg(m_port).arg(kToken)));
        const QString vox = QStringLiteral("3:Vox \"1\" ü <b>:");
        QTRY_COMPARE_WITH_TIMEOUT(browser.evaluate(panels), "1:Gtr:41:|" + vox + "43:", 30000);

        Receiver louder = m_vox, gone = FakeReceiverBus::receiver(1, QStringLiteral("Gtr"));
        louder.levels.rfA = 77;
        gone.online = false;
        emit m_bus->levelsRead(louder);
        emit m_bus->wentOffline(gone);
        emit m_bus->passEnded(1);
        QTRY_COMPARE_WITH_TIMEOUT(browser.evaluate(panels), "1:Gtr:41:offline|" + vox + "77:", 30000);
    }
};

QTEST_GUILESS_MAIN(TestFeeds)
#include "tst_feeds.moc"
