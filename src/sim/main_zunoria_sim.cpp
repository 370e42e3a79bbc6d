// zunoria-sim: receivers on a pseudo-terminal, for running the real program
// against them. The first line of output is the device to open.

#include "platform/clock.h"
#include "sim/demobus.h"
#include "sim/simptyhost.h"

#include <QByteArray>
#include <QList>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

namespace {

const char kUsage[] = "usage: zunoria-sim [options]\n"
                      "  --receivers A,B,...   receivers at these addresses (1..64)\n"
                      "  --count N             receivers at addresses 1..N\n"
                      "                        (neither: the demonstration set, all 64)\n"
                      "  --baud N              speed of the receivers and the line (default 115200)\n"
                      "  --seed N              seed of levels and faults (default 1)\n"
                      "  --log FILE            every frame heard, one per line with a time stamp\n"
                      "  --log-replies         the log shows the replies as well\n"
                      "  --whole-replies       each reply arrives in one piece when its last\n"
                      "                        character would (default: character by character)\n"
                      "  --turnaround-us N     reply delay of every receiver (default 1500)\n"
                      "  --kob-ms N            time a receiver stays off the line after KOB (default 3000)\n"
                      "  --late-ms N           delay of a late reply (default 400)\n"
                      "  --fault KIND=RATE     fault rate on every reply, KIND one of noreply, garbled,\n"
                      "                        corrupt, wrongaddr, partial, late, noise (repeatable)\n"
                      "stdin: stop N | start N | fault N KIND [COUNT] | list | quit\n";

struct Options
{
    std::vector<int> addresses;
    bool demo = true;
    int baud = 115200;
    unsigned long long seed = 1;
    QByteArray logPath;
    bool logReplies = false;
    bool wholeReplies = false;
    long turnaroundMicros = -1;
    long kobMillis = -1;
    long lateMillis = -1;
    zun::SimFaultRates rates;
};

bool number(const char *text, long &value)
{
    char *end = nullptr;
    value = std::strtol(text, &end, 10);
    return end && end != text && *end == '\0' && value >= 0;
}

bool parse(int argc, char **argv, Options &o)
{
    for (int i = 1; i < argc; ++i) {
        const QByteArray arg = argv[i];
        if (arg == "--log-replies") {
            o.logReplies = true;
            continue;
        }
        if (arg == "--whole-replies") {
            o.wholeReplies = true;
            continue;
        }
        if (i + 1 >= argc)
            return false;
        const char *value = argv[++i];
        long n = 0;
        if (arg == "--receivers") {
            o.demo = false;
            for (const QByteArray &part : QByteArray(value).split(',')) {
                if (!number(part.constData(), n) || n < 1 || n > 64)
                    return false;
                o.addresses.push_back(static_cast<int>(n));
            }
        } else if (arg == "--count") {
            if (!number(value, n) || n < 1 || n > 64)
                return false;
            o.demo = false;
            for (int a = 1; a <= n; ++a)
                o.addresses.push_back(a);
        } else if (arg == "--baud" && number(value, n) && n > 0) {
            o.baud = static_cast<int>(n);
        } else if (arg == "--seed" && number(value, n)) {
            o.seed = static_cast<unsigned long long>(n);
        } else if (arg == "--log") {
            o.logPath = value;
        } else if (arg == "--turnaround-us" && number(value, n)) {
            o.turnaroundMicros = n;
        } else if (arg == "--kob-ms" && number(value, n)) {
            o.kobMillis = n;
        } else if (arg == "--late-ms" && number(value, n)) {
            o.lateMillis = n;
        } else if (arg == "--fault") {
            const QList<QByteArray> kv = QByteArray(value).split('=');
            bool ok = false;
            const double rate = kv.value(1).toDouble(&ok);
            if (kv.size() != 2 || !ok || rate < 0 || rate > 1 || !zun::setFaultRate(o.rates, kv[0], rate))
                return false;
        } else {
            return false;
        }
    }
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    Options o;
    if (!parse(argc, argv, o)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    std::unique_ptr<zun::SimBus> bus =
        o.demo ? zun::makeDemoBus(o.seed, o.baud) : zun::makeSimBus(o.addresses, o.seed, o.baud);
    for (zun::SimReceiver *r : bus->receivers()) {
        if (o.turnaroundMicros >= 0)
            r->turnaroundMicros = static_cast<std::uint64_t>(o.turnaroundMicros);
        if (o.kobMillis >= 0)
            r->kobMicros = static_cast<std::uint64_t>(o.kobMillis) * 1000u;
    }
    if (o.lateMillis >= 0)
        bus->faults().setLateDelayMicros(static_cast<std::uint64_t>(o.lateMillis) * 1000u);
    bus->setFaultRates(o.rates);

    zun::SystemClock clock;
    zun::SimPtyHost host(*bus, clock, o.baud);
    host.setWholeReplies(o.wholeReplies);
    QString error;
    if (!host.open(error)) {
        std::fprintf(stderr, "zunoria-sim: %s\n", qPrintable(error));
        return 1;
    }
    if (!o.logPath.isEmpty() && !host.setLogFile(QString::fromLocal8Bit(o.logPath), o.logReplies)) {
        std::fprintf(stderr, "zunoria-sim: cannot write %s\n", o.logPath.constData());
        return 1;
    }
    std::printf("%s\n", host.slavePath().constData());
    std::fflush(stdout);
    std::fprintf(stderr, "zunoria-sim: %zu receivers at %d baud\n", bus->receivers().size(), o.baud);
    return host.run();
}
