#include "feeds/mqttfeed.h"

#include "feeds/hadiscovery.h"
#include "feeds/mqttconnection.h"
#include "feeds/statusjson.h"

#include <QCoreApplication>
#include <QRandomGenerator>
#include <QSysInfo>

#include <utility>

namespace zun {

MqttFeed::MqttFeed(const FeedOptions &options, const QString &busName, QObject *parent)
    : QObject(parent), m_options(options), m_bus(busName)
{
    m_clock.start();
    m_flushTimer.setSingleShot(true);
    connect(&m_flushTimer, &QTimer::timeout, this, &MqttFeed::flush);
    m_thread.setObjectName(QStringLiteral("mqtt"));
    m_thread.start();
    startSession();
}

MqttFeed::~MqttFeed()
{
    endSession();
    m_thread.quit();
    m_thread.wait();
}

void MqttFeed::startSession()
{
    MqttSettings settings{m_options.mqttHost,
                          m_options.mqttPort,
                          m_options.mqttUser,
                          m_options.mqttPassword,
                          m_options.mqttCaFile,
                          QStringLiteral("zunoria-%1-%2")
                              .arg(QCoreApplication::applicationPid())
                              .arg(QRandomGenerator::global()->generate() % 100000),
                          QStringLiteral("zunoria/%1/status").arg(m_bus),
                          QStringLiteral("zunoria/%1/info").arg(m_bus),
                          QSysInfo::machineHostName(),
                          QCoreApplication::applicationPid(),
                          {}};
    if (m_options.mqttControl)
        settings.subscriptions << QStringLiteral("zunoria/%1/rx/+/set").arg(m_bus);
    if (m_options.mqttDiscovery)
        settings.subscriptions << m_options.mqttDiscoveryPrefix + QStringLiteral("/status");
    m_connection = new MqttConnection(std::move(settings));
    m_connection->moveToThread(&m_thread);
    connect(this, &MqttFeed::publishRequested, m_connection, &MqttConnection::publish);
    connect(m_connection, &MqttConnection::messageReceived, this, &MqttFeed::onMessage);
    connect(m_connection, &MqttConnection::connected, this, [this] {
        setState(FeedStatus::Mqtt::Connected);
        // The broker may have lost what was retained; say everything again.
        // The connection itself has just said "online".
        m_published.clear();
        m_publishedPaused = false;
        publishPaused();
        if (!m_info.isEmpty())
            emit publishRequested(QStringLiteral("zunoria/%1/info").arg(m_bus), m_info, true);
        if (!m_health.isEmpty())
            emit publishRequested(QStringLiteral("zunoria/%1/health").arg(m_bus), m_health, true);
        for (auto it = m_receivers.cbegin(); it != m_receivers.cend(); ++it)
            m_dirty.insert(it.key());
        flush();
        announceAll();
    });
    connect(m_connection, &MqttConnection::nameTaken, this, [this](const QString &owner) {
        setState(FeedStatus::Mqtt::Disconnected);
        emit failed(QStringLiteral("MQTT: the line name %1 is already used on this broker by %2; "
                                   "choose another with --line")
                        .arg(m_bus, owner));
    });
    connect(m_connection, &MqttConnection::disconnected, this, [this](const QString &reason) {
        setState(FeedStatus::Mqtt::Disconnected);
        emit failed(reason);
    });
    setState(FeedStatus::Mqtt::Connecting);
    QMetaObject::invokeMethod(m_connection, &MqttConnection::start, Qt::QueuedConnection);
}

void MqttFeed::endSession()
{
    if (!m_connection)
        return;
    disconnect(m_connection, nullptr, this, nullptr);
    // Ending a session waits for the goodbye to be handed over; this is the
    // only place the caller waits on the connection's thread.
    MqttConnection *connection = std::exchange(m_connection, nullptr);
    QMetaObject::invokeMethod(
        connection, [connection] { delete connection; }, Qt::BlockingQueuedConnection);
}

void MqttFeed::onPortChanged(const QString &portName)
{
    if (portName == m_bus)
        return;
    // The old name's description goes with it; its status says "offline".
    if (m_state == FeedStatus::Mqtt::Connected && !m_info.isEmpty())
        emit publishRequested(QStringLiteral("zunoria/%1/info").arg(m_bus), QByteArray(), true);
    // Devices named for the old line would stay in Home Assistant unavailable for ever.
    if (m_state == FeedStatus::Mqtt::Connected)
        for (const int address : m_announced.keys())
            withdraw(address);
    m_announced.clear();
    if (m_state == FeedStatus::Mqtt::Connected && !m_health.isEmpty())
        emit publishRequested(QStringLiteral("zunoria/%1/health").arg(m_bus), QByteArray(), true);
    endSession();
    m_bus = portName;
    m_published.clear();
    m_publishedPaused = false;
    startSession();
}

void MqttFeed::setInfo(const QByteArray &json)
{
    if (json == m_info)
        return;
    m_info = json;
    if (m_state == FeedStatus::Mqtt::Connected)
        emit publishRequested(QStringLiteral("zunoria/%1/info").arg(m_bus), m_info, true);
}

void MqttFeed::setHealth(const QByteArray &json)
{
    if (json == m_health)
        return;
    m_health = json;
    if (m_state == FeedStatus::Mqtt::Connected)
        emit publishRequested(QStringLiteral("zunoria/%1/health").arg(m_bus), m_health, true);
}

void MqttFeed::setPaused(bool paused)
{
    m_paused = paused;
    // Through the event loop, like the states: a pause that ends before the
    // loop turns again was never seen by anybody.
    if (!m_flushTimer.isActive())
        m_flushTimer.start(0);
}

void MqttFeed::publishPaused()
{
    if (m_state != FeedStatus::Mqtt::Connected || m_paused == m_publishedPaused)
        return;
    m_publishedPaused = m_paused;
    emit publishRequested(QStringLiteral("zunoria/%1/status").arg(m_bus),
                          m_paused ? QByteArrayLiteral("paused") : QByteArrayLiteral("online"), true);
}

void MqttFeed::publishAlarm(const QByteArray &json)
{
    if (m_state == FeedStatus::Mqtt::Connected)
        emit publishRequested(QStringLiteral("zunoria/%1/alarm").arg(m_bus), json, false);
}

void MqttFeed::setPresent(const QList<int> &addresses)
{
    const QSet<int> present(addresses.cbegin(), addresses.cend());
    for (const int address : m_receivers.keys()) {
        if (present.contains(address))
            continue;
        m_receivers.remove(address);
        m_published.remove(address);
        m_dirty.remove(address);
        if (m_announced.contains(address) && m_state == FeedStatus::Mqtt::Connected)
            withdraw(address);
    }
}

void MqttFeed::publishControlResult(const QString &addressLevel, const QByteArray &json)
{
    if (m_state == FeedStatus::Mqtt::Connected)
        emit publishRequested(QStringLiteral("zunoria/%1/rx/%2/result").arg(m_bus, addressLevel), json,
                              false);
}

void MqttFeed::onMessage(const QString &topic, const QByteArray &payload, bool retained)
{
    if (m_options.mqttDiscovery && topic == m_options.mqttDiscoveryPrefix + QStringLiteral("/status")) {
        // Home Assistant forgets discovered devices when it restarts and says so.
        if (payload == "online")
            announceAll();
        return;
    }
    // A retained request is one somebody left on the broker long ago: obeying
    // it on every connection would repeat it behind everybody's back.
    const QString head = QStringLiteral("zunoria/%1/rx/").arg(m_bus);
    if (!m_options.mqttControl || retained || !topic.startsWith(head) ||
        !topic.endsWith(QStringLiteral("/set")))
        return;
    const QString level = topic.mid(head.size(), topic.size() - head.size() - 4);
    if (!level.isEmpty() && !level.contains(QLatin1Char('/')))
        emit controlRequested(level, payload);
}

void MqttFeed::announce(const Receiver &status)
{
    m_announced.insert(status.address, status.shownName());
    for (const DiscoveryMessage &m :
         discoveryMessages(m_options.mqttDiscoveryPrefix, m_bus, status, m_options.mqttControl))
        emit publishRequested(m.topic, m.payload, true);
}

void MqttFeed::announceAll()
{
    if (!m_options.mqttDiscovery || m_state != FeedStatus::Mqtt::Connected)
        return;
    for (const Receiver &status : std::as_const(m_receivers))
        announce(status);
}

void MqttFeed::withdraw(int address)
{
    m_announced.remove(address);
    for (const DiscoveryMessage &m : discoveryRemoval(m_options.mqttDiscoveryPrefix, m_bus, address))
        emit publishRequested(m.topic, m.payload, true);
}

void MqttFeed::store(const Receiver &status)
{
    m_receivers.insert(status.address, status);
    // The device carries the receiver's name; a renamed one is told again.
    if (m_options.mqttDiscovery && m_state == FeedStatus::Mqtt::Connected &&
        (!m_announced.contains(status.address) || m_announced.value(status.address) != status.shownName()))
        announce(status);
    m_dirty.insert(status.address);
    if (!m_flushTimer.isActive())
        m_flushTimer.start(0);
}

void MqttFeed::flush()
{
    publishPaused();
    const qint64 now = m_clock.elapsed();
    qint64 nextDue = -1;
    for (auto it = m_dirty.begin(); it != m_dirty.end();) {
        const int address = *it;
        const qint64 wait = m_limiter.waitFor(address, now);
        if (wait > 0) {
            nextDue = nextDue < 0 ? wait : qMin(nextDue, wait);
            ++it;
            continue;
        }
        it = m_dirty.erase(it);
        const QByteArray payload = receiverJsonText(m_receivers.value(address));
        if (m_state != FeedStatus::Mqtt::Connected || m_published.value(address) == payload)
            continue;
        m_published.insert(address, payload);
        m_limiter.markSent(address, now);
        emit publishRequested(QStringLiteral("zunoria/%1/rx/%2/state").arg(m_bus, addressText(address)),
                              payload, true);
    }
    if (nextDue >= 0)
        m_flushTimer.start(static_cast<int>(nextDue));
}

void MqttFeed::setState(FeedStatus::Mqtt state)
{
    if (state == m_state)
        return;
    m_state = state;
    emit stateChanged(state);
}

} // namespace zun
