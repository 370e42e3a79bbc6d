// The share of receivers online on a bad line, on the virtual clock: 64
// receivers polled by the program as it is assembled, with automatic
// recovery on, while the simulator spoils replies at the given rate. The
// share is looked at after every exchange on the line (the only moments it
// can change); "lowest" is the worst of them, "mean" the average over the
// run weighted by time. A receiver counts as offline from its refused level
// read until it answers again, including the status reads that bring it back.
// Each row also runs with the status reads after a spoiled reply switched
// off (what the program did before they came), and the alarm list says how
// many "Offline" alarms the run raised.
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
    std::uint64_t offline = 0; // receivers announced offline (the quick status reads failed)
    std::uint64_t alarms = 0;  // "Offline" alarms raised
};

Share run(const zun::SimFaultRates &rates, double virtualSeconds, int secondChances)
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
    if (!session->start({}) || session->bus().table().foundCount() != 64)
        return share;
    if (secondChances >= 0)
        session->bus().setSecondChances(secondChances);
    bus.setFaultRates(rates);
    QObject::connect(&session->bus(), &zun::ReceiverBus::wentOffline, [&share] { ++share.offline; });
    QObject::connect(&session->alarms(), &zun::AlarmEngine::alarmRaised, [&](int id) {
        const zun::Alarm *alarm = session->alarms().alarm(id);
        share.alarms += alarm && alarm->condition == zun::AlarmCondition::Offline ? 1 : 0;
    });
    const std::uint64_t start = clock.nowMicros();
    double weighted = 0; // share x microseconds
    double lastShare = 1;
    std::uint64_t lastMicros = start;
    const auto look = [&] {
        int online = 0;
        for (int i = 0; i < 64; ++i)
            online += session->bus().table().at(i).online ? 1 : 0;
        const std::uint64_t now = clock.nowMicros();
        weighted += lastShare * static_cast<double>(now - lastMicros);
        lastShare = online / 64.0;
        lastMicros = now;
        share.lowest = std::min(share.lowest, lastShare);
    };
    // The exchange's report comes before the caller acts on it, so a refused
    // read is seen at the next exchange: the status read that follows it.
    QObject::connect(&session->bus(), &zun::ReceiverBus::exchanged, look);
    while (clock.nowMicros() - start < static_cast<std::uint64_t>(virtualSeconds * 1e6)) {
        // With nobody to ask the program sleeps until the recovery's wake-up, once a second.
        if (!session->loop().runSteps())
            clock.advanceMillis(1000);
        look();
        line.clearWritten();
    }
    share.mean = weighted / static_cast<double>(clock.nowMicros() - start);
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
    std::printf("| replies spoiled | status reads after a spoiled reply | lowest online | mean online | "
                "spoiled replies | receivers announced offline | \"Offline\" alarms | virtual time "
                "|\n|---|---|---|---|---|---|---|---|\n");
    const auto row = [&](const char *name, const zun::SimFaultRates &rates) {
        for (const int chances : {0, -1}) {
            const Share s = run(rates, seconds, chances);
            std::printf("| %s | %s | %.1f %% | %.1f %% | %llu | %llu | %llu | %.0f s |\n", name,
                        chances == 0 ? "none (before)" : "as assembled", s.lowest * 100, s.mean * 100,
                        static_cast<unsigned long long>(s.faults), static_cast<unsigned long long>(s.offline),
                        static_cast<unsigned long long>(s.alarms), s.seconds);
            std::fflush(stdout);
        }
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
