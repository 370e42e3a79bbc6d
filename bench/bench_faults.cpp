// The share of receivers online on a bad line, on the virtual clock: 64
// receivers polled by the program as it is assembled, with automatic
// recovery on, while the simulator spoils replies at the given rate. The
// share is sampled after every polling pass; "lowest" is the worst moment,
// "mean" the average over the run. A spoiled level read takes its receiver
// off the poll at once, so the figure that shows whether one fault spoils
// more than its own exchange is the receivers taken offline per spoiled reply.
#include "core/options.h"
#include "session/session.h"
#include "sim/simbus.h"
#include "sim/simserialline.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

struct Share
{
    double lowest = 1;
    double mean = 0;
    double seconds = 0;
    std::uint64_t faults = 0;
    std::uint64_t offline = 0; // receivers taken off the poll
};

Share run(const zun::SimFaultRates &rates, double virtualSeconds)
{
    zun::VirtualClock clock;
    zun::SimBus bus(2026);
    for (int address = 1; address <= 64; ++address)
        bus.addReceiver(address);
    zun::SimSerialLine line(clock);
    line.setWrittenLimit(16);
    line.attachBus(1, &bus);
    zun::MemorySettingsStore settings;
    zun::ScriptedDialogs dialogs;
    zun::FakeDesktop desktop;
    settings.save(zun::kAppName, "MSComm", "CommPort", "1");
    zun::SessionOptions options;
    options.autoRecover = true;
    const auto session =
        zun::assembleSession(zun::Platform{clock, line, settings, dialogs, desktop}, options);
    Share share;
    if (!session->start({}) || session->bus().foundCount() != 64)
        return share;
    bus.setFaultRates(rates);
    QObject::connect(&session->bus(), &zun::ReceiverBus::wentOffline, [&share] { ++share.offline; });
    const std::uint64_t start = clock.nowMicros();
    double sum = 0;
    std::uint64_t samples = 0;
    while (clock.nowMicros() - start < static_cast<std::uint64_t>(virtualSeconds * 1e6)) {
        // With nobody to ask the program sleeps until the recovery's wake-up, once a second.
        if (!session->loop().runSteps())
            clock.advanceMillis(1000);
        line.clearWritten();
        int online = 0;
        for (int i = 0; i < 64; ++i)
            online += session->bus().record(i).online ? 1 : 0;
        share.lowest = std::min(share.lowest, online / 64.0);
        sum += online / 64.0;
        ++samples;
    }
    share.mean = samples ? sum / samples : 0;
    share.seconds = (clock.nowMicros() - start) / 1e6;
    for (int kind = int(zun::SimFault::NoReply); kind <= int(zun::SimFault::Noise); ++kind)
        share.faults += bus.faults().inflicted(zun::SimFault(kind));
    return share;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const bool quick = app.arguments().contains(QStringLiteral("--quick"));
    const double seconds = quick ? 60 : 600;
    std::printf("| replies spoiled | lowest online | mean online | spoiled replies | receivers taken offline "
                "| offline per spoiled reply | virtual time |\n|---|---|---|---|---|---|---|\n");
    const auto row = [&](const char *name, const zun::SimFaultRates &rates) {
        const Share s = run(rates, seconds);
        std::printf("| %s | %.1f %% | %.1f %% | %llu | %llu | %.2f | %.0f s |\n", name, s.lowest * 100,
                    s.mean * 100, static_cast<unsigned long long>(s.faults),
                    static_cast<unsigned long long>(s.offline), s.faults ? double(s.offline) / s.faults : 0.0,
                    s.seconds);
        std::fflush(stdout);
    };
    const double all = 0.05 / 7;
    row("5 % in all, every kind alike", {all, all, all, all, all, all, all});
    struct Kind
    {
        const char *name;
        double zun::SimFaultRates::*rate;
    };
    for (const Kind &k :
         {Kind{"5 % no reply", &zun::SimFaultRates::noReply},
          Kind{"5 % garbled", &zun::SimFaultRates::garbled},
          Kind{"5 % corrupt data", &zun::SimFaultRates::corruptData},
          Kind{"5 % wrong address", &zun::SimFaultRates::wrongAddress},
          Kind{"5 % partial", &zun::SimFaultRates::partial}, Kind{"5 % late", &zun::SimFaultRates::late},
          Kind{"5 % noise", &zun::SimFaultRates::noise}}) {
        zun::SimFaultRates rates;
        rates.*k.rate = 0.05;
        row(k.name, rates);
    }
    return 0;
}
