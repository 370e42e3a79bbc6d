// Host cost of one polling pass over a full line of 64 receivers, next to
// the time the same bytes take on the wire at 115200 baud. The line is the
// simulator on a virtual clock, so only the program's own work is timed.
#include "core/context.h"
#include "mainscreen/panelreadout.h"
#include "sim/demobus.h"
#include "sim/simserialline.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    std::vector<int> addresses(64);
    for (int i = 0; i < 64; ++i)
        addresses[i] = i + 1;

    zun::VirtualClock clock;
    zun::SimSerialLine line(clock);
    const auto bus = zun::makeSimBus(addresses);
    line.attachBus(1, bus.get());
    zun::MemorySettingsStore settings;
    zun::ScriptedDialogs dialogs;
    zun::FakeDesktop desktop;
    zun::Context ctx(zun::Platform{clock, line, settings, dialogs, desktop});
    ctx.bus.table().resize(64);
    line.selectPort(1);
    line.applySettings(QStringLiteral("115200,N,8,1"));
    line.open();
    ctx.bus.detectReceivers(zun::PortSearch::CurrentPort);

    // What the panels would be given, without the panels.
    std::array<zun::PanelReadout, 64> readouts{};
    QObject::connect(&ctx.bus, &zun::ReceiverBus::panelLevels, [&](int index, const zun::LevelReading &r) {
        readouts[std::size_t(index)] = panelReadout(r);
    });
    constexpr int kPasses = 200;
    std::vector<double> hostMicros;
    std::uint64_t lineMicros = 0;
    for (int pass = 0; pass < kPasses; ++pass) {
        const std::uint64_t before = clock.nowMicros();
        QElapsedTimer timer;
        timer.start();
        ctx.bus.pollAllLevels();
        hostMicros.push_back(timer.nsecsElapsed() / 1000.0);
        lineMicros += clock.nowMicros() - before;
    }
    std::sort(hostMicros.begin(), hostMicros.end());
    // "%01N" + CR out, 11 characters + CR back, 10 bits a character.
    const double wireMicros = 64 * (5 + 12) * 10 * 1e6 / 115200;
    std::printf("receivers found: %d\n", ctx.bus.table().foundCount());
    std::printf("one polling pass over 64 receivers: host work median %.0f us, worst %.0f us\n",
                hostMicros[hostMicros.size() / 2], hostMicros.back());
    std::printf("wire time of the same bytes at 115200 baud: %.0f us (host work is %.1f%% of it)\n",
                wireMicros, 100.0 * hostMicros[hostMicros.size() / 2] / wireMicros);
    std::printf("simulated line time per pass, turnarounds included: %.0f us\n",
                static_cast<double>(lineMicros) / kPasses);

    // A detection that finds nobody costs every address its retries plus the
    // three broadcasts, to the microsecond on the virtual clock.
    zun::VirtualClock silentClock;
    zun::SimSerialLine silentLine(silentClock);
    silentLine.attachBus(1, nullptr);
    zun::Context silent(zun::Platform{silentClock, silentLine, settings, dialogs, desktop});
    silent.bus.options().retries = 2;
    silent.bus.table().resize(64);
    silentLine.selectPort(1);
    silentLine.applySettings(QStringLiteral("115200,N,8,1"));
    silentLine.open();
    const std::uint64_t scanStart = silentClock.nowMicros();
    silent.bus.detectReceivers(zun::PortSearch::CurrentPort);
    const std::uint64_t scanMicros = silentClock.nowMicros() - scanStart;
    // An attempt times out once the elapsed ticks are greater than the
    // time-out, so on a 1 ms tick each silent attempt lasts 101 ms.
    const std::uint64_t bare = 64ull * (2 + 1) * 100000 + 3 * 50000;
    const std::uint64_t expected = 64ull * (2 + 1) * 101000 + 3 * 50000;
    std::printf(
        "silent detection, Retry 2, virtual clock: %llu us; 64 x 3 x (100 ms + the 1 ms tick past it) "
        "+ 3 x 50 ms = %llu us (%s); without the tick %llu us\n",
        static_cast<unsigned long long>(scanMicros), static_cast<unsigned long long>(expected),
        scanMicros == expected ? "equal" : "DIFFERENT", static_cast<unsigned long long>(bare));
    return 0;
}
