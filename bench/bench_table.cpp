// Runs the real zunoria executable against zunoria-sim on a pseudo-terminal
// and prints every figure beside the limit the line allows, measured in the
// same run. The simulator logs each frame and reply with its wire time, so
// pass times come from the line itself, not from the program's own account.
#include "benchprocess.h"
#include "benchwire.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <vector>

using namespace zunbench;

namespace {

struct Row
{
    QString what;
    QString measured;
    QString limit;
    QString ratio;
    QString goal;
};

std::vector<Row> g_rows;

void addRow(const QString &what, const QString &measured, const QString &limit, const QString &ratio,
            const QString &goal)
{
    g_rows.push_back({what, measured, limit, ratio, goal});
    std::printf("  %s: %s (limit %s, ratio %s, goal %s)\n", qPrintable(what), qPrintable(measured),
                qPrintable(limit), qPrintable(ratio), qPrintable(goal));
    std::fflush(stdout);
}

QString ms(double micros)
{
    return QString::number(micros / 1000.0, 'f', 2) + QStringLiteral(" ms");
}

QString spread(const Stats &s, double scale, int decimals, const QString &unit)
{
    return QStringLiteral("%1 / %2 / %3%4")
        .arg(s.min * scale, 0, 'f', decimals)
        .arg(s.median * scale, 0, 'f', decimals)
        .arg(s.max * scale, 0, 'f', decimals)
        .arg(unit);
}

struct Run
{
    Run(const QString &binDir, const SimOptions &sim, const QString &scratch, bool headless = false)
        : m_sim(binDir, sim, scratch)
    {
        if (!m_sim.start())
            return;
        m_program =
            std::make_unique<ProgramProcess>(binDir, m_sim.ptyPath(), sim.baud, scratch, sim.retry, headless);
        m_program->start();
    }
    bool ok() const { return m_sim.running() && m_program && m_program->running(); }
    SimProcess m_sim;
    std::unique_ptr<ProgramProcess> m_program;
};

// Poll pass time against the wire over N receivers at one baud rate.
void pollPass(const QString &bin, const QString &scratch, int receivers, int baud, int seconds,
              const QString &goal, int memorySeconds = 0)
{
    SimOptions sim;
    sim.count = receivers;
    sim.baud = baud;
    Run run(bin, sim, scratch);
    if (!run.ok() || !run.m_sim.waitForPolling(60000)) {
        addRow(QStringLiteral("poll pass, %1 receivers @ %2").arg(receivers).arg(baud),
               QStringLiteral("could not measure: %1").arg(run.m_sim.lastError()), "-", "-", goal);
        return;
    }
    const CpuSample before = run.m_program->cpu();
    const auto logStart = run.m_sim.logSize();
    QThread::sleep(seconds);
    const CpuSample after = run.m_program->cpu();
    const WireLog log = run.m_sim.readLog(logStart);
    const PassFigures passes = pollPasses(log, baud, sim.turnaroundMicros);
    const QString label = QStringLiteral("poll pass, %1 receivers @ %2 baud").arg(receivers).arg(baud);
    if (passes.passMicros.empty()) {
        addRow(label, QStringLiteral("could not measure: no complete pass in the log"), "-", "-", goal);
        return;
    }
    const Stats s = stats(passes.passMicros);
    const Stats limit = stats(passes.limitMicros);
    addRow(label + QStringLiteral(" (min/median/max)"), spread(s, 1e-3, 2, QStringLiteral(" ms")),
           ms(limit.median), QString::number(s.median / limit.median, 'f', 3), goal);
    const double cpu = cpuPercent(before, after);
    addRow(QStringLiteral("CPU while polling %1 receivers @ %2").arg(receivers).arg(baud),
           QString::number(cpu, 'f', 2) + QStringLiteral(" % of a core"), QStringLiteral("0 %"), "-",
           receivers == 64 ? QStringLiteral("<= 1.5 %") : QStringLiteral("<= 2 %"));
    if (memorySeconds > seconds)
        QThread::sleep(memorySeconds - seconds);
    if (memorySeconds > 0)
        addRow(QStringLiteral("peak memory, 64 live panels after %1 s of polling").arg(memorySeconds),
               QString::number(run.m_program->peakKiB() / 1024.0, 'f', 1) + QStringLiteral(" MB"), "-", "-",
               QStringLiteral("<= 60 MB"));
}

// The same polling without a window must cost no more than with one.
// Interleaved, so that a busier moment of the machine hits both alike.
void headlessAgainstWindow(const QString &bin, const QString &scratch, int seconds)
{
    SimOptions sim;
    sim.count = 64;
    double cpu[2] = {0, 0};
    qint64 peak = 0;
    for (int round = 0; round < 2; ++round) {
        for (const bool headless : {false, true}) {
            Run run(bin, sim, scratch, headless);
            if (!run.ok() || !run.m_sim.waitForPolling(60000)) {
                addRow(QStringLiteral("CPU polling 64 headless"), QStringLiteral("could not measure"), "-",
                       "-", QStringLiteral("<= window"));
                return;
            }
            const CpuSample before = run.m_program->cpu();
            QThread::sleep(seconds);
            cpu[headless] += cpuPercent(before, run.m_program->cpu()) / 2;
            if (headless)
                peak = std::max(peak, run.m_program->peakKiB());
        }
    }
    addRow(QStringLiteral("CPU polling 64 @ 115200: headless against the window (2 rounds each)"),
           QStringLiteral("%1 % against %2 % of a core").arg(cpu[1], 0, 'f', 2).arg(cpu[0], 0, 'f', 2), "-",
           QString::number(cpu[1] / cpu[0], 'f', 2), QStringLiteral("<= 1.00"));
    addRow(QStringLiteral("peak memory headless, 64 receivers after %1 s").arg(seconds),
           QString::number(peak / 1024.0, 'f', 1) + QStringLiteral(" MB"), "-", "-",
           QStringLiteral("<= 25 MB"));
}

void detection(const QString &bin, const QString &scratch)
{
    SimOptions sim;
    sim.count = 64;
    Run run(bin, sim, scratch);
    if (!run.ok() || !run.m_sim.waitForPolling(60000)) {
        addRow(QStringLiteral("detection, 64 receivers"), QStringLiteral("could not measure"), "-", "-",
               QStringLiteral("<= 1.05"));
        return;
    }
    const auto d = detectionFigures(run.m_sim.readLog(0), sim.baud, sim.turnaroundMicros);
    if (!d) {
        addRow(QStringLiteral("detection, 64 receivers"), QStringLiteral("could not measure: log incomplete"),
               "-", "-", QStringLiteral("<= 1.05"));
        return;
    }
    addRow(QStringLiteral("detection, 64 receivers @ 115200"), ms(d->measuredMicros), ms(d->limitMicros),
           QString::number(d->measuredMicros / d->limitMicros, 'f', 3), QStringLiteral("<= 1.05"));
}

void idle(const QString &bin, const QString &scratch, int seconds)
{
    // Mode 1 with nobody online: every receiver found, then taken off the line.
    SimOptions sim;
    sim.count = 3;
    Run run(bin, sim, scratch);
    if (!run.ok() || !run.m_sim.waitForPolling(60000)) {
        addRow(QStringLiteral("CPU idle, polling mode, nobody online"), QStringLiteral("could not measure"),
               "-", "-", QStringLiteral("<= 0.5 %"));
        return;
    }
    for (int a = 1; a <= 3; ++a)
        run.m_sim.console(QStringLiteral("stop %1").arg(a));
    QThread::msleep(3000); // each silent receiver costs its retries once
    const CpuSample before = run.m_program->cpu();
    QThread::sleep(seconds);
    const CpuSample after = run.m_program->cpu();
    addRow(QStringLiteral("CPU idle, polling mode, nobody online"),
           QString::number(cpuPercent(before, after), 'f', 2) + QStringLiteral(" % of a core"),
           QStringLiteral("0 %"), "-", QStringLiteral("<= 0.5 %"));
}

void idleNothingFound(const QString &bin, const QString &scratch, int seconds)
{
    // Mode 0: nobody answers; one attempt per address keeps the scan short.
    SimOptions sim;
    sim.count = 1;
    sim.startStopped = true;
    sim.retry = 0;
    Run run(bin, sim, scratch);
    if (!run.ok()) {
        addRow(QStringLiteral("CPU idle, nothing found"), QStringLiteral("could not measure"), "-", "-",
               QStringLiteral("<= 0.5 %"));
        return;
    }
    // 64 addresses x 100 ms plus the broadcasts, then the program sits in mode 0.
    if (!run.m_sim.waitForSilence(20000)) {
        addRow(QStringLiteral("CPU idle, nothing found"),
               QStringLiteral("could not measure: line never quiet"), "-", "-", QStringLiteral("<= 0.5 %"));
        return;
    }
    const CpuSample before = run.m_program->cpu();
    QThread::sleep(seconds);
    const CpuSample after = run.m_program->cpu();
    addRow(QStringLiteral("CPU idle, nothing found (mode 0)"),
           QString::number(cpuPercent(before, after), 'f', 2) + QStringLiteral(" % of a core"),
           QStringLiteral("0 %"), "-", QStringLiteral("<= 0.5 %"));
}

void startup(const QString &bin, const QString &scratch)
{
    std::vector<double> shown;
    for (int i = 0; i < 5; ++i) {
        const auto millis = demoStartupMillis(bin, scratch);
        if (millis)
            shown.push_back(*millis);
    }
    if (shown.empty()) {
        addRow(QStringLiteral("start-up to main window (demo, 12 receivers)"),
               QStringLiteral("could not measure"), "-", "-", QStringLiteral("<= 300 ms"));
        return;
    }
    addRow(QStringLiteral("start-up to main window, detection excluded (min/median/max)"),
           spread(stats(shown), 1.0, 0, QStringLiteral(" ms")), "-", "-", QStringLiteral("<= 300 ms"));
}

void lowLatency(const QString &bin, const QString &scratch)
{
    addRow(QStringLiteral("low-latency flag asked for on open"), lowLatencyProbe(bin, scratch), "-", "-",
           QStringLiteral("asked"));
}

void printTable()
{
    std::printf("\n| figure | measured | limit | ratio | goal |\n|---|---|---|---|---|\n");
    for (const Row &r : g_rows)
        std::printf("| %s | %s | %s | %s | %s |\n", qPrintable(r.what), qPrintable(r.measured),
                    qPrintable(r.limit), qPrintable(r.ratio), qPrintable(r.goal));
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const QString bin = binFolder(args);
    const bool quick = args.contains(QStringLiteral("--quick"));
    const int seconds = quick ? 3 : 10;
    QTemporaryDir scratch;
    if (!scratch.isValid()) {
        std::fprintf(stderr, "bench_table: no scratch folder\n");
        return 1;
    }
    std::printf("measuring with %s (each figure over %d s)\n", qPrintable(bin), seconds);
    pollPass(bin, scratch.path(), 64, 115200, seconds, QStringLiteral("<= 1.03"), quick ? seconds : 60);
    pollPass(bin, scratch.path(), 64, 9600, seconds, QStringLiteral("-"));
    pollPass(bin, scratch.path(), 3, 115200, seconds, QStringLiteral("-"));
    detection(bin, scratch.path());
    headlessAgainstWindow(bin, scratch.path(), seconds);
    idle(bin, scratch.path(), seconds);
    idleNothingFound(bin, scratch.path(), seconds);
    startup(bin, scratch.path());
    lowLatency(bin, scratch.path());
    printTable();
    const bool measuredAll = std::none_of(g_rows.begin(), g_rows.end(), [](const Row &r) {
        return r.measured.startsWith(QStringLiteral("could not measure"));
    });
    return measuredAll ? 0 : 1;
}
