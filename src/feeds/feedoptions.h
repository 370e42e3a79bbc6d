#pragma once

#include <QCommandLineOption>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

class QCommandLineParser;

namespace zun {

class SettingsStore;

struct OscTarget
{
    QString host;
    quint16 port = 0;
    bool operator==(const OscTarget &) const = default;
};

// What the live feeds are told at start. Every feed is off until it is given
// somewhere to go.
struct FeedOptions
{
    QList<OscTarget> oscTargets;

    QString mqttHost; // empty: MQTT off
    quint16 mqttPort = 1883;
    QString mqttUser;
    QString mqttPassword;
    QString mqttCaFile;       // set: TLS against this CA
    bool mqttControl = false; // zunoria/<line>/rx/<aa>/set is obeyed
    bool mqttDiscovery = false;
    QString mqttDiscoveryPrefix = QStringLiteral("homeassistant");

    quint16 webPort = 0; // 0: dashboard off
    QString webToken;    // empty: a random one is made at start
    bool webAllowNetwork = false;

    bool operator==(const FeedOptions &) const = default;
};

// The settings-store section holding the feed options.
inline const QString kFeedSection = QStringLiteral("Feeds");

// "host:port" with a port 1..65535; IPv6 literals in brackets ("[::1]:9000").
[[nodiscard]] std::optional<OscTarget> parseOscTarget(const QString &text);

// A topic prefix we publish under: levels without wildcards, none of them empty.
[[nodiscard]] bool validTopicPrefix(const QString &text);

// Reads section "Feeds" of the settings store; anything invalid is left at
// its default (off) silently.
[[nodiscard]] FeedOptions loadFeedOptions(const SettingsStore &store, const QString &app);

// --osc HOST:PORT (repeatable), --mqtt HOST[:PORT], --mqtt-control,
// --mqtt-discovery, --mqtt-discovery-prefix PREFIX, --web PORT, --web-token TOKEN.
[[nodiscard]] QList<QCommandLineOption> feedCommandLineOptions();

// Lays what the command line names over the stored options; nullopt with a
// message in *error when a value is malformed.
[[nodiscard]] std::optional<FeedOptions> applyFeedArguments(const QCommandLineParser &parser,
                                                            FeedOptions options, QString *error);

} // namespace zun
