#include "alarms/alarmengine.h"

#include "platform/clock.h"

#include <algorithm>
#include <cmath>

namespace zun {

QString conditionText(AlarmCondition condition)
{
    switch (condition) {
    case AlarmCondition::BatteryLow:
        return QStringLiteral("Battery low");
    case AlarmCondition::RfBelowSquelch:
        return QStringLiteral("RF below squelch");
    case AlarmCondition::Offline:
        return QStringLiteral("Offline");
    case AlarmCondition::AudioClipping:
        return QStringLiteral("Audio clipping");
    }
    return {};
}

AlarmEngine::AlarmEngine(const Clock &clock, QObject *parent) : QObject(parent), m_clock(clock) {}

void AlarmEngine::setSettings(const AlarmSettings &settings)
{
    m_settings = settings;
    for (Watch &watch : m_watches) {
        if (!settings.batteryOn)
            clear(watch, AlarmCondition::BatteryLow);
        if (!settings.rfLowOn)
            clear(watch, AlarmCondition::RfBelowSquelch);
        if (!settings.offlineOn)
            clear(watch, AlarmCondition::Offline);
        if (!settings.clipOn)
            clear(watch, AlarmCondition::AudioClipping);
    }
}

const Alarm *AlarmEngine::alarm(int id) const
{
    const int index = id - m_firstId;
    return index >= 0 && index < m_alarms.size() ? &m_alarms[index] : nullptr;
}

bool AlarmEngine::hasUnacknowledged(int address) const
{
    return std::any_of(m_alarms.begin(), m_alarms.end(),
                       [address](const Alarm &a) { return a.address == address && !a.acknowledgedMicros; });
}

void AlarmEngine::acknowledge(int address)
{
    const std::uint64_t now = m_clock.nowMicros();
    for (int i = 0; i < m_alarms.size(); ++i) {
        Alarm &alarm = m_alarms[i];
        if (alarm.address != address || alarm.acknowledgedMicros)
            continue;
        alarm.acknowledgedMicros = now;
        emit alarmChanged(m_firstId + i);
    }
}

void AlarmEngine::raise(Watch &watch, const Receiver &status, AlarmCondition condition)
{
    int &active = watch.active[static_cast<std::size_t>(condition)];
    if (active >= 0)
        return;
    m_alarms.append(
        {status.address, status.shownName(), condition, m_clock.nowMicros(), std::nullopt, std::nullopt});
    active = m_firstId + static_cast<int>(m_alarms.size()) - 1;
    // A flaky line raises thousands in a night; the oldest go, even one
    // still active, which then simply clears unseen.
    while (m_alarms.size() > kMaxAlarms) {
        m_alarms.removeFirst();
        ++m_firstId;
    }
    emit alarmRaised(active);
}

void AlarmEngine::clear(Watch &watch, AlarmCondition condition)
{
    int &active = watch.active[static_cast<std::size_t>(condition)];
    if (active < 0)
        return;
    const int id = active;
    active = -1;
    if (!alarm(id))
        return;
    m_alarms[id - m_firstId].clearedMicros = m_clock.nowMicros();
    emit alarmChanged(id);
    emit alarmCleared(id);
}

bool AlarmEngine::heldLongerThan(std::optional<std::uint64_t> &since, bool holding, double seconds) const
{
    if (!holding) {
        since.reset();
        return false;
    }
    const std::uint64_t now = m_clock.nowMicros();
    if (!since)
        since = now;
    return now - *since > static_cast<std::uint64_t>(std::llround(seconds * 1e6));
}

void AlarmEngine::onReceiverFound(const Receiver &status)
{
    onCameBack(status);
}

void AlarmEngine::onLevelsRead(const Receiver &status)
{
    if (!status.online) {
        onWentOffline(status);
        return;
    }
    Watch &watch = m_watches[status.address];
    clear(watch, AlarmCondition::Offline);

    if (m_settings.batteryOn && status.batteryPercent >= 0 &&
        status.batteryPercent <= m_settings.batteryPercent)
        raise(watch, status, AlarmCondition::BatteryLow);
    else if (status.batteryPercent > m_settings.batteryPercent)
        clear(watch, AlarmCondition::BatteryLow);

    // Below means below: a level equal to the squelch level opens it.
    const int squelch = squelchLevel(m_levelTable, status.squelch);
    const bool rfLow = std::max(status.levels.rfA, status.levels.rfB) < squelch;
    if (heldLongerThan(watch.rfLowSince, rfLow, m_settings.rfLowSeconds) && m_settings.rfLowOn)
        raise(watch, status, AlarmCondition::RfBelowSquelch);
    else if (!rfLow)
        clear(watch, AlarmCondition::RfBelowSquelch);

    if (heldLongerThan(watch.clipSince, status.levels.audioClip, m_settings.clipSeconds) && m_settings.clipOn)
        raise(watch, status, AlarmCondition::AudioClipping);
    else if (!status.levels.audioClip)
        clear(watch, AlarmCondition::AudioClipping);
}

void AlarmEngine::onWentOffline(const Receiver &status)
{
    Watch &watch = m_watches[status.address];
    // The level conditions only mean something while the receiver answers.
    watch.rfLowSince.reset();
    watch.clipSince.reset();
    clear(watch, AlarmCondition::RfBelowSquelch);
    clear(watch, AlarmCondition::AudioClipping);
    if (m_settings.offlineOn)
        raise(watch, status, AlarmCondition::Offline);
}

void AlarmEngine::onCameBack(const Receiver &status)
{
    clear(m_watches[status.address], AlarmCondition::Offline);
}

} // namespace zun
