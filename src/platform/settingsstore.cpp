#include "platform/settingsstore.h"

#include <QSettings>

namespace zun {

namespace {
QString composite(const QString &app, const QString &section, const QString &key)
{
    return app + QLatin1Char('/') + section + QLatin1Char('/') + key;
}
} // namespace

QString FileSettingsStore::get(const QString &app, const QString &section, const QString &key) const
{
    QSettings settings(QSettings::IniFormat, QSettings::UserScope, app, app);
    return settings.value(section + QLatin1Char('/') + key).toString();
}

void FileSettingsStore::save(const QString &app, const QString &section, const QString &key,
                             const QString &value)
{
    // QSettings writes through a temporary file and renames it, so a crash
    // mid-save leaves the old file whole; sync() puts it on disk now.
    QSettings settings(QSettings::IniFormat, QSettings::UserScope, app, app);
    settings.setValue(section + QLatin1Char('/') + key, value);
    settings.sync();
}

QString MemorySettingsStore::get(const QString &app, const QString &section, const QString &key) const
{
    return m_values.value(composite(app, section, key));
}

void MemorySettingsStore::save(const QString &app, const QString &section, const QString &key,
                               const QString &value)
{
    m_values.insert(composite(app, section, key), value);
    ++m_saves;
}

} // namespace zun
