#include "feeds/dashboardserver.h"

#include "feeds/statusjson.h"

#include <QFile>
#include <QHostInfo>
#include <QHttpServerRequest>
#include <QHttpServerResponder>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QTcpServer>
#include <QUrlQuery>

#include <algorithm>

namespace zun {
namespace {

QByteArray resource(const QString &name)
{
    QFile file(QStringLiteral(":/dashboard/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

DashboardServer::DashboardServer(const QString &token, qint64 maxQueuedBytes, QObject *parent)
    : QAbstractHttpServer(parent), m_token(token), m_maxQueuedBytes(maxQueuedBytes)
{
    m_flushTimer.setSingleShot(true);
    connect(&m_flushTimer, &QTimer::timeout, this, &DashboardServer::flush);
    connect(this, &QAbstractHttpServer::newWebSocketConnection, this, &DashboardServer::acceptWebSocket);
}

DashboardServer::~DashboardServer()
{
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
    m_listenAddress = allowNetwork ? QHostAddress(QHostAddress::Any) : QHostAddress(QHostAddress::LocalHost);
    m_port = listen(m_listenAddress, port);
    if (m_port == 0) {
        m_error = QStringLiteral("Web: cannot listen on port %1").arg(port);
        for (QTcpServer *server : servers())
            m_error += QStringLiteral(": ") + server->errorString();
        return false;
    }
    return true;
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
    const QByteArray given = QUrlQuery(url).queryItemValue(QStringLiteral("token")).toUtf8();
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
    if (!tokenMatches(request.url()) || request.method() != QHttpServerRequest::Method::Get ||
        (path != QLatin1String("/") && !path.isEmpty()))
        return false;
    makeResponder(request, socket).write(page(), "text/html; charset=utf-8");
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
    QByteArray html = resource(QStringLiteral("index.html"));
    html.replace("/*STYLE*/", resource(QStringLiteral("dashboard.css")));
    html.replace("/*SCRIPT*/", resource(QStringLiteral("dashboard.js")));
    return html;
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

void DashboardServer::store(const ReceiverStatus &status)
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
    return QJsonDocument(
               QJsonObject{{QStringLiteral("bus"), m_bus}, {QStringLiteral("receivers"), receivers}})
        .toJson(QJsonDocument::Compact);
}

void DashboardServer::flush()
{
    if (m_dirty.isEmpty())
        return;
    QList<int> changed = m_dirty.values();
    m_dirty.clear();
    std::sort(changed.begin(), changed.end());
    const QByteArray text = message(changed);
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
