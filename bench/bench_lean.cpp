// The program's polling beside a minimal client that only writes a level
// read and waits for the carriage return, on the same simulated line in the
// same run: both with the simulator pacing each character and with each
// reply arriving in one piece, for 64 and for 3 receivers. Pass times come
// from the simulator's wire log, so both are timed the same way.
#include "benchprocess.h"
#include "benchwire.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <cstdio>

using namespace zunbench;

namespace {

struct Figures
{
    bool ok = false;
    double passOverWire = 0; // median pass / median wire limit
    double cpuPercent = 0;
};

Figures fromLog(const WireLog &log, const SimOptions &sim, double cpu)
{
    const PassFigures passes = pollPasses(log, sim.baud, sim.turnaroundMicros);
    Figures f;
    if (passes.passMicros.size() < 3)
        return f;
    f.ok = true;
    f.passOverWire = stats(passes.passMicros).median / stats(passes.limitMicros).median;
    f.cpuPercent = cpu;
    return f;
}

Figures minimalClient(const QString &bin, const SimOptions &sim, const QString &scratch, int seconds)
{
    SimProcess line(bin, sim, scratch);
    if (!line.start())
        return {};
    QProcess client;
    client.start(
        QDir(bin).filePath(QStringLiteral("../bench/minimalclient")),
        {line.ptyPath(), QString::number(sim.baud), QString::number(sim.count), QString::number(seconds)});
    if (!client.waitForFinished((seconds + 10) * 1000) || client.exitCode() != 0)
        return {};
    const QList<QByteArray> said = client.readAllStandardOutput().trimmed().split(' ');
    if (said.size() != 3)
        return {};
    return fromLog(line.readLog(0), sim, 100.0 * said[0].toDouble() / said[1].toDouble());
}

Figures program(const QString &bin, const SimOptions &sim, const QString &scratch, int seconds)
{
    SimProcess line(bin, sim, scratch);
    if (!line.start())
        return {};
    ProgramProcess zunoria(bin, line.ptyPath(), sim.baud, scratch);
    zunoria.start();
    if (!zunoria.running() || !line.waitForPolling(60000))
        return {};
    QThread::sleep(1); // past the name reads that follow detection
    const CpuSample before = zunoria.cpu();
    const qint64 logStart = line.logSize();
    QThread::sleep(seconds);
    const CpuSample after = zunoria.cpu();
    return fromLog(line.readLog(logStart), sim, cpuPercent(before, after));
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const QString bin = binFolder(args);
    const int seconds = args.contains(QStringLiteral("--quick")) ? 3 : 10;
    QTemporaryDir scratch;
    if (!scratch.isValid())
        return 1;

    std::printf(
        "| line | receivers | minimal client: pass / wire, CPU | zunoria: pass / wire, CPU | pass ratio "
        "(goal <= 1.01) | CPU ratio (goal <= 2) |\n|---|---|---|---|---|---|\n");
    bool all = true;
    for (const bool whole : {false, true}) {
        for (const int count : {64, 3}) {
            SimOptions sim;
            sim.count = count;
            sim.wholeReplies = whole;
            const Figures minimal = minimalClient(bin, sim, scratch.path(), seconds);
            const Figures ours = program(bin, sim, scratch.path(), seconds);
            const char *kind = whole ? "whole replies" : "paced characters";
            if (!minimal.ok || !ours.ok) {
                std::printf("| %s | %d | could not measure | | | |\n", kind, count);
                all = false;
                continue;
            }
            std::printf("| %s | %d | %.4f x, %.2f %% | %.4f x, %.2f %% | %.4f | %.2f |\n", kind, count,
                        minimal.passOverWire, minimal.cpuPercent, ours.passOverWire, ours.cpuPercent,
                        ours.passOverWire / minimal.passOverWire, ours.cpuPercent / minimal.cpuPercent);
            std::fflush(stdout);
        }
    }
    return all ? 0 : 1;
}
