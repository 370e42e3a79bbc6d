#include "session/consolereport.h"

#include "feeds/statusjson.h"
#include "session/session.h"

#include <cstdio>

namespace zun {

namespace {

void printLine(const QString &text)
{
    std::fprintf(stderr, "zunoria: %s\n", qUtf8Printable(text));
    std::fflush(stderr);
}

QString receiverText(const Receiver &status)
{
    const QString name = status.shownName().trimmed();
    return name.isEmpty() ? addressText(status.address) : addressText(status.address) + ' ' + name;
}

} // namespace

void attachConsoleReport(Session &session)
{
    Session *s = &session;
    QObject::connect(s, &Session::notice, s, printLine);
    QObject::connect(s, &Session::feedStatusChanged, s, [](const QString &text) {
        if (!text.isEmpty())
            printLine(text);
    });
    const auto found = [s](bool any) {
        printLine(any ? QStringLiteral("%1: %2 receivers found")
                            .arg(s->lineName())
                            .arg(s->bus().table().foundCount())
                      : QStringLiteral("%1: no receiver found").arg(s->lineName()));
    };
    QObject::connect(s, &Session::receiversDetected, s, found);
    QObject::connect(s, &Session::receiversReconnected, s, found);
    QObject::connect(&s->bus(), &ReceiverBus::wentOffline, s, [s](const Receiver &status) {
        printLine(QStringLiteral("%1: receiver %2 offline").arg(s->lineName(), receiverText(status)));
    });
    QObject::connect(&s->bus(), &ReceiverBus::cameBack, s, [s](const Receiver &status) {
        printLine(QStringLiteral("%1: receiver %2 back").arg(s->lineName(), receiverText(status)));
    });
    const auto alarmLine = [s](int id, const QString &state) {
        const Alarm *found = s->alarms().alarm(id);
        if (!found)
            return;
        const Alarm &alarm = *found;
        const QString name = alarm.receiverName.trimmed();
        printLine(QStringLiteral("%1: alarm %2: %3%4 %5")
                      .arg(s->lineName(), state, addressText(alarm.address),
                           name.isEmpty() ? QString() : ' ' + name, conditionText(alarm.condition)));
    };
    QObject::connect(&s->alarms(), &AlarmEngine::alarmRaised, s,
                     [alarmLine](int id) { alarmLine(id, QStringLiteral("raised")); });
    QObject::connect(&s->alarms(), &AlarmEngine::alarmCleared, s,
                     [alarmLine](int id) { alarmLine(id, QStringLiteral("cleared")); });
    QObject::connect(&s->showLog(), &ShowLog::failed, s, printLine);
}

} // namespace zun
