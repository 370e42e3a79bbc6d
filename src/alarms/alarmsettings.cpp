#include "alarms/alarmsettings.h"

#include "core/options.h"
#include "platform/settingsstore.h"

namespace zun {

namespace {
const QString kSection = QStringLiteral("Alarms");

bool readFlag(const SettingsStore &store, const QString &key, bool fallback)
{
    const QString text = store.get(kAppName, kSection, key).trimmed();
    if (text == QLatin1String("1"))
        return true;
    if (text == QLatin1String("0"))
        return false;
    return fallback;
}

double readNumber(const SettingsStore &store, const QString &key, double fallback, double low, double high)
{
    bool ok = false;
    const double value = store.get(kAppName, kSection, key).trimmed().toDouble(&ok);
    return ok && value >= low && value <= high ? value : fallback;
}

QString flagText(bool on)
{
    return on ? QStringLiteral("1") : QStringLiteral("0");
}
} // namespace

AlarmSettings AlarmSettings::load(const SettingsStore &store)
{
    AlarmSettings s;
    s.batteryOn = readFlag(store, QStringLiteral("Battery"), s.batteryOn);
    s.batteryPercent =
        static_cast<int>(readNumber(store, QStringLiteral("BatteryPercent"), s.batteryPercent, 0, 100));
    s.rfLowOn = readFlag(store, QStringLiteral("RFLow"), s.rfLowOn);
    s.rfLowSeconds = readNumber(store, QStringLiteral("RFLowSeconds"), s.rfLowSeconds, 0, 3600);
    s.offlineOn = readFlag(store, QStringLiteral("Offline"), s.offlineOn);
    s.clipOn = readFlag(store, QStringLiteral("Clipping"), s.clipOn);
    s.clipSeconds = readNumber(store, QStringLiteral("ClippingSeconds"), s.clipSeconds, 0, 3600);
    s.soundOn = readFlag(store, QStringLiteral("Sound"), s.soundOn);
    return s;
}

void AlarmSettings::save(SettingsStore &store) const
{
    store.save(kAppName, kSection, QStringLiteral("Battery"), flagText(batteryOn));
    store.save(kAppName, kSection, QStringLiteral("BatteryPercent"), QString::number(batteryPercent));
    store.save(kAppName, kSection, QStringLiteral("RFLow"), flagText(rfLowOn));
    store.save(kAppName, kSection, QStringLiteral("RFLowSeconds"), QString::number(rfLowSeconds));
    store.save(kAppName, kSection, QStringLiteral("Offline"), flagText(offlineOn));
    store.save(kAppName, kSection, QStringLiteral("Clipping"), flagText(clipOn));
    store.save(kAppName, kSection, QStringLiteral("ClippingSeconds"), QString::number(clipSeconds));
    store.save(kAppName, kSection, QStringLiteral("Sound"), flagText(soundOn));
}

} // namespace zun
