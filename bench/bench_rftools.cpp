// Cost of drawing one spectrum-scan step (a band of 4000 points) and one
// recorder step, next to the time one "E" exchange occupies the wire at
// 115200 baud. Runs on the offscreen platform against the simulated demo
// line on a virtual clock, so the figures are drawing and bookkeeping only.
//
//   bench_rftools [--snapshot DIR]   also writes both tabs and the drop
//                                    counters as PNG to DIR

#include "core/context.h"
#include "core/rftoolspanel.h"
#include "link/hex.h"
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/settingsstore.h"
#include "rftools/dropcounterpanel.h"
#include "rftools/recorderplot.h"
#include "rftools/recordertab.h"
#include "rftools/rftools.h"
#include "rftools/scanplot.h"
#include "rftools/scansweep.h"
#include "rftools/scantab.h"
#include "sim/demobus.h"
#include "sim/simserialline.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

using namespace zun;

namespace {

// The detail window as far as the tools need it, for one simulated receiver.
class BenchHost final : public RfToolsHost
{
public:
    explicit BenchHost(Context &ctx) : m_ctx(ctx) {}
    RfTools *tools = nullptr;

    const Receiver &record() const override { return m_ctx.bus.table().at(m_ctx.detail.index()); }
    double bandStart() const override { return (25.0 * parseHex(record().bandStartCode) + 65750) / 1000; }
    QString codeFromMhz(double mhz) const override
    {
        return formatHex(static_cast<int>(std::nearbyint((mhz * 1000 - 65750) / 25)), 4);
    }
    void rfTuned(const RfTuning &) override {}
    void showMeters(const LevelReading &reading) override { tools->meterReading(reading); }
    void recorderRead() override
    {
        if (const auto reading = m_ctx.detail.recorderStep())
            showMeters(*reading);
    }
    void unloadForm() override {}

private:
    Context &m_ctx;
};

struct Figures
{
    double meanMicros;
    double medianMicros;
    double worstMicros;
};

Figures measure(int rounds, const std::function<void()> &work)
{
    std::vector<double> samples;
    samples.reserve(static_cast<std::size_t>(rounds));
    QElapsedTimer timer;
    for (int k = 0; k < rounds; ++k) {
        timer.start();
        work();
        samples.push_back(timer.nsecsElapsed() / 1000.0);
    }
    std::sort(samples.begin(), samples.end());
    double sum = 0;
    for (double s : samples)
        sum += s;
    return {sum / rounds, samples[samples.size() / 2], samples.back()};
}

// A step that did not go through would time something else than a step.
void require(bool stepped)
{
    if (stepped)
        return;
    std::fprintf(stderr, "bench_rftools: a step the simulated receiver should answer failed\n");
    std::exit(1);
}

void report(const char *what, const Figures &f, double wireMicros)
{
    std::printf("%-44s mean %7.1f us  median %7.1f us  worst %7.1f us   wire %6.0f us  (%4.1f%% of wire)\n",
                what, f.meanMicros, f.medianMicros, f.worstMicros, wireMicros,
                100.0 * f.medianMicros / wireMicros);
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QString snapshotDir;
    const QStringList args = app.arguments();
    const qsizetype at = args.indexOf(QStringLiteral("--snapshot"));
    if (at >= 0 && at + 1 < args.size())
        snapshotDir = args.at(at + 1);

    VirtualClock clock(0, 20 * 3600.0 + 15 * 60);
    SimSerialLine line(clock);
    auto bus = makeDemoBus();
    line.attachBus(1, bus.get());
    line.selectPort(1);
    line.applySettings(QStringLiteral("115200,N,8,1"));
    line.open();
    MemorySettingsStore settings;
    ScriptedDialogs dialogs;
    FakeDesktop desktop;
    Context ctx(Platform{clock, line, settings, dialogs, desktop});

    ctx.bus.table().resize(64);
    ctx.bus.detectReceivers(PortSearch::CurrentPort);
    ctx.detail.open(0);
    BenchHost host(ctx);
    QWidget window;
    window.setWindowTitle(QStringLiteral("Detail Functions"));
    RfTools tools(ctx, host, &window);
    host.tools = &tools;
    auto *layout = new QVBoxLayout(&window);
    layout->addWidget(tools.spectrumTab());
    layout->addWidget(tools.recorderTab());
    layout->addWidget(tools.dropCounterPanel(), 0, Qt::AlignLeft);
    window.show();
    tools.load();
    app.processEvents();

    const double wireMicros = 22 * 10 * 1e6 / 115200.0;
    const ScanState &scan = tools.scanState();
    std::printf("band: %d points, picture %dx%d, pixel ratio %.2f\n", scan.pointCount + 1,
                tools.spectrumTab()->plot()->width(), tools.spectrumTab()->plot()->height(),
                tools.spectrumTab()->plot()->devicePixelRatioF());

    // One whole sweep of the simulated band fills the trace.
    ctx.bus.setWorkMode(WorkMode::DetailRead);
    tools.spectrumTab()->continuousOption()->click();
    tools.spectrumTab()->runButton()->click();
    for (int k = 0; k <= scan.pointCount; ++k)
        require(tools.scanStep());

    SpectrumPlot *picture = tools.spectrumTab()->plot();
    const int rounds = 3000;
    report("scan redraw, off-screen composition",
           measure(rounds,
                   [&] {
                       picture->drawTrace(scan.levels, scan.pointCount, scan.xScale);
                       static_cast<void>(picture->pictureImage()); // composes what drawTrace put off
                   }),
           wireMicros);
    report("scan redraw, composition + copy to screen",
           measure(rounds,
                   [&] {
                       picture->drawTrace(scan.levels, scan.pointCount, scan.xScale);
                       picture->repaint();
                   }),
           wireMicros);
    report("whole scan step (exchange simulated)",
           measure(rounds,
                   [&] {
                       require(tools.scanStep());
                       picture->repaint();
                   }),
           wireMicros);

    // The recorder at Fast, long enough to be scrolling on every step.
    RecorderTab *rec = tools.recorderTab();
    rec->fastOption()->click();
    rec->runButton()->click();
    for (int k = 0; k < 400; ++k)
        require(tools.recorderStep());
    report("recorder step (exchange simulated), scrolling",
           measure(rounds,
                   [&] {
                       require(tools.recorderStep());
                       rec->plot()->repaint();
                   }),
           wireMicros);

    if (snapshotDir.isEmpty())
        return 0;

    // Something a user would see: a fresh sweep, the cursor on the strongest
    // point, and half a minute of recording on the slow speed.
    tools.spectrumTab()->clearButton()->click();
    tools.spectrumTab()->runButton()->click();
    for (int k = 0; k <= scan.pointCount; ++k)
        require(tools.scanStep());
    tools.spectrumTab()->peakButton()->click();
    rec->clearButton()->click();
    rec->slowOption()->click();
    rec->runButton()->click();
    tools.dropCounterPanel()->runButton()->click();
    for (int k = 0; k < 3000; ++k)
        require(tools.recorderStep());
    ctx.bus.setWorkMode(WorkMode::DetailRead);
    app.processEvents();

    QDir().mkpath(snapshotDir);
    const bool ok = tools.spectrumTab()->grab().save(snapshotDir + QStringLiteral("/spectrum.png")) &&
                    tools.recorderTab()->grab().save(snapshotDir + QStringLiteral("/recorder.png")) &&
                    tools.dropCounterPanel()->grab().save(snapshotDir + QStringLiteral("/drops.png"));
    std::printf("snapshots %s in %s\n", ok ? "written" : "NOT written", qPrintable(snapshotDir));
    return ok ? 0 : 1;
}
