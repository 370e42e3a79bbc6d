#include "feeds/dashboardserver.h"

#include "feeds/statusjson.h"

#include <QFile>
#include <QHostInfo>
#include <QHttpServerRequest>
#include <QHttpServerResponder>
#include <QJsonArray>
#include <QJsonDocument>
#include <QPointer>
#include <QRandomGenerator>
#include <QSysInfo>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrlQuery>

#include <unistd.h>

#include <algorithm>

namespace zun {
namespace {

QByteArray resource(const QString &name)
{
    QFile file(QStringLiteral(":/dashboard/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The value of header name in a request head, empty when it is absent.
QByteArray headerValue(const QByteArray &head, const QByteArray &name)
{
    const QList<QByteArray> lines = head.split('\n');
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QByteArray &line = lines.at(i);
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 && line.left(colon).trimmed().compare(name, Qt::CaseInsensitive) == 0)
            return line.mid(colon + 1).trimmed();
    }
    return {};
}

const QString kMetricsPath = QStringLiteral("/metrics");
const QString kStatePath = QStringLiteral("/api/state");

} // namespace

// Takes each connection before the HTTP server sees it, so that limits hold
// from its first byte.
class DashboardGate : public QTcpServer
{
public:
    explicit DashboardGate(DashboardServer &owner) : QTcpServer(&owner), m_owner(owner)
    {
        // Out of descriptors, accepting pauses; try again once some are free
        // instead of leaving the dashboard deaf.
        connect(this, &QTcpServer::acceptError, this, [this] {
            pauseAccepting();
            QTimer::singleShot(1000, this, [this] { resumeAccepting(); });
        });
    }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        auto *socket = new QTcpSocket(this);
        if (!socket->setSocketDescriptor(descriptor)) {
            ::close(static_cast<int>(descriptor));
            delete socket;
            return;
        }
        if (m_owner.admit(socket))
            addPendingConnection(socket);
    }

private:
    DashboardServer &m_owner;
};

struct DashboardServer::Head
{
    QObject *watcher = nullptr; // a child of the socket
    QByteArray bytes;
    bool lineChecked = false;
    bool bearerWanted = false; // a /metrics request: the token comes as a header
    bool served = false;       // a whole request came: a real client, not a squatter
    QTimer timer;
    // After the upgrade: WebSocket frames, of which only the heads are read.
    bool frames = false;
    quint64 payloadLeft = 0;
};

DashboardServer::DashboardServer(const QString &token, qint64 maxQueuedBytes, QObject *parent)
    : QAbstractHttpServer(parent), m_token(token), m_maxQueuedBytes(maxQueuedBytes)
{
    m_flushTimer.setSingleShot(true);
    connect(&m_flushTimer, &QTimer::timeout, this, &DashboardServer::flush);
    connect(this, &QAbstractHttpServer::newWebSocketConnection, this, &DashboardServer::acceptWebSocket);
}

DashboardServer::~DashboardServer()
{
    // The sockets go with the QObject base, after the counts they update.
    for (QObject *child : findChildren<QObject *>())
        disconnect(child, nullptr, this, nullptr);
    qDeleteAll(m_clients);
}

QString DashboardServer::randomToken()
{
    QByteArray bytes(16, Qt::Uninitialized);
    QRandomGenerator::system()->fillRange(reinterpret_cast<quint32 *>(bytes.data()), bytes.size() / 4);
    return QString::fromLatin1(bytes.toHex());
}

bool DashboardServer::start(quint16 port, bool allowNetwork)
{
    // A short token can be guessed over the network in a night.
    if (m_token.size() < kMinTokenLength) {
        m_error = QStringLiteral("Web: the token must have at least %1 characters").arg(kMinTokenLength);
        return false;
    }
    m_listenAddress = allowNetwork ? QHostAddress(QHostAddress::Any) : QHostAddress(QHostAddress::LocalHost);
    auto *gate = new DashboardGate(*this);
    if (!gate->listen(m_listenAddress, port)) {
        m_error = QStringLiteral("Web: cannot listen on port %1: %2").arg(port).arg(gate->errorString());
        delete gate;
        return false;
    }
    bind(gate);
    m_port = gate->serverPort();
    return true;
}

bool DashboardServer::admit(QTcpSocket *socket)
{
    const QHostAddress peer = socket->peerAddress();
    const bool addressFull = m_perAddress.value(peer) >= kMaxConnectionsPerAddress;
    if ((addressFull || m_connections >= kMaxConnections) && !makeRoom(addressFull ? &peer : nullptr)) {
        // Never handed on: it is answered and gone.
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        socket->write("HTTP/1.1 503 Service Unavailable\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        socket->disconnectFromHost();
        return false;
    }
    ++m_connections;
    ++m_perAddress[peer];
    m_held.insert(socket, Held{peer, m_admitted++});
    // Counted down when the socket goes, by a child of its own: the HTTP
    // server cuts the socket's own connections when it hands it to WebSocket.
    auto *watcher = new QObject(socket);
    connect(watcher, &QObject::destroyed, this, [this, socket] {
        m_heads.remove(socket);
        release(socket);
    });
    auto head = std::make_shared<Head>();
    head->watcher = watcher;
    head->timer.setSingleShot(true);
    QPointer<QTcpSocket> guarded(socket);
    connect(&head->timer, &QTimer::timeout, this, [guarded] {
        if (guarded)
            guarded->abort();
    });
    head->timer.start(m_requestTimeoutMs);
    m_heads.insert(socket, head);
    // Connected before the HTTP server's own reader, so it sees each byte
    // first; through the watcher, so that it can be cut without the other.
    connect(socket, &QTcpSocket::readyRead, watcher, [this, socket] { inspect(socket); });
    return true;
}

void DashboardServer::release(QTcpSocket *socket)
{
    const auto held = m_held.constFind(socket);
    if (held == m_held.cend())
        return;
    --m_connections;
    if (--m_perAddress[held->peer] <= 0)
        m_perAddress.remove(held->peer);
    m_held.erase(held);
}

bool DashboardServer::makeRoom(const QHostAddress *peer)
{
    // Whoever has held a slot longest without asking for anything is the
    // likeliest squatter; a newcomer may be the user's own phone.
    QTcpSocket *oldest = nullptr;
    quint64 oldestOrder = 0;
    for (auto it = m_held.cbegin(); it != m_held.cend(); ++it) {
        if (peer && it->peer != *peer)
            continue;
        const auto head = m_heads.constFind(it.key());
        const bool real = head != m_heads.cend() && ((*head)->served || (*head)->frames);
        if (!real && (!oldest || it->order < oldestOrder)) {
            oldest = it.key();
            oldestOrder = it->order;
        }
    }
    if (!oldest)
        return false;
    // Its slot is free from now on, whenever the socket itself goes.
    release(oldest);
    forget(oldest);
    oldest->abort();
    return true;
}

void DashboardServer::forget(QTcpSocket *socket)
{
    if (const auto head = m_heads.take(socket))
        disconnect(socket, &QTcpSocket::readyRead, head->watcher, nullptr);
}

void DashboardServer::refuse(QTcpSocket *socket, const QByteArray &status)
{
    forget(socket);
    socket->read(socket->bytesAvailable()); // nothing more reaches the HTTP server
    socket->write("HTTP/1.1 " + status + "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    socket->disconnectFromHost();
}

void DashboardServer::inspect(QTcpSocket *socket)
{
    const auto found = m_heads.constFind(socket);
    if (found == m_heads.cend())
        return;
    const std::shared_ptr<Head> head = *found;
    head->bytes += socket->peek(socket->bytesAvailable());
    if (head->frames) {
        inspectFrames(socket, *head);
        return;
    }
    for (;;) {
        const qsizetype lineEnd = head->bytes.indexOf('\n');
        if (!head->lineChecked && lineEnd >= 0) {
            // The token first: a stranger gets no further than the request line.
            // A scraper sends it as a header, looked at once the head is whole.
            const QList<QByteArray> parts = head->bytes.left(lineEnd).trimmed().split(' ');
            const QUrl target(QString::fromLatin1(parts.value(1)));
            head->bearerWanted = parts.size() == 3 && target.path() == kMetricsPath;
            if (parts.size() != 3 || (!head->bearerWanted && !tokenMatches(target))) {
                refuse(socket, "403 Forbidden");
                return;
            }
            head->lineChecked = true;
        }
        qsizetype end = head->bytes.indexOf("\r\n\r\n");
        const qsizetype bareEnd = head->bytes.indexOf("\n\n");
        if (end < 0 || (bareEnd >= 0 && bareEnd < end))
            end = bareEnd < 0 ? -1 : bareEnd + 2;
        else
            end += 4;
        if (end < 0 || end > kMaxHeadBytes) {
            if (head->bytes.size() > kMaxHeadBytes || end > kMaxHeadBytes)
                refuse(socket, "431 Request Header Fields Too Large");
            return;
        }
        const QByteArray whole = head->bytes.left(end);
        if (head->bearerWanted && !bearerMatches(headerValue(whole, "authorization"))) {
            refuse(socket, "401 Unauthorized\r\nWWW-Authenticate: Bearer");
            return;
        }
        const QByteArray length = headerValue(whole, "content-length");
        if ((!length.isEmpty() && length != "0") || !headerValue(whole, "transfer-encoding").isEmpty()) {
            refuse(socket, "413 Content Too Large"); // the dashboard takes no uploads
            return;
        }
        if (headerValue(whole, "upgrade").compare("websocket", Qt::CaseInsensitive) == 0) {
            if (!upgradeAllowed(whole, socket)) {
                refuse(socket, "403 Forbidden");
                return;
            }
            // From here on the bytes are WebSocket frames. The HTTP server
            // cuts the socket's connections when it hands it over, so the
            // watch is laid again once that is done.
            head->frames = true;
            head->timer.stop();
            head->bytes.remove(0, end);
            QPointer<QTcpSocket> guarded(socket);
            QMetaObject::invokeMethod(
                head->watcher,
                [this, guarded, watcher = head->watcher] {
                    if (!guarded)
                        return;
                    disconnect(guarded, &QTcpSocket::readyRead, watcher, nullptr);
                    connect(guarded, &QTcpSocket::readyRead, watcher,
                            [this, socket = guarded.data()] { inspect(socket); });
                },
                Qt::QueuedConnection);
            inspectFrames(socket, *head);
            return;
        }
        // A whole request: the next one on this connection has its own ten seconds.
        head->served = true;
        head->bytes.remove(0, end);
        head->lineChecked = false;
        head->timer.start(m_requestTimeoutMs);
        if (head->bytes.isEmpty())
            return;
    }
}

void DashboardServer::inspectFrames(QTcpSocket *socket, Head &head)
{
    // A client masks every frame it sends; an unmasked one is a protocol
    // error (1002) and ends the connection before the WebSocket reads it.
    qsizetype at = 0;
    for (;;) {
        const quint64 skip =
            std::min<quint64>(head.payloadLeft, static_cast<quint64>(head.bytes.size() - at));
        at += static_cast<qsizetype>(skip);
        head.payloadLeft -= skip;
        if (head.payloadLeft > 0 || head.bytes.size() - at < 2)
            break;
        const auto byte = [&](qsizetype i) { return static_cast<quint8>(head.bytes.at(at + i)); };
        if (!(byte(1) & 0x80)) {
            forget(socket);
            socket->read(socket->bytesAvailable());
            socket->write(QByteArray("\x88\x02\x03\xea", 4));
            socket->disconnectFromHost();
            return;
        }
        const quint8 shortLength = byte(1) & 0x7f;
        const qsizetype extra = shortLength == 126 ? 2 : shortLength == 127 ? 8 : 0;
        if (head.bytes.size() - at < 2 + extra + 4)
            break;
        quint64 length = shortLength;
        if (extra > 0) {
            length = 0;
            for (qsizetype i = 0; i < extra; ++i)
                length = length << 8 | byte(2 + i);
        }
        at += 2 + extra + 4;
        head.payloadLeft = length;
    }
    head.bytes.remove(0, at);
}

bool DashboardServer::upgradeAllowed(const QByteArray &head, QTcpSocket *socket) const
{
    // A page elsewhere must not reach the feed through the user's browser, nor
    // a name that only resolves here by a trick of DNS.
    const QString host = QString::fromLatin1(headerValue(head, "host")).toLower();
    const QString origin = QString::fromLatin1(headerValue(head, "origin")).toLower();
    QStringList names{QStringLiteral("127.0.0.1"), QStringLiteral("localhost"), QStringLiteral("[::1]")};
    if (m_listenAddress != QHostAddress(QHostAddress::LocalHost)) {
        names << QHostInfo::localHostName().toLower();
        const QHostAddress local = socket->localAddress();
        bool isV4 = false;
        const QHostAddress v4(local.toIPv4Address(&isV4));
        names << (isV4 ? v4.toString() : QLatin1Char('[') + local.toString() + QLatin1Char(']'));
    }
    for (const QString &name : names) {
        const QString address = name + QLatin1Char(':') + QString::number(m_port);
        if (host == address && origin == QStringLiteral("http://") + address)
            return true;
    }
    return false;
}

QString DashboardServer::url() const
{
    if (m_port == 0)
        return {};
    const bool everywhere = m_listenAddress == QHostAddress(QHostAddress::Any);
    return QStringLiteral("http://%1:%2/?token=%3")
        .arg(everywhere ? QHostInfo::localHostName() : QStringLiteral("127.0.0.1"))
        .arg(m_port)
        .arg(m_token);
}

bool DashboardServer::tokenMatches(const QUrl &url) const
{
    return sameToken(QUrlQuery(url).queryItemValue(QStringLiteral("token")).toUtf8());
}

bool DashboardServer::bearerMatches(const QByteArray &authorization) const
{
    const QByteArray scheme("bearer ");
    return authorization.size() > scheme.size() &&
           authorization.left(scheme.size()).compare(scheme, Qt::CaseInsensitive) == 0 &&
           sameToken(authorization.mid(scheme.size()).trimmed());
}

bool DashboardServer::sameToken(const QByteArray &given) const
{
    const QByteArray wanted = m_token.toUtf8();
    // Compare every byte so the time taken does not tell how much matched.
    char difference = static_cast<char>(given.size() != wanted.size());
    for (qsizetype i = 0; i < wanted.size(); ++i)
        difference |= static_cast<char>(wanted[i] ^ (i < given.size() ? given[i] : 0));
    return !wanted.isEmpty() && difference == 0;
}

bool DashboardServer::handleRequest(const QHttpServerRequest &request, QTcpSocket *socket)
{
    const QString path = request.url().path();
    // A WebSocket upgrade goes on to the WebSocket server when this returns
    // true without answering; false sends it to missingHandler instead.
    if (request.value("upgrade").compare("websocket", Qt::CaseInsensitive) == 0)
        return path == QLatin1String("/ws") && tokenMatches(request.url());
    const bool head = request.method() == QHttpServerRequest::Method::Head;
    const bool get = request.method() == QHttpServerRequest::Method::Get;
    if (get && path == kMetricsPath) {
        if (!bearerMatches(request.value("authorization"))) {
            makeResponder(request, socket).write(QHttpServerResponder::StatusCode::Unauthorized);
            return true;
        }
        makeResponder(request, socket)
            .write(metricsText(m_snapshot ? m_snapshot() : ownLine()),
                   "text/plain; version=0.0.4; charset=utf-8");
        return true;
    }
    if (get && path == kStatePath && tokenMatches(request.url())) {
        makeResponder(request, socket)
            .write(stateJson(m_snapshot ? m_snapshot() : ownLine()), "application/json");
        return true;
    }
    if (!tokenMatches(request.url()) || (!get && !head) || (path != QLatin1String("/") && !path.isEmpty()))
        return false;
    if (!head) {
        makeResponder(request, socket).write(page(), "text/html; charset=utf-8");
        return true;
    }
    QHttpServerResponder responder = makeResponder(request, socket);
    responder.writeStatusLine();
    responder.writeHeaders({{"Content-Type", "text/html; charset=utf-8"},
                            {"Content-Length", QByteArray::number(page().size())}});
    responder.writeBody("", 0); // ends the headers; a HEAD answer has no body
    return true;
}

void DashboardServer::missingHandler(const QHttpServerRequest &request, QTcpSocket *socket)
{
    makeResponder(request, socket)
        .write(tokenMatches(request.url()) ? QHttpServerResponder::StatusCode::NotFound
                                           : QHttpServerResponder::StatusCode::Forbidden);
}

QByteArray DashboardServer::page() const
{
    QByteArray html = resource(m_page.html);
    html.replace("/*STYLE*/", resource(m_page.css));
    html.replace("/*SCRIPT*/", resource(m_page.js));
    return html;
}

QList<LineSnapshot> DashboardServer::ownLine() const
{
    LineSnapshot line;
    line.line = m_bus;
    line.host = QSysInfo::machineHostName();
    QList<int> addresses = m_receivers.keys();
    std::sort(addresses.begin(), addresses.end());
    for (int address : addresses)
        line.receivers.append(m_receivers.value(address));
    line.receiversFound = static_cast<int>(line.receivers.size());
    line.health = m_health;
    return {line};
}

void DashboardServer::acceptWebSocket()
{
    while (hasPendingWebSocketConnections()) {
        QWebSocket *client = nextPendingWebSocketConnection().release();
        if (!tokenMatches(client->requestUrl())) {
            client->abort();
            client->deleteLater();
            continue;
        }
        client->setParent(this);
        m_clients.append(client);
        connect(client, &QWebSocket::disconnected, this, [this, client] {
            m_clients.removeOne(client);
            client->deleteLater();
        });
        // Anything the page sends is ignored: the dashboard is read-only.
        if (m_greeting) {
            send(client, m_greeting());
            continue;
        }
        QList<int> all = m_receivers.keys();
        std::sort(all.begin(), all.end());
        send(client, message(all));
    }
}

void DashboardServer::onPortChanged(const QString &portName)
{
    m_bus = portName;
    for (auto it = m_receivers.cbegin(); it != m_receivers.cend(); ++it)
        m_dirty.insert(it.key());
    if (!m_flushTimer.isActive())
        m_flushTimer.start(kFlushIntervalMs);
}

void DashboardServer::setPaused(bool paused)
{
    m_paused = paused;
    if (!m_flushTimer.isActive())
        m_flushTimer.start(kFlushIntervalMs);
}

void DashboardServer::store(const Receiver &status)
{
    m_receivers.insert(status.address, status);
    m_dirty.insert(status.address);
    if (!m_flushTimer.isActive())
        m_flushTimer.start(kFlushIntervalMs);
}

QByteArray DashboardServer::message(const QList<int> &addresses) const
{
    QJsonArray receivers;
    for (int address : addresses)
        receivers.append(receiverJson(m_receivers.value(address)));
    return QJsonDocument(QJsonObject{{QStringLiteral("bus"), m_bus},
                                     {QStringLiteral("paused"), m_paused},
                                     {QStringLiteral("receivers"), receivers}})
        .toJson(QJsonDocument::Compact);
}

void DashboardServer::flush()
{
    if (m_dirty.isEmpty() && m_paused == m_sentPaused)
        return;
    m_sentPaused = m_paused;
    QList<int> changed = m_dirty.values();
    m_dirty.clear();
    std::sort(changed.begin(), changed.end());
    broadcast(message(changed));
}

void DashboardServer::broadcast(const QByteArray &text)
{
    for (QWebSocket *client : QList<QWebSocket *>(m_clients))
        send(client, text);
}

void DashboardServer::send(QWebSocket *client, const QByteArray &text)
{
    if (client->bytesToWrite() + text.size() > m_maxQueuedBytes) {
        ++m_dropped;
        m_clients.removeOne(client);
        disconnect(client, nullptr, this, nullptr);
        client->abort();
        client->deleteLater();
        return;
    }
    client->sendTextMessage(QString::fromUtf8(text));
}

} // namespace zun
