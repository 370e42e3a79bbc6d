#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace zun {

struct Receiver;

// One line of a ".zun" receiver settings file.
struct SettingsLine
{
    int address = 0;
    QString name;
    int group = 0;
    int channel = 0;
    QString channelFreqCode;
    QString manualFreqCode;
    int squelch = 0;
    int secondLevel = 0;
    bool manualFreq = false;
    bool mute = false;
};

struct SettingsParse
{
    QList<SettingsLine> lines;
    QString error; // empty when the whole file is good; else names the line
};

inline const QString kSettingsFilter = QStringLiteral("Receiver Setting(*.zun)|*.zun");

// The file text for records in table order: comma separated, strings in
// double quotes, flags as 0 / -1, CR LF after every line.
[[nodiscard]] QByteArray formatSettings(const QList<Receiver> &records);

// Reads a whole file's text; any bad line rejects the whole file.
[[nodiscard]] SettingsParse parseSettings(const QByteArray &text);

// Writes through a temporary file so a failed save leaves the old file whole.
// Returns an empty text on success, else what went wrong.
[[nodiscard]] QString saveSettingsFile(const QString &path, const QByteArray &content);

} // namespace zun
