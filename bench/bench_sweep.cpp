// The whole program's windows during a continuous spectrum sweep at 115200
// baud: zunoria-sim on a pseudo-terminal, the real line, work loop, main and
// detail windows (offscreen). Prints the process's CPU use, the points read
// and the pictures put on screen per second, and how far the picture on
// screen ever fell behind the line. "--reference N" first imports a scan
// file of N points as the reference trace.
#include "benchprocess.h"

#include "core/context.h"
#include "core/workloop.h"
#include "detail/detailwindow.h"
#include "mainscreen/mainwindow.h"
#include "mainscreen/rcvpanel.h"
#include "mainscreen/startupwindows.h"
#include "platform/mappedserialline.h"
#include "platform/portmap.h"
#include "rftools/rftools.h"
#include "rftools/scanplot.h"
#include "rftools/scantab.h"
#include "session/session.h"
#include "windowing/qtdesktop.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QPushButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolButton>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

double cpuSeconds()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// Counts the plot's paint events and the worst wait of a read point for one.
class PaintWatch : public QObject
{
public:
    int paints = 0;
    std::vector<qint64> lagsMicros;
    QElapsedTimer clock;
    qint64 oldestUnshown = -1;

    void pointRead()
    {
        if (oldestUnshown < 0)
            oldestUnshown = clock.nsecsElapsed() / 1000;
    }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            ++paints;
            if (oldestUnshown >= 0)
                lagsMicros.push_back(clock.nsecsElapsed() / 1000 - oldestUnshown);
            oldestUnshown = -1;
        }
        return false;
    }
};

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int seconds = app.arguments().contains(QStringLiteral("--quick")) ? 3 : 10;
    const qsizetype referenceAt = app.arguments().indexOf(QStringLiteral("--reference"));
    const int referencePoints = referenceAt > 0 ? app.arguments().value(referenceAt + 1).toInt() : 0;
    QTemporaryDir scratch;
    const QString referenceFile = scratch.filePath(QStringLiteral("reference.csv"));
    if (referencePoints > 0) {
        QFile file(referenceFile);
        if (!file.open(QIODevice::WriteOnly))
            return 1;
        for (int i = 0; i < referencePoints; ++i) // across the simulated receiver's 800..900 MHz
            file.write(QByteArray::number(800.0 + 100.0 * i / referencePoints, 'f', 4) +
                       (i % 2 ? ",-60\n" : ",-95\n"));
    }
    zunbench::SimOptions simOptions;
    simOptions.count = 1;
    zunbench::SimProcess sim(QCoreApplication::applicationDirPath() + QStringLiteral("/../src"), simOptions,
                             scratch.path());
    if (!sim.start()) {
        std::fprintf(stderr, "bench_sweep: %s\n", qPrintable(sim.lastError()));
        return 1;
    }

    zun::MemorySettingsStore settings;
    const QString app_ = QStringLiteral("KESTA_ZUN"), line_ = QStringLiteral("MSComm");
    settings.save(app_, line_, QStringLiteral("CommPort"), QStringLiteral("1"));
    settings.save(app_, line_, QStringLiteral("Baudrate"), QStringLiteral("115200"));
    settings.save(app_, line_, QStringLiteral("Retry"), QStringLiteral("0")); // a short detection
    zun::PortMap ports(
        settings, [] { return QStringList(); }, QString());
    bool mapped = ports.addOverride(QStringLiteral("COM1=") + sim.ptyPath());
    for (int n = 2; n <= 8; ++n)
        mapped = ports.addOverride(QStringLiteral("COM%1=/nonexistent/zunoria-bench-%1").arg(n)) && mapped;
    if (!mapped) {
        std::fprintf(stderr, "bench_sweep: the port map refused a mapping\n");
        return 1;
    }
    zun::MappedSerialLine line(ports);
    zun::SystemClock clock;
    zun::ScriptedDialogs dialogs;
    zun::QtDesktop desktop;
    const auto session = zun::assembleSession(zun::Platform{clock, line, settings, dialogs, desktop}, {});
    zun::Context &ctx = session->context();
    zun::WorkLoop &loop = session->loop();
    ctx.endProgram = [&loop] { loop.stop(); };
    zun::StartupWindows windows(*session, &ports);
    if (!session->start(windows.views()) || ctx.bus.table().foundCount() != 1) {
        std::fprintf(stderr, "bench_sweep: the simulated receiver was not found\n");
        return 1;
    }
    zun::MainWindow *main = windows.mainWindow();

    PaintWatch watch;
    int points = 0;
    QObject::connect(&ctx.bus, &zun::ReceiverBus::scanPointRead, [&] {
        ++points;
        watch.pointRead();
    });
    double cpuStart = 0;
    int pointsStart = 0, paintsStart = 0;
    QElapsedTimer wall;
    QTimer::singleShot(0, [&] {
        main->panel(0)->moreButton()->click();
        auto *detail = static_cast<zun::DetailWindow *>(main->detailWindow());
        detail->tabs()->setCurrentIndex(1);
        if (referencePoints > 0) {
            dialogs.queueFileName(referenceFile);
            dynamic_cast<zun::RfTools &>(detail->tools()).spectrumTab()->importButton()->click();
            if (!dialogs.messages().isEmpty())
                std::fprintf(stderr, "bench_sweep: %s\n", qPrintable(dialogs.messages().last()));
        }
        detail->findChild<QAbstractButton *>(QStringLiteral("optCont"))->click();
        detail->findChild<QAbstractButton *>(QStringLiteral("SP_Run"))->click();
        auto *plot = detail->findChild<zun::SpectrumPlot *>();
        watch.clock.start();
        plot->installEventFilter(&watch);
    });
    QTimer::singleShot(2000, [&] { // past the first picture and the scan's start
        cpuStart = cpuSeconds();
        pointsStart = points;
        paintsStart = watch.paints;
        watch.lagsMicros.clear();
        wall.start();
    });
    QTimer::singleShot(2000 + seconds * 1000, [&] {
        const double elapsed = wall.nsecsElapsed() / 1e9;
        const double cpu = 100.0 * (cpuSeconds() - cpuStart) / elapsed;
        std::vector<qint64> &lags = watch.lagsMicros;
        std::sort(lags.begin(), lags.end());
        auto lagMs = [&lags](double q) {
            return lags.empty() ? -1.0 : lags[static_cast<size_t>(q * double(lags.size() - 1))] / 1000.0;
        };
        std::printf("sweep_cpu_percent %.2f\nsweep_points_per_s %.1f\nsweep_pictures_per_s %.1f\n"
                    "sweep_lag_ms_median %.2f\nsweep_lag_ms_p99 %.2f\nsweep_lag_ms_max %.2f\n",
                    cpu, (points - pointsStart) / elapsed, (watch.paints - paintsStart) / elapsed, lagMs(0.5),
                    lagMs(0.99), lagMs(1.0));
        loop.stop();
    });
    loop.run();
    return points > pointsStart ? 0 : 1;
}
