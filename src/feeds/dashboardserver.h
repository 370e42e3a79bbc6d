#pragma once

#include "feeds/lineexport.h"
#include "receivers/receiver.h"

#include <QAbstractHttpServer>
#include <QHash>
#include <QHostAddress>
#include <QList>
#include <QSet>
#include <QTimer>
#include <QWebSocket>

#include <functional>
#include <memory>

namespace zun {

// The read-only web dashboard: one page (from the Qt resources) and a
// WebSocket that carries every receiver's state as JSON, changes coalesced
// every 100 ms. Every request needs ?token=…; anything else gets an empty
// 403. A client that stops reading is dropped once its queue passes
// maxQueuedBytes, so a stuck phone never holds memory or time. Whatever a
// client sends, it holds no more than a request head, a slot among the
// connections and ten seconds of the server's time before it is answered;
// when the slots run out, the oldest connection that has not sent a whole
// request yet makes room for a newcomer (503 only when all are real ones).
// GET /api/state (token in the query) and GET /metrics (token as a bearer)
// show the same lines in JSON and in the Prometheus format.
class DashboardServer : public QAbstractHttpServer
{
    Q_OBJECT
public:
    static constexpr int kFlushIntervalMs = 100;
    static constexpr qsizetype kMaxHeadBytes = 16 * 1024; // request line and headers
    static constexpr int kMaxConnectionsPerAddress = 64;
    static constexpr int kMaxConnections = 256;
    static constexpr int kRequestTimeoutMs = 10000;
    static constexpr qsizetype kMinTokenLength = 16;

    DashboardServer(const QString &token, qint64 maxQueuedBytes = 1 << 20, QObject *parent = nullptr);
    ~DashboardServer() override;

    // Loopback only unless the network is allowed. Returns false and sets
    // errorText when the port cannot be had.
    [[nodiscard]] bool start(quint16 port, bool allowNetwork);
    quint16 port() const { return m_port; }
    QString url() const;
    QString errorText() const { return m_error; }
    int clientCount() const { return static_cast<int>(m_clients.size()); }
    int droppedClients() const { return m_dropped; }
    int connectionCount() const { return m_connections; }
    // How long a client may take to send a whole request.
    void setRequestTimeout(int millis) { m_requestTimeoutMs = millis; }

    [[nodiscard]] static QString randomToken();

    // The page, its style and its script, by resource name.
    struct Page
    {
        QString html = QStringLiteral("index.html");
        QString css = QStringLiteral("dashboard.css");
        QString js = QStringLiteral("dashboard.js");
    };
    void setPage(const Page &page) { m_page = page; }
    // What a new WebSocket client is sent first; by default every receiver.
    void setGreeting(std::function<QByteArray()> greeting) { m_greeting = std::move(greeting); }
    // The lines /api/state and /metrics show; by default this line alone.
    void setSnapshot(std::function<QList<LineSnapshot>()> snapshot) { m_snapshot = std::move(snapshot); }
    // Sends text to every WebSocket client, dropping those that do not read.
    void broadcast(const QByteArray &text);

public slots:
    void onReceiverFound(const zun::Receiver &status) { store(status); }
    void onReceiverChanged(const zun::Receiver &status) { store(status); }
    void onLevelsRead(const zun::Receiver &status) { store(status); }
    void onWentOffline(const zun::Receiver &status) { store(status); }
    void onCameBack(const zun::Receiver &status) { store(status); }
    void onPortChanged(const QString &portName);
    void setHealth(const QList<zun::BusCounters> &health) { m_health = health; }
    // Every message carries "paused": the values are the last known, nothing is polled.
    void setPaused(bool paused);
    // Sends what changed since the last flush; the timer calls it.
    void flush();

protected:
    bool handleRequest(const QHttpServerRequest &request, QTcpSocket *socket) override;
    void missingHandler(const QHttpServerRequest &request, QTcpSocket *socket) override;

private:
    friend class DashboardGate;
    struct Head;                                  // what has come of a connection's current request head
    [[nodiscard]] bool admit(QTcpSocket *socket); // false: refused and on its way out
    // At a cap: closes the oldest connection (from peer, when given) that has
    // not yet sent a whole request. False when every one held is a real one.
    [[nodiscard]] bool makeRoom(const QHostAddress *peer);
    void release(QTcpSocket *socket);
    void inspect(QTcpSocket *socket);
    void inspectFrames(QTcpSocket *socket, Head &head);
    void refuse(QTcpSocket *socket, const QByteArray &status);
    void forget(QTcpSocket *socket);
    [[nodiscard]] bool upgradeAllowed(const QByteArray &head, QTcpSocket *socket) const;
    void store(const Receiver &status);
    void acceptWebSocket();
    [[nodiscard]] bool tokenMatches(const QUrl &url) const;
    [[nodiscard]] bool sameToken(const QByteArray &given) const;
    [[nodiscard]] bool bearerMatches(const QByteArray &authorization) const;
    QList<LineSnapshot> ownLine() const;
    QByteArray message(const QList<int> &addresses) const;
    void send(QWebSocket *client, const QByteArray &text);
    QByteArray page() const;

    QString m_token;
    qint64 m_maxQueuedBytes;
    quint16 m_port = 0;
    QHostAddress m_listenAddress;
    QString m_error;
    QString m_bus;
    QHash<int, Receiver> m_receivers;
    QList<BusCounters> m_health;
    Page m_page;
    std::function<QByteArray()> m_greeting;
    std::function<QList<LineSnapshot>()> m_snapshot;
    QSet<int> m_dirty;
    bool m_paused = false;
    bool m_sentPaused = false;
    QList<QWebSocket *> m_clients;
    QTimer m_flushTimer;
    int m_dropped = 0;
    int m_connections = 0;
    int m_requestTimeoutMs = kRequestTimeoutMs;
    QHash<QHostAddress, int> m_perAddress;
    struct Held
    {
        QHostAddress peer;
        quint64 order = 0; // admission order: the oldest goes first
    };
    QHash<QTcpSocket *, Held> m_held; // every connection counted above
    quint64 m_admitted = 0;
    QHash<QTcpSocket *, std::shared_ptr<Head>> m_heads;
};

} // namespace zun
