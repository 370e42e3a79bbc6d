#pragma once

#include <QProcess>
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

// Starts a server and waits until it takes connections on the loopback port.
bool startServer(Child &child, const QString &program, const QStringList &arguments, quint16 port);

// Starts the simulator built beside the tests; the pseudo-terminal it serves, or empty.
QString startSimulator(Child &child, const QStringList &arguments);

// User and system CPU time this process used so far.
double cpuSeconds();

} // namespace zun
