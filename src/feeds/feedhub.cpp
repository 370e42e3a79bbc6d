#include "feeds/feedhub.h"

namespace zun {

FeedHub::FeedHub(const FeedOptions &options, const QString &busName, QObject *parent) : QObject(parent)
{
    if (!options.oscTargets.isEmpty()) {
        m_osc = new OscFeed(options.oscTargets, busName, this);
        m_status.oscTargets = m_osc->targetCount();
        connect(m_osc, &OscFeed::failed, this, &FeedHub::setError);
    }
    if (!options.mqttHost.isEmpty()) {
        m_mqtt = new MqttFeed(options, busName, this);
        m_status.mqtt = m_mqtt->state();
        connect(m_mqtt, &MqttFeed::failed, this, &FeedHub::setError);
        connect(m_mqtt, &MqttFeed::controlRequested, this, &FeedHub::controlRequested);
        connect(m_mqtt, &MqttFeed::stateChanged, this, [this](FeedStatus::Mqtt state) {
            m_status.mqtt = state;
            if (state == FeedStatus::Mqtt::Connected)
                m_status.lastError.clear();
            emit statusTextChanged(statusText());
        });
    }
    if (options.webPort != 0) {
        const QString token = options.webToken.isEmpty() ? DashboardServer::randomToken() : options.webToken;
        m_dashboard = new DashboardServer(token, 1 << 20, this);
        m_dashboard->onPortChanged(busName);
        if (m_dashboard->start(options.webPort, options.webAllowNetwork))
            m_status.webUrl = m_dashboard->url();
        else
            m_status.lastError = m_dashboard->errorText();
    }
}

void FeedHub::setLineName(const QString &lineName)
{
    if (m_osc)
        m_osc->setLineName(lineName);
    if (m_mqtt)
        m_mqtt->onPortChanged(lineName);
    if (m_dashboard)
        m_dashboard->onPortChanged(lineName);
}

void FeedHub::setLineInfo(const QByteArray &json)
{
    if (m_mqtt)
        m_mqtt->setInfo(json);
}

void FeedHub::publishAlarm(const QByteArray &json)
{
    if (m_mqtt)
        m_mqtt->publishAlarm(json);
}

void FeedHub::setHealth(const QList<BusCounters> &health)
{
    if (m_mqtt)
        m_mqtt->setHealth(busCountersJson(health));
    if (m_dashboard)
        m_dashboard->setHealth(health);
}

void FeedHub::setPaused(bool paused)
{
    if (m_osc)
        m_osc->setPaused(paused);
    if (m_mqtt)
        m_mqtt->setPaused(paused);
    if (m_dashboard)
        m_dashboard->setPaused(paused);
}

void FeedHub::receiverFound(const Receiver &status)
{
    if (m_osc)
        m_osc->onReceiverFound(status);
    if (m_mqtt)
        m_mqtt->onReceiverFound(status);
    if (m_dashboard)
        m_dashboard->onReceiverFound(status);
}

void FeedHub::setPresent(const QList<int> &addresses)
{
    if (m_mqtt)
        m_mqtt->setPresent(addresses);
}

void FeedHub::publishControlResult(const QString &addressLevel, const QByteArray &json)
{
    if (m_mqtt)
        m_mqtt->publishControlResult(addressLevel, json);
}

void FeedHub::setError(const QString &message)
{
    m_status.lastError = message;
    emit statusTextChanged(statusText());
}

} // namespace zun
