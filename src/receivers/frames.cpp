#include "receivers/frames.h"

#include "link/hex.h"
#include "receivers/receiverrecord.h"

namespace zun::frames {

namespace {
// Blank padded and cut to exactly width characters.
QString padCut(const QString &text, int width)
{
    return (text + QString(width, QLatin1Char(' '))).left(width);
}

QString build(QChar prefix, int address, const QString &body)
{
    return prefix + formatHex(address, 2) + body + QLatin1Char('\r');
}
const QChar kQuery = QLatin1Char('%');
const QChar kSet = QLatin1Char('#');
} // namespace

QString identify(int address)
{
    return build(kQuery, address, QStringLiteral("M"));
}

QString levels(int address)
{
    return build(kQuery, address, QStringLiteral("N"));
}

QString presence(int address)
{
    return build(kQuery, address, QStringLiteral("L"));
}

QString textA(int address)
{
    return build(kQuery, address, QStringLiteral("A"));
}

QString textB(int address)
{
    return build(kQuery, address, QStringLiteral("B"));
}

QString kobStart(int address)
{
    return build(kQuery, address, QStringLiteral("O"));
}

QString backOnLine(int address)
{
    return build(kSet, address, QStringLiteral("A1"));
}

QString mute(int address, bool on)
{
    return build(kSet, address, on ? QStringLiteral("B1") : QStringLiteral("B0"));
}

QString preset(int address, int group, int channel)
{
    return build(kSet, address, QLatin1Char('D') + formatHex(group, 1) + formatHex(channel, 1));
}

QString tune(int address, const QString &code)
{
    return build(kSet, address, QLatin1Char('K') + code);
}

QString scanTune(int address, const QString &code)
{
    return build(kSet, address, QLatin1Char('E') + code);
}

QString squelch(int address, int squelch)
{
    return build(kSet, address, QLatin1Char('F') + formatHex(squelch, 2));
}

QString name(int address, const QString &name)
{
    return build(kSet, address, QLatin1Char('C') + name);
}

QString newAddress(int address, int newAddress)
{
    return build(kSet, address, QLatin1Char('L') + formatHex(newAddress, 2));
}

QString detailClosed(int address)
{
    return build(kSet, address, QStringLiteral("NS"));
}

QString settingsWrite(const ReceiverRecord &r)
{
    const QString name = padCut(r.name, 6);
    const QString code = padCut(r.manualFreq ? r.manualFreqCode : r.channelFreqCode, 4);
    const int mode = (r.manualFreq ? 1 : 0) + (r.mute ? 2 : 0);
    return build(kSet, r.address,
                 QLatin1Char('M') + name + formatHex(r.group, 1) + formatHex(r.channel, 1) + code +
                     formatHex(r.squelch, 2) + formatHex(r.secondLevel, 2) + QString::number(mode));
}

QString hostLeaving()
{
    return QStringLiteral("#00A0\r");
}

QString detectionStart()
{
    return QStringLiteral("#00A1\r");
}

QString displayMode(int mode)
{
    return QStringLiteral("#00O") + QString::number(mode) + QLatin1Char('\r');
}

std::optional<QString> baudRate(int baudrate)
{
    switch (baudrate) {
    case 115200:
        return QStringLiteral("#00H01\r");
    case 57600:
        return QStringLiteral("#00H03\r");
    case 38400:
        return QStringLiteral("#00H05\r");
    case 9600:
        return QStringLiteral("#00H17\r");
    default:
        return std::nullopt;
    }
}

} // namespace zun::frames
