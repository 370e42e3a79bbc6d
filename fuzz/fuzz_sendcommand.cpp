// Arbitrary bytes arriving on the line, at arbitrary times, while
// transactions run against a simulated receiver on a virtual clock.
#include "link/hex.h"
#include "link/transaction.h"
#include "platform/clock.h"
#include "sim/simbus.h"
#include "sim/simserialline.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    zun::VirtualClock clock;
    zun::SimBus bus(input.ConsumeIntegral<std::uint8_t>());
    bus.addReceiver(3);
    zun::SimSerialLine line(clock);
    line.attachBus(1, &bus);
    line.selectPort(1);
    line.applySettings(QStringLiteral("115200,N,8,1"));
    line.open();
    const int retry = input.ConsumeIntegralInRange(0, 4);
    zun::Link link(line, clock, retry);

    static const char kLetters[] = "MNLABOKEFCD";
    while (input.remaining_bytes() > 0) {
        if (input.ConsumeBool()) {
            const std::uint64_t delay = input.ConsumeIntegralInRange<std::uint64_t>(0, 600000);
            const std::string bytes = input.ConsumeRandomLengthString(64);
            line.injectInput(QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size())), delay);
            continue;
        }
        const int address = input.ConsumeIntegralInRange(0, 65);
        const char letter = kLetters[input.ConsumeIntegralInRange<std::size_t>(0, sizeof kLetters - 2)];
        const int replyLength = input.ConsumeIntegralInRange(0, 45);
        const int timeout = input.ConsumeIntegralInRange(0, 400);
        const QString command = (input.ConsumeBool() ? QStringLiteral("%") : QStringLiteral("#")) +
                                zun::formatHex(address, 2) + QLatin1Char(letter) + QLatin1Char('\r');
        QString reply;
        const std::uint64_t start = clock.nowMicros();
        const bool ok = link.sendCommand(command, replyLength, reply, timeout);
        const std::uint64_t spent = clock.nowMicros() - start;
        // A broadcast always succeeds; anything else only with its own head.
        if (address == 0 && !ok)
            __builtin_trap();
        if (address != 0 && ok && !reply.startsWith(QLatin1Char('$') + zun::formatHex(address, 2)))
            __builtin_trap();
        // Never longer than every attempt's time-out plus the frame's own wire time.
        if (spent > static_cast<std::uint64_t>(retry + 1) * (timeout + 2) * 1000 + 10000)
            __builtin_trap();
    }
    return 0;
}
