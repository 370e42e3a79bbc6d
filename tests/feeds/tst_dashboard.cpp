#include "feeds/feedhub.h"
#include "support/fakereceiverbus.h"
#include "support/netsupport.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QWebSocket>

using namespace zun;

namespace {

const QString kToken = QStringLiteral("tok-42");

// Sends raw bytes and returns everything the server answers until it closes
// or goes quiet for a second.
QByteArray exchange(quint16 port, const QByteArray &request)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    socket.write(request);
    QByteArray answer;
    QElapsedTimer quiet;
    quiet.start();
    while (quiet.elapsed() < 1000 && socket.state() != QAbstractSocket::UnconnectedState) {
        QTest::qWait(10);
        if (socket.bytesAvailable() > 0) {
            answer += socket.readAll();
            quiet.restart();
        }
    }
    return answer + socket.readAll();
}

QByteArray upgradeRequest(const QByteArray &target)
{
    return "GET " + target +
           " HTTP/1.1\r\nHost: 127.0.0.1\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
           "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n";
}

// Headless Chromium driven over its DevTools WebSocket.
class Browser
{
public:
    ~Browser()
    {
        m_process.kill();
        m_process.waitForFinished(5000);
    }

    bool open(const QString &url)
    {
        const QString devtoolsPort = QString::number(freeLoopbackPort());
        m_process.start(QStringLiteral("/usr/bin/chromium"),
                        {"--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                         "--disable-background-networking", "--disable-component-update", "--disable-sync",
                         "--user-data-dir=" + m_profile.path(), "--remote-debugging-port=" + devtoolsPort,
                         url});
        QNetworkAccessManager net;
        QString target;
        QObject::connect(&net, &QNetworkAccessManager::finished, [&](QNetworkReply *reply) {
            for (const QJsonValue &v : QJsonDocument::fromJson(reply->readAll()).array())
                if (v["type"] == QStringLiteral("page"))
                    target = v["webSocketDebuggerUrl"].toString();
            reply->deleteLater();
        });
        for (int i = 0; i < 100 && target.isEmpty(); ++i) {
            QTest::qWait(200);
            net.get(QNetworkRequest(QUrl("http://127.0.0.1:" + devtoolsPort + "/json/list")));
        }
        QObject::connect(&m_devtools, &QWebSocket::textMessageReceived, [this](const QString &text) {
            const QJsonObject reply = QJsonDocument::fromJson(text.toUtf8()).object();
            if (reply["id"].toInt() == m_id)
                m_result = reply["result"]["result"]["value"].toString();
        });
        m_devtools.open(QUrl(target));
        return QTest::qWaitFor([this] { return m_devtools.state() == QAbstractSocket::ConnectedState; },
                               5000);
    }

    // The value of a JavaScript expression, as text.
    QString evaluate(const QString &expression)
    {
        m_result.reset();
        const QJsonObject call{{"id", ++m_id},
                               {"method", "Runtime.evaluate"},
                               {"params", QJsonObject{{"expression", expression}, {"returnByValue", true}}}};
        m_devtools.sendTextMessage(QString::fromUtf8(QJsonDocument(call).toJson(QJsonDocument::Compact)));
        return QTest::qWaitFor([this] { return m_result.has_value(); }, 5000) ? *m_result : QString();
    }

private:
    QTemporaryDir m_profile;
    QProcess m_process;
    QWebSocket m_devtools;
    int m_id = 0;
    std::optional<QString> m_result;
};

// What the page shows: address:name:RF A level:online per panel.
const QString kPanels = QStringLiteral(
    "Array.from(document.querySelectorAll('.panel')).map(p => p.dataset.address + ':' + "
    "p.querySelector('.name').textContent + ':' + p.querySelector('.rfa').dataset.level + ':' + "
    "p.querySelector('.state').textContent).join('|')");

} // namespace

class TestDashboard : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void http_data();
    void http();
    void clientThatNeverReadsIsDropped();
    void browserShowsLiveState();

private:
    FakeReceiverBus *m_bus = nullptr;
    FeedHub *m_hub = nullptr;
    quint16 m_port = 0;
    ReceiverStatus m_vox = FakeReceiverBus::receiver(3, QStringLiteral("Vox \"1\" ü <b>"));
};

void TestDashboard::init()
{
    m_bus = new FakeReceiverBus;
    FeedOptions options;
    options.webPort = m_port = freeLoopbackPort();
    options.webToken = kToken;
    m_hub = attachFeeds(options, m_bus);
    QVERIFY(m_hub->dashboard());
    QCOMPARE(m_hub->statusText(), QStringLiteral("Web: http://127.0.0.1:%1/?token=tok-42").arg(m_port));
    m_bus->replayDetection({FakeReceiverBus::receiver(1, QStringLiteral("Gtr")), m_vox});
}

void TestDashboard::cleanup()
{
    delete m_bus;
}

void TestDashboard::http_data()
{
    QTest::addColumn<QByteArray>("target"); // of a GET, or "ws:" and the target of an upgrade
    QTest::addColumn<QByteArray>("status"); // empty: any answer or none

    QTest::newRow("no token") << QByteArray("/") << QByteArray("403");
    QTest::newRow("wrong token") << QByteArray("/?token=tok-43") << QByteArray("403");
    QTest::newRow("token prefix") << QByteArray("/?token=tok") << QByteArray("403");
    QTest::newRow("page") << QByteArray("/?token=tok-42") << QByteArray("200");
    QTest::newRow("other path") << QByteArray("/etc/passwd?token=tok-42") << QByteArray("404");
    QTest::newRow("websocket without token") << QByteArray("ws:/ws") << QByteArray("403");
    QTest::newRow("websocket, wrong token") << QByteArray("ws:/ws?token=x") << QByteArray("403");
    QTest::newRow("malformed") << QByteArray("\x01\x02 GARBAGE\r\n\r\n") << QByteArray();
}

void TestDashboard::http()
{
    QFETCH(QByteArray, target);
    QFETCH(QByteArray, status);
    const QByteArray answer =
        exchange(m_port, target.startsWith("ws:") ? upgradeRequest(target.mid(3))
                                                  : "GET " + target + " HTTP/1.1\r\nHost: x\r\n\r\n");
    QVERIFY2(answer.startsWith(status.isEmpty() ? QByteArray() : "HTTP/1.1 " + status), answer.constData());
    // Refusals carry nothing but their status line and headers.
    const QByteArray body = answer.mid(answer.indexOf("\r\n\r\n") + 4);
    if (status == "200")
        QVERIFY(body.contains("new WebSocket(") && body.contains("<style>*"));
    else if (!status.isEmpty())
        QVERIFY2(body.isEmpty(), body.constData());
    // Whatever came before, the server still serves.
    QVERIFY(exchange(m_port, "GET /?token=tok-42 HTTP/1.1\r\nHost: x\r\n\r\n").startsWith("HTTP/1.1 200"));
}

void TestDashboard::clientThatNeverReadsIsDropped()
{
    QTcpSocket stuck;
    stuck.setReadBufferSize(1);
    stuck.connectToHost(QHostAddress::LocalHost, m_port);
    QVERIFY(stuck.waitForConnected(3000));
    stuck.write(upgradeRequest("/ws?token=" + kToken.toLatin1()));
    QWebSocket reader;
    int readerGot = 0;
    connect(&reader, &QWebSocket::textMessageReceived, this, [&] { ++readerGot; });
    reader.open(QUrl(QStringLiteral("ws://127.0.0.1:%1/ws?token=%2").arg(m_port).arg(kToken)));
    QTRY_COMPARE(m_hub->dashboard()->clientCount(), 2);

    // Long names make every flush large; the stuck client's queue fills.
    QList<ReceiverStatus> all;
    for (int a = 1; a <= 64; ++a)
        all << FakeReceiverBus::receiver(a, QString(200, QChar(0x263A)));
    QElapsedTimer t;
    t.start();
    for (int step = 0; m_hub->dashboard()->droppedClients() == 0 && t.elapsed() < 60000; ++step) {
        for (ReceiverStatus s : all) {
            s.rfA = step % 99;
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

void TestDashboard::browserShowsLiveState()
{
    Browser browser;
    QVERIFY(browser.open(QStringLiteral("http://127.0.0.1:%1/?token=%2").arg(m_port).arg(kToken)));
    const QString vox = QStringLiteral("3:Vox \"1\" ü <b>:");
    QTRY_COMPARE_WITH_TIMEOUT(browser.evaluate(kPanels), "1:Gtr:41:|" + vox + "43:", 30000);

    ReceiverStatus louder = m_vox, gone = FakeReceiverBus::receiver(1, QStringLiteral("Gtr"));
    louder.rfA = 77;
    gone.online = false;
    emit m_bus->levelsRead(louder);
    emit m_bus->wentOffline(gone);
    emit m_bus->passEnded(1);
    QTRY_COMPARE_WITH_TIMEOUT(browser.evaluate(kPanels), "1:Gtr:41:offline|" + vox + "77:", 1000);
}

QTEST_GUILESS_MAIN(TestDashboard)
#include "tst_dashboard.moc"
