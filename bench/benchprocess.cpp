#include "benchprocess.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QThread>
#include <QUuid>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

namespace zunbench {

namespace {
QString uniqueIn(const QString &scratch, const QString &stem)
{
    return QDir(scratch).filePath(stem + QUuid::createUuid().toString(QUuid::Id128).left(8));
}

double monotonicSeconds()
{
    static QElapsedTimer clock = [] {
        QElapsedTimer t;
        t.start();
        return t;
    }();
    return clock.nsecsElapsed() / 1e9;
}

// Settings of a user who last ran on COM1 at this speed.
QString settingsFolder(const QString &scratch, int baud, int retry)
{
    const QString home = uniqueIn(scratch, QStringLiteral("config-"));
    QDir().mkpath(home + QStringLiteral("/KESTA_ZUN"));
    QFile ini(home + QStringLiteral("/KESTA_ZUN/KESTA_ZUN.ini"));
    if (ini.open(QIODevice::WriteOnly))
        ini.write(
            QStringLiteral("[MSComm]\nCommPort=1\nBaudrate=%1\nRetry=%2\n").arg(baud).arg(retry).toLatin1());
    return home;
}

QStringList portArguments(const QString &pty)
{
    QStringList args{QStringLiteral("--port"), QStringLiteral("COM1=") + pty};
    for (int n = 2; n <= 8; ++n)
        args << QStringLiteral("--port") << QStringLiteral("COM%1=/nonexistent/zunoria-bench-%1").arg(n);
    return args;
}

void stopProcess(QProcess &p)
{
    if (p.state() == QProcess::NotRunning)
        return;
    p.kill();
    p.waitForFinished(3000);
}
} // namespace

SimProcess::SimProcess(const QString &binDir, const SimOptions &options, const QString &scratch)
    : m_bin(binDir), m_options(options), m_logPath(uniqueIn(scratch, QStringLiteral("wire-")))
{
}

SimProcess::~SimProcess()
{
    m_process.write("quit\n");
    m_process.waitForFinished(1000);
    stopProcess(m_process);
}

bool SimProcess::start()
{
    m_process.setProcessChannelMode(QProcess::SeparateChannels);
    QStringList args{QStringLiteral("--count"),         QString::number(m_options.count),
                     QStringLiteral("--baud"),          QString::number(m_options.baud),
                     QStringLiteral("--turnaround-us"), QString::number(qRound(m_options.turnaroundMicros)),
                     QStringLiteral("--log"),           m_logPath,
                     QStringLiteral("--log-replies")};
    if (m_options.wholeReplies)
        args << QStringLiteral("--whole-replies");
    m_process.start(QDir(m_bin).filePath(QStringLiteral("zunoria-sim")), args);
    if (!m_process.waitForStarted(5000)) {
        m_error = QStringLiteral("zunoria-sim did not start");
        return false;
    }
    QDeadlineTimer deadline(5000);
    while (!m_process.canReadLine() && !deadline.hasExpired())
        m_process.waitForReadyRead(static_cast<int>(deadline.remainingTime()));
    m_pty = QString::fromLocal8Bit(m_process.readLine().trimmed());
    if (m_pty.isEmpty()) {
        m_error = QStringLiteral("zunoria-sim named no device");
        return false;
    }
    if (m_options.startStopped)
        for (int a = 1; a <= m_options.count; ++a)
            console(QStringLiteral("stop %1").arg(a));
    return true;
}

bool SimProcess::running() const
{
    return m_process.state() == QProcess::Running;
}

void SimProcess::console(const QString &line)
{
    m_process.write((line + QLatin1Char('\n')).toLatin1());
    m_process.waitForBytesWritten(1000);
}

qint64 SimProcess::logSize() const
{
    return QFileInfo(m_logPath).size();
}

WireLog SimProcess::readLog(qint64 from) const
{
    QFile f(m_logPath);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    f.seek(from);
    QByteArray text = f.readAll();
    // Start at a whole line.
    if (from > 0) {
        const qsizetype nl = text.indexOf('\n');
        text = nl >= 0 ? text.mid(nl + 1) : QByteArray();
    }
    return parseWireLog(text);
}

bool SimProcess::waitForPolling(int timeoutMillis)
{
    QDeadlineTimer deadline(timeoutMillis);
    static const QRegularExpression levelRead(QStringLiteral("^\\s*[0-9.]+ %[0-9A-F]{2}N$"),
                                              QRegularExpression::MultilineOption);
    while (!deadline.hasExpired()) {
        QFile f(m_logPath);
        if (f.open(QIODevice::ReadOnly) && levelRead.match(QString::fromLatin1(f.readAll())).hasMatch())
            return true;
        QThread::msleep(100);
    }
    m_error = QStringLiteral("the program never polled");
    return false;
}

bool SimProcess::waitForSilence(int timeoutMillis)
{
    QDeadlineTimer deadline(timeoutMillis);
    qint64 last = -1;
    QElapsedTimer unchanged;
    unchanged.start();
    while (!deadline.hasExpired()) {
        const qint64 size = logSize();
        if (size != last) {
            last = size;
            unchanged.restart();
        } else if (size > 0 && unchanged.elapsed() >= 2000) {
            return true;
        }
        QThread::msleep(100);
    }
    return false;
}

double cpuPercent(const CpuSample &before, const CpuSample &after)
{
    const double wall = after.wallSeconds - before.wallSeconds;
    return wall > 0 ? 100.0 * (after.cpuSeconds - before.cpuSeconds) / wall : 0.0;
}

ProgramProcess::ProgramProcess(const QString &binDir, const QString &pty, int baud, const QString &scratch,
                               int retry, bool headless)
    : m_bin(binDir), m_args(portArguments(pty)), m_env(QProcessEnvironment::systemEnvironment()),
      m_headless(headless)
{
    if (headless) {
        m_args << QStringLiteral("--headless");
        for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            m_env.remove(QLatin1String(name));
    } else {
        m_env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    }
    m_env.insert(QStringLiteral("XDG_CONFIG_HOME"), settingsFolder(scratch, baud, retry));
}

ProgramProcess::~ProgramProcess()
{
    stopProcess(m_process);
}

void ProgramProcess::start()
{
    m_process.setProcessEnvironment(m_env);
    // Without a window every event is a line on standard error: not for the table.
    m_process.setProcessChannelMode(m_headless ? QProcess::SeparateChannels
                                               : QProcess::ForwardedErrorChannel);
    m_process.setStandardOutputFile(QProcess::nullDevice());
    if (m_headless)
        m_process.setStandardErrorFile(QProcess::nullDevice());
    if (m_fileLimit > 0)
        m_process.setChildProcessModifier([limit = m_fileLimit] {
            rlimit files{};
            ::getrlimit(RLIMIT_NOFILE, &files);
            files.rlim_cur = static_cast<rlim_t>(limit);
            ::setrlimit(RLIMIT_NOFILE, &files);
        });
    m_process.start(QDir(m_bin).filePath(QStringLiteral("zunoria")), m_args);
    m_process.waitForStarted(5000);
}

bool ProgramProcess::running() const
{
    return m_process.state() == QProcess::Running;
}

CpuSample ProgramProcess::cpu() const
{
    return cpuOf(m_process.processId());
}

QString binFolder(const QStringList &arguments)
{
    const qsizetype at = arguments.indexOf(QStringLiteral("--bin"));
    return at >= 0 && at + 1 < arguments.size() ? arguments[at + 1] : QDir::currentPath();
}

CpuSample cpuOf(qint64 pid)
{
    CpuSample s;
    s.wallSeconds = monotonicSeconds();
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return s;
    const QByteArray text = stat.readAll();
    // Fields after the command name, which may hold blanks, start after ')'.
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    const double ticks = static_cast<double>(::sysconf(_SC_CLK_TCK));
    if (fields.size() > 12)
        s.cpuSeconds = (fields[11].toDouble() + fields[12].toDouble()) / ticks;
    return s;
}

qint64 ProgramProcess::peakKiB() const
{
    return statusKiB("VmHWM:");
}

qint64 ProgramProcess::residentKiB() const
{
    return statusKiB("VmRSS:");
}

qint64 ProgramProcess::statusKiB(const QByteArray &field) const
{
    QFile status(QStringLiteral("/proc/%1/status").arg(m_process.processId()));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith(field))
            return line.mid(field.size()).trimmed().split(' ').value(0).toLongLong();
    return 0;
}

std::optional<double> demoStartupMillis(const QString &binDir, const QString &scratch)
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), settingsFolder(scratch, 115200, 2));
    env.insert(QStringLiteral("ZUN_REPORT_STARTUP"), QStringLiteral("1"));
    p.setProcessEnvironment(env);
    p.setStandardOutputFile(QProcess::nullDevice());
    QElapsedTimer sinceStart;
    sinceStart.start();
    p.start(QDir(binDir).filePath(QStringLiteral("zunoria")), {QStringLiteral("--demo")});
    QDeadlineTimer deadline(30000);
    QByteArray err;
    // "zunoria: main window shown after N ms, load M ms". The load step is
    // the line's work (detection and text reads), which the figure leaves
    // out; the total is timed here, from the moment the process is started.
    static const QRegularExpression report(QStringLiteral("shown after ([0-9.]+) ms, load ([0-9.]+) ms"));
    std::optional<double> result;
    while (!deadline.hasExpired() && p.state() != QProcess::NotRunning && !result) {
        p.waitForReadyRead(200);
        err += p.readAllStandardError();
        const auto m = report.match(QString::fromLocal8Bit(err));
        if (m.hasMatch())
            result = static_cast<double>(sinceStart.elapsed()) - m.captured(2).toDouble();
    }
    stopProcess(p);
    return result;
}

QString lowLatencyProbe(const QString &binDir, const QString &scratch)
{
    SimOptions options;
    options.count = 1;
    SimProcess sim(binDir, options, scratch);
    if (!sim.start())
        return QStringLiteral("could not measure: %1").arg(sim.lastError());
    const QString trace = uniqueIn(scratch, QStringLiteral("strace-"));
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), settingsFolder(scratch, 115200, 2));
    p.setProcessEnvironment(env);
    p.setStandardOutputFile(QProcess::nullDevice());
    p.setStandardErrorFile(QProcess::nullDevice());
    p.start(QStringLiteral("strace"),
            QStringList{QStringLiteral("-f"), QStringLiteral("-e"), QStringLiteral("trace=ioctl"),
                        QStringLiteral("-o"), trace, QDir(binDir).filePath(QStringLiteral("zunoria"))} +
                portArguments(sim.ptyPath()));
    if (!p.waitForStarted(5000))
        return QStringLiteral("could not measure: strace is not installed");
    sim.waitForPolling(20000);
    stopProcess(p);
    QFile f(trace);
    const QByteArray text = f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    // A killed strace lets the program it traced run on: end it too, or it
    // lingers through every later measurement. With -f each line starts
    // with the process (or thread) id.
    if (const qint64 traced = text.left(text.indexOf(' ')).toLongLong(); traced > 1)
        ::kill(static_cast<pid_t>(traced), SIGKILL);
    if (text.contains("TIOCSSERIAL"))
        return QStringLiteral("yes: TIOCSSERIAL sent");
    if (text.contains("TIOCGSERIAL"))
        return QStringLiteral("yes: TIOCGSERIAL asked, the pty refused it, so nothing to set");
    return QStringLiteral("no TIOCGSERIAL/TIOCSSERIAL seen");
}

} // namespace zunbench
