#include "fleet/fleetservice.h"

#include "feeds/dashboardserver.h"
#include "feeds/mqttconnection.h"
#include "feeds/statusjson.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QSysInfo>

#include <algorithm>
#include <cstdio>

namespace zun {

FleetService::FleetService(const FeedOptions &options, QObject *parent) : QObject(parent), m_options(options)
{
    m_flushTimer.setSingleShot(true);
    connect(&m_flushTimer, &QTimer::timeout, this, &FleetService::flush);
    const QString token = options.webToken.isEmpty() ? DashboardServer::randomToken() : options.webToken;
    // 512 panels and 200 alarms are some 150 kB; a browser may lag a few of those.
    m_dashboard = new DashboardServer(token, 4 << 20, this);
    m_dashboard->setPage(
        {QStringLiteral("fleet.html"), QStringLiteral("fleet.css"), QStringLiteral("fleet.js")});
    m_dashboard->setGreeting([this] { return greeting(); });
    m_dashboard->setSnapshot([this] { return m_model.snapshot(); });
}

FleetService::~FleetService()
{
    // The server asks the model for its pages; it goes before the model does.
    delete std::exchange(m_dashboard, nullptr);
    if (m_connection) {
        disconnect(m_connection, nullptr, this, nullptr);
        MqttConnection *connection = std::exchange(m_connection, nullptr);
        QMetaObject::invokeMethod(
            connection, [connection] { delete connection; }, Qt::BlockingQueuedConnection);
    }
    m_thread.quit();
    m_thread.wait();
}

bool FleetService::start()
{
    if (!m_dashboard->start(m_options.webPort, m_options.webAllowNetwork)) {
        m_error = m_dashboard->errorText();
        return false;
    }
    MqttSettings settings;
    settings.host = m_options.mqttHost;
    settings.port = m_options.mqttPort;
    settings.user = m_options.mqttUser;
    settings.password = m_options.mqttPassword;
    settings.caFile = m_options.mqttCaFile;
    settings.clientId = QStringLiteral("zunoria-fleet-%1-%2")
                            .arg(QCoreApplication::applicationPid())
                            .arg(QRandomGenerator::global()->generate() % 100000);
    settings.selfHost = QSysInfo::machineHostName();
    settings.selfPid = QCoreApplication::applicationPid();
    settings.subscriptions = FleetModel::subscriptions();
    m_thread.setObjectName(QStringLiteral("mqtt"));
    m_thread.start();
    m_connection = new MqttConnection(std::move(settings));
    m_connection->moveToThread(&m_thread);
    connect(m_connection, &MqttConnection::messageReceived, this, &FleetService::onMessage);
    connect(m_connection, &MqttConnection::connected, this, [this] {
        emit notice(
            QStringLiteral("MQTT: connected to %1:%2").arg(m_options.mqttHost).arg(m_options.mqttPort));
    });
    connect(m_connection, &MqttConnection::disconnected, this, &FleetService::notice);
    QMetaObject::invokeMethod(m_connection, &MqttConnection::start, Qt::QueuedConnection);
    return true;
}

QString FleetService::url() const
{
    return m_dashboard->url();
}

void FleetService::onMessage(const QString &topic, const QByteArray &payload)
{
    const FleetChange change = m_model.apply(topic, payload);
    if (change.kind == FleetChange::Nothing || change.kind == FleetChange::Health)
        return;
    QSet<int> &receivers = m_dirty[change.line];
    // An alarm changes its receiver's mark.
    if (change.address > 0)
        receivers.insert(change.address);
    if (!m_flushTimer.isActive())
        m_flushTimer.start(kFlushIntervalMs);
}

QJsonObject FleetService::lineView(const FleetLine &line, const QList<int> &addresses) const
{
    QJsonArray receivers;
    for (int address : addresses) {
        const auto found = line.receivers.constFind(address);
        if (found == line.receivers.cend()) {
            receivers.append(
                QJsonObject{{QStringLiteral("address"), address}, {QStringLiteral("gone"), true}});
            continue;
        }
        QJsonObject rx = receiverJson(*found);
        rx.insert(QStringLiteral("alarm"), line.alarmed(address));
        receivers.append(rx);
    }
    return {{QStringLiteral("line"), line.name},
            {QStringLiteral("online"), line.online},
            {QStringLiteral("host"), line.host},
            {QStringLiteral("found"), line.receiversFound},
            {QStringLiteral("receivers"), receivers}};
}

QByteArray FleetService::greeting() const
{
    QJsonArray lines;
    for (const FleetLine &line : m_model.lines())
        lines.append(lineView(line, line.receivers.keys()));
    QJsonArray alarms;
    for (const QJsonObject &alarm : m_model.alarms())
        alarms.append(alarm);
    return QJsonDocument(QJsonObject{{QStringLiteral("reset"), true},
                                     {QStringLiteral("lines"), lines},
                                     {QStringLiteral("alarms"), alarms}})
        .toJson(QJsonDocument::Compact);
}

void FleetService::flush()
{
    QJsonArray lines;
    for (auto it = m_dirty.cbegin(); it != m_dirty.cend(); ++it) {
        const auto line = m_model.lines().constFind(it.key());
        if (line == m_model.lines().cend())
            continue;
        QList<int> addresses = it.value().values();
        std::sort(addresses.begin(), addresses.end());
        lines.append(lineView(*line, addresses));
    }
    m_dirty.clear();
    QJsonArray alarms;
    const qint64 fresh =
        std::min<qint64>(m_model.alarmCount() - m_alarmsSent, qint64(m_model.alarms().size()));
    for (auto it = m_model.alarms().cend() - fresh; it != m_model.alarms().cend(); ++it)
        alarms.append(*it);
    m_alarmsSent = m_model.alarmCount();
    if (lines.isEmpty() && alarms.isEmpty())
        return;
    m_dashboard->broadcast(
        QJsonDocument(QJsonObject{{QStringLiteral("lines"), lines}, {QStringLiteral("alarms"), alarms}})
            .toJson(QJsonDocument::Compact));
}

std::unique_ptr<FleetService> assembleFleet(const FeedOptions &options)
{
    auto fleet = std::make_unique<FleetService>(options);
    QObject::connect(fleet.get(), &FleetService::notice, fleet.get(), [](const QString &text) {
        std::fprintf(stderr, "zunoria: %s\n", qUtf8Printable(text));
        std::fflush(stderr);
    });
    return fleet;
}

} // namespace zun
