#include "support/netsupport.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

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

namespace {
// True once the answer's head and as much body as it announces are in.
bool wholeAnswer(const QByteArray &answer, bool head)
{
    const qsizetype end = answer.indexOf("\r\n\r\n");
    if (end < 0)
        return false;
    static const QRegularExpression length(QStringLiteral("\r\ncontent-length: *(\\d+)"),
                                           QRegularExpression::CaseInsensitiveOption);
    const auto match = length.match(QString::fromLatin1(answer.left(end)));
    const qsizetype body = head || !match.hasMatch() ? 0 : match.captured(1).toLongLong();
    return answer.size() >= end + 4 + body;
}
} // namespace

QByteArray exchange(quint16 port, const QByteArray &request)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    if (!socket.waitForConnected(1000))
        return {};
    socket.write(request);
    QByteArray answer;
    QElapsedTimer quiet;
    quiet.start();
    while (quiet.elapsed() < 1000 && socket.state() != QAbstractSocket::UnconnectedState &&
           !wholeAnswer(answer, request.startsWith("HEAD"))) {
        QTest::qWait(5); // a server under test may run in this event loop
        if (socket.bytesAvailable() > 0) {
            answer += socket.readAll();
            quiet.restart();
        }
    }
    return answer + socket.readAll();
}

QByteArray get(const QByteArray &target)
{
    return "GET " + target + " HTTP/1.1\r\nHost: localhost\r\n\r\n";
}

QByteArray startHeadless(Child &program, const QString &configHome, const QString &device,
                         const QStringList &arguments)
{
    QDir(configHome).mkpath("KESTA_ZUN");
    QFile ini(configHome + "/KESTA_ZUN/KESTA_ZUN.ini");
    if (!ini.open(QIODevice::WriteOnly) || ini.write("[MSComm]\nCommPort=1\nRetry=0\n") <= 0)
        return {};
    ini.close();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(name);
    environment.insert("XDG_CONFIG_HOME", configHome);
    program.process.setProcessEnvironment(environment);
    program.process.start(QCoreApplication::applicationDirPath() + "/../src/zunoria",
                          QStringList{"--headless", "--port", "COM1=" + device} + arguments);
    QByteArray output;
    // A program that never says it is what the caller's check shows.
    [[maybe_unused]] const bool said = QTest::qWaitFor(
        [&] {
            program.process.waitForReadyRead(50);
            output += program.process.readAllStandardError();
            return output.contains("receivers found");
        },
        10000);
    return output;
}

} // namespace zun
