#include "feeds/lineexport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <functional>

namespace zun {

namespace {

// Counts as integers, levels and times to six significant digits.
QByteArray number(double value)
{
    if (std::floor(value) == value && std::abs(value) < 1e15)
        return QByteArray::number(static_cast<qint64>(value));
    return QByteArray::number(value, 'g', 6);
}

struct Family
{
    const char *name;
    const char *type;
    const char *help;
};

// One family: its HELP and TYPE, then a sample per call of add.
class FamilyWriter
{
public:
    FamilyWriter(QByteArray &out, const Family &family) : m_out(out), m_name(family.name)
    {
        m_out += QByteArray("# HELP ") + family.name + ' ' + family.help + '\n';
        m_out += QByteArray("# TYPE ") + family.name + ' ' + family.type + '\n';
    }
    void add(const QByteArray &labels, double value)
    {
        m_out += m_name + '{' + labels + "} " + number(value) + '\n';
    }

private:
    QByteArray &m_out;
    QByteArray m_name;
};

QByteArray receiverLabels(const LineSnapshot &line, const Receiver &rx)
{
    return "line=\"" + metricLabel(line.line) + "\",address=\"" + QByteArray::number(rx.address) +
           "\",name=\"" + metricLabel(rx.shownName()) + '"';
}

bool watched(const LineSnapshot &line, const Receiver &rx)
{
    return line.online && rx.online;
}

void eachReceiver(const QList<LineSnapshot> &lines,
                  const std::function<void(const LineSnapshot &, const Receiver &)> &visit)
{
    for (const LineSnapshot &line : lines)
        for (const Receiver &rx : line.receivers)
            visit(line, rx);
}

} // namespace

QByteArray metricLabel(const QString &value)
{
    QByteArray out;
    for (const char c : value.toUtf8()) {
        if (c == '\\')
            out += "\\\\";
        else if (c == '"')
            out += "\\\"";
        else if (c == '\n')
            out += "\\n";
        else
            out += c;
    }
    return out;
}

QByteArray stateJson(const QList<LineSnapshot> &lines)
{
    QJsonArray lineArray;
    for (const LineSnapshot &line : lines) {
        QJsonArray receivers;
        for (const Receiver &rx : line.receivers)
            receivers.append(QJsonObject{{QStringLiteral("address"), rx.address},
                                         {QStringLiteral("name"), rx.shownName()},
                                         {QStringLiteral("freq"), rx.frequencyMHz()},
                                         {QStringLiteral("rfa"), rx.levels.rfA},
                                         {QStringLiteral("rfb"), rx.levels.rfB},
                                         {QStringLiteral("af"), rx.audioPercent()},
                                         {QStringLiteral("battery"), rx.batteryPercent},
                                         {QStringLiteral("mute"), rx.mute},
                                         {QStringLiteral("online"), watched(line, rx)}});
        lineArray.append(QJsonObject{{QStringLiteral("line"), line.line},
                                     {QStringLiteral("online"), line.online},
                                     {QStringLiteral("host"), line.host},
                                     {QStringLiteral("receiversFound"), line.receiversFound},
                                     {QStringLiteral("receivers"), receivers}});
    }
    return QJsonDocument(QJsonObject{{QStringLiteral("lines"), lineArray}}).toJson(QJsonDocument::Compact);
}

QByteArray metricsText(const QList<LineSnapshot> &lines)
{
    QByteArray out;
    {
        FamilyWriter f(
            out, {"zunoria_receiver_online", "gauge", "1 while the receiver answers on a watched line."});
        eachReceiver(lines, [&](const LineSnapshot &l, const Receiver &rx) {
            f.add(receiverLabels(l, rx), watched(l, rx) ? 1 : 0);
        });
    }
    {
        FamilyWriter f(out, {"zunoria_receiver_rf_dbm", "gauge", "Received RF level per antenna in dBm."});
        eachReceiver(lines, [&](const LineSnapshot &l, const Receiver &rx) {
            if (!watched(l, rx))
                return;
            f.add(receiverLabels(l, rx) + ",antenna=\"a\"", rx.rfADbm());
            f.add(receiverLabels(l, rx) + ",antenna=\"b\"", rx.rfBDbm());
        });
    }
    {
        FamilyWriter f(out, {"zunoria_receiver_audio", "gauge", "Audio meter 0..99 (99: clipping)."});
        eachReceiver(lines, [&](const LineSnapshot &l, const Receiver &rx) {
            if (watched(l, rx))
                f.add(receiverLabels(l, rx), rx.audioPercent());
        });
    }
    {
        FamilyWriter f(out, {"zunoria_receiver_battery_percent", "gauge", "Transmitter battery in percent."});
        eachReceiver(lines, [&](const LineSnapshot &l, const Receiver &rx) {
            if (watched(l, rx) && rx.batteryPercent >= 0)
                f.add(receiverLabels(l, rx), rx.batteryPercent);
        });
    }
    {
        FamilyWriter f(out, {"zunoria_receiver_muted", "gauge", "1 while the receiver's output is muted."});
        eachReceiver(lines, [&](const LineSnapshot &l, const Receiver &rx) {
            if (watched(l, rx))
                f.add(receiverLabels(l, rx), rx.mute ? 1 : 0);
        });
    }
    const auto eachAddress =
        [&lines](const std::function<void(const QByteArray &, const BusCounters &)> &visit) {
            for (const LineSnapshot &line : lines)
                for (const BusCounters &c : line.health)
                    visit("line=\"" + metricLabel(line.line) + "\",address=\"" +
                              QByteArray::number(c.address) + '"',
                          c);
        };
    {
        FamilyWriter f(
            out, {"zunoria_bus_exchanges_total", "counter", "Exchanges on the line with this address."});
        eachAddress(
            [&](const QByteArray &labels, const BusCounters &c) { f.add(labels, double(c.exchanges)); });
    }
    {
        FamilyWriter f(
            out, {"zunoria_bus_timeouts_total", "counter", "Exchanges with this address left unanswered."});
        eachAddress(
            [&](const QByteArray &labels, const BusCounters &c) { f.add(labels, double(c.timeouts)); });
    }
    {
        FamilyWriter f(
            out, {"zunoria_bus_round_trip_seconds", "gauge", "Median round trip of the latest exchanges."});
        eachAddress([&](const QByteArray &labels, const BusCounters &c) {
            if (c.roundTripSeconds >= 0)
                f.add(labels, c.roundTripSeconds);
        });
    }
    return out;
}

} // namespace zun
