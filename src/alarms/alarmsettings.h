#pragma once

namespace zun {

class SettingsStore;

// What raises an alarm, kept in the settings store under "Alarms". Every
// condition is on by default; the sound is off. A stored value that is not
// a valid number or flag reads as its default.
struct AlarmSettings
{
    bool batteryOn = true;
    int batteryPercent = 10; // at or below: the "10%" step or "OFF"
    bool rfLowOn = true;
    double rfLowSeconds = 2.0; // both antennas below the squelch level longer than this
    bool offlineOn = true;
    bool clipOn = true;
    double clipSeconds = 0.5; // audio meter at full scale longer than this
    bool soundOn = false;

    [[nodiscard]] static AlarmSettings load(const SettingsStore &store);
    void save(SettingsStore &store) const;
};

} // namespace zun
