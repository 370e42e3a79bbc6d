#pragma once

#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QVariant>
#include <QtGlobal>

namespace zun {

// A loopback TCP port nobody listened on a moment ago.
quint16 freeLoopbackPort();

// A helper program the test starts; killed however the test ends.
struct Child
{
    ~Child() { stop(); }
    void stop()
    {
        process.kill();
        process.waitForFinished(3000);
    }
    QProcess process;
};

// mosquitto_sub -v on a filter: the latest payload and a count per topic. An
// empty payload reads "(null)", as mosquitto_sub prints it.
struct Subscriber
{
    explicit Subscriber(quint16 port, const QString &filter = QStringLiteral("zunoria/#"));
    QString field(const QString &topic, const QString &key) const
    {
        return QJsonDocument::fromJson(latest.value(topic)).object().value(key).toVariant().toString();
    }
    QHash<QString, QByteArray> latest;
    QHash<QString, int> counts;
    QList<QByteArray> messages; // "topic payload", in order
    // Last, so it stops first: its final output must still find the lists above.
    Child child;
};

// Starts a server and waits until it takes connections on the loopback port.
bool startServer(Child &child, const QString &program, const QStringList &arguments, quint16 port);

// Starts the simulator built beside the tests; the pseudo-terminal it serves, or empty.
QString startSimulator(Child &child, const QStringList &arguments);

// Sends raw bytes and returns the answer once it is whole (its head and the
// body it announces), the server closes, or a second passes without a byte.
QByteArray exchange(quint16 port, const QByteArray &request);
// A GET request for target on localhost.
QByteArray get(const QByteArray &target);

// zunoria --headless on COM1 = device, as a service starts it: no display at
// all, its own settings folder. Returns what it said once it said what it
// found (or gave up waiting).
QByteArray startHeadless(Child &program, const QString &configHome, const QString &device,
                         const QStringList &arguments);

} // namespace zun
