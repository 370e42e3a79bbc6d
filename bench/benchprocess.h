#pragma once

#include "benchwire.h"

#include <QProcess>
#include <QString>

#include <memory>
#include <optional>

namespace zunbench {

struct SimOptions
{
    int count = 64;
    int baud = 115200;
    double turnaroundMicros = 1000;
    bool startStopped = false; // every receiver off the line from the start
    int retry = 2;             // the program's stored retry count
    bool wholeReplies = false; // each reply in one piece instead of paced
};

// zunoria-sim on a pseudo-terminal, logging every frame and reply.
class SimProcess
{
public:
    SimProcess(const QString &binDir, const SimOptions &options, const QString &scratch);
    ~SimProcess();
    bool start();
    bool running() const;
    QString ptyPath() const { return m_pty; }
    QString lastError() const { return m_error; }
    void console(const QString &line);

    // True once the program's first level read after detection is on the line.
    bool waitForPolling(int timeoutMillis);
    // True once the log has grown and then stayed unchanged for two seconds.
    bool waitForSilence(int timeoutMillis);
    qint64 logSize() const;
    WireLog readLog(qint64 from) const;

private:
    QString m_bin;
    SimOptions m_options;
    QString m_logPath;
    QString m_pty;
    QString m_error;
    QProcess m_process;
};

struct CpuSample
{
    double cpuSeconds = 0;
    double wallSeconds = 0;
};
double cpuPercent(const CpuSample &before, const CpuSample &after);
// The folder given with --bin (where zunoria and zunoria-sim are), else the current one.
QString binFolder(const QStringList &arguments);
// CPU time so far of a running child process.
CpuSample cpuOf(qint64 pid);

// The real program on COM1 = the simulator's pty, offscreen, with its own
// settings folder; the other seven ports point nowhere.
class ProgramProcess
{
public:
    // headless: without a window or display, its event lines discarded.
    ProgramProcess(const QString &binDir, const QString &pty, int baud, const QString &scratch, int retry = 2,
                   bool headless = false);
    ~ProgramProcess();
    void start();
    bool running() const;
    CpuSample cpu() const;
    qint64 peakKiB() const;
    qint64 residentKiB() const;
    // Before start(): more options, and the open-file limit the program gets.
    void addArguments(const QStringList &args) { m_args << args; }
    void setFileLimit(int files) { m_fileLimit = files; }

private:
    qint64 statusKiB(const QByteArray &field) const;
    QString m_bin;
    QStringList m_args;
    QProcessEnvironment m_env;
    QProcess m_process;
    bool m_headless = false;
    int m_fileLimit = 0;
};

// Milliseconds from process start to the main window shown, detection
// excluded, as the demo reports it; nothing when it did not say.
std::optional<double> demoStartupMillis(const QString &binDir, const QString &scratch);

// What strace saw of the serial driver's low-latency request on open.
QString lowLatencyProbe(const QString &binDir, const QString &scratch);

} // namespace zunbench
