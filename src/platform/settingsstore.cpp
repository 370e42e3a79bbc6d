#include "platform/settingsstore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSettings>
#include <QTemporaryDir>

namespace zun {

namespace {
QString composite(const QString &app, const QString &section, const QString &key)
{
    return app + QLatin1Char('/') + section + QLatin1Char('/') + key;
}

// The value of key in section as the file has it, for a value QSettings
// took for a list: "a:1,b:2" or a password with a comma is one text to us.
QString writtenValue(const QString &file, const QString &section, const QString &key)
{
    QFile in(file);
    if (!in.open(QIODevice::ReadOnly))
        return {};
    bool inSection = false;
    while (!in.atEnd()) {
        const QString line = QString::fromUtf8(in.readLine(64 * 1024)).trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            inSection = line == QLatin1Char('[') + section + QLatin1Char(']');
            continue;
        }
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (inSection && equals > 0 && line.left(equals).trimmed() == key)
            return line.mid(equals + 1).trimmed();
    }
    return {};
}
} // namespace

QString FileSettingsStore::get(const QString &app, const QString &section, const QString &key) const
{
    QSettings settings(QSettings::IniFormat, QSettings::UserScope, app, app);
    const QVariant value = settings.value(section + QLatin1Char('/') + key);
    if (value.metaType().id() == QMetaType::QStringList)
        return writtenValue(settings.fileName(), section, key);
    return value.toString();
}

namespace {

// The line QSettings writes for key = value, escapes and all, found in a
// scratch file of its own.
QByteArray settingLine(const QString &section, const QString &key, const QString &value)
{
    QTemporaryDir scratch;
    const QString path = scratch.filePath(QStringLiteral("line.ini"));
    {
        QSettings one(path, QSettings::IniFormat);
        one.setValue(section + QLatin1Char('/') + key, value);
        one.sync();
    }
    QFile in(path);
    if (!scratch.isValid() || !in.open(QIODevice::ReadOnly))
        return {};
    for (const QByteArray &line : in.readAll().split('\n'))
        if (!line.startsWith('[') && line.contains('='))
            return line.trimmed();
    return {};
}

// Puts line into the file's text in place of key's line in section, or at
// the end of section, leaving every other line as it was.
QByteArray withLine(const QByteArray &text, const QString &section, const QString &key,
                    const QByteArray &line)
{
    QList<QByteArray> lines = text.split('\n');
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    const QByteArray header = '[' + section.toUtf8() + ']';
    qsizetype insertAt = -1;
    bool inSection = false;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QByteArray trimmed = lines.at(i).trimmed();
        if (trimmed.startsWith('[')) {
            inSection = trimmed == header;
            if (inSection)
                insertAt = i + 1;
            continue;
        }
        if (!inSection)
            continue;
        const qsizetype equals = trimmed.indexOf('=');
        if (equals > 0 && trimmed.left(equals).trimmed() == key.toUtf8()) {
            lines[i] = line;
            return lines.join('\n') + '\n';
        }
        if (!trimmed.isEmpty())
            insertAt = i + 1;
    }
    if (insertAt < 0) {
        if (!lines.isEmpty())
            lines << QByteArray();
        lines << header;
        insertAt = lines.size();
    }
    lines.insert(insertAt, line);
    return lines.join('\n') + '\n';
}

} // namespace

void FileSettingsStore::save(const QString &app, const QString &section, const QString &key,
                             const QString &value)
{
    QSettings settings(QSettings::IniFormat, QSettings::UserScope, app, app);
    const QString path = settings.fileName();
    const QByteArray line = settingLine(section, key, value);
    QFile old(path);
    // Only this key's line changes: QSettings would write the whole file anew
    // and turn what the user typed, "a:1,b:2", into a list of its own.
    if (!line.isEmpty() && settings.status() == QSettings::NoError &&
        (!old.exists() || old.open(QIODevice::ReadOnly))) {
        const QByteArray text = withLine(old.isOpen() ? old.readAll() : QByteArray(), section, key, line);
        old.close();
        QDir().mkpath(QFileInfo(path).absolutePath());
        // Through a new file renamed over the old one, so a crash mid-save
        // leaves the old file whole; commit() puts it on disk now.
        QSaveFile out(path);
        if (out.open(QIODevice::WriteOnly) && out.write(text) == text.size() && out.commit())
            return;
    }
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
