#include "benchwire.h"

#include <QList>

#include <algorithm>

namespace zunbench {

namespace {
// The log escapes unprintable characters as \xNN.
int unescapedLength(const QByteArray &text)
{
    int n = 0;
    for (qsizetype i = 0; i < text.size(); ++i, ++n)
        if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] == 'x')
            i += 3;
    return n;
}

bool isLevelRead(const WireEvent &e)
{
    return !e.reply && e.text.size() == 4 && e.text[0] == '%' && e.text[3] == 'N';
}
} // namespace

WireLog parseWireLog(const QByteArray &text)
{
    WireLog log;
    for (const QByteArray &line : text.split('\n')) {
        const QByteArray trimmed = line.trimmed();
        const qsizetype space = trimmed.indexOf(' ');
        if (space <= 0)
            continue;
        bool ok = false;
        const double seconds = trimmed.left(space).toDouble(&ok);
        if (!ok)
            continue;
        QByteArray rest = trimmed.mid(space + 1).trimmed();
        WireEvent e;
        e.micros = seconds * 1e6;
        if (rest.startsWith("reply ")) {
            e.reply = true;
            rest = rest.mid(6).trimmed();
        }
        e.text = rest;
        e.chars = unescapedLength(rest) + 1;
        log.push_back(e);
    }
    return log;
}

double wireMicros(int chars, int baud)
{
    return chars * 10.0 * 1e6 / baud;
}

PassFigures pollPasses(const WireLog &log, int baud, double turnaroundMicros)
{
    PassFigures f;
    QByteArray first;
    for (const WireEvent &e : log)
        if (isLevelRead(e)) {
            first = e.text;
            break;
        }
    if (first.isEmpty())
        return f;
    double start = -1;
    double limit = 0;
    for (const WireEvent &e : log) {
        if (!e.reply && e.text == first) {
            if (start >= 0) {
                f.passMicros.push_back(e.micros - start);
                f.limitMicros.push_back(limit);
            }
            start = e.micros;
            limit = 0;
        }
        if (start < 0)
            continue;
        limit += wireMicros(e.chars, baud) + (e.reply ? turnaroundMicros : 0);
    }
    return f;
}

std::optional<DetectionFigures> detectionFigures(const WireLog &log, int baud, double turnaroundMicros)
{
    double begin = -1;
    double end = -1;
    for (const WireEvent &e : log) {
        if (!e.reply && e.text == "#00A1" && begin < 0)
            begin = e.micros - wireMicros(e.chars, baud);
        if (e.reply && e.text.startsWith("$40") && e.chars == 41)
            end = e.micros + wireMicros(e.chars, baud);
    }
    if (begin < 0 || end < begin)
        return std::nullopt;
    DetectionFigures d;
    d.measuredMicros = end - begin;
    d.limitMicros = 3 * 50000.0 + 64 * (wireMicros(5 + 41, baud) + turnaroundMicros);
    return d;
}

Stats stats(std::vector<double> values)
{
    Stats s;
    if (values.empty())
        return s;
    std::sort(values.begin(), values.end());
    s.min = values.front();
    s.max = values.back();
    s.median = values[values.size() / 2];
    return s;
}

} // namespace zunbench
