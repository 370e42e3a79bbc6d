#pragma once

#include "alarms/alarmsettings.h"
#include "receivers/leveltable.h"
#include "receivers/receiver.h"

#include <QHash>
#include <QList>
#include <QObject>

#include <array>
#include <cstdint>
#include <optional>

namespace zun {

class Clock;

enum class AlarmCondition { BatteryLow, RfBelowSquelch, Offline, AudioClipping };

// "Battery low", "RF below squelch", "Offline", "Audio clipping".
[[nodiscard]] QString conditionText(AlarmCondition condition);

// One alarm from raised to cleared. Times are readings of the program's clock.
struct Alarm
{
    int address = 0;
    QString receiverName;
    AlarmCondition condition = AlarmCondition::BatteryLow;
    std::uint64_t raisedMicros = 0;
    std::optional<std::uint64_t> acknowledgedMicros;
    std::optional<std::uint64_t> clearedMicros;
};

// Watches what the receiver layer reports and raises an alarm per receiver
// and condition: battery at or below its threshold, both antennas below the
// squelch level for too long while online, gone offline, audio at full scale
// for too long. An alarm clears itself when its condition ends and stays in
// the list; a click acknowledges all of a receiver's alarms. Work per
// signal is a few comparisons; it never talks to the line.
class AlarmEngine : public QObject
{
    Q_OBJECT
public:
    explicit AlarmEngine(const Clock &clock, QObject *parent = nullptr);

    // A condition switched off clears its active alarms.
    void setSettings(const AlarmSettings &settings);
    const AlarmSettings &settings() const { return m_settings; }

    // The newest kMaxAlarms alarms, oldest first; the first has firstId().
    // Signals carry an alarm's id, which stays valid while it is kept.
    static constexpr int kMaxAlarms = 1000;
    const QList<Alarm> &alarms() const { return m_alarms; }
    int firstId() const { return m_firstId; }
    // Null once the alarm is no longer kept.
    const Alarm *alarm(int id) const;
    // Raised or cleared, but nobody clicked it yet: the panel keeps flashing.
    [[nodiscard]] bool hasUnacknowledged(int address) const;
    void acknowledge(int address);

public slots:
    void onReceiverFound(const zun::Receiver &status);
    void onLevelsRead(const zun::Receiver &status);
    void onWentOffline(const zun::Receiver &status);
    void onCameBack(const zun::Receiver &status);

signals:
    void alarmRaised(int id);
    // Acknowledged or cleared.
    void alarmChanged(int id);
    // Its condition ended (after alarmChanged).
    void alarmCleared(int id);

private:
    struct Watch
    {
        std::optional<std::uint64_t> rfLowSince;
        std::optional<std::uint64_t> clipSince;
        std::array<int, 4> active{-1, -1, -1, -1}; // alarm id per condition
    };

    void raise(Watch &watch, const Receiver &status, AlarmCondition condition);
    void clear(Watch &watch, AlarmCondition condition);
    // True once the condition has held longer than the given time.
    [[nodiscard]] bool heldLongerThan(std::optional<std::uint64_t> &since, bool holding,
                                      double seconds) const;

    const Clock &m_clock;
    const LevelTable m_levelTable = buildLevelTable();
    AlarmSettings m_settings;
    QList<Alarm> m_alarms;
    int m_firstId = 0;
    QHash<int, Watch> m_watches; // by address
};

} // namespace zun
