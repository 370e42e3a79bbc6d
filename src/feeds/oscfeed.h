#pragma once

#include "feeds/feedoptions.h"
#include "feeds/ratelimiter.h"
#include "receivers/receiver.h"

#include <QElapsedTimer>
#include <QHostAddress>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QTimer>
#include <QUdpSocket>

#include <optional>

namespace zun {

// Sends the live state as OSC bundles over UDP: one bundle per polling pass
// with every online receiver, at most 20 a second; a change of name,
// frequency, mute or online goes out at once (within the same limit). The
// slots only store what they are given; encoding and sending happen on the
// event loop, on a non-blocking socket, with host names looked up
// asynchronously.
class OscFeed : public QObject
{
    Q_OBJECT
public:
    static constexpr qint64 kMinBundleIntervalMs = 50;

    OscFeed(const QList<OscTarget> &targets, const QString &lineName, QObject *parent = nullptr);

    void setLineName(const QString &lineName) { m_line = lineName; }

    int targetCount() const { return static_cast<int>(m_targets.size()); }

    // The bundle as it goes on the wire: /zunoria/<line>/rx/<address>/{name,
    // freq,rfa,rfb,af,battery,mute,online} per online receiver, and /online
    // false for each address in wentOffline, and /zunoria/<line>/paused when
    // that changed.
    [[nodiscard]] static QByteArray encodeBundle(const QString &lineName, const QList<Receiver> &online,
                                                 const QList<int> &wentOffline,
                                                 std::optional<bool> paused = {});

public slots:
    void onReceiverFound(const zun::Receiver &status) { store(status, true); }
    void onReceiverChanged(const zun::Receiver &status) { store(status, true); }
    void onLevelsRead(const zun::Receiver &status) { store(status, false); }
    void onWentOffline(const zun::Receiver &status) { store(status, true); }
    void onCameBack(const zun::Receiver &status) { store(status, true); }
    void onPassEnded(int receiversAsked);
    void setPaused(bool paused);

signals:
    void failed(const QString &message);

private:
    struct Target
    {
        OscTarget where;
        QHostAddress address; // null until resolved
    };

    void store(const Receiver &status, bool urgent);
    void requestSend();
    void sendNow();
    void reportOnce(const QString &message);

    QList<Target> m_targets;
    QString m_line;
    QMap<int, Receiver> m_receivers;
    QSet<int> m_wentOffline;
    bool m_paused = false;
    bool m_sentPaused = false;
    QUdpSocket m_socket;
    QTimer m_sendTimer;
    QElapsedTimer m_clock;
    RateLimiter m_limiter{kMinBundleIntervalMs};
    QString m_lastError;
};

} // namespace zun
