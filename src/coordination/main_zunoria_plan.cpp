// zunoria-plan: intermodulation-free frequencies for a set of receivers on the
// command line. The plan goes to standard output, everything else to standard
// error, so the output can be piped straight into a file another tool imports.

#include "coordination/conflicts.h"
#include "coordination/guards.h"
#include "coordination/planfiles.h"
#include "coordination/planner.h"
#include "coordination/scancsv.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>

using namespace zun;

namespace {

const char kUsage[] =
    "usage: zunoria-plan --band LO-HI (--count N | --max) [--guards standard|tight|robust|C,T3,X3,T5]\n"
    "                    [--exclude LO-HI]... [--scan FILE.csv --threshold DBM]... [--fixed MHZ]...\n"
    "                    [--deadline SECONDS]\n"
    "       zunoria-plan --check FILE [--guards ...]\n"
    "Frequencies in MHz, guards in kHz. Exit 0: all placed; 2: fewer placed than --count\n"
    "(or --check found conflicts); 1: bad input.\n";

struct BadInput
{
    QString message;
};

void line(FILE *to, const QString &text)
{
    std::fputs(qPrintable(text + QLatin1Char('\n')), to);
}

std::pair<int, int> parseRange(const QString &option, const QString &text)
{
    const QStringList parts = text.split(QLatin1Char('-'));
    const std::optional<int> lo = parts.size() == 2 ? parseMHz(parts[0]) : std::nullopt;
    const std::optional<int> hi = parts.size() == 2 ? parseMHz(parts[1]) : std::nullopt;
    if (!lo || !hi)
        throw BadInput{QStringLiteral("%1 \"%2\" is not LO-HI in MHz (e.g. 470-506.5)").arg(option, text)};
    if (*lo > *hi)
        throw BadInput{QStringLiteral("%1 %2 is reversed: %3 MHz lies above %4 MHz")
                           .arg(option, text, mhzText(*lo), mhzText(*hi))};
    return {*lo, *hi};
}

QString readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        throw BadInput{QStringLiteral("cannot read %1: %2").arg(path, file.errorString())};
    return QString::fromUtf8(file.readAll());
}

struct Args
{
    std::optional<std::pair<int, int>> band;
    std::optional<int> count;
    bool max = false;
    Guards guards;
    PlanExclusions exclusions;
    std::vector<int> fixedKHz;
    double deadlineSeconds = 0.9;
    QString checkFile;
};

Args parseArgs(const QStringList &argv)
{
    Args args;
    QStringList scans;
    std::vector<double> thresholds;
    for (int i = 1; i < argv.size(); ++i) {
        const QString option = argv[i];
        if (option == QLatin1String("--max")) {
            args.max = true;
            continue;
        }
        if (i + 1 >= argv.size())
            throw BadInput{option.startsWith(QLatin1String("--"))
                               ? QStringLiteral("%1 needs a value").arg(option)
                               : QStringLiteral("unexpected argument \"%1\"").arg(option)};
        const QString value = argv[++i];
        if (option == QLatin1String("--band")) {
            args.band = parseRange(option, value);
            if (rasterPoints(args.band->first, args.band->second).empty() ||
                args.band->first == args.band->second)
                throw BadInput{QStringLiteral("--band %1 is empty: no 25 kHz step fits in it").arg(value)};
            if (args.band->second - args.band->first > 1000000)
                throw BadInput{QStringLiteral("--band %1 is wider than 1000 MHz").arg(value)};
        } else if (option == QLatin1String("--count")) {
            bool ok = false;
            const int n = value.toInt(&ok);
            if (!ok || n < 1 || n > 10000)
                throw BadInput{QStringLiteral("--count \"%1\" is not a number from 1 to 10000").arg(value)};
            args.count = n;
        } else if (option == QLatin1String("--guards")) {
            const std::optional<Guards> g = parseGuards(value);
            if (!g)
                throw BadInput{QStringLiteral("--guards \"%1\" is not standard, tight, robust or four kHz "
                                              "values C,T3,X3,T5 with C above 0")
                                   .arg(value)};
            args.guards = *g;
        } else if (option == QLatin1String("--exclude")) {
            args.exclusions.rangesKHz.push_back(parseRange(option, value));
        } else if (option == QLatin1String("--scan")) {
            scans << value;
        } else if (option == QLatin1String("--threshold")) {
            bool ok = false;
            const double dbm = value.toDouble(&ok);
            if (!ok || !std::isfinite(dbm))
                throw BadInput{QStringLiteral("--threshold \"%1\" is not a level in dBm").arg(value)};
            thresholds.push_back(dbm);
        } else if (option == QLatin1String("--fixed")) {
            const std::optional<int> kHz = parseMHz(value);
            if (!kHz || *kHz % kRasterKHz != 0)
                throw BadInput{QStringLiteral("--fixed \"%1\" is not a frequency in MHz on the 25 kHz raster")
                                   .arg(value)};
            args.fixedKHz.push_back(*kHz);
        } else if (option == QLatin1String("--deadline")) {
            bool ok = false;
            args.deadlineSeconds = value.toDouble(&ok);
            if (!ok || !(args.deadlineSeconds > 0) || args.deadlineSeconds > 3600)
                throw BadInput{
                    QStringLiteral("--deadline \"%1\" is not a number of seconds up to 3600").arg(value)};
        } else if (option == QLatin1String("--check")) {
            args.checkFile = value;
        } else {
            throw BadInput{QStringLiteral("unknown option \"%1\"").arg(option)};
        }
    }
    if (!args.checkFile.isEmpty())
        return args;
    if (!args.band)
        throw BadInput{QStringLiteral("--band LO-HI is missing")};
    if (args.max == args.count.has_value())
        throw BadInput{QStringLiteral("give either --count N or --max")};
    if (args.count && *args.count < static_cast<int>(args.fixedKHz.size()))
        throw BadInput{QStringLiteral("--count %1 is less than the %2 --fixed frequencies")
                           .arg(*args.count)
                           .arg(args.fixedKHz.size())};
    if (scans.size() != static_cast<qsizetype>(thresholds.size()))
        throw BadInput{QStringLiteral("every --scan needs its own --threshold (%1 scans, %2 thresholds)")
                           .arg(scans.size())
                           .arg(thresholds.size())};
    for (qsizetype s = 0; s < scans.size(); ++s) {
        // Points outside the band are read too: they simply exclude nothing.
        const ScanCsvResult scan = parseScanCsv(readFile(scans[s]), 0, 1e6);
        if (!scan.ok())
            throw BadInput{QStringLiteral("cannot use scan %1: %2").arg(scans[s], scan.error)};
        const std::vector<int> hot = signalsAbove(scan.points, thresholds[static_cast<size_t>(s)]);
        args.exclusions.signalsKHz.insert(args.exclusions.signalsKHz.end(), hot.begin(), hot.end());
    }
    const std::vector<Conflict> clash = findConflicts(args.fixedKHz, args.guards);
    if (!clash.empty())
        throw BadInput{QStringLiteral("the --fixed frequencies conflict: %1")
                           .arg(describeConflict(clash[0], args.fixedKHz))};
    return args;
}

int check(const Args &args)
{
    const FrequencyListResult list = importFrequencyList(readFile(args.checkFile));
    if (!list.ok())
        throw BadInput{QStringLiteral("cannot use %1: %2").arg(args.checkFile, list.error)};
    const std::vector<Conflict> conflicts = findConflicts(list.frequenciesKHz, args.guards);
    for (const Conflict &k : conflicts)
        line(stdout, describeConflict(k, list.frequenciesKHz));
    line(
        stderr,
        QStringLiteral("%1 frequencies, %2 conflicts").arg(list.frequenciesKHz.size()).arg(conflicts.size()));
    return conflicts.empty() ? 0 : 2;
}

int plan(const Args &args)
{
    const auto [lo, hi] = *args.band;
    const int fixed = static_cast<int>(args.fixedKHz.size());
    // With --max, as many as could stand apart by the carrier guard alone.
    const int spacing = std::max(1, (args.guards.carrier + kRasterKHz - 1) / kRasterKHz);
    const int wanted =
        args.max ? fixed + static_cast<int>(rasterPoints(lo, hi).size() - 1) / spacing + 1 : *args.count;
    PlanRequest request;
    request.guards = args.guards;
    request.exclusions = args.exclusions;
    for (int f : args.fixedKHz)
        request.receivers.push_back(PlanReceiver{lo, hi, f});
    for (int r = fixed; r < wanted; ++r)
        request.receivers.push_back(PlanReceiver{lo, hi, std::nullopt});

    QElapsedTimer timer;
    timer.start();
    PlanOptions options;
    options.deadlineMs = static_cast<int>(std::lround(args.deadlineSeconds * 1000));
    const PlanResult result = planFrequencies(request, options);
    std::vector<int> frequencies;
    for (int f : result.frequencyKHz)
        if (f >= 0)
            frequencies.push_back(f);
    std::sort(frequencies.begin(), frequencies.end());
    std::fputs(qPrintable(exportFrequencyList(frequencies)), stdout);

    const Guards &g = args.guards;
    QString summary = QStringLiteral("placed %1").arg(result.placed);
    if (!args.max)
        summary += QStringLiteral(" of %1").arg(wanted);
    if (fixed > 0)
        summary += QStringLiteral(" (%1 fixed)").arg(fixed);
    summary += QStringLiteral(" in %1-%2 MHz, guards C %3 T3 %4 X3 %5 T5 %6 kHz, %7 in %8 s")
                   .arg(mhzText(lo), mhzText(hi))
                   .arg(g.carrier)
                   .arg(g.twoTone3)
                   .arg(g.threeTone3)
                   .arg(g.twoTone5)
                   .arg(result.provenMaximum ? QStringLiteral("maximum proven")
                                             : QStringLiteral("best found, not proven maximal"))
                   .arg(timer.elapsed() / 1000.0, 0, 'f', 2);
    line(stderr, summary);
    return !args.max && result.placed < wanted ? 2 : 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList argv0 = QCoreApplication::arguments();
    if (argv0.contains(QLatin1String("--help")) || argv0.contains(QLatin1String("-h"))) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    try {
        const Args args = parseArgs(argv0);
        return args.checkFile.isEmpty() ? plan(args) : check(args);
    } catch (const BadInput &bad) {
        line(stderr, QStringLiteral("zunoria-plan: ") + bad.message);
        return 1;
    }
}
