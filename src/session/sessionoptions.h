#pragma once

#include "feeds/feedoptions.h"

#include <QCommandLineOption>
#include <QList>
#include <QString>

#include <optional>

class QCommandLineParser;

namespace zun {

class SettingsStore;

// What a receiver session is told at start, from the settings store and the
// command line.
struct SessionOptions
{
    FeedOptions feeds;
    // The name every listener gives the line; empty: the port the receivers
    // were found on ("COM3").
    QString lineName;
    // Set: the show log runs from the first detection on.
    QString showLogFile;
    // Offline receivers are woken and a lost line reopened without a click.
    bool autoRecover = false;
    // No window: questions are answered at once and messages printed.
    bool headless = false;
    // Where settings saved before a frequency plan is deployed go; empty: the
    // user's data folder.
    QString dataFolder;
    // No serial line: every line on the broker, served on the web port.
    bool fleet = false;
};

// Keys of the settings store that belong to the session.
inline const QString kLineKey = QStringLiteral("Line");               // section "Feeds"
inline const QString kMonitorSection = QStringLiteral("Monitor");     // section of the monitor options
inline const QString kAutoRecoverKey = QStringLiteral("AutoRecover"); // "1": on

// A line name goes into MQTT topics and OSC paths, so it is one topic level:
// 1..64 printable characters without '/', '+', '#' or blanks.
[[nodiscard]] bool validLineName(const QString &name);

// The feed options and --line NAME, --show-log FILE, --headless, --fleet.
[[nodiscard]] QList<QCommandLineOption> sessionCommandLineOptions();

// The stored options with the command line laid over them; nullopt with a
// message in *error when a value given on the command line is malformed.
// A malformed stored value is left at its default silently.
[[nodiscard]] std::optional<SessionOptions> readSessionOptions(const QCommandLineParser &parser,
                                                               const SettingsStore &store, QString *error);

// What is wrong with a --fleet command line, in one sentence; empty when
// nothing is (or --fleet is not given). A fleet needs a broker and a web
// port and takes nothing that belongs to a serial line.
[[nodiscard]] QString fleetOptionsProblem(const QCommandLineParser &parser, const SessionOptions &options);

} // namespace zun
