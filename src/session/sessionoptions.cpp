#include "session/sessionoptions.h"

#include "core/options.h"
#include "platform/settingsstore.h"

#include <QCommandLineParser>

namespace zun {

namespace {
const QString kLineOption = QStringLiteral("line");
const QString kShowLogOption = QStringLiteral("show-log");
const QString kHeadlessOption = QStringLiteral("headless");
const QString kFleetOption = QStringLiteral("fleet");
} // namespace

bool validLineName(const QString &name)
{
    if (name.isEmpty() || name.size() > 64)
        return false;
    for (const QChar c : name)
        if (!c.isPrint() || c.isSpace() || c == QLatin1Char('/') || c == QLatin1Char('+') ||
            c == QLatin1Char('#'))
            return false;
    return true;
}

QList<QCommandLineOption> sessionCommandLineOptions()
{
    QList<QCommandLineOption> options = feedCommandLineOptions();
    options << QCommandLineOption(
                   kLineOption,
                   QStringLiteral("Name of this line in MQTT topics, OSC paths, the dashboard, "
                                  "alarms and the show log (default: the port the receivers "
                                  "are found on, e.g. COM3)."),
                   QStringLiteral("NAME"))
            << QCommandLineOption(kShowLogOption,
                                  QStringLiteral("Write the show log to FILE from the start (CSV)."),
                                  QStringLiteral("FILE"))
            << QCommandLineOption(kHeadlessOption,
                                  QStringLiteral("Run without a window or display: detect, poll, feed, "
                                                 "log and raise alarms; messages go to standard error, "
                                                 "SIGTERM ends it. Offline receivers and a lost line are "
                                                 "recovered automatically."))
            << QCommandLineOption(kFleetOption,
                                  QStringLiteral("Run no serial line: show every line on the MQTT broker "
                                                 "(--mqtt) on one web dashboard (--web), with /api/state "
                                                 "and /metrics."));
    return options;
}

std::optional<SessionOptions> readSessionOptions(const QCommandLineParser &parser, const SettingsStore &store,
                                                 QString *error)
{
    const auto feeds = applyFeedArguments(parser, loadFeedOptions(store, kAppName), error);
    if (!feeds)
        return std::nullopt;
    SessionOptions options;
    options.feeds = *feeds;
    const QString storedLine = store.get(kAppName, kFeedSection, kLineKey).trimmed();
    if (validLineName(storedLine))
        options.lineName = storedLine;
    if (parser.isSet(kLineOption)) {
        const QString line = parser.value(kLineOption);
        if (!validLineName(line)) {
            if (error)
                *error = QStringLiteral("--line expects 1 to 64 characters without blanks, '/', '+' or '#', "
                                        "not \"%1\"")
                             .arg(line);
            return std::nullopt;
        }
        options.lineName = line;
    }
    options.showLogFile = parser.value(kShowLogOption);
    options.headless = parser.isSet(kHeadlessOption);
    options.fleet = parser.isSet(kFleetOption);
    options.autoRecover =
        options.headless || store.get(kAppName, kMonitorSection, kAutoRecoverKey) == QLatin1String("1");
    return options;
}

QString fleetOptionsProblem(const QCommandLineParser &parser, const SessionOptions &options)
{
    if (!options.fleet)
        return {};
    if (options.feeds.mqttHost.isEmpty())
        return QStringLiteral("--fleet needs a broker: --mqtt HOST[:PORT]");
    if (options.feeds.webPort == 0)
        return QStringLiteral("--fleet needs a web port: --web PORT");
    // Options of a serial line, by the names main and this file give them.
    const QStringList given = parser.optionNames();
    for (const QString &lineOption :
         {kHeadlessOption, kLineOption, kShowLogOption, QStringLiteral("demo"), QStringLiteral("port")})
        if (given.contains(lineOption))
            return QStringLiteral("--fleet runs no serial line and takes no --%1").arg(lineOption);
    if (!parser.positionalArguments().isEmpty())
        return QStringLiteral("--fleet runs no serial line and takes no settings file");
    return {};
}

} // namespace zun
