#include "sim/simconsole.h"

#include <QList>

namespace zun {

QByteArray simPrintable(const QByteArray &frame)
{
    QByteArray text;
    const qsizetype end = frame.endsWith('\r') ? frame.size() - 1 : frame.size();
    for (qsizetype i = 0; i < end; ++i) {
        const auto c = static_cast<unsigned char>(frame[i]);
        if (c >= 0x20 && c < 0x7F && c != '\\')
            text.append(static_cast<char>(c));
        else
            text.append("\\x" + QByteArray::number(c, 16).toUpper().rightJustified(2, '0'));
    }
    return text;
}

QByteArray simConsoleCommand(SimBus &bus, const QByteArray &line, bool &quit)
{
    const QList<QByteArray> words = line.simplified().split(' ');
    const QByteArray &verb = words.value(0);
    if (verb.isEmpty())
        return {};
    if (verb == "quit") {
        quit = true;
        return "bye";
    }
    if (verb == "list") {
        QByteArray text;
        for (const SimReceiver *r : bus.receivers())
            text += QByteArray::number(r->address) + ' ' + r->name + " G" + QByteArray::number(r->group) +
                    " CH" + QByteArray::number(r->channel) + " baud " + QByteArray::number(r->baud) +
                    (r->powered ? "" : " stopped") + (r->muted ? " muted" : "") + '\n';
        return text.isEmpty() ? "no receivers" : text.chopped(1);
    }
    bool ok = false;
    const int address = words.value(1).toInt(&ok);
    SimReceiver *r = ok ? bus.receiver(address) : nullptr;
    if (!r)
        return "no receiver " + words.value(1);
    if (verb == "stop" || verb == "start") {
        r->powered = verb == "start";
        r->offlineUntilMicros = 0;
        return "receiver " + QByteArray::number(address) + (r->powered ? " started" : " stopped");
    }
    if (verb == "fault") {
        SimFault fault = SimFault::None;
        if (!faultFromName(words.value(2), fault))
            return "unknown fault " + words.value(2);
        const int count = words.size() > 3 ? words[3].toInt() : 1;
        bus.scriptFaults(address, fault, count);
        return "receiver " + QByteArray::number(address) + ": " + words[2] + " x" + QByteArray::number(count);
    }
    return "unknown command " + verb;
}

} // namespace zun
