#include "support/netsupport.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <sys/resource.h>

namespace zun {

quint16 freeLoopbackPort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost, 0);
    return server.serverPort();
}

bool startServer(Child &child, const QString &program, const QStringList &arguments, quint16 port)
{
    child.process.start(program, arguments);
    const auto listening = [port] {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, port);
        return socket.waitForConnected(200);
    };
    return child.process.waitForStarted(5000) && QTest::qWaitFor(listening, 5000);
}

QString startSimulator(Child &child, const QStringList &arguments)
{
    // Tests are built in <build>/tests, the simulator in <build>/src.
    child.process.start(QCoreApplication::applicationDirPath() + "/../src/zunoria-sim", arguments);
    for (QDeadlineTimer deadline(5000); !child.process.canReadLine() && !deadline.hasExpired();)
        child.process.waitForReadyRead(100);
    const QString device = QString::fromLocal8Bit(child.process.readLine()).trimmed();
    return device.startsWith('/') ? device : QString();
}

Subscriber::Subscriber(quint16 port, const QString &filter)
{
    QObject::connect(&child.process, &QProcess::readyReadStandardOutput, [this] {
        while (child.process.canReadLine()) {
            const QByteArray line = child.process.readLine().chopped(1);
            const QString topic = QString::fromUtf8(line.left(line.indexOf(' ')));
            latest[topic] = line.mid(line.indexOf(' ') + 1);
            ++counts[topic];
            messages << line;
        }
    });
    child.process.start("mosquitto_sub",
                        {"-h", "127.0.0.1", "-p", QString::number(port), "-v", "-t", filter});
}

double cpuSeconds()
{
    rusage u{};
    ::getrusage(RUSAGE_SELF, &u);
    return u.ru_utime.tv_sec + u.ru_stime.tv_sec + (u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e6;
}

} // namespace zun
