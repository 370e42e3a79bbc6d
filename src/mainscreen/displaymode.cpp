#include "mainscreen/displaymode.h"

#include "receivers/frequency.h"
#include "receivers/receiver.h"

namespace zun {

namespace {
QString twoDigits(int value)
{
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}
} // namespace

QString addressNameCaption(const Receiver &record)
{
    return twoDigits(record.address) + QLatin1Char(' ') + record.name;
}

QString nameCaption(const Receiver &record, int mode)
{
    switch (mode) {
    case ModeGroupChannel:
        if (record.manualFreq)
            return QStringLiteral("GCH  ****");
        return QStringLiteral("GCH  %1 - %2").arg(record.group).arg(record.channel);
    case ModeFrequency:
        return formatFreq(mhzFromCode(record.manualFreq ? record.manualFreqCode : record.channelFreqCode)) +
               QStringLiteral("MHz");
    case ModeSquelch:
        return QStringLiteral("SQ  %1").arg(record.squelch);
    case ModeAddressName:
        return addressNameCaption(record);
    case ModeAddress:
        return twoDigits(record.address);
    default:
        return {};
    }
}

} // namespace zun
