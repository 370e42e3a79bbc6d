#pragma once

#include <QHash>
#include <QString>

namespace zun {

// Per-user text values by application, section and key. A missing key reads
// as an empty text. Every save is on disk before save() returns.
class SettingsStore
{
public:
    virtual ~SettingsStore() = default;
    virtual QString get(const QString &app, const QString &section, const QString &key) const = 0;
    virtual void save(const QString &app, const QString &section, const QString &key,
                      const QString &value) = 0;
};

// The real store: one INI file per application under the user's configuration
// folder (XDG_CONFIG_HOME is honoured).
class FileSettingsStore final : public SettingsStore
{
public:
    QString get(const QString &app, const QString &section, const QString &key) const override;
    void save(const QString &app, const QString &section, const QString &key, const QString &value) override;
};

// Test double and demo store: values live in memory only.
class MemorySettingsStore final : public SettingsStore
{
public:
    QString get(const QString &app, const QString &section, const QString &key) const override;
    void save(const QString &app, const QString &section, const QString &key, const QString &value) override;

    int saveCount() const { return m_saves; }

private:
    QHash<QString, QString> m_values;
    int m_saves = 0;
};

} // namespace zun
