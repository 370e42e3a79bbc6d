#pragma once

#include <QChar>
#include <QString>

#include <optional>

namespace zun {

// One line of the show log. Columns a kind of line does not carry stay empty.
struct ShowLogRow
{
    QString time;  // ISO 8601 with milliseconds
    QString event; // "level", "scan", "recorder", "drop", "offline", "back"
    int address = 0;
    QString name;
    std::optional<double> frequencyMHz;
    std::optional<double> rfADbm;
    std::optional<double> rfBDbm;
    std::optional<int> audio;
    std::optional<int> batteryPercent;
    std::optional<int> squelch;
    std::optional<bool> mute;
    std::optional<bool> online;
    QChar antenna; // drop lines: 'A' or 'B'
    std::optional<int> drops;
};

// The column names, the first line of a new log.
[[nodiscard]] QString showLogHeader();
// Comma-separated, dot decimals whatever the locale, newline at the end.
[[nodiscard]] QString showLogLine(const ShowLogRow &row);

} // namespace zun
